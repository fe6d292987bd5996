// The 8-bit string, number and path helpers, against their documented results.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "util/string_utils.h"

namespace {

const CHAR8 *A (const char *Text) { return reinterpret_cast<const CHAR8 *> (Text); }
std::string S (const CHAR8 *Text) { return Text ? reinterpret_cast<const char *> (Text) : "(null)"; }

// A destination buffer filled with a guard byte, to see what was written.
struct Buffer {
  explicit Buffer (const char *Start = "") {
    std::memset (Bytes, 0x5A, sizeof (Bytes));
    std::strcpy (reinterpret_cast<char *> (Bytes), Start);
  }
  CHAR8 Bytes[2048];
  CHAR8 *operator() () { return Bytes; }
  std::string Text () const { return reinterpret_cast<const char *> (Bytes); }
};

std::string Fitted (const char *Start, const std::string &Source, UINT16 Limit) {
  Buffer B (Start);
  AppendFitted (B (), A (Source.c_str ()), Limit);
  return B.Text ();
}

TEST (StringHelpers, LengthCopyAndAppend) {
  EXPECT_EQ (StringLength (A ("")), 0);
  EXPECT_EQ (StringLength (A ("abc")), 3);

  auto CopyN = [] (const char *Source, UINT16 Size) {
    Buffer B ("xy");
    CopyStringN (B (), A (Source), Size);
    return B.Text ();
  };
  // "abc" fits with its terminator: whole; a size of 0 writes nothing.
  EXPECT_EQ (CopyN ("abcdef", 4) + "|" + CopyN ("abc", 4) + "|" + CopyN ("abcdef", 1) + "|" + CopyN ("abcdef", 0),
             "abc|abc||xy");

  Buffer C ("ab");
  EXPECT_EQ (AppendString (C (), A ("cde")), 5);
  EXPECT_EQ (C.Text (), "abcde");
  EXPECT_EQ (AppendStringN (C (), A ("fghij"), 8), 7);
  EXPECT_EQ (C.Text (), "abcdefg");
  EXPECT_EQ (C ()[7], 0);
  EXPECT_EQ (AppendStringN (C (), A ("zz"), 8), 7);  // already fills size - 1
  EXPECT_EQ (AppendStringN (C (), A ("zz"), 5), 7);  // longer than the size: unchanged
  EXPECT_EQ (C.Text (), "abcdefg");
}

TEST (StringHelpers, EqualityWithAndWithoutCase) {
  // Pairs, and whether StringsEqual and NamesEqual take them for equal: only
  // ASCII letters fold, bytes of 0x80 or more are compared as they are.
  const char *Pairs[][3] = {{"abc", "abc", "11"},   {"abc", "abcd", "00"}, {"abcd", "abc", "00"},
                            {"ABC", "abc", "01"},   {"", "", "11"},        {"Read Me.TXT", "read me.txt", "01"},
                            {"a[", "a{", "00"},     {"\xC1\xA1", "\xE1\xA1", "00"}, {"\xC1\xA1x", "\xC1\xA1X", "01"}};
  for (auto &P : Pairs)
    EXPECT_EQ (std::string () + "01"[StringsEqual (A (P[0]), A (P[1]))] + "01"[NamesEqual (A (P[0]), A (P[1]))], P[2])
        << P[0] << " " << P[1];
}

TEST (StringHelpers, AppendFittedCutsInTheMiddle) {
  const std::string Letters = "abcdefghijklmnopqrstuvwxyz";
  EXPECT_EQ (Fitted ("", Letters, 16), "abcdef...uvwxyz");
  EXPECT_EQ (Fitted ("", "short", 16), "short");
  // A source of exactly the room left is shortened too.
  EXPECT_EQ (Fitted ("", Letters.substr (0, 15), 16), "abcdef...jklmno");
  EXPECT_EQ (Fitted ("", Letters.substr (0, 14), 16), Letters.substr (0, 14));
  // No room: unchanged; a little room: the first bytes only.
  EXPECT_EQ (Fitted ("prefix", Letters, 6), "prefix");
  EXPECT_EQ (Fitted ("prefix", Letters, 3), "prefix");
  EXPECT_EQ (Fitted ("prefix", Letters, 10), "prefixabc");
  EXPECT_EQ (Fitted ("dir\\", Letters, 4 + 1 + 15), "dir\\abcdef...uvwxyz");

  // Two-byte characters are never split: the head may take one byte more,
  // the tail starts on a character boundary.
  std::string Gbk;
  for (int I = 0; I < 10; I++) Gbk += "\xC4\xE3";  // 20 bytes, ten characters
  std::string Out = Fitted ("", Gbk, 16);           // A 15, H 6, K 6, R 6
  EXPECT_EQ (Out, Gbk.substr (0, 6) + "..." + Gbk.substr (14));
  std::string Mixed = "a" + Gbk;  // 21 bytes: the head ends at 7 (a + 3 characters)
  Out = Fitted ("", Mixed, 16);   // K 7, R 5: tail from the first boundary at or after 16
  EXPECT_EQ (Out, Mixed.substr (0, 7) + "..." + Mixed.substr (17));
  EXPECT_LE (Out.size (), 15u);
}

TEST (StringHelpers, GroupThousands) {
  auto Group = [] (const char *Digits) {
    Buffer B (Digits);
    GroupThousands (B ());
    return B.Text ();
  };
  EXPECT_EQ (Group ("999") + "|" + Group ("1000") + "|" + Group ("123456") + "|" + Group ("1234567") + "|" + Group (""),
             "999|1,000|123,456|1,234,567|");
  EXPECT_EQ (Group ("abcd"), "a,bcd");  // every byte counts as a digit
  std::string Longest (48, '9');
  std::string Grouped = Group (Longest.c_str ());
  EXPECT_EQ (Grouped.size (), 48u + 15u);
  EXPECT_EQ (Grouped.substr (0, 4), "999,");
  // Longer than the work buffer allows: cut, never overrun.
  std::string TooLong (200, '1');
  EXPECT_LE (Group (TooLong.c_str ()).size (), 63u);
}

TEST (StringHelpers, ParsesNumbers) {
  // ParseDecimal reads only the first 16 characters; 32-bit results wrap;
  // ParseHex itself takes no 0x prefix.
  const struct {
    UINT32 (*Parse) (const CHAR8 *);
    const char *Text;
    UINT32 Value;
  } Cases[] = {{ParseNumber, "0x1F", 31},  {ParseNumber, "0X1f", 31},  {ParseNumber, "017", 17},
               {ParseNumber, "0x", 0},     {ParseNumber, "", 0},       {ParseNumber, "4294967296", 0},
               {ParseNumber, "4294967295", 4294967295u},               {ParseDecimal, "12a", 0},
               {ParseDecimal, " 12", 0},   {ParseDecimal, "1f", 0},    {ParseHex, "ffFF", 0xFFFF},
               {ParseDecimal, "12345678901234567890", static_cast<UINT32> (1234567890123456ULL)},
               {ParseDecimal, "1234567890123456xyz", static_cast<UINT32> (1234567890123456ULL)},
               {ParseHex, "0x10", 0},      {ParseHex, "123456789ABCDEF0", 0x9ABCDEF0u}, {ParseHex, "g", 0}};
  for (const auto &C : Cases) EXPECT_EQ (C.Parse (A (C.Text)), C.Value) << C.Text;
}

TEST (StringHelpers, SplitsPaths) {
  struct Case {
    std::string Path;
    bool Result;
    std::string Dir, Name;
  };
  const Case Cases[] = {
      {"\\efi\\boot\\a.txt", true, "\\efi\\boot", "a.txt"},
      {"\\a.txt", true, "\\", "a.txt"},
      {"a.txt", true, "\\", "a.txt"},
      {"\\efi\\", false, "\\efi", "(null)"},
      {"\\", false, "\\", "(null)"},
  };
  for (const Case &C : Cases) {
    Buffer Dir;
    const CHAR8 *Name = A ("unset");
    EXPECT_EQ (SplitPath (A (C.Path.c_str ()), Dir (), &Name), C.Result) << C.Path;
    EXPECT_EQ (Dir.Text (), C.Dir) << C.Path;
    EXPECT_EQ (S (Name), C.Name) << C.Path;
    if (C.Result) EXPECT_EQ (Name, A (C.Path.c_str ()) + C.Path.size () - C.Name.size ());
  }

  // Limits: more than 1024 bytes, or a directory part of more than 511.
  const CHAR8 *Name = nullptr;
  Buffer Dir;
  std::string Long = "\\" + std::string (1020, 'd') + "\\abc";  // 1025 bytes
  EXPECT_FALSE (SplitPath (A (Long.c_str ()), Dir (), &Name));
  std::string Deep = "\\" + std::string (511, 'd') + "\\n";  // P = 513
  EXPECT_FALSE (SplitPath (A (Deep.c_str ()), Dir (), &Name));
  std::string Fits = "\\" + std::string (510, 'd') + "\\n";  // P = 512: dir of 511 bytes
  Buffer Dir2;
  EXPECT_TRUE (SplitPath (A (Fits.c_str ()), Dir2 (), &Name));
  EXPECT_EQ (Dir2.Text ().size (), 511u);
  EXPECT_EQ (S (Name), "n");
}

}  // namespace
