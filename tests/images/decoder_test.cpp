#include <gtest/gtest.h>

#include "env/host/firmware.h"
#include "env/images/bmp_decoder.h"
#include "env/images/ico_decoder.h"
#include "env/images/stb_codecs.h"
#include "support/image_builders.h"

using namespace test_images;
using env::DecodedImage;

namespace {

uint32_t Gradient (int X, int Y) { return 0xFF000000u | (X * 40) << 16 | (Y * 50) << 8 | (X + Y); }

bool Bmp (const Bytes &B, DecodedImage &Img) { return env::DecodeBmp (B.data (), B.size (), Img); }

// The pixels of a W x H picture, top-down.
std::vector<uint32_t> Pixels (int W, int H, const PixelFn &Px) {
  std::vector<uint32_t> Out;
  for (int Y = 0; Y < H; Y++)
    for (int X = 0; X < W; X++) Out.push_back (Px (X, Y));
  return Out;
}

}  // namespace

TEST (BmpDecoder, DecodesTrueColourRowsInEitherOrderAndPalettisedImages) {
  for (bool TopDown : {false, true}) {
    // Width 3 at 24 bits makes rows of 9 bytes padded to 12.
    Bytes B = MakeBmp (3, 2, 24, TopDown, Gradient);
    DecodedImage Img;
    ASSERT_TRUE (Bmp (B, Img)) << TopDown;
    EXPECT_TRUE (Img.Width == 3 && Img.Height == 2 && Img.BitsPerPixel == 24);
    EXPECT_EQ (Img.Pixels, Pixels (3, 2, Gradient));
  }
  // Palettes of 16 and 256 colours, and two-colour rows (9 pixels wide).
  std::vector<uint32_t> Palette {0x000000, 0xFF0000, 0x00FF00, 0x0000FF};
  auto Index = [] (int X, int Y) { return uint32_t ((X + Y) % 4); };
  for (int Bpp : {4, 8}) {
    DecodedImage Img;
    ASSERT_TRUE (Bmp (MakeBmp (5, 3, Bpp, false, Index, Palette), Img)) << Bpp;
    EXPECT_EQ (Img.BitsPerPixel, Bpp);
    EXPECT_EQ (Img.Pixels, Pixels (5, 3, [&] (int X, int Y) { return 0xFF000000u | Palette[(X + Y) % 4]; }));
  }
  DecodedImage Mono;
  ASSERT_TRUE (Bmp (MakeBmp (9, 2, 1, true, [] (int X, int) { return uint32_t (X % 2); }, {0xFFFFFF, 0x000080}), Mono));
  EXPECT_EQ (Mono.Pixels, Pixels (9, 2, [] (int X, int) { return X % 2 ? 0xFF000080u : 0xFFFFFFFFu; }));
}

TEST (BmpDecoder, ThirtyTwoBitKeepsAlphaUnlessNoneIsSet) {
  auto WithAlpha = [] (int X, int Y) { return (uint32_t (X * 100) << 24) | 0x123456u; };
  DecodedImage Img;
  ASSERT_TRUE (Bmp (MakeBmp (2, 1, 32, false, WithAlpha), Img));
  EXPECT_EQ (Img.BitsPerPixel, 32);
  EXPECT_EQ (Img.Pixels, (std::vector<uint32_t> {0x00123456u, 0x64123456u}));

  // Every fourth byte zero: the byte is unused and the picture opaque.
  ASSERT_TRUE (Bmp (MakeBmp (2, 2, 32, false, [] (int, int) { return 0x00ABCDEFu; }), Img));
  EXPECT_EQ (Img.BitsPerPixel, 32);
  EXPECT_EQ (Img.Pixels, std::vector<uint32_t> (4, 0xFFABCDEFu));
}

