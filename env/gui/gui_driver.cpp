#include "env/gui/gui_driver.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "env/gui/font.h"
#include "env/gui/gbk.h"
#include "env/images/bmp_decoder.h"
#include "env/pool.h"

namespace env {

namespace {

GuiDriver *Current = nullptr;

struct Rect {
  int X0, Y0, X1, Y1;   // X1, Y1 exclusive
  bool Empty () const { return X0 >= X1 || Y0 >= Y1; }
};

}  // namespace

struct GuiDriver::State {
  GUI_DRIVER_PROTOCOL Table {};
  int Width = 0, Height = 0;
  std::vector<uint32_t> Pixels;
  struct FontEntry {
    UINTN Token;
    uint8_t Face, Size;
    uint32_t Colour;
  };
  std::vector<FontEntry> Fonts;
  UINTN NextToken = 1;
  uint64_t DrawCount = 0;

  Rect Clip (const PaintContext &Ctx) const {
    Rect R {std::max (Ctx.ClipX, 0), std::max (Ctx.ClipY, 0), 0, 0};
    R.X1 = static_cast<int> (std::min<int64_t> (int64_t (Ctx.ClipX) + std::max (Ctx.ClipWidth, 0), Width));
    R.Y1 = static_cast<int> (std::min<int64_t> (int64_t (Ctx.ClipY) + std::max (Ctx.ClipHeight, 0), Height));
    return R;
  }
};

// ---------------------------------------------------------------- table ops

namespace {

GuiDriver::State *CurrentState = nullptr;
GuiDriver::State *S () { return CurrentState; }

PaintContext ContextOf (PAINT_CONTEXT Context) {
  if (Context) return *static_cast<const PaintContext *> (Context);
  return Current ? Current->ScreenContext () : PaintContext {};
}

UINT16 EFIAPI OpGetCharWidth (VOID) { return 8; }
UINT16 EFIAPI OpGetLineHeight (VOID) { return kFontHeight; }

UINT16 EFIAPI OpGetTextWidth (const CHAR8 *Text) {
  if (!Text) return 0;
  int W = GuiDriver::TextWidth (reinterpret_cast<const char *> (Text));
  return static_cast<UINT16> (std::min (W, 0xFFFF));
}

UINTN EFIAPI OpPushFont (UINT8 Face, UINT8 Size, UINT32 Colour) {
  if (!Current) return 0;
  auto *St = S ();
  UINTN Token = St->NextToken++;
  St->Fonts.push_back ({Token, Face, Size, Colour & 0xFFFFFF});
  return Token;
}

VOID EFIAPI OpPopFont (UINTN Token) {
  if (!Current) return;
  auto &Fonts = S ()->Fonts;
  // Popping a font also drops any pushed after it and never popped.
  for (size_t I = Fonts.size (); I-- > 0;) {
    if (Fonts[I].Token == Token) {
      Fonts.erase (Fonts.begin () + I, Fonts.end ());
      return;
    }
  }
}

VOID EFIAPI OpDrawLine (PAINT_CONTEXT Context, UINT16 X1, UINT16 Y1, UINT16 X2, UINT16 Y2, UINT32 Colour) {
  if (Current) Current->DrawLine (ContextOf (Context), X1, Y1, X2, Y2, Colour);
}

VOID EFIAPI OpDrawRect (PAINT_CONTEXT Context, UINT16 X1, UINT16 Y1, UINT16 X2, UINT16 Y2, UINT32 Colour) {
  if (!Current) return;
  int L = std::min (X1, X2), T = std::min (Y1, Y2), R = std::max (X1, X2), B = std::max (Y1, Y2);
  Current->FrameRect (ContextOf (Context), L, T, R - L + 1, B - T + 1, Colour);
}

VOID EFIAPI OpDrawText (PAINT_CONTEXT Context, UINT16 X, UINT16 Y, const CHAR8 *Text, UINT16 MaxLength) {
  if (!Current || !Text) return;
  const char *T = reinterpret_cast<const char *> (Text);
  size_t Length = strnlen (T, MaxLength);
  Current->DrawText (ContextOf (Context), X, Y, std::string (T, Length), Current->CurrentTextColour ());
}

UINT32 *EFIAPI OpDecodeImage (const VOID *FileData, UINT16 *Width, UINT16 *Height, UINT16 *BitsPerPixel) {
  if (Width) *Width = 0;
  if (Height) *Height = 0;
  if (BitsPerPixel) *BitsPerPixel = 0;
  if (!FileData || !Current) return nullptr;
  // The file buffer is a pool block (from the file driver's ReadFile): its
  // size bounds the parsing. Anything else is refused.
  size_t Size = PoolBlockSize (FileData);
  if (Size == 0) return nullptr;
  DecodedImage Image;
  if (!DecodeBmp (static_cast<const uint8_t *> (FileData), Size, Image)) return nullptr;
  if (Image.Width > 0xFFFF || Image.Height > 0xFFFF) return nullptr;
  auto *Pixels = static_cast<UINT32 *> (PoolAllocate (Image.Pixels.size () * sizeof (UINT32)));
  if (!Pixels) return nullptr;
  std::memcpy (Pixels, Image.Pixels.data (), Image.Pixels.size () * sizeof (UINT32));
  if (Width) *Width = static_cast<UINT16> (Image.Width);
  if (Height) *Height = static_cast<UINT16> (Image.Height);
  if (BitsPerPixel) *BitsPerPixel = Image.BitsPerPixel;
  return Pixels;
}

VOID EFIAPI OpScalePixels (const UINT32 *Source, UINT32 *Destination, UINT16 SourceHeight, UINT16 DestinationHeight,
                           UINT16 SourceWidth, UINT16 DestinationWidth) {
  ScalePixels (Source, SourceWidth, SourceHeight, Destination, DestinationWidth, DestinationHeight);
}

VOID EFIAPI OpDrawPixels (PAINT_CONTEXT Context, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height,
                          const UINT32 *Pixels, UINT16 RowLength) {
  if (Current) Current->DrawPixels (ContextOf (Context), X, Y, Width, Height, Pixels, RowLength, false);
}

VOID EFIAPI OpDrawPixelsAlpha (PAINT_CONTEXT Context, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height,
                               const UINT32 *Pixels, UINT16 RowLength) {
  if (Current) Current->DrawPixels (ContextOf (Context), X, Y, Width, Height, Pixels, RowLength, true);
}

}  // namespace

// ------------------------------------------------------------------ driver

GuiDriver::GuiDriver (uint16_t ScreenWidth, uint16_t ScreenHeight, uint32_t Version) : State_ (new State) {
  GUI_DRIVER_PROTOCOL &T = State_->Table;
  T.Version = Version;
  T.GetCharWidth = OpGetCharWidth;
  T.GetLineHeight = OpGetLineHeight;
  T.GetTextWidth = OpGetTextWidth;
  T.PushFont = OpPushFont;
  T.PopFont = OpPopFont;
  T.DrawLine = OpDrawLine;
  T.DrawRect = OpDrawRect;
  T.DrawText = OpDrawText;
  T.DecodeImage = OpDecodeImage;
  T.ScalePixels = OpScalePixels;
  T.DrawPixels = OpDrawPixels;
  T.DrawPixelsAlpha = OpDrawPixelsAlpha;
  SetScreenSize (ScreenWidth, ScreenHeight);
  Current = this;
  CurrentState = State_.get ();
}

GuiDriver::~GuiDriver () {
  if (Current == this) {
    Current = nullptr;
    CurrentState = nullptr;
  }
}

GuiDriver *CurrentGuiDriver () { return Current; }

GUI_DRIVER_PROTOCOL *GuiDriver::Table () { return &State_->Table; }

void GuiDriver::SetScreenSize (uint16_t Width, uint16_t Height) {
  State_->Table.ScreenWidth = Width;
  State_->Table.ScreenHeight = Height;
  State_->Width = Width;
  State_->Height = Height;
  State_->Pixels.assign (static_cast<size_t> (Width) * Height, kDesktopColour);
}

uint32_t *GuiDriver::Framebuffer () { return State_->Pixels.data (); }
const uint32_t *GuiDriver::Framebuffer () const { return State_->Pixels.data (); }
int GuiDriver::Width () const { return State_->Width; }
int GuiDriver::Height () const { return State_->Height; }
uint64_t GuiDriver::DrawCount () const { return State_->DrawCount; }

uint32_t GuiDriver::PixelAt (int X, int Y) const {
  if (X < 0 || Y < 0 || X >= State_->Width || Y >= State_->Height) return 0;
  return State_->Pixels[static_cast<size_t> (Y) * State_->Width + X];
}

PaintContext GuiDriver::ScreenContext () const {
  PaintContext C;
  C.ClipWidth = State_->Width;
  C.ClipHeight = State_->Height;
  return C;
}

uint32_t GuiDriver::CurrentTextColour () const {
  return State_->Fonts.empty () ? 0x000000 : State_->Fonts.back ().Colour;
}

size_t GuiDriver::FontDepth () const { return State_->Fonts.size (); }

void GuiDriver::Clear (uint32_t Colour) {
  std::fill (State_->Pixels.begin (), State_->Pixels.end (), Colour & 0xFFFFFF);
  State_->DrawCount++;
}

void GuiDriver::FillRect (const PaintContext &Ctx, int X, int Y, int W, int H, uint32_t Colour) {
  State_->DrawCount++;
  if (W <= 0 || H <= 0) return;
  Rect C = State_->Clip (Ctx);
  int X0 = std::max (X, C.X0), Y0 = std::max (Y, C.Y0);
  int X1 = static_cast<int> (std::min<int64_t> (int64_t (X) + W, C.X1));
  int Y1 = static_cast<int> (std::min<int64_t> (int64_t (Y) + H, C.Y1));
  if (X0 >= X1 || Y0 >= Y1) return;
  Colour &= 0xFFFFFF;
  for (int Row = Y0; Row < Y1; Row++) {
    uint32_t *P = State_->Pixels.data () + static_cast<size_t> (Row) * State_->Width;
    std::fill (P + X0, P + X1, Colour);
  }
}

void GuiDriver::FrameRect (const PaintContext &Ctx, int X, int Y, int W, int H, uint32_t Colour) {
  if (W <= 0 || H <= 0) return;
  FillRect (Ctx, X, Y, W, 1, Colour);
  FillRect (Ctx, X, Y + H - 1, W, 1, Colour);
  FillRect (Ctx, X, Y, 1, H, Colour);
  FillRect (Ctx, X + W - 1, Y, 1, H, Colour);
}

void GuiDriver::SetPixel (const PaintContext &Ctx, int X, int Y, uint32_t Colour) {
  Rect C = State_->Clip (Ctx);
  if (X < C.X0 || Y < C.Y0 || X >= C.X1 || Y >= C.Y1) return;
  State_->Pixels[static_cast<size_t> (Y) * State_->Width + X] = Colour & 0xFFFFFF;
}

void GuiDriver::DrawLine (const PaintContext &Ctx, int X1, int Y1, int X2, int Y2, uint32_t Colour) {
  if (Y1 == Y2) return FillRect (Ctx, std::min (X1, X2), Y1, std::abs (X2 - X1) + 1, 1, Colour);
  if (X1 == X2) return FillRect (Ctx, X1, std::min (Y1, Y2), 1, std::abs (Y2 - Y1) + 1, Colour);
  State_->DrawCount++;
  // Bresenham, both end points included.
  int Dx = std::abs (X2 - X1), Sx = X1 < X2 ? 1 : -1;
  int Dy = -std::abs (Y2 - Y1), Sy = Y1 < Y2 ? 1 : -1;
  int Err = Dx + Dy;
  for (;;) {
    SetPixel (Ctx, X1, Y1, Colour);
    if (X1 == X2 && Y1 == Y2) break;
    int E2 = 2 * Err;
    if (E2 >= Dy) Err += Dy, X1 += Sx;
    if (E2 <= Dx) Err += Dx, Y1 += Sy;
  }
}

int GuiDriver::TextWidth (const std::string &Gbk) {
  const auto *Bytes = reinterpret_cast<const unsigned char *> (Gbk.data ());
  int W = 0;
  for (size_t I = 0; I < Gbk.size () && Bytes[I];) {
    unsigned Step = Bytes[I] >= 0x81 && I + 1 < Gbk.size () && IsGbkPair (Bytes[I], Bytes[I + 1]) ? 2 : 1;
    W += Step == 2 ? 16 : 8;
    I += Step;
  }
  return W;
}

int GuiDriver::DrawText (const PaintContext &Ctx, int X, int Y, const std::string &Gbk, uint32_t Colour) {
  State_->DrawCount++;
  const auto *Bytes = reinterpret_cast<const unsigned char *> (Gbk.data ());
  Rect C = State_->Clip (Ctx);
  int Start = X;
  Colour &= 0xFFFFFF;
  for (size_t I = 0; I < Gbk.size () && Bytes[I];) {
    GbkChar Ch = GbkCharAt (Bytes, Gbk.size (), I);
    I += Ch.Bytes;
    int Cell = Ch.Bytes == 2 ? 16 : 8;
    if (X >= C.X1) break;
    if (X + Cell > C.X0 && Y < C.Y1 && Y + int (kFontHeight) > C.Y0) {
      Glyph Found;
      bool Has = FindGlyph (Ch.CodePoint, Found) || (Ch.CodePoint == 0xFFFD && FindGlyph ('?', Found));
      const Glyph *G = Has ? &Found : nullptr;
      if (G) {
        // A narrow glyph in a double-byte cell is centred in it.
        int Gx = X + (Cell > G->Width ? (Cell - G->Width) / 2 : 0);
        int GWidth = std::min<int> (G->Width, Cell);
        for (int Row = 0; Row < int (kFontHeight); Row++) {
          int Py = Y + Row;
          if (Py < C.Y0 || Py >= C.Y1) continue;
          uint32_t *Line = State_->Pixels.data () + static_cast<size_t> (Py) * State_->Width;
          for (int Col = 0; Col < GWidth; Col++) {
            int Px = Gx + Col;
            if (Px >= C.X0 && Px < C.X1 && G->Pixel (Col, Row)) Line[Px] = Colour;
          }
        }
      } else {
        FrameRect (Ctx, X + 1, Y + 2, Cell - 2, kFontHeight - 4, Colour);
      }
    }
    X += Cell;
  }
  return X - Start;
}

uint32_t BlendPixel (uint32_t Under, uint32_t Over) {
  uint32_t A = Over >> 24;
  if (A == 255) return Over & 0xFFFFFF;
  if (A == 0) return Under & 0xFFFFFF;
  uint32_t Out = 0;
  for (int Shift = 0; Shift <= 16; Shift += 8) {
    uint32_t O = (Over >> Shift) & 0xFF, U = (Under >> Shift) & 0xFF;
    Out |= ((O * A + U * (255 - A) + 127) / 255) << Shift;
  }
  return Out;
}

void GuiDriver::DrawPixels (const PaintContext &Ctx, int X, int Y, int W, int H, const uint32_t *Pixels,
                            int RowLength, bool Alpha) {
  State_->DrawCount++;
  if (!Pixels || W <= 0 || H <= 0) return;
  if (RowLength <= 0) RowLength = W;
  W = std::min (W, RowLength);
  Rect C = State_->Clip (Ctx);
  int X0 = std::max (X, C.X0), Y0 = std::max (Y, C.Y0);
  int X1 = std::min (X + W, C.X1), Y1 = std::min (Y + H, C.Y1);
  for (int Row = Y0; Row < Y1; Row++) {
    const uint32_t *Src = Pixels + static_cast<size_t> (Row - Y) * RowLength + (X0 - X);
    uint32_t *Dst = State_->Pixels.data () + static_cast<size_t> (Row) * State_->Width + X0;
    if (Alpha) {
      for (int Col = 0; Col < X1 - X0; Col++) Dst[Col] = BlendPixel (Dst[Col], Src[Col]);
    } else {
      for (int Col = 0; Col < X1 - X0; Col++) Dst[Col] = Src[Col] & 0xFFFFFF;
    }
  }
}

void ScalePixels (const uint32_t *Source, uint32_t SourceWidth, uint32_t SourceHeight, uint32_t *Destination,
                  uint32_t DestWidth, uint32_t DestHeight) {
  if (!Source || !Destination || !SourceWidth || !SourceHeight || !DestWidth || !DestHeight) return;
  // Source position of a destination pixel's centre, in 16.16 fixed point.
  auto Map = [] (uint32_t D, uint32_t SrcLen, uint32_t DstLen, uint32_t &I0, uint32_t &I1, uint32_t &Weight) {
    int64_t F = static_cast<int64_t> ((2ull * D + 1) * SrcLen * 65536 / (2ull * DstLen)) - 32768;
    F = std::clamp<int64_t> (F, 0, static_cast<int64_t> (SrcLen - 1) * 65536);
    I0 = static_cast<uint32_t> (F >> 16);
    I1 = std::min (I0 + 1, SrcLen - 1);
    Weight = static_cast<uint32_t> ((F & 0xFFFF) >> 8);   // 0..255
  };
  std::vector<uint32_t> X0 (DestWidth), X1 (DestWidth), Wx (DestWidth);
  for (uint32_t X = 0; X < DestWidth; X++) Map (X, SourceWidth, DestWidth, X0[X], X1[X], Wx[X]);
  for (uint32_t Y = 0; Y < DestHeight; Y++) {
    uint32_t Y0, Y1, Wy;
    Map (Y, SourceHeight, DestHeight, Y0, Y1, Wy);
    const uint32_t *R0 = Source + static_cast<size_t> (Y0) * SourceWidth;
    const uint32_t *R1 = Source + static_cast<size_t> (Y1) * SourceWidth;
    uint32_t *Out = Destination + static_cast<size_t> (Y) * DestWidth;
    for (uint32_t X = 0; X < DestWidth; X++) {
      uint32_t A = R0[X0[X]], B = R0[X1[X]], C = R1[X0[X]], D = R1[X1[X]];
      uint32_t W = Wx[X], Px = 0;
      for (int Shift = 0; Shift <= 24; Shift += 8) {
        uint32_t Top = ((A >> Shift) & 0xFF) * (256 - W) + ((B >> Shift) & 0xFF) * W;
        uint32_t Bottom = ((C >> Shift) & 0xFF) * (256 - W) + ((D >> Shift) & 0xFF) * W;
        uint32_t V = (Top * (256 - Wy) + Bottom * Wy + 32768) >> 16;
        Px |= std::min<uint32_t> (V, 255) << Shift;
      }
      Out[X] = Px;
    }
  }
}

}  // namespace env
