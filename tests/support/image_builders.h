// Hand-made picture files for the decoder, viewer and benchmark code: BMP
// (1 to 32 bits), ICO, PNG through libpng and baseline JPEG through libjpeg.
#pragma once

#include <png.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// The firmware headers define INT32 and INT16 already; libjpeg's own
// definitions are skipped (the library does not use them internally).
#ifndef XMD_H
#define XMD_H
#endif
#include <jpeglib.h>

namespace test_images {


using Bytes = std::vector<uint8_t>;

inline void Put16 (Bytes &B, size_t At, uint32_t V) {
  B[At] = V & 0xFF;
  B[At + 1] = (V >> 8) & 0xFF;
}
inline void Put32 (Bytes &B, size_t At, uint32_t V) {
  for (int I = 0; I < 4; I++) B[At + I] = (V >> (8 * I)) & 0xFF;
}

// Colour of pixel (x, y) (top-down) as 0xAARRGGBB; for palettised images the
// low byte is the palette index.
using PixelFn = std::function<uint32_t (int X, int Y)>;

// A 40-byte info header, palette and rows (bottom-up unless TopDown).
// HeightField is what the header says (ICO: twice the image height).
inline Bytes MakeDib (int W, int H, int Bpp, bool TopDown, const PixelFn &Px, int HeightField,
                      const std::vector<uint32_t> &Palette = {}) {
  Bytes B (40, 0);
  Put32 (B, 0, 40);
  Put32 (B, 4, static_cast<uint32_t> (W));
  Put32 (B, 8, static_cast<uint32_t> (TopDown ? -HeightField : HeightField));
  Put16 (B, 12, 1);
  Put16 (B, 14, Bpp);
  Put32 (B, 32, static_cast<uint32_t> (Palette.size ()));
  for (uint32_t C : Palette) {
    B.push_back (C & 0xFF), B.push_back ((C >> 8) & 0xFF), B.push_back ((C >> 16) & 0xFF), B.push_back (0);
  }
  size_t Stride = ((size_t (W) * Bpp + 31) / 32) * 4;
  for (int R = 0; R < H; R++) {
    int Y = TopDown ? R : H - 1 - R;
    Bytes Row (Stride, 0);
    for (int X = 0; X < W; X++) {
      uint32_t V = Px (X, Y);
      switch (Bpp) {
        case 1: Row[X / 8] |= (V & 1) << (7 - X % 8); break;
        case 4: Row[X / 2] |= (V & 0xF) << (X % 2 ? 0 : 4); break;
        case 8: Row[X] = V & 0xFF; break;
        case 24: Row[X * 3] = V & 0xFF, Row[X * 3 + 1] = (V >> 8) & 0xFF, Row[X * 3 + 2] = (V >> 16) & 0xFF; break;
        case 32: for (int I = 0; I < 4; I++) Row[X * 4 + I] = (V >> (8 * I)) & 0xFF; break;
      }
    }
    B.insert (B.end (), Row.begin (), Row.end ());
  }
  return B;
}

inline Bytes MakeBmp (int W, int H, int Bpp, bool TopDown, const PixelFn &Px, const std::vector<uint32_t> &Palette = {}) {
  Bytes Dib = MakeDib (W, H, Bpp, TopDown, Px, H, Palette);
  Bytes B (14, 0);
  B[0] = 'B', B[1] = 'M';
  Put32 (B, 2, static_cast<uint32_t> (14 + Dib.size ()));
  Put32 (B, 10, static_cast<uint32_t> (14 + 40 + Palette.size () * 4));
  B.insert (B.end (), Dib.begin (), Dib.end ());
  return B;
}

// An icon DIB: colour rows then the AND mask (Mask(x, y) true = transparent).
inline Bytes MakeIconDib (int W, int H, int Bpp, const PixelFn &Px, const std::function<bool (int, int)> &Mask,
                          const std::vector<uint32_t> &Palette = {}) {
  Bytes B = MakeDib (W, H, Bpp, false, Px, H * 2, Palette);
  size_t Stride = ((size_t (W) + 31) / 32) * 4;
  for (int R = 0; R < H; R++) {
    int Y = H - 1 - R;
    Bytes Row (Stride, 0);
    for (int X = 0; X < W; X++) {
      if (Mask (X, Y)) Row[X / 8] |= 1 << (7 - X % 8);
    }
    B.insert (B.end (), Row.begin (), Row.end ());
  }
  return B;
}

inline Bytes MakePng (int W, int H, const PixelFn &Px) {
  std::vector<uint32_t> Pixels (size_t (W) * H);
  for (int Y = 0; Y < H; Y++)
    for (int X = 0; X < W; X++) Pixels[size_t (Y) * W + X] = Px (X, Y);
  png_image Image {};
  Image.version = PNG_IMAGE_VERSION;
  Image.width = W;
  Image.height = H;
  Image.format = PNG_FORMAT_BGRA;
  png_alloc_size_t Size = 0;
  png_image_write_to_memory (&Image, nullptr, &Size, 0, Pixels.data (), 0, nullptr);
  Bytes Out (Size);
  png_image_write_to_memory (&Image, Out.data (), &Size, 0, Pixels.data (), 0, nullptr);
  Out.resize (Size);
  return Out;
}

struct IcoImage {
  int Width, Height, Bpp;
  Bytes Data;
};

inline Bytes MakeIco (const std::vector<IcoImage> &Images) {
  Bytes B (6 + 16 * Images.size (), 0);
  Put16 (B, 2, 1);
  Put16 (B, 4, static_cast<uint32_t> (Images.size ()));
  for (size_t I = 0; I < Images.size (); I++) {
    size_t E = 6 + 16 * I;
    B[E] = Images[I].Width >= 256 ? 0 : Images[I].Width;   // 0 stands for 256 and more
    B[E + 1] = Images[I].Height >= 256 ? 0 : Images[I].Height;
    Put16 (B, E + 4, 1);
    Put16 (B, E + 6, Images[I].Bpp);
    Put32 (B, E + 8, static_cast<uint32_t> (Images[I].Data.size ()));
    Put32 (B, E + 12, static_cast<uint32_t> (B.size ()));
    B.insert (B.end (), Images[I].Data.begin (), Images[I].Data.end ());
  }
  return B;
}

inline std::string AsString (const Bytes &B) { return std::string (B.begin (), B.end ()); }

inline uint32_t Checker (int X, int Y) { return ((X / 4 + Y / 4) % 2) ? 0xFFFF0000u : 0xFF0000FFu; }

// A bottom-up BMP of 24 or 32 bits.
inline Bytes Bmp (int W, int H, int Bpp = 24, const PixelFn &Px = Checker) { return MakeBmp (W, H, Bpp, false, Px); }

// Opaque colour of image I of the ICO files written by Ico (0x00RRGGBB).
inline uint32_t IcoColour (size_t I) { return 0x102030u + 0x200810u * (uint32_t)I; }

// An ICO file of 32-bit images of the given sizes, image I filled with
// IcoColour (I). ClaimedCount, when set, replaces the image count of the
// header (the directory then lists only the images really present).
inline Bytes Ico (const std::vector<std::pair<int, int>> &Sizes, int ClaimedCount = -1) {
  std::vector<IcoImage> Images;
  for (auto [W, H] : Sizes) {
    uint32_t Colour = 0xFF000000u | IcoColour (Images.size ());
    Images.push_back (
        {W, H, 32, MakeIconDib (W, H, 32, [=] (int, int) { return Colour; }, [] (int, int) { return false; })});
  }
  Bytes B = MakeIco (Images);
  if (ClaimedCount >= 0) Put16 (B, 4, static_cast<uint32_t> (ClaimedCount));
  return B;
}

// Options of EncodeJpeg beyond the pixels.
struct JpegOptions {
  J_COLOR_SPACE Space = JCS_RGB;
  int Quality = 90;
  bool Progressive = false;
  bool AdobeMarker = true;   // libjpeg's default for CMYK and YCCK
};

// A JPEG written by libjpeg; Px fills the Components bytes of pixel (X, Y).
inline Bytes EncodeJpeg (int W, int H, int Components, const std::function<void (int X, int Y, uint8_t *Out)> &Px,
                         const JpegOptions &Options = {}) {
  jpeg_compress_struct Info;
  jpeg_error_mgr Errors;
  Info.err = jpeg_std_error (&Errors);
  jpeg_create_compress (&Info);
  unsigned char *Buffer = nullptr;
  unsigned long Size = 0;
  jpeg_mem_dest (&Info, &Buffer, &Size);
  Info.image_width = W;
  Info.image_height = H;
  Info.input_components = Components;
  Info.in_color_space = Options.Space;
  jpeg_set_defaults (&Info);
  jpeg_set_quality (&Info, Options.Quality, TRUE);
  if (Options.Progressive) jpeg_simple_progression (&Info);
  if (!Options.AdobeMarker) Info.write_Adobe_marker = FALSE;
  jpeg_start_compress (&Info, TRUE);
  Bytes Row (size_t (W) * Components);
  while (Info.next_scanline < Info.image_height) {
    for (int X = 0; X < W; X++) Px (X, (int) Info.next_scanline, Row.data () + size_t (X) * Components);
    JSAMPROW Rows[1] = {Row.data ()};
    jpeg_write_scanlines (&Info, Rows, 1);
  }
  jpeg_finish_compress (&Info);
  jpeg_destroy_compress (&Info);
  Bytes Out (Buffer, Buffer + Size);
  free (Buffer);
  return Out;
}

// An RGB JPEG of the colours Px gives (0xAARRGGBB, alpha ignored).
inline Bytes Jpeg (int W, int H, const PixelFn &Px = Checker, int Quality = 90) {
  JpegOptions Options;
  Options.Quality = Quality;
  return EncodeJpeg (
      W, H, 3,
      [&] (int X, int Y, uint8_t *Out) {
        uint32_t P = Px (X, Y);
        Out[0] = (P >> 16) & 0xFF, Out[1] = (P >> 8) & 0xFF, Out[2] = P & 0xFF;
      },
      Options);
}

}  // namespace test_images
