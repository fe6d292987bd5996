// Control driver: list views (cells, selection, scrolling, notifications,
// type-ahead, in-place edits).
#include <cstring>
#include <string>
#include <vector>

#include "windows/window_test_support.h"

namespace {

const CHAR8 *T (const char *Text) { return reinterpret_cast<const CHAR8 *> (Text); }

// A directory entry record as the file driver hands it: the name first.
struct Entry {
  char Name[216] = {};
  explicit Entry (const char *N) { std::strncpy (Name, N, sizeof (Name) - 1); }
};

class ListTest : public WindowTest {
 protected:
  void SetUp () override {
    WindowTest::SetUp ();
    Window = NewWindow (984);
    List = Cd ()->CreateListView (Window, 2, 60, 295, 200, 1);
    ASSERT_NE (List, nullptr);
    Cd ()->AddColumn (List, T ("name"), 192, 80, TRUE, FALSE);
    Cd ()->AddColumn (List, T ("size"), 32, 64, FALSE, TRUE);
    Cd ()->AddColumn (List, T ("type"), 4, 64, FALSE, FALSE);
  }
  void AddRows (std::vector<const char *> Names) {
    for (const char *Name : Names) {
      Entry E (Name);
      Cd ()->AddListItem (List, 7, FALSE, 0, 0, &E);
    }
  }
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
  EXPECT_EQ (List->ColumnCount, 3);

  LIST_ITEM *Item = Cd ()->GetItem (List, 0);
  ASSERT_NE (Item, nullptr);
  EXPECT_EQ (Item->Icon, 12);
  EXPECT_EQ (Item->IsDirectory, 0);
  EXPECT_EQ (Item->EntryWord, 0xABCD1234u);
  EXPECT_EQ (Item->Size, 1234567ull);
  EXPECT_STREQ (reinterpret_cast<char *> (reinterpret_cast<uint8_t *> (Item) + 16), "readme.txt");
  EXPECT_EQ (Cd ()->GetItem (List, 1)->IsDirectory, 1);
  EXPECT_EQ (Cd ()->GetItem (List, 2), nullptr);

  EXPECT_EQ (Controls ().CellText (List, 0, 0), "readme.txt");
  Cd ()->SetItemText (List, 1, 0, T ("1,234,567"));
  EXPECT_EQ (Controls ().CellText (List, 1, 0), "1,234,567");
  // Capacity 4 holds three bytes and the terminator; a double-byte character is never split.
  Cd ()->SetItemText (List, 2, 0, T ("abcdef"));
  EXPECT_EQ (Controls ().CellText (List, 2, 0), "abc");
  Cd ()->SetItemText (List, 2, 1, T ("a\xC4\xBF\xC2\xBC"));
  EXPECT_EQ (Controls ().CellText (List, 2, 1), "a\xC4\xBF");
  Cd ()->SetItemText (List, 2, 1, T ("ab\xC4\xBF"));
  EXPECT_EQ (Controls ().CellText (List, 2, 1), "ab");
  Cd ()->SetItemText (List, 9, 0, T ("no such column"));
  Cd ()->SetItemText (List, 1, 7, T ("no such row"));
  EXPECT_EQ (Controls ().CellText (List, 1, 1), "");

  // Names longer than column 0 allows are cut there, the item keeps 191 bytes.
  std::string Long (300, 'n');
  Entry LongEntry (Long.c_str ());
  UINT16 Row = Cd ()->AddListItem (List, 0, FALSE, 0, 0, &LongEntry);
  EXPECT_EQ (std::strlen (reinterpret_cast<char *> (Cd ()->GetItem (List, Row)->Name)), 191u);
  EXPECT_EQ (Controls ().CellText (List, 0, Row).size (), 191u);
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
  MESSAGE Resize {};
  Resize.Type = MSG_RESIZE;
  Resize.Code = 1;
  Resize.Word2 = 400;
  Resize.Word4 = 600;
  Resize.Byte7 = 1;
  Resize.Word8 = 3;
  Resize.Word10 = 70;
  Wb ()->SendMessage (List, &Resize);
  EXPECT_EQ (List->Control.Width, 400);
  EXPECT_EQ (List->Control.Height, 600);
  EXPECT_EQ (List->Control.X, 3);
  EXPECT_EQ (List->Control.Y, 70);
  EXPECT_EQ (List->ScrollBar, nullptr);
  EXPECT_EQ (List->TopRow, 0);

