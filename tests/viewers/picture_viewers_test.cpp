// The image viewer on real BMP and JPEG files and the icon viewer on real ICO
// files: the refusals, the placement rules of their windows, the images taken
// and what their painting puts into the framebuffer.
#include <string>

#include "env/gui/gui_driver.h"
#include "env/render/renderer.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"
#include "support/window_views.h"
#include "support/image_builders.h"
#include "viewers/viewer_records.h"
#include "viewers/viewers.h"

namespace {

using test_images::AsString;
using test_images::IcoColour;
using Sizes = std::vector<std::pair<int, int>>;

class PictureViewerTest : public DriverTest {
 protected:
  void SetUp () override {
    DriverTest::SetUp ();
    Volume = MakeVolume ("pics", 0, 0, 1, "PICS");
  }
  IMAGE_VIEWER *OpenImage (const std::string &Path) {
    return reinterpret_cast<IMAGE_VIEWER *> (
        OpenImageViewer (100, 100, (UINT8)Volume, reinterpret_cast<const CHAR8 *> (Path.c_str ())));
  }
  // Writes Bytes to the file Name and opens it in the image viewer.
  IMAGE_VIEWER *Image (const std::string &Name, const std::vector<uint8_t> &Bytes) {
    WriteFile (Volume, Name, AsString (Bytes));
    return OpenImage ("\\" + Name);
  }
  // Writes Bytes to the file Name and opens it in the icon viewer at X, Y.
  ICON_VIEWER *Icons (const std::string &Name, const std::string &Bytes, UINT16 X = 20, UINT16 Y = 20) {
    WriteFile (Volume, Name, Bytes);
    std::string Path = "\\" + Name;
    return reinterpret_cast<ICON_VIEWER *> (
        OpenIconViewer (X, Y, (UINT8)Volume, reinterpret_cast<const CHAR8 *> (Path.c_str ())));
  }
  ICON_VIEWER *Ico (const std::string &Name, const Sizes &Images, UINT16 X = 20, UINT16 Y = 20) {
    return Icons (Name, AsString (test_images::Ico (Images)), X, Y);
  }
  // The rectangle of a viewer's window; all zero when there is none.
  template <typename Viewer> Rect Placed (Viewer *V) { return V != nullptr ? RectOf (&V->Header) : Rect {}; }
  uint32_t Pixel (int X, int Y) { return Env ().gui ().PixelAt (X, Y); }
  // The picture a viewer holds: "width x height x bits".
  std::string Picture (IMAGE_VIEWER *V) {
    return std::to_string (V->ImageWidth) + "x" + std::to_string (V->ImageHeight) + "x" +
           std::to_string (V->BitsPerPixel);
  }

