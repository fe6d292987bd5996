#include "env/gui/glyph_table.h"

#include <cstring>

#ifndef SURVEYOR_GLYPH_TABLE
#error "The build names the glyph table file in SURVEYOR_GLYPH_TABLE."
#endif

// The table's bytes, embedded as they are.
asm (".pushsection .rodata\n"
     ".balign 16\n"
     ".globl SurveyorGlyphTable\n"
     ".hidden SurveyorGlyphTable\n"
     "SurveyorGlyphTable:\n"
     ".incbin \"" SURVEYOR_GLYPH_TABLE "\"\n"
     ".globl SurveyorGlyphTableEnd\n"
     ".hidden SurveyorGlyphTableEnd\n"
     "SurveyorGlyphTableEnd:\n"
     ".popsection\n");

extern "C" {
extern const uint8_t SurveyorGlyphTable[] __attribute__ ((visibility ("hidden")));
extern const uint8_t SurveyorGlyphTableEnd[] __attribute__ ((visibility ("hidden")));
}

namespace env {

bool ReadGlyphTable (const uint8_t *Bytes, size_t Size, GlyphTable &Out) {
  Out = GlyphTable {};
  if (Size < 16 || std::memcmp (Bytes, "SVGLYPH1", 8) != 0 || reinterpret_cast<uintptr_t> (Bytes) % 2 != 0)
    return false;
  uint32_t Count, Pairs;
  std::memcpy (&Count, Bytes + 8, 4);
  std::memcpy (&Pairs, Bytes + 12, 4);
  size_t Widths = 16 + size_t (Count) * 2, Bitmaps = Widths + Count + Count % 2, Gbk = Bitmaps + size_t (Count) * 32;
  if (Pairs != kGbkPairs || Count > 0x10000 || Gbk + size_t (Pairs) * 2 != Size) return false;
  Out.Count = Count;
  Out.CodePoints = reinterpret_cast<const uint16_t *> (Bytes + 16);
  Out.Widths = Bytes + Widths;
  Out.Bitmaps = Bytes + Bitmaps;
  Out.GbkToUnicode = reinterpret_cast<const uint16_t *> (Bytes + Gbk);
  return true;
}

const GlyphTable &BuiltInGlyphs () {
  static GlyphTable Table;
  static bool Read = false;
  if (!Read) {
    ReadGlyphTable (SurveyorGlyphTable, static_cast<size_t> (SurveyorGlyphTableEnd - SurveyorGlyphTable), Table);
    Read = true;
  }
  return Table;
}

}  // namespace env
