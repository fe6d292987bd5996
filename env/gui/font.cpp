#include "env/gui/font.h"

#include <algorithm>

#include "env/gui/glyph_table.h"

namespace env {

bool FindGlyph (char32_t CodePoint, Glyph &Out) {
  const GlyphTable &T = BuiltInGlyphs ();
  if (CodePoint > 0xFFFF || T.Count == 0) return false;
  const uint16_t *End = T.CodePoints + T.Count;
  const uint16_t *At = std::lower_bound (T.CodePoints, End, static_cast<uint16_t> (CodePoint));
  if (At == End || *At != CodePoint) return false;
  size_t Index = static_cast<size_t> (At - T.CodePoints);
  Out.Width = T.Widths[Index];
  Out.Rows = T.Bitmaps + Index * 32;
  return true;
}

size_t GlyphCount () { return BuiltInGlyphs ().Count; }

}  // namespace env