TEST (BmpDecoder, RefusesDamagedAndHostileFiles) {
  const Bytes Good = MakeBmp (4, 4, 24, false, Gradient);
  DecodedImage Img;
  ASSERT_TRUE (Bmp (Good, Img));
  // Every truncation fails cleanly and leaves an empty image.
  for (size_t Len = 0; Len < Good.size (); Len++) {
    EXPECT_FALSE (env::DecodeBmp (Good.data (), Len, Img)) << Len;
    EXPECT_TRUE (Img.Pixels.empty ());
  }
  EXPECT_FALSE (env::DecodeBmp (nullptr, 100, Img));

  auto Patched = [&] (size_t At, uint32_t V, bool Word = false) {
    Bytes B = Good;
    if (Word) Put16 (B, At, V); else Put32 (B, At, V);
    return B;
  };
  // The signature; a zero, negative or too large width; a zero height; bits
  // per pixel; run-length compression; a pixel offset past the end; the header size.
  for (const Bytes &Bad : {Patched (0, 'X', true), Patched (18, 0), Patched (18, uint32_t (-4)), Patched (18, 20000),
                           Patched (18, 0x7FFFFFFF), Patched (22, 0), Patched (28, 7, true), Patched (30, 1),
                           Patched (10, 0xFFFFFFF0u), Patched (14, 0xFFFFFFFFu)})
    EXPECT_FALSE (Bmp (Bad, Img));

  // 16384 x 16384 is within each side's limit but over the pixel limit;
  // the header alone must not make the decoder allocate.
  Bytes Huge = Patched (18, 16384);
  Put32 (Huge, 22, 16384);
  EXPECT_FALSE (Bmp (Huge, Img));
  // A palette that claims more entries than the file holds.
  Bytes Pal = MakeBmp (2, 2, 8, false, [] (int, int) { return 0u; }, {0x112233});
  Put32 (Pal, 14 + 32, 200);
  EXPECT_FALSE (Bmp (Pal, Img));
}

TEST (IcoDecoder, DecodesDibImagesWithTheirMasks) {
  auto Mask = [] (int X, int Y) { return X == Y; };
  Bytes Ico = MakeIco ({
      {16, 16, 8, MakeIconDib (16, 16, 8, [] (int X, int) { return uint32_t (X % 2); }, Mask, {0xFF0000, 0x0000FF})},
      {32, 32, 32, MakeIconDib (32, 32, 32, [] (int X, int) { return X < 16 ? 0x80102030u : 0xFF405060u; },
                                [] (int, int) { return true; })},
      {8, 8, 24, MakeIconDib (8, 8, 24, Gradient, [] (int X, int) { return X >= 4; })},
  });
  ASSERT_EQ (env::IcoImageCount (Ico.data (), Ico.size ()), 3u);

  DecodedImage Img;
  // The header's doubled height is halved; the diagonal is masked out.
  ASSERT_TRUE (env::DecodeIcoImage (Ico.data (), Ico.size (), 0, Img));
  EXPECT_EQ (Img.Width * 100 + Img.Height, 1616u);
  EXPECT_EQ (Img.Pixels, Pixels (16, 16, [] (int X, int Y) { return (X == Y ? 0 : 0xFF000000u) | (X % 2 ? 0x0000FF : 0xFF0000); }));

  // A 32-bit image with its own alpha ignores the mask.
  ASSERT_TRUE (env::DecodeIcoImage (Ico.data (), Ico.size (), 1, Img));
  EXPECT_EQ (Img.BitsPerPixel, 32);
  EXPECT_EQ (Img.Pixels, Pixels (32, 32, [] (int X, int) { return X < 16 ? 0x80102030u : 0xFF405060u; }));

  ASSERT_TRUE (env::DecodeIcoImage (Ico.data (), Ico.size (), 2, Img));
  EXPECT_EQ (Img.Pixels, Pixels (8, 8, [] (int X, int Y) { return Gradient (X, Y) & (X >= 4 ? 0x00FFFFFFu : ~0u); }));

  EXPECT_FALSE (env::DecodeIcoImage (Ico.data (), Ico.size (), 3, Img));
}