  Cd ()->ClearList (List);
  EXPECT_EQ (List->RowCount, 0);
  EXPECT_EQ (Cd ()->GetItem (List, 0), nullptr);
}

TEST_F (ListTest, UserActionsSendTheirNotificationsWithTheFieldsFilled) {
  AddRows ({"a", "b", "c", "d"});
  Controls ().SelectRows (List, {1, 3});
  auto Selection = Notifications (NOTIFY_SELECTION);
  ASSERT_EQ (Selection.size (), 1u);
  EXPECT_EQ (Selection[0].Word2, 2);
  EXPECT_EQ (Selection[0].Word4, 4);
  EXPECT_EQ (Selection[0].Word6, 3);
  EXPECT_EQ (Selection[0].Word10, List->Control.Id);
  EXPECT_EQ (List->CurrentRow, 3);

  UINT16 Cursor = 0;
  LIST_ITEM *First = Cd ()->GetNextSelected (List, &Cursor);
  ASSERT_NE (First, nullptr);
  EXPECT_STREQ (reinterpret_cast<char *> (First->Name), "b");
  LIST_ITEM *Second = Cd ()->GetNextSelected (List, &Cursor);
  ASSERT_NE (Second, nullptr);
  EXPECT_STREQ (reinterpret_cast<char *> (Second->Name), "d");
  EXPECT_EQ (Cd ()->GetNextSelected (List, &Cursor), nullptr);

  Controls ().ContextClick (List, 40, 25);
  auto Context = Notifications (NOTIFY_CONTEXT);
  ASSERT_EQ (Context.size (), 1u);
  EXPECT_EQ (Context[0].Word2, 2);
  EXPECT_EQ (Context[0].Word10, List->Control.Id);
  EXPECT_EQ (Context[0].Word12, 40);
  EXPECT_EQ (Context[0].Word14, 25);

  Controls ().ActivateRow (List, 2);
  auto Open = Notifications (NOTIFY_OPEN_ROW);
  ASSERT_EQ (Open.size (), 1u);
  EXPECT_EQ (Open[0].Word6, 2);
  EXPECT_EQ (Open[0].Word10, List->Control.Id);
  EXPECT_EQ (Controls ().SelectedRows (List), (std::vector<uint16_t> {2}));

  // Nothing reaches a window whose NotifyEnabled byte is 0.
  gMessages.clear ();
  Window->NotifyEnabled = 0;
  Controls ().SelectRows (List, {0});
  Controls ().ActivateRow (List, 0);
  EXPECT_TRUE (gMessages.empty ());
  EXPECT_EQ (List->CurrentRow, 0);
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
  ASSERT_EQ (Search.size (), 2u);
  EXPECT_EQ (Search[1].Word2, 0);
  EXPECT_EQ (Notifications (NOTIFY_SELECTION).back ().Word6, 2);
  EXPECT_TRUE (Received (Window, MSG_KEY).empty ()) << "type-ahead keys are the list's";

  Windows ().SendKey (Window, 0, SCAN_CODE_DOWN, 0);
  EXPECT_EQ (List->CurrentRow, 3);
  Windows ().SendKey (Window, 'c', 0, KEY_STATE_VALID | KEY_STATE_LEFT_CONTROL);
  Windows ().SendKey (Window, 0, SCAN_CODE_DELETE, 0);
  auto Keys = Received (Window, MSG_KEY);
  ASSERT_EQ (Keys.size (), 2u);
  EXPECT_EQ (Keys[0].Word2, 'c');
  EXPECT_EQ (Keys[0].Dword8, KEY_STATE_VALID | KEY_STATE_LEFT_CONTROL);
  EXPECT_EQ (Keys[1].Word4, SCAN_CODE_DELETE);
  EXPECT_EQ (List->CurrentRow, 3);
}

// What the window saw of an edit's end, read while the notification is delivered.
struct EditSeen {
  UINT8 Code = 0;
  UINT16 Row = 0, Cancelled = 0, Id = 0;
  std::string Typed, RowName;
  UINT16 RowsDuring = 0;
};
EditSeen gSeen;
CONTROL_DRIVER_PROTOCOL *gCd = nullptr;
LIST_CONTROL *gList = nullptr;
bool gRebuild = false;

UINT8 ReadEdit (WINDOW_HEADER *, MESSAGE *M) {
  if (M->Type != MSG_NOTIFY || (M->Code != NOTIFY_RENAME_DONE && M->Code != NOTIFY_NEW_ITEM_DONE)) return 0;
  gSeen.Code = M->Code;
  gSeen.Row = M->Word2;
  gSeen.Cancelled = M->Word4;
  gSeen.Id = M->Word6;
  CONTROL *Edit = static_cast<CONTROL *> (M->Pointer8);
  gSeen.Typed = reinterpret_cast<char *> (Edit->Text);
  LIST_ITEM *Item = gCd->GetItem (gList, M->Word2);
  gSeen.RowName = Item != nullptr ? reinterpret_cast<char *> (Item->Name) : "(none)";
  gSeen.RowsDuring = gList->RowCount;
  if (gRebuild) {
    // As a refresh does: the listing is read again.
    gCd->ClearList (gList);
    Entry A ("first"), B ("new folder");
    gCd->AddListItem (gList, 0, TRUE, 0, 0, &A);
    gCd->AddListItem (gList, 0, TRUE, 0, 0, &B);
  }
  return 0;
}

TEST_F (ListTest, RenameEditsTheCurrentRowAndReportsTheTypedText) {
  gCd = Cd ();
  gList = List;
  gRebuild = false;
  gReaction = ReadEdit;
  AddRows ({"a.txt", "b.txt", "c.txt"});
  List->CurrentRow = 1;
  Cd ()->BeginRename (List, Window);
  ASSERT_TRUE (Controls ().Editing (List));
  EXPECT_EQ (Controls ().EditRow (List), 1);
  auto *Edit = static_cast<CONTROL *> (Window->FocusControl);
  ASSERT_NE (Edit, nullptr);
  EXPECT_EQ (Edit->Kind, CONTROL_KIND_EDIT);
  EXPECT_STREQ (reinterpret_cast<char *> (Edit->Text), "b.txt");

  Controls ().FinishEdit (List, "renamed.txt", true);
  EXPECT_EQ (gSeen.Code, NOTIFY_RENAME_DONE);
  EXPECT_EQ (gSeen.Row, 1);
  EXPECT_EQ (gSeen.Cancelled, 0);
  EXPECT_EQ (gSeen.Id, List->Control.Id);
  EXPECT_EQ (gSeen.Typed, "renamed.txt");
  EXPECT_EQ (gSeen.RowName, "b.txt");
  EXPECT_FALSE (Controls ().Editing (List));
  EXPECT_EQ (List->RowCount, 3);
  EXPECT_EQ (Window->FocusControl, List);

  // Typed keys go to the edit; Escape cancels.
  Cd ()->BeginRename (List, Window);
  Windows ().SendKey (Window, 'x', 0, 0);
  Windows ().SendKey (Window, 0, SCAN_CODE_ESCAPE, 0);
  EXPECT_EQ (gSeen.Cancelled, 1);
  EXPECT_EQ (gSeen.Typed, "b.txtx");
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
}

TEST_F (ListTest, ANewItemRowExistsDuringItsNotificationAndIsRemovedAfterwards) {
  gCd = Cd ();
  gList = List;
  gRebuild = false;
  gReaction = ReadEdit;
  AddRows ({"a", "b"});
  Cd ()->BeginNewItem (List, 4, TRUE, T ("new dir"));
  EXPECT_EQ (List->RowCount, 3);
  EXPECT_EQ (Controls ().EditRow (List), 2);
  EXPECT_EQ (Cd ()->GetItem (List, 2)->Icon, 4);
  EXPECT_EQ (Cd ()->GetItem (List, 2)->IsDirectory, 1);

  Controls ().FinishEdit (List, "photos", true);
  EXPECT_EQ (gSeen.Code, NOTIFY_NEW_ITEM_DONE);
  EXPECT_EQ (gSeen.Row, 2);
  EXPECT_EQ (gSeen.Cancelled, 0);
  EXPECT_EQ (gSeen.Typed, "photos");
  EXPECT_EQ (gSeen.RowName, "new dir");
  EXPECT_EQ (gSeen.RowsDuring, 3);
  EXPECT_EQ (List->RowCount, 2);
  EXPECT_EQ (Controls ().CellText (List, 0, 1), "b");

  // A handler that rebuilds the listing keeps its rows.
  gRebuild = true;
  Cd ()->BeginNewItem (List, 4, TRUE, T ("new dir"));
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
