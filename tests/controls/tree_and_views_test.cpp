// Control driver: file trees, combo boxes, log views and text views.
#include <cstring>
#include <string>
#include <vector>

#include "windows/window_test_support.h"

namespace {

// What the dialog saw of each tree notification, read during delivery:
// "code item path typed x,y".
std::vector<std::string> gTree;
uint32_t gAnswer = 0;   // written into edit notifications

UINT8 ReadTree (WINDOW_HEADER *, MESSAGE *M) {
  if (M->Type != MSG_TREE_NOTIFY) return 0;
  auto *Data = static_cast<TREE_NOTIFY_DATA *> (M->Pointer8);
  auto Text = [] (CHAR8 *T) { return T ? std::string (reinterpret_cast<char *> (T)) : std::string (); };
  gTree.push_back (std::to_string (M->Code) + " " + std::to_string (M->Word4) + " " + Text (Data->ItemPath) + " " +
                   Text (Data->TypedName) + " " + std::to_string (Data->X) + "," + std::to_string (Data->Y));
  if (M->Code == TREE_NEW_ITEM_DONE || M->Code == TREE_RENAME_DONE) Data->Answer = gAnswer;
  return 0;
}

class TreeTest : public WindowTest {
 protected:
  void SetUp () override {
    WindowTest::SetUp ();
    gTree.clear ();
    gAnswer = 0;
    gReaction = ReadTree;
    Dialog = NewWindow (848);
    Tree = Cd ()->CreateFileList (Dialog, 10, 60, 380, 226, 0);
    ASSERT_NE (Tree, nullptr);
  }
  UINTN Add (const char *Name, const char *Parent, bool Children = true) {
    Entry E (Name);
    return Cd ()->AddFileListItem (Tree, Children, 5, 0, &E, Ascii (Parent));
  }
  std::vector<std::string> Paths () {
    std::vector<std::string> Out;
    for (auto &Item : Controls ().TreeItems (Tree)) Out.push_back (reinterpret_cast<const char *> (Item.Path));
    return Out;
  }
  WINDOW_HEADER *Dialog = nullptr;
  FILE_LIST *Tree = nullptr;
};

TEST_F (TreeTest, ItemsGetFullPathsDepthsAndChildrenGoUnderTheirParent) {
  EXPECT_EQ (Cd ()->AddFileListItem (Tree, TRUE, 2, 0, "\\", Ascii ("\\")), 1u);
  EXPECT_EQ (Add ("docs", "\\"), 2u);
  EXPECT_EQ (Add ("music", "\\"), 3u);
  EXPECT_EQ (Add ("notes.txt", "\\", false), 4u);
  // Expanding \docs later: its children follow it, before \music.
  EXPECT_EQ (Add ("2024", "\\docs"), 5u);
  EXPECT_EQ (Add ("a.txt", "\\docs\\", false), 6u);
  EXPECT_EQ (Add ("x", "\\docs\\2024"), 7u);
  EXPECT_EQ (Paths (), (std::vector<std::string> {"\\", "\\docs", "\\docs\\2024", "\\docs\\2024\\x", "\\docs\\a.txt",
                                                   "\\music", "\\notes.txt"}));
  EXPECT_EQ (Tree->ItemCount, 7);
  // Each item as "name depth icon children".
  std::string Items;
  for (UINT16 I = 0; FILE_LIST_ITEM *Item = Cd ()->GetFileListItem (Tree, I); I++)
    Items += reinterpret_cast<char *> (Item->Name) + (" " + std::to_string (Item->Depth)) + " " +
             std::to_string (Item->Icon) + " " + std::to_string (Item->HasChildren) + "|";
  EXPECT_EQ (Items, "\\ 0 2 1|docs 1 5 1|2024 2 5 1|x 3 5 1|a.txt 2 5 0|music 1 5 1|notes.txt 1 5 0|");

  // A path that would not fit 512 bytes is refused; the count stays.
  std::string Deep = "\\" + std::string (505, 'd');
  EXPECT_EQ (Add ("toolong", Deep.c_str ()), 7u);

  Cd ()->ClearFileList (Tree);
  EXPECT_EQ (Tree->ItemCount, 0);
  EXPECT_TRUE (Controls ().TreeItems (Tree).empty ());
}

TEST_F (TreeTest, UserActionsSendTreeNotificationsWithTheItemPath) {
  Cd ()->AddFileListItem (Tree, TRUE, 2, 0, "\\", Ascii ("\\"));
  Add ("docs", "\\");
  Add ("empty", "\\", false);
  Controls ().SelectTreeItem (Tree, 1);
  Controls ().ExpandTreeItem (Tree, 1);
  Controls ().ExpandTreeItem (Tree, 2);   // no children: nothing to expand
  Controls ().TreeContextClick (Tree, 2, 30, 40);
  Controls ().ActivateTreeItem (Tree, 2);
  // Selected, expanded, context (at the screen position: window 10,20 + tree
  // 10,60 + click), activated.
  EXPECT_EQ (gTree, (std::vector<std::string> {"6 1 \\docs  0,0", "5 1 \\docs  0,0", "3 2 \\empty  50,120",
                                               "2 2 \\empty  0,0"}));
  EXPECT_EQ (Tree->SelectedItem, 2);

  // Collapsing an expanded item drops its children without a message.
  Add ("sub", "\\docs");
  gTree.clear ();
  Controls ().ExpandTreeItem (Tree, 1);
  EXPECT_TRUE (gTree.empty ());
  EXPECT_EQ (Paths (), (std::vector<std::string> {"\\", "\\docs", "\\empty"}));
  EXPECT_EQ (Tree->SelectedItem, 2);

  // Nothing while the dialog's NotifyEnabled byte is 0.
  Dialog->NotifyEnabled = 0;
  Controls ().SelectTreeItem (Tree, 1);
  EXPECT_TRUE (gTree.empty ());
}

TEST_F (TreeTest, EditsAskTheDialogAndARefusedEditLeavesTheTreeAsItWas) {
  Cd ()->AddFileListItem (Tree, TRUE, 2, 0, "\\", Ascii ("\\"));
  Add ("docs", "\\");
  Add ("zeta", "\\");
  Controls ().SelectTreeItem (Tree, 1);
  gTree.clear ();

  // New item under the selected directory, refused by the dialog.
  Cd ()->BeginFileListNewItem (Tree, 126);
  EXPECT_TRUE (Controls ().TreeEditing (Tree));
  EXPECT_EQ (Tree->ItemCount, 4);
  gAnswer = TREE_REFUSE_EDIT;
  EXPECT_EQ (Controls ().FinishTreeEdit (Tree, "new", true), TREE_REFUSE_EDIT);
  EXPECT_EQ (gTree, (std::vector<std::string> {"7 2 \\docs new 0,0"}));
  EXPECT_FALSE (Controls ().TreeEditing (Tree));
  EXPECT_EQ (Paths (), (std::vector<std::string> {"\\", "\\docs", "\\zeta"}));

  // Accepted: the item stays with its full path.
  gAnswer = 0;
  Cd ()->BeginFileListNewItem (Tree, 126);
  EXPECT_EQ (Controls ().FinishTreeEdit (Tree, "new", true), 0u);
  EXPECT_EQ (Paths (), (std::vector<std::string> {"\\", "\\docs", "\\docs\\new", "\\zeta"}));

  // Rename reports the item's own path; a cancelled edit sends nothing.
  Controls ().SelectTreeItem (Tree, 2);
  gTree.clear ();
  Cd ()->BeginFileListRename (Tree, Dialog);
  EXPECT_EQ (Controls ().FinishTreeEdit (Tree, "old", false), 0u);
  EXPECT_TRUE (gTree.empty ());
  Cd ()->BeginFileListRename (Tree, Dialog);
  EXPECT_EQ (Controls ().FinishTreeEdit (Tree, "renamed", true), 0u);
  EXPECT_EQ (gTree, (std::vector<std::string> {"8 2 \\docs\\new renamed 0,0"}));
  EXPECT_EQ (Paths (), (std::vector<std::string> {"\\", "\\docs", "\\docs\\renamed", "\\zeta"}));
  gAnswer = TREE_REFUSE_EDIT;
  Cd ()->BeginFileListRename (Tree, Dialog);
  EXPECT_EQ (Controls ().FinishTreeEdit (Tree, "refused", true), TREE_REFUSE_EDIT);
  EXPECT_STREQ (reinterpret_cast<char *> (Cd ()->GetFileListItem (Tree, 2)->Name), "renamed");

  // The root keeps its name.
  Controls ().SelectTreeItem (Tree, 0);
  Cd ()->BeginFileListRename (Tree, Dialog);
  EXPECT_FALSE (Controls ().TreeEditing (Tree));
}

// A combo box, a log view and a text view on one dialog.
TEST_F (WindowTest, CombosLogViewsAndTextViewsKeepWhatTheyAreGiven) {
  WINDOW_HEADER *Dialog = NewWindow (848);
  // A choice sets both rows and notifies with the combo's id; no such row changes nothing.
  COMBO_BOX *Combo = Cd ()->CreateComboBox (100, 30, 280, 260, 0, Dialog);
  ASSERT_NE (Combo, nullptr);
  Cd ()->AddComboItem (Combo, Ascii ("SYSTEM"), 0);
  Cd ()->AddComboItem (Combo, Ascii ("DATA"), 0);
  Controls ().ChooseComboRow (Combo, 1);
  Controls ().ChooseComboRow (Combo, 2);
  EXPECT_EQ ((std::vector<int> {Combo->ItemCount, Combo->CurrentRow, Combo->ChosenRow}), (std::vector<int> {2, 1, 1}));
  auto Notes = Received (Dialog, MSG_NOTIFY);
  ASSERT_EQ (Notes.size (), 1u);
  EXPECT_EQ ((std::vector<int> {Notes[0].Code, Notes[0].Word6, Notes[0].Word10}), (std::vector<int> {3, 1, Combo->Control.Id}));

  // A log view keeps its lines, shows the last, and reports context clicks.
  LOG_VIEW *Log = Cd ()->CreateLogView (Dialog, 10, 100, 280, 92, 0);
  ASSERT_NE (Log, nullptr);
  EXPECT_EQ (Log->SelectedLine, 0xFFFF);
  Cd ()->StartLogView (Log, Ascii ("\\docs"));
  Cd ()->AppendLine (Log, 0xFFFF, Ascii ("one"));
  Cd ()->AppendLine (Log, 0xFFFF, Ascii ("two"));
  Cd ()->AppendLine (Log, 0, Ascii ("zero"));
  EXPECT_EQ (Controls ().LogLines (Log), (std::vector<std::string> {"zero", "one", "two"}));
  for (int I = 0; I < 20; I++) Cd ()->AppendLine (Log, 0xFFFF, Ascii ("more"));
  Cd ()->ShowLine (Log, 65535);
  EXPECT_EQ (Log->TopLine, 23 - (92 - 4) / (Wb ()->GuiDriver->GetLineHeight () + 2));
  Controls ().SelectLogLine (Log, 1);
  EXPECT_EQ (Log->SelectedLine, 1);
  Controls ().LogContextClick (Log, 5, 6);
  Notes = Received (Dialog, MSG_NOTIFY);
  ASSERT_EQ (Notes.size (), 2u);
  EXPECT_EQ ((std::vector<int> {Notes[1].Code, Notes[1].Word2, Notes[1].Word4, Notes[1].Word6}),
             (std::vector<int> {13, 7, 10 + 10 + 5, 20 + 100 + 6}));
  EXPECT_EQ (Notes[1].Pointer8, Log);
  Cd ()->StartLogView (Log, Ascii ("\\music"));
  EXPECT_TRUE (Log->LineCount == 0 && Log->SelectedLine == 0xFFFF && Controls ().LogPath (Log) == "\\music");

  // A text view keeps its own copy of the bytes it was given, NULs included;
  // a resize record without byte 7 keeps its position.
  char Source[] = "Press F1 for help, any key to go on";
  CONTROL_RECT Rect {3, 24, 394, 273};
  CONTROL *View = Cd ()->CreateTextView (Dialog, 3, Ascii (Source), 5, &Rect);
  ASSERT_NE (View, nullptr);
  Source[0] = 'X';
  EXPECT_TRUE (Controls ().TextViewText (View) == "Press" && Wb ()->GetControl (Dialog, 3) == View);
  CONTROL *Zero = Cd ()->CreateTextView (Dialog, 4, Ascii ("a\0b"), 3, &Rect);
  EXPECT_EQ (Controls ().TextViewText (Zero), std::string ("a\0b", 3));
  MESSAGE Resize = ResizeMessage (44, 13);
  Wb ()->SendMessage (View, &Resize);
  EXPECT_EQ ((std::vector<int> {View->X, View->Y, View->Width, View->Height}), (std::vector<int> {3, 24, 44, 13}));
}

}  // namespace
