// Checks a resource text against the arguments a caller formats it with.
#include "core/resource_format.h"

namespace {

BOOLEAN IsIntegerConversion (CHAR8 C) { return C == 'd' || C == 'i' || C == 'u' || C == 'x' || C == 'X'; }

}  // namespace

BOOLEAN FormatMatchesArguments (const CHAR8 *Format, const UINT8 *Widths, UINTN Count) {
  UINTN Used = 0;
  for (const CHAR8 *F = Format; *F != 0; F++) {
    if (*F != '%') continue;
    F++;
    if (*F == '%') continue;
    UINT8 Width = 4;
    // Flags, width and precision digits, and the size prefix, in the order
    // the formatter accepts them; '*' would take an argument of its own.
    for (; *F != 0 && !IsIntegerConversion (*F); F++) {
      if (*F == 'l' || *F == 'L') {
        Width = 8;
      } else if (!(*F == '-' || *F == '+' || *F == ' ' || *F == ',' || *F == '.' || (*F >= '0' && *F <= '9'))) {
        return FALSE;
      }
    }
    if (*F == 0 || Used >= Count || Widths[Used] != Width) return FALSE;
    Used++;
  }
  return Used == Count;
}
