// Fuzz target: both JPEG decoders (libjpeg on the host, stb_image in
// firmware) on arbitrary bytes. Each must fail cleanly or produce Width ×
// Height pixels, and leave no pool block behind once the caller frees the
// pixel buffer it was handed; when both succeed they agree on the size.
#include <cstddef>
#include <cstdint>

#include "env/host/firmware.h"
#include "env/images/codecs.h"
#include "env/images/stb_codecs.h"

namespace {

env::Firmware *gFirmware;

bool Decode (bool (*Decoder) (const uint8_t *, size_t, uint32_t &, uint32_t &, uint32_t *&), const uint8_t *Data,
             size_t Size, uint32_t &Width, uint32_t &Height) {
  uint32_t *Pixels = nullptr;
  bool Ok = Decoder (Data, Size, Width, Height, Pixels);
  if (Ok && (!Pixels || gFirmware->BlockSize (Pixels) != (size_t) Width * Height * 4)) __builtin_trap ();
  if (Pixels) gFirmware->FreePool (Pixels);
  if (gFirmware->LiveAllocations () != 0) __builtin_trap ();
  return Ok;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  static env::Firmware Fw;
  gFirmware = &Fw;
  uint32_t HostWidth = 0, HostHeight = 0, FirmwareWidth = 0, FirmwareHeight = 0;
  bool Host = Decode (&env::DecodeJpegInto, Data, Size, HostWidth, HostHeight);
  bool Firmware = Decode (&env::StbDecodeJpeg, Data, Size, FirmwareWidth, FirmwareHeight);
  if (Host && Firmware && (HostWidth != FirmwareWidth || HostHeight != FirmwareHeight)) __builtin_trap ();
  return 0;
}
