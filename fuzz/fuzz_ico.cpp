// Feeds arbitrary bytes to the ICO decoder: the image count, every image
// (DIB or PNG) and the best-size choice. Decoded images must be consistent;
// damaged files must be refused without reading outside the buffer.
#include <stddef.h>
#include <stdint.h>

#include <cstdlib>
#include <vector>

#include "env/images/codecs.h"
#include "env/images/ico_decoder.h"

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
  std::vector<uint8_t> Copy (Data, Data + Size);
  size_t Count = env::IcoImageCount (Copy.data (), Copy.size ());
  Check (Count == 0 || 6 + Count * 16 <= Size);
  env::DecodedImage Img;
  // At most a few images per input keep each run short.
  for (size_t I = 0; I < Count && I < 8; I++) {
    if (env::DecodeIcoImage (Copy.data (), Copy.size (), I, Img)) CheckImage (Img);
  }
  Check (!env::DecodeIcoImage (Copy.data (), Copy.size (), Count, Img));
  if (Count <= 8 && env::DecodeIcoBestSize (Copy.data (), Copy.size (), 32, Img)) CheckImage (Img);
  if (env::DecodePng (Copy.data (), Copy.size (), Img)) CheckImage (Img);
  return 0;
}
