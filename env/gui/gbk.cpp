// GBK decoding with the built-in table (glyph_table.h), and its inverse.
#include "env/gui/gbk.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "env/gui/glyph_table.h"

namespace env {

namespace {

constexpr char32_t Replacement = 0xFFFD;

}  // namespace

bool IsGbkPair (unsigned char Lead, unsigned char Trail) {
  return Lead >= kGbkFirstLead && Lead <= kGbkLastLead && Trail >= kGbkFirstTrail && Trail <= kGbkLastTrail &&
         Trail != 0x7F;
}

GbkChar GbkCharAt (const unsigned char *Text, size_t Length, size_t Index) {
  unsigned char B = Text[Index];
  if (B < 0x80) return {B, 1};
  if (Index + 1 < Length && IsGbkPair (B, Text[Index + 1])) {
    const GlyphTable &T = BuiltInGlyphs ();
    char32_t Cp = T.GbkToUnicode ? T.GbkToUnicode[(B - kGbkFirstLead) * kGbkTrails + (Text[Index + 1] - kGbkFirstTrail)] : 0;
    return {Cp != 0 ? Cp : Replacement, 2};
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

bool UnicodeToGbk (char32_t CodePoint, std::string &Out) {
  if (CodePoint < 0x80) {
    Out.push_back (static_cast<char> (CodePoint));
    return true;
  }
  // The inverse table, sorted by code point, made at first use.
  static std::vector<std::pair<uint16_t, uint16_t>> *Inverse = nullptr;
  if (Inverse == nullptr) {
    Inverse = new std::vector<std::pair<uint16_t, uint16_t>> ();
    const GlyphTable &T = BuiltInGlyphs ();
    for (unsigned I = 0; T.GbkToUnicode && I < kGbkPairs; I++)
      if (T.GbkToUnicode[I] >= 0x80) Inverse->emplace_back (T.GbkToUnicode[I], static_cast<uint16_t> (I));
    std::stable_sort (Inverse->begin (), Inverse->end (),
                      [] (const auto &A, const auto &B) { return A.first < B.first; });
  }
  if (CodePoint > 0xFFFF) return false;
  auto It = std::lower_bound (Inverse->begin (), Inverse->end (), static_cast<uint16_t> (CodePoint),
                              [] (const std::pair<uint16_t, uint16_t> &E, uint16_t Cp) { return E.first < Cp; });
  if (It == Inverse->end () || It->first != CodePoint) return false;
  Out.push_back (static_cast<char> (kGbkFirstLead + It->second / kGbkTrails));
  Out.push_back (static_cast<char> (kGbkFirstTrail + It->second % kGbkTrails));
  return true;
}

}  // namespace env
