#include <gtest/gtest.h>

#include <cstdlib>

#include "env/controls/control_driver.h"
#include "env/desktop/desktop_input.h"
#include "env/host/screenshot.h"
#include "env/host/sdl_desktop.h"
#include "env/gui/gui_driver.h"
#include "env/images/codecs.h"
#include "env/render/renderer.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"
#include "windows/window_test_support.h"

namespace {

std::vector<MESSAGE> Received;
unsigned CommandRuns = 0;

UINT8 EFIAPI Recorder (WINDOW_HEADER *, MESSAGE *Message) {
  Received.push_back (*Message);
  return Message->Type == MSG_ACTIVATE || (Message->Type == MSG_SYSCOMMAND && Message->Word2 == SYSCMD_CLOSE);
}
VOID EFIAPI Command (VOID *, WINDOW_HEADER *) { CommandRuns++; }

const MESSAGE *Last (uint8_t Type) {
  for (auto It = Received.rbegin (); It != Received.rend (); ++It)
    if (It->Type == Type) return &*It;
  return nullptr;
}
// The last message of a type as "code word2 word4 word6 word10 word12 word14".
std::string LastFields (uint8_t Type) {
  const MESSAGE *M = Last (Type);
  if (M == nullptr) return "none";
  std::string Out = std::to_string (M->Code);
  for (UINT16 W : {M->Word2, M->Word4, M->Word6, M->Word10, M->Word12, M->Word14}) Out += " " + std::to_string (W);
  return Out;
}

class DesktopInputTest : public DriverTest {
 protected:
  bool AutoLoad () override { return false; }
  void SetUp () override {
    DriverTest::SetUp ();
    Received.clear ();
    CommandRuns = 0;
  }
  WINDOW_HEADER *MakeWindow (UINT16 X, UINT16 Y, UINT16 W, UINT16 H) {
    return Wb ()->CreateWindow (300, Wb ()->Desktop, Recorder, nullptr, nullptr, X, Y, W, H);
  }
  // Screen position of a point given relative to a control.
  void At (const void *Target, int Dx, int Dy, int &X, int &Y) {
    int32_t Ox, Oy;
    Env ().windows ().ScreenOrigin (Target, Ox, Oy);
    X = Ox + Dx, Y = Oy + Dy;
  }
};

}  // namespace

TEST_F (DesktopInputTest, WindowsActivateMoveAndClose) {
  env::DesktopInput In (Env ());
  WINDOW_HEADER *Back = MakeWindow (50, 50, 300, 200);
  WINDOW_HEADER *Front = MakeWindow (200, 100, 300, 200);
  Wb ()->ActivateWindow (Front);
  EXPECT_EQ ((std::vector<void *> {In.WindowAt (100, 100), In.WindowAt (250, 150), In.WindowAt (10, 10)}),
            (std::vector<void *> {Back, Front, nullptr}));

  // A click on the back window brings it to the front.
  In.MouseDown (100, 120, env::MouseButton::Left, 1);
  In.MouseUp (100, 120);
  EXPECT_TRUE (Env ().windows ().ActiveWindow () == Back && Env ().windows ().TopLevelWindows ().back () == Back);

  In.MouseDown (60, 55, env::MouseButton::Left, 1);
  In.MouseMove (90, 75);
  In.MouseUp (90, 75);
  EXPECT_EQ (Back->X * 1000 + Back->Y, 80 * 1000 + 70);

  // The close box sends the close command, which the window accepts.
  env::WindowLayout L = env::LayoutOf (Env (), Back);
  Received.clear ();
  In.MouseDown (L.CloseX + 3, L.CloseY + 3, env::MouseButton::Left, 1);
  EXPECT_EQ (Env ().windows ().TopLevelWindows (), std::vector<WINDOW_HEADER *> {Front});

  Wb ()->ActivateWindow (Front);
  Received.clear ();
  In.Key ('x', 0, 0);
  EXPECT_TRUE (Last (MSG_KEY) != nullptr && Last (MSG_KEY)->Word2 == 'x');

  // Ctrl+Tab brings the bottom window to the top; with Shift, the one below the top.
  MakeWindow (400, 300, 100, 100);
  WINDOW_HEADER *Top = MakeWindow (500, 400, 100, 100);
  In.Key (0x09, 0, KEY_STATE_VALID | KEY_STATE_LEFT_CONTROL);
  WINDOW_HEADER *Next = Env ().windows ().ActiveWindow ();
  In.Key (0x09, 0, KEY_STATE_VALID | KEY_STATE_LEFT_CONTROL | KEY_STATE_LEFT_SHIFT);
  EXPECT_TRUE (Next == Front && Env ().windows ().ActiveWindow () == Top);
}

