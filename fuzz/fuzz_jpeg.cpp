// Fuzz target: the JPG driver's decoder on arbitrary bytes. It must fail
// cleanly or produce Width × Height pixels, and leave no pool block behind
// once the caller frees the pixel buffer it was handed.
#include <cstddef>
#include <cstdint>

#include "env/host/firmware.h"
#include "env/images/codecs.h"

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  static env::Firmware Fw;
  uint32_t Width = 0, Height = 0;
  uint32_t *Pixels = nullptr;
  bool Ok = env::DecodeJpegInto (Data, Size, Width, Height, Pixels);
  if (Ok && (!Pixels || Fw.BlockSize (Pixels) != (size_t) Width * Height * 4)) __builtin_trap ();
  if (Pixels) Fw.FreePool (Pixels);
  if (Fw.LiveAllocations () != 0) __builtin_trap ();
  return 0;
}
