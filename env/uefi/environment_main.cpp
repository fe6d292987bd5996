// The entry of environment.efi, the boot-service driver image that holds
// every sibling of the windowing environment. Loaded by the launcher from
// the boot volume, it
// - builds the siblings for the screen the Graphics Output Protocol shows,
//   with the boot volume as the system volume (\efi\kivora\...) and the
//   settings in a UEFI variable;
// - makes every Simple File System of the firmware a volume, the boot
//   volume first; a file system that appears later (a stick plugged in)
//   becomes a volume when the firmware reports it;
// - marks the comparison volumes named in \efi\kivora\surveyor.cfg;
// - installs the file driver's table and the VHD service's on handles of
//   their own (the driver finds the other siblings through the file
//   driver), and the desktop protocol the launcher runs.
// The image stays resident; nothing of it runs until the launcher calls it.
#include <memory>
#include <string>
#include <vector>

#include "env/console.h"
#include "env/desktop/desktop_loop.h"
#include "env/files/file_driver.h"
#include "env/files/volume_config.h"
#include "env/gui/gui_driver.h"
#include "env/siblings.h"
#include "env/uefi/desktop_protocol.h"
#include "env/uefi/firmware_desktop.h"
#include "env/uefi/settings_variable.h"
#include "env/uefi/sfs_volume.h"
#include "env/uefi/uefi_globals.h"
#include "env/vhd/vhd_service.h"
#include "env/windows/window_base.h"
#include "core/surveyor_protocol.h"
#include "services/service_ids.h"