TEST_F (DesktopInputTest, ListRowsSelectOpenAndContextClick) {
  env::DesktopInput In (Env ());
  WINDOW_HEADER *W = MakeWindow (0, 0, 600, 500);
  LIST_CONTROL *List = Cd ()->CreateListView (W, 10, 40, 400, 300, 0);
  Cd ()->AddColumn (List, Ascii ("Name"), 64, 200, TRUE, FALSE);
  for (Entry Row : {Entry ("a"), Entry ("b"), Entry ("c"), Entry ("d"), Entry ("e")})
    Cd ()->AddListItem (List, ICON_NONE, FALSE, 0, 0, &Row);
  env::ControlDriver &Ctl = Env ().controls ();
  int RowH = Ctl.RowHeight (), Top = 1 + Ctl.HeaderHeight ();
  // Screen position 50 pixels into a row.
  auto Row = [&] (int Index, int &X, int &Y) { At (List, 50, Top + Index * RowH + 3, X, Y); };
  int X, Y, X0, Y0, X4, Y4, Xe, Ye;
  Row (2, X, Y), Row (0, X0, Y0), Row (4, X4, Y4), Row (6, Xe, Ye);
  EXPECT_TRUE (In.ControlAt (W, X, Y) == &List->Control && In.ListRowAt (List, X, Y) == 2);
  In.MouseDown (X, Y, env::MouseButton::Left, 1);
  EXPECT_EQ (Ctl.SelectedRows (List), std::vector<uint16_t> ({2}));

  // Ctrl adds a row; the notification counts the selected rows and the rows,
  // and names the current row and the list.
  In.MouseDown (X0, Y0, env::MouseButton::Left, 1, /*Ctrl*/ true);
  const std::string Id = " " + std::to_string (List->Control.Id) + " ";
  EXPECT_EQ (LastFields (MSG_NOTIFY), "3 2 5 0" + Id + "0 0");
  EXPECT_EQ (List->CurrentRow, 0);
  UINT16 Cursor = 0;
  std::vector<std::string> Selected;
  while (LIST_ITEM *Item = Cd ()->GetNextSelected (List, &Cursor)) Selected.push_back (reinterpret_cast<char *> (Item->Name));
  EXPECT_EQ (Selected, (std::vector<std::string> {"a", "c"}));
  In.MouseDown (X4, Y4, env::MouseButton::Left, 1, false, /*Shift*/ true);
  EXPECT_EQ (Ctl.SelectedRows (List), std::vector<uint16_t> ({0, 1, 2, 3, 4}));

  // Below the last row nothing is selected; a double click opens the row.
  EXPECT_EQ (In.ListRowAt (List, Xe, Ye), 0xFFFF);
  In.MouseDown (X, Y, env::MouseButton::Left, 2);
  EXPECT_EQ (LastFields (MSG_NOTIFY), "4 0 0 2" + Id + "0 0");
  EXPECT_EQ (Ctl.SelectedRows (List), std::vector<uint16_t> ({2}));

  // A right click keeps a selection that holds the row and reports the
  // position relative to the list.
  In.MouseDown (X, Y, env::MouseButton::Right, 1);
  EXPECT_EQ (LastFields (MSG_NOTIFY), "5 1 0 0" + Id + "50 " + std::to_string (Top + 2 * RowH + 3));

  // The menu key selects the current row when the selection does not hold it.
  List->CurrentRow = 3;
  In.Key (0, env::kScanContextMenu, 0);
  EXPECT_TRUE (Ctl.SelectedRows (List) == std::vector<uint16_t> ({3}) && Last (MSG_NOTIFY)->Code == NOTIFY_CONTEXT);

  // Nothing reaches a window whose NotifyEnabled byte is 0.
  Received.clear ();
  W->NotifyEnabled = 0;
  In.MouseDown (X0, Y0, env::MouseButton::Left, 1);
  In.MouseDown (X4, Y4, env::MouseButton::Left, 2);
  EXPECT_TRUE (Last (MSG_NOTIFY) == nullptr && List->CurrentRow == 4);
}

