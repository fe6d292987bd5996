// BMP and DIB decoding. All reads go through bounds-checked helpers; sizes
// are computed in 64 bits so that no product can wrap.
#include "env/images/bmp_decoder.h"

#include <bit>

namespace env {

namespace {

struct Reader {
  const uint8_t *Data;
  size_t Size;
  bool Has (uint64_t Offset, uint64_t Length) const { return Offset <= Size && Length <= Size - Offset; }
  uint32_t U8 (size_t O) const { return Data[O]; }
  uint32_t U16 (size_t O) const { return Data[O] | (Data[O + 1] << 8); }
  uint32_t U32 (size_t O) const {
    return Data[O] | (Data[O + 1] << 8) | (Data[O + 2] << 16) | (static_cast<uint32_t> (Data[O + 3]) << 24);
  }
};

// One colour component selected by a bit mask, widened to 8 bits.
struct Channel {
  uint32_t Mask = 0;
  unsigned Shift = 0;
  uint32_t Max = 0;
  explicit Channel (uint32_t M = 0) : Mask (M) {
    if (!M) return;
    Shift = std::countr_zero (M);
    Max = (M >> Shift);
    // Masks with holes are read as if contiguous from their lowest bit.
    Max = Max == 0xFFFFFFFFu ? Max : ((1u << std::popcount (Max)) - 1);
    if (Max == 0) Max = 1;
  }
  uint32_t Get (uint32_t Px, uint32_t Absent) const {
    if (!Mask) return Absent;
    uint64_t V = ((Px & Mask) >> Shift) & Max;
    return static_cast<uint32_t> (V * 255 / Max);
  }
};

struct DibInfo {
  int64_t Width = 0, Height = 0;   // Height: rows of the colour image
  bool TopDown = false;
  unsigned Bpp = 0;
  uint32_t Compression = 0;
  uint32_t Masks[4] = {};          // red, green, blue, alpha
  bool HasMasks = false;
  size_t PaletteOffset = 0, PaletteCount = 0, PaletteEntry = 4;
  size_t End = 0;                  // first byte after header, masks and palette
};

constexpr uint32_t BiRgb = 0, BiBitfields = 3, BiAlphaBitfields = 6;

bool ParseInfo (const Reader &R, size_t At, bool Icon, DibInfo &I) {
  if (!R.Has (At, 4)) return false;
  uint32_t HeaderSize = R.U32 (At);
  if (HeaderSize == 12) {
    if (!R.Has (At, 12)) return false;
    I.Width = R.U16 (At + 4);
    I.Height = R.U16 (At + 6);
    I.Bpp = R.U16 (At + 10);
    I.PaletteEntry = 3;
  } else if (HeaderSize >= 40 && HeaderSize <= 4096) {
    if (!R.Has (At, HeaderSize)) return false;
    I.Width = static_cast<int32_t> (R.U32 (At + 4));
    I.Height = static_cast<int32_t> (R.U32 (At + 8));
    I.Bpp = R.U16 (At + 14);
    I.Compression = R.U32 (At + 16);
    I.PaletteCount = R.U32 (At + 32);
    if (I.Compression == BiBitfields || I.Compression == BiAlphaBitfields) {
      size_t MaskCount = I.Compression == BiAlphaBitfields ? 4 : 3;
      size_t MaskAt = At + 40;
      if (HeaderSize >= 56) MaskCount = 4;
      if (HeaderSize < 40 + MaskCount * 4) {
        // Masks follow a short header.
        if (!R.Has (At + HeaderSize, MaskCount * 4)) return false;
        MaskAt = At + HeaderSize;
        HeaderSize += static_cast<uint32_t> (MaskCount * 4);
      }
      for (size_t M = 0; M < MaskCount; M++) I.Masks[M] = R.U32 (MaskAt + M * 4);
      I.HasMasks = true;
    }
  } else {
    return false;
  }
  if (I.Width <= 0 || I.Height == 0) return false;
  if (I.Height < 0) {
    I.TopDown = true;
    I.Height = -I.Height;
  }
  if (Icon) {
    I.Height /= 2;
    if (I.Height == 0) return false;
  }
  if (I.Width > kMaxImageSide || I.Height > kMaxImageSide ||
      static_cast<uint64_t> (I.Width) * static_cast<uint64_t> (I.Height) > kMaxImagePixels) {
    return false;
  }
  switch (I.Bpp) {
    case 1: case 4: case 8: case 24:
      if (I.Compression != BiRgb) return false;
      break;
    case 16: case 32:
      if (I.Compression != BiRgb && !I.HasMasks) return false;
      break;
    default:
      return false;
  }
  if (!I.HasMasks) {
    if (I.Bpp == 16) {
      I.Masks[0] = 0x7C00, I.Masks[1] = 0x03E0, I.Masks[2] = 0x001F;
    } else if (I.Bpp == 32) {
      I.Masks[0] = 0x00FF0000, I.Masks[1] = 0x0000FF00, I.Masks[2] = 0x000000FF, I.Masks[3] = 0xFF000000;
    }
  }
  I.PaletteOffset = At + HeaderSize;
  if (I.Bpp <= 8) {
    size_t Max = size_t (1) << I.Bpp;
    if (I.PaletteCount == 0 || I.PaletteCount > Max) I.PaletteCount = Max;
    if (!R.Has (I.PaletteOffset, static_cast<uint64_t> (I.PaletteCount) * I.PaletteEntry)) return false;
  } else {
    I.PaletteCount = 0;
  }
  I.End = I.PaletteOffset + I.PaletteCount * I.PaletteEntry;
  return true;
}

// Decodes the colour image whose rows start at PixelOffset. Returns false
// when the rows do not fit in the buffer.
bool DecodePixels (const Reader &R, const DibInfo &I, size_t PixelOffset, DecodedImage &Out) {
  const uint64_t W = I.Width, H = I.Height;
  const uint64_t Stride = ((W * I.Bpp + 31) / 32) * 4;
  if (!R.Has (PixelOffset, Stride * H)) return false;
  uint32_t Palette[256];
  for (size_t P = 0; P < 256; P++) Palette[P] = 0xFF000000u;
  for (size_t P = 0; P < I.PaletteCount; P++) {
    size_t O = I.PaletteOffset + P * I.PaletteEntry;
    Palette[P] = 0xFF000000u | (R.U8 (O + 2) << 16) | (R.U8 (O + 1) << 8) | R.U8 (O);
  }
  Channel Red (I.Masks[0]), Green (I.Masks[1]), Blue (I.Masks[2]), Alpha (I.Masks[3]);
  Out.Width = static_cast<uint32_t> (W);
  Out.Height = static_cast<uint32_t> (H);
  Out.BitsPerPixel = static_cast<uint16_t> (I.Bpp);
  Out.Pixels.assign (W * H, 0);
  for (uint64_t Row = 0; Row < H; Row++) {
    const uint8_t *Src = R.Data + PixelOffset + Row * Stride;
    uint64_t DestRow = I.TopDown ? Row : H - 1 - Row;
    uint32_t *Dst = Out.Pixels.data () + DestRow * W;
    for (uint64_t X = 0; X < W; X++) {
      uint32_t Px;
      switch (I.Bpp) {
        case 1: Px = Palette[(Src[X / 8] >> (7 - X % 8)) & 1]; break;
        case 4: Px = Palette[(Src[X / 2] >> (X % 2 ? 0 : 4)) & 0xF]; break;
        case 8: Px = Palette[Src[X]]; break;
        case 24: Px = 0xFF000000u | (Src[X * 3 + 2] << 16) | (Src[X * 3 + 1] << 8) | Src[X * 3]; break;
        case 16:
        case 32: {
          uint32_t V = I.Bpp == 16 ? (Src[X * 2] | (Src[X * 2 + 1] << 8))
                                   : (Src[X * 4] | (Src[X * 4 + 1] << 8) | (Src[X * 4 + 2] << 16) |
                                      (static_cast<uint32_t> (Src[X * 4 + 3]) << 24));
          Px = (Alpha.Get (V, 255) << 24) | (Red.Get (V, 0) << 16) | (Green.Get (V, 0) << 8) | Blue.Get (V, 0);
          break;
        }
        default: return false;
      }
      Dst[X] = Px;
    }
  }
  return true;
}

bool AllAlphaZero (const DecodedImage &Img) {
  for (uint32_t Px : Img.Pixels) {
    if (Px >> 24) return false;
  }
  return true;
}

void MakeOpaque (DecodedImage &Img) {
  for (uint32_t &Px : Img.Pixels) Px |= 0xFF000000u;
}

}  // namespace

bool DecodeBmp (const uint8_t *Data, size_t Size, DecodedImage &Out) {
  Out = DecodedImage ();
  if (!Data) return false;
  Reader R {Data, Size};
  if (!R.Has (0, 14) || Data[0] != 'B' || Data[1] != 'M') return false;
  DibInfo Info;
  if (!ParseInfo (R, 14, false, Info)) return false;
  size_t PixelOffset = R.U32 (10);
  if (PixelOffset == 0) PixelOffset = Info.End;
  DecodedImage Img;
  if (!DecodePixels (R, Info, PixelOffset, Img)) return false;
  if (Info.Bpp == 32 && AllAlphaZero (Img)) MakeOpaque (Img);
  Out = std::move (Img);
  return true;
}

namespace images_detail {

bool DecodeIconDib (const uint8_t *Data, size_t Size, DecodedImage &Out) {
  Out = DecodedImage ();
  if (!Data) return false;
  Reader R {Data, Size};
  DibInfo Info;
  if (!ParseInfo (R, 0, true, Info)) return false;
  DecodedImage Img;
  if (!DecodePixels (R, Info, Info.End, Img)) return false;
  bool OwnAlpha = Info.Bpp == 32 && !AllAlphaZero (Img);
  if (!OwnAlpha) {
    MakeOpaque (Img);
    // The AND mask: one bit per pixel, rows padded to 32 bits; a set bit is
    // a transparent pixel. An image without room for its mask stays opaque.
    const uint64_t W = Info.Width, H = Info.Height;
    const uint64_t Stride = ((W * Info.Bpp + 31) / 32) * 4;
    const uint64_t MaskStride = ((W + 31) / 32) * 4;
    const uint64_t MaskAt = Info.End + Stride * H;
    if (R.Has (MaskAt, MaskStride * H)) {
      for (uint64_t Row = 0; Row < H; Row++) {
        const uint8_t *Src = Data + MaskAt + Row * MaskStride;
        uint64_t DestRow = Info.TopDown ? Row : H - 1 - Row;
        uint32_t *Dst = Img.Pixels.data () + DestRow * W;
        for (uint64_t X = 0; X < W; X++) {
          if ((Src[X / 8] >> (7 - X % 8)) & 1) Dst[X] &= 0x00FFFFFFu;
        }
      }
    }
  }
  Out = std::move (Img);
  return true;
}

}  // namespace images_detail

}  // namespace env
