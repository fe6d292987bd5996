// Picture decoders that each backend supplies: the host uses libjpeg and
// libpng, firmware a freestanding decoder. The results are the same: pixels
// 0xAARRGGBB, rows top-down.
#pragma once

#include <cstddef>
#include <cstdint>

#include "env/images/bmp_decoder.h"

namespace env {

constexpr uint32_t kMaxJpegSide = 16384;
constexpr uint64_t kMaxJpegPixels = 64ull << 20;
constexpr int kMaxJpegScans = 500;

// Decodes a JPEG file into opaque pixels (0xFFRRGGBB) in a pool block of
// Width × Height × 4 bytes. Grayscale, YCbCr/RGB and CMYK/YCCK pictures are
// accepted (in firmware, four components only with an Adobe marker). Pictures wider or higher than kMaxJpegSide, or of more than
// kMaxJpegPixels pixels, are refused before any pixel memory is taken; a
// stream that is cut short or corrupt fails rather than showing filler.
// Pixels is set as soon as the block is allocated: after a failure that got
// that far the caller still frees it. Width and Height are set from the
// picture's header.
bool DecodeJpegInto (const uint8_t *Data, size_t Size, uint32_t &Width, uint32_t &Height, uint32_t *&Pixels);

// Decodes a PNG image held in memory (ICO files may hold them).
bool DecodePng (const uint8_t *Data, size_t Size, DecodedImage &Out);

}  // namespace env