namespace env {

namespace {

struct FirmwareEnvironment {
  std::unique_ptr<Siblings> Parts;
  std::string RunTag;
  VolumeConfig Config;
  std::vector<EFI_HANDLE> Devices = std::vector<EFI_HANDLE> (VOLUME_COUNT, nullptr);
  EFI_EVENT NewFileSystems = nullptr;
  VOID *Registration = nullptr;
  SURVEYOR_DESKTOP_PROTOCOL Desktop {};
};

FirmwareEnvironment *gEnvironment = nullptr;

const EFI_GUID kSimpleFileSystemGuid = EFI_SIMPLE_FILE_SYSTEM_PROTOCOL_GUID;

// A name for this boot, for the temporary names a paste leaves if the
// machine stops half-way (a later boot removes them).
std::string BootTag () {
  EFI_TIME Now {};
  if (EFI_ERROR (gEnvRuntimeServices->GetTime (&Now, nullptr))) return "0";
  uint64_t Stamp = ((((uint64_t (Now.Year) * 12 + Now.Month) * 31 + Now.Day) * 24 + Now.Hour) * 60 + Now.Minute) * 60 +
                   Now.Second;
  return std::to_string (Stamp);
}

bool Mounted (EFI_HANDLE Device) {
  for (EFI_HANDLE Known : gEnvironment->Devices)
    if (Known == Device) return true;
  return false;
}

// Makes the file system on Device a volume (Slot -1: the next free one).
int MountDevice (EFI_HANDLE Device, int Slot) {
  if (Device == nullptr || Mounted (Device)) return -1;
  SfsVolumeInfo Info;
  std::unique_ptr<VolumeFs> Fs = OpenSfsVolume (Device, gEnvironment->RunTag, &Info);
  if (!Fs) return -1;
  VolumeRecordSpec Spec;
  Spec.FileSystemType = kFileSystemFat32;
  Spec.Label = gEnvironment->Config.LabelOf (Info.Label);
  Spec.Flags = gEnvironment->Config.FlagsOf (Info.Label);
  if (Info.ReadOnly) Spec.Flags |= VOLUME_FLAG_WRITE_PROTECTED;
  FileDriver &Files = gEnvironment->Parts->files ();
  int Volume = Files.Mount (std::move (Fs), Spec, Slot);
  if (Volume < 0) return -1;
  gEnvironment->Devices[Volume] = Device;
  if (Spec.Label.empty ()) {
    // A volume without a label is named by its number.
    std::string Name = "FS" + std::to_string (Volume);
    VOLUME_RECORD &Record = Files.Table ()->Volumes[Volume];
    for (size_t I = 0; I < Name.size () && I + 1 < sizeof (Record.Label); I++) Record.Label[I] = static_cast<CHAR8> (Name[I]);
  }
  return Volume;
}

void MountEveryFileSystem () {
  UINTN Count = 0;
  EFI_HANDLE *Handles = nullptr;
  EFI_GUID Guid = kSimpleFileSystemGuid;
  if (EFI_ERROR (gEnvBootServices->LocateHandleBuffer (ByProtocol, &Guid, nullptr, &Count, &Handles))) return;
  for (UINTN I = 0; I < Count; I++) MountDevice (Handles[I], -1);
  gEnvBootServices->FreePool (Handles);
}

// A line on the serial port only (the console would draw it over the desktop).
void SerialLine (const std::string &Text) {
  EFI_GUID Guid = EFI_SERIAL_IO_PROTOCOL_GUID;
  EFI_SERIAL_IO_PROTOCOL *Serial = nullptr;
  if (EFI_ERROR (gEnvBootServices->LocateProtocol (&Guid, nullptr, reinterpret_cast<VOID **> (&Serial)))) return;
  std::string Line = Text + "\r\n";
  UINTN Size = Line.size ();
  Serial->Write (Serial, &Size, Line.data ());
}

// The firmware reports a new file system at any moment; it is mounted
// between two steps of the desktop loop.
volatile bool gFileSystemAppeared = false;

VOID EFIAPI FileSystemAppeared (EFI_EVENT, VOID *) { gFileSystemAppeared = true; }

void MountNewFileSystems () {
  if (!gFileSystemAppeared) return;
  gFileSystemAppeared = false;
  for (;;) {
    UINTN Size = sizeof (EFI_HANDLE);
    EFI_HANDLE Device = nullptr;
    EFI_GUID Guid = kSimpleFileSystemGuid;
    if (EFI_ERROR (gEnvBootServices->LocateHandle (ByRegisterNotify, &Guid, gEnvironment->Registration, &Size,
                                                   &Device)))
      return;
    int Volume = MountDevice (Device, -1);
    if (Volume >= 0)
      SerialLine ("Surveyor: volume " + std::to_string (Volume) + " (" +
                  reinterpret_cast<const char *> (gEnvironment->Parts->files ().Table ()->Volumes[Volume].Label) +
                  ") added");
  }
}

// The volume chooser opens windows through the file manager's own service.
bool OpenVolume (int Volume) {
  EFI_GUID Guid = SURVEYOR_PROTOCOL_GUID;
  SURVEYOR_PROTOCOL *Surveyor = nullptr;
  if (EFI_ERROR (gEnvBootServices->LocateProtocol (&Guid, nullptr, reinterpret_cast<VOID **> (&Surveyor))) ||
      Surveyor == nullptr)
    return false;
  return Surveyor->OpenVolumeWindow (0, 0, static_cast<UINT8> (Volume), nullptr, nullptr) != nullptr;
}

void ReportFrame (const FrameTiming &T) {
  auto Ms = [] (uint64_t Us) { return std::to_string (Us / 1000) + "." + std::to_string (Us / 100 % 10); };
  SerialLine ("Surveyor: frame " + Ms (T.Input + T.Paint + T.Flush) + " ms (input " + Ms (T.Input) + ", paint " +
              Ms (T.Paint) + ", flush " + Ms (T.Flush) + " ms; " + std::to_string (T.Pixels) + " pixels in " +
              std::to_string (T.Rectangles) + " rectangles)");
}

void DisturbedScreen (FirmwareDesktop &Backend, DESKTOP_READY_CALLBACK Ready) {
  if (Ready != nullptr) Ready ();
  // The console's text may have been drawn over the desktop.
  Backend.FlushAll ();
}

EFI_STATUS EFIAPI RunDesktop (DESKTOP_READY_CALLBACK Ready) {
  if (gEnvironment == nullptr) return EFI_NOT_READY;
  GuiDriver &Gui = gEnvironment->Parts->gui ();
  FirmwareDesktop Backend (Gui.Framebuffer (), Gui.Width (), Gui.Height ());
  if (!Backend.Ready ()) return EFI_UNSUPPORTED;
  SIMPLE_TEXT_OUTPUT_INTERFACE *Console = gEnvSystemTable->ConOut;
  Console->EnableCursor (Console, FALSE);
  DesktopLoopOptions Options;
  Options.TickMilliseconds = 20;
  Options.FrameMilliseconds = 60;
  Options.FirstFrame = [&Backend, Ready] { DisturbedScreen (Backend, Ready); };
  Options.OpenVolume = OpenVolume;
  if (gEnvironment->Config.Timing) Options.FrameTimed = ReportFrame;
  // A stick plugged in while the desktop runs becomes a volume.
  EFI_GUID Guid = kSimpleFileSystemGuid;
  if (gEnvironment->NewFileSystems == nullptr &&
      !EFI_ERROR (gEnvBootServices->CreateEvent (EVT_NOTIFY_SIGNAL, TPL_CALLBACK, FileSystemAppeared, nullptr,
                                                 &gEnvironment->NewFileSystems)))
    gEnvBootServices->RegisterProtocolNotify (&Guid, gEnvironment->NewFileSystems, &gEnvironment->Registration);
  Backend.OnPoll (MountNewFileSystems);
  RunDesktopLoop (*gEnvironment->Parts, Backend, Options);
  Console->ClearScreen (Console);
  Console->EnableCursor (Console, TRUE);
  return EFI_SUCCESS;
}

INTN EFIAPI VolumeOfDevice (EFI_HANDLE Device) {
  if (gEnvironment == nullptr || Device == nullptr) return -1;
  for (size_t I = 0; I < gEnvironment->Devices.size (); I++)
    if (gEnvironment->Devices[I] == Device) return static_cast<INTN> (I);
  return -1;
}

VOID EFIAPI FlushVolumes () {
  if (gEnvironment == nullptr) return;
  FileDriver &Files = gEnvironment->Parts->files ();
  for (int Volume = 0; Volume < VOLUME_COUNT; Volume++)
    if (VolumeFs *Fs = Files.Volume (Volume)) Fs->Flush ();
}

}  // namespace

}  // namespace env

