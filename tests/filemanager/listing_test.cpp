// The directory listing, navigation with the remembered rows, and the status
// texts.

#include <sys/stat.h>

#include <algorithm>

#include "filemanager/file_types.h"
#include "support/folder_override.h"
#include "support/main_window_fixture.h"

namespace {

TEST_F (MainWindowTest, CellsShowGroupedSizesTypesAndDates) {
  int V = MakeVolume ("a");
  MakeDir (V, "folder");
  WriteFile (V, "n1000.bin", std::string (1000, 'x'));
  WriteFile (V, "n1234567.bin", std::string (1234567, 'x'));
  WriteFile (V, "zero.txt", "");
  WriteFile (V, "noext", "a");
  MAIN_WINDOW *W = Open (V);
  ASSERT_NE (W, nullptr);
  const std::pair<const char *, const char *> Sizes[] = {
      {"n1000.bin", "1,000"}, {"n1234567.bin", "1,234,567"}, {"zero.txt", "0"}};
  for (const auto &[Name, Size] : Sizes) EXPECT_EQ (Cell (W, 1, Row (W, Name)), Size) << Name;
  EXPECT_EQ (Cell (W, 2, Row (W, "folder")), Res (nullptr, "TypeDirectory"));
  EXPECT_EQ (Cell (W, 2, Row (W, "zero.txt")), " ");

  // Icons: directory, by extension, unknown without one.
  auto Item = [&] (const char *Name) { return Cd ()->GetItem (W->List, Row (W, Name)); };
  EXPECT_EQ ((std::vector<int> {Item ("folder")->Icon, Item ("folder")->IsDirectory, Item ("zero.txt")->Icon,
                                Item ("noext")->Icon, static_cast<int> (Item ("n1000.bin")->Size)}),
             (std::vector<int> {gFileIcons.Directory, 1, gFileIcons.Text, gFileIcons.Unknown, 1000}));

  // The date column: the file driver's fields in the year.month.day form.
  FILE_DRIVER_PROTOCOL *Files = Env ().files ().Table ();
  UINT16 Handle = Files->OpenDirectory (static_cast<UINT8> (V), A8 ("\\"));
  UINT16 Count = 0;
  DIRECTORY_ENTRY *Entries = Files->ReadDirectory (Handle, &Count);
  ASSERT_NE (Entries, nullptr);
  for (UINT16 I = 0; I < Count; I++) {
    const DIRECTORY_ENTRY &E = Entries[I];
    std::string Name = reinterpret_cast<const char *> (E.Name);
    EXPECT_EQ (Cell (W, 3, Row (W, Name)), Format ("%04d.%02d.%02d %02d:%02d:%02d", E.Year, E.Month, E.Day, E.Hour,
                                                    E.Minute, E.Second))
        << Name;
    EXPECT_EQ (Item (Name.c_str ())->EntryWord, E.EntryWord);
  }
  Fw ().FreePool (Entries);
  Files->CloseHandle (Handle);
}

TEST_F (MainWindowTest, NavigationRestoresRowsAndGoUpState) {
  int V = MakeVolume ("a");
  for (int I = 0; I < 8; I++) MakeDir (V, "a/d" + std::to_string (I));
  WriteFile (V, "a/d3/f.txt", "x");
  MAIN_WINDOW *W = Open (V);
  Activate (W, "a");
  EXPECT_EQ (Where (W), "\\a 1");
  EXPECT_EQ (CommandStates (W), "gouplayer:11 copy file:11 paste file:00 delete:11 newdir:1");
  EXPECT_EQ (Status (W), "\\a\\");

  Controls ().SelectRows (W->List, {5});
  ASSERT_EQ (Row (W, "d3"), 5);
  Controls ().ActivateRow (W->List, 5);
  EXPECT_EQ (Where (W) + " " + std::to_string (W->List->CurrentRow), "\\a\\d3 2 0");

  // ".." goes up and selects row 5 again; "." does nothing.
  Activate (W, ".");
  EXPECT_EQ (Path (W), "\\a\\d3");
  Activate (W, "..");
  EXPECT_EQ (Path (W) + " " + std::to_string (W->List->CurrentRow), "\\a 5");

  // The toolbar button goes up to the root, where going up is disabled and does nothing.
  MENU_ITEM *Up = Button (W, GoUpCommand);
  Up->Command (Up, &W->Header);
  EXPECT_EQ (Where (W), "\\ 0");
  EXPECT_EQ (CommandStates (W), "gouplayer:00 copy file:11 paste file:00 delete:11 newdir:1");
  unsigned Redraws = Base ().RedrawCount (W->List);
  EXPECT_FALSE (GoUp (W));
  Up->Command (Up, &W->Header);
  EXPECT_EQ (Base ().RedrawCount (W->List), Redraws);
}

TEST_F (MainWindowTest, SixtyFourLevelsDownAndBack) {
  int V = MakeVolume ("deep");
  std::string Rel = "d", Deep = "\\d";   // 70 levels
  for (int I = 1; I < 70; I++) Rel += "/d", Deep += "\\d";
  MakeDir (V, Rel);
  MAIN_WINDOW *W = Open (V);
  size_t Before = Fw ().LiveAllocations ();
  for (int I = 0; I < 64; I++) {
    Controls ().SelectRows (W->List, {Row (W, "d")});
    Activate (W, "d");
  }
  EXPECT_EQ (std::to_string (Path (W).size ()) + " " + std::to_string (W->Depth), "128 63");
  // Below level 63 a descent no longer resets the remembered row.
  EXPECT_EQ (W->RowStack[63], 2);
  for (int I = 0; I < 64; I++) Activate (W, "..");
  EXPECT_EQ (Where (W), "\\ 0");
  EXPECT_EQ (Names (W), std::vector<std::string> ({"d"}));
  EXPECT_NE (W->DirHandle, 0);
  EXPECT_EQ (Env ().files ().OpenHandleCount (), 1u);
  EXPECT_EQ (Fw ().LiveAllocations (), Before);

  // Switched to the deepest path, the window counts its depth afresh (63 at
  // most) and forgets every remembered row.
  Open (V, Deep);
  EXPECT_EQ (W->Depth, 63);
  EXPECT_EQ (std::count (std::begin (W->RowStack), std::end (W->RowStack), 0), 64);
}

TEST_F (MainWindowTest, TooLongPathIsRefusedAndWindowStaysUsable) {
  int V = MakeVolume ("long");
  std::string Name (100, 'n');
  std::string Rel;
  for (int I = 0; I < 6; I++) Rel += (I ? "/" : "") + Name;
  MakeDir (V, Rel);
  MAIN_WINDOW *W = Open (V);
  Base ().ClearMessageBoxes ();
  // The length of the path shown, and the depth.
  auto Lengths = [&] { return std::to_string (Path (W).size ()) + " " + std::to_string (W->Depth); };
  for (int I = 0; I < 5; I++) Activate (W, Name);
  EXPECT_EQ (Lengths (), "505 5");
  EXPECT_TRUE (Boxes ().empty ());
  Activate (W, Name);
  EXPECT_EQ (Lengths (), "505 5");
  EXPECT_EQ (Boxes (), OneMessageBox (Name, Res (nullptr, "fail_path_too_long")));
  EXPECT_EQ (Names (W), std::vector<std::string> ({".", "..", Name}));
  Activate (W, "..");
  EXPECT_EQ (Lengths (), "404 4");
}

TEST_F (MainWindowTest, StatusTextsFollowSelection) {
  int V = MakeVolume ("a");
  MakeDir (V, "sub");
  for (const char *N : {"one.txt", "two.txt", "three.txt"}) WriteFile (V, std::string ("sub/") + N, "x");
  MAIN_WINDOW *W = Open (V, "\\sub");
  ASSERT_EQ (W->List->RowCount, 5);
  CONTROL *Field = reinterpret_cast<MENU_HEADER *> (W->MenuBar)->PathField;

  Controls ().SelectRows (W->List, {Row (W, "two.txt")});
  EXPECT_EQ (Status (W), "\\sub\\two.txt");
  EXPECT_EQ (Base ().WindowText (Field), "\\sub\\two.txt");
  EXPECT_EQ (CommandStates (W), "gouplayer:11 copy file:11 paste file:00 delete:11 newdir:1");

  Controls ().SelectRows (W->List, {2, 3, 4});
  EXPECT_EQ (Status (W), Format (Res (nullptr, "files_selected"), 3));

  Controls ().SelectRows (W->List, {});
  EXPECT_EQ (Status (W), Format (Res (nullptr, "files_total"), 5));
  EXPECT_EQ (CommandStates (W), "gouplayer:11 copy file:00 paste file:00 delete:00 newdir:1");
}

TEST_F (MainWindowTest, PathStatusStopsAt250Characters) {
  int V = MakeVolume ("a");
  std::string A (150, 'a');
  std::string B249 (97, 'b'), B250 (98, 'b');   // "\" + 150 + "\" + 97 = 249
  MakeDir (V, A + "/" + B249);
  MakeDir (V, A + "/" + B250);
  MAIN_WINDOW *W = Open (V);
  std::string Path249 = "\\" + A + "\\" + B249;
  Open (V, Path249.c_str ());
  EXPECT_EQ (Status (W), Path249 + "\\");
  std::string Path250 = "\\" + A + "\\" + B250;
  Open (V, Path250.c_str ());
  EXPECT_EQ (Path (W), Path250);
  EXPECT_EQ (Status (W), Path249 + "\\");
}


// What a listing cannot show is said in status field 1: names too long for a
// record, names holding "\", entries that cannot be read, and rows past the
// limits of the listing and of the list.
TEST_F (MainWindowTest, StatusSaysWhatTheListingLeftOutAndWhy) {
  int V = MakeVolume ("odd");
  WriteFile (V, "plain.txt", "x");
  WriteFile (V, std::string (200, 'L'), "x");
  WriteFile (V, "back\\slash", "x");
  mkfifo ((VolumePath (V) / "pipe").c_str (), 0600);   // neither file nor folder
  MakeDir (V, "clean");
  MAIN_WINDOW *W = Open (V);
  EXPECT_EQ (Names (W), std::vector<std::string> ({"clean", "plain.txt"}));
  auto Part = [this] (const char *Key, int Count) { return Format (Res (nullptr, Key), Count); };
  EXPECT_EQ (Status (W, 1), Part ("left_long_names", 1) + ", " + Part ("left_backslash_names", 1) + ", " +
                                Part ("left_unreadable", 1));

  Activate (W, "clean");
  EXPECT_EQ (Status (W, 1), "");

  // 70000 entries: the listing holds 65535 records, the list 65534 rows.
  LISTING_NOTES Notes {};
  Notes.Listed = 65535;
  Notes.OverLimit = 70000 - 65535;
  FolderOverride Big (Env ().files ().Table (), "\\clean", Notes, 65535);
  Activate (W, "..");
  Activate (W, "clean");
  EXPECT_EQ (W->List->RowCount, 65534);
  EXPECT_EQ (Status (W, 1), Part ("left_over_limit", 70000 - 65534));
}

// A folder that cannot be read is not shown as empty: a message box says so
// and the window stays on the folder the user stepped from.
TEST_F (MainWindowTest, UnreadableFolderIsReportedAndTheWindowStaysWhereItWas) {
  int V = MakeVolume ("locked");
  MakeDir (V, "a/locked");
  MakeDir (V, "a/open");
  MAIN_WINDOW *W = Open (V, "\\a");
  FolderOverride Locked (Env ().files ().Table (), "\\a\\locked", UnreadableFolderNotes ());
  Base ().ClearMessageBoxes ();
  Activate (W, "locked");
  EXPECT_EQ (Boxes (), OneMessageBox ("\\a\\locked", Res (nullptr, "fail_read_folder")));
  EXPECT_EQ (Where (W), "\\a 1");
  EXPECT_EQ (Names (W), std::vector<std::string> ({".", "..", "locked", "open"}));
  EXPECT_EQ (W->List->CurrentRow, Row (W, "locked"));
  EXPECT_EQ (CommandStates (W), "gouplayer:11 copy file:11 paste file:00 delete:11 newdir:1");
}

}  // namespace
