#include "env/environment.h"

#include "env/controls/control_driver.h"
#include "env/files/file_driver.h"
#include "env/gui/gui_driver.h"
#include "env/jobio/jobio_driver.h"
#include "env/jpg/jpg_driver.h"
#include "env/ntfs/ntfs_service.h"
#include "env/settings/settings_service.h"
#include "env/vhd/vhd_service.h"
#include "env/windows/window_base.h"
#include "services/service_ids.h"

#ifndef SURVEYOR_SYSTEM_DIR
#define SURVEYOR_SYSTEM_DIR ""
#endif

namespace env {

std::string DefaultSystemDir () { return SURVEYOR_SYSTEM_DIR; }

struct Environment::Parts {
  Options Opts;
  Firmware Fw;
  std::unique_ptr<FileDriver> Files;
  std::unique_ptr<GuiDriver> Gui;
  std::unique_ptr<WindowBase> Windows;
  std::unique_ptr<ControlDriver> Controls;
  std::unique_ptr<JobioDriver> Jobio;
  std::unique_ptr<JpgDriver> Jpg;
  std::unique_ptr<SettingsService> Settings;
  std::unique_ptr<VhdService> Vhd;
  std::unique_ptr<NtfsService> Ntfs;
  std::vector<EFI_HANDLE> Images;
};

Environment::Environment (const Options &Opts) : Parts_ (new Parts) {
  Parts &P = *Parts_;
  P.Opts = Opts;
  std::string System = Opts.SystemDir.empty () ? DefaultSystemDir () : Opts.SystemDir;

  P.Files = std::make_unique<FileDriver> (P.Fw, System, Opts.FileDriverVersion);
  P.Gui = std::make_unique<GuiDriver> (P.Fw, Opts.ScreenWidth, Opts.ScreenHeight, Opts.GuiVersion);
  P.Windows = std::make_unique<WindowBase> (P.Fw, *P.Files, *P.Gui, Opts.WindowBaseVersion);
  P.Controls = std::make_unique<ControlDriver> (P.Fw, *P.Windows, *P.Gui, Opts.ControlVersion);
  P.Jobio = std::make_unique<JobioDriver> (P.Fw, *P.Files, P.Windows.get (), Opts.JobioVersion);
  P.Jpg = std::make_unique<JpgDriver> (P.Fw, Opts.JpgVersion);
  if (Opts.WithSettings)
    P.Settings = std::make_unique<SettingsService> (P.Fw, Opts.SettingsFile, Opts.SettingsVersion);
  if (Opts.WithVhd) P.Vhd = std::make_unique<VhdService> (Opts.VhdVersion);
  if (Opts.WithNtfs) P.Ntfs = std::make_unique<NtfsService> (P.Fw, *P.Windows, *P.Files);

  // The file driver is found through the boot services, the others through it.
  const EFI_GUID FileGuid = FILE_DRIVER_GUID;
  for (unsigned I = 0; I < Opts.FileDriverHandles; I++) {
    EFI_HANDLE Handle = nullptr;
    P.Fw.InstallProtocol (&Handle, FileGuid, P.Files->Table ());
  }
  const EFI_GUID WindowGuid = WINDOW_BASE_GUID, ControlGuid = CONTROL_DRIVER_GUID, JobioGuid = JOBIO_DRIVER_GUID,
                 JpgGuid = JPG_DRIVER_GUID, SettingsGuid = SETTINGS_SERVICE_GUID, VhdGuid = VHD_SERVICE_GUID,
                 NtfsGuid = NTFS_SERVICE_GUID;
  if (Opts.WithWindowBase) P.Files->RegisterService (WindowGuid, P.Windows->Table ());
  if (Opts.WithControlDriver) P.Files->RegisterService (ControlGuid, P.Controls->Table ());
  if (Opts.WithJobio) P.Files->RegisterService (JobioGuid, P.Jobio->Table ());
  if (Opts.WithJpg) P.Files->RegisterService (JpgGuid, P.Jpg->Table ());
  if (P.Settings) P.Files->RegisterService (SettingsGuid, P.Settings->Table ());
  if (P.Vhd) {
    EFI_HANDLE Handle = nullptr;
    P.Fw.InstallProtocol (&Handle, VhdGuid, P.Vhd->Table ());
  }
  if (P.Ntfs) {
    EFI_HANDLE Handle = nullptr;
    P.Fw.InstallProtocol (&Handle, NtfsGuid, P.Ntfs->Table ());
  }
}

Environment::~Environment () {
  // Windows go first: their destroy callbacks may still call the siblings.
  if (Parts_->Windows) Parts_->Windows->DestroyAllWindows ();
}

Firmware &Environment::firmware () { return Parts_->Fw; }
FileDriver &Environment::files () { return *Parts_->Files; }
GuiDriver &Environment::gui () { return *Parts_->Gui; }
WindowBase &Environment::windows () { return *Parts_->Windows; }
ControlDriver &Environment::controls () { return *Parts_->Controls; }
JobioDriver &Environment::jobio () { return *Parts_->Jobio; }
JpgDriver &Environment::jpg () { return *Parts_->Jpg; }
SettingsService *Environment::settings () { return Parts_->Settings.get (); }
NtfsService *Environment::ntfs () { return Parts_->Ntfs.get (); }
VhdService *Environment::vhd () { return Parts_->Vhd.get (); }
const Options &Environment::options () const { return Parts_->Opts; }

int Environment::Mount (const VolumeSpec &Spec) { return Parts_->Files->Mount (Spec); }

EFI_STATUS Environment::LoadDriver (EFI_IMAGE_ENTRY_POINT EntryPoint) {
  EFI_HANDLE Image = nullptr;
  EFI_STATUS Status = Parts_->Fw.LoadImage (EntryPoint, &Image);
  if (!EFI_ERROR (Status)) Parts_->Images.push_back (Image);
  return Status;
}

EFI_STATUS Environment::UnloadDriver () {
  if (Parts_->Images.empty ()) return EFI_NOT_FOUND;
  EFI_STATUS Status = Parts_->Fw.UnloadImage (Parts_->Images.back ());
  if (!EFI_ERROR (Status)) Parts_->Images.pop_back ();
  return Status;
}

VOID *Environment::Locate (const EFI_GUID &Guid) { return Parts_->Fw.FindProtocol (Guid); }

}  // namespace env
