// What the portable environment asks of its platform (pool.h, console.h), in
// firmware: the boot services' pool and the console.
//
// The pool keeps no sizes the environment can read back, yet the GUI driver
// bounds image decoding by the size of the file buffer it is handed. The
// environment therefore remembers the sizes of the latest blocks it handed
// out (the driver decodes a file right after reading it); a block the
// environment frees itself is forgotten at once.
#include <cstdint>

#include "env/console.h"
#include "env/pool.h"
#include "env/uefi/uefi_globals.h"

EFI_HANDLE gEnvImageHandle = nullptr;
EFI_SYSTEM_TABLE *gEnvSystemTable = nullptr;
EFI_BOOT_SERVICES *gEnvBootServices = nullptr;
EFI_RUNTIME_SERVICES *gEnvRuntimeServices = nullptr;

namespace env {

namespace {

constexpr size_t kRememberedBlocks = 64;

struct Block {
  const void *Address;
  size_t Size;
};
Block gRecent[kRememberedBlocks];
size_t gNext = 0;

void Forget (const void *Address) {
  for (Block &B : gRecent)
    if (B.Address == Address) B = Block {nullptr, 0};
}

}  // namespace

void *PoolAllocate (size_t Size) {
  VOID *Address = nullptr;
  if (gEnvBootServices == nullptr ||
      EFI_ERROR (gEnvBootServices->AllocatePool (EfiBootServicesData, Size == 0 ? 1 : Size, &Address)))
    return nullptr;
  // A block freed by the driver may come back at the same address.
  Forget (Address);
  gRecent[gNext] = Block {Address, Size};
  gNext = (gNext + 1) % kRememberedBlocks;
  return Address;
}

void PoolFree (void *Address) {
  if (Address == nullptr) return;
  Forget (Address);
  gEnvBootServices->FreePool (Address);
}

size_t PoolBlockSize (const void *Address) {
  if (Address == nullptr) return 0;
  for (const Block &B : gRecent)
    if (B.Address == Address) return B.Size;
  return 0;
}

void ConsoleLine (const std::string &Text) {
  if (gEnvSystemTable == nullptr || gEnvSystemTable->ConOut == nullptr) return;
  CHAR16 Line[256];
  size_t N = 0;
  for (size_t I = 0; I < Text.size () && N + 3 < sizeof Line / sizeof Line[0]; I++) {
    unsigned char C = static_cast<unsigned char> (Text[I]);
    Line[N++] = C < 0x80 ? C : '?';
  }
  Line[N++] = '\r', Line[N++] = '\n', Line[N] = 0;
  gEnvSystemTable->ConOut->OutputString (gEnvSystemTable->ConOut, Line);
}

}  // namespace env