// (A cut name's tooltip under the pointer is a golden scene.)
TEST_F (DesktopInputTest, ColumnTitlesSizeColumnsAndTheBarScrollsThem) {
  env::DesktopInput In (Env ());
  env::ControlDriver &Ctl = Env ().controls ();
  WINDOW_HEADER *W = MakeWindow (0, 0, 600, 500);
  LIST_CONTROL *List = Cd ()->CreateListView (W, 10, 40, 300, 200, 0);
  Cd ()->AddColumn (List, Ascii ("Name"), 64, 80, TRUE, FALSE);
  Cd ()->AddColumn (List, Ascii ("Size"), 32, 64, FALSE, TRUE);
  for (Entry Row : {Entry ("short"), Entry ("a-name-longer-than-its-column")})
    Cd ()->AddListItem (List, ICON_NONE, FALSE, 0, 0, &Row);
  Ctl.SetColumnWidth (List, 0, 120);
  env::ListGeometry G = Ctl.Geometry (List);
  int X, Y;
  ASSERT_TRUE (Ctl.ShowCellTip (List, 0, 1, 0, 0)) << "the long name is cut";
  Ctl.HideCellTip ();

  // Dragging the border between the titles sizes the name column.
  int Border = G.ViewX + G.Columns[0].Width;
  At (List, Border + 1, G.HeaderY + 4, X, Y);
  EXPECT_EQ (In.ListBorderAt (List, X, Y), 0);
  EXPECT_TRUE (In.MouseDown (X, Y, env::MouseButton::Left, 1));
  EXPECT_TRUE (In.MouseMove (X + 40, Y + 30));
  In.MouseUp (X + 40, Y + 30);
  In.MouseMove (X + 80, Y);   // after the button is up, moving sizes nothing
  EXPECT_EQ (Ctl.Geometry (List).Columns[0].Width, 120 + 40);
  // A double click on it fits the column to its widest text: the cut name shows whole.
  At (List, G.ViewX + 160, G.HeaderY + 4, X, Y);
  EXPECT_TRUE (In.MouseDown (X, Y, env::MouseButton::Left, 2));
  G = Ctl.Geometry (List);
  EXPECT_TRUE (G.Columns[0].TextWidth == 29 * 8 && !Ctl.ShowCellTip (List, 0, 1, 0, 0));

  // Now wider than the list: the bar along the bottom scrolls, and is no row.
  ASSERT_TRUE (G.HorizontalBar);
  int BarY = G.RowsY + G.RowsHeight + 8;
  At (List, G.ViewX + G.ViewWidth - 4, BarY, X, Y);
  EXPECT_EQ (In.ListRowAt (List, X, Y), 0xFFFF);
  // The right arrow, the track right of the thumb, the left arrow.
  std::vector<int> Scrolled;
  for (int Dx : {G.ViewWidth - 4, G.ViewWidth / 2 + 20, 2}) {
    At (List, G.ViewX + Dx, BarY, X, Y);
    In.MouseDown (X, Y, env::MouseButton::Left, 1);
    Scrolled.push_back (Ctl.Geometry (List).ScrollX);
  }
  const int End = G.ContentWidth - G.ViewWidth;
  EXPECT_EQ (Scrolled, (std::vector<int> {24, End, End - 24}));
  // Borders and cells move with the scrolled columns.
  G = Ctl.Geometry (List);
  At (List, G.ViewX + G.Columns[1].X - G.ScrollX + 1, G.HeaderY + 4, X, Y);
  EXPECT_TRUE (In.ListBorderAt (List, X, Y) == 0 && In.ListColumnAt (List, X + 4) == 1);
}

