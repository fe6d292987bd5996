#include "env/host/environment.h"

#include <filesystem>
#include <vector>

#include "env/files/file_driver.h"
#include "env/host/folder_fs.h"
#include "env/host/ntfs_service.h"
#include "env/host/settings_file.h"
#include "env/vhd/vhd_service.h"
#include "env/windows/window_base.h"
#include "services/service_ids.h"

#ifndef SURVEYOR_SYSTEM_DIR
#define SURVEYOR_SYSTEM_DIR ""
#endif

namespace env {

std::string DefaultSystemDir () { return SURVEYOR_SYSTEM_DIR; }

namespace {

std::unique_ptr<VolumeFs> SystemVolume (const Options &Opts) {
  std::string System = Opts.SystemDir.empty () ? DefaultSystemDir () : Opts.SystemDir;
  return System.empty () ? nullptr : OpenFolderVolume (System);
}

std::unique_ptr<SettingsStore> SettingsStoreOf (const Options &Opts) {
  return Opts.SettingsFile.empty () ? nullptr : OpenSettingsFile (Opts.SettingsFile);
}

}  // namespace

int MountFolder (FileDriver &Files, const VolumeSpec &Spec) {
  std::error_code Error;
  if (Spec.Folder.empty () || !std::filesystem::is_directory (Spec.Folder, Error)) return -1;
  std::unique_ptr<VolumeFs> Fs = OpenFolderVolume (Spec.Folder);
  if (!Fs) return -1;
  VolumeRecordSpec Record;
  Record.Flags = Spec.Flags;
  Record.Kind = Spec.Kind;
  Record.FileSystemType = Spec.FileSystemType;
  Record.Label = Spec.Label;
  if (Record.Label.empty ()) {
    std::filesystem::path Real = std::filesystem::weakly_canonical (std::filesystem::absolute (Spec.Folder, Error), Error);
    Record.Label = Real.filename ().native ();
    if (Record.Label.empty ()) Record.Label = "/";
  }
  return Files.Mount (std::move (Fs), Record);
}

struct Environment::Host {
  Options Opts;
  std::unique_ptr<NtfsService> Ntfs;
  std::vector<std::string> Folders = std::vector<std::string> (VOLUME_COUNT);
  std::vector<EFI_HANDLE> Images;
};

Environment::Environment (const Options &Opts)
    : Siblings (Opts, SystemVolume (Opts), SettingsStoreOf (Opts)), Host_ (new Host) {
  Host_->Opts = Opts;
  if (Opts.WithNtfs) Host_->Ntfs = std::make_unique<NtfsService> (*this);
  // The file driver, VHD and NTFS services are found through the boot services.
  const EFI_GUID FileGuid = FILE_DRIVER_GUID, VhdGuid = VHD_SERVICE_GUID, NtfsGuid = NTFS_SERVICE_GUID;
  for (unsigned I = 0; I < Opts.FileDriverHandles; I++) {
    EFI_HANDLE Handle = nullptr;
    Fw.InstallProtocol (&Handle, FileGuid, files ().Table ());
  }
  if (vhd ()) {
    EFI_HANDLE Handle = nullptr;
    Fw.InstallProtocol (&Handle, VhdGuid, vhd ()->Table ());
  }
  if (Host_->Ntfs) {
    EFI_HANDLE Handle = nullptr;
    Fw.InstallProtocol (&Handle, NtfsGuid, Host_->Ntfs->Table ());
  }
}

Environment::~Environment () {
  // Windows go first: their destroy callbacks may still call the siblings.
  windows ().DestroyAllWindows ();
}

Firmware &Environment::firmware () { return Fw; }
NtfsService *Environment::ntfs () { return Host_->Ntfs.get (); }
const Options &Environment::options () const { return Host_->Opts; }

int Environment::Mount (const VolumeSpec &Spec) {
  int Volume = MountFolder (files (), Spec);
  if (Volume >= 0) Host_->Folders[Volume] = Spec.Folder;
  return Volume;
}

std::string Environment::HostFolder (int Volume) const {
  if (Volume < 0 || Volume >= VOLUME_COUNT) return {};
  return const_cast<Environment *> (this)->files ().Mounted (Volume) ? Host_->Folders[Volume] : std::string ();
}

EFI_STATUS Environment::LoadDriver (EFI_IMAGE_ENTRY_POINT EntryPoint) {
  EFI_HANDLE Image = nullptr;
  EFI_STATUS Status = Fw.LoadImage (EntryPoint, &Image);
  if (!EFI_ERROR (Status)) Host_->Images.push_back (Image);
  return Status;
}

EFI_STATUS Environment::UnloadDriver () {
  if (Host_->Images.empty ()) return EFI_NOT_FOUND;
  EFI_STATUS Status = Fw.UnloadImage (Host_->Images.back ());
  if (!EFI_ERROR (Status)) Host_->Images.pop_back ();
  return Status;
}

VOID *Environment::Locate (const EFI_GUID &Guid) { return Fw.FindProtocol (Guid); }

}  // namespace env
