// Pool memory of the firmware the environment runs in. Everything the
// siblings hand to the driver (listings, file buffers, pixels, setting values)
// is a pool block that the driver frees with the boot services' FreePool, so
// it comes from here. Each backend implements these three functions: the
// host's stand-in firmware counts every block; in UEFI they are the boot
// services' pool.
#pragma once

#include <cstddef>

namespace env {

// A block of at least one byte (also for Size 0), or nullptr when refused.
void *PoolAllocate (size_t Size);
void PoolFree (void *Block);
// Size of a block from PoolAllocate that is still live, or 0 when unknown.
// The GUI driver bounds image decoding by it, since DecodeImage gets no size.
size_t PoolBlockSize (const void *Block);

}  // namespace env
