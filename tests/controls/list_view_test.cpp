// Control driver: list views (cells, selection, scrolling, notifications,
// type-ahead, in-place edits).
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "env/controls/control_driver.h"
#include "windows/window_test_support.h"

namespace {

class ListTest : public WindowTest {
 protected:
  void SetUp () override {
    WindowTest::SetUp ();
    Window = NewWindow (984);
    List = Cd ()->CreateListView (Window, 2, 60, 295, 200, 1);
    ASSERT_NE (List, nullptr);
    Cd ()->AddColumn (List, Ascii ("name"), 192, 80, TRUE, FALSE);
    Cd ()->AddColumn (List, Ascii ("size"), 32, 64, FALSE, TRUE);
    Cd ()->AddColumn (List, Ascii ("type"), 4, 64, FALSE, FALSE);
  }
  void AddRows (std::vector<const char *> Names) {
    for (const char *Name : Names) {
      Entry E (Name);
      Cd ()->AddListItem (List, 7, FALSE, 0, 0, &E);
    }
  }
  // Lets ReadEdit record how the next edit ends (and rebuild the rows as a refresh would).
  void WatchEdits (bool Rebuild);
  std::vector<MESSAGE> Notifications (UINT8 Code) {
    std::vector<MESSAGE> Out;
    for (auto &M : Received (Window, MSG_NOTIFY))
      if (M.Code == Code) Out.push_back (M);
    return Out;
  }
  WINDOW_HEADER *Window = nullptr;
  LIST_CONTROL *List = nullptr;
};

TEST_F (ListTest, RowsKeepTheirEntryFieldsAndCellsAreCutToTheColumnCapacity) {
  Entry Readme ("readme.txt");
  EXPECT_EQ (Cd ()->AddListItem (List, 12, FALSE, 0xABCD1234u, 1234567ull, &Readme), 0);
  Entry Docs ("docs");
  EXPECT_EQ (Cd ()->AddListItem (List, 3, TRUE, 5, 0, &Docs), 1);
  EXPECT_EQ (List->RowCount, 2);

  LIST_ITEM *Item = Cd ()->GetItem (List, 0);
  ASSERT_NE (Item, nullptr);
  EXPECT_EQ ((std::vector<UINT64> {Item->Icon, Item->IsDirectory, Item->EntryWord, Item->Size}),
             (std::vector<UINT64> {12, 0, 0xABCD1234u, 1234567ull}));
  EXPECT_STREQ (reinterpret_cast<char *> (reinterpret_cast<uint8_t *> (Item) + 16), "readme.txt");
  EXPECT_EQ (Cd ()->GetItem (List, 1)->IsDirectory, 1);
  EXPECT_EQ (Cd ()->GetItem (List, 2), nullptr);

  // Capacity 4 holds three bytes and the terminator; a double-byte character
  // is never split; no such column, no such row.
  const std::tuple<UINT16, UINT16, const char *> Cells[] = {
      {1, 0, "1,234,567"}, {2, 0, "abcdef"}, {2, 1, "a\xC4\xBF\xC2\xBC"}, {2, 1, "ab\xC4\xBF"}, {9, 0, "x"}, {1, 7, "x"}};
  std::string Shown = Controls ().CellText (List, 0, 0);
  for (auto [Column, Row, Text] : Cells) {
    Cd ()->SetItemText (List, Column, Row, Ascii (Text));
    Shown += "|" + Controls ().CellText (List, Column, Row);
  }
  EXPECT_EQ (Shown + "|" + Controls ().CellText (List, 1, 1), "readme.txt|1,234,567|abc|a\xC4\xBF|ab|||");

  // Names longer than column 0 allows are cut there, the item keeps 191 bytes.
  std::string Long (300, 'n');
  Entry LongEntry (Long.c_str ());
  UINT16 Row = Cd ()->AddListItem (List, 0, FALSE, 0, 0, &LongEntry);
  EXPECT_EQ (std::strlen (reinterpret_cast<char *> (Cd ()->GetItem (List, Row)->Name)), 191u);
  EXPECT_EQ (Controls ().CellText (List, 0, Row).size (), 191u);

  // A current row the owner places past the first becomes the selection when
  // the list is redrawn, unless rows are selected already.
  List->CurrentRow = 1;
  Wb ()->Redraw (List);
  EXPECT_EQ (Controls ().SelectedRows (List), (std::vector<uint16_t> {1}));
  List->CurrentRow = 2;
  Wb ()->Redraw (List);
  EXPECT_EQ (Controls ().SelectedRows (List), (std::vector<uint16_t> {1}));
}

TEST_F (ListTest, VisibleRowsFollowTheHeightAndAScrollBarAppearsWhenRowsExceedThem) {
  UINT16 Line = Wb ()->GuiDriver->GetLineHeight ();
  EXPECT_EQ (List->VisibleRows, (200 - Line - 8) / (Line + 2));
  EXPECT_EQ (List->ScrollBar, nullptr);
  for (int I = 0; I < List->VisibleRows; I++) AddRows ({"row"});
  EXPECT_EQ (List->ScrollBar, nullptr);
  AddRows ({"one more", "and another"});
  ASSERT_NE (List->ScrollBar, nullptr);
  EXPECT_EQ (List->ScrollBar->Kind, CONTROL_KIND_SCROLL_BAR);

  Cd ()->SetScrollPosition (List->ScrollBar, 1);
  EXPECT_EQ (List->TopRow, 1);
  Cd ()->SetScrollPosition (List->ScrollBar, 1000);
  EXPECT_EQ (List->TopRow, List->RowCount - List->VisibleRows);

  // A resize record makes the list taller: no scroll bar any more.
  MESSAGE Resize = ResizeMessage (400, 600, true, 3, 70);
  Wb ()->SendMessage (List, &Resize);
  EXPECT_EQ ((std::vector<int> {List->Control.X, List->Control.Y, List->Control.Width, List->Control.Height, List->TopRow}),
             (std::vector<int> {3, 70, 400, 600, 0}));
  EXPECT_EQ (List->ScrollBar, nullptr);
}

// Column 0 takes the width the others leave until the user sizes it; the
// user's widths hold, never narrower than a character with the cell's padding
// and icon; fitting makes a column as wide as its widest text, its title
// included. (The padding of cells shows in the golden scenes.)
TEST_F (ListTest, ColumnZeroTakesTheFreeWidthUntilTheUserSizesColumns) {
  AddRows ({"readme.txt"});
  EXPECT_EQ (Controls ().Geometry (List).Columns[0].Width, 293 - 72 - 72);   // inside the frame, less columns 1 and 2
  Controls ().SetColumnWidth (List, 0, 60);
  env::ListGeometry G = Controls ().Geometry (List);
  EXPECT_EQ (G.Columns[0].Width, 60);
  EXPECT_EQ (G.Columns[1].Width, 64 + 8);
  EXPECT_EQ (G.ContentWidth, 60 + 72 + 72);
  Controls ().SetColumnWidth (List, 0, 3);
  EXPECT_EQ (Controls ().Geometry (List).Columns[0].Width, 8 + 28);
  Controls ().FitColumn (List, 0);
  EXPECT_EQ (Controls ().Geometry (List).Columns[0].TextWidth, 10 * 8);
  Cd ()->SetItemText (List, 1, 0, Ascii ("x"));
  Controls ().FitColumn (List, 1);
  EXPECT_EQ (Controls ().Geometry (List).Columns[1].Width, 4 * 8 + 8);
  Controls ().SetColumnWidth (List, 9, 100);   // no such column: nothing happens
  Controls ().FitColumn (List, 9);
}

TEST_F (ListTest, ColumnsWiderThanTheListScrollSideways) {
  for (int I = 0; I < 3; I++) AddRows ({"row"});
  UINT16 Rows = List->VisibleRows;
  Wb ()->SetFocus (Window, List, 1);
  // Without anything to scroll, Left and Right are the window's.
  gMessages.clear ();
  Windows ().SendKey (Window, 0, SCAN_CODE_RIGHT, 0);
  EXPECT_EQ (Received (Window, MSG_KEY).size (), 1u);

  Controls ().SetColumnWidth (List, 0, 400);
  env::ListGeometry G = Controls ().Geometry (List);
  EXPECT_TRUE (G.HorizontalBar);
  EXPECT_LT (List->VisibleRows, Rows) << "the bar along the bottom takes rows";

  gMessages.clear ();
  Windows ().SendKey (Window, 0, SCAN_CODE_RIGHT, 0);
  EXPECT_TRUE (Received (Window, MSG_KEY).empty ());
  EXPECT_EQ (Controls ().Geometry (List).ScrollX, 24);
  Controls ().ScrollSideways (List, 10000);
  EXPECT_EQ (Controls ().Geometry (List).ScrollX, G.ContentWidth - G.ViewWidth);
  Windows ().SendKey (Window, 0, SCAN_CODE_LEFT, 0);
  EXPECT_EQ (Controls ().Geometry (List).ScrollX, G.ContentWidth - G.ViewWidth - 24);
  Controls ().ScrollSideways (List, -10000);
  EXPECT_EQ (Controls ().Geometry (List).ScrollX, 0);

  // Rows enough for a vertical bar too: each bar leaves the other its room.
  for (int I = 0; I < 20; I++) AddRows ({"more"});
  G = Controls ().Geometry (List);
  EXPECT_TRUE (G.VerticalBar);
  EXPECT_EQ (G.ViewWidth, 293 - env::kListScrollBarWidth);
  ASSERT_NE (List->ScrollBar, nullptr);
  EXPECT_EQ (List->ScrollBar->Height, G.HeaderHeight + G.RowsHeight);
}

// The hex viewer's table (option 1; its look is a golden scene): paging to
// shorter texts keeps the widths (nothing jumps) until the rows are cleared;
// free width does not stretch it.
TEST_F (ListTest, AFixedPitchTableKeepsItsWidthsWhilePaging) {
  LIST_CONTROL *Hex = Cd ()->CreateListView (Window, 2, 60, 384, 200, 0);
  Hex->Option = 1;
  Cd ()->AddColumn (Hex, Ascii ("Pos"), 22, 32, FALSE, FALSE);
  for (int I = 0; I < 16; I++) Cd ()->AddColumn (Hex, Ascii ("00"), 4, 16, TRUE, TRUE);
  Cd ()->AddColumn (Hex, Ascii ("ASCII"), 19, 96, FALSE, FALSE);
  Entry Line ("0000");
  Cd ()->AddListItem (Hex, ICON_NONE, FALSE, 0, 0, &Line);
  Cd ()->SetItemText (Hex, 17, 0, Ascii ("0123456789abcdef "));   // 17 characters, wider than asked
  EXPECT_EQ (Controls ().Geometry (Hex).Columns[17].TextWidth, 17 * 8);
  Cd ()->SetItemText (Hex, 17, 0, Ascii ("short"));
  EXPECT_EQ (Controls ().Geometry (Hex).Columns[17].TextWidth, 17 * 8);
  Cd ()->ClearList (Hex);
  env::ListGeometry G = Controls ().Geometry (Hex);
  EXPECT_EQ (G.Columns[17].TextWidth, 96);
  Hex->Control.Width = 1000;
  EXPECT_EQ (Controls ().Geometry (Hex).ContentWidth, G.ContentWidth);
}

TEST_F (ListTest, OnlyACellThatDoesNotShowWholeGivesATooltip) {
  AddRows ({"a.txt", "a-name-much-longer-than-its-column.txt"});
  env::TooltipInfo Tip;
  EXPECT_FALSE (Controls ().ShowCellTip (List, 0, 0, 50, 60));
  EXPECT_FALSE (Controls ().ShownCellTip (Tip));
  ASSERT_TRUE (Controls ().ShowCellTip (List, 0, 1, 50, 60));
  // It stays where it appeared while the pointer is on the same cell.
  EXPECT_TRUE (Controls ().ShowCellTip (List, 0, 1, 55, 61));
  ASSERT_TRUE (Controls ().ShownCellTip (Tip));
  EXPECT_TRUE (Tip.Text == "a-name-much-longer-than-its-column.txt" && Tip.X == 50 && Tip.Y == 60);
  // Empty cells and cells out of range give none.
  EXPECT_FALSE (Controls ().ShowCellTip (List, 1, 1, 0, 0) || Controls ().ShowCellTip (List, 7, 1, 0, 0) ||
                Controls ().ShowCellTip (List, 0, 9, 0, 0));
  // Nor do rows that went, whatever comes in their place.
  Cd ()->ClearList (List);
  AddRows ({"b.txt", "another-name-longer-than-its-column.txt"});
  EXPECT_FALSE (Controls ().ShownCellTip (Tip));

  // A whole text that the view does not show (scrolled away) gives one too.
  Cd ()->ClearList (List);
  AddRows ({"a.txt"});
  Controls ().SetColumnWidth (List, 0, 600);
  Controls ().ScrollSideways (List, 30);
  EXPECT_TRUE (Controls ().ShowCellTip (List, 0, 0, 0, 0));
  Controls ().HideCellTip ();
  EXPECT_FALSE (Controls ().ShownCellTip (Tip));
  // It goes with its list.
  AddRows ({"a-name-much-longer-than-its-column.txt"});
  Controls ().SetColumnWidth (List, 0, 60);
  ASSERT_TRUE (Controls ().ShowCellTip (List, 0, 1, 0, 0));
  Wb ()->DestroyWindow (Window);
  EXPECT_FALSE (Controls ().ShownCellTip (Tip));
}

TEST_F (ListTest, TypingInAFocusedListSearchesAndControlKeysReachTheWindow) {
  AddRows ({"alpha", "beta", "bravo", "charlie"});
  Wb ()->SetFocus (Window, List, 1);
  gMessages.clear ();
  Windows ().SendKey (Window, 'b', 0, 0);
  EXPECT_EQ (List->CurrentRow, 1);
  Windows ().SendKey (Window, 'R', 0, 0);
  EXPECT_EQ (List->CurrentRow, 2);
  auto Search = Notifications (NOTIFY_SEARCH);
  EXPECT_TRUE (Search.size () == 2 && Search[1].Word2 == 0);
  EXPECT_EQ (Notifications (NOTIFY_SELECTION).back ().Word6, 2);
  EXPECT_TRUE (Received (Window, MSG_KEY).empty ()) << "type-ahead keys are the list's";
  // A letter that continues no name starts again after the current row: "b" cycles to beta.
  Windows ().SendKey (Window, 'b', 0, 0);
  EXPECT_EQ (List->CurrentRow, 1);

  // Shift with an arrow selects from the row the selection started at.
  Windows ().SendKey (Window, 0, SCAN_CODE_DOWN, KEY_STATE_VALID | KEY_STATE_LEFT_SHIFT);
  EXPECT_EQ (Controls ().SelectedRows (List), (std::vector<uint16_t> {1, 2}));
  Windows ().SendKey (Window, 0, SCAN_CODE_DOWN, 0);
  EXPECT_EQ (List->CurrentRow, 3);
  Windows ().SendKey (Window, 'c', 0, KEY_STATE_VALID | KEY_STATE_LEFT_CONTROL);
  Windows ().SendKey (Window, 0, SCAN_CODE_DELETE, 0);
  std::string Keys;
  for (const MESSAGE &K : Received (Window, MSG_KEY))
    Keys += std::to_string (K.Word2) + "/" + std::to_string (K.Word4) + "/" + std::to_string (K.Dword8) + " ";
  EXPECT_EQ (Keys, "99/0/" + std::to_string (KEY_STATE_VALID | KEY_STATE_LEFT_CONTROL) + " 0/8/0 ");
  EXPECT_EQ (List->CurrentRow, 3);
}

// What the window saw of an edit's end, read while the notification is
// delivered: "code row cancelled id typed|name of the row|rows".
std::string gSeen;
CONTROL_DRIVER_PROTOCOL *gCd = nullptr;
LIST_CONTROL *gList = nullptr;
bool gRebuild = false;

UINT8 ReadEdit (WINDOW_HEADER *, MESSAGE *M) {
  if (M->Type != MSG_NOTIFY || (M->Code != NOTIFY_RENAME_DONE && M->Code != NOTIFY_NEW_ITEM_DONE)) return 0;
  LIST_ITEM *Item = gCd->GetItem (gList, M->Word2);
  gSeen = std::to_string (M->Code) + " " + std::to_string (M->Word2) + " " + std::to_string (M->Word4) + " " +
          std::to_string (M->Word6) + " " + reinterpret_cast<char *> (static_cast<CONTROL *> (M->Pointer8)->Text) + "|" +
          (Item != nullptr ? reinterpret_cast<char *> (Item->Name) : "(none)") + "|" + std::to_string (gList->RowCount);
  if (gRebuild) {
    // As a refresh does: the listing is read again.
    gCd->ClearList (gList);
    Entry A ("first"), B ("new folder");
    gCd->AddListItem (gList, 0, TRUE, 0, 0, &A);
    gCd->AddListItem (gList, 0, TRUE, 0, 0, &B);
  }
  return 0;
}

void ListTest::WatchEdits (bool Rebuild) {
  gCd = Cd ();
  gList = List;
  gRebuild = Rebuild;
  gReaction = ReadEdit;
}

TEST_F (ListTest, RenameAndNewItemEditsReportTheTypedTextWithTheirRow) {
  WatchEdits (false);
  AddRows ({"a.txt", "b.txt", "c.txt"});
  List->CurrentRow = 1;
  Cd ()->BeginRename (List, Window);
  ASSERT_TRUE (Controls ().Editing (List));
  EXPECT_EQ (Controls ().EditRow (List), 1);
  auto *Edit = static_cast<CONTROL *> (Window->FocusControl);
  ASSERT_TRUE (Edit != nullptr && Edit->Kind == CONTROL_KIND_EDIT);
  EXPECT_STREQ (reinterpret_cast<char *> (Edit->Text), "b.txt");

  const std::string Id = " " + std::to_string (List->Control.Id) + " ";
  Controls ().FinishEdit (List, "renamed.txt", true);
  EXPECT_EQ (gSeen, "6 1 0" + Id + "renamed.txt|b.txt|3");
  EXPECT_TRUE (!Controls ().Editing (List) && List->RowCount == 3 && Window->FocusControl == List);

  // Typed keys go to the edit; Escape cancels.
  Cd ()->BeginRename (List, Window);
  Windows ().SendKey (Window, 'x', 0, 0);
  Windows ().SendKey (Window, 0, SCAN_CODE_ESCAPE, 0);
  EXPECT_EQ (gSeen, "6 1 1" + Id + "b.txtx|b.txt|3");
  // Without a current row, the first selected row is edited; with neither, nothing.
  List->CurrentRow = 0xFFFF;
  Controls ().SelectRows (List, {2});
  List->CurrentRow = 0xFFFF;
  Cd ()->BeginRename (List, Window);
  EXPECT_EQ (Controls ().EditRow (List), 2);
  Controls ().FinishEdit (List, "c.txt", false);
  Cd ()->ClearList (List);
  Cd ()->BeginRename (List, Window);
  EXPECT_FALSE (Controls ().Editing (List));

  // A new item's row exists during its notification and is removed afterwards.
  AddRows ({"a", "b"});
  Cd ()->BeginNewItem (List, 4, TRUE, Ascii ("new dir"));
  EXPECT_EQ (Controls ().EditRow (List), 2);
  EXPECT_TRUE (Cd ()->GetItem (List, 2)->Icon == 4 && Cd ()->GetItem (List, 2)->IsDirectory == 1);

  Controls ().FinishEdit (List, "photos", true);
  EXPECT_EQ (gSeen, "7 2 0" + Id + "photos|new dir|3");
  EXPECT_EQ (List->RowCount, 2);
  EXPECT_EQ (Controls ().CellText (List, 0, 1), "b");

  // A handler that rebuilds the listing keeps its rows.
  WatchEdits (true);
  Cd ()->BeginNewItem (List, 4, TRUE, Ascii ("new dir"));
  Controls ().FinishEdit (List, "new folder", true);
  EXPECT_EQ (List->RowCount, 2);
  EXPECT_EQ (Controls ().CellText (List, 0, 1), "new folder");
  EXPECT_FALSE (Controls ().Editing (List));
}

TEST_F (ListTest, DestroyingAWindowInsideANotificationIsSafe) {
  static WINDOW_BASE_PROTOCOL *Base;
  Base = Wb ();
  AddRows ({"a", "b"});
  for (int I = 0; I < 20; I++) AddRows ({"more"});
  ASSERT_NE (List->ScrollBar, nullptr);
  Cd ()->BeginRename (List, Window);
  gReaction = [] (WINDOW_HEADER *W, MESSAGE *M) -> UINT8 {
    if (M->Type == MSG_NOTIFY) Base->DestroyWindow (W);
    return 0;
  };
  Controls ().FinishEdit (List, "x", true);
  EXPECT_FALSE (Windows ().IsWindow (Window));
  EXPECT_FALSE (Windows ().IsControl (List));
  EXPECT_EQ (LivePool (), Baseline ());
}

}  // namespace
