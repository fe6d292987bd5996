#include <gtest/gtest.h>

#include <cstring>

#include "env/host/firmware.h"
#include "env/gui/font.h"
#include "env/gui/gbk.h"
#include "env/gui/gui_driver.h"
#include "support/image_builders.h"

namespace {

class GuiTest : public ::testing::Test {
 protected:
  env::Firmware Fw;
  env::GuiDriver Gui {64, 48, 5};
  GUI_DRIVER_PROTOCOL *T = Gui.Table ();
  env::PaintContext Screen = Gui.ScreenContext ();

  static env::PaintContext Clip (int X, int Y, int W, int H) {
    env::PaintContext C;
    C.ClipX = X, C.ClipY = Y, C.ClipWidth = W, C.ClipHeight = H;
    return C;
  }
  // Pixels of the given colour in a rectangle of the screen.
  int Count (uint32_t Colour, int X0 = 0, int Y0 = 0, int X1 = 64, int Y1 = 48) const {
    int N = 0;
    for (int Y = Y0; Y < Y1; Y++)
      for (int X = X0; X < X1; X++) N += Gui.PixelAt (X, Y) == Colour;
    return N;
  }
  const CHAR8 *A (const char *S) { return reinterpret_cast<const CHAR8 *> (S); }
};

// "中文" in GBK.
const char *const kZhongWen = "\xD6\xD0\xCE\xC4";

}  // namespace

TEST_F (GuiTest, TableReportsScreenAndFontMetricsAndGbkConverts) {
  EXPECT_EQ ((std::vector<int> {int (T->Version), T->ScreenWidth, T->ScreenHeight}), (std::vector<int> {5, 64, 48}));
  Gui.SetScreenSize (800, 600);
  EXPECT_EQ ((std::vector<int> {T->ScreenWidth, T->ScreenHeight, Gui.Width (), Gui.Height (), T->GetCharWidth (),
                                T->GetLineHeight ()}),
             (std::vector<int> {800, 600, 800, 600, 8, 16}));
  // A lead byte without its trail byte counts as one narrow character.
  std::vector<int> Widths;
  for (const char *Text : {"", "File Menu", kZhongWen, "a\xD6\xD0" "b", "ab\xD6", static_cast<const char *> (nullptr)})
    Widths.push_back (T->GetTextWidth (A (Text)));
  EXPECT_EQ (Widths, (std::vector<int> {0, 72, 32, 32, 24, 0}));

  EXPECT_EQ (env::GbkToUtf8 ("plain ASCII"), "plain ASCII");
  EXPECT_EQ (env::GbkToUtf8 (kZhongWen), "\xE4\xB8\xAD\xE6\x96\x87");   // U+4E2D U+6587
  EXPECT_EQ (env::GbkToUnicode ("x\xB1\xB8\xB7\xDD"), std::u32string (U"x\u5907\u4EFD"));
  // Stray high bytes become replacement characters, one per byte.
  EXPECT_EQ (env::GbkToUnicode ("\x80z\xFF"), std::u32string (U"\uFFFDz\uFFFD"));
}

TEST_F (GuiTest, DrawsGlyphsOfTheSystemFont) {
  // Every GBK character and ASCII: more than 21,000 glyphs.
  ASSERT_GT (env::GlyphCount (), 21000u) << "glyph table missing";
  Gui.Clear (0xFFFFFF);
  UINTN Token = T->PushFont (0, 0, 0x00FF00);
  T->DrawText (&Screen, 4, 8, A (kZhongWen), 65535);
  // U+4E2D, then U+6587 from x 20 (not four Latin-1 characters), each 16
  // pixels wide, pixel for pixel.
  for (auto [Code, Left] : {std::pair {0x4E2Du, 4}, std::pair {0x6587u, 20}}) {
    env::Glyph G;
    ASSERT_TRUE (env::FindGlyph (Code, G) && G.Width == 16) << Code;
    for (int I = 0; I < 256; I++)
      ASSERT_EQ (Gui.PixelAt (Left + I % 16, 8 + I / 16), G.Pixel (I % 16, I / 16) ? 0x00FF00u : 0xFFFFFFu) << Code << ": " << I;
  }
  EXPECT_EQ (Count (0x00FF00, 36, 0, 64, 48), 0);

  // PopFont goes back to the default black; MaxLength limits the bytes drawn.
  T->PopFont (Token);
  EXPECT_EQ (Gui.FontDepth (), 0u);
  Gui.Clear (0xFFFFFF);
  T->DrawText (&Screen, 0, 0, A ("AAAA"), 1);
  EXPECT_TRUE (Count (0x000000, 0, 0, 8, 16) > 0 && Count (0x000000, 8, 0, 64, 48) == 0);
}

