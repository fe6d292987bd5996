// BMP decoding: uncompressed 1-, 4-, 8-bit palettised, 16-, 24- and 32-bit
// images (BI_RGB and BI_BITFIELDS), stored bottom-up or top-down.
// Every size and offset is checked against the buffer; images wider or
// higher than kMaxImageSide or of more than kMaxImagePixels are refused.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace env {

constexpr uint32_t kMaxImageSide = 16384;
constexpr uint64_t kMaxImagePixels = 64ull * 1024 * 1024;

struct DecodedImage {
  uint32_t Width = 0, Height = 0;
  uint16_t BitsPerPixel = 0;          // bits per pixel of the file's image
  std::vector<uint32_t> Pixels;       // 0xAARRGGBB, rows top-down
};

// Decodes a whole BMP file. 24-bit and palettised images are opaque (alpha
// 0xFF). A 32-bit image keeps its alpha channel, unless every alpha byte is 0
// (the fourth byte merely unused, as most writers leave it): then it is opaque.
bool DecodeBmp (const uint8_t *Data, size_t Size, DecodedImage &Out);

namespace images_detail {
// Decodes a device-independent bitmap (info header, palette, pixels) as ICO
// files hold it: the height in the header counts the XOR image and the AND
// mask; the mask gives the alpha of images without their own.
bool DecodeIconDib (const uint8_t *Data, size_t Size, DecodedImage &Out);
}  // namespace images_detail

}  // namespace env
