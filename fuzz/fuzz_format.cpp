// Feeds arbitrary format strings to AsciiSPrint. Every argument handed over
// is the address of a short text that reads the same as 8-bit and as UTF-16,
// so any conversion (numbers, %a, %s, %c, widths from '*') finds a valid
// argument; the result must end inside the buffer and never overrun it.
#include <stddef.h>
#include <stdint.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/library.h"

namespace {

alignas (8) const UINT16 kText[] = {'a', 0, 0, 0};

void Check (bool Condition) {
  if (!Condition) std::abort ();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  if (Size == 0 || Size > 512) return 0;
  // A conversion takes one argument, and one more for every '*' in it: the
  // 64 arguments handed over must cover them all.
  size_t Needed = 0;
  for (size_t I = 0; I < Size; I++) Needed += Data[I] == '%' || Data[I] == '*';
  if (Needed > 60) return 0;

  std::vector<CHAR8> Format (Data + 1, Data + Size);
  Format.push_back (0);
  UINTN BufferSize = Data[0];
  std::vector<CHAR8> Buffer (BufferSize + 16, 0x5A);
  const VOID *P = kText;
#define A4 P, P, P, P
#define A16 A4, A4, A4, A4
  UINTN N = AsciiSPrint (Buffer.data (), BufferSize, Format.data (), A16, A16, A16, A16);
  if (BufferSize == 0) {
    Check (N == 0 && Buffer[0] == 0x5A);
  } else {
    Check (N < BufferSize);
    Check (Buffer[N] == 0);
  }
  for (size_t I = BufferSize; I < Buffer.size (); I++) Check (Buffer[I] == 0x5A);
  return 0;
}