TEST_F (GuiTest, FontStackUnwindsToTheToken) {
  UINTN A1 = T->PushFont (0, 0, 0x111111);
  UINTN A2 = T->PushFont (0, 0, 0x222222);
  T->PushFont (0, 0, 0x333333);
  EXPECT_NE (A1, A2);
  std::vector<uint32_t> Colours {Gui.CurrentTextColour ()};
  T->PopFont (A2);   // drops the font above it too
  Colours.push_back (Gui.CurrentTextColour ());
  T->PopFont (A2);   // unknown now: nothing happens
  EXPECT_EQ (Gui.FontDepth (), 1u);
  T->PopFont (A1);
  Colours.push_back (Gui.CurrentTextColour ());
  EXPECT_EQ (Colours, (std::vector<uint32_t> {0x333333, 0x111111, 0x000000}));
}

TEST_F (GuiTest, DrawingStaysInsideTheClipRectangle) {
  env::PaintContext C = Clip (10, 10, 20, 10);
  Gui.Clear (0);
  Gui.FillRect (C, 0, 0, 64, 48, 0xFF0000);
  EXPECT_EQ (Count (0xFF0000, 10, 10, 30, 20), 200);
  EXPECT_EQ (Count (0xFF0000), 200);

  Gui.Clear (0);
  T->DrawLine (&C, 0, 15, 63, 15, 0x00FF00);   // horizontal: 20 pixels survive
  EXPECT_EQ (Count (0x00FF00), 20);
  Gui.Clear (0);
  T->DrawLine (&C, 0, 0, 40, 40, 0x0000FF);    // diagonal: (10,10) .. (19,19)
  EXPECT_EQ (Count (0x0000FF), 10);
  EXPECT_EQ (Gui.PixelAt (12, 12), 0x0000FFu);

  // DrawRect takes two corners, both included.
  Gui.Clear (0);
  T->DrawRect (&Screen, 5, 5, 8, 7, 0xFFFFFF);
  EXPECT_EQ (Count (0xFFFFFF), 10);   // 4 x 3 outline
  EXPECT_TRUE (Gui.PixelAt (6, 6) == 0 && Gui.PixelAt (8, 7) == 0xFFFFFFu);

  // Off-screen and empty requests draw nothing and do not fault.
  Gui.Clear (0x777777);
  Gui.FillRect (Screen, -100, -100, 50, 50, 1);
  EXPECT_EQ (Count (1), 0);
  Gui.FillRect (Screen, 60, 40, 1000000, 1000000, 2);
  EXPECT_EQ (Count (2), 4 * 8);
  Gui.FillRect (Clip (0, 0, 0, 0), 0, 0, 64, 48, 3);
  EXPECT_EQ (Count (3), 0);
  T->DrawLine (nullptr, 65535, 65535, 0, 0, 4);   // no context: the whole screen
  EXPECT_EQ (Count (4), 48);
  UINTN Token = T->PushFont (0, 0, 5);
  T->DrawText (&Screen, 60, 40, A ("long text past the edge"), 65535);
  T->PopFont (Token);
  EXPECT_GT (Count (5), 0);
  EXPECT_EQ (Count (5), Count (5, 60, 40, 64, 48));
}

