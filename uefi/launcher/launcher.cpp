// The launcher: the UEFI application a stick boots (\EFI\BOOT\BOOTX64.EFI).
// It loads environment.efi and surveyor.efi from its own folder, opens the
// file manager of the volume it was started from through SURVEYOR_PROTOCOL,
// runs the desktop until the last window is closed, writes every volume's
// pending changes and returns to the firmware. Two console lines let
// scripts follow it: "Surveyor: ready" once the first window is on the
// screen, "Surveyor: done" at the end.
extern "C" {
#include <efi.h>
#include <efilib.h>
}

#include "core/surveyor_protocol.h"
#include "env/uefi/desktop_protocol.h"
#include "services/service_ids.h"

namespace {

constexpr UINTN kPathMax = 512;

const CHAR16 *Text (const char16_t *Literal) { return reinterpret_cast<const CHAR16 *> (Literal); }

void Say (const char16_t *Line) {
  ST->ConOut->OutputString (ST->ConOut, const_cast<CHAR16 *> (Text (Line)));
}

// The folder of the image's file path ("\EFI\BOOT\"), from its file-path nodes.
bool FolderOf (EFI_DEVICE_PATH *Path, CHAR16 *Folder) {
  UINTN Length = 0;
  Folder[0] = 0;
  for (EFI_DEVICE_PATH *Node = Path; Node != nullptr && !IsDevicePathEnd (Node); Node = NextDevicePathNode (Node)) {
    if (DevicePathType (Node) != MEDIA_DEVICE_PATH || DevicePathSubType (Node) != MEDIA_FILEPATH_DP) continue;
    const CHAR16 *Name = reinterpret_cast<FILEPATH_DEVICE_PATH *> (Node)->PathName;
    if (Length > 0 && Folder[Length - 1] != '\\' && Name[0] != '\\' && Length + 1 < kPathMax) Folder[Length++] = '\\';
    for (UINTN I = 0; Name[I] != 0 && Length + 1 < kPathMax; I++) Folder[Length++] = Name[I];
  }
  while (Length > 0 && Folder[Length - 1] != '\\') Length--;
  Folder[Length] = 0;
  return Length > 0;
}

EFI_STATUS Start (EFI_HANDLE Self, EFI_HANDLE Device, const CHAR16 *Folder, const char16_t *Name) {
  CHAR16 Path[kPathMax];
  UINTN Length = 0;
  for (UINTN I = 0; Folder[I] != 0 && Length + 1 < kPathMax; I++) Path[Length++] = Folder[I];
  for (UINTN I = 0; Name[I] != 0 && Length + 1 < kPathMax; I++) Path[Length++] = static_cast<CHAR16> (Name[I]);
  Path[Length] = 0;
  EFI_DEVICE_PATH *File = FileDevicePath (Device, Path);
  if (File == nullptr) return EFI_OUT_OF_RESOURCES;
  EFI_HANDLE Image = nullptr;
  EFI_STATUS Status = uefi_call_wrapper (BS->LoadImage, 6, FALSE, Self, File, nullptr, 0, &Image);
  FreePool (File);
  if (EFI_ERROR (Status)) {
    Print (const_cast<CHAR16 *> (Text (u"Surveyor: cannot load %s%s: %r\n")), Folder, Text (Name), Status);
    return Status;
  }
  Status = uefi_call_wrapper (BS->StartImage, 3, Image, nullptr, nullptr);
  if (EFI_ERROR (Status))
    Print (const_cast<CHAR16 *> (Text (u"Surveyor: %s%s did not start: %r\n")), Folder, Text (Name), Status);
  return Status;
}

VOID EFIAPI Ready () { Say (u"Surveyor: ready\r\n"); }

}  // namespace

extern "C" EFI_STATUS efi_main (EFI_HANDLE Self, EFI_SYSTEM_TABLE *SystemTable) {
  InitializeLib (Self, SystemTable);
  // Booted from a boot option, the firmware would reset the machine after
  // five minutes; the file manager runs as long as the person needs it.
  uefi_call_wrapper (BS->SetWatchdogTimer, 4, 0, 0, 0, nullptr);

  EFI_LOADED_IMAGE *Loaded = nullptr;
  EFI_GUID LoadedGuid = EFI_LOADED_IMAGE_PROTOCOL_GUID;
  CHAR16 Folder[kPathMax];
  if (EFI_ERROR (uefi_call_wrapper (BS->HandleProtocol, 3, Self, &LoadedGuid, reinterpret_cast<VOID **> (&Loaded))) ||
      !FolderOf (Loaded->FilePath, Folder)) {
    Say (u"Surveyor: cannot tell where the launcher was loaded from\r\n");
    return EFI_LOAD_ERROR;
  }
  EFI_STATUS Status = Start (Self, Loaded->DeviceHandle, Folder, u"environment.efi");
  if (!EFI_ERROR (Status)) Status = Start (Self, Loaded->DeviceHandle, Folder, u"surveyor.efi");
  if (EFI_ERROR (Status)) return Status;

  EFI_GUID SurveyorGuid = SURVEYOR_PROTOCOL_GUID, DesktopGuid = SURVEYOR_DESKTOP_PROTOCOL_GUID;
  SURVEYOR_PROTOCOL *Surveyor = nullptr;
  SURVEYOR_DESKTOP_PROTOCOL *Desktop = nullptr;
  if (EFI_ERROR (uefi_call_wrapper (BS->LocateProtocol, 3, &SurveyorGuid, nullptr, reinterpret_cast<VOID **> (&Surveyor))) ||
      EFI_ERROR (uefi_call_wrapper (BS->LocateProtocol, 3, &DesktopGuid, nullptr, reinterpret_cast<VOID **> (&Desktop)))) {
    Say (u"Surveyor: the file manager's services are missing\r\n");
    return EFI_NOT_FOUND;
  }
  INTN Volume = Desktop->VolumeOfDevice (Loaded->DeviceHandle);
  if (Surveyor->OpenVolumeWindow (0, 0, static_cast<UINT8> (Volume < 0 ? 0 : Volume), nullptr, nullptr) == nullptr) {
    Say (u"Surveyor: the file manager did not open\r\n");
    return EFI_NOT_READY;
  }
  Status = Desktop->Run (Ready);
  Desktop->FlushVolumes ();
  if (EFI_ERROR (Status)) Print (const_cast<CHAR16 *> (Text (u"Surveyor: the desktop could not run: %r\n")), Status);
  Say (u"Surveyor: done\r\n");
  return Status;
}
