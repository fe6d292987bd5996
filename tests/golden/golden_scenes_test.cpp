// Golden images of fixed scenes: the whole screen after a scene is set up is
// compared with its reference PNG (see golden_image.h for the tolerance and
// for regenerating the references).
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "compare/file_comparison.h"
#include "env/controls/control_driver.h"
#include "env/desktop/desktop_input.h"
#include "env/gui/gui_driver.h"
#include "env/render/renderer.h"
#include "env/windows/window_base.h"
#include "filemanager/main_window.h"
#include "golden/golden_image.h"
#include "support/driver_fixture.h"
#include "viewers/viewers.h"

namespace {

// Rendering is exact: same build, same font, same icons. The channel
// tolerance absorbs rounding in scaling and blending between compilers; a
// changed glyph or a moved line fails.
constexpr Tolerance kExact {4, 0};
constexpr time_t kFixedTime = 1700000000;   // 2023-11-14 22:13:20 UTC

class GoldenScene : public DriverTest {
 protected:
  env::Options EnvironmentOptions () override {
    env::Options O;
    O.ScreenWidth = 640, O.ScreenHeight = 480;
    return O;
  }
  void SetUp () override {
    // Listed times are local times: the same zone on every machine.
    setenv ("TZ", "UTC0", 1);
    tzset ();
    DriverTest::SetUp ();
  }

  env::WindowBase &Base () { return Env ().windows (); }

  // Every file and folder under the volume gets the one fixed time.
  void FixTimes (int Volume) {
    for (auto &Entry : std::filesystem::recursive_directory_iterator (VolumePath (Volume))) Touch (Entry.path ());
  }
  static void Touch (const std::filesystem::path &Path) {
    struct timespec Times[2] = {{kFixedTime, 0}, {kFixedTime, 0}};
    utimensat (AT_FDCWD, Path.c_str (), Times, 0);
  }

  // With LongName, one more file whose name is wider than its column at the default size.
  int ListingVolume (bool LongName = false) {
    int V = MakeVolume ("files", 0, 0, 1, "DATA");
    MakeDir (V, "tools");
    WriteFile (V, "notes.txt", std::string (1234, 'n'));
    WriteFile (V, "readme.txt", "read me\r\n");
    WriteFile (V, "setup.efi", std::string (40960, 'e'));
    if (LongName) WriteFile (V, kLongName, "2023");
    FixTimes (V);
    return V;
  }
  static constexpr const char *kLongName = "quarterly-report-final.txt";

  // Screen position of a list's cell (Row < 0: the title row), Dx pixels into its text.
  void CellPoint (LIST_CONTROL *List, size_t Column, int Row, int Dx, int &X, int &Y) {
    int32_t Lx = 0, Ly = 0;
    Base ().ScreenOrigin (List, Lx, Ly);
    env::ListGeometry G = Env ().controls ().Geometry (List);
    X = Lx + G.ViewX + G.Columns[Column].TextX + Dx - G.ScrollX;
    Y = Ly + (Row < 0 ? G.HeaderY + G.HeaderHeight / 2 : G.RowsY + (Row - List->TopRow) * G.RowHeight + 4);
  }
  int RowNamed (LIST_CONTROL *List, const std::string &Name) {
    for (int Row = 0; Row < List->RowCount; Row++)
      if (Env ().controls ().CellText (List, 0, static_cast<uint16_t> (Row)) == Name) return Row;
    return -1;
  }
  MAIN_WINDOW *OpenMain (int Volume) {
    auto *W = reinterpret_cast<MAIN_WINDOW *> (
        Surveyor ()->OpenVolumeWindow (0, 0, static_cast<UINT8> (Volume), nullptr, nullptr));
    EXPECT_NE (W, nullptr);
    return W;
  }

