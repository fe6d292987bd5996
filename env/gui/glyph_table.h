// The glyph table built into the environment at build time (made by
// tools/make_glyphs from GNU Unifont and the C library's GBK mapping): the
// glyphs of ASCII and of every character GBK encodes, and the GBK-to-Unicode
// table. The same bytes serve the host and firmware.
#pragma once

#include <cstddef>
#include <cstdint>

namespace env {

constexpr unsigned kGbkFirstLead = 0x81, kGbkLastLead = 0xFE;
constexpr unsigned kGbkFirstTrail = 0x40, kGbkLastTrail = 0xFE;
constexpr unsigned kGbkTrails = kGbkLastTrail - kGbkFirstTrail + 1;
constexpr unsigned kGbkPairs = (kGbkLastLead - kGbkFirstLead + 1) * kGbkTrails;

struct GlyphTable {
  uint32_t Count = 0;                       // glyphs
  const uint16_t *CodePoints = nullptr;     // ascending
  const uint8_t *Widths = nullptr;          // 8 or 16
  const uint8_t *Bitmaps = nullptr;         // 32 bytes a glyph
  const uint16_t *GbkToUnicode = nullptr;   // kGbkPairs entries; 0: no character
};

// The built-in table; an empty one (no glyphs, no GBK) when it is damaged.
const GlyphTable &BuiltInGlyphs ();

// Reads a table from its bytes; false (and Out empty) when they are not one.
bool ReadGlyphTable (const uint8_t *Bytes, size_t Size, GlyphTable &Out);

}  // namespace env