TEST_F (DesktopInputTest, PopupsAndButtons) {
  env::DesktopInput In (Env ());
  WINDOW_HEADER *W = MakeWindow (100, 100, 400, 300);
  CONTROL *Button = Wb ()->CreateButton (W, 33, Ascii ("OK"), 20, 200, 80, 26, 0);
  int X, Y;
  At (Button, 10, 10, X, Y);
  In.MouseDown (X, Y, env::MouseButton::Left, 1);
  EXPECT_TRUE (Last (MSG_SYSCOMMAND) != nullptr && Last (MSG_SYSCOMMAND)->Word2 == 33);

  WINDOW_HEADER *Popup = Wb ()->CreatePopupMenu (W, 0, 0, 0);
  Wb ()->AppendMenuItem (Popup, Ascii ("Run"), Command, W, ICON_NONE);
  Wb ()->AppendMenuItem (Popup, Ascii ("Greyed"), Command, W, ICON_NONE);
  Wb ()->ShowPopupMenu (Popup);
  auto Items = Env ().windows ().PopupItems (Popup);
  ASSERT_EQ (Items.size (), 2u);
  const CONTROL &Run = Items[0].Item->Control;
  // Hovering highlights the item: the renderer paints it in the selection colour.
  In.MouseMove (Popup->X + Run.X + 5, Popup->Y + Run.Y + 3);
  env::RenderDesktop (Env ());
  EXPECT_EQ (Env ().gui ().PixelAt (Popup->X + Run.X + Run.Width - 3, Popup->Y + Run.Y + 2), env::colours::Selection);
  In.MouseDown (Popup->X + Run.X + 5, Popup->Y + Run.Y + 3, env::MouseButton::Left, 1);
  EXPECT_TRUE (CommandRuns == 1 && Env ().windows ().ShownPopup () == nullptr);

  // A click outside an open popup only closes it.
  Wb ()->ShowPopupMenu (Popup);
  Received.clear ();
  In.MouseDown (X, Y, env::MouseButton::Left, 1);
  EXPECT_TRUE (Env ().windows ().ShownPopup () == nullptr && Last (MSG_SYSCOMMAND) == nullptr && CommandRuns == 1);
  Wb ()->DestroyWindow (Popup);
}

namespace {
unsigned TimerRuns = 0;
VOID EFIAPI CountTimer (VOID *) { TimerRuns++; }
}  // namespace

