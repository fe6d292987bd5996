// PNG decoding on the host, with libpng.
#include <png.h>

#include <algorithm>
#include <vector>

#include "env/images/codecs.h"

namespace env {

namespace {

bool IsPng (const uint8_t *Data, size_t Size) {
  static const uint8_t Signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  return Size >= 8 && std::equal (Signature, Signature + 8, Data);
}

}  // namespace

bool DecodePng (const uint8_t *Data, size_t Size, DecodedImage &Out) {
  Out = DecodedImage ();
  if (!Data || !IsPng (Data, Size)) return false;
  png_image Image {};
  Image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory (&Image, Data, Size)) return false;
  if (Image.width == 0 || Image.height == 0 || Image.width > kMaxImageSide || Image.height > kMaxImageSide ||
      static_cast<uint64_t> (Image.width) * Image.height > kMaxImagePixels) {
    png_image_free (&Image);
    return false;
  }
  // BGRA bytes in memory are 0xAARRGGBB words on a little-endian host.
  Image.format = PNG_FORMAT_BGRA;
  std::vector<uint32_t> Pixels (static_cast<size_t> (Image.width) * Image.height);
  if (!png_image_finish_read (&Image, nullptr, Pixels.data (), 0, nullptr)) {
    png_image_free (&Image);
    return false;
  }
  Out.Width = Image.width;
  Out.Height = Image.height;
  Out.BitsPerPixel = 32;
  Out.Pixels = std::move (Pixels);
  png_image_free (&Image);
  return true;
}

}  // namespace env
