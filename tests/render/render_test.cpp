#include <gtest/gtest.h>

#include <cstring>

#include "env/controls/control_driver.h"
#include "env/gui/gui_driver.h"
#include "env/images/codecs.h"
#include "env/images/ico_decoder.h"
#include "env/render/renderer.h"
#include "env/host/screenshot.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"

namespace {

unsigned PaintCalls = 0;

// Accepts activation, so that the base raises the window.
UINT8 EFIAPI Handler (WINDOW_HEADER *, MESSAGE *Message) { return Message->Type == MSG_ACTIVATE; }

class RenderTest : public DriverTest {
 protected:
  bool AutoLoad () override { return false; }
  env::GuiDriver &G () { return Env ().gui (); }
  const CHAR8 *A (const char *S) { return reinterpret_cast<const CHAR8 *> (S); }

  // Pixels of a colour inside a screen rectangle.
  int Count (uint32_t Colour, int X, int Y, int W, int H) {
    int N = 0;
    for (int Py = Y; Py < Y + H; Py++)
      for (int Px = X; Px < X + W; Px++) N += G ().PixelAt (Px, Py) == Colour;
    return N;
  }

  WINDOW_HEADER *MakeWindow (const char *Title, UINT16 X, UINT16 Y, UINT16 W, UINT16 H, PAINT_CALLBACK P) {
    WINDOW_HEADER *Win = Wb ()->CreateWindow (300, Wb ()->Desktop, Handler, P, nullptr, X, Y, W, H);
    Wb ()->SetWindowText (Win, A (Title));
    return Win;
  }
};

// A paint callback as the driver's windows write them: DefaultPaint first.
WINDOW_BASE_PROTOCOL *TheBase = nullptr;
VOID EFIAPI DefaultThenNothing (WINDOW_HEADER *Window, MESSAGE *Message, VOID *Extra) {
  PaintCalls++;
  TheBase->DefaultPaint (Window, Message, Extra);
}
// A client that paints its whole client area white after DefaultPaint.
VOID EFIAPI WhiteClient (WINDOW_HEADER *Window, MESSAGE *Message, VOID *Extra) {
  PaintCalls++;
  PAINT_CONTEXT C = TheBase->BeginPaint (Window);
  TheBase->DefaultPaint (Window, Message, Extra);
  UINT16 R[4];
  TheBase->GetClientRect (Window, R);
  TheBase->FillRect (C, R[0], R[1], R[2], R[3], 0xFFFFFF);
}

}  // namespace

TEST_F (RenderTest, PaintsWindowsInZOrderWithTheirDecoration) {
  TheBase = Wb ();
  PaintCalls = 0;
  const int Ch = Wb ()->CaptionHeight;
  WINDOW_HEADER *Back = MakeWindow ("Back", 40, 40, 300, 200, DefaultThenNothing);
  WINDOW_HEADER *Front = MakeWindow ("Front", 200, 100, 300, 200, WhiteClient);
  Wb ()->ActivateWindow (Front);
  EXPECT_EQ (env::RenderDesktop (Env ()), 2u);
  EXPECT_EQ (PaintCalls, 2u);

  // The desktop; title bars, the active window's in the active colour; Front
  // covering Back where they overlap, its client area its own; Back's face.
  EXPECT_EQ ((std::vector<uint32_t> {G ().PixelAt (5, 5), G ().PixelAt (200 + 150, 100 + 4), G ().PixelAt (40 + 100, 40 + 4),
                                     G ().PixelAt (250, 200), G ().PixelAt (100, 150)}),
             (std::vector<uint32_t> {env::kDesktopColour, env::colours::ActiveCaption, env::colours::InactiveCaption,
                                     0xFFFFFFu, env::colours::Face}));
  // Titles are drawn in the caption text colour.
  EXPECT_GT (Count (env::colours::CaptionText, 200 + 4, 100 + 2, 60, Ch - 4), 10);
  // The close box sits at the right end of the title bar.
  env::WindowLayout L = env::LayoutOf (Env (), Front);
  EXPECT_EQ (L.CloseX + L.CloseWidth, 200 + 300 - 5);
  EXPECT_GT (Count (env::colours::Text, L.CloseX, L.CloseY, L.CloseWidth, L.CloseHeight), 6);

  // Raising Back repaints it over Front.
  Wb ()->ActivateWindow (Back);
  env::RenderDesktop (Env ());
  EXPECT_EQ (G ().PixelAt (250, 200), env::colours::Face);
}