TEST_F (DesktopInputTest, MessageBoxTakesAllInputUntilItsButtonIsPressed) {
  env::DesktopInput In (Env ());
  env::WindowBase &Base = Env ().windows ();
  WINDOW_HEADER *W = MakeWindow (20, 20, 600, 400);
  CONTROL *Button = Wb ()->CreateButton (W, 33, Ascii ("Go"), 20, 200, 80, 26, 0);
  TimerRuns = 0;
  ASSERT_TRUE (Wb ()->SetTimer (CountTimer, nullptr));
  int Bx, By;
  At (Button, 10, 10, Bx, By);

  int Asked = 0;
  Base.SetMessageBoxAnswerer ([&] (const env::MessageBoxRecord &Box) -> UINTN {
    Asked++;
    const env::MessageBoxRecord *Open = Base.OpenMessageBox ();
    if (Open == nullptr || Open->Caption != "Caption") return 0;
    env::MessageBoxLayout L = env::LayoutOfMessageBox (Env (), Box.Text, Box.Caption);
    // Modal: the window's button, keys for the window, timers and posted
    // messages all wait.
    Received.clear ();
    EXPECT_FALSE (In.MouseDown (Bx, By, env::MouseButton::Left, 1) || In.Key ('a', 0, 0));
    MESSAGE Posted {};
    Posted.Type = MSG_SYSCOMMAND;
    Wb ()->PostMessage (W, &Posted);
    EXPECT_EQ (Base.RunTimerTick () + Base.PumpMessages () + Received.size () + TimerRuns, 0u);
    // Outside the button nothing happens; on it (or with Enter) the box is done.
    EXPECT_FALSE (In.MouseDown (L.X + 3, L.Y + L.Height - 3, env::MouseButton::Left, 1) || Open->Dismissed);
    EXPECT_TRUE (Asked == 1 ? In.MouseDown (L.ButtonX + 5, L.ButtonY + 5, env::MouseButton::Left, 1)
                            : In.Key (Asked == 2 ? 0x0D : ' ', 0, 0));
    EXPECT_TRUE (Open->Dismissed);
    return 1;
  });
  for (const char *Text : {"Text", "Again", "Once more"})
    EXPECT_EQ (Wb ()->MessageBox (1, Ascii (Text), Ascii ("Caption"), 0), 1u);
  EXPECT_EQ (Asked, 3);
  Base.SetMessageBoxAnswerer (nullptr);
  // After the boxes, the held messages and the timer go on.
  EXPECT_EQ (Base.OpenMessageBox (), nullptr);
  EXPECT_EQ (Base.PumpMessages (), 3u);
  EXPECT_EQ (Base.RunTimerTick (), 1u);
  Wb ()->KillTimer (CountTimer, nullptr);
}

TEST_F (DesktopInputTest, MessageBoxTextWrapsWithinTheScreen) {
  // Words wrap at spaces; a two-byte GBK character is never split; a text far
  // too long for the screen is cut to the lines that fit.
  std::string Words;
  for (int I = 0; I < 40; I++) Words += "word" + std::to_string (I) + " ";
  env::MessageBoxLayout L = env::LayoutOfMessageBox (Env (), Words, "Caption");
  ASSERT_GT (L.Lines.size (), 1u);
  for (const std::string &Line : L.Lines) {
    EXPECT_LE (env::GuiDriver::TextWidth (Line), L.Width - 2 * (L.TextX - L.X));
    EXPECT_NE (Line.front (), ' ');
  }
  EXPECT_EQ (L.Lines[0].rfind ("word0 word1", 0), 0u);

  std::string Gbk;
  for (int I = 0; I < 300; I++) Gbk += "\xD6\xD0";
  L = env::LayoutOfMessageBox (Env (), Gbk, "");
  ASSERT_GT (L.Lines.size (), 1u);
  for (const std::string &Line : L.Lines) EXPECT_EQ (Line.size () % 2, 0u);

  L = env::LayoutOfMessageBox (Env (), std::string (200000, 'x'), std::string (5000, 'c'));
  EXPECT_TRUE (L.X >= 0 && L.Y >= 0 && L.X + L.Width <= Env ().gui ().Width () &&
               L.Y + L.Height <= Env ().gui ().Height () && L.ButtonY + L.ButtonHeight <= L.Y + L.Height);

  // Lines given in the text stay lines.
  L = env::LayoutOfMessageBox (Env (), "one\r\ntwo\nthree", "");
  EXPECT_EQ (L.Lines, (std::vector<std::string> {"one", "two", "three"}));
}

