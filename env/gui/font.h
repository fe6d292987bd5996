// The system font: GNU Unifont (8 x 16 and 16 x 16 bitmap glyphs of the
// Basic Multilingual Plane), read from the hex file Debian installs, once per
// process.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace env {

struct Glyph {
  uint8_t Width = 0;        // 8 or 16; 0 when the font has no glyph
  uint8_t Rows[32] = {};    // 16 rows of 1 byte (width 8) or 2 bytes (width 16), MSB = leftmost
  bool Pixel (unsigned X, unsigned Y) const {
    if (Width == 8) return (Rows[Y] >> (7 - X)) & 1;
    return (Rows[Y * 2 + X / 8] >> (7 - X % 8)) & 1;
  }
};

constexpr unsigned kFontHeight = 16;
constexpr const char *kUnifontPath = "/usr/share/unifont/unifont.hex";

class Font {
 public:
  // The process-wide system font.
  static const Font &System ();
  // Parses a hex font file; a missing or unreadable file gives an empty font
  // (every character then draws as a box).
  explicit Font (const std::string &Path);
  // The glyph of a code point, or nullptr.
  const Glyph *Find (char32_t CodePoint) const;
  size_t GlyphCount () const { return Count_; }

 private:
  std::unique_ptr<Glyph[]> Glyphs_;   // 65536 entries, indexed by code point
  size_t Count_ = 0;
};

}  // namespace env
