// The hex viewer on real files: layout, page texts, paging and its button
// states, the non-zero page search, short reads and the refusals.
#include <filesystem>
#include <string>

#include "core/strings.h"
#include "env/controls/control_driver.h"
#include "env/files/file_driver.h"
#include "env/windows/window_base.h"
#include "platform/library.h"
#include "support/driver_fixture.h"
#include "support/window_views.h"
#include "viewers/viewer_records.h"
#include "viewers/viewers.h"

namespace {

std::string Text (const CHAR8 *S) { return S ? std::string (reinterpret_cast<const char *> (S)) : std::string (); }

std::string HexString (const char *Key) {
  return Text (GetString ("HexFile"_a, reinterpret_cast<const CHAR8 *> (Key)));
}

std::string PageText (UINT32 Page) {
  CHAR8 Buffer[64] = {};
  AsciiSPrint (Buffer, sizeof (Buffer), GetString ("HexFile"_a, "tipCurrentPage"_a), Page);
  return Text (Buffer);
}

class HexViewerTest : public DriverTest {
 protected:
  void SetUp () override {
    DriverTest::SetUp ();
    Volume = MakeVolume ("hex", 0, 0, 1, "DATA");
  }

  HEX_VIEWER *Open (const std::string &Path) {
    return reinterpret_cast<HEX_VIEWER *> (OpenHexViewer (50, 50, reinterpret_cast<const CHAR8 *> (Path.c_str ()),
                                                          (UINT8)Volume));
  }
  HEX_VIEWER *OpenWith (const std::string &Name, const std::string &Bytes) {
    WriteFile (Volume, Name, Bytes);
    return Open ("\\" + Name);
  }
  std::string Cell (HEX_VIEWER *Viewer, uint8_t Column, uint16_t Row) {
    return Env ().controls ().CellText (Viewer->List, Column, Row);
  }
  // A whole line: the offset, the 16 byte cells and the text, separated by spaces.
  std::string Line (HEX_VIEWER *Viewer, uint16_t Row) {
    std::string Out = Cell (Viewer, 0, Row);
    for (uint8_t Column = 1; Column <= 17; Column++) Out += " " + Cell (Viewer, Column, Row);
    return Out;
  }
  std::string PageField (HEX_VIEWER *Viewer) { return Env ().windows ().WindowText (Viewer->PageField); }
  UINTN Command (HEX_VIEWER *Viewer, uint16_t Code) { return Env ().windows ().SendSysCommand (&Viewer->Header, Code); }
  // Enabled state of page up, page down and the two searches, as "1101".
  std::string Buttons (HEX_VIEWER *Viewer) {
    std::string Out;
    for (UINT8 Id = HEX_BUTTON_PAGE_UP; Id <= HEX_BUTTON_FORWARD_NON_ZERO; Id++) {
      CONTROL *Button = Wb ()->GetControl (&Viewer->Header, Id);
      Out += Button != nullptr && (Button->Flags & WINDOW_FLAG_ENABLED) != 0 ? "1" : "0";
    }
    return Out;
  }
  // The page shown: its number, the page field's text, then Buttons.
  std::string Shown (HEX_VIEWER *Viewer) {
    return std::to_string (Viewer->CurrentPage) + " " + PageField (Viewer) + " " + Buttons (Viewer);
  }
  std::string Page (UINT32 Number, const char *ButtonStates) {
    return std::to_string (Number) + " " + PageText (Number) + " " + ButtonStates;
  }

