// JPEG and PNG decoding with Debian's stb_image (libstb-dev), built without
// stdio and with pool memory: the decoders of the firmware's environment,
// where no C library exists. The host builds them too, to fuzz and test
// them against its own libraries. Results and limits are those of codecs.h:
// a JPEG stream cut short, or whose scans are too short for its size, fails
// rather than showing grey filler (trailing bytes after its end are allowed).
#pragma once

#include "env/images/codecs.h"

namespace env {

bool StbDecodeJpeg (const uint8_t *Data, size_t Size, uint32_t &Width, uint32_t &Height, uint32_t *&Pixels);
bool StbDecodePng (const uint8_t *Data, size_t Size, DecodedImage &Out);

}  // namespace env
