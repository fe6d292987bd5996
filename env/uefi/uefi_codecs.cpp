// The firmware's picture decoders are stb_image's (images/stb_codecs.h).
#include "env/images/codecs.h"
#include "env/images/stb_codecs.h"

namespace env {

bool DecodeJpegInto (const uint8_t *Data, size_t Size, uint32_t &Width, uint32_t &Height, uint32_t *&Pixels) {
  return StbDecodeJpeg (Data, Size, Width, Height, Pixels);
}

bool DecodePng (const uint8_t *Data, size_t Size, DecodedImage &Out) { return StbDecodePng (Data, Size, Out); }

}  // namespace env