  int Volume = -1;
};

TEST_F (PictureViewerTest, ImageWindowIsPlacedBySizeRulesNotWhereAsked) {
  const int CH = Wb ()->CaptionHeight;
  ASSERT_EQ (Gui ()->ScreenWidth, 1024);
  ASSERT_EQ (Gui ()->ScreenHeight, 768);

  // Small picture: picture + 20 on each axis, centred.
  IMAGE_VIEWER *Small = Image ("small.bmp", test_images::Bmp (100, 80));
  ASSERT_NE (Small, nullptr);
  EXPECT_EQ (Placed (Small), (Rect {452, 334, 120, 100}));
  EXPECT_EQ (Small->Header.ObjectSize, 296u);
  EXPECT_EQ (Picture (Small), "100x80x24");
  EXPECT_NE (Small->Pixels, nullptr);
  EXPECT_NE (Small->Header.Flags & 0x80u, 0u);
  EXPECT_EQ (Env ().windows ().WindowText (&Small->Header), "PICS  \\small.bmp");

  // Below SW + 6 but too wide for the margin, or too tall for it: nearly the
  // whole screen at 3, 3.
  const Rect Nearly = {3, 3, 1024 - 16, 768 - CH - 10};
  EXPECT_EQ (Placed (Image ("wide.bmp", test_images::Bmp (1010, 10))), Nearly);
  EXPECT_EQ (Placed (Image ("wider.bmp", test_images::Bmp (1029, 10))), Nearly);
  EXPECT_EQ (Placed (Image ("tall.bmp", test_images::Bmp (10, 768 - CH - 11))), Nearly);
  // Not below SW + 6, or not below SH - CH - 10: SW - 100 by SH - 160, centred.
  EXPECT_EQ (Placed (Image ("huge.bmp", test_images::Bmp (1030, 10))), (Rect {50, 80, 924, 608}));
  EXPECT_EQ (Placed (Image ("taller.bmp", test_images::Bmp (10, 768 - CH - 10))), (Rect {50, 80, 924, 608}));
  EXPECT_TRUE (Env ().windows ().MessageBoxes ().empty ());
}

TEST_F (PictureViewerTest, OnlyBmpAndJpgByTheFirstDotAreOpened) {
  IMAGE_VIEWER *Photo = Image ("PHOTO.JPG", test_images::Jpeg (64, 48));
  ASSERT_NE (Photo, nullptr);
  EXPECT_EQ (Placed (Photo), (Rect {470, 350, 84, 68}));
  EXPECT_EQ (Picture (Photo), "64x48x24");
  EXPECT_NE (Image ("Mixed.Bmp", test_images::Bmp (8, 8)), nullptr);

  size_t Windows = Env ().windows ().TopLevelWindows ().size ();
  EXPECT_EQ (Image ("x.gif", test_images::Bmp (8, 8)), nullptr);
  EXPECT_EQ (Image ("a.b.jpg", test_images::Jpeg (8, 8)), nullptr);   // extension "b.jpg"
  EXPECT_EQ (Image ("noext", test_images::Bmp (8, 8)), nullptr);
  EXPECT_EQ (Image ("jpeg.bmp", test_images::Jpeg (8, 8)), nullptr);  // decoded by its extension
  EXPECT_EQ (OpenImage ("\\missing.bmp"), nullptr);
  EXPECT_EQ (OpenImage ("\\dir\\"), nullptr);
  std::string Long (124, 'n');
  EXPECT_EQ (Image (Long + ".bmp", test_images::Bmp (8, 8)), nullptr);   // 127 + 1 characters
  EXPECT_EQ (Env ().windows ().TopLevelWindows ().size (), Windows);
  EXPECT_NE (Image (Long.substr (1) + ".bmp", test_images::Bmp (8, 8)), nullptr);   // 127 characters
  EXPECT_TRUE (Env ().windows ().MessageBoxes ().empty ());
}

TEST_F (PictureViewerTest, DamagedImagesGiveNoWindow) {
  auto Cut = test_images::Bmp (100, 80);
  Cut.resize (200);
  auto Broken = test_images::Jpeg (32, 32);   // its start marker, then junk
  Broken.resize (2);
  Broken.insert (Broken.end (), 300, 0x55);
  const std::pair<const char *, std::vector<uint8_t>> Damaged[] = {
      {"cut.bmp", Cut},    {"broken.jpg", Broken},
      {"empty.jpg", {}},   {"empty.bmp", {}},
      {"text.bmp", std::vector<uint8_t> (64, 'B')}};
  for (const auto &[Name, Bytes] : Damaged) EXPECT_EQ (Image (Name, Bytes), nullptr) << Name;
  EXPECT_TRUE (Env ().windows ().TopLevelWindows ().empty ());
  EXPECT_TRUE (Env ().windows ().MessageBoxes ().empty ());
}

TEST_F (PictureViewerTest, ImagePaintingStretchesOrCentresThePictureOnWhite) {
  // 40 x 20 in a 60 x 40 window: the client area is shorter than the
  // picture, so it is stretched to the client area less one pixel a side.
  IMAGE_VIEWER *Viewer = Image ("red.bmp", test_images::Bmp (40, 20, 24, [] (uint32_t, uint32_t) {
                                  return 0xFFCC0000u;
                                }));
  ASSERT_NE (Viewer, nullptr);
  UINT16 Client[4];
  Wb ()->GetClientRect (&Viewer->Header, Client);
  ASSERT_LT (Client[3] - 2, 20);
  env::RenderDesktop (Env ());
  EXPECT_EQ (Pixel (Client[0] + 1, Client[1] + 1), 0xCC0000u);
  EXPECT_EQ (Pixel (Client[0] + Client[2] - 2, Client[1] + Client[3] - 2), 0xCC0000u);

  // Made larger by the window base, the picture fits: drawn at its size in the middle.
  Viewer->Header.Width = 200;
  Viewer->Header.Height = 150;
  Wb ()->GetClientRect (&Viewer->Header, Client);
  ASSERT_GT (Client[2], 42);
  env::RenderDesktop (Env ());
  int DX = Client[0] + 1 + (Client[2] - 2 - 40) / 2;
  int DY = Client[1] + 1 + (Client[3] - 2 - 20) / 2;
  // Its corners, and white just left of, right of and below it.
  EXPECT_EQ ((std::vector<uint32_t> {Pixel (DX, DY), Pixel (DX + 39, DY + 19), Pixel (DX - 1, DY),
                                     Pixel (DX + 40, DY + 19), Pixel (DX, DY + 20)}),
             (std::vector<uint32_t> {0xCC0000u, 0xCC0000u, 0xFFFFFFu, 0xFFFFFFu, 0xFFFFFFu}));

  // A resize notice with byte 1 set draws the picture and is not taken.
  uint64_t Before = Env ().gui ().DrawCount ();
  MESSAGE Resize = MessageOf (MSG_RESIZE, 0, 1);
  EXPECT_EQ (Viewer->Header.Handler (&Viewer->Header, &Resize), 0);
  EXPECT_GT (Env ().gui ().DrawCount (), Before);
  MESSAGE Activate = MessageOf (MSG_ACTIVATE);
  EXPECT_EQ (Viewer->Header.Handler (&Viewer->Header, &Activate), 1);
}

TEST_F (PictureViewerTest, ThirtyTwoBitPicturesAreDrawnWithAlpha) {
  auto Clear = [] (uint32_t, uint32_t) { return 0x800000FFu; };   // half transparent blue
  IMAGE_VIEWER *Alpha = Image ("clear.bmp", test_images::Bmp (40, 20, 32, Clear));
  ASSERT_NE (Alpha, nullptr);
  EXPECT_EQ (Alpha->BitsPerPixel, 32);
  UINT16 Client[4];
  Wb ()->GetClientRect (&Alpha->Header, Client);
  env::RenderDesktop (Env ());
  uint32_t Blended = Pixel (Client[0] + 5, Client[1] + 5);
  EXPECT_EQ (Blended & 0xFF, 0xFFu);
  EXPECT_GE ((Blended >> 16) & 0xFF, 0x70u) << std::hex << Blended;   // white shows through
  EXPECT_LE ((Blended >> 16) & 0xFF, 0x90u) << std::hex << Blended;
  Env ().windows ().SendSysCommand (&Alpha->Header, 4);
  Env ().windows ().PumpMessages ();

  IMAGE_VIEWER *Opaque = Image ("solid.bmp", test_images::Bmp (40, 20, 24, Clear));
  ASSERT_NE (Opaque, nullptr);
  Wb ()->GetClientRect (&Opaque->Header, Client);
  env::RenderDesktop (Env ());
  EXPECT_EQ (Pixel (Client[0] + 5, Client[1] + 5), 0x0000FFu);
}

TEST_F (PictureViewerTest, ThreeSmallIconsGiveA400By300WindowAndAreFreedWithIt) {
  size_t IconsBefore = Env ().windows ().LiveIconCount ();
  ICON_VIEWER *Viewer = Ico ("three.ico", Sizes (3, {32, 32}));
  ASSERT_NE (Viewer, nullptr);
  EXPECT_EQ (Placed (Viewer), (Rect {20, 20, 400, 300}));
  EXPECT_EQ (Viewer->Header.ObjectSize, 328u);
  ASSERT_EQ (Viewer->IconCount, 3);
  EXPECT_EQ (Env ().windows ().WindowText (&Viewer->Header), "PICS  \\three.ico");
  EXPECT_EQ (Env ().windows ().LiveIconCount (), IconsBefore + 3);

  EXPECT_EQ (Env ().windows ().SendSysCommand (&Viewer->Header, 4), 1u);
  Env ().windows ().PumpMessages ();
  EXPECT_EQ (Env ().windows ().LiveIconCount (), IconsBefore);
}

TEST_F (PictureViewerTest, IconWindowFollowsTheRowOfImagesAndTheScreenEdges) {
  const int CH = Wb ()->CaptionHeight;   // and a character width of 8: (8 / 2) * 3 = 12
  ASSERT_EQ (Gui ()->GetCharWidth (), 8);
  // Row of 10 + 3 x 130 = 400: neither over the screen nor under 400, so the
  // created 200 stays; the height covers the tallest image.
  EXPECT_EQ (Placed (Ico ("mid.ico", Sizes (3, {120, 100}))), (Rect {20, 20, 200, 150}));
  EXPECT_EQ (Placed (Ico ("midtall.ico", Sizes (3, {120, 120}))), (Rect {20, 20, 200, 120 + CH + 12 + 10}));
  // A row wider than the screen: 750 wide.
  EXPECT_EQ (Placed (Ico ("wide.ico", Sizes (8, {128, 64}))), (Rect {20, 20, 750, 562}));
  // A very tall image: the height is the screen's, and the window moves to y 0.
  EXPECT_EQ (Placed (Ico ("tall.ico", {{40, 900}})), (Rect {20, 0, 400, 768}));
  ICON_VIEWER *Nine = Ico ("nine.ico", Sizes (9, {16, 16}));
  ASSERT_NE (Nine, nullptr);
  EXPECT_EQ (Nine->IconCount, 8);
  // A window that would reach the screen's edge moves to 0 on that axis.
  EXPECT_EQ (Placed (Ico ("a.ico", {{32, 32}}, 623, 467)), (Rect {623, 467, 400, 300}));
  EXPECT_EQ (Placed (Ico ("b.ico", {{32, 32}}, 624, 467)), (Rect {0, 467, 400, 300}));
  EXPECT_EQ (Placed (Ico ("c.ico", {{32, 32}}, 623, 468)), (Rect {623, 0, 400, 300}));
}

TEST_F (PictureViewerTest, FilesWithoutIconsStillGetAWindow) {
  size_t IconsBefore = Env ().windows ().LiveIconCount ();
  ICON_VIEWER *Text = Icons ("notes.ico", "this is not an icon file at all");
  ASSERT_NE (Text, nullptr);
  EXPECT_EQ (Placed (Text), (Rect {20, 20, 400, 300}));
  EXPECT_EQ (Text->IconCount, 0);
  EXPECT_EQ (Placed (Icons ("empty.ico", "")), (Rect {20, 20, 400, 300}));
  ICON_VIEWER *Missing = reinterpret_cast<ICON_VIEWER *> (OpenIconViewer (20, 20, (UINT8)Volume, "\\none.ico"_a));
  ASSERT_NE (Missing, nullptr);
  EXPECT_EQ (Placed (Missing), (Rect {20, 20, 400, 300}));
  EXPECT_EQ (Missing->IconCount, 0);

  // A header that claims 200 images but holds two: only real images are taken.
  ICON_VIEWER *Claims = Icons ("claims.ico", AsString (test_images::Ico (Sizes (2, {32, 32}), 200)));
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

TEST_F (PictureViewerTest, IconsAreLaidOutInRowsUntilOneNoLongerFits) {
  // Six 120 x 20 images in a 200 x 150 window: one image a row, the sixth
  // would pass the bottom limit and ends the drawing.
  ICON_VIEWER *Viewer = Ico ("rows.ico", Sizes (6, {120, 20}));
  ASSERT_NE (Viewer, nullptr);
  EXPECT_EQ (Placed (Viewer), (Rect {20, 20, 200, 150}));
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
  ASSERT_NE (Ico ("row.ico", Sizes (3, {32, 32}), 500, 300), nullptr);
  env::RenderDesktop (Env ());
  for (int I = 0; I < 3; I++) EXPECT_EQ (Pixel (510 + 36 * I, 300 + CH + 6), IcoColour (I)) << "image " << I;
  EXPECT_EQ (Pixel (510 + 32, 300 + CH + 6), 0xFFFFFFu);
}

}  // namespace
