// The JPG driver's DecodeJpeg with each backend's decoder (libjpeg on the
// host, stb_image in firmware): good pictures in every colour model, and cut,
// garbage and oversized input failing cleanly without leaking pool memory.
#include <algorithm>
#include <cstdio>
#include <vector>

#include "env/images/codecs.h"
#include "env/images/stb_codecs.h"
#include "env/jpg/jpg_driver.h"
#include "support/driver_fixture.h"
#include "support/image_builders.h"

namespace {

// A Width × Height picture of one colour (components per the colour space),
// encoded at quality 100.
std::vector<uint8_t> Encode (int Width, int Height, J_COLOR_SPACE Space, std::vector<uint8_t> Colour,
                             bool Progressive = false, bool AdobeMarker = true) {
  test_images::JpegOptions Options;
  Options.Space = Space, Options.Quality = 100, Options.Progressive = Progressive, Options.AdobeMarker = AdobeMarker;
  return test_images::EncodeJpeg (
      Width, Height, (int) Colour.size (),
      [&] (int, int, uint8_t *Out) { std::copy (Colour.begin (), Colour.end (), Out); }, Options);
}

using JpegDecoder = bool (*) (const uint8_t *, size_t, uint32_t &, uint32_t &, uint32_t *&);

class JpegTest : public ::testing::TestWithParam<JpegDecoder> {
 protected:
  env::Firmware Fw;
  env::JpgDriver Driver {1};
  JPG_DRIVER_PROTOCOL *T = Driver.Table ();

