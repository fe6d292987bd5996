// Feeds arbitrary texts to the window position parser. The first four bytes
// choose the smallest width and height the caller accepts; the rest is the
// stored text. A text that is accepted must describe a rectangle that lies on
// the screen and is at least that large; the outputs change only then.
#include <stddef.h>
#include <stdint.h>

#include <cstdlib>
#include <vector>

#include "util/position_store.h"

namespace {

constexpr UINT16 kScreenWidth = 1024;
constexpr UINT16 kScreenHeight = 768;
constexpr UINT16 kUntouched = 0xA5A5;

void Check (bool Condition) {
  if (!Condition) std::abort ();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  if (Size < 4 || Size > 4096) return 0;
  UINT16 MinWidth = static_cast<UINT16> ((Data[0] | (Data[1] << 8)) % 1100);
  UINT16 MinHeight = static_cast<UINT16> ((Data[2] | (Data[3] << 8)) % 800);
  // Exactly the text and its terminator, so that reading past it is caught.
  std::vector<CHAR8> Text (Data + 4, Data + Size);
  Text.push_back (0);

  UINT16 X = kUntouched, Y = kUntouched, Width = kUntouched, Height = kUntouched;
  BOOLEAN Ok = ParseWindowPosition (Text.data (), kScreenWidth, kScreenHeight, MinWidth, MinHeight, &X, &Y, &Width,
                                    &Height);
  if (!Ok) {
    Check (X == kUntouched && Y == kUntouched && Width == kUntouched && Height == kUntouched);
    return 0;
  }
  Check (X < kScreenWidth - 30 && Y < kScreenHeight - 30);
  Check (static_cast<unsigned> (X) + Width <= kScreenWidth && static_cast<unsigned> (Y) + Height <= kScreenHeight);
  Check (Width >= MinWidth && Height >= MinHeight);
  return 0;
}