  int Volume = -1;
};

TEST_F (HexViewerTest, TwentyByteFileLaysOutTheWindowAndShowsTwoLines) {
  HEX_VIEWER *Viewer = OpenWith ("small.bin", "ABCDEFGHIJKLMNOPQRST");
  ASSERT_NE (Viewer, nullptr);
  const int CH = Wb ()->CaptionHeight;
  const int LH = Gui ()->GetLineHeight ();
  ASSERT_EQ (Gui ()->GetCharWidth (), 8);

  // 48 character widths + 4 wide, three quarters of that high, where asked.
  EXPECT_EQ (Viewer->Header.ObjectSize, 840u);
  EXPECT_EQ (RectOf (&Viewer->Header), (Rect {50, 50, 388, 291}));
  EXPECT_EQ (Env ().windows ().WindowText (&Viewer->Header), "DATA  \\small.bin");
  EXPECT_EQ (Viewer->PageCount, 1u);

  LIST_CONTROL *List = Viewer->List;
  ASSERT_NE (List, nullptr);
  EXPECT_EQ (List->Option, 1);
  EXPECT_EQ (RectOf (&List->Control), (Rect {2, CH + LH + 22, 384, 291 - (CH + LH + 24)}));

  auto Columns = Env ().controls ().Columns (List);
  ASSERT_EQ (Columns.size (), 18u);
  auto Describe = [] (const env::ListColumnInfo &C) {
    return C.Title + "/" + std::to_string (C.Capacity) + "/" + std::to_string (C.Width) + "/" +
           std::to_string (C.Sortable) + std::to_string (C.RightAligned);
  };
  EXPECT_EQ (Describe (Columns[0]) + " " + Describe (Columns[1]) + " " + Describe (Columns[11]) + " " +
                Describe (Columns[16]) + " " + Describe (Columns[17]),
            HexString ("offset") + "/22/32/00 00/4/16/11 0A/4/16/11 0F/4/16/11 ASCII/19/96/00");

  // Two lines: the second shows bytes 16 to 19 and "--" after them.
  ASSERT_EQ (List->RowCount, 2);
  EXPECT_EQ (Line (Viewer, 0), "0000 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 ABCDEFGHIJKLMNOP");
  EXPECT_EQ (Line (Viewer, 1), "0010 51 52 53 54 -- -- -- -- -- -- -- -- -- -- -- -- QRST            ");

  // Buttons from right to left: page down, page up, "!0<<", ">>!0".
  struct {
    UINT8 Id;
    int X, Width;
    std::string Text;
  } Buttons[] = {{33, 288, 40, HexString ("pageup")},
                 {34, 338, 40, HexString ("pagedown")},
                 {35, 254, 24, "!0<<"},
                 {36, 220, 24, ">>!0"}};
  for (auto &B : Buttons) {
    CONTROL *Button = Wb ()->GetControl (&Viewer->Header, B.Id);
    ASSERT_NE (Button, nullptr) << "button " << int (B.Id);
    EXPECT_EQ (RectOf (Button), (Rect {B.X, CH + 6, B.Width, LH + 10})) << "button " << int (B.Id);
    EXPECT_EQ (Env ().windows ().WindowText (Button), B.Text);
  }

  // The information label, then the page field up to the leftmost button.
  CHAR8 Information[512] = {};
  AsciiSPrint (Information, sizeof (Information), GetString ("HexFile"_a, "tipFileInfo"_a), (UINT64)20, (UINT32)1);
  UINT16 T = Gui ()->GetTextWidth (Information);
  CONTROL *Label = nullptr;
  for (CONTROL *C : Env ().windows ().Controls (&Viewer->Header))
    if (C->Kind == CONTROL_KIND_TEXT_FIELD && C != Viewer->PageField) Label = C;
  ASSERT_NE (Label, nullptr);
  EXPECT_EQ (Env ().windows ().WindowText (Label), Text (Information));
  EXPECT_EQ (Label->Width, T + 4);
  EXPECT_EQ (Viewer->PageField->X, T + 11);
  EXPECT_EQ (Viewer->PageField->Width, 220 - (T + 7) - 8);
  EXPECT_EQ (PageField (Viewer), PageText (0));
}

TEST_F (HexViewerTest, TextColumnShowsControlBytesPrintablesAndDoubleByteCharacters) {
  std::string Bytes (64, 'x');
  Bytes.replace (0, 6, std::string ("\x1F\x20\x7F\x80\x41\x00", 6));
  Bytes[15] = '\x80';   // the lowest lead byte, in the last column: its pair is line 1's first byte
  Bytes[16] = '\xA1';
  Bytes[17] = 'y';
  Bytes[30] = '\xC4';   // a pair that ends exactly at the line's end
  Bytes[31] = '\xE3';
  HEX_VIEWER *Viewer = OpenWith ("text.bin", Bytes);
  ASSERT_NE (Viewer, nullptr);
  EXPECT_EQ (Line (Viewer, 0), "0000 1F 20 7F 80 41 00 78 78 78 78 78 78 78 78 78 80 . \x7F\x80\x41." +
                                   std::string (9, 'x') + "\x80\xA1");
  EXPECT_EQ (Line (Viewer, 1), "0010 A1 79 78 78 78 78 78 78 78 78 78 78 78 78 C4 E3  y" + std::string (12, 'x') +
                                   "\xC4\xE3");
  EXPECT_EQ (Cell (Viewer, 17, 2), "xxxxxxxxxxxxxxxx");
  EXPECT_EQ (Cell (Viewer, 17, 3), "xxxxxxxxxxxxxxxx");
}

TEST_F (HexViewerTest, OnePageOrNoneAndPagingDoesNothing) {
  std::string Bytes (4096, '\x01');
  Bytes[4095] = '\xB0';   // a lead byte with no second byte in the page: shown as "."
  HEX_VIEWER *Viewer = OpenWith ("page.bin", Bytes);
  HEX_VIEWER *Empty = OpenWith ("empty.bin", "");
  ASSERT_TRUE (Viewer != nullptr && Empty != nullptr);
  EXPECT_EQ (Viewer->PageCount, 1u);
  ASSERT_EQ (Viewer->List->RowCount, 256);
  EXPECT_EQ (Line (Viewer, 255), "0FF0 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 B0 " + std::string (16, '.'));
  EXPECT_EQ (Empty->PageCount + Empty->List->RowCount, 0u);
  EXPECT_EQ (PageField (Empty), PageText (0));
  for (uint16_t Code : {33, 34, 35, 36}) {
    EXPECT_EQ (Command (Viewer, Code), 0u) << "code " << Code;
    Command (Empty, Code);
    EXPECT_EQ (Viewer->CurrentPage + Empty->CurrentPage, 0u) << "code " << Code;
  }
}

TEST_F (HexViewerTest, PagingRewritesCellsAndFollowsTheButtonRules) {
  std::string Bytes (4097, '\x5A');
  Bytes[4096] = 'Q';
  HEX_VIEWER *Viewer = OpenWith ("two.bin", Bytes);
  ASSERT_NE (Viewer, nullptr);
  EXPECT_EQ (Viewer->PageCount, 2u);
  EXPECT_EQ (Viewer->List->RowCount, 256);
  std::string Gone = " -- -- -- -- -- -- -- -- -- -- -- -- -- -- -- -- " + std::string (16, ' ');

  EXPECT_EQ (Command (Viewer, 34), 0u);
  EXPECT_EQ (Shown (Viewer), Page (1, "1011"));
  EXPECT_EQ (Line (Viewer, 0), "0000 51 -- -- -- -- -- -- -- -- -- -- -- -- -- -- -- Q               ");
  EXPECT_EQ (Line (Viewer, 1), "0010" + Gone);
  EXPECT_EQ (Line (Viewer, 255), "0FF0" + Gone);
  Command (Viewer, 34);   // already on the last page
  EXPECT_EQ (Shown (Viewer), Page (1, "1011"));

  Command (Viewer, 33);
  EXPECT_EQ (Shown (Viewer), Page (0, "0111"));
  EXPECT_EQ (Cell (Viewer, 2, 0) + Cell (Viewer, 16, 255), "5A5A");
  EXPECT_GT (Env ().windows ().RedrawCount (Viewer->List), 0u);
  EXPECT_GT (Env ().windows ().RedrawCount (Viewer->PageField), 0u);

  // Keys do not page; the handler takes only restore, close and activation.
  Env ().windows ().SendKey (&Viewer->Header, 0, SCAN_CODE_DOWN, 0);
  EXPECT_EQ (Viewer->CurrentPage, 0u);
  EXPECT_EQ (HandlerAnswers (&Viewer->Header, {MessageOf (MSG_ACTIVATE), MessageOf (MSG_SYSCOMMAND, 2),
                                               MessageOf (MSG_SYSCOMMAND, 5), MessageOf (MSG_KEY, 5)}),
             "1100");

  // Closing releases the file.
  EXPECT_EQ (Env ().files ().OpenHandleCount (), 1u);
  EXPECT_EQ (Command (Viewer, 4), 1u);
  Env ().windows ().PumpMessages ();
  EXPECT_EQ (Env ().files ().OpenHandleCount (), 0u);
}

TEST_F (HexViewerTest, NonZeroSearchStopsOnDataOrAtTheEnds) {
  // Pages: 0 zero, 1 zero, 2 data, 3 zero, 4 zero, 5 zero (shorter).
  std::string Bytes (5 * 4096 + 100, '\0');
  Bytes[2 * 4096 + 4095] = '\x01';
  HEX_VIEWER *Viewer = OpenWith ("sparse.bin", Bytes);
  ASSERT_NE (Viewer, nullptr);
  ASSERT_EQ (Viewer->PageCount, 6u);

  Command (Viewer, 36);
  EXPECT_EQ (Shown (Viewer), Page (2, "1111"));
  EXPECT_EQ (Cell (Viewer, 16, 255), "01");
  Command (Viewer, 36);
  EXPECT_EQ (Shown (Viewer), Page (5, "1011"));   // the rest is zero: the last page
  EXPECT_EQ (Line (Viewer, 6), "0060 00 00 00 00 -- -- -- -- -- -- -- -- -- -- -- -- ....            ");
  EXPECT_EQ (Cell (Viewer, 1, 7), "--");
  Command (Viewer, 35);
  EXPECT_EQ (Shown (Viewer), Page (2, "1111"));
  Command (Viewer, 35);
  EXPECT_EQ (Shown (Viewer), Page (0, "0111"));   // only zero pages before it: page 0
}

TEST_F (HexViewerTest, ShortReadKeepsThePageShown) {
  std::string Bytes (3 * 4096, '\x22');
  std::fill (Bytes.begin (), Bytes.begin () + 4096, '\x11');
  HEX_VIEWER *Viewer = OpenWith ("shrinks.bin", Bytes);
  ASSERT_NE (Viewer, nullptr);
  std::filesystem::resize_file (VolumePath (Volume) / "shrinks.bin", 5000);

  Command (Viewer, 34);
  // The page number moves on, but nothing on screen changes.
  EXPECT_EQ (std::to_string (Viewer->CurrentPage) + " " + PageField (Viewer), "1 " + PageText (0));
  EXPECT_EQ (Cell (Viewer, 1, 0) + Cell (Viewer, 16, 255), "1111");
  EXPECT_EQ (Viewer->FileSize, 3u * 4096);
}

TEST_F (HexViewerTest, RefusalsShowTheirMessageAndOpenNothing) {
  MakeDir (Volume, "folder");
  size_t Windows = Env ().windows ().TopLevelWindows ().size ();
  EXPECT_EQ (Open ("\\folder"), nullptr);
  EXPECT_EQ (Open ("\\missing.bin"), nullptr);
  std::vector<std::string> Boxes = {HexString ("tip_notsupport") + ": \\folder",
                                    HexString ("tip_failOpen") + ": \\missing.bin"};
  EXPECT_EQ (ShownMessageBoxes (Env ().windows ()), Boxes);
  EXPECT_EQ (Env ().windows ().TopLevelWindows ().size (), Windows);
  EXPECT_EQ (Env ().files ().OpenHandleCount (), 0u);

  // Files of 64 GiB are refused, one byte less is shown.
  WriteFile (Volume, "huge.bin", "");
  WriteFile (Volume, "large.bin", "");
  std::error_code Error;
  std::filesystem::resize_file (VolumePath (Volume) / "huge.bin", 0x1000000000ull, Error);
  if (!Error) std::filesystem::resize_file (VolumePath (Volume) / "large.bin", 0x1000000000ull - 1, Error);
  if (Error) GTEST_SKIP () << "no sparse files here: " << Error.message ();
  EXPECT_EQ (Open ("\\huge.bin"), nullptr);
  Boxes.push_back (HexString ("tip_notsupport") + ": \\huge.bin");
  HEX_VIEWER *Viewer = Open ("\\large.bin");
  ASSERT_NE (Viewer, nullptr);
  EXPECT_EQ (Viewer->PageCount, 16777216u);
  EXPECT_EQ (Viewer->List->RowCount, 256);
  EXPECT_EQ (ShownMessageBoxes (Env ().windows ()), Boxes);
}

}  // namespace