TEST (IcoDecoder, DecodesPngImages) {
  auto Px = [] (int X, int Y) { return (uint32_t (X * 8) << 24) | uint32_t (Y * 4) << 16 | 0x00AA55u; };
  Bytes Ico = MakeIco ({{32, 32, 32, MakePng (32, 32, Px)}});
  DecodedImage Img;
  ASSERT_TRUE (env::DecodeIcoImage (Ico.data (), Ico.size (), 0, Img));
  EXPECT_EQ (Img.BitsPerPixel, 32);
  // 8-bit output keeps straight (not premultiplied) colour.
  EXPECT_EQ (Img.Pixels, Pixels (32, 32, Px));

  // A damaged PNG stream fails without crashing.
  Bytes Broken = Ico;
  for (size_t I = 6 + 16 + 40; I < Broken.size (); I += 7) Broken[I] ^= 0x5A;
  EXPECT_FALSE (env::DecodeIcoImage (Broken.data (), Broken.size (), 0, Img));

  // Firmware's decoder (stb_image) gives the same pixels and refuses the
  // same damage: a changed byte (caught by its chunk's CRC) or a cut.
  env::Firmware Fw;   // the pool stb_image's memory comes from
  Bytes Png = MakePng (32, 32, Px);
  DecodedImage Host, Firmware;
  ASSERT_TRUE (env::DecodePng (Png.data (), Png.size (), Host));
  ASSERT_TRUE (env::StbDecodePng (Png.data (), Png.size (), Firmware));
  EXPECT_EQ (Firmware.Pixels, Host.Pixels);
  // (The CRC of IHDR, a byte of the picture data, the CRC of IEND.)
  for (size_t At : {size_t (30), Png.size () - 26, Png.size () - 2}) {
    Bytes Damaged = Png;
    Damaged[At] ^= 0x10;
    EXPECT_FALSE (env::StbDecodePng (Damaged.data (), Damaged.size (), Firmware)) << At;
    EXPECT_FALSE (env::StbDecodePng (Png.data (), At, Firmware)) << At;
  }
  EXPECT_EQ (Fw.LiveAllocations (), 0u);
}

TEST (IcoDecoder, PicksTheBestSize) {
  auto Solid = [] (uint32_t C) { return [C] (int, int) { return C; }; };
  auto None = [] (int, int) { return false; };
  Bytes Ico = MakeIco ({
      {48, 48, 24, MakeIconDib (48, 48, 24, Solid (0x000048), None)},
      {16, 16, 24, MakeIconDib (16, 16, 24, Solid (0x000016), None)},
      {32, 32, 24, MakeIconDib (32, 32, 24, Solid (0x000032), None)},
  });
  DecodedImage Img;
  auto Best = [&] (unsigned Size) {
    EXPECT_TRUE (env::DecodeIcoBestSize (Ico.data (), Ico.size (), Size, Img));
    return Img.Width;
  };
  // Exact, else the smallest larger one, else the largest.
  EXPECT_EQ ((std::vector<unsigned> {Best (32), Best (16), Best (20), Best (64)}), (std::vector<unsigned> {32, 16, 32, 48}));
  EXPECT_EQ (Img.Pixels[0], 0xFF000048u);
}

TEST (IcoDecoder, RefusesDamagedAndHostileFiles) {
  const Bytes Good = MakeIco ({{16, 16, 24, MakeIconDib (16, 16, 24, Gradient, [] (int, int) { return false; })}});
  DecodedImage Img;
  ASSERT_TRUE (env::DecodeIcoImage (Good.data (), Good.size (), 0, Img));
  // Cut anywhere before the end of the colour rows: refused. (A missing AND
  // mask alone leaves the image opaque.)
  for (size_t Len = 0; Len < 6 + 16 + 40 + 16 * 16 * 3; Len++) {
    EXPECT_FALSE (env::DecodeIcoImage (Good.data (), Len, 0, Img)) << Len;
  }
  // Neither icon nor cursor, more entries than the file holds, image offset
  // or size past the end, a DIB of height zero or wider than allowed.
  struct Patch {
    size_t At;
    uint32_t Value;
  } Patches[] = {{2, 3}, {4, 60000}, {6 + 12, 0xFFFFFF00u}, {6 + 8, 0xFFFFFFFFu}, {6 + 16 + 8, 0}, {6 + 16 + 4, 100000}};
  for (const Patch &P : Patches) {
    Bytes B = Good;
    if (P.At < 6) Put16 (B, P.At, P.Value); else Put32 (B, P.At, P.Value);
    if (P.At < 6) EXPECT_EQ (env::IcoImageCount (B.data (), B.size ()), 0u) << P.At;
    EXPECT_FALSE (env::DecodeIcoImage (B.data (), B.size (), 0, Img)) << P.At;
    EXPECT_FALSE (env::DecodeIcoBestSize (B.data (), B.size (), 16, Img)) << P.At;
  }
  EXPECT_EQ (env::IcoImageCount (nullptr, 0), 0u);
}
