// Feeds arbitrary bytes to the BMP decoder, and the same bytes as a DIB of an
// icon. A decoded image must hold exactly width x height pixels within the
// size limits; anything else must be refused without reading outside the
// buffer (the sanitizers watch the reads).
#include <stddef.h>
#include <stdint.h>

#include <cstdlib>
#include <vector>

#include "env/images/bmp_decoder.h"

namespace {

void Check (bool Condition) {
  if (!Condition) std::abort ();
}

void CheckImage (const env::DecodedImage &Img) {
  Check (Img.Width > 0 && Img.Height > 0);
  Check (Img.Width <= env::kMaxImageSide && Img.Height <= env::kMaxImageSide);
  Check (Img.Pixels.size () == static_cast<size_t> (Img.Width) * Img.Height);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  // An exact-size copy, so that a read past the end is caught.
  std::vector<uint8_t> Copy (Data, Data + Size);
  env::DecodedImage Img;
  if (env::DecodeBmp (Copy.data (), Copy.size (), Img)) {
    CheckImage (Img);
  } else {
    Check (Img.Pixels.empty ());
  }
  if (env::images_detail::DecodeIconDib (Copy.data (), Copy.size (), Img)) CheckImage (Img);
  return 0;
}
