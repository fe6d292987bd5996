// Placeholder: the formatter lands with the foundation work.
#include "platform/library.h"

UINTN AsciiVSPrint (CHAR8 *Buffer, UINTN BufferSize, const CHAR8 *, va_list) {
  if (BufferSize) Buffer[0] = 0;
  return 0;
}
UINTN AsciiSPrint (CHAR8 *Buffer, UINTN BufferSize, const CHAR8 *Format, ...) {
  va_list Marker;
  va_start (Marker, Format);
  UINTN N = AsciiVSPrint (Buffer, BufferSize, Format, Marker);
  va_end (Marker);
  return N;
}
UINTN Print (const char16_t *, ...) { return 0; }