extern "C" EFI_STATUS efi_main (EFI_HANDLE ImageHandle, EFI_SYSTEM_TABLE *SystemTable) {
  using namespace env;
  gEnvImageHandle = ImageHandle;
  gEnvSystemTable = SystemTable;
  gEnvBootServices = SystemTable->BootServices;
  gEnvRuntimeServices = SystemTable->RuntimeServices;

  EFI_GUID LoadedImageGuid = EFI_LOADED_IMAGE_PROTOCOL_GUID;
  EFI_LOADED_IMAGE *Loaded = nullptr;
  if (EFI_ERROR (gEnvBootServices->HandleProtocol (ImageHandle, &LoadedImageGuid, reinterpret_cast<VOID **> (&Loaded))))
    return EFI_LOAD_ERROR;

  SiblingOptions Options;
  if (!ScreenSize (Options.ScreenWidth, Options.ScreenHeight)) {
    ConsoleLine ("Surveyor: no graphics output; the desktop cannot be shown.");
    Options.ScreenWidth = 1024, Options.ScreenHeight = 768;
  }
  gEnvironment = new FirmwareEnvironment;
  gEnvironment->RunTag = BootTag ();
  std::unique_ptr<VolumeFs> System = OpenSfsVolume (Loaded->DeviceHandle, gEnvironment->RunTag, nullptr);
  if (System) gEnvironment->Config = ReadVolumeConfig (*System);
  gEnvironment->Parts = std::make_unique<Siblings> (Options, std::move (System), OpenSettingsVariable ());

  // The boot volume is volume 0, the others follow in the firmware's order.
  MountDevice (Loaded->DeviceHandle, 0);
  MountEveryFileSystem ();

  EFI_GUID FileGuid = FILE_DRIVER_GUID, VhdGuid = VHD_SERVICE_GUID, DesktopGuid = SURVEYOR_DESKTOP_PROTOCOL_GUID;
  SURVEYOR_DESKTOP_PROTOCOL &Desktop = gEnvironment->Desktop;
  Desktop.Version = SURVEYOR_DESKTOP_PROTOCOL_VERSION;
  Desktop.Run = RunDesktop;
  Desktop.VolumeOfDevice = VolumeOfDevice;
  Desktop.FlushVolumes = FlushVolumes;
  EFI_HANDLE Files = nullptr, Vhd = nullptr, Desk = nullptr;
  EFI_STATUS Status = gEnvBootServices->InstallProtocolInterface (&Files, &FileGuid, EFI_NATIVE_INTERFACE,
                                                                  gEnvironment->Parts->files ().Table ());
  if (!EFI_ERROR (Status) && gEnvironment->Parts->vhd ())
    Status = gEnvBootServices->InstallProtocolInterface (&Vhd, &VhdGuid, EFI_NATIVE_INTERFACE,
                                                         gEnvironment->Parts->vhd ()->Table ());
  if (!EFI_ERROR (Status))
    Status = gEnvBootServices->InstallProtocolInterface (&Desk, &DesktopGuid, EFI_NATIVE_INTERFACE, &Desktop);
  if (EFI_ERROR (Status)) ConsoleLine ("Surveyor: the environment could not install its services.");
  return Status;
}
