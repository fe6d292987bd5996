// The sibling bindings and the single-handle locate rule.
#include "core/bindings.h"

#include "platform/library.h"
#include "services/service_ids.h"

FILE_DRIVER_PROTOCOL *gFileDriver;
WINDOW_BASE_PROTOCOL *gWindowBase;
GUI_DRIVER_PROTOCOL *gGuiDriver;
CONTROL_DRIVER_PROTOCOL *gControlDriver;
JOBIO_DRIVER_PROTOCOL *gJobioDriver;
JPG_DRIVER_PROTOCOL *gJpgDriver;
SETTINGS_SERVICE_PROTOCOL *gSettingsService;
VHD_SERVICE_PROTOCOL *gVhdService;
NTFS_SERVICE_PROTOCOL *gNtfsService;

// Exactly one handle must carry the identifier: none and several alike mean
// the service is absent. The interface is opened in get-protocol mode with
// the driver's image as agent; the handle buffer is released in every case.
VOID *LocateSingleHandleService (const EFI_GUID *Identifier) {
  if (gBS == nullptr || Identifier == nullptr) return nullptr;
  EFI_GUID Guid = *Identifier;
  UINTN HandleCount = 0;
  EFI_HANDLE *Handles = nullptr;
  EFI_STATUS Status = gBS->LocateHandleBuffer (ByProtocol, &Guid, nullptr, &HandleCount, &Handles);
  VOID *Interface = nullptr;
  if (!EFI_ERROR (Status) && HandleCount == 1 && Handles != nullptr) {
    Status = gBS->OpenProtocol (Handles[0], &Guid, &Interface, gImageHandle, nullptr, EFI_OPEN_PROTOCOL_GET_PROTOCOL);
    if (EFI_ERROR (Status)) Interface = nullptr;
  }
  if (Handles != nullptr) FreePool (Handles);
  return Interface;
}

NTFS_SERVICE_PROTOCOL *BindNtfsService () {
  if (gNtfsService == nullptr) {
    const EFI_GUID Guid = NTFS_SERVICE_GUID;
    gNtfsService = static_cast<NTFS_SERVICE_PROTOCOL *> (LocateSingleHandleService (&Guid));
  }
  return gNtfsService;
}
