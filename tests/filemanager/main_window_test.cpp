// Opening, placing and closing main windows.

#include "support/main_window_fixture.h"

namespace {

TEST_F (MainWindowTest, OneWindowPerVolumeAndPathSwitch) {
  int V = MakeVolume ("vol", 0, 0, 1, "DATA");
  WriteFile (V, "sub/inner.txt", "x");
  MAIN_WINDOW *W = Open (V);
  ASSERT_NE (W, nullptr);
  EXPECT_EQ (W->Header.ObjectSize, 984u);
  EXPECT_EQ (Base ().WindowText (&W->Header) + " " + std::to_string (W->VolumeIndex) + " " + Path (W),
             "DATA " + std::to_string (V) + " \\");
  EXPECT_EQ (Names (W), std::vector<std::string> ({"sub"}));
  // At the root with an empty clipboard: go up and paste are off, the rest on.
  EXPECT_EQ (CommandStates (W), "gouplayer:00 copy file:11 paste file:00 delete:11 newdir:1");

  EXPECT_EQ (Open (V), W);   // without a path nothing changes
  EXPECT_EQ (Open (V, "\\sub"), W);
  EXPECT_EQ (Where (W), "\\sub 1");
  EXPECT_EQ (Names (W), std::vector<std::string> ({".", "..", "inner.txt"}));
  EXPECT_EQ (Base ().WindowText (reinterpret_cast<MENU_HEADER *> (W->MenuBar)->PathField), "\\sub\\");
  EXPECT_EQ (CommandStates (W), "gouplayer:11 copy file:11 paste file:00 delete:11 newdir:1");

  // A new window on an unreachable initial path falls back to the root.
  MAIN_WINDOW *W2 = Open (MakeVolume ("other"), "\\missing");
  ASSERT_NE (W2, W);
  EXPECT_EQ (Path (W2), "\\");
}

TEST_F (MainWindowTest, FirstWindowOfALoadStartsFromTheRememberedRectangleThenCascades) {
  struct Case {
    std::string Stored;
    std::vector<Rect> Windows;
  } Cases[] = {
      {"", {{100, 100, 400, 300}, {130, 130, 400, 300}, {50, 50, 400, 300}, {80, 80, 400, 300}}},
      {"200,150,640,480", {{200, 150, 640, 480}, {50, 50, 640, 480}}},   // 230,180 reaches 150: back to 50,50
      {"10,20,300,200", {{100, 100, 400, 300}}},                         // below the minimum: ignored
  };
  for (const Case &C : Cases) {
    SCOPED_TRACE (C.Stored);
    TearDown ();
    SetUp ();
    if (!C.Stored.empty ()) Settings ().Set ("Surveyor", "Position", C.Stored);
    for (size_t I = 0; I < C.Windows.size (); I++) {
      MAIN_WINDOW *W = Open (MakeVolume ("v" + std::to_string (I)));
      ASSERT_NE (W, nullptr);
      EXPECT_EQ (RectOf (&W->Header), C.Windows[I]) << "window " << I;
    }
  }
}

TEST_F (MainWindowTest, RequestedSizeLaysOutListThenDefaultSizeApplies) {
  UINT16 Lh = Gui ()->GetLineHeight ();
  MAIN_WINDOW *First = Open (MakeVolume ("a"));
  ASSERT_NE (First, nullptr);
  int Top = First->MenuBar->Y + First->MenuBar->Height + 1;
  EXPECT_EQ (RectOf (&First->List->Control), (Rect {2, Top, 400 - 5, 300 - (Lh + 8) - Top}));

  MAIN_WINDOW *Big = Open (MakeVolume ("b"), "", 640, 480);
  EXPECT_EQ (RectOf (&Big->List->Control), (Rect {2, Top, 640 - 5, 480 - (Lh + 8) - Top}));
  EXPECT_EQ (RectOf (&Big->Header), (Rect {130, 130, 400, 300}));

  // Too narrow, too low, or off the screen: created at 500 x 375.
  MAIN_WINDOW *Narrow = Open (MakeVolume ("c"), "", 90, 300);
  EXPECT_EQ (RectOf (&Narrow->List->Control), (Rect {2, Top, 500 - 5, 375 - (Lh + 8) - Top}));
  EXPECT_EQ (Open (MakeVolume ("d"), "", 400, 99)->List->Control.Width, 500 - 5);
  EXPECT_EQ (Open (MakeVolume ("e"), "", 1024, 300)->List->Control.Width, 500 - 5);

  MESSAGE Resize = MessageOf (MSG_RESIZE, 600);
  Resize.Word4 = 450;
  Send (Big, Resize);
  EXPECT_EQ (RectOf (&Big->Header), (Rect {130, 130, 600, 450}));
  EXPECT_EQ (RectOf (&Big->List->Control), (Rect {2, Top, 595, 450 - (Lh + 8) - Top}));
  EXPECT_EQ (Big->MenuBar->Width, 595);
  // Below 20 characters wide, or without room for six lines of list: refused.
  Resize.Word2 = 20 * Gui ()->GetCharWidth () - 1;
  Send (Big, Resize);
  Resize.Word2 = 600;
  Resize.Word4 = static_cast<UINT16> (Top - 1 + 6 * Lh - 1);
  Send (Big, Resize);
  EXPECT_EQ (RectOf (&Big->Header), (Rect {130, 130, 600, 450}));
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
  EXPECT_EQ (CommandStates (W), "gouplayer:00 copy file:11 paste file:00 delete:00 newdir:0");

  // Nor does the notice that the clipboard filled enable paste.
  Send (W, MessageOf (MSG_CLIPBOARD, 0, 1));
  EXPECT_EQ (CommandStates (W), "gouplayer:00 copy file:11 paste file:00 delete:00 newdir:0");

  // Selecting a row enables copy, but delete stays off.
  Controls ().SelectRows (W->List, {0});
  EXPECT_EQ (CommandStates (W), "gouplayer:00 copy file:11 paste file:00 delete:00 newdir:0");
}

TEST_F (MainWindowTest, ClosingLastWindowStoresItsRectangle) {
  MAIN_WINDOW *A = Open (MakeVolume ("a"));
  MAIN_WINDOW *B = Open (MakeVolume ("b"));
  std::string Value;
  B->Header.X = 210;
  Close (B);
  EXPECT_FALSE (Settings ().Get ("Surveyor", "Position", Value));
  A->Header.X = 123, A->Header.Y = 45, A->Header.Width = 512, A->Header.Height = 384;
  int VolumeA = A->VolumeIndex;
  unsigned Flushes = Env ().files ().FlushCount (VolumeA);
  Close (A);
  ASSERT_TRUE (Settings ().Get ("Surveyor", "Position", Value));
  EXPECT_EQ (Value, "123,45,512,384");
  EXPECT_EQ (Env ().files ().FlushCount (VolumeA), Flushes + 1);

  // The next window takes that size and cascades on from that place: 153,75 restarts at 50,50.
  MAIN_WINDOW *C = Open (MakeVolume ("c"));
  EXPECT_EQ (RectOf (&C->Header), (Rect {50, 50, 512, 384}));

  // A maximised window stores the rectangle it will be restored to.
  C->Header.Flags |= WINDOW_FLAG_MAXIMIZED;
  C->Header.RestoreX = 11, C->Header.RestoreY = 22, C->Header.RestoreWidth = 433, C->Header.RestoreHeight = 344;
  Close (C);
  ASSERT_TRUE (Settings ().Get ("Surveyor", "Position", Value));
  EXPECT_EQ (Value, "11,22,433,344");
}

TEST_F (MainWindowTest, ExitAndAboutCommands) {
  MAIN_WINDOW *W = Open (MakeVolume ("a"));
  Base ().ClearMessageBoxes ();
  env::PopupItemInfo About = Base ().PopupItems (W->HelpPopup)[0];
  About.Command (About.Item, About.Context);
  EXPECT_EQ (Boxes (), OneMessageBox (Res ("base", "strAboutCap"), Res ("base", "strAboutString")));

  env::PopupItemInfo Exit = FileItem (W, "exit");
  Exit.Command (Exit.Item, Exit.Context);
  EXPECT_TRUE (Base ().IsWindow (&W->Header));   // posted, not yet delivered
  Base ().PumpMessages ();
  EXPECT_FALSE (Base ().IsWindow (&W->Header));
  std::string Value;
  EXPECT_TRUE (Settings ().Get ("Surveyor", "Position", Value));
}

}  // namespace
