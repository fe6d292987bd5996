// GBK decoding through the C library's iconv: the table of every double-byte
// character is converted once, at first use.
#include "env/gui/gbk.h"

#include <iconv.h>

#include <array>
#include <cstring>

namespace env {

namespace {

constexpr unsigned FirstLead = 0x81, LastLead = 0xFE;
constexpr unsigned FirstTrail = 0x40, LastTrail = 0xFE;
constexpr unsigned TrailCount = LastTrail - FirstTrail + 1;
constexpr char32_t Replacement = 0xFFFD;

using GbkTable = std::array<char32_t, (LastLead - FirstLead + 1) * TrailCount>;

GbkTable BuildTable () {
  GbkTable Table;
  Table.fill (Replacement);
  iconv_t Cd = iconv_open ("UTF-32LE", "GBK");
  if (Cd == (iconv_t)-1) return Table;
  for (unsigned Lead = FirstLead; Lead <= LastLead; Lead++) {
    for (unsigned Trail = FirstTrail; Trail <= LastTrail; Trail++) {
      if (Trail == 0x7F) continue;
      char In[2] = {static_cast<char> (Lead), static_cast<char> (Trail)};
      unsigned char Out[8] = {};
      char *InPtr = In, *OutPtr = reinterpret_cast<char *> (Out);
      size_t InLeft = 2, OutLeft = sizeof Out;
      iconv (Cd, nullptr, nullptr, nullptr, nullptr);
      if (iconv (Cd, &InPtr, &InLeft, &OutPtr, &OutLeft) == (size_t)-1 || OutLeft != 4) continue;
      char32_t Cp = Out[0] | (Out[1] << 8) | (Out[2] << 16) | (static_cast<char32_t> (Out[3]) << 24);
      Table[(Lead - FirstLead) * TrailCount + (Trail - FirstTrail)] = Cp;
    }
  }
  iconv_close (Cd);
  return Table;
}

const GbkTable &Table () {
  static const GbkTable Instance = BuildTable ();
  return Instance;
}

}  // namespace

bool IsGbkPair (unsigned char Lead, unsigned char Trail) {
  return Lead >= FirstLead && Lead <= LastLead && Trail >= FirstTrail && Trail <= LastTrail && Trail != 0x7F;
}

GbkChar GbkCharAt (const unsigned char *Text, size_t Length, size_t Index) {
  unsigned char B = Text[Index];
  if (B < 0x80) return {B, 1};
  if (Index + 1 < Length && IsGbkPair (B, Text[Index + 1])) {
    return {Table ()[(B - FirstLead) * TrailCount + (Text[Index + 1] - FirstTrail)], 2};
  }
  return {Replacement, 1};
}

std::u32string GbkToUnicode (const std::string &Gbk) {
  std::u32string Out;
  const auto *Bytes = reinterpret_cast<const unsigned char *> (Gbk.data ());
  for (size_t I = 0; I < Gbk.size ();) {
    GbkChar C = GbkCharAt (Bytes, Gbk.size (), I);
    Out.push_back (C.CodePoint);
    I += C.Bytes;
  }
  return Out;
}

void AppendUtf8 (std::string &Out, char32_t Cp) {
  if (Cp < 0x80) {
    Out.push_back (static_cast<char> (Cp));
  } else if (Cp < 0x800) {
    Out.push_back (static_cast<char> (0xC0 | (Cp >> 6)));
    Out.push_back (static_cast<char> (0x80 | (Cp & 0x3F)));
  } else if (Cp < 0x10000) {
    Out.push_back (static_cast<char> (0xE0 | (Cp >> 12)));
    Out.push_back (static_cast<char> (0x80 | ((Cp >> 6) & 0x3F)));
    Out.push_back (static_cast<char> (0x80 | (Cp & 0x3F)));
  } else {
    Out.push_back (static_cast<char> (0xF0 | (Cp >> 18)));
    Out.push_back (static_cast<char> (0x80 | ((Cp >> 12) & 0x3F)));
    Out.push_back (static_cast<char> (0x80 | ((Cp >> 6) & 0x3F)));
    Out.push_back (static_cast<char> (0x80 | (Cp & 0x3F)));
  }
}

std::string GbkToUtf8 (const std::string &Gbk) {
  std::string Out;
  for (char32_t Cp : GbkToUnicode (Gbk)) AppendUtf8 (Out, Cp);
  return Out;
}

}  // namespace env
