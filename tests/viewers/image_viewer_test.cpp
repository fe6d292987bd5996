// The image viewer on real BMP and JPEG files: the refusals, the window's
// placement rules and what its painting puts into the framebuffer.
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

class ImageViewerTest : public DriverTest {
 protected:
  void SetUp () override {
    DriverTest::SetUp ();
    Volume = MakeVolume ("pics", 0, 0, 1, "PICS");
  }
  IMAGE_VIEWER *Open (const std::string &Path) {
    return reinterpret_cast<IMAGE_VIEWER *> (
        OpenImageViewer (100, 100, (UINT8)Volume, reinterpret_cast<const CHAR8 *> (Path.c_str ())));
  }
  IMAGE_VIEWER *OpenWith (const std::string &Name, const std::vector<uint8_t> &Bytes) {
    WriteFile (Volume, Name, AsString (Bytes));
    return Open ("\\" + Name);
  }
  void ExpectRect (IMAGE_VIEWER *V, int X, int Y, int W, int H) {
    ASSERT_NE (V, nullptr);
    EXPECT_EQ (V->Header.X, X);
    EXPECT_EQ (V->Header.Y, Y);
    EXPECT_EQ (V->Header.Width, W);
    EXPECT_EQ (V->Header.Height, H);
  }
  uint32_t Pixel (int X, int Y) { return Env ().gui ().PixelAt (X, Y); }

  int Volume = -1;
};

TEST_F (ImageViewerTest, WindowIsPlacedBySizeRulesNotWhereAsked) {
  const int CH = Wb ()->CaptionHeight;
  ASSERT_EQ (Gui ()->ScreenWidth, 1024);
  ASSERT_EQ (Gui ()->ScreenHeight, 768);

  // Small picture: picture + 20 on each axis, centred.
  IMAGE_VIEWER *Small = OpenWith ("small.bmp", test_images::Bmp (100, 80));
  ExpectRect (Small, 452, 334, 120, 100);
  EXPECT_EQ (Small->Header.ObjectSize, 296u);
  EXPECT_EQ (Small->ImageWidth, 100);
  EXPECT_EQ (Small->ImageHeight, 80);
  EXPECT_EQ (Small->BitsPerPixel, 24);
  EXPECT_NE (Small->Pixels, nullptr);
  EXPECT_NE (Small->Header.Flags & 0x80u, 0u);
  EXPECT_EQ (Env ().windows ().WindowText (&Small->Header), "PICS  \\small.bmp");

  // Below SW + 6 but too wide for the margin: nearly the whole screen at 3, 3.
  ExpectRect (OpenWith ("wide.bmp", test_images::Bmp (1010, 10)), 3, 3, 1024 - 16, 768 - CH - 10);
  ExpectRect (OpenWith ("wider.bmp", test_images::Bmp (1029, 10)), 3, 3, 1024 - 16, 768 - CH - 10);
  // Too tall for the margin only.
  ExpectRect (OpenWith ("tall.bmp", test_images::Bmp (10, 768 - CH - 11)), 3, 3, 1024 - 16, 768 - CH - 10);
  // Not below SW + 6, or not below SH - CH - 10: SW - 100 by SH - 160, centred.
  ExpectRect (OpenWith ("huge.bmp", test_images::Bmp (1030, 10)), 50, 80, 924, 608);
  ExpectRect (OpenWith ("taller.bmp", test_images::Bmp (10, 768 - CH - 10)), 50, 80, 924, 608);
  EXPECT_TRUE (Env ().windows ().MessageBoxes ().empty ());
}

