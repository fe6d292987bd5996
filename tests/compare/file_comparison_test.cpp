// The file comparison window: its rectangle, layout, the lines it shows, and
// the result menu with its rules and commands on real files.
#include <string>

#include "compare/file_comparison.h"
#include "compare/file_comparison_window.h"
#include "compare_support.h"
#include "env/controls/control_driver.h"
#include "env/jobio/jobio_driver.h"
#include "env/settings/settings_service.h"
#include "filemanager/main_window.h"
#include "support/window_views.h"

namespace {

class FileComparisonTest : public CompareTest {
 protected:
  FILE_COMPARISON_WINDOW *Open (const std::string &Path) {
    WINDOW_HEADER *W = OpenFileComparison (static_cast<UINT8> (Src), static_cast<UINT8> (Bak),
                                           reinterpret_cast<const CHAR8 *> (Path.c_str ()));
    EXPECT_NE (W, nullptr);
    return reinterpret_cast<FILE_COMPARISON_WINDOW *> (W);
  }
  void Finish (FILE_COMPARISON_WINDOW *W) {
    for (int I = 0; I < 100000 && W->Job != nullptr; I++) Env ().windows ().RunTimerTick ();
    ASSERT_EQ (W->Job, nullptr);
  }
  std::vector<std::string> Log (FILE_COMPARISON_WINDOW *W) { return Env ().controls ().LogLines (W->LogView); }
  // Right click on line Line at (X, Y) of the log view; the popup shown, or null.
  WINDOW_HEADER *ContextClick (FILE_COMPARISON_WINDOW *W, uint16_t Line, uint16_t X = 5, uint16_t Y = 5) {
    Env ().windows ().ClosePopup ();
    Env ().controls ().SelectLogLine (W->LogView, Line);
    Env ().controls ().LogContextClick (W->LogView, X, Y);
    return Env ().windows ().ShownPopup ();
  }
  // Right click on line Line and choose the result menu's item called Item.
  void Choose (FILE_COMPARISON_WINDOW *W, uint16_t Line, const std::string &Item) {
    ASSERT_NE (ContextClick (W, Line), nullptr);
    ASSERT_TRUE (Env ().windows ().ChoosePopupItem (Env ().windows ().ShownPopup (), Text (Item))) << Item;
  }
  void Close (FILE_COMPARISON_WINDOW *W) {
    Env ().windows ().SendSysCommand (&W->Header, SYSCMD_CLOSE);
    Env ().windows ().PumpMessages ();
  }
  // The result popup lives as long as the driver: make it once, then count
  // pool blocks from there.
  void MakeResultMenuFirst () {
    Both ("warm/a", "1");
    Put (Src, "warm/b", "1");
    FILE_COMPARISON_WINDOW *W = Open ("\\warm");
    Finish (W);
    ASSERT_NE (ContextClick (W, 1), nullptr);
    Env ().windows ().ClosePopup ();
    Close (W);
    Env ().settings ()->Set ("FileCmp", "Position", "");
    RebaseAfterFirstUse ();
  }
  std::string Stored () {
    std::string Value;
    return Env ().settings ()->Get ("FileCmp", "Position", Value) ? Value : "(none)";
  }
};

TEST_F (FileComparisonTest, RectangleIsRememberedByTheLastWindowToClose) {
  Both ("r/a", "1");
  FILE_COMPARISON_WINDOW *First = Open ("\\r");
  FILE_COMPARISON_WINDOW *Second = Open ("\\r");
  EXPECT_EQ (RectOf (&First->Header), (Rect {100, 100, 400, 320}));
  EXPECT_EQ (RectOf (&Second->Header), (Rect {100, 100, 400, 320}));

  Close (First);
  EXPECT_EQ (Stored (), "(none)") << "one of two windows closing stores nothing";
  Env ().windows ().ResizeWindow (&Second->Header, 500, 400);
  Second->Header.X = 120;
  Second->Header.Y = 90;
  Close (Second);
  EXPECT_EQ (Stored (), "120,90,500,400");
  EXPECT_EQ (RectOf (&Open ("\\r")->Header), (Rect {120, 90, 500, 400}));

  // After a new load the first window opens at the stored rectangle.
  TearDown ();
  SetUp ();
  Env ().settings ()->Set ("FileCmp", "Position", "40,50,420,330");
  EXPECT_EQ (RectOf (&Open ("\\nothing")->Header), (Rect {40, 50, 420, 330}));
}

TEST_F (FileComparisonTest, ControlsAndResizeLayout) {
  Both ("r/a", "1");
  FILE_COMPARISON_WINDOW *W = Open ("\\r");
  int CW = Gui ()->GetCharWidth (), LH = Gui ()->GetLineHeight (), CH = Wb ()->CaptionHeight;
  EXPECT_EQ (Env ().windows ().WindowText (&W->Header),
             Text ("title prefix") + reinterpret_cast<const char *> (Env ().files ().Table ()->Volumes[Src].Label) +
                 Text ("title joint") + reinterpret_cast<const char *> (Env ().files ().Table ()->Volumes[Bak].Label));
  EXPECT_NE (W->Header.Flags & 0x80, 0u);
  EXPECT_EQ (Env ().windows ().WindowText (W->ResultLabel), Text ("result label"));
  EXPECT_EQ (Env ().controls ().LogPath (W->LogView), "\\r");
  // The window, the level and entry fields, the pause button and the log:
  // every control at x 10 and, but for the pause button, 20 narrower than
  // the window; the log takes the height left.
  int Y2 = CH + 22 + LH, Y3 = Y2 + 16 + LH, Y4 = Y3 + 16 + LH;
  CONTROL *Pause = Wb ()->GetControl (&W->Header, 33);
  ASSERT_NE (Pause, nullptr);
  auto Layout = [&] {
    return std::vector<Rect> {RectOf (&W->Header), RectOf (W->LevelField), RectOf (W->EntryField), RectOf (Pause),
                              RectOf (&W->LogView->Control)};
  };
  auto Want = [&] (int Width, int Height) {
    return std::vector<Rect> {{100, 100, Width, Height},           {10, CH + 6, Width - 20, LH + 10},
                              {10, Y2, Width - 20, LH + 10},       {Width - 10 - 5 * CW, Y3, 5 * CW, LH + 10},
                              {10, Y4, Width - 20, Height - 10 - Y4}};
  };
  EXPECT_EQ (Layout (), Want (400, 320));
  EXPECT_EQ (RectOf (W->ResultLabel), (Rect {10, Y3, 0, LH + 10}));
  EXPECT_EQ (Env ().windows ().SendSysCommand (&W->Header, 33), 0u) << "the pause button is not acted on";
  // Below the minimum (25 characters wide) the window keeps the minimum.
  Env ().windows ().ResizeWindow (&W->Header, 100, 50);
  EXPECT_EQ (Layout (), Want (25 * CW, CH + (LH + 16) * 6 + 10));
  Env ().windows ().ResizeWindow (&W->Header, 640, 480);
  EXPECT_EQ (Layout (), Want (640, 480));
}

TEST_F (FileComparisonTest, LinesOfFinishedComparisons) {
  Both ("same/a", "1");
  Both ("same/b", "2");
  FILE_COMPARISON_WINDOW *W = Open ("\\same");
  EXPECT_EQ (W->Job->CompareContents, 0);
  Finish (W);
  EXPECT_NE (W->Snapshot, nullptr);
  std::vector<std::string> Want = {TextWith ("finished", {"2"}), Text ("no differences")};
  EXPECT_EQ (Log (W), Want);

  // Two new entries and one changed: finished, added, changed in that order.
  Put (Src, "w/a.txt", "new-content");
  Put (Bak, "w/a.txt", "old");
  Put (Src, "w/n1", "1");
  MakeDir (Src, "w/n2");
  FILE_COMPARISON_WINDOW *V = Open ("\\w");
  Finish (V);
  Want = {"\\w" + Text ("heading suffix"),
          "  a.txt - " + Text ("file changed"),
          "  n2 - " + Text ("folder new"),
          "  n1 - " + Text ("file new"),
          TextWith ("finished", {"3"}),
          TextWith ("added", {"2"}),
          TextWith ("changed", {"1"})};
  EXPECT_EQ (Log (V), Want);
  EXPECT_EQ (Env ().windows ().TimerCount (), 0u);

  MakeDir (Src, "d");
  Both ("d/keep", "k");
  Put (Bak, "d/old", "1");
  FILE_COMPARISON_WINDOW *D = Open ("\\d");
  Finish (D);
  EXPECT_EQ (Log (D), (std::vector<std::string> {"\\d" + Text ("heading suffix"), "  old - " + Text ("file deleted"),
                                                 TextWith ("finished", {"2"}), TextWith ("deleted", {"1"})}));
}

TEST_F (FileComparisonTest, StartFailureShowsItsLinesAndNoMenu) {
  FILE_COMPARISON_WINDOW *W = Open ("\\missing");
  EXPECT_EQ (W->Job, nullptr);
  std::vector<std::string> Want = {TextWith ("root missing", {"\\missing"}), Text ("compare failed"),
                                   Text ("start failed")};
  EXPECT_EQ (Log (W), Want);
  for (uint16_t Line = 0; Line < 3; Line++) EXPECT_EQ (ContextClick (W, Line), nullptr) << Line;
  EXPECT_TRUE (Env ().windows ().IsWindow (&W->Header)) << "the window stays open";
}

TEST_F (FileComparisonTest, ResultMenuFollowsTheLineCode) {
  MakeResultMenuFirst ();
  Put (Src, "m/a.txt", "changed!");
  Put (Bak, "m/a.txt", "old");
  Put (Src, "m/new.txt", "1");
  Put (Bak, "m/gone.txt", "1");
  FILE_COMPARISON_WINDOW *W = Open ("\\m");
  Finish (W);
  // 0 heading, 1 a.txt (11), 2 gone.txt (9), 3 new.txt (10), then the closing lines.
  ASSERT_EQ (W->Snapshot->EntryCount, 4);

  WINDOW_HEADER *Popup = ContextClick (W, 3);
  ASSERT_NE (Popup, nullptr);
  std::vector<std::string> Texts;
  for (const env::PopupItemInfo &Item : Env ().windows ().PopupItems (Popup))
    Texts.push_back (Item.Separator ? "-" : Item.Text);
  EXPECT_EQ (Texts, (std::vector<std::string> {Text ("menu: open folder"), Text ("menu: open backup folder"), "-",
                                                Text ("menu: delete file"), Text ("menu: copy file"),
                                                Text ("menu: copy backup file")}));
  // Delete, copy and copy of the backup file enabled, by the line's code:
  // changed, deleted since the backup, new since the backup, a heading.
  auto States = [&] (uint16_t Line) {
    auto E = PopupItemStates (ContextClick (W, Line));
    std::string Out;
    for (const char *Item : {"menu: delete file", "menu: copy file", "menu: copy backup file"})
      Out += E[Text (Item)] ? '1' : '0';
    return Out;
  };
  EXPECT_EQ (States (1) + States (2) + States (3) + States (0), "111" "001" "110" "111");
  // The closing lines have no entry.
  EXPECT_EQ (ContextClick (W, 4), nullptr);
  EXPECT_EQ (ContextClick (W, 5), nullptr);

  // Near the right and bottom edges the popup opens left of and above the click.
  int32_t Ox, Oy;
  Env ().windows ().ScreenOrigin (W->LogView, Ox, Oy);
  Popup = ContextClick (W, 1, 10, 10);
  ASSERT_NE (Popup, nullptr);
  EXPECT_EQ ((std::pair<int, int> {Popup->X - Ox, Popup->Y - Oy}), (std::pair<int, int> {10, 10}));
  uint16_t PopupWidth = Popup->Width, PopupHeight = Popup->Height;
  W->Header.X = static_cast<UINT16> (Gui ()->ScreenWidth - W->Header.Width);
  W->Header.Y = static_cast<UINT16> (Gui ()->ScreenHeight - W->Header.Height);
  Env ().windows ().ScreenOrigin (W->LogView, Ox, Oy);
  uint16_t X = static_cast<uint16_t> (W->LogView->Control.Width - 4);
  uint16_t Y = static_cast<uint16_t> (W->LogView->Control.Height - 4);
  Popup = ContextClick (W, 1, X, Y);
  ASSERT_NE (Popup, nullptr);
  EXPECT_EQ ((std::pair<int, int> {Popup->X, Popup->Y}),
             (std::pair<int, int> {Ox + X - PopupWidth, Oy + Y - PopupHeight}));
  Env ().windows ().ClosePopup ();
}

TEST_F (FileComparisonTest, ResultMenuCommandsActOnTheFiles) {
  MakeResultMenuFirst ();
  Put (Src, "c/a.txt", "changed!");
  Put (Bak, "c/a.txt", "old");
  Put (Src, "c/new.txt", "1");
  FILE_COMPARISON_WINDOW *W = Open ("\\c");
  Finish (W);
  // 0 heading \c, 1 a.txt (11), 2 new.txt (10).
  // The clipboard as "volume directory names...".
  auto Clipboard = [&] {
    std::string Out = std::to_string (Env ().jobio ().ClipboardVolume ()) + " " + Env ().jobio ().ClipboardDirectory ();
    for (const std::string &Name : Env ().jobio ().ClipboardNames ()) Out += " " + Name;
    return Out;
  };
  Choose (W, 1, "menu: copy file");
  EXPECT_EQ (Clipboard (), std::to_string (Src) + " \\c a.txt");
  Choose (W, 1, "menu: copy backup file");
  EXPECT_EQ (Clipboard (), std::to_string (Bak) + " \\c a.txt");
  // A heading line puts the folder itself on the clipboard.
  Choose (W, 0, "menu: copy file");
  EXPECT_EQ (Clipboard (), std::to_string (Src) + " \\ c");

  Choose (W, 2, "menu: delete file");
  EXPECT_EQ (VolumeTree (Src, "c"), "a.txt=changed!");

  // Open backup folder: the main window of the backup volume, in the line's folder.
  Choose (W, 1, "menu: open backup folder");
  auto *Main = reinterpret_cast<MAIN_WINDOW *> (Env ().windows ().ActiveWindow ());
  ASSERT_TRUE (Main != nullptr && Main->Header.Handler == MainWindowHandler);
  EXPECT_EQ (std::to_string (Main->VolumeIndex) + " " + reinterpret_cast<const char *> (Main->CurrentPath),
             std::to_string (Bak) + " \\c");
}

TEST_F (FileComparisonTest, LogStopsAt1024Lines) {
  Both ("many/keep", "k");
  for (int I = 0; I < 1100; I++) Put (Src, "many/n" + std::to_string (10000 + I), "1");
  FILE_COMPARISON_WINDOW *W = Open ("\\many");
  Finish (W);
  std::vector<std::string> Lines = Log (W);
  ASSERT_EQ (Lines.size (), 1024u);
  EXPECT_EQ (Lines[0], "\\many" + Text ("heading suffix"));
  EXPECT_EQ (Lines[1023], "  n11022 - " + Text ("file new"));   // the closing lines are dropped
  EXPECT_EQ (Totals (W->Snapshot), "total 1101 deleted 0 added 1100 changed 0 entries 1024");
}

TEST_F (FileComparisonTest, ClosingARunningComparisonFreesItsJob) {
  for (int I = 0; I < 20; I++) Both ("big/f" + std::to_string (I), "x");
  FILE_COMPARISON_WINDOW *W = Open ("\\big");
  ASSERT_NE (W->Job, nullptr);
  for (int I = 0; I < 5; I++) Env ().windows ().RunTimerTick ();
  ASSERT_NE (W->Job, nullptr);
  EXPECT_EQ (Env ().windows ().TimerCount (), 1u);
  Close (W);
  EXPECT_EQ (Env ().windows ().TimerCount (), 0u);
  EXPECT_EQ (Env ().files ().OpenHandleCount (), 0u);
  // The pool check at the end of the test covers the job, its result and buffers.
}

}  // namespace
