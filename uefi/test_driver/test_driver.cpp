// A stand-in file driver for the boot test: it installs a table of version 8
// under the file driver's identifier on a new handle and stays resident, so
// that loading surveyor.efi after it reports the version mismatch.
#include "platform/uefi.h"
#include "services/service_ids.h"

namespace {

struct OLD_FILE_DRIVER_TABLE {
  UINT32 Version;
  UINT32 Reserved;
};

OLD_FILE_DRIVER_TABLE gTable;
EFI_HANDLE gHandle;

}  // namespace

extern "C" EFI_STATUS efi_main (EFI_HANDLE ImageHandle, EFI_SYSTEM_TABLE *SystemTable) {
  gTable.Version = 8;
  gHandle = nullptr;
  EFI_GUID Guid = FILE_DRIVER_GUID;
  return SystemTable->BootServices->InstallProtocolInterface (&gHandle, &Guid, EFI_NATIVE_INTERFACE, &gTable);
}
