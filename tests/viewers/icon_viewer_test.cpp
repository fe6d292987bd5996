// The icon viewer on real ICO files: how many images it takes, how it sizes
// and places its window, how it lays the images out and what it frees.
#include <string>

#include "env/gui/gui_driver.h"
#include "env/render/renderer.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"
#include "viewers/test_images.h"
#include "viewers/viewer_records.h"
#include "viewers/viewers.h"

namespace {

using test_images::AsString;
using test_images::IcoColour;
using Sizes = std::vector<std::pair<uint32_t, uint32_t>>;

class IconViewerTest : public DriverTest {
 protected:
  void SetUp () override {
    DriverTest::SetUp ();
    Volume = MakeVolume ("icons", 0, 0, 1, "ICONS");
  }
  ICON_VIEWER *OpenWith (const std::string &Name, const std::string &Bytes, UINT16 X = 20, UINT16 Y = 20) {
    WriteFile (Volume, Name, Bytes);
    std::string Path = "\\" + Name;
    return reinterpret_cast<ICON_VIEWER *> (
        OpenIconViewer (X, Y, (UINT8)Volume, reinterpret_cast<const CHAR8 *> (Path.c_str ())));
  }
  ICON_VIEWER *OpenIco (const std::string &Name, const Sizes &Images, UINT16 X = 20, UINT16 Y = 20) {
    return OpenWith (Name, AsString (test_images::Ico (Images)), X, Y);
  }
  void ExpectRect (ICON_VIEWER *V, int X, int Y, int W, int H) {
    ASSERT_NE (V, nullptr);
    EXPECT_EQ (V->Header.X, X);
    EXPECT_EQ (V->Header.Y, Y);
    EXPECT_EQ (V->Header.Width, W);
    EXPECT_EQ (V->Header.Height, H);
  }
  uint32_t Pixel (int X, int Y) { return Env ().gui ().PixelAt (X, Y); }

