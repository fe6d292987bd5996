// Small picture files written by the tests themselves: BMP (24 and 32 bits),
// ICO (32-bit DIB images) and baseline JPEG through libjpeg.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

inline void Put16 (std::vector<uint8_t> &Out, uint32_t Value) {
  Out.push_back (Value & 0xFF);
  Out.push_back ((Value >> 8) & 0xFF);
}

inline void Put32 (std::vector<uint8_t> &Out, uint32_t Value) {
  Put16 (Out, Value & 0xFFFF);
  Put16 (Out, Value >> 16);
}

using PixelFn = std::function<uint32_t (uint32_t X, uint32_t Y)>;   // 0xAARRGGBB

inline uint32_t Checker (uint32_t X, uint32_t Y) {
  return ((X / 4 + Y / 4) % 2) ? 0xFFFF0000u : 0xFF0000FFu;
}

// Pixel rows of a DIB, bottom-up, rows padded to 4 bytes.
inline void PutDibPixels (std::vector<uint8_t> &Out, uint32_t Width, uint32_t Height, uint16_t Bits,
                          const PixelFn &Pixel) {
  uint32_t RowBytes = (Width * (Bits / 8) + 3) & ~3u;
  for (uint32_t Row = 0; Row < Height; Row++) {
    uint32_t Y = Height - 1 - Row;
    size_t Start = Out.size ();
    for (uint32_t X = 0; X < Width; X++) {
      uint32_t P = Pixel (X, Y);
      Out.push_back (P & 0xFF);
      Out.push_back ((P >> 8) & 0xFF);
      Out.push_back ((P >> 16) & 0xFF);
      if (Bits == 32) Out.push_back (P >> 24);
    }
    while (Out.size () - Start < RowBytes) Out.push_back (0);
  }
}

inline void PutInfoHeader (std::vector<uint8_t> &Out, uint32_t Width, uint32_t Height, uint16_t Bits) {
  Put32 (Out, 40);
  Put32 (Out, Width);
  Put32 (Out, Height);
  Put16 (Out, 1);
  Put16 (Out, Bits);
  Put32 (Out, 0);   // BI_RGB
  Put32 (Out, 0);
  Put32 (Out, 2835);
  Put32 (Out, 2835);
  Put32 (Out, 0);
  Put32 (Out, 0);
}

inline std::string AsString (const std::vector<uint8_t> &Bytes) { return std::string (Bytes.begin (), Bytes.end ()); }

inline std::vector<uint8_t> Bmp (uint32_t Width, uint32_t Height, uint16_t Bits = 24,
                                 const PixelFn &Pixel = Checker) {
  std::vector<uint8_t> Dib;
  PutDibPixels (Dib, Width, Height, Bits, Pixel);
  std::vector<uint8_t> Out;
  Out.push_back ('B');
  Out.push_back ('M');
  Put32 (Out, 14 + 40 + (uint32_t)Dib.size ());
  Put32 (Out, 0);
  Put32 (Out, 14 + 40);
  PutInfoHeader (Out, Width, Height, Bits);
  Out.insert (Out.end (), Dib.begin (), Dib.end ());
  return Out;
}

// Opaque colour of image I of the ICO files written here (0x00RRGGBB).
inline uint32_t IcoColour (size_t I) { return 0x102030u + 0x200810u * (uint32_t)I; }

// An ICO file of 32-bit DIB images of the given sizes, image I filled with
// IcoColour (I). ClaimedCount, when set, replaces the image count of the
// header (the directory then lists only the images really present).
inline std::vector<uint8_t> Ico (const std::vector<std::pair<uint32_t, uint32_t>> &Sizes, int ClaimedCount = -1) {
  std::vector<std::vector<uint8_t>> Images;
  for (auto [W, H] : Sizes) {
    std::vector<uint8_t> Image;
    PutInfoHeader (Image, W, H * 2, 32);
    uint32_t Colour = 0xFF000000u | IcoColour (Images.size ());
    PutDibPixels (Image, W, H, 32, [Colour] (uint32_t, uint32_t) { return Colour; });
    uint32_t MaskRow = ((W + 31) / 32) * 4;
    Image.insert (Image.end (), (size_t)MaskRow * H, 0);
    Images.push_back (std::move (Image));
  }
  std::vector<uint8_t> Out;
  Put16 (Out, 0);
  Put16 (Out, 1);
  Put16 (Out, ClaimedCount >= 0 ? (uint32_t)ClaimedCount : (uint32_t)Images.size ());
  uint32_t Offset = 6 + 16 * (uint32_t)Images.size ();
  for (size_t I = 0; I < Images.size (); I++) {
    Out.push_back (Sizes[I].first >= 256 ? 0 : Sizes[I].first);
    Out.push_back (Sizes[I].second >= 256 ? 0 : Sizes[I].second);
    Out.push_back (0);
    Out.push_back (0);
    Put16 (Out, 1);
    Put16 (Out, 32);
    Put32 (Out, (uint32_t)Images[I].size ());
    Put32 (Out, Offset);
    Offset += (uint32_t)Images[I].size ();
  }
  for (auto &Image : Images) Out.insert (Out.end (), Image.begin (), Image.end ());
  return Out;
}

inline std::vector<uint8_t> Jpeg (uint32_t Width, uint32_t Height, const PixelFn &Pixel = Checker, int Quality = 90) {
  jpeg_compress_struct Info;
  jpeg_error_mgr Errors;
  Info.err = jpeg_std_error (&Errors);
  jpeg_create_compress (&Info);
  unsigned char *Buffer = nullptr;
  unsigned long Size = 0;
  jpeg_mem_dest (&Info, &Buffer, &Size);
  Info.image_width = Width;
  Info.image_height = Height;
  Info.input_components = 3;
  Info.in_color_space = JCS_RGB;
  jpeg_set_defaults (&Info);
  jpeg_set_quality (&Info, Quality, TRUE);
  jpeg_start_compress (&Info, TRUE);
  std::vector<uint8_t> Row (Width * 3);
  while (Info.next_scanline < Info.image_height) {
    for (uint32_t X = 0; X < Width; X++) {
      uint32_t P = Pixel (X, Info.next_scanline);
      Row[X * 3] = (P >> 16) & 0xFF;
      Row[X * 3 + 1] = (P >> 8) & 0xFF;
      Row[X * 3 + 2] = P & 0xFF;
    }
    JSAMPROW Rows[1] = {Row.data ()};
    jpeg_write_scanlines (&Info, Rows, 1);
  }
  jpeg_finish_compress (&Info);
  jpeg_destroy_compress (&Info);
  std::vector<uint8_t> Out (Buffer, Buffer + Size);
  free (Buffer);
  return Out;
}

}  // namespace test_images
