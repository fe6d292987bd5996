// The stand-in JPG driver: JPEG decoding with libjpeg.
//
// Behaviour chosen for this driver:
// - DecodeJpeg gives 0xFFRRGGBB pixels (opaque, rows top-down) in a pool
//   block of Width × Height × 4 bytes. Grayscale, YCbCr/RGB and CMYK/YCCK
//   pictures are accepted (Adobe CMYK is stored inverted and read as such).
// - Pictures wider or higher than kMaxJpegSide, or of more than
//   kMaxJpegPixels pixels, are refused before any pixel memory is taken.
// - A stream that is cut short or corrupt fails (FALSE) rather than showing
//   grey filler; harmless oddities (extra bytes before a marker) are
//   tolerated. Pictures with more than kMaxJpegScans scans are refused.
// - *Pixels is set as soon as the pixel block is allocated; after a failure
//   that got that far the caller still frees it. Width and Height are set
//   from the picture's header.
#pragma once

#include <cstddef>
#include <memory>

#include "env/environment.h"
#include "services/jpg_driver.h"

namespace env {

constexpr uint32_t kMaxJpegSide = 16384;
constexpr uint64_t kMaxJpegPixels = 64ull << 20;
constexpr int kMaxJpegScans = 500;

// Decodes Data into Pixels allocated from Fw's pool (the table operation uses
// the firmware of the driver constructed last). Same results as DecodeJpeg.
bool DecodeJpegInto (Firmware &Fw, const uint8_t *Data, size_t Size, uint32_t &Width, uint32_t &Height,
                     uint32_t *&Pixels);

class JpgDriver {
 public:
  JpgDriver (Firmware &Fw, uint32_t Version);
  ~JpgDriver ();
  JpgDriver (const JpgDriver &) = delete;
  JpgDriver &operator= (const JpgDriver &) = delete;
  JPG_DRIVER_PROTOCOL *Table ();

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
