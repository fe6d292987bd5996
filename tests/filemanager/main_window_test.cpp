// Opening, placing and closing main windows.

#include "filemanager/main_window_fixture.h"
#include "filemanager/listing.h"
#include "fileops/file_ops.h"

namespace {

TEST_F (MainWindowTest, OneWindowPerVolumeAndPathSwitch) {
  int V = MakeVolume ("vol", 0, 0, 1, "DATA");
  MakeDir (V, "sub");
  WriteFile (V, "sub/inner.txt", "x");
  MAIN_WINDOW *W = Open (V);
  ASSERT_NE (W, nullptr);
  EXPECT_EQ (W->Header.ObjectSize, 984u);
  EXPECT_EQ (Base ().WindowText (&W->Header), "DATA");
  EXPECT_EQ (W->VolumeIndex, V);
  EXPECT_EQ (Path (W), "\\");
  EXPECT_EQ (Names (W), std::vector<std::string> ({"sub"}));
  // At the root with an empty clipboard: go up and paste are off, the rest on.
  EXPECT_FALSE (Enabled (Button (W, GoUpCommand)));
  EXPECT_FALSE (FileItem (W, "gouplayer").Enabled);
  EXPECT_FALSE (Enabled (Button (W, PasteCommand)));
  EXPECT_FALSE (FileItem (W, "paste file").Enabled);
  EXPECT_TRUE (FileItem (W, "newdir").Enabled);
  EXPECT_TRUE (Enabled (Button (W, DeleteCommand)));

  EXPECT_EQ (Open (V), W);   // without a path nothing changes
  EXPECT_EQ (Path (W), "\\");
  EXPECT_EQ (Open (V, "\\sub"), W);
  EXPECT_EQ (Path (W), "\\sub");
  EXPECT_EQ (W->Depth, 1);
  EXPECT_EQ (Names (W), std::vector<std::string> ({".", "..", "inner.txt"}));
  EXPECT_EQ (Base ().WindowText (reinterpret_cast<MENU_HEADER *> (W->MenuBar)->PathField), "\\sub\\");
  EXPECT_TRUE (Enabled (Button (W, GoUpCommand)));
  EXPECT_TRUE (FileItem (W, "gouplayer").Enabled);

  // A new window on an unreachable initial path falls back to the root.
  int V2 = MakeVolume ("other");
  MAIN_WINDOW *W2 = Open (V2, "\\missing");
  ASSERT_NE (W2, W);
  EXPECT_EQ (Path (W2), "\\");
}

TEST_F (MainWindowTest, CascadeFromFreshLoad) {
  const int Expected[4][2] = {{100, 100}, {130, 130}, {50, 50}, {80, 80}};
  for (int I = 0; I < 4; I++) {
    MAIN_WINDOW *W = Open (MakeVolume ("v" + std::to_string (I)));
    ASSERT_NE (W, nullptr);
    EXPECT_EQ (W->Header.X, Expected[I][0]) << I;
    EXPECT_EQ (W->Header.Y, Expected[I][1]) << I;
    EXPECT_EQ (W->Header.Width, 400) << I;
    EXPECT_EQ (W->Header.Height, 300) << I;
  }
}

TEST_F (MainWindowTest, RequestedSizeLaysOutListThenDefaultSizeApplies) {
  UINT16 Lh = Gui ()->GetLineHeight ();
  MAIN_WINDOW *First = Open (MakeVolume ("a"));
  ASSERT_NE (First, nullptr);
  UINT16 Top = First->MenuBar->Y + First->MenuBar->Height + 1;
  EXPECT_EQ (First->List->Control.X, 2);
  EXPECT_EQ (First->List->Control.Y, Top);

  MAIN_WINDOW *Big = Open (MakeVolume ("b"), nullptr, 640, 480);
  EXPECT_EQ (Big->List->Control.Width, 640 - 5);
  EXPECT_EQ (Big->List->Control.Height, 480 - (Lh + 8) - Top);
  EXPECT_EQ (Big->Header.Width, 400);
  EXPECT_EQ (Big->Header.Height, 300);

  // Too narrow, too low, or off the screen: created at 500 x 375.
  MAIN_WINDOW *Narrow = Open (MakeVolume ("c"), nullptr, 90, 300);
  EXPECT_EQ (Narrow->List->Control.Width, 500 - 5);
  EXPECT_EQ (Narrow->List->Control.Height, 375 - (Lh + 8) - Top);
  MAIN_WINDOW *Low = Open (MakeVolume ("d"), nullptr, 400, 99);
  EXPECT_EQ (Low->List->Control.Width, 500 - 5);
  MAIN_WINDOW *Huge = Open (MakeVolume ("e"), nullptr, 1024, 300);
  EXPECT_EQ (Huge->List->Control.Width, 500 - 5);

  // The next resize lays the list out again.
  MESSAGE Resize{};
  Resize.Type = MSG_RESIZE;
  Resize.Word2 = 600;
  Resize.Word4 = 450;
  Send (Big, Resize);
  EXPECT_EQ (Big->Header.Width, 600);
  EXPECT_EQ (Big->Header.Height, 450);
  EXPECT_EQ (Big->List->Control.Width, 595);
  EXPECT_EQ (Big->List->Control.Height, 450 - (Lh + 8) - Top);
  EXPECT_EQ (Big->MenuBar->Width, 595);
  // Below 20 characters wide, or without room for six lines of list: refused.
  Resize.Word2 = 20 * Gui ()->GetCharWidth () - 1;
  Send (Big, Resize);
  Resize.Word2 = 600;
  Resize.Word4 = static_cast<UINT16> (Top - 1 + 6 * Lh - 1);
  Send (Big, Resize);
  EXPECT_EQ (Big->Header.Width, 600);
  EXPECT_EQ (Big->Header.Height, 450);
}

TEST_F (MainWindowTest, FirstWindowRestoresRememberedRectangle) {
  Settings ().Set ("Surveyor", "Position", "200,150,640,480");
  MAIN_WINDOW *W = Open (MakeVolume ("a"));
  EXPECT_EQ (W->Header.X, 200);
  EXPECT_EQ (W->Header.Y, 150);
  EXPECT_EQ (W->Header.Width, 640);
  EXPECT_EQ (W->Header.Height, 480);
  // The next one cascades from there: 230,180 reaches 150 and restarts at 50,50.
  MAIN_WINDOW *Second = Open (MakeVolume ("b"));
  EXPECT_EQ (Second->Header.X, 50);
  EXPECT_EQ (Second->Header.Y, 50);
  EXPECT_EQ (Second->Header.Width, 640);
}

TEST_F (MainWindowTest, RememberedRectangleBelowMinimumIsIgnored) {
  Settings ().Set ("Surveyor", "Position", "10,20,300,200");
  MAIN_WINDOW *W = Open (MakeVolume ("a"));
  EXPECT_EQ (W->Header.X, 100);
  EXPECT_EQ (W->Header.Y, 100);
  EXPECT_EQ (W->Header.Width, 400);
  EXPECT_EQ (W->Header.Height, 300);
}

TEST_F (MainWindowTest, FileSystemLabelsInStatusField) {
  const std::pair<int, const char *> Labels[] = {
      {1, "FAT32"}, {2, "NTFS"}, {3, "EFI_RAW"}, {5, "KELDAR FAT"}, {6, "KELDAR NTFS"}, {8, "IMAGE"},
      {0, "UnKnown File System"}, {4, "UnKnown File System"}, {7, "UnKnown File System"}, {9, "UnKnown File System"}};
  for (const auto &[Type, Text] : Labels) {
    MAIN_WINDOW *W = Open (MakeVolume ("fs" + std::to_string (Type), 0, 0, static_cast<uint8_t> (Type)));
    ASSERT_NE (W, nullptr);
    EXPECT_EQ (Status (W, 2), Text) << "type " << Type;
    EXPECT_EQ (Base ().StatusLayout (&W->Header), 2);
  }
}

TEST_F (MainWindowTest, WriteProtectedVolumeKeepsChangesDisabled) {
  int Writable = MakeVolume ("w");
  WriteFile (Writable, "f.txt", "data");
  MAIN_WINDOW *Source = Open (Writable);
  Controls ().SelectRows (Source->List, {0});
  CopyCommand (nullptr, &Source->Header);   // the clipboard now holds something

  int ReadOnly = MakeVolume ("ro", 0x80);
  WriteFile (ReadOnly, "f.txt", "x");
  MAIN_WINDOW *W = Open (ReadOnly);
  EXPECT_EQ (W->ReadOnly, 1);
  EXPECT_FALSE (FileItem (W, "delete").Enabled);
  EXPECT_FALSE (FileItem (W, "paste file").Enabled);
  EXPECT_FALSE (FileItem (W, "newdir").Enabled);
  EXPECT_TRUE (FileItem (W, "copy file").Enabled);
  EXPECT_FALSE (Enabled (Button (W, PasteCommand)));
  EXPECT_FALSE (Enabled (Button (W, DeleteCommand)));

  MESSAGE Clip{};
  Clip.Type = MSG_CLIPBOARD;
  Clip.Code = 1;
  Send (W, Clip);
  EXPECT_FALSE (Enabled (Button (W, PasteCommand)));
  EXPECT_FALSE (FileItem (W, "paste file").Enabled);

  // Selecting a row enables copy, but delete stays off.
  Controls ().SelectRows (W->List, {0});
  EXPECT_TRUE (Enabled (Button (W, CopyCommand)));
  EXPECT_FALSE (Enabled (Button (W, DeleteCommand)));
  EXPECT_FALSE (FileItem (W, "delete").Enabled);
}

TEST_F (MainWindowTest, ClosingLastWindowStoresItsRectangle) {
  MAIN_WINDOW *A = Open (MakeVolume ("a"));
  MAIN_WINDOW *B = Open (MakeVolume ("b"));
  std::string Value;
  B->Header.X = 210;
  Close (B);
  EXPECT_FALSE (Settings ().Get ("Surveyor", "Position", Value));
  A->Header.X = 123;
  A->Header.Y = 45;
  A->Header.Width = 512;
  A->Header.Height = 384;
  unsigned Flushes = Env ().files ().FlushCount (A->VolumeIndex);
  int VolumeA = A->VolumeIndex;
  Close (A);
  ASSERT_TRUE (Settings ().Get ("Surveyor", "Position", Value));
  EXPECT_EQ (Value, "123,45,512,384");
  EXPECT_EQ (Env ().files ().FlushCount (VolumeA), Flushes + 1);

  // The next window starts from that rectangle (cascade position included).
  MAIN_WINDOW *C = Open (MakeVolume ("c"));
  EXPECT_EQ (C->Header.Width, 512);
  EXPECT_EQ (C->Header.Height, 384);

  // A maximised window stores the rectangle it will be restored to.
  C->Header.Flags |= WINDOW_FLAG_MAXIMIZED;
  C->Header.RestoreX = 11;
  C->Header.RestoreY = 22;
  C->Header.RestoreWidth = 433;
  C->Header.RestoreHeight = 344;
  Close (C);
  ASSERT_TRUE (Settings ().Get ("Surveyor", "Position", Value));
  EXPECT_EQ (Value, "11,22,433,344");
}

TEST_F (MainWindowTest, ExitAndAboutCommands) {
  MAIN_WINDOW *W = Open (MakeVolume ("a"));
  Base ().ClearMessageBoxes ();
  env::PopupItemInfo About = Base ().PopupItems (W->HelpPopup)[0];
  About.Command (About.Item, About.Context);
  ASSERT_EQ (Base ().MessageBoxes ().size (), 1u);
  EXPECT_EQ (Base ().MessageBoxes ()[0].Style, 1);
  EXPECT_EQ (Base ().MessageBoxes ()[0].Text, Res ("base", "strAboutString"));
  EXPECT_EQ (Base ().MessageBoxes ()[0].Caption, Res ("base", "strAboutCap"));

  env::PopupItemInfo Exit = FileItem (W, "exit");
  Exit.Command (Exit.Item, Exit.Context);
  EXPECT_TRUE (Base ().IsWindow (&W->Header));   // posted, not yet delivered
  Base ().PumpMessages ();
  EXPECT_FALSE (Base ().IsWindow (&W->Header));
  std::string Value;
  EXPECT_TRUE (Settings ().Get ("Surveyor", "Position", Value));
}

}  // namespace