// (Lists, status lines and popups are drawn in the golden scenes.)
TEST_F (RenderTest, AnInPlaceEditIsDrawnOverItsRow) {
  TheBase = Wb ();
  WINDOW_HEADER *Win = MakeWindow ("Controls", 10, 10, 500, 400, DefaultThenNothing);
  LIST_CONTROL *List = Cd ()->CreateListView (Win, 10, 70, 400, 200, 0);
  Cd ()->AddColumn (List, A ("Name"), 64, 200, TRUE, FALSE);
  struct {
    CHAR8 Name[64];
  } Entry {};
  std::snprintf (reinterpret_cast<char *> (Entry.Name), sizeof Entry.Name, "alpha.txt");
  Cd ()->AddListItem (List, ICON_NONE, FALSE, 0, 10, &Entry);
  Cd ()->BeginNewItem (List, ICON_NONE, TRUE, A ("new dir"));
  ASSERT_TRUE (Env ().controls ().Editing (List));
  auto *Edit = static_cast<CONTROL *> (Win->FocusControl);
  ASSERT_TRUE (Edit != nullptr && Edit->Kind == CONTROL_KIND_EDIT);
  env::RenderDesktop (Env ());

  // Framed, white, with the text inside, where the new row lies.
  int32_t Lx, Ly, Ex, Ey;
  Env ().windows ().ScreenOrigin (List, Lx, Ly);
  Env ().windows ().ScreenOrigin (Edit, Ex, Ey);
  EXPECT_EQ (Ey, Ly + 1 + Env ().controls ().HeaderHeight () + Env ().controls ().RowHeight ());
  EXPECT_EQ (G ().PixelAt (Ex, Ey + Edit->Height / 2) | G ().PixelAt (Ex + Edit->Width - 1, Ey + Edit->Height / 2),
             env::colours::Text);
  EXPECT_GT (Count (env::colours::Window, Ex + 1, Ey + 1, 60, Edit->Height - 2), 100);
  EXPECT_GT (Count (env::colours::Text, Ex + 1, Ey + 1, 60, Edit->Height - 2), 20);
  Env ().controls ().FinishEdit (List, "", false);
}

TEST_F (RenderTest, ScreenshotHoldsTheFramebuffer) {
  TheBase = Wb ();
  MakeWindow ("Shot", 30, 30, 200, 120, DefaultThenNothing);
  TempFolder Dir;
  std::string Path = (Dir.Path () / "shot.png").string ();
  ASSERT_TRUE (env::RenderScreenshot (Env (), Path));
  std::string Bytes = ReadHostFile (Path);
  env::DecodedImage Img;
  ASSERT_TRUE (env::DecodePng (reinterpret_cast<const uint8_t *> (Bytes.data ()), Bytes.size (), Img));
  std::vector<uint32_t> Screen (G ().Framebuffer (), G ().Framebuffer () + G ().Width () * G ().Height ());
  for (uint32_t &Pixel : Screen) Pixel |= 0xFF000000u;
  EXPECT_TRUE (Img.Width == unsigned (G ().Width ()) && Img.Pixels == Screen);
  EXPECT_FALSE (env::SaveScreenshot ((Dir.Path () / "no" / "such" / "dir.png").string ()));
}

TEST_F (RenderTest, TextViewsWrapAndCombosShowTheirChoice) {
  TheBase = Wb ();
  WINDOW_HEADER *Win = MakeWindow ("Texts", 0, 0, 400, 300, DefaultThenNothing);
  const char *Body = "first line\nsecond line is long enough that it must wrap twice inside the narrow box";
  CONTROL_RECT R {10, 30, 200, 120};
  CONTROL *View = Cd ()->CreateTextView (Win, 5, A (Body), static_cast<UINT16> (strlen (Body) + 1), &R);
  ASSERT_NE (View, nullptr);
  COMBO_BOX *Combo = Cd ()->CreateComboBox (220, 30, 150, 26, 0, Win);
  Cd ()->AddComboItem (Combo, A ("Volume A"), 0);
  Cd ()->AddComboItem (Combo, A ("Volume B"), 0);
  Env ().controls ().ChooseComboRow (Combo, 1);
  env::RenderDesktop (Env ());

  int32_t Vx, Vy;
  Env ().windows ().ScreenOrigin (View, Vx, Vy);
  // 24 characters fit in a line: "first line", then "second line is long" /
  // "enough that it must" / "wrap twice inside the" / "narrow box".
  int Lines = 0;
  for (int Line = 0; Line < 7; Line++) Lines += Count (env::colours::Text, Vx + 2, Vy + 3 + Line * 16, 196, 16) > 0;
  EXPECT_EQ (Lines, 5);
  EXPECT_EQ (Count (env::colours::Text, Vx + 200, Vy, 10, 120), 0);
  // A word is never cut: each wrapped line ends before the box's right edge
  // with room to spare for the next word.
  EXPECT_EQ (Count (env::colours::Text, Vx + 196, Vy, 4, 120), 0);

  // The combo shows the chosen item.
  int32_t Cx, Cy;
  Env ().windows ().ScreenOrigin (Combo, Cx, Cy);
  EXPECT_GT (Count (env::colours::Text, Cx + 2, Cy + 2, 100, 20), 30);
}

