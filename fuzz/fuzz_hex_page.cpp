// The hex viewer's pages of any file: the input's first two bytes choose
// eight paging commands (two bits each: page up, page down, back to a
// non-zero page, forward to one), the rest is the file. Every page the
// viewer shows must keep within its 4096-byte buffer and its 256 lines, with
// double-byte characters at any position, also across line and page ends.
#include <stddef.h>
#include <stdint.h>

#include "fuzz_session.h"
#include "viewers/viewer_records.h"
#include "viewers/viewers.h"

namespace {

fuzz::Session &Driver () {
  static fuzz::Session *S = new fuzz::Session (false);
  return *S;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  if (Size < 2) return 0;
  fuzz::Session &S = Driver ();
  fuzz::WriteBytes (S.Folders[0] / "page.bin", Data + 2, Size - 2);
  auto *Viewer = reinterpret_cast<HEX_VIEWER *> (
      OpenHexViewer (50, 50, fuzz::A8 ("\\page.bin"), static_cast<UINT8> (S.Volumes[0])));
  fuzz::Check (Viewer != nullptr);
  fuzz::Check (Viewer->PageCount == (Size - 2 + 4095) / 4096);
  UINT16 Commands = static_cast<UINT16> (Data[0] | Data[1] << 8);
  for (int I = 0; I < 8; I++) {
    S.Env->windows ().SendSysCommand (&Viewer->Header, static_cast<uint16_t> (33 + ((Commands >> (2 * I)) & 3)));
    fuzz::Check (Viewer->CurrentPage < Viewer->PageCount || Viewer->CurrentPage == 0);
  }
  S.EndInput ();
  return 0;
}