  int Volume = -1;
};

TEST_F (IconViewerTest, ThreeSmallImagesGiveA400By300Window) {
  size_t IconsBefore = Env ().windows ().LiveIconCount ();
  ICON_VIEWER *Viewer = OpenIco ("three.ico", Sizes (3, {32, 32}));
  ExpectRect (Viewer, 20, 20, 400, 300);
  EXPECT_EQ (Viewer->Header.ObjectSize, 328u);
  ASSERT_EQ (Viewer->IconCount, 3);
  for (int I = 0; I < 3; I++) {
    EXPECT_EQ (Viewer->Icons[I].Width, 32);
    EXPECT_EQ (Viewer->Icons[I].Height, 32);
    EXPECT_LT (Viewer->Icons[I].IconId, ICON_NONE);
  }
  EXPECT_EQ (Env ().windows ().WindowText (&Viewer->Header), "ICONS  \\three.ico");
  EXPECT_EQ (Env ().windows ().LiveIconCount (), IconsBefore + 3);

  // Closing frees the images.
  EXPECT_EQ (Env ().windows ().SendSysCommand (&Viewer->Header, 4), 1u);
  Env ().windows ().PumpMessages ();
  EXPECT_EQ (Env ().windows ().LiveIconCount (), IconsBefore);
}

TEST_F (IconViewerTest, WidthAndHeightFollowTheRowOfImages) {
  const int CH = Wb ()->CaptionHeight;   // and a character width of 8: (8 / 2) * 3 = 12
  ASSERT_EQ (Gui ()->GetCharWidth (), 8);
  // Row of 10 + 3 x 130 = 400: neither over the screen nor under 400, so the
  // created 200 stays; the height covers the tallest image.
  ExpectRect (OpenIco ("mid.ico", Sizes (3, {120, 100})), 20, 20, 200, 150);
  ExpectRect (OpenIco ("midtall.ico", Sizes (3, {120, 120})), 20, 20, 200, 120 + CH + 12 + 10);
  // A row wider than the screen: 750 wide.
  ExpectRect (OpenIco ("wide.ico", Sizes (8, {128, 64})), 20, 20, 750, 562);
  // A very tall image: the height is the screen's, and the window moves to y 0.
  ExpectRect (OpenIco ("tall.ico", {{40, 900}}), 20, 0, 400, 768);
  // Nine images: only the first eight are taken.
  ICON_VIEWER *Nine = OpenIco ("nine.ico", Sizes (9, {16, 16}));
  ASSERT_NE (Nine, nullptr);
  EXPECT_EQ (Nine->IconCount, 8);
}

TEST_F (IconViewerTest, WindowsThatWouldReachTheScreenEdgeMoveToZero) {
  ExpectRect (OpenIco ("a.ico", {{32, 32}}, 623, 467), 623, 467, 400, 300);
  ExpectRect (OpenIco ("b.ico", {{32, 32}}, 624, 467), 0, 467, 400, 300);
  ExpectRect (OpenIco ("c.ico", {{32, 32}}, 623, 468), 623, 0, 400, 300);
}

TEST_F (IconViewerTest, FilesWithoutImagesStillGetAWindow) {
  size_t IconsBefore = Env ().windows ().LiveIconCount ();
  ICON_VIEWER *Text = OpenWith ("notes.ico", "this is not an icon file at all");
  ExpectRect (Text, 20, 20, 400, 300);
  EXPECT_EQ (Text->IconCount, 0);
  ExpectRect (OpenWith ("empty.ico", ""), 20, 20, 400, 300);
  ICON_VIEWER *Missing = reinterpret_cast<ICON_VIEWER *> (OpenIconViewer (20, 20, (UINT8)Volume, "\\none.ico"_a));
  ExpectRect (Missing, 20, 20, 400, 300);
  EXPECT_EQ (Missing->IconCount, 0);

  // A header that claims 200 images but holds two: only real images are taken.
  ICON_VIEWER *Claims = OpenWith ("claims.ico", AsString (test_images::Ico (Sizes (2, {32, 32}), 200)));
  ASSERT_NE (Claims, nullptr);
  EXPECT_LE (Claims->IconCount, 2);
  EXPECT_EQ (Env ().windows ().LiveIconCount (), IconsBefore + Claims->IconCount);
  EXPECT_TRUE (Env ().windows ().MessageBoxes ().empty ());

  // "No Icon Loaded" is written at (CH + 10, CH) inside the window.
  Wb ()->ActivateWindow (&Text->Header);
  env::RenderDesktop (Env ());
  const int CH = Wb ()->CaptionHeight;
  int Dark = 0;
  for (int Y = 20 + CH; Y < 20 + CH + 16; Y++)
    for (int X = 20 + CH + 10; X < 20 + CH + 10 + 14 * 8; X++)
      if (Pixel (X, Y) != 0xFFFFFFu) Dark++;
  EXPECT_GT (Dark, 50);
  EXPECT_EQ (Pixel (20 + 200, 20 + 200), 0xFFFFFFu);
}

TEST_F (IconViewerTest, ImagesAreLaidOutInRowsUntilOneNoLongerFits) {
  // Six 120 x 20 images in a 200 x 150 window: one image a row, the sixth
  // would pass the bottom limit and ends the drawing.
  ICON_VIEWER *Viewer = OpenIco ("rows.ico", Sizes (6, {120, 20}));
  ExpectRect (Viewer, 20, 20, 200, 150);
  ASSERT_EQ (Viewer->IconCount, 6);
  env::RenderDesktop (Env ());
  const int CH = Wb ()->CaptionHeight;
  const int Left = 20 + 10, Top = 20 + CH + 6;
  for (int I = 0; I < 5; I++) {
    EXPECT_EQ (Pixel (Left, Top + 20 * I), IcoColour (I)) << "image " << I;
    EXPECT_EQ (Pixel (Left + 119, Top + 20 * I + 19), IcoColour (I)) << "image " << I;
  }
  EXPECT_EQ (Pixel (Left + 120, Top), 0xFFFFFFu);
  EXPECT_EQ (Pixel (Left, Top + 100), 0xFFFFFFu);   // the sixth is not drawn

  // Small images share a row, 32 + CW / 2 apart.
  ICON_VIEWER *Row = OpenIco ("row.ico", Sizes (3, {32, 32}), 500, 300);
  ASSERT_NE (Row, nullptr);
  env::RenderDesktop (Env ());
  for (int I = 0; I < 3; I++) EXPECT_EQ (Pixel (510 + 36 * I, 300 + CH + 6), IcoColour (I)) << "image " << I;
  EXPECT_EQ (Pixel (510 + 32, 300 + CH + 6), 0xFFFFFFu);
}

}  // namespace
