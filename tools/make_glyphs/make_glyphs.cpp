// Builds the glyph table the GUI driver draws with, on the host and in
// firmware alike: every character GBK can encode (the driver's 8-bit texts)
// and ASCII, with GNU Unifont's bitmaps, plus the GBK-to-Unicode table.
//
//   make_glyphs UNIFONT.hex OUT.bin
//
// The GBK mapping comes from the C library's iconv. Layout of OUT.bin (all
// numbers little-endian; glyph_table.h reads it):
//   "SVGLYPH1"                    8 bytes
//   UINT32 GlyphCount, UINT32 GbkCount (= 126 * 191)
//   UINT16 CodePoints[GlyphCount] ascending
//   UINT8  Widths[GlyphCount]     8 or 16, padded with zeros to an even count
//   UINT8  Bitmaps[GlyphCount][32] 16 rows; 1 byte a row for width 8 (the
//                                  other 16 bytes zero), 2 for width 16
//   UINT16 GbkToUnicode[GbkCount] by (lead - 0x81) * 191 + (trail - 0x40);
//                                  0 where the pair means nothing
#include <iconv.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

constexpr unsigned kFirstLead = 0x81, kLastLead = 0xFE, kFirstTrail = 0x40, kLastTrail = 0xFE;
constexpr unsigned kTrails = kLastTrail - kFirstTrail + 1;
constexpr unsigned kGbkCount = (kLastLead - kFirstLead + 1) * kTrails;

struct Glyph {
  uint8_t Width = 0;
  std::array<uint8_t, 32> Rows {};
};

int HexValue (char C) {
  if (C >= '0' && C <= '9') return C - '0';
  if (C >= 'A' && C <= 'F') return C - 'A' + 10;
  if (C >= 'a' && C <= 'f') return C - 'a' + 10;
  return -1;
}

bool ReadUnifont (const char *Path, std::map<uint32_t, Glyph> &Font) {
  FILE *F = std::fopen (Path, "r");
  if (!F) return false;
  char Line[256];
  while (std::fgets (Line, sizeof Line, F)) {
    char *Colon = std::strchr (Line, ':');
    if (!Colon || Colon == Line) continue;
    uint32_t Cp = 0;
    bool Ok = true;
    for (char *P = Line; P < Colon && Ok; P++) {
      int V = HexValue (*P);
      Ok = V >= 0;
      Cp = Cp * 16 + static_cast<uint32_t> (V);
    }
    if (!Ok || Cp > 0xFFFF) continue;
    const char *Hex = Colon + 1;
    size_t Digits = 0;
    while (HexValue (Hex[Digits]) >= 0) Digits++;
    if (Digits != 32 && Digits != 64) continue;
    Glyph G;
    G.Width = Digits == 32 ? 8 : 16;
    for (size_t I = 0; I < Digits / 2; I++)
      G.Rows[I] = static_cast<uint8_t> (HexValue (Hex[I * 2]) * 16 + HexValue (Hex[I * 2 + 1]));
    Font[Cp] = G;
  }
  std::fclose (F);
  return !Font.empty ();
}

std::vector<uint16_t> GbkTable () {
  std::vector<uint16_t> Table (kGbkCount, 0);
  iconv_t Cd = iconv_open ("UTF-32LE", "GBK");
  if (Cd == reinterpret_cast<iconv_t> (-1)) return {};
  for (unsigned Lead = kFirstLead; Lead <= kLastLead; Lead++) {
    for (unsigned Trail = kFirstTrail; Trail <= kLastTrail; Trail++) {
      if (Trail == 0x7F) continue;
      char In[2] = {static_cast<char> (Lead), static_cast<char> (Trail)};
      unsigned char Out[8] = {};
      char *InPtr = In, *OutPtr = reinterpret_cast<char *> (Out);
      size_t InLeft = 2, OutLeft = sizeof Out;
      iconv (Cd, nullptr, nullptr, nullptr, nullptr);
      if (iconv (Cd, &InPtr, &InLeft, &OutPtr, &OutLeft) == static_cast<size_t> (-1) || OutLeft != 4) continue;
      uint32_t Cp = Out[0] | (Out[1] << 8) | (Out[2] << 16) | (static_cast<uint32_t> (Out[3]) << 24);
      if (Cp > 0 && Cp <= 0xFFFF) Table[(Lead - kFirstLead) * kTrails + (Trail - kFirstTrail)] = static_cast<uint16_t> (Cp);
    }
  }
  iconv_close (Cd);
  return Table;
}

void Put16 (std::string &Out, uint32_t V) {
  Out += static_cast<char> (V & 0xFF);
  Out += static_cast<char> ((V >> 8) & 0xFF);
}

void Put32 (std::string &Out, uint32_t V) {
  Put16 (Out, V & 0xFFFF);
  Put16 (Out, V >> 16);
}

}  // namespace

int main (int Argc, char **Argv) {
  if (Argc != 3) {
    std::fprintf (stderr, "usage: make_glyphs UNIFONT.hex OUT.bin\n");
    return 2;
  }
  std::map<uint32_t, Glyph> Font;
  if (!ReadUnifont (Argv[1], Font)) {
    std::fprintf (stderr, "make_glyphs: cannot read the font %s\n", Argv[1]);
    return 1;
  }
  std::vector<uint16_t> Gbk = GbkTable ();
  if (Gbk.empty ()) {
    std::fprintf (stderr, "make_glyphs: the C library cannot convert GBK\n");
    return 1;
  }
  std::set<uint32_t> Wanted;
  for (uint32_t Cp = 0; Cp < 0x80; Cp++) Wanted.insert (Cp);
  Wanted.insert (0xFFFD);
  for (uint16_t Cp : Gbk)
    if (Cp != 0) Wanted.insert (Cp);
  std::vector<uint32_t> Present;
  for (uint32_t Cp : Wanted)
    if (Font.count (Cp)) Present.push_back (Cp);

  std::string Out = "SVGLYPH1";
  Put32 (Out, static_cast<uint32_t> (Present.size ()));
  Put32 (Out, kGbkCount);
  for (uint32_t Cp : Present) Put16 (Out, Cp);
  for (uint32_t Cp : Present) Out += static_cast<char> (Font[Cp].Width);
  if (Present.size () % 2) Out += '\0';
  for (uint32_t Cp : Present) Out.append (reinterpret_cast<const char *> (Font[Cp].Rows.data ()), 32);
  for (uint16_t Cp : Gbk) Put16 (Out, Cp);

  FILE *F = std::fopen (Argv[2], "wb");
  if (!F || std::fwrite (Out.data (), 1, Out.size (), F) != Out.size () || std::fclose (F) != 0) {
    std::fprintf (stderr, "make_glyphs: cannot write %s\n", Argv[2]);
    return 1;
  }
  std::printf ("make_glyphs: %zu glyphs, %zu bytes\n", Present.size (), Out.size ());
  return 0;
}
