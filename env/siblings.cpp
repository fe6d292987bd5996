#include "env/siblings.h"

#include "env/controls/control_driver.h"
#include "env/files/file_driver.h"
#include "env/gui/gui_driver.h"
#include "env/jobio/jobio_driver.h"
#include "env/jpg/jpg_driver.h"
#include "env/settings/settings_service.h"
#include "env/vhd/vhd_service.h"
#include "env/windows/window_base.h"
#include "services/service_ids.h"

namespace env {

struct Siblings::Parts {
  std::unique_ptr<FileDriver> Files;
  std::unique_ptr<GuiDriver> Gui;
  std::unique_ptr<WindowBase> Windows;
  std::unique_ptr<ControlDriver> Controls;
  std::unique_ptr<JobioDriver> Jobio;
  std::unique_ptr<JpgDriver> Jpg;
  std::unique_ptr<SettingsService> Settings;
  std::unique_ptr<VhdService> Vhd;
};

Siblings::Siblings (const SiblingOptions &Opts, std::unique_ptr<VolumeFs> System,
                    std::unique_ptr<SettingsStore> Store)
    : Parts_ (new Parts) {
  Parts &P = *Parts_;
  P.Files = std::make_unique<FileDriver> (std::move (System), Opts.FileDriverVersion);
  P.Gui = std::make_unique<GuiDriver> (Opts.ScreenWidth, Opts.ScreenHeight, Opts.GuiVersion);
  P.Windows = std::make_unique<WindowBase> (*P.Files, *P.Gui, Opts.WindowBaseVersion);
  P.Controls = std::make_unique<ControlDriver> (*P.Windows, *P.Gui, Opts.ControlVersion);
  P.Jobio = std::make_unique<JobioDriver> (*P.Files, P.Windows.get (), Opts.JobioVersion);
  P.Jpg = std::make_unique<JpgDriver> (Opts.JpgVersion);
  if (Opts.WithSettings) P.Settings = std::make_unique<SettingsService> (std::move (Store), Opts.SettingsVersion);
  if (Opts.WithVhd) P.Vhd = std::make_unique<VhdService> (Opts.VhdVersion);

  // The file driver is found through the boot services (the backend installs
  // it), the others through it.
  const EFI_GUID WindowGuid = WINDOW_BASE_GUID, ControlGuid = CONTROL_DRIVER_GUID, JobioGuid = JOBIO_DRIVER_GUID,
                 JpgGuid = JPG_DRIVER_GUID, SettingsGuid = SETTINGS_SERVICE_GUID;
  if (Opts.WithWindowBase) P.Files->RegisterService (WindowGuid, P.Windows->Table ());
  if (Opts.WithControlDriver) P.Files->RegisterService (ControlGuid, P.Controls->Table ());
  if (Opts.WithJobio) P.Files->RegisterService (JobioGuid, P.Jobio->Table ());
  if (Opts.WithJpg) P.Files->RegisterService (JpgGuid, P.Jpg->Table ());
  if (P.Settings) P.Files->RegisterService (SettingsGuid, P.Settings->Table ());
}

Siblings::~Siblings () {
  // Windows go first: their destroy callbacks may still call the siblings.
  if (Parts_->Windows) Parts_->Windows->DestroyAllWindows ();
}

FileDriver &Siblings::files () { return *Parts_->Files; }
GuiDriver &Siblings::gui () { return *Parts_->Gui; }
WindowBase &Siblings::windows () { return *Parts_->Windows; }
ControlDriver &Siblings::controls () { return *Parts_->Controls; }
JobioDriver &Siblings::jobio () { return *Parts_->Jobio; }
JpgDriver &Siblings::jpg () { return *Parts_->Jpg; }
SettingsService *Siblings::settings () { return Parts_->Settings.get (); }
VhdService *Siblings::vhd () { return Parts_->Vhd.get (); }

}  // namespace env
