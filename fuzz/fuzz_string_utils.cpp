// Feeds arbitrary bytes to the number, path and string helpers and checks
// the promises they make: bounded results, never a write past the buffers.
#include <stddef.h>
#include <stdint.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "util/string_utils.h"

namespace {

void Check (bool Condition) {
  if (!Condition) std::abort ();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  if (Size < 2) return 0;
  // First byte: a limit for AppendFitted; the rest splits at the first 0x00
  // into a destination and a source text.
  UINT16 Limit = Data[0];
  std::vector<CHAR8> Text (Data + 1, Data + Size);
  Text.push_back (0);
  const CHAR8 *First = Text.data ();
  size_t FirstLength = std::strlen (reinterpret_cast<const char *> (First));
  const CHAR8 *Second = FirstLength + 1 < Text.size () ? First + FirstLength + 1 : First + FirstLength;

  ParseDecimal (First);
  ParseHex (First);
  ParseNumber (First);
  Check (StringsEqual (First, First));
  Check (NamesEqual (First, First));
  Check (NamesEqual (First, Second) == NamesEqual (Second, First));

  // SplitPath writes at most 512 bytes of directory.
  std::vector<CHAR8> Directory (512);
  const CHAR8 *Name = nullptr;
  if (SplitPath (First, Directory.data (), &Name)) {
    Check (Name != nullptr && Name >= First && Name <= First + FirstLength);
    Check (std::memchr (Directory.data (), 0, Directory.size ()) != nullptr);
  }

  // AppendFitted keeps the text shorter than the limit.
  std::vector<CHAR8> Out (FirstLength + 300, 0x5A);
  std::memcpy (Out.data (), First, FirstLength + 1);
  AppendFitted (Out.data (), Second, Limit);
  size_t After = std::strlen (reinterpret_cast<const char *> (Out.data ()));
  if (Limit > FirstLength) Check (After < Limit);
  else Check (After == FirstLength);

  // GroupThousands on at most 48 bytes.
  CHAR8 Digits[64];
  CopyStringN (Digits, First, 49);
  UINT16 Before = StringLength (Digits);
  GroupThousands (Digits);
  Check (StringLength (Digits) == (Before <= 3 ? Before : Before + (Before - 1) / 3));

  // Bounded copies never write more than their size.
  CHAR8 Small[16];
  std::memset (Small, 0x5A, sizeof (Small));
  CopyStringN (Small, Second, 8);
  Check (Small[8] == 0x5A && StringLength (Small) < 8);
  AppendStringN (Small, First, 12);
  Check (Small[12] == 0x5A && StringLength (Small) < 12);
  return 0;
}