  Image Screen () {
    env::RenderDesktop (Env ());
    return Framebuffer ();
  }
  Image Framebuffer () {
    env::GuiDriver &Gui = Env ().gui ();
    Image I;
    I.Width = Gui.Width (), I.Height = Gui.Height ();
    const uint32_t *P = Gui.Framebuffer ();
    I.Pixels.assign (P, P + size_t (I.Width) * I.Height);
    for (uint32_t &Pixel : I.Pixels) Pixel &= 0xFFFFFF;
    return I;
  }
  void ExpectGolden (const std::string &Name, const Image &Actual) {
    std::string Failure = MatchGolden (Name, Actual, kExact);
    EXPECT_TRUE (Failure.empty ()) << Failure;
  }
};

// One main window in turn: the About box of the Help menu over it, a toolbar
// button's tooltip, the list's menu with a greyed item, and a selected row.
TEST_F (GoldenScene, MainWindowWithItsBoxMenuTooltipAndSelection) {
  SkipPoolCheck ();   // the menus live as long as the driver
  MAIN_WINDOW *W = OpenMain (ListingVolume ());
  ASSERT_NE (W, nullptr);
  ASSERT_EQ (W->List->RowCount, 4);
  Image Shown;
  Base ().SetMessageBoxAnswerer ([&] (const env::MessageBoxRecord &) -> UINTN {
    Shown = Screen ();
    return 1;
  });
  MENU_ITEM *Help = nullptr;
  for (WINDOW_HEADER *Child : Base ().ChildWindows (&W->Header))
    for (CONTROL *C : Base ().Controls (Child))
      if (C->Kind == CONTROL_KIND_MENU_ITEM && Base ().WindowText (C).rfind ("Help", 0) == 0)
        Help = reinterpret_cast<MENU_ITEM *> (C);
  ASSERT_TRUE (Help != nullptr && Base ().ClickMenuItem (Help) && Base ().ShownPopup () != nullptr);
  std::vector<env::PopupItemInfo> Items = Base ().PopupItems (Base ().ShownPopup ());
  ASSERT_EQ (Items.size (), 1u);
  ASSERT_TRUE (Base ().ChoosePopupItem (Base ().ShownPopup (), Items[0].Text));
  Base ().SetMessageBoxAnswerer (nullptr);
  ASSERT_FALSE (Shown.Pixels.empty ()) << "no message box was shown";
  ExpectGolden ("message_box", Shown);

  // Point at the toolbar buttons until one shows its tooltip.
  env::DesktopInput Mouse (Env ());
  env::RenderDesktop (Env ());
  env::TooltipInfo Tip;
  for (int X = W->Header.X + 8; X < W->Header.X + 200 && !Base ().ShownTooltip (Tip); X += 4)
    for (int Y = W->Header.Y + 40; Y < W->Header.Y + 110 && !Base ().ShownTooltip (Tip); Y += 4) Mouse.MouseMove (X, Y);
  ASSERT_TRUE (Base ().ShownTooltip (Tip));
  ExpectGolden ("toolbar_tooltip", Screen ());

  Mouse.MouseMove (1, 1);
  Env ().controls ().SelectRows (W->List, {});
  Env ().controls ().ContextClick (W->List, 60, 90);
  WINDOW_HEADER *Popup = Base ().ShownPopup ();
  ASSERT_NE (Popup, nullptr);
  std::map<std::string, bool> States = PopupItemStates (Popup);
  ASSERT_TRUE (std::any_of (States.begin (), States.end (), [] (auto &S) { return !S.second; }))
      << "the scene needs a greyed item";
  ExpectGolden ("popup_greyed_item", Screen ());
  Base ().ClosePopup ();

  Env ().controls ().SelectRows (W->List, {2});
  ExpectGolden ("main_window", Screen ());
}

// A name cut in its column shows whole in its tooltip; dragging the border
// between the name and size titles 90 pixels to the right widens the column.
TEST_F (GoldenScene, CutNameWithItsTooltipThenTheColumnWidened) {
  MAIN_WINDOW *W = OpenMain (ListingVolume (true));
  ASSERT_NE (W, nullptr);
  int Row = RowNamed (W->List, kLongName);
  ASSERT_GE (Row, 0);
  env::RenderDesktop (Env ());
  env::DesktopInput Mouse (Env ());
  int X, Y;
  CellPoint (W->List, 0, Row, 20, X, Y);
  Mouse.MouseMove (X, Y);
  env::TooltipInfo Tip;
  ASSERT_TRUE (Env ().controls ().ShownCellTip (Tip));
  EXPECT_EQ (Tip.Text, kLongName);
  ExpectGolden ("cut_name_tooltip", Screen ());

  env::ListColumnSpan Name = Env ().controls ().Geometry (W->List).Columns[0];
  CellPoint (W->List, 0, -1, Name.X + Name.Width - Name.TextX, X, Y);
  Mouse.MouseDown (X, Y, env::MouseButton::Left, 1);
  Mouse.MouseMove (X + 90, Y);
  Mouse.MouseUp (X + 90, Y);
  env::ListGeometry After = Env ().controls ().Geometry (W->List);
  EXPECT_TRUE (After.Columns[0].Width == Name.Width + 90 && After.HorizontalBar);
  ExpectGolden ("resized_column", Screen ());
}

UINT8 EFIAPI IgnoreMessages (WINDOW_HEADER *, MESSAGE *) { return 0; }

// The renderer's controls: a field whose text ends in an ellipsis, labels
// wider than their buttons (one button five characters wide for "Pause"), a
// label 0 wide shown whole, a text view wrapping at word ends, a combo box
// showing its choice, a tree whose open root shows "-" and closed folder "+",
// and a list with an in-place edit framed over its new row.
TEST_F (GoldenScene, ControlsOfEveryKind) {
  auto A = [] (const char *S) { return reinterpret_cast<const CHAR8 *> (S); };
  WINDOW_HEADER *Win = Wb ()->CreateWindow (300, Wb ()->Desktop, IgnoreMessages, nullptr, nullptr, 0, 0, 640, 480);
  Wb ()->SetWindowText (Win, A ("Controls"));
  Wb ()->CreateTextField (Win, 10, 30, 100, 26, 0, TRUE, A ("WWWWWWWWWWWWWWW"));
  Wb ()->CreateButton (Win, 35, A (">>!0"), 10, 70, 24, 26, 0);
  Wb ()->CreateButton (Win, 36, A (">>!0"), 60, 70, 80, 26, 0);
  Wb ()->CreateButton (Win, 37, A ("Pause"), 160, 70, 40, 26, 0);
  Wb ()->CreateTextField (Win, 10, 110, 0, 26, 0, FALSE, A ("Result:"));
  const char *Body = "first line\nsecond line is long enough that it must wrap twice inside the narrow box";
  CONTROL_RECT R {10, 150, 200, 120};
  Cd ()->CreateTextView (Win, 5, A (Body), static_cast<UINT16> (strlen (Body) + 1), &R);
  COMBO_BOX *Combo = Cd ()->CreateComboBox (220, 30, 150, 26, 0, Win);
  Cd ()->AddComboItem (Combo, A ("Volume A"), 0);
  Cd ()->AddComboItem (Combo, A ("Volume B"), 0);
  Env ().controls ().ChooseComboRow (Combo, 1);
  FILE_LIST *Tree = Cd ()->CreateFileList (Win, 220, 150, 200, 120, 0);
  struct {
    CHAR8 Name[216];
  } Docs {{'d', 'o', 'c', 's'}};
  Cd ()->AddFileListItem (Tree, TRUE, ICON_NONE, 0, "\\", A ("\\"));
  Cd ()->AddFileListItem (Tree, TRUE, ICON_NONE, 0, &Docs, A ("\\"));
  LIST_CONTROL *List = Cd ()->CreateListView (Win, 430, 30, 200, 200, 0);
  Cd ()->AddColumn (List, A ("Name"), 64, 150, TRUE, FALSE);
  Cd ()->AddListItem (List, ICON_NONE, FALSE, 0, 10, &Docs);
  Cd ()->BeginNewItem (List, ICON_NONE, TRUE, A ("new dir"));
  ASSERT_TRUE (Env ().controls ().Editing (List));
  ExpectGolden ("controls", Screen ());
  Env ().controls ().FinishEdit (List, "", false);
}

TEST_F (GoldenScene, HexViewer) {
  int V = MakeVolume ("hex", 0, 0, 1, "DATA");
  // Control bytes, ASCII, and a GBK text in the text column ("中文" and "磁盘").
  std::string Bytes;
  for (int I = 0; I < 32; I++) Bytes += static_cast<char> (I);
  Bytes += "Surveyor hex view: printable ASCII is shown as itself, 0x7F too.\x7F ";
  Bytes += "GBK:\xD6\xD0\xCE\xC4 \xB4\xC5\xC5\xCC.";
  WriteFile (V, "data.bin", Bytes);
  WINDOW_HEADER *Viewer = OpenHexViewer (10, 10, reinterpret_cast<const CHAR8 *> ("\\data.bin"), static_cast<UINT8> (V));
  ASSERT_NE (Viewer, nullptr);
  ExpectGolden ("hex_viewer", Screen ());
  // The text column lies beyond the window's width: scrolled to, at the right end.
  std::vector<CONTROL *> Controls = Base ().Controls (Viewer);
  auto List = std::find_if (Controls.begin (), Controls.end (), [] (CONTROL *C) { return C->Kind == CONTROL_KIND_LIST; });
  ASSERT_NE (List, Controls.end ());
  Env ().controls ().ScrollSideways (reinterpret_cast<LIST_CONTROL *> (*List), 1000);
  ExpectGolden ("hex_viewer_text", Screen ());
}

TEST_F (GoldenScene, ComparisonWindowWithItsGbkTexts) {
  SkipPoolCheck ();   // the result menu lives as long as the driver
  int Source = MakeVolume ("source");
  int Backup = MakeVolume ("backup");
  for (int V : {Source, Backup}) {
    WriteFile (V, "docs/same.txt", "same");
    WriteFile (V, "docs/changed.txt", V == Source ? "new text" : "old");
  }
  WriteFile (Source, "docs/only-here.txt", "1");
  FixTimes (Source);
  FixTimes (Backup);
  ASSERT_NE (OpenFileComparison (static_cast<UINT8> (Source), static_cast<UINT8> (Backup),
                                 reinterpret_cast<const CHAR8 *> ("\\docs")),
             nullptr);
  for (int I = 0; I < 100000 && Base ().TimerCount () > 0; I++) {
    Base ().RunTimerTick ();
    Base ().PumpMessages ();
  }
  ASSERT_EQ (Base ().TimerCount (), 0u);
  ExpectGolden ("comparison_window", Screen ());
}

}  // namespace