TEST_F (DesktopInputTest, TooltipFollowsThePointerOverMenuButtons) {
  env::DesktopInput In (Env ());
  env::WindowBase &Base = Env ().windows ();
  WINDOW_HEADER *W = MakeWindow (100, 100, 400, 300);
  // Menu buttons live in a header: a child window below the title bar.
  WINDOW_HEADER *Header = Wb ()->CreateWindow (300, W, Recorder, nullptr, nullptr, 2, 24, 390, 60);
  MENU_ITEM *Tool = Wb ()->CreateMenuButton (Header, 10, 32, Command, nullptr, W, ICON_NONE, nullptr);
  MENU_ITEM *Plain = Wb ()->CreateMenuButton (Header, 60, 32, Command, nullptr, W, ICON_NONE, nullptr);
  ASSERT_TRUE (Tool != nullptr && Plain != nullptr);
  Wb ()->SetTooltip (Tool, Ascii ("Copy the selected files"), 0, 0);
  int X, Y;
  At (Tool, 5, 5, X, Y);
  env::TooltipInfo Tip;
  EXPECT_TRUE (In.MouseMove (X, Y));
  ASSERT_TRUE (Base.ShownTooltip (Tip));
  EXPECT_TRUE (Tip.Text == "Copy the selected files" && Tip.X == X && Tip.Y > Y);
  // It stays where it appeared while the pointer moves on the same button.
  EXPECT_FALSE (In.MouseMove (X + 1, Y));

  // A button without a tooltip, the desktop, and a click each hide it.
  At (Plain, 5, 5, X, Y);
  EXPECT_TRUE (In.MouseMove (X, Y));
  EXPECT_FALSE (Base.ShownTooltip (Tip));
  At (Tool, 5, 5, X, Y);
  In.MouseMove (X, Y);
  EXPECT_TRUE (In.MouseMove (5, 5));
  EXPECT_FALSE (Base.ShownTooltip (Tip));
  In.MouseMove (X, Y);
  In.MouseDown (X, Y, env::MouseButton::Left, 1);
  EXPECT_FALSE (Base.ShownTooltip (Tip));
  // A tooltip whose button is gone is not drawn.
  In.MouseMove (X + 2, Y);
  ASSERT_TRUE (Base.ShownTooltip (Tip));
  Wb ()->DestroyWindow (W);
  Base.PumpMessages ();
  EXPECT_FALSE (Base.ShownTooltip (Tip));
}

namespace {
WINDOW_BASE_PROTOCOL *BoxBase = nullptr;
UINTN BoxAnswer = 0;
VOID EFIAPI AskOnce (VOID *) {
  BoxBase->KillTimer (AskOnce, nullptr);
  BoxAnswer = BoxBase->MessageBox (1, reinterpret_cast<const CHAR8 *> ("Disk full"),
                                   reinterpret_cast<const CHAR8 *> ("Copy"), 0);
}
}  // namespace

