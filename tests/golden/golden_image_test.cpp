// The comparison behind the golden scenes must itself notice a change.
#include <gtest/gtest.h>

#include "golden/golden_image.h"

namespace {

Image Gradient (int W, int H) {
  Image I;
  I.Width = W, I.Height = H;
  for (int Y = 0; Y < H; Y++)
    for (int X = 0; X < W; X++) I.Pixels.push_back (uint32_t (X * 8) << 16 | uint32_t (Y * 8) << 8 | 0x40);
  return I;
}

}  // namespace

TEST (GoldenImage, ComparisonCountsPixelsBeyondTheChannelTolerance) {
  Image A = Gradient (10, 10), B = A;
  EXPECT_EQ (CompareImages (A, B, 0).Differing, 0u);
  B.Pixels[23] += 4;            // blue channel off by 4
  B.Pixels[57] += 5 << 8;       // green channel off by 5
  Comparison C = CompareImages (A, B, 4);
  EXPECT_EQ ((std::vector<int> {C.SameSize, int (C.Differing), C.FirstX, C.FirstY, C.Largest}), (std::vector<int> {1, 1, 7, 5, 5}));
  EXPECT_EQ (CompareImages (A, B, 0).Differing, 2u);
  // The difference image marks exactly the pixels that differ.
  Image D = DifferenceImage (A, B, 4);
  EXPECT_TRUE (D.Pixels[57] == 0xFF0000u && D.Pixels[23] != 0xFF0000u);

  EXPECT_FALSE (CompareImages (A, Gradient (10, 11), 255).SameSize);
}
