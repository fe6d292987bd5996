// The one way to format a text taken from the resource file. Such a text is
// written by whoever edits the file, so it is used as a format only when its
// conversions are exactly those the caller passes: as many, in the same
// order, each an integer conversion of the argument's width (%d %i %u %x %X
// for 32-bit arguments, the same with 'l' for 64-bit ones; flags, width and
// precision digits allowed, no '*'). Any other text is shown as "***", the
// same as a missing text, so a damaged file can never make the formatter read
// what was not passed.
#pragma once

#include <type_traits>

#include "platform/library.h"

// True when Format's conversions match the arguments whose byte widths (4 or
// 8) Widths lists, Count of them.
BOOLEAN FormatMatchesArguments (const CHAR8 *Format, const UINT8 *Widths, UINTN Count);

// AsciiSPrint of Format with the arguments when they match it, of "***"
// otherwise. The arguments must be 32- or 64-bit integers.
template <typename... ARGUMENTS>
UINTN FormatResourceText (CHAR8 *Buffer, UINTN BufferSize, const CHAR8 *Format, ARGUMENTS... Arguments) {
  static_assert (((std::is_integral_v<ARGUMENTS> && (sizeof (ARGUMENTS) == 4 || sizeof (ARGUMENTS) == 8)) && ...),
                 "resource texts take 32- or 64-bit integers only");
  const UINT8 Widths[] = {static_cast<UINT8> (sizeof (ARGUMENTS))..., 0};
  if (Format == nullptr || !FormatMatchesArguments (Format, Widths, sizeof...(ARGUMENTS))) Format = "***"_a;
  return AsciiSPrint (Buffer, BufferSize, Format, Arguments...);
}
