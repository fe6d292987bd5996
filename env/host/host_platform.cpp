// What the portable environment asks of its platform (pool.h, console.h),
// on the host: the stand-in firmware that is alive now.
#include <cstdio>

#include "env/console.h"
#include "env/host/firmware.h"
#include "env/pool.h"

namespace env {

void *PoolAllocate (size_t Size) { return CurrentFirmware ().AllocatePool (Size); }
void PoolFree (void *Block) { CurrentFirmware ().FreePool (Block); }
size_t PoolBlockSize (const void *Block) { return CurrentFirmware ().BlockSize (Block); }

void ConsoleLine (const std::string &Text) {
  CurrentFirmware ().AppendConsole (Text + "\r\n");
  std::fprintf (stderr, "%s\n", Text.c_str ());
}

}  // namespace env
