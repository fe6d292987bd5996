// Placeholder: the helpers land with the foundation work.
#include "util/string_utils.h"

UINT16 StringLength (const CHAR8 *String) {
  UINT16 N = 0;
  while (String[N] != 0) N++;
  return N;
}
VOID CopyString (CHAR8 *Destination, const CHAR8 *Source) {
  UINT16 I = 0;
  do { Destination[I] = Source[I]; } while (Source[I++] != 0);
}
