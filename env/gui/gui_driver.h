// The stand-in GUI driver: screen size, system font, drawing primitives into
// a 32-bit framebuffer (0x00RRGGBB, rows top-down), BMP decoding and pixel
// scaling.
//
// Drawing always clips to the paint context (screen coordinates) and to the
// screen. Text colour comes from the font on top of the font stack (PushFont's
// colour; black when the stack is empty). Texts are GBK: ASCII takes 8 pixels,
// a double-byte character 16; glyphs come from GNU Unifont. The table's
// DrawText draws at most MaxLength bytes of the text (65535: all of it), and
// a null context draws clipped to the screen only. DecodeImage refuses any
// buffer that is not a live pool block: the block's size bounds the parsing.
#pragma once

#include <memory>
#include <string>

#include "env/gui/paint_context.h"
#include "services/gui_driver.h"

namespace env {

class GuiDriver {
 public:
  GuiDriver (uint16_t ScreenWidth, uint16_t ScreenHeight, uint32_t Version);
  ~GuiDriver ();
  GuiDriver (const GuiDriver &) = delete;
  GuiDriver &operator= (const GuiDriver &) = delete;

  GUI_DRIVER_PROTOCOL *Table ();
  // Changes the screen size; the framebuffer is cleared to the desktop colour.
  void SetScreenSize (uint16_t Width, uint16_t Height);

  // Framebuffer.
  uint32_t *Framebuffer ();
  const uint32_t *Framebuffer () const;
  int Width () const;
  int Height () const;
  uint32_t PixelAt (int X, int Y) const;   // 0 outside the screen
  // A context that covers the whole screen.
  PaintContext ScreenContext () const;
  // Number of drawing operations so far (lets tests see that painting happened).
  uint64_t DrawCount () const;

  // Drawing (screen coordinates, clipped to Ctx). Colours are 0xRRGGBB.
  void Clear (uint32_t Colour);
  void FillRect (const PaintContext &Ctx, int X, int Y, int W, int H, uint32_t Colour);
  void FrameRect (const PaintContext &Ctx, int X, int Y, int W, int H, uint32_t Colour);
  void DrawLine (const PaintContext &Ctx, int X1, int Y1, int X2, int Y2, uint32_t Colour);
  void SetPixel (const PaintContext &Ctx, int X, int Y, uint32_t Colour);
  // Draws a GBK text with its top-left corner at (X, Y); returns the width drawn.
  int DrawText (const PaintContext &Ctx, int X, int Y, const std::string &Gbk, uint32_t Colour);
  // Draws W x H pixels (0xAARRGGBB, RowLength pixels per source row); with
  // Alpha the pixels are blended over the framebuffer by their alpha.
  void DrawPixels (const PaintContext &Ctx, int X, int Y, int W, int H, const uint32_t *Pixels, int RowLength,
                   bool Alpha);

  // Text metrics of the system font.
  static int TextWidth (const std::string &Gbk);

  // Font stack of PushFont / PopFont.
  uint32_t CurrentTextColour () const;
  size_t FontDepth () const;

  struct State;
 private:
  std::unique_ptr<State> State_;
};

// The GUI driver of the environment alive now (the one constructed last), or
// nullptr.
GuiDriver *CurrentGuiDriver ();

// Stretches a SourceWidth x SourceHeight picture to DestWidth x DestHeight
// (bilinear, per channel including alpha).
void ScalePixels (const uint32_t *Source, uint32_t SourceWidth, uint32_t SourceHeight, uint32_t *Destination,
                  uint32_t DestWidth, uint32_t DestHeight);

// Blends a 0xAARRGGBB pixel over a 0x00RRGGBB one.
uint32_t BlendPixel (uint32_t Under, uint32_t Over);

// Desktop background colour.
constexpr uint32_t kDesktopColour = 0x3A6EA5;

}  // namespace env
