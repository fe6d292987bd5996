// The file dialog driven as a user would: the tree's contents, the choice
// handed back (volume byte and path), the volume selector, the tree's
// context menu with its in-place edits and their refusals.
#include <cstdio>
#include <filesystem>

#include "core/strings.h"
#include "env/controls/control_driver.h"
#include "env/files/file_driver.h"
#include "env/windows/window_base.h"
#include "filedialog/file_dialog.h"
#include "filemanager/file_types.h"
#include "support/driver_fixture.h"
#include "support/folder_override.h"
#include "support/window_views.h"

namespace fs = std::filesystem;

namespace {

class FileDialogTest : public DriverTest {
 protected:
  void SetUp () override {
    DriverTest::SetUp ();
    Vol = MakeVolume ("data", 0, 0, 1, "DATA");
    WriteFile (Vol, "a/b/deep.txt", "deep");
    WriteFile (Vol, "docs/readme.txt", "readme");
    WriteFile (Vol, "onlyfiles/x.txt", "x");
    WriteFile (Vol, "onlyfiles/y.txt", "y");
    MakeDir (Vol, ".hidden/inner");
    WriteFile (Vol, ".profile", "p");
    WriteFile (Vol, "..weird", "w");
    WriteFile (Vol, "a/.secret/z.txt", "z");
    MakeDir (Vol, "emptydir");
    WriteFile (Vol, "top.txt", "top");
  }

  FILE_DIALOG *Open (int Volume, UINT8 DirsOnly, const char *Title = "Pick") {
    WINDOW_HEADER *W = Surveyor ()->OpenFileDialog (20, 30, (const CHAR8 *) Title, (UINT8) Volume, DirsOnly);
    EXPECT_NE (W, nullptr);
    return reinterpret_cast<FILE_DIALOG *> (W);
  }
  env::ControlDriver &Controls () { return Env ().controls (); }
  env::WindowBase &Windows () { return Env ().windows (); }
  std::vector<FILE_LIST_ITEM> Items (FILE_DIALOG *D) { return Controls ().TreeItems (D->FileTree); }
  std::vector<std::string> Paths (FILE_DIALOG *D) {
    std::vector<std::string> Out;
    for (auto &I : Items (D)) Out.push_back ((const char *) I.Path);
    return Out;
  }
  // Whether each item of the tree shows an expander.
  std::vector<int> Children (FILE_DIALOG *D) {
    std::vector<int> Out;
    for (auto &I : Items (D)) Out.push_back (I.HasChildren);
    return Out;
  }
  uint16_t IndexOf (FILE_DIALOG *D, const std::string &Path) {
    auto All = Paths (D);
    for (size_t I = 0; I < All.size (); I++)
      if (All[I] == Path) return (uint16_t) I;
    ADD_FAILURE () << "no tree item " << Path;
    return 0xFFFF;
  }
  void Select (FILE_DIALOG *D, const std::string &Path) { Controls ().SelectTreeItem (D->FileTree, IndexOf (D, Path)); }
  void Expand (FILE_DIALOG *D, const std::string &Path) { Controls ().ExpandTreeItem (D->FileTree, IndexOf (D, Path)); }
  void Type (FILE_DIALOG *D, const char *Text) { Wb ()->SetWindowText (D->NameField, (const CHAR8 *) Text); }
  void PressOpen (FILE_DIALOG *D) {
    CONTROL *Button = Wb ()->GetControl (&D->Header, 33);
    ASSERT_NE (Button, nullptr);
    Windows ().ClickButton (Button);
  }
  size_t ResultCount () { return Windows ().DialogResults ().size (); }
  std::vector<std::string> Boxes () { return ShownMessageBoxes (Windows ()); }
  // The last choice handed back: "<volume>:<path>".
  std::string LastResult () {
    if (Windows ().DialogResults ().empty ()) return "<none>";
    const auto &Data = Windows ().DialogResults ().back ().Data;
    EXPECT_EQ (Data.size (), 1024u);
    if (Data.size () < 2) return "<short>";
    return std::to_string (Data[0]) + ":" + std::string ((const char *) Data.data () + 1);
  }
  std::string Want (int Volume, const std::string &Path) { return std::to_string (Volume) + ":" + Path; }
  std::string Status (FILE_DIALOG *D, uint8_t Field = 0) { return Windows ().StatusText (&D->Header, Field); }
  // The current folder and the name field's text.
  std::string Place (FILE_DIALOG *D) {
    return std::string ((const char *) D->CurrentDir) + " " + (const char *) D->NameField->Text;
  }
  // The resource text Key with its count filled in.
  std::string LeftOut (const char *Key, uint32_t Count) {
    char Part[64];
    std::snprintf (Part, sizeof (Part), (const char *) GetString (nullptr, (const CHAR8 *) Key), Count);
    return Part;
  }
  void OpenContextMenu (FILE_DIALOG *D, const std::string &Path) {
    Controls ().TreeContextClick (D->FileTree, IndexOf (D, Path), 5, 6);
  }
  // Right click on the item Path, choose Item, then end the in-place edit
  // with Text; the dialog's answer to the edit (0 or TREE_REFUSE_EDIT).
  uint32_t EditFrom (FILE_DIALOG *D, const std::string &Path, const char *Item, const std::string &Text,
                     bool Apply = true) {
    OpenContextMenu (D, Path);
    if (!Windows ().ChoosePopupItem (D->DialogPopup, Item) || !Controls ().TreeEditing (D->FileTree)) {
      ADD_FAILURE () << Item << " on " << Path << " starts no edit";
      return 1;
    }
    return Controls ().FinishTreeEdit (D->FileTree, Text, Apply);
  }

