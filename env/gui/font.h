// The system font: GNU Unifont's 8 x 16 and 16 x 16 bitmap glyphs of every
// character the environment draws (ASCII and GBK), from the built-in glyph
// table.
#pragma once

#include <cstddef>
#include <cstdint>

namespace env {

struct Glyph {
  uint8_t Width = 0;                // 8 or 16
  const uint8_t *Rows = nullptr;    // 16 rows of 1 byte (width 8) or 2 bytes (width 16), MSB = leftmost
  bool Pixel (unsigned X, unsigned Y) const {
    if (Width == 8) return (Rows[Y] >> (7 - X)) & 1;
    return (Rows[Y * 2 + X / 8] >> (7 - X % 8)) & 1;
  }
};

constexpr unsigned kFontHeight = 16;

// The glyph of a code point; false when the font has none.
bool FindGlyph (char32_t CodePoint, Glyph &Out);
// Number of glyphs the font holds.
size_t GlyphCount ();

}  // namespace env