  struct Result {
    bool Ok = false;
    UINT32 Width = 0, Height = 0;
    std::vector<uint32_t> Pixels;
    bool HandedOut = false;
  };
  // Decodes and frees whatever pixel buffer was handed out.
  Result Decode (const std::vector<uint8_t> &Bytes, size_t Size = SIZE_MAX) {
    Result R;
    UINT32 *Pixels = nullptr;
    if (Size == SIZE_MAX) Size = Bytes.size ();
    uint32_t Width = 0, Height = 0;
    R.Ok = GetParam () (Bytes.data (), Size, Width, Height, Pixels);
    R.Width = Width, R.Height = Height;
    if (Pixels) {
      R.HandedOut = true;
      EXPECT_EQ (Fw.BlockSize (Pixels), (size_t) R.Width * R.Height * 4);
      if (R.Ok) R.Pixels.assign (Pixels, Pixels + (size_t) R.Width * R.Height);
      Fw.FreePool (Pixels);
    }
    EXPECT_EQ (Fw.LiveAllocations (), 0u);
    return R;
  }
};

// True when every pixel is opaque and within 3 of the colour in each channel.
::testing::AssertionResult AllNear (const std::vector<uint32_t> &Pixels, uint32_t Want) {
  for (size_t I = 0; I < Pixels.size (); I++) {
    uint32_t P = Pixels[I];
    if ((P >> 24) != 0xFF) return ::testing::AssertionFailure () << "pixel " << I << " not opaque: " << std::hex << P;
    for (int Shift : {16, 8, 0}) {
      int A = (P >> Shift) & 0xFF, B = (Want >> Shift) & 0xFF;
      if (A - B > 3 || B - A > 3)
        return ::testing::AssertionFailure () << "pixel " << I << " is " << std::hex << P << ", want " << Want;
    }
  }
  return ::testing::AssertionSuccess ();
}

TEST_P (JpegTest, DecodesEveryColourModelToOpaquePixels) {
  // CMYK with an Adobe marker stores inverted ink (255 = no ink): red is no
  // cyan, full magenta and yellow, no black.
  struct Case {
    const char *What;
    int Width, Height;
    J_COLOR_SPACE Space;
    std::vector<uint8_t> Colour;
    bool Progressive;
    uint32_t Want;
  } Cases[] = {
      {"RGB", 37, 21, JCS_RGB, {200, 40, 90}, false, 0xFFC8285A},
      {"grey", 8, 300, JCS_GRAYSCALE, {77}, false, 0xFF4D4D4D},
      {"Adobe CMYK", 16, 16, JCS_CMYK, {255, 0, 0, 255}, false, 0xFFFF0000},
      {"Adobe CMYK grey", 16, 16, JCS_CMYK, {255, 255, 255, 128}, false, 0xFF808080},
      {"progressive", 64, 48, JCS_RGB, {10, 250, 128}, true, 0xFF0AFA80},
  };
  for (const Case &C : Cases) {
    SCOPED_TRACE (C.What);
    Result R = Decode (Encode (C.Width, C.Height, C.Space, C.Colour, C.Progressive));
    EXPECT_TRUE (R.Ok && R.Width == (UINT32) C.Width && R.Height == (UINT32) C.Height);
    ASSERT_EQ (R.Pixels.size (), (size_t) C.Width * C.Height);
    EXPECT_TRUE (AllNear (R.Pixels, C.Want));
  }
  // Without the marker the ink is stored as it is. stb_image would take it
  // for YCbCr, so firmware refuses such a picture rather than miscolour it.
  Result Plain = Decode (Encode (16, 16, JCS_CMYK, {0, 0, 255, 0}, false, false));
  EXPECT_EQ (Plain.Ok, GetParam () != &env::StbDecodeJpeg);
  if (Plain.Ok) EXPECT_TRUE (AllNear (Plain.Pixels, 0xFFFFFF00));
}

// Rewrites the size fields of the first SOF marker.
std::vector<uint8_t> WithSize (std::vector<uint8_t> Bytes, uint16_t Width, uint16_t Height) {
  for (size_t I = 2; I + 9 < Bytes.size (); I++)
    if (Bytes[I] == 0xFF && (Bytes[I + 1] == 0xC0 || Bytes[I + 1] == 0xC2)) {
      Bytes[I + 5] = (uint8_t) (Height >> 8);
      Bytes[I + 6] = (uint8_t) Height;
      Bytes[I + 7] = (uint8_t) (Width >> 8);
      Bytes[I + 8] = (uint8_t) Width;
      return Bytes;
    }
  ADD_FAILURE () << "no SOF marker";
  return Bytes;
}

TEST_P (JpegTest, BrokenStreamsAndHugeDimensionsFailCleanly) {
  std::vector<uint8_t> Good = Encode (64, 64, JCS_RGB, {1, 2, 3});
  // Cut in the middle of the picture data, and just after the header.
  for (size_t Cut : {Good.size () / 2, Good.size () - 20, (size_t) 200, (size_t) 2, (size_t) 0})
    EXPECT_FALSE (Decode (Good, Cut).Ok) << "cut at " << Cut;
  // Garbage: random bytes, a JPEG start followed by noise, text, and picture
  // data overwritten with noise after a good header.
  std::vector<uint8_t> Noise (5000), Started, Damaged = Good;
  uint32_t Seed = 7;
  for (auto &B : Noise) B = (uint8_t) ((Seed = Seed * 1664525u + 1013904223u) >> 24);
  Started = Noise;
  Started[0] = Started[2] = 0xFF, Started[1] = 0xD8;
  for (size_t I = Damaged.size () / 2; I < Damaged.size () - 2; I++) Damaged[I] = (uint8_t) (I * 37);
  // A sequential scan whose spectral range ends at 0 and whose AC table was
  // never defined: a sequential decoder still reads every block's AC codes.
  std::vector<uint8_t> NoAcTable = Good;
  for (size_t I = 2; I + 1 < NoAcTable.size (); I++)
    if (NoAcTable[I] == 0xFF && NoAcTable[I + 1] == 0xDA) {
      uint8_t Count = NoAcTable[I + 4];
      for (size_t C = 0; C < Count; C++) NoAcTable[I + 6 + 2 * C] = 0x03;
      NoAcTable[I + 6 + 2 * Count] = 0;
      break;
    }
  for (const auto &Bad : {Noise, Started, std::vector<uint8_t> {'h', 'e', 'l', 'l', 'o'}, Damaged, NoAcTable})
    EXPECT_FALSE (Decode (Bad).Ok);
  // The driver's table hands over the pixels of a good picture; null arguments are refused.
  UINT32 W = 0, H = 0, *Pixels = nullptr;
  ASSERT_TRUE (T->DecodeJpeg (&W, &H, &Pixels, Good.data (), (UINT32) Good.size ()));
  ASSERT_NE (Pixels, nullptr);
  EXPECT_EQ (Fw.BlockSize (Pixels), size_t (W) * H * 4);
  Fw.FreePool (Pixels);
  Pixels = nullptr;
  EXPECT_FALSE (T->DecodeJpeg (&W, &H, &Pixels, nullptr, 100) ||
                T->DecodeJpeg (nullptr, &H, &Pixels, Good.data (), (UINT32) Good.size ()) ||
                T->DecodeJpeg (&W, &H, nullptr, Good.data (), (UINT32) Good.size ()));
  EXPECT_EQ (Pixels, nullptr);
  EXPECT_EQ (Fw.LiveAllocations (), 0u);

  // Over 16384 in one direction, and 16384 x 4097 (over 64 M pixels): refused
  // before a pixel block is handed out.
  std::vector<uint8_t> Small = Encode (16, 16, JCS_RGB, {9, 9, 9});
  for (auto [W, H] : {std::pair<uint16_t, uint16_t> {16385, 8}, {8, 16385}, {65535, 65535}, {16384, 4097}}) {
    Result R = Decode (WithSize (Small, W, H));
    EXPECT_FALSE (R.Ok || R.HandedOut) << W << "x" << H;
  }
  // Within the limits, but the data does not cover the picture: a clean failure
  // whose pixel block (if any) was handed out and freed.
  EXPECT_FALSE (Decode (WithSize (Small, 2000, 2000)).Ok);
}

INSTANTIATE_TEST_SUITE_P (Backends, JpegTest, ::testing::Values (&env::DecodeJpegInto, &env::StbDecodeJpeg),
                          [] (const auto &Info) { return Info.index == 0 ? "Host" : "Firmware"; });

}  // namespace