// A tree item with children shows "-" in its box while open, "+" while closed.
TEST_F (RenderTest, TreeBoxesShowWhetherAnItemIsOpen) {
  TheBase = Wb ();
  WINDOW_HEADER *Win = MakeWindow ("Tree", 0, 0, 400, 300, DefaultThenNothing);
  FILE_LIST *Tree = Cd ()->CreateFileList (Win, 10, 30, 380, 200, 0);
  struct {
    CHAR8 Name[216];
  } Docs {{'d', 'o', 'c', 's'}};
  Cd ()->AddFileListItem (Tree, TRUE, ICON_NONE, 0, "\\", A ("\\"));
  Cd ()->AddFileListItem (Tree, TRUE, ICON_NONE, 0, &Docs, A ("\\"));
  env::RenderDesktop (Env ());
  int32_t Tx, Ty;
  Env ().windows ().ScreenOrigin (Tree, Tx, Ty);
  // Each box is 9 pixels square, 16 more to the right a level down; its
  // vertical stroke runs from 2 to 6 pixels inside it.
  const int RowH = Wb ()->GuiDriver->GetLineHeight () + 2, BoxY = Ty + 2 + (RowH - 9) / 2;
  // "-" of the open root, then "+" of closed docs.
  EXPECT_EQ ((std::vector<uint32_t> {G ().PixelAt (Tx + 4 + 4, BoxY + 4), G ().PixelAt (Tx + 4 + 4, BoxY + 2),
                                     G ().PixelAt (Tx + 20 + 4, RowH + BoxY + 2)}),
             (std::vector<uint32_t> {env::colours::Text, env::colours::Window, env::colours::Text}));
}

TEST_F (RenderTest, CutTextsEndWithAnEllipsisAndLabelsShowWhole) {
  TheBase = Wb ();
  WINDOW_HEADER *Win = MakeWindow ("Texts", 0, 0, 400, 300, DefaultThenNothing);
  // 92 pixels of room: ten whole characters, then "…" in one more cell.
  CONTROL *Field = Wb ()->CreateTextField (Win, 10, 30, 100, 26, 0, TRUE, A ("WWWWWWWWWWWWWWW"));
  // Labels wider than their buttons, and a label made 0 wide.
  CONTROL *Narrow = Wb ()->CreateButton (Win, 35, A (">>!0"), 10, 70, 24, 26, 0);
  CONTROL *Wide = Wb ()->CreateButton (Win, 36, A (">>!0"), 60, 70, 80, 26, 0);
  CONTROL *Pause = Wb ()->CreateButton (Win, 37, A ("Pause"), 160, 70, 40, 26, 0);
  CONTROL *Label = Wb ()->CreateTextField (Win, 10, 110, 0, 26, 0, FALSE, A ("Result:"));
  env::RenderDesktop (Env ());

  int32_t Fx, Fy;
  Env ().windows ().ScreenOrigin (Field, Fx, Fy);
  int Tx = Fx + 4, Ty = Fy + (26 - 16) / 2;
  auto Ink = [&] (int X, int Y, int W, int H) { return Count (env::colours::Text, X, Y, W, H); };
  // The tenth character is as whole as the first; the dots sit on the baseline after it.
  EXPECT_GT (Ink (Tx, Ty, 8, 16), 10);
  EXPECT_EQ (Ink (Tx + 72, Ty, 8, 16), Ink (Tx, Ty, 8, 16));
  EXPECT_EQ (Ink (Tx + 80, Ty, 8, 16), 6);
  for (int Dot : {1, 4, 7}) EXPECT_EQ (G ().PixelAt (Tx + 80 + Dot, Ty + 12), env::colours::Text) << Dot;
  EXPECT_EQ (Ink (Tx + 88, Fy, 100 - 4 - 88, 26), 0);

  // Every pixel of the label's glyphs is drawn inside the narrow button.
  int32_t Nx, Ny, Wx, Wy, Px, Py;
  Env ().windows ().ScreenOrigin (Narrow, Nx, Ny);
  Env ().windows ().ScreenOrigin (Wide, Wx, Wy);
  Env ().windows ().ScreenOrigin (Pause, Px, Py);
  EXPECT_GT (Ink (Wx, Wy, 80, 26), 20);
  EXPECT_EQ (Ink (Nx + 1, Ny, 21, 26), Ink (Wx, Wy, 80, 26));
  // A five-letter label in five characters' width keeps clear of the button's edges.
  EXPECT_GT (Ink (Px, Py, 40, 26), 40);
  EXPECT_EQ (Ink (Px + 2, Py, 36, 26), Ink (Px, Py, 40, 26));

  int32_t Lx, Ly;
  Env ().windows ().ScreenOrigin (Label, Lx, Ly);
  EXPECT_GT (Ink (Lx, Ly, 7 * 8, 26), 30);
}

