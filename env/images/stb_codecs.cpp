#include "env/images/stb_codecs.h"

#include <cstring>

#include "env/pool.h"

namespace {

void *StbAllocate (size_t Size) { return env::PoolAllocate (Size); }

void StbFree (void *Block) { env::PoolFree (Block); }

void *StbReallocate (void *Block, size_t Old, size_t New) {
  void *Grown = env::PoolAllocate (New);
  if (Grown != nullptr && Block != nullptr) std::memcpy (Grown, Block, Old < New ? Old : New);
  if (Grown != nullptr) env::PoolFree (Block);
  return Grown;
}

}  // namespace

#define STBI_NO_STDIO
#define STBI_NO_LINEAR
#define STBI_NO_HDR
#define STBI_NO_FAILURE_STRINGS
#define STBI_ONLY_JPEG
#define STBI_ONLY_PNG
#define STBI_ASSERT(Condition) ((void) 0)
#define STBI_MALLOC(Size) StbAllocate (Size)
#define STBI_FREE(Block) StbFree (Block)
#define STBI_REALLOC_SIZED(Block, Old, New) StbReallocate (Block, Old, New)
#define STBI_MAX_DIMENSIONS 16384
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#include <stb/stb_image.h>
#pragma GCC diagnostic pop

namespace env {

namespace {

// Whether the stream is whole: an end-of-image marker follows its last scan.
// (Inside a scan every 0xFF byte is followed by 0x00 or a restart number.)
bool EndsWithEndOfImage (const uint8_t *Data, size_t Size) {
  bool SeenScan = false, Ended = false;
  for (size_t I = 0; I + 1 < Size; I++) {
    if (Data[I] != 0xFF) continue;
    if (Data[I + 1] == 0xDA) SeenScan = true, Ended = false;
    if (Data[I + 1] == 0xD9 && SeenScan) Ended = true;
  }
  return Ended;
}

// Decodes with stb_image into 4-channel RGBA bytes, checking the size first.
stbi_uc *Decode (const uint8_t *Data, size_t Size, uint32_t &Width, uint32_t &Height) {
  if (Data == nullptr || Size < 4 || Size > 0x7FFFFFFF) return nullptr;
  int W = 0, H = 0, Channels = 0;
  if (!stbi_info_from_memory (Data, static_cast<int> (Size), &W, &H, &Channels)) return nullptr;
  if (W <= 0 || H <= 0) return nullptr;
  Width = static_cast<uint32_t> (W), Height = static_cast<uint32_t> (H);
  if (Width > kMaxJpegSide || Height > kMaxJpegSide || uint64_t (Width) * Height > kMaxJpegPixels) return nullptr;
  stbi_uc *Rgba = stbi_load_from_memory (Data, static_cast<int> (Size), &W, &H, &Channels, 4);
  if (Rgba != nullptr && (uint32_t (W) != Width || uint32_t (H) != Height)) {
    stbi_image_free (Rgba);
    return nullptr;
  }
  return Rgba;
}

uint32_t Pixel (const stbi_uc *P, bool Opaque) {
  uint32_t Alpha = Opaque ? 0xFF : P[3];
  return (Alpha << 24) | (uint32_t (P[0]) << 16) | (uint32_t (P[1]) << 8) | P[2];
}

}  // namespace

bool StbDecodeJpeg (const uint8_t *Data, size_t Size, uint32_t &Width, uint32_t &Height, uint32_t *&Pixels) {
  if (Data == nullptr || Size < 4 || Data[0] != 0xFF || Data[1] != 0xD8 || !EndsWithEndOfImage (Data, Size))
    return false;
  uint32_t W = 0, H = 0;
  stbi_uc *Rgba = Decode (Data, Size, W, H);
  if (W != 0 && H != 0) Width = W, Height = H;
  if (Rgba == nullptr) return false;
  Pixels = static_cast<uint32_t *> (PoolAllocate (size_t (W) * H * 4));
  if (Pixels != nullptr)
    for (size_t I = 0; I < size_t (W) * H; I++) Pixels[I] = Pixel (Rgba + I * 4, true);
  stbi_image_free (Rgba);
  return Pixels != nullptr;
}

bool StbDecodePng (const uint8_t *Data, size_t Size, DecodedImage &Out) {
  Out = DecodedImage ();
  static const uint8_t Signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  if (Data == nullptr || Size < 8 || std::memcmp (Data, Signature, 8) != 0) return false;
  uint32_t W = 0, H = 0;
  stbi_uc *Rgba = Decode (Data, Size, W, H);
  if (Rgba == nullptr) return false;
  if (W > kMaxImageSide || H > kMaxImageSide || uint64_t (W) * H > kMaxImagePixels) {
    stbi_image_free (Rgba);
    return false;
  }
  Out.Width = W, Out.Height = H, Out.BitsPerPixel = 32;
  Out.Pixels.resize (size_t (W) * H);
  for (size_t I = 0; I < Out.Pixels.size (); I++) Out.Pixels[I] = Pixel (Rgba + I * 4, false);
  stbi_image_free (Rgba);
  return true;
}

}  // namespace env
