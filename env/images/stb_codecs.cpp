#include "env/images/stb_codecs.h"

#include <algorithm>
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

// What stb_image cannot be trusted with, read from the stream's segments
// before it decodes: it fills whatever the entropy-coded data does not cover
// with grey, and reads four-component pictures without an Adobe marker as
// YCbCr. A stream passes when an end-of-image marker follows its last scan,
// its scans hold at least one bit for every 8 x 8 block (each block's DC
// value is coded at least once), and four components come with an Adobe
// marker. Every scan must also name Huffman tables defined before it: stb
// would read a table it never built. A sequential frame's scans use both of
// their tables whatever their spectral range says; progressive scans use the
// DC table only in a first DC scan and the AC table only for AC bands.
bool StreamIsWhole (const uint8_t *Data, size_t Size) {
  if (Size < 4 || Data[0] != 0xFF || Data[1] != 0xD8) return false;
  uint64_t Blocks = 0, CodedBytes = 0;
  int Components = 0, Scans = 0;
  bool Adobe = false, Progressive = false;
  bool Defined[2][16] = {};   // Huffman tables: [DC, AC][identifier]
  size_t At = 2;
  while (At + 2 <= Size) {
    if (Data[At] != 0xFF) return false;
    uint8_t Marker = Data[At + 1];
    if (Marker == 0xFF) {   // fill byte
      At++;
      continue;
    }
    if (Marker == 0xD9) return Scans > 0 && Blocks > 0 && Blocks <= CodedBytes * 8 && (Components != 4 || Adobe);
    if (Marker == 0x01 || (Marker >= 0xD0 && Marker <= 0xD7)) {   // markers without a length
      At += 2;
      continue;
    }
    if (At + 4 > Size) return false;
    size_t Length = size_t (Data[At + 2]) << 8 | Data[At + 3];
    if (Length < 2 || At + 2 + Length > Size) return false;
    const uint8_t *Segment = Data + At + 4;
    bool FrameHeader = Marker >= 0xC0 && Marker <= 0xCF && Marker != 0xC4 && Marker != 0xC8 && Marker != 0xCC;
    if (FrameHeader && Length >= 8) {
      uint32_t Height = uint32_t (Segment[1]) << 8 | Segment[2], Width = uint32_t (Segment[3]) << 8 | Segment[4];
      Components = Segment[5];
      Progressive = Marker == 0xC2 || Marker == 0xC6 || Marker == 0xCA || Marker == 0xCE;
      if (Components == 0 || Length < 8 + 3u * Components) return false;
      int MaxH = 1, MaxV = 1;
      for (int C = 0; C < Components; C++)
        MaxH = std::max (MaxH, Segment[7 + 3 * C] >> 4), MaxV = std::max (MaxV, Segment[7 + 3 * C] & 15);
      Blocks = 0;
      for (int C = 0; C < Components; C++) {
        uint64_t H = Segment[7 + 3 * C] >> 4, V = Segment[7 + 3 * C] & 15;
        uint64_t Columns = (Width * H + MaxH - 1) / MaxH, Rows = (Height * V + MaxV - 1) / MaxV;
        Blocks += ((Columns + 7) / 8) * ((Rows + 7) / 8);
      }
    }
    if (Marker == 0xEE && Length >= 7 && std::memcmp (Segment, "Adobe", 5) == 0) Adobe = true;
    if (Marker == 0xC4) {
      for (size_t T = 0; T + 17 <= Length - 2;) {
        uint8_t Class = Segment[T] >> 4, Id = Segment[T] & 15;
        size_t Codes = 0;
        for (int I = 1; I <= 16; I++) Codes += Segment[T + I];
        if (Class > 1 || T + 17 + Codes > Length - 2) return false;
        Defined[Class][Id] = true;
        T += 17 + Codes;
      }
    }
    if (Marker == 0xDA) {
      size_t Count = Length >= 3 ? Segment[0] : 0;
      if (Count == 0 || Length < 6 + 2 * Count) return false;
      uint8_t First = Segment[1 + 2 * Count], Last = Segment[2 + 2 * Count], High = Segment[3 + 2 * Count] >> 4;
      bool UsesDc = !Progressive || (First == 0 && High == 0), UsesAc = !Progressive || Last > 0;
      for (size_t C = 0; C < Count; C++) {
        uint8_t Tables = Segment[2 + 2 * C];
        if ((UsesDc && !Defined[0][Tables >> 4]) || (UsesAc && !Defined[1][Tables & 15])) return false;
      }
    }
    At += 2 + Length;
    if (Marker != 0xDA) continue;
    if (++Scans > kMaxJpegScans) return false;
    // The entropy-coded data: up to the next marker other than a stuffed
    // 0xFF00 or a restart.
    size_t Start = At;
    while (At + 1 < Size && !(Data[At] == 0xFF && Data[At + 1] != 0x00 && (Data[At + 1] < 0xD0 || Data[At + 1] > 0xD7)))
      At++;
    CodedBytes += At - Start;
  }
  return false;
}

// stb_image checks no PNG checksum. A PNG passes when every chunk up to
// IEND lies within the file and its CRC matches, as libpng demands.
bool PngChunksAreWhole (const uint8_t *Data, size_t Size) {
  static uint32_t Table[256];
  if (Table[1] == 0)
    for (uint32_t N = 0; N < 256; N++) {
      uint32_t C = N;
      for (int K = 0; K < 8; K++) C = (C & 1) ? 0xEDB88320u ^ (C >> 1) : C >> 1;
      Table[N] = C;
    }
  auto Read32 = [Data] (size_t At) {
    return uint32_t (Data[At]) << 24 | uint32_t (Data[At + 1]) << 16 | uint32_t (Data[At + 2]) << 8 | Data[At + 3];
  };
  size_t At = 8;
  while (At + 12 <= Size) {
    uint32_t Length = Read32 (At);
    if (Length > Size - At - 12) return false;
    uint32_t Crc = 0xFFFFFFFFu;
    for (size_t I = At + 4; I < At + 8 + Length; I++) Crc = Table[(Crc ^ Data[I]) & 0xFF] ^ (Crc >> 8);
    if ((Crc ^ 0xFFFFFFFFu) != Read32 (At + 8 + Length)) return false;
    if (std::memcmp (Data + At + 4, "IEND", 4) == 0) return true;
    At += 12 + size_t (Length);
  }
  return false;
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
  if (Data == nullptr || !StreamIsWhole (Data, Size)) return false;
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
  if (Data == nullptr || Size < 8 || std::memcmp (Data, Signature, 8) != 0 || !PngChunksAreWhole (Data, Size))
    return false;
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
