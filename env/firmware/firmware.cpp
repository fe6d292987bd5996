// Placeholder until the firmware lands.
#include "env/firmware/firmware.h"

namespace env {
struct Firmware::State {
  EFI_SYSTEM_TABLE St {};
  EFI_BOOT_SERVICES Bs {};
  std::string Console;
};
Firmware::Firmware () : State_ (new State) {}
Firmware::~Firmware () = default;
EFI_SYSTEM_TABLE *Firmware::SystemTable () { return &State_->St; }
EFI_BOOT_SERVICES *Firmware::BootServices () { return &State_->Bs; }
EFI_STATUS Firmware::InstallProtocol (EFI_HANDLE *, const EFI_GUID &, VOID *) { return EFI_UNSUPPORTED; }
EFI_STATUS Firmware::UninstallProtocol (EFI_HANDLE, const EFI_GUID &, VOID *) { return EFI_UNSUPPORTED; }
std::vector<EFI_HANDLE> Firmware::HandlesWith (const EFI_GUID &) const { return {}; }
VOID *Firmware::FindProtocol (const EFI_GUID &) const { return nullptr; }
VOID *Firmware::AllocatePool (UINTN) { return nullptr; }
VOID Firmware::FreePool (VOID *) {}
size_t Firmware::LiveAllocations () const { return 0; }
size_t Firmware::LiveBytes () const { return 0; }
size_t Firmware::BlockSize (const VOID *) const { return 0; }
void Firmware::FailService (BootService, EFI_STATUS, unsigned, unsigned) {}
void Firmware::ClearFailures () {}
const std::string &Firmware::ConsoleText () const { return State_->Console; }
std::vector<std::string> Firmware::ConsoleLines () const { return {}; }
void Firmware::ClearConsole () {}
EFI_STATUS Firmware::LoadImage (EFI_IMAGE_ENTRY_POINT, EFI_HANDLE *) { return EFI_UNSUPPORTED; }
EFI_STATUS Firmware::UnloadImage (EFI_HANDLE) { return EFI_UNSUPPORTED; }
Firmware &CurrentFirmware () { static Firmware *F = nullptr; return *F; }
}  // namespace env