TEST_F (RenderTest, HostileSizesAreDrawnOrClippedCleanly) {
  TheBase = Wb ();
  const int Sw = G ().Width (), Sh = G ().Height ();
  // Larger than the screen, and placed off it.
  MakeWindow ("Huge", 0, 0, 65535, 65535, DefaultThenNothing);
  MakeWindow ("Away", 65000, 65000, 500, 500, DefaultThenNothing);
  // Zero-sized controls and a text far longer than its field.
  WINDOW_HEADER *Win = MakeWindow ("Small", 40, 40, 300, 200, WhiteClient);
  Wb ()->CreateButton (Win, 7, A ("zero"), 10, 30, 0, 0, 0);
  Wb ()->CreateTextField (Win, 10, 40, 0, 0, 0, TRUE, A ("zero"));
  std::string Long (5000, 'W');
  Wb ()->CreateTextField (Win, 10, 60, 100, 26, 0, TRUE, A (Long.c_str ()));
  // A list of 65535 rows: only the visible ones are drawn.
  LIST_CONTROL *List = Cd ()->CreateListView (Win, 10, 90, 280, 100, 0);
  Cd ()->AddColumn (List, A ("Name"), 64, 200, TRUE, FALSE);
  struct {
    CHAR8 Name[64];
  } Entry {};
  std::snprintf (reinterpret_cast<char *> (Entry.Name), sizeof Entry.Name, "row");
  unsigned Added = 0;
  for (unsigned I = 0; I < 65535; I++) Added += Cd ()->AddListItem (List, ICON_NONE, FALSE, 0, 1, &Entry) != 0xFFFF;
  EXPECT_GE (Added, 65534u);
  Env ().controls ().SelectRows (List, {static_cast<uint16_t> (List->RowCount - 1)});
  Wb ()->ActivateWindow (Win);
  EXPECT_EQ (env::RenderDesktop (Env ()), 3u);
  // The long text stays in its field: right of it is the client's white.
  int32_t Fx, Fy;
  Env ().windows ().ScreenOrigin (Win, Fx, Fy);
  EXPECT_EQ (Count (env::colours::Text, Fx + 112, Fy + 60, 60, 26), 0);
  EXPECT_EQ (G ().PixelAt (Sw - 5, Sh - 5), env::colours::Face) << "the huge window covers the screen below the others";

  // Icon ids of 126 and more draw nothing; 1 x 1 and 8000 x 8000 pictures are
  // clipped to the context.
  GUI_DRIVER_PROTOCOL *T = Gui ();
  PAINT_CONTEXT C = Wb ()->BeginPaint (Win);
  std::vector<uint32_t> Under;
  for (int I = 0; I < 32; I++) Under.push_back (G ().PixelAt (50 + I, 50 + I / 2));
  for (unsigned Id : {126u, 127u, 200u, 255u}) Wb ()->DrawIcon (C, 50, 50, static_cast<UINT8> (Id));
  for (int I = 0; I < 32; I++) EXPECT_EQ (G ().PixelAt (50 + I, 50 + I / 2), Under[I]);
  uint32_t One = 0x00FF00;
  T->DrawPixels (C, 45, 45, 1, 1, &One, 1);
  EXPECT_EQ (G ().PixelAt (45, 45), 0x00FF00u);
  std::vector<uint32_t> Big (size_t (8000) * 8000, 0xFF0000FFu);
  T->DrawPixelsAlpha (C, 40, 40, 8000, 8000, Big.data (), 8000);
  // The last pixel inside the window, and the first outside it.
  EXPECT_TRUE (G ().PixelAt (40 + 299, 40 + 199) == 0x0000FFu && G ().PixelAt (40 + 300, 40 + 200) != 0x0000FFu);
}
