#include <gtest/gtest.h>

#include "env/controls/control_driver.h"
#include "env/gui/gui_driver.h"
#include "env/render/renderer.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"
#include "windows/window_test_support.h"

namespace {

unsigned PaintCalls = 0;

// Accepts activation, so that the base raises the window.
UINT8 EFIAPI Handler (WINDOW_HEADER *, MESSAGE *Message) { return Message->Type == MSG_ACTIVATE; }

class RenderTest : public DriverTest {
 protected:
  bool AutoLoad () override { return false; }
  env::GuiDriver &G () { return Env ().gui (); }

  // Pixels of a colour inside a screen rectangle.
  int Count (uint32_t Colour, int X, int Y, int W, int H) {
    int N = 0;
    for (int Py = Y; Py < Y + H; Py++)
      for (int Px = X; Px < X + W; Px++) N += G ().PixelAt (Px, Py) == Colour;
    return N;
  }

  WINDOW_HEADER *MakeWindow (const char *Title, UINT16 X, UINT16 Y, UINT16 W, UINT16 H, PAINT_CALLBACK P) {
    WINDOW_HEADER *Win = Wb ()->CreateWindow (300, Wb ()->Desktop, Handler, P, nullptr, X, Y, W, H);
    Wb ()->SetWindowText (Win, Ascii (Title));
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

// (Lists, controls, status lines and popups are drawn in the golden scenes.)
TEST_F (RenderTest, HostileSizesAreDrawnOrClippedCleanly) {
  TheBase = Wb ();
  const int Sw = G ().Width (), Sh = G ().Height ();
  // Larger than the screen, and placed off it.
  MakeWindow ("Huge", 0, 0, 65535, 65535, DefaultThenNothing);
  MakeWindow ("Away", 65000, 65000, 500, 500, DefaultThenNothing);
  // Zero-sized controls and a text far longer than its field.
  WINDOW_HEADER *Win = MakeWindow ("Small", 40, 40, 300, 200, WhiteClient);
  Wb ()->CreateButton (Win, 7, Ascii ("zero"), 10, 30, 0, 0, 0);
  Wb ()->CreateTextField (Win, 10, 40, 0, 0, 0, TRUE, Ascii ("zero"));
  std::string Long (5000, 'W');
  Wb ()->CreateTextField (Win, 10, 60, 100, 26, 0, TRUE, Ascii (Long.c_str ()));
  // A list of 65535 rows: only the visible ones are drawn.
  LIST_CONTROL *List = Cd ()->CreateListView (Win, 10, 90, 280, 100, 0);
  Cd ()->AddColumn (List, Ascii ("Name"), 64, 200, TRUE, FALSE);
  Entry Row ("row");
  unsigned Added = 0;
  for (unsigned I = 0; I < 65535; I++) Added += Cd ()->AddListItem (List, ICON_NONE, FALSE, 0, 1, &Row) != 0xFFFF;
  EXPECT_GE (Added, 65534u);
  Env ().controls ().SelectRows (List, {static_cast<uint16_t> (List->RowCount - 1)});
  Wb ()->ActivateWindow (Win);
  EXPECT_EQ (env::RenderDesktop (Env ()), 3u);
  // The long text stays in its field: right of it is the client's white.
  int32_t Fx, Fy;
  Env ().windows ().ScreenOrigin (Win, Fx, Fy);
  EXPECT_EQ (Count (env::colours::Text, Fx + 112, Fy + 60, 60, 26), 0);
  EXPECT_EQ (G ().PixelAt (Sw - 5, Sh - 5), env::colours::Face) << "the huge window covers the screen below the others";

  // Icon ids of 126 and more draw nothing; an 8000 x 8000 picture is clipped
  // to the context.
  PAINT_CONTEXT C = Wb ()->BeginPaint (Win);
  std::vector<uint32_t> Under;
  for (int I = 0; I < 32; I++) Under.push_back (G ().PixelAt (50 + I, 50 + I / 2));
  for (unsigned Id : {126u, 127u, 200u, 255u}) Wb ()->DrawIcon (C, 50, 50, static_cast<UINT8> (Id));
  for (int I = 0; I < 32; I++) EXPECT_EQ (G ().PixelAt (50 + I, 50 + I / 2), Under[I]);
  std::vector<uint32_t> Big (size_t (8000) * 8000, 0xFF0000FFu);
  Gui ()->DrawPixelsAlpha (C, 40, 40, 8000, 8000, Big.data (), 8000);
  // The last pixel inside the window, and the first outside it.
  EXPECT_TRUE (G ().PixelAt (40 + 299, 40 + 199) == 0x0000FFu && G ().PixelAt (40 + 300, 40 + 200) != 0x0000FFu);
}
