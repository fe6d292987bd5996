// Copy, paste, delete, rename and new directory of the main window, run on
// real temporary folders; every failure is checked on disk afterwards.
#include <filesystem>

#include "env/jobio/jobio_driver.h"
#include "support/main_window_fixture.h"

namespace fs = std::filesystem;

namespace {

class FileOpsTest : public MainWindowTest {
 protected:
  // Starts a rename of Name, or a new directory, and ends the edit with Text.
  void Rename (MAIN_WINDOW *W, const std::string &Name, const std::string &Text, bool Apply = true) {
    Select (W, {Name});
    Edit (W, RenameCommand, Text, Apply);
  }
  void NewDir (MAIN_WINDOW *W, const std::string &Text, bool Apply = true) { Edit (W, NewDirCommand, Text, Apply); }
  void Edit (MAIN_WINDOW *W, COMMAND_CALLBACK Command, const std::string &Text, bool Apply) {
    Command (nullptr, &W->Header);
    ASSERT_TRUE (Controls ().Editing (W->List));
    Controls ().FinishEdit (W->List, Text, Apply);
    Base ().PumpMessages ();
  }
  unsigned Redraws (MAIN_WINDOW *W) { return Base ().RedrawCount (W->List); }
};

TEST_F (FileOpsTest, CopyThenPasteCopiesTheSelectionAndReportsClashes) {
  int V = MakeVolume ("vol", 0, 0, 1, "DATA");
  WriteFile (V, "a.txt", "alpha");
  WriteFile (V, "b.txt", "bravo");
  WriteFile (V, "tree/inner.txt", "inner");
  MakeDir (V, "target");
  MAIN_WINDOW *W = Open (V);
  ASSERT_NE (W, nullptr);

  // Nothing on the clipboard: paste does nothing at all.
  unsigned Flushes = Env ().files ().FlushCount (V);
  PasteCommand (nullptr, &W->Header);
  EXPECT_EQ (Env ().files ().FlushCount (V), Flushes);
  EXPECT_TRUE (Boxes ().empty ());

  Select (W, {"a.txt", "tree"});
  EXPECT_EQ (CollectSelection (W), 2);
  Select (W, {"a.txt", "b.txt", "tree"});
  CopyCommand (nullptr, &W->Header);
  EXPECT_TRUE (Env ().jobio ().Table ()->HasClipboard ());

  // Into \target: everything arrives, the list shows it.
  Activate (W, "target");
  Base ().PumpMessages ();
  ASSERT_EQ (Path (W), "\\target");
  PasteCommand (nullptr, &W->Header);
  EXPECT_TRUE (Boxes ().empty ());
  EXPECT_EQ (VolumeTree (V, "target"), "a.txt=alpha b.txt=bravo tree/ tree/inner.txt=inner");
  EXPECT_EQ (Names (W), (std::vector<std::string> {".", "..", "tree", "a.txt", "b.txt"}));
  EXPECT_GT (Env ().files ().FlushCount (V), Flushes);

  // Again: the names exist now. A message, nothing changed, list refreshed anyway.
  WriteHostFile (VolumePath (V) / "target" / "a.txt", "edited");
  unsigned Before = Redraws (W);
  PasteCommand (nullptr, &W->Header);
  EXPECT_EQ (Boxes (), OneMessageBox (Res (nullptr, "OperationNotDone"), Res (nullptr, "FailCopyFile")));
  EXPECT_GT (Redraws (W), Before);
  EXPECT_EQ (VolumeTree (V), "a.txt=alpha b.txt=bravo target/ target/a.txt=edited target/b.txt=bravo target/tree/ "
                             "target/tree/inner.txt=inner tree/ tree/inner.txt=inner");
}

TEST_F (FileOpsTest, DeleteRemovesTheSelectionAndReportsOnlyFailures) {
  int V = MakeVolume ("vol", 0, 0, 1, "DATA");
  WriteFile (V, "keep.txt", "keep");
  WriteFile (V, "gone.txt", "gone");
  WriteFile (V, "dir/x.txt", "x");
  MAIN_WINDOW *W = Open (V);
  ASSERT_NE (W, nullptr);

  Select (W, {"gone.txt", "dir"});
  DeleteCommand (nullptr, &W->Header);
  EXPECT_EQ (VolumeTree (V), "keep.txt=keep");
  EXPECT_EQ (Names (W), std::vector<std::string> ({"keep.txt"}));
  // Nothing selected: nothing happens.
  Controls ().SelectRows (W->List, {});
  DeleteCommand (nullptr, &W->Header);
  EXPECT_TRUE (Boxes ().empty ());
  EXPECT_EQ (VolumeTree (V), "keep.txt=keep");

  // A volume that refuses changes: the driver reports the failure, the file stays.
  int R = MakeVolume ("ro", VOLUME_FLAG_WRITE_PROTECTED, 0, 1, "RO");
  WriteFile (R, "locked.txt", "locked");
  MAIN_WINDOW *Locked = Open (R);
  Select (Locked, {"locked.txt"});
  DeleteCommand (nullptr, &Locked->Header);
  EXPECT_EQ (Boxes (), OneMessageBox (Res (nullptr, "OperationFail"), Res (nullptr, "FailDelFile")));
  EXPECT_EQ (VolumeTree (R), "locked.txt=locked");
  EXPECT_EQ (Names (Locked), std::vector<std::string> ({"locked.txt"}));
}

TEST_F (FileOpsTest, DotEntriesAreNeverCollected) {
  int V = MakeVolume ("vol", 0, 0, 1, "DATA");
  WriteFile (V, "sub/file.txt", "data");
  MAIN_WINDOW *W = Open (V, "\\sub");
  ASSERT_NE (W, nullptr);
  ASSERT_EQ (Names (W), std::vector<std::string> ({".", "..", "file.txt"}));

  Select (W, {".", ".."});
  EXPECT_EQ (CollectSelection (W), 0);
  CopyCommand (nullptr, &W->Header);
  EXPECT_FALSE (Env ().jobio ().Table ()->HasClipboard ());
  DeleteCommand (nullptr, &W->Header);
  EXPECT_EQ (VolumeTree (V), "sub/ sub/file.txt=data");
  Select (W, {"..", "file.txt"});
  EXPECT_EQ (CollectSelection (W), 1);
  DeleteCommand (nullptr, &W->Header);
  EXPECT_TRUE (Boxes ().empty ());
  EXPECT_EQ (VolumeTree (V), "sub/");
}

TEST_F (FileOpsTest, RenameChangesTheNameOrReportsWithTheOldName) {
  int V = MakeVolume ("vol", 0, 0, 1, "DATA");
  WriteFile (V, "Readme.txt", "readme");
  WriteFile (V, "other.txt", "other");
  MAIN_WINDOW *W = Open (V);
  ASSERT_NE (W, nullptr);
  unsigned Flushes = Env ().files ().FlushCount (V);

  // A change of case only, or an empty name: nothing at all, not even a refresh.
  unsigned Before = Redraws (W);
  Rename (W, "Readme.txt", "README.TXT");
  Rename (W, "Readme.txt", "");
  EXPECT_EQ (Redraws (W), Before);
  EXPECT_EQ (Env ().files ().FlushCount (V), Flushes);
  // Cancelled: no rename, but the list is refreshed.
  Rename (W, "Readme.txt", "cancelled.txt", false);
  EXPECT_GT (Redraws (W), Before);
  EXPECT_EQ (VolumeTree (V), "Readme.txt=readme other.txt=other");

  Rename (W, "Readme.txt", "notes.md");
  EXPECT_EQ (VolumeTree (V), "notes.md=readme other.txt=other");
  EXPECT_EQ (Names (W), (std::vector<std::string> {"notes.md", "other.txt"}));
  EXPECT_GT (Env ().files ().FlushCount (V), Flushes);
  EXPECT_TRUE (Boxes ().empty ());

  // Refused names: a message with the old name as caption, both files intact.
  const std::string Refused[] = {"other.txt", "sub\\name.txt", "a/b"};
  for (const std::string &Name : Refused) {
    Base ().ClearMessageBoxes ();
    Rename (W, "notes.md", Name);
    EXPECT_EQ (Boxes (), OneMessageBox ("notes.md", Res (nullptr, "fail_rename"))) << Name;
    EXPECT_EQ (VolumeTree (V), "notes.md=readme other.txt=other") << Name;
  }
  // A name longer than any file system takes (the list's edit field keeps
  // fewer characters, so it is handed over directly).
  std::string TooLong (300, 'n');
  EXPECT_FALSE (RenameItem (W, A8 ("notes.md"), A8 (TooLong.c_str ())));
  EXPECT_EQ (VolumeTree (V), "notes.md=readme other.txt=other");
}

TEST_F (FileOpsTest, NewDirectoryIsCreatedInPlaceOrReportedWithTheTypedName) {
  int V = MakeVolume ("vol", 0, 0, 1, "DATA");
  WriteFile (V, "taken/file.txt", "kept");
  MAIN_WINDOW *W = Open (V);
  ASSERT_NE (W, nullptr);

  NewDirCommand (nullptr, &W->Header);
  ASSERT_TRUE (Controls ().Editing (W->List));
  EXPECT_EQ (Controls ().CellText (W->List, 0, Controls ().EditRow (W->List)), "new dir");
  Controls ().FinishEdit (W->List, "made", true);
  Base ().PumpMessages ();
  EXPECT_EQ (Names (W), (std::vector<std::string> {"made", "taken"}));

  unsigned Before = Redraws (W);
  NewDir (W, "");
  EXPECT_EQ (Redraws (W), Before);
  NewDir (W, "never", false);
  EXPECT_GT (Redraws (W), Before);
  EXPECT_TRUE (Boxes ().empty ());
  NewDir (W, "taken");
  EXPECT_EQ (Boxes (), OneMessageBox ("taken", Res (nullptr, "fail_create_dir")));
  EXPECT_EQ (VolumeTree (V), "made/ taken/ taken/file.txt=kept");
}

TEST_F (FileOpsTest, LongPathsAreRefusedWithoutEffect) {
  int V = MakeVolume ("vol", 0, 0, 1, "DATA");
  // Five components of 99 characters: a path of 500 characters.
  std::string Host, Deep;
  for (int I = 0; I < 5; I++) {
    std::string Part (99, char ('a' + I));
    Host += (I ? "/" : "") + Part;
    Deep += "\\" + Part;
  }
  WriteFile (V, Host + "/f.txt", "f");
  MAIN_WINDOW *W = Open (V, Deep);
  ASSERT_NE (W, nullptr);
  ASSERT_EQ (Path (W), Deep);

  // 500 + 10 reaches 510: refused before the file driver is asked.
  EXPECT_FALSE (MakeDirectory (W, A8 ("0123456789")));
  NewDir (W, "0123456789");
  EXPECT_EQ (Boxes (), OneMessageBox ("0123456789", Res (nullptr, "fail_create_dir")));
  EXPECT_FALSE (fs::exists (VolumePath (V) / Host / "0123456789"));
  // 500 + 9: attempted, and made.
  EXPECT_TRUE (MakeDirectory (W, A8 ("012345678")));
  EXPECT_TRUE (fs::is_directory (VolumePath (V) / Host / "012345678"));
  EXPECT_FALSE (MakeDirectory (W, A8 ("")));

  // A rename whose new full path would not fit 512 bytes (500 + 1 + 11) is refused untouched.
  EXPECT_FALSE (RenameItem (W, A8 ("f.txt"), A8 ("0123456.txt")));
  EXPECT_EQ (ReadHostFile (VolumePath (V) / Host / "f.txt"), "f");
  EXPECT_TRUE (RenameItem (W, A8 ("f.txt"), A8 ("g.txt")));
  EXPECT_EQ (ReadHostFile (VolumePath (V) / Host / "g.txt"), "f");
}

}  // namespace
