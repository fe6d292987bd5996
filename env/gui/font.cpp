#include "env/gui/font.h"

#include <cstdio>
#include <cstring>

namespace env {

namespace {

int HexValue (char C) {
  if (C >= '0' && C <= '9') return C - '0';
  if (C >= 'A' && C <= 'F') return C - 'A' + 10;
  if (C >= 'a' && C <= 'f') return C - 'a' + 10;
  return -1;
}

}  // namespace

const Font &Font::System () {
  // Kept for the life of the process: every painting uses it.
  static const Font *Instance = new Font (kUnifontPath);
  return *Instance;
}

Font::Font (const std::string &Path) : Glyphs_ (new Glyph[65536]) {
  FILE *F = std::fopen (Path.c_str (), "r");
  if (!F) return;
  char Line[256];
  while (std::fgets (Line, sizeof Line, F)) {
    char *Colon = std::strchr (Line, ':');
    if (!Colon) continue;
    unsigned long Cp = 0;
    bool Ok = Colon != Line;
    for (char *P = Line; P < Colon && Ok; P++) {
      int V = HexValue (*P);
      if (V < 0) Ok = false; else Cp = Cp * 16 + V;
    }
    if (!Ok || Cp > 0xFFFF) continue;
    const char *Hex = Colon + 1;
    size_t Digits = 0;
    while (HexValue (Hex[Digits]) >= 0) Digits++;
    if (Digits != 32 && Digits != 64) continue;
    Glyph &G = Glyphs_[Cp];
    G.Width = Digits == 32 ? 8 : 16;
    for (size_t I = 0; I < Digits / 2; I++) {
      G.Rows[I] = static_cast<uint8_t> (HexValue (Hex[I * 2]) * 16 + HexValue (Hex[I * 2 + 1]));
    }
    Count_++;
  }
  std::fclose (F);
}

const Glyph *Font::Find (char32_t CodePoint) const {
  if (CodePoint > 0xFFFF || Glyphs_[CodePoint].Width == 0) return nullptr;
  return &Glyphs_[CodePoint];
}

}  // namespace env