TEST_F (ImageViewerTest, OnlyBmpAndJpgByTheFirstDotAreOpened) {
  IMAGE_VIEWER *Photo = OpenWith ("PHOTO.JPG", test_images::Jpeg (64, 48));
  ExpectRect (Photo, 470, 350, 84, 68);
  EXPECT_EQ (Photo->ImageWidth, 64);
  EXPECT_EQ (Photo->ImageHeight, 48);
  EXPECT_EQ (Photo->BitsPerPixel, 24);
  EXPECT_NE (OpenWith ("Mixed.Bmp", test_images::Bmp (8, 8)), nullptr);

  size_t Windows = Env ().windows ().TopLevelWindows ().size ();
  EXPECT_EQ (OpenWith ("x.gif", test_images::Bmp (8, 8)), nullptr);
  EXPECT_EQ (OpenWith ("a.b.jpg", test_images::Jpeg (8, 8)), nullptr);   // extension "b.jpg"
  EXPECT_EQ (OpenWith ("noext", test_images::Bmp (8, 8)), nullptr);
  EXPECT_EQ (OpenWith ("jpeg.bmp", test_images::Jpeg (8, 8)), nullptr);  // decoded by its extension
  EXPECT_EQ (Open ("\\missing.bmp"), nullptr);
  EXPECT_EQ (Open ("\\dir\\"), nullptr);
  std::string Long (124, 'n');
  EXPECT_EQ (OpenWith (Long + ".bmp", test_images::Bmp (8, 8)), nullptr);   // 127 + 1 characters
  EXPECT_EQ (Env ().windows ().TopLevelWindows ().size (), Windows);
  EXPECT_NE (OpenWith (Long.substr (1) + ".bmp", test_images::Bmp (8, 8)), nullptr);   // 127 characters
  EXPECT_TRUE (Env ().windows ().MessageBoxes ().empty ());
}

TEST_F (ImageViewerTest, DamagedFilesGiveNoWindow) {
  auto Bmp = test_images::Bmp (100, 80);
  Bmp.resize (200);
  EXPECT_EQ (OpenWith ("cut.bmp", Bmp), nullptr);
  auto Jpeg = test_images::Jpeg (32, 32);
  std::vector<uint8_t> Broken (Jpeg.begin (), Jpeg.begin () + 2);
  Broken.insert (Broken.end (), 300, 0x55);
  EXPECT_EQ (OpenWith ("broken.jpg", Broken), nullptr);
  EXPECT_EQ (OpenWith ("empty.jpg", {}), nullptr);
  EXPECT_EQ (OpenWith ("empty.bmp", {}), nullptr);
  EXPECT_EQ (OpenWith ("text.bmp", std::vector<uint8_t> (64, 'B')), nullptr);
  EXPECT_TRUE (Env ().windows ().TopLevelWindows ().empty ());
  EXPECT_TRUE (Env ().windows ().MessageBoxes ().empty ());
}

TEST_F (ImageViewerTest, PaintingStretchesOrCentresThePictureOnWhite) {
  // 40 x 20 in a 60 x 40 window: the client area is shorter than the
  // picture, so it is stretched to the client area less one pixel a side.
  IMAGE_VIEWER *Viewer = OpenWith ("red.bmp", test_images::Bmp (40, 20, 24, [] (uint32_t, uint32_t) {
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
  EXPECT_EQ (Pixel (DX, DY), 0xCC0000u);
  EXPECT_EQ (Pixel (DX + 39, DY + 19), 0xCC0000u);
  EXPECT_EQ (Pixel (DX - 1, DY), 0xFFFFFFu);
  EXPECT_EQ (Pixel (DX + 40, DY + 19), 0xFFFFFFu);
  EXPECT_EQ (Pixel (DX, DY + 20), 0xFFFFFFu);

  // A resize notice with byte 1 set draws the picture and is not taken.
  uint64_t Before = Env ().gui ().DrawCount ();
  MESSAGE Resize = {};
  Resize.Type = MSG_RESIZE;
  Resize.Code = 1;
  EXPECT_EQ (Viewer->Header.Handler (&Viewer->Header, &Resize), 0);
  EXPECT_GT (Env ().gui ().DrawCount (), Before);
  MESSAGE Activate = {};
  Activate.Type = MSG_ACTIVATE;
  EXPECT_EQ (Viewer->Header.Handler (&Viewer->Header, &Activate), 1);
}

TEST_F (ImageViewerTest, ThirtyTwoBitPicturesAreDrawnWithAlpha) {
  auto Clear = [] (uint32_t, uint32_t) { return 0x800000FFu; };   // half transparent blue
  IMAGE_VIEWER *Alpha = OpenWith ("clear.bmp", test_images::Bmp (40, 20, 32, Clear));
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

  IMAGE_VIEWER *Opaque = OpenWith ("solid.bmp", test_images::Bmp (40, 20, 24, Clear));
  ASSERT_NE (Opaque, nullptr);
  Wb ()->GetClientRect (&Opaque->Header, Client);
  env::RenderDesktop (Env ());
  EXPECT_EQ (Pixel (Client[0] + 5, Client[1] + 5), 0x0000FFu);
}

}  // namespace
