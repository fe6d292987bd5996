// Golden images: a rendered screen compared with a reference PNG kept in the
// source tree. A pixel counts as different when one of its colour channels
// is off by more than the channel tolerance; the image matches when no more
// than the allowed number of pixels differ.
//
// The references are drawn with the fonts and icons of the build. When one
// of them changes on purpose (a new font package, a new look), regenerate
// every reference with SURVEYOR_UPDATE_GOLDEN=1 and look at them before
// committing; a failing comparison writes the actual image and a difference
// image next to the build's test files to show what moved.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Image {
  int Width = 0, Height = 0;
  std::vector<uint32_t> Pixels;     // 0x00RRGGBB, rows top-down
};

// Reads an RGB or RGBA PNG; false (with Error) when it cannot.
bool ReadPngImage (const std::string &Path, Image &Out, std::string &Error);

struct Tolerance {
  int Channel = 0;                  // largest accepted difference of one channel
  size_t Pixels = 0;                // pixels allowed beyond it
};

struct Comparison {
  bool SameSize = false;
  size_t Differing = 0;             // pixels beyond the channel tolerance
  int FirstX = -1, FirstY = -1;     // the first of them, in reading order
  int Largest = 0;                  // largest channel difference seen
};
Comparison CompareImages (const Image &Expected, const Image &Actual, int ChannelTolerance);

// Pixels that differ in red on a faded copy of the expected image.
Image DifferenceImage (const Image &Expected, const Image &Actual, int ChannelTolerance);

// Compares Actual with reference Name.png (or writes it when updating);
// returns an empty string on a match, else what went wrong.
std::string MatchGolden (const std::string &Name, const Image &Actual, const Tolerance &Allowed);