  int Vol = -1;
};

TEST_F (FileDialogTest, WindowLayoutAndTreeContents) {
  FILE_DIALOG *D = Open (Vol, 0);
  ASSERT_NE (D, nullptr);
  WINDOW_HEADER *W = &D->Header;
  EXPECT_EQ (W->ObjectSize, 848u);
  EXPECT_EQ (Windows ().WindowText (W), "Pick");
  EXPECT_TRUE (W->Flags & WINDOW_FLAG_DIALOG);
  int L = Gui ()->GetLineHeight (), TreeTop = Wb ()->CaptionHeight + 6 + L + 16, TreeHeight = (L + 6) * 10 + 6;
  EXPECT_EQ (RectOf (W), (Rect {20, 30, 400, TreeTop + TreeHeight + 6 + 2 * L + 25}));
  EXPECT_EQ (RectOf (&D->FileTree->Control), (Rect {10, TreeTop, 380, TreeHeight}));
  EXPECT_STREQ ((const char *) D->CurrentDir, "\\");
  EXPECT_EQ (Windows ().IconPath (W->IconId), "\\efi\\kivora\\icon\\surveyor\\files\\dir.ico");
  CONTROL *Button = Wb ()->GetControl (W, 33);
  ASSERT_NE (Button, nullptr);
  EXPECT_EQ (Windows ().WindowText (Button), "Open");

  // Names starting with "." never appear; folders first, then files.
  EXPECT_EQ (Paths (D), (std::vector<std::string> {"\\", "\\a", "\\docs", "\\emptydir", "\\onlyfiles", "\\top.txt"}));
  EXPECT_EQ (Children (D), (std::vector<int> {1, 1, 1, 0, 1, 0}));
  std::vector<int> Icons;
  for (auto &I : Items (D)) Icons.push_back (I.Icon);
  int Dir = gFileIcons.Directory, File = gFileIcons.Unknown;
  ASSERT_NE (Dir, File);
  EXPECT_EQ (Icons, (std::vector<int> {Dir, Dir, Dir, Dir, Dir, File}));

  // Expanding lists the children under their parent; ".secret" stays hidden.
  Expand (D, "\\a");
  Expand (D, "\\a\\b");
  EXPECT_EQ (Paths (D), (std::vector<std::string> {"\\", "\\a", "\\a\\b", "\\a\\b\\deep.txt", "\\docs", "\\emptydir",
                                                  "\\onlyfiles", "\\top.txt"}));

  // The handler takes restore and activation, and no other command or key.
  EXPECT_EQ (HandlerAnswers (W, {MessageOf (MSG_SYSCOMMAND, SYSCMD_RESTORE), MessageOf (MSG_SYSCOMMAND, 5),
                                 MessageOf (MSG_ACTIVATE), MessageOf (MSG_KEY)}),
             "1010");
  EXPECT_EQ (ResultCount (), 0u);
}

TEST_F (FileDialogTest, ChoicesGiveVolumeAndPath) {
  FILE_DIALOG *D = Open (Vol, 0);
  // The root with an empty name.
  PressOpen (D);
  EXPECT_EQ (LastResult (), Want (Vol, "\\"));

  // A directory and a typed name.
  Select (D, "\\docs");
  EXPECT_EQ (Status (D), "Folder: \\docs");
  Type (D, "new.txt");
  PressOpen (D);
  EXPECT_EQ (LastResult (), Want (Vol, "\\docs\\new.txt"));

  // Selecting a directory empties the name field; no trailing "\".
  Expand (D, "\\a");
  Select (D, "\\a\\b");
  EXPECT_EQ (Place (D), "\\a\\b ");
  PressOpen (D);
  EXPECT_EQ (LastResult (), Want (Vol, "\\a\\b"));

  // A file fills the name field and sets its directory.
  Expand (D, "\\a\\b");
  Select (D, "\\a\\b\\deep.txt");
  EXPECT_EQ (Place (D), "\\a\\b deep.txt");
  EXPECT_EQ (Status (D), "Folder: \\a\\b\\deep.txt");
  PressOpen (D);
  EXPECT_EQ (LastResult (), Want (Vol, "\\a\\b\\deep.txt"));
  Select (D, "\\top.txt");
  EXPECT_EQ (Place (D), "\\ top.txt");
  PressOpen (D);
  EXPECT_EQ (LastResult (), Want (Vol, "\\top.txt"));

  // Activating a directory only selects it when files may be chosen.
  size_t Before = ResultCount ();
  Controls ().ActivateTreeItem (D->FileTree, IndexOf (D, "\\docs"));
  EXPECT_EQ (ResultCount (), Before);
  EXPECT_EQ (Status (D) + " " + Place (D), "Folder: \\docs \\docs ");

  // Activating a file completes the dialog, which then closes.
  Expand (D, "\\onlyfiles");
  Controls ().ActivateTreeItem (D->FileTree, IndexOf (D, "\\onlyfiles\\y.txt"));
  EXPECT_EQ (ResultCount (), Before + 1);
  EXPECT_EQ (LastResult (), Want (Vol, "\\onlyfiles\\y.txt"));
  EXPECT_EQ (Windows ().DialogResults ().back ().Dialog, &D->Header);
  Windows ().PumpMessages ();
  EXPECT_FALSE (Windows ().IsWindow (&D->Header));
}

TEST_F (FileDialogTest, DirectoriesOnly) {
  FILE_DIALOG *D = Open (Vol, 1);
  EXPECT_EQ (Paths (D), (std::vector<std::string> {"\\", "\\a", "\\docs", "\\emptydir", "\\onlyfiles"}));
  // docs and onlyfiles hold only files: no children here.
  EXPECT_EQ (Children (D), (std::vector<int> {1, 1, 0, 0, 0}));
  Expand (D, "\\a");
  EXPECT_EQ (Paths (D), (std::vector<std::string> {"\\", "\\a", "\\a\\b", "\\docs", "\\emptydir", "\\onlyfiles"}));
  EXPECT_EQ (Items (D)[2].HasChildren, 0);

  PressOpen (D);
  EXPECT_EQ (LastResult (), Want (Vol, "\\"));
  // Activating a directory completes with that directory.
  Controls ().ActivateTreeItem (D->FileTree, IndexOf (D, "\\a\\b"));
  EXPECT_EQ (LastResult (), Want (Vol, "\\a\\b"));
  Controls ().ActivateTreeItem (D->FileTree, 0);
  EXPECT_EQ (LastResult (), Want (Vol, "\\"));
}

TEST_F (FileDialogTest, LargeRootStopsAt4096Items) {
  LISTING_NOTES Notes {};
  Notes.Listed = 5000;
  FolderOverride Big (Env ().files ().Table (), "\\", Notes, 5000);   // files f0 to f4999
  FILE_DIALOG *D = Open (Vol, 0);
  auto All = Paths (D);
  ASSERT_EQ (All.size (), 4096u);
  EXPECT_EQ (All[0] + " " + All[4095], "\\ \\f4094");
  EXPECT_EQ (Status (D, 1), LeftOut ("left_over_limit", 5000 - 4095));
}

// Entries the tree cannot show are counted in status field 1; a folder that
// cannot be read is reported instead of looking empty.
TEST_F (FileDialogTest, LeftOutEntriesAndUnreadableFoldersAreSaid) {
  WriteFile (Vol, "docs/" + std::string (195, 'n'), "long");
  FILE_DIALOG *D = Open (Vol, 0);
  EXPECT_EQ (Status (D, 1), "");
  Expand (D, "\\docs");
  EXPECT_EQ (Status (D, 1), LeftOut ("left_long_names", 1));
  EXPECT_TRUE (Boxes ().empty ());

  FolderOverride Locked (Env ().files ().Table (), "\\a", UnreadableFolderNotes ());
  Expand (D, "\\a");
  EXPECT_EQ (Status (D, 1), "");
  EXPECT_EQ (Boxes (), OneMessageBox ("\\a", (const char *) GetString (nullptr, (const CHAR8 *) "fail_read_folder")));
}

TEST_F (FileDialogTest, SwitchingTheVolumeReloadsTheTree) {
  int Alpha = MakeVolume ("alpha", 0, 0, 1, "ALPHA");
  WriteFile (Alpha, "alpha.txt", "a");
  FILE_DIALOG *D = Open (Vol, 0);
  EXPECT_EQ (Controls ().ComboItems (D->VolumeCombo), (std::vector<std::string> {"DATA", "ALPHA"}));
  EXPECT_EQ (std::to_string (D->VolumeCombo->CurrentRow) + std::to_string (D->VolumeCombo->ChosenRow), "00");

  Select (D, "\\docs");
  Type (D, "keep.me");
  Controls ().ChooseComboRow (D->VolumeCombo, 1);
  EXPECT_EQ (D->DialogVolume, Alpha);
  EXPECT_EQ (Paths (D), (std::vector<std::string> {"\\", "\\alpha.txt"}));
  EXPECT_EQ (Place (D), "\\ keep.me") << "the name field keeps its text";
  PressOpen (D);
  EXPECT_EQ (LastResult (), Want (Alpha, "\\keep.me"));

  // Choosing the volume already shown does not reload.
  unsigned Redraws = Windows ().RedrawCount (D->FileTree);
  Select (D, "\\alpha.txt");
  Controls ().ChooseComboRow (D->VolumeCombo, 1);
  EXPECT_EQ (Windows ().RedrawCount (D->FileTree), Redraws);
  EXPECT_EQ (Place (D), "\\ alpha.txt");

  Controls ().ChooseComboRow (D->VolumeCombo, 0);
  EXPECT_EQ (D->DialogVolume, Vol);
  EXPECT_EQ (Items (D).size (), 6u);
}

TEST_F (FileDialogTest, UnofferedVolumeShowsTheRootAlone) {
  FILE_DIALOG *D = Open (17, 0);
  EXPECT_EQ (D->VolumeCombo->CurrentRow, 0xFFFF) << "no row is chosen";
  EXPECT_EQ (Paths (D), std::vector<std::string> {"\\"});
  EXPECT_EQ (Children (D), std::vector<int> {0});
  PressOpen (D);
  EXPECT_EQ (LastResult (), Want (17, "\\"));
  // An empty volume looks the same.
  FILE_DIALOG *E = Open (MakeVolume ("empty"), 1);
  EXPECT_EQ (Paths (E), std::vector<std::string> {"\\"});
  EXPECT_EQ (Children (E), std::vector<int> {0});
}

TEST_F (FileDialogTest, ContextMenuCreatesAndRenamesDirectories) {
  FILE_DIALOG *D = Open (Vol, 0);
  Expand (D, "\\docs");
  OpenContextMenu (D, "\\docs");
  WINDOW_HEADER *Popup = Windows ().ShownPopup ();
  ASSERT_NE (Popup, nullptr);
  EXPECT_EQ (Popup, D->DialogPopup);
  int32_t Ox = 0, Oy = 0;
  Windows ().ScreenOrigin (D->FileTree, Ox, Oy);
  EXPECT_EQ ((std::pair<int, int> {Popup->X - Ox, Popup->Y - Oy}), (std::pair<int, int> {5, 6}));
  std::vector<std::string> Items;   // text, icon, and whether the dialog is the context
  for (auto &I : Windows ().PopupItems (Popup))
    Items.push_back (I.Text + " " + std::to_string (I.Icon) + " " + std::to_string (I.Context == &D->Header));
  EXPECT_EQ (Items, (std::vector<std::string> {"New folder 126 1", "Delete folder 126 1", "Rename 126 1"}));

  // "Delete folder" deletes nothing.
  EXPECT_TRUE (Windows ().ChoosePopupItem (Popup, "Delete folder"));
  EXPECT_EQ (VolumeTree (Vol, "docs"), "readme.txt=readme");
  EXPECT_TRUE (Boxes ().empty ());

  // A new folder under the clicked directory; the same name again is refused
  // with the path as text; a cancelled edit creates nothing.
  OpenContextMenu (D, "\\docs");
  EXPECT_EQ (Windows ().ShownPopup (), Popup) << "the popup is made once";
  EXPECT_EQ (EditFrom (D, "\\docs", "New folder", "fresh"), 0u);
  EXPECT_TRUE (Boxes ().empty ());
  EXPECT_EQ (EditFrom (D, "\\docs", "New folder", "fresh"), TREE_REFUSE_EDIT);
  EXPECT_EQ (Boxes (), OneMessageBox ("Cannot create folder", "\\docs\\fresh"));
  Windows ().ClearMessageBoxes ();
  EditFrom (D, "\\emptydir", "New folder", "never", false);
  EXPECT_EQ (VolumeTree (Vol, "emptydir") + "|" + VolumeTree (Vol, "docs"), "|fresh/ readme.txt=readme");

  // Renaming a file; then a clash is refused with the directory as text.
  EXPECT_EQ (EditFrom (D, "\\docs\\readme.txt", "Rename", "notes.txt"), 0u);
  EXPECT_EQ (VolumeTree (Vol, "docs"), "fresh/ notes.txt=readme");
  EXPECT_TRUE (Boxes ().empty ());
  EXPECT_EQ (EditFrom (D, "\\top.txt", "Rename", "docs"), TREE_REFUSE_EDIT);
  EXPECT_EQ (Boxes (), OneMessageBox ("Cannot rename", "\\"));
  EXPECT_EQ (ReadHostFile (VolumePath (Vol) / "top.txt"), "top");

  // Closing the dialog destroys its popup.
  Windows ().SendSysCommand (&D->Header, SYSCMD_CLOSE);
  Windows ().PumpMessages ();
  EXPECT_FALSE (Windows ().IsWindow (Popup));
}

TEST_F (FileDialogTest, RefusedCreationsOnLockedVolumesAndLongPaths) {
  int Locked = MakeVolume ("locked", VOLUME_FLAG_WRITE_PROTECTED, 0, 1, "RO");
  MakeDir (Locked, "sub");
  FILE_DIALOG *D = Open (Locked, 1);
  EXPECT_EQ (EditFrom (D, "\\sub", "New folder", "made"), TREE_REFUSE_EDIT);
  EXPECT_EQ (EditFrom (D, "\\sub", "Rename", "other"), TREE_REFUSE_EDIT);
  EXPECT_EQ (Boxes (), (std::vector<std::string> {"Cannot create folder: \\sub\\made", "Cannot rename: \\"}));
  EXPECT_EQ (VolumeTree (Locked), "sub/");
  Windows ().ClearMessageBoxes ();

  // A parent path of 511 characters (over 510) refuses silently.
  std::string A (170, 'a'), B (170, 'b'), C (168, 'c'), C2 (166, 'c');
  MakeDir (Vol, A + "/" + B + "/" + C);
  MakeDir (Vol, A + "/" + B + "/" + C2);
  FILE_DIALOG *E = Open (Vol, 1);
  std::string PathA = "\\" + A, PathB = PathA + "\\" + B, PathC = PathB + "\\" + C;   // 511 characters
  Expand (E, PathA);
  Expand (E, PathB);
  EXPECT_EQ (EditFrom (E, PathC, "New folder", "x"), TREE_REFUSE_EDIT);
  EXPECT_TRUE (Boxes ().empty ());
  // A shorter parent is attempted, but a full path of 512 characters does not
  // fit the 512-byte buffer: refused like a failed creation, with a message
  // showing what fits, and nothing made.
  EXPECT_EQ (EditFrom (E, PathB + "\\" + C2, "New folder", "xy"), TREE_REFUSE_EDIT);
  EXPECT_EQ (Boxes (), OneMessageBox ("Cannot create folder", PathB + "\\" + C2 + "\\x"));
  EXPECT_FALSE (fs::exists (VolumePath (Vol) / A / B / C2 / "x"));
}

}  // namespace
