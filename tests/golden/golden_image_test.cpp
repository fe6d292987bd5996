// The comparison behind the golden scenes must itself notice a change.
#include <gtest/gtest.h>

#include <fstream>

#include "env/host/screenshot.h"
#include "golden/golden_image.h"
#include "support/driver_fixture.h"

namespace {

Image Gradient (int W, int H) {
  Image I;
  I.Width = W, I.Height = H;
  for (int Y = 0; Y < H; Y++)
    for (int X = 0; X < W; X++) I.Pixels.push_back (uint32_t (X * 8) << 16 | uint32_t (Y * 8) << 8 | 0x40);
  return I;
}

}  // namespace

TEST (GoldenImage, PngRoundTripAndBrokenFiles) {
  TempFolder Dir;
  Image Original = Gradient (17, 9);
  std::string Path = (Dir.Path () / "g.png").string ();
  ASSERT_TRUE (env::WritePng (Path, Original.Pixels.data (), Original.Width, Original.Height));
  Image Back;
  std::string Error;
  ASSERT_TRUE (ReadPngImage (Path, Back, Error)) << Error;
  EXPECT_EQ (Back.Width, 17);
  EXPECT_EQ (Back.Height, 9);
  EXPECT_EQ (Back.Pixels, Original.Pixels);

  // A cut file and a file that is no PNG are refused with a reason.
  std::string Bytes = ReadHostFile (Path);
  WriteHostFile (Dir.Path () / "cut.png", Bytes.substr (0, Bytes.size () / 2));
  WriteHostFile (Dir.Path () / "text.png", "not a picture");
  for (const char *Name : {"cut.png", "text.png", "missing.png"}) {
    Error.clear ();
    EXPECT_FALSE (ReadPngImage ((Dir.Path () / Name).string (), Back, Error)) << Name;
    EXPECT_FALSE (Error.empty ()) << Name;
  }
}

TEST (GoldenImage, ComparisonCountsPixelsBeyondTheChannelTolerance) {
  Image A = Gradient (10, 10), B = A;
  EXPECT_EQ (CompareImages (A, B, 0).Differing, 0u);
  B.Pixels[23] += 4;            // blue channel off by 4
  B.Pixels[57] += 5 << 8;       // green channel off by 5
  Comparison C = CompareImages (A, B, 4);
  EXPECT_TRUE (C.SameSize);
  EXPECT_EQ (C.Differing, 1u);
  EXPECT_EQ (C.FirstX, 7);
  EXPECT_EQ (C.FirstY, 5);
  EXPECT_EQ (C.Largest, 5);
  EXPECT_EQ (CompareImages (A, B, 0).Differing, 2u);
  // The difference image marks exactly the pixels that differ.
  Image D = DifferenceImage (A, B, 4);
  EXPECT_EQ (D.Pixels[57], 0xFF0000u);
  EXPECT_NE (D.Pixels[23], 0xFF0000u);

  EXPECT_FALSE (CompareImages (A, Gradient (10, 11), 255).SameSize);
}
