// GBK, the 8-bit encoding of every text the driver hands to the window
// system: bytes below 0x80 are ASCII; a lead byte 0x81..0xFE followed by a
// trail byte 0x40..0xFE (not 0x7F) is one double-byte character. Any other
// byte of 0x80 or more stands alone and is shown as a replacement character.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace env {

// One character of a GBK text: its Unicode code point (U+FFFD when the bytes
// have no mapping) and the number of bytes it took (1 or 2).
struct GbkChar {
  char32_t CodePoint;
  unsigned Bytes;
};

// The character that starts at Text[Index] of a text of Length bytes
// (Index < Length).
GbkChar GbkCharAt (const unsigned char *Text, size_t Length, size_t Index);

// Whether the two bytes form a double-byte GBK character.
bool IsGbkPair (unsigned char Lead, unsigned char Trail);

// The Unicode code points of a GBK text.
std::u32string GbkToUnicode (const std::string &Gbk);

// A GBK text as UTF-8 (for terminals, logs and file names on the host).
std::string GbkToUtf8 (const std::string &Gbk);

// Appends the GBK bytes of a code point; false when GBK has no such character.
bool UnicodeToGbk (char32_t CodePoint, std::string &Out);

// Appends the UTF-8 form of one code point.
void AppendUtf8 (std::string &Out, char32_t CodePoint);

}  // namespace env
