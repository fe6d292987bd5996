// GBK texts of any bytes: conversion to code points and to UTF-8 must agree
// with each other and with the character-by-character walk, and the UTF-8
// must be well formed (no surrogates, nothing above U+10FFFF, shortest form).
#include <stddef.h>
#include <stdint.h>

#include <cstdlib>
#include <string>

#include "env/gui/gbk.h"

namespace {

void Check (bool Condition) {
  if (!Condition) std::abort ();
}

// Decodes well-formed UTF-8 into code points; aborts on anything else.
std::u32string DecodeStrictUtf8 (const std::string &Text) {
  std::u32string Out;
  for (size_t I = 0; I < Text.size ();) {
    unsigned char Lead = static_cast<unsigned char> (Text[I]);
    size_t Length = Lead < 0x80 ? 1 : Lead >= 0xF0 ? 4 : Lead >= 0xE0 ? 3 : Lead >= 0xC2 ? 2 : 0;
    Check (Length != 0 && I + Length <= Text.size ());
    char32_t Point = Length == 1 ? Lead : Lead & (0x7F >> Length);
    for (size_t K = 1; K < Length; K++) {
      unsigned char Next = static_cast<unsigned char> (Text[I + K]);
      Check ((Next & 0xC0) == 0x80);
      Point = Point << 6 | (Next & 0x3F);
    }
    static const char32_t Smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    Check (Point >= Smallest[Length] && Point <= 0x10FFFF && (Point < 0xD800 || Point > 0xDFFF));
    Out += Point;
    I += Length;
  }
  return Out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  std::string Gbk (reinterpret_cast<const char *> (Data), Size);
  std::u32string Points = env::GbkToUnicode (Gbk);
  std::string Utf8 = env::GbkToUtf8 (Gbk);
  Check (DecodeStrictUtf8 (Utf8) == Points);

  std::u32string Walked;
  std::string Appended;
  for (size_t I = 0; I < Size;) {
    env::GbkChar C = env::GbkCharAt (Data, Size, I);
    Check (C.Bytes == 1 || C.Bytes == 2);
    Check (I + C.Bytes <= Size);
    Check ((C.Bytes == 2) == (I + 1 < Size && env::IsGbkPair (Data[I], Data[I + 1])));
    if (Data[I] < 0x80) Check (C.Bytes == 1 && C.CodePoint == Data[I]);
    Walked += C.CodePoint;
    env::AppendUtf8 (Appended, C.CodePoint);
    I += C.Bytes;
  }
  Check (Walked == Points);
  Check (Appended == Utf8);
  return 0;
}