TEST_F (DesktopInputTest, DesktopWindowRunsWithoutADisplayAndShowsAMessageBoxUntilItEnds) {
  // SDL's dummy video driver needs no X server.
  setenv ("SDL_VIDEODRIVER", "dummy", 1);
  MakeWindow (100, 100, 400, 300);
  BoxBase = Wb ();
  BoxAnswer = 0;
  ASSERT_TRUE (Wb ()->SetTimer (AskOnce, nullptr));
  TempFolder Dir;
  env::DesktopOptions Opts;
  Opts.MaxFrames = 3;          // the box's own loop presents the last frames
  Opts.TickMilliseconds = 1;
  Opts.ScreenshotAtExit = (Dir.Path () / "exit.png").string ();
  ASSERT_TRUE (env::RunDesktop (Env (), Opts));
  EXPECT_TRUE (BoxAnswer == 1 && Env ().windows ().OpenMessageBox () == nullptr);
  env::MessageBoxLayout L = env::LayoutOfMessageBox (Env (), "Disk full", "Copy");
  env::GuiDriver &G = Env ().gui ();
  // The screenshot holds the last frame, pixel for pixel.
  std::string Bytes = ReadHostFile (Opts.ScreenshotAtExit);
  env::DecodedImage Shot;
  ASSERT_TRUE (env::DecodePng (reinterpret_cast<const uint8_t *> (Bytes.data ()), Bytes.size (), Shot));
  std::vector<uint32_t> Screen (G.Framebuffer (), G.Framebuffer () + G.Width () * G.Height ());
  for (uint32_t &Pixel : Screen) Pixel |= 0xFF000000u;
  EXPECT_TRUE (Shot.Width == unsigned (G.Width ()) && Shot.Pixels == Screen);
  EXPECT_FALSE (env::SaveScreenshot ((Dir.Path () / "no" / "such" / "dir.png").string ()));
  EXPECT_EQ ((std::vector<uint32_t> {G.PixelAt (L.X + L.Width / 2, L.Y + 4), G.PixelAt (0, 0), G.PixelAt (300, 300)}),
             (std::vector<uint32_t> {env::colours::ActiveCaption, env::kDesktopColour, env::colours::Face}));
}

TEST_F (DesktopInputTest, BordersResizeAndTabMovesTheFocus) {
  env::DesktopInput In (Env ());
  WINDOW_HEADER *W = MakeWindow (100, 100, 400, 300);
  // The bottom-right corner: one resize message per new size, with its fields.
  Received.clear ();
  EXPECT_TRUE (In.MouseDown (100 + 399, 100 + 299, env::MouseButton::Left, 1));
  EXPECT_TRUE (In.MouseMove (100 + 449, 100 + 319));
  EXPECT_FALSE (In.MouseMove (100 + 449, 100 + 319));
  In.MouseUp (100 + 449, 100 + 319);
  ASSERT_NE (Last (MSG_RESIZE), nullptr);
  std::string Sizes = std::to_string (Last (MSG_RESIZE)->Word2) + "x" + std::to_string (Last (MSG_RESIZE)->Word4);
  // The right border changes only the width, and the window does not move;
  // inside the window, away from the borders, nothing is resized.
  const std::pair<int, int> Drags[][2] = {{{100 + 398, 200}, {100 + 300, 260}}, {{200, 200}, {250, 250}}};
  for (auto &Drag : Drags) {
    Received.clear ();
    In.MouseDown (Drag[0].first, Drag[0].second, env::MouseButton::Left, 1);
    In.MouseMove (Drag[1].first, Drag[1].second);
    In.MouseUp (Drag[1].first, Drag[1].second);
    const MESSAGE *Resize = Last (MSG_RESIZE);
    Sizes += Resize ? " " + std::to_string (Resize->Word2) + "x" + std::to_string (Resize->Word4) : " none";
  }
  EXPECT_EQ (Sizes, "450x320 302x300 none");
  EXPECT_EQ (W->X, 100);

  // Tab goes round the controls that take keys; Shift+Tab goes back.
  LIST_CONTROL *List = Cd ()->CreateListView (W, 10, 40, 200, 100, 0);
  Wb ()->CreateTextField (W, 10, 150, 100, 20, 0, TRUE, Ascii ("label"));
  CONTROL *Button = Wb ()->CreateButton (W, 40, Ascii ("OK"), 10, 200, 80, 26, 0);
  Wb ()->ActivateWindow (W);
  std::vector<void *> Focus;
  for (UINT32 Shift : {0u, 0u, 0u, KEY_STATE_VALID | KEY_STATE_LEFT_SHIFT}) {
    EXPECT_TRUE (In.Key (0x09, 0, Shift));
    Focus.push_back (W->FocusControl);
  }
  EXPECT_EQ (Focus, (std::vector<void *> {List, Button, List, Button}));
}
