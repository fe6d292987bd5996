// ICO decoding. The directory is six bytes (reserved 0, type 1 for icons or
// 2 for cursors, image count) followed by 16 bytes per image: width and
// height (0 meaning 256), colour count, reserved, two words, the image's
// byte size and its offset in the file.
#include "env/images/ico_decoder.h"

#include "env/images/codecs.h"

#include <algorithm>

namespace env {

namespace {

constexpr size_t DirectoryHeader = 6, EntrySize = 16;

uint32_t U16 (const uint8_t *P) { return P[0] | (P[1] << 8); }
uint32_t U32 (const uint8_t *P) { return P[0] | (P[1] << 8) | (P[2] << 16) | (static_cast<uint32_t> (P[3]) << 24); }

struct Entry {
  unsigned Width, Height, Bpp;
  size_t Offset, Length;
};

bool ReadEntry (const uint8_t *Data, size_t Size, size_t Index, Entry &E) {
  const uint8_t *P = Data + DirectoryHeader + Index * EntrySize;
  E.Width = P[0] ? P[0] : 256;
  E.Height = P[1] ? P[1] : 256;
  E.Bpp = U16 (P + 6);
  E.Length = U32 (P + 8);
  E.Offset = U32 (P + 12);
  return E.Offset <= Size && E.Length <= Size - E.Offset && E.Length > 0;
}

bool IsPng (const uint8_t *Data, size_t Size) {
  static const uint8_t Signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  return Size >= 8 && std::equal (Signature, Signature + 8, Data);
}

}  // namespace

size_t IcoImageCount (const uint8_t *Data, size_t Size) {
  if (!Data || Size < DirectoryHeader) return 0;
  uint32_t Type = U16 (Data + 2);
  if (U16 (Data) != 0 || (Type != 1 && Type != 2)) return 0;
  size_t Count = U16 (Data + 4);
  if (Count > (Size - DirectoryHeader) / EntrySize) return 0;
  return Count;
}

bool DecodeIcoImage (const uint8_t *Data, size_t Size, size_t Index, DecodedImage &Out) {
  Out = DecodedImage ();
  if (Index >= IcoImageCount (Data, Size)) return false;
  Entry E;
  if (!ReadEntry (Data, Size, Index, E)) return false;
  const uint8_t *Image = Data + E.Offset;
  if (IsPng (Image, E.Length)) return DecodePng (Image, E.Length, Out);
  return images_detail::DecodeIconDib (Image, E.Length, Out);
}

bool DecodeIcoBestSize (const uint8_t *Data, size_t Size, unsigned Pixels, DecodedImage &Out) {
  Out = DecodedImage ();
  size_t Count = IcoImageCount (Data, Size);
  struct Candidate {
    size_t Index;
    unsigned Rank, Distance, Bpp;
  };
  std::vector<Candidate> Candidates;
  for (size_t I = 0; I < Count; I++) {
    Entry E;
    if (!ReadEntry (Data, Size, I, E)) continue;
    unsigned Rank = E.Width == Pixels ? 0 : E.Width > Pixels ? 1 : 2;
    unsigned Distance = E.Width > Pixels ? E.Width - Pixels : Pixels - E.Width;
    Candidates.push_back ({I, Rank, Distance, E.Bpp});
  }
  std::stable_sort (Candidates.begin (), Candidates.end (), [] (const Candidate &A, const Candidate &B) {
    if (A.Rank != B.Rank) return A.Rank < B.Rank;
    if (A.Distance != B.Distance) return A.Distance < B.Distance;
    return A.Bpp > B.Bpp;
  });
  for (const Candidate &C : Candidates) {
    if (DecodeIcoImage (Data, Size, C.Index, Out)) return true;
  }
  return false;
}

}  // namespace env