TEST_F (GuiTest, PixelsAreCopiedOrBlended) {
  uint32_t Px[4] = {0xFF102030u, 0x00FFFFFFu, 0x80FF0000u, 0x40000000u};
  Gui.Clear (0x0000FF);
  T->DrawPixels (&Screen, 0, 0, 4, 1, Px, 4);        // alpha ignored
  T->DrawPixelsAlpha (&Screen, 0, 1, 4, 1, Px, 4);   // blended over blue
  std::vector<uint32_t> Rows;
  for (int I = 0; I < 8; I++) Rows.push_back (Gui.PixelAt (I % 4, I / 4));
  EXPECT_EQ (Rows, (std::vector<uint32_t> {0x102030, 0xFFFFFF, 0xFF0000, 0x000000, 0x102030, 0x0000FF, 0x80007F, 0x0000BF}));

  // The row length steps through a wider source; clipping cuts rows and columns.
  uint32_t Wide[3 * 6];
  for (int I = 0; I < 18; I++) Wide[I] = 0xFF000000u | I;
  Gui.Clear (0);
  env::PaintContext C = Clip (11, 0, 64, 1);
  T->DrawPixels (&C, 10, 0, 2, 3, Wide, 6);
  T->DrawPixels (&Screen, 10, 5, 2, 3, Wide, 6);
  EXPECT_EQ ((std::vector<uint32_t> {Gui.PixelAt (10, 0), Gui.PixelAt (11, 0), Gui.PixelAt (11, 1), Gui.PixelAt (10, 7),
                                     Gui.PixelAt (11, 7)}),
             (std::vector<uint32_t> {0, 1, 0, 12, 13}));
}

TEST_F (GuiTest, ScalingStretchesPictures) {
  uint32_t Src[2 * 2] = {0xFF000000u, 0xFFFFFFFFu, 0xFF0000FFu, 0x00FF0000u};
  uint32_t Same[4];
  T->ScalePixels (Src, Same, 2, 2, 2, 2);
  EXPECT_EQ (0, std::memcmp (Src, Same, sizeof Src));

  // Enlarging keeps the corners and fills between them.
  uint32_t Big[4 * 4];
  T->ScalePixels (Src, Big, 2, 4, 2, 4);
  EXPECT_EQ ((std::vector<uint32_t> {Big[0], Big[3], Big[12], Big[15]}), (std::vector<uint32_t> (Src, Src + 4)));
  EXPECT_TRUE ((Big[1] & 0xFF) > 0 && (Big[1] & 0xFF) < 255);

  // One dimension only, and a uniform picture stays uniform when shrunk.
  uint32_t Uniform[5 * 3];
  for (uint32_t &P : Uniform) P = 0xFF336699u;
  uint32_t Small[2 * 3];
  T->ScalePixels (Uniform, Small, 3, 3, 5, 2);
  for (uint32_t P : Small) EXPECT_EQ (P, 0xFF336699u);
  T->ScalePixels (nullptr, Small, 3, 3, 5, 2);   // ignored
  T->ScalePixels (Uniform, Small, 0, 3, 5, 2);
}

TEST_F (GuiTest, DecodeImageReadsPoolBuffersOnly) {
  size_t Baseline = Fw.LiveAllocations ();
  auto Bmp = test_images::MakeBmp (3, 2, 32, false, [] (int X, int Y) { return 0x80000000u | (X << 8) | Y; });
  auto *File = static_cast<uint8_t *> (Fw.AllocatePool (Bmp.size ()));
  std::memcpy (File, Bmp.data (), Bmp.size ());
  UINT16 W = 0, H = 0, Bpp = 0;
  UINT32 *Px = T->DecodeImage (File, &W, &H, &Bpp);
  ASSERT_NE (Px, nullptr);
  EXPECT_EQ ((std::vector<size_t> {W, H, Bpp, Fw.BlockSize (Px), Px[1 * 3 + 2]}),
             (std::vector<size_t> {3, 2, 32, 3 * 2 * 4, 0x80000201u}));
  Fw.FreePool (Px);

  // The same bytes outside the pool are refused; so is a truncated file.
  EXPECT_EQ (T->DecodeImage (Bmp.data (), &W, &H, &Bpp), nullptr);
  EXPECT_EQ (W, 0);
  Fw.FreePool (File);
  File = static_cast<uint8_t *> (Fw.AllocatePool (Bmp.size () - 1));
  std::memcpy (File, Bmp.data (), Bmp.size () - 1);
  EXPECT_EQ (T->DecodeImage (File, &W, &H, &Bpp), nullptr);
  EXPECT_EQ (T->DecodeImage (nullptr, &W, &H, &Bpp), nullptr);
  Fw.FreePool (File);
  EXPECT_EQ (Fw.LiveAllocations (), Baseline);
}
