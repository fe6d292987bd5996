// Fuzz target: both PNG decoders (libpng on the host, stb_image in firmware)
// on arbitrary bytes. Each must fail cleanly or produce Width × Height
// pixels within the limits, with no pool block left behind; when both
// succeed they agree on the size.
#include <cstddef>
#include <cstdint>

#include "env/host/firmware.h"
#include "env/images/codecs.h"
#include "env/images/stb_codecs.h"

namespace {

bool Valid (const env::DecodedImage &Img) {
  return Img.Width > 0 && Img.Height > 0 && Img.Width <= env::kMaxImageSide && Img.Height <= env::kMaxImageSide &&
         Img.Pixels.size () == size_t (Img.Width) * Img.Height;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  static env::Firmware Fw;
  env::DecodedImage Host, Firmware;
  bool HostOk = env::DecodePng (Data, Size, Host);
  bool FirmwareOk = env::StbDecodePng (Data, Size, Firmware);
  if ((HostOk && !Valid (Host)) || (FirmwareOk && !Valid (Firmware))) __builtin_trap ();
  if (HostOk && FirmwareOk && (Host.Width != Firmware.Width || Host.Height != Firmware.Height)) __builtin_trap ();
  if (Fw.LiveAllocations () != 0) __builtin_trap ();
  return 0;
}
