// The 8-bit formatter (EDK II conventions) and the console Print.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "env/host/firmware.h"
#include "platform/library.h"

namespace {

template <typename... Args>
std::string Format (const char *Fmt, Args... Arguments) {
  CHAR8 Buffer[256];
  std::memset (Buffer, 0x5A, sizeof (Buffer));
  UINTN N = AsciiSPrint (Buffer, sizeof (Buffer), reinterpret_cast<const CHAR8 *> (Fmt), Arguments...);
  std::string Out (reinterpret_cast<const char *> (Buffer));
  EXPECT_EQ (N, Out.size ()) << Fmt;
  return Out;
}

const CHAR8 *A (const char *Text) { return reinterpret_cast<const CHAR8 *> (Text); }

TEST (Formatter, IntegersOfBothWidths) {
  EXPECT_EQ (Format ("%d files", 42), "42 files");
  EXPECT_EQ (Format ("%d", -7), "-7");
  EXPECT_EQ (Format ("%d,%d,%d,%d", 10, 20, 640, 480), "10,20,640,480");
  EXPECT_EQ (Format ("%u", 0xFFFFFFFFu), "4294967295");
  // %d takes 32 bits: a 64-bit argument is needed for %ld.
  EXPECT_EQ (Format ("%ld", static_cast<INT64> (-5000000000LL)), "-5000000000");
  EXPECT_EQ (Format ("%ld", static_cast<UINT64> (1234567890123ULL)), "1234567890123");
  EXPECT_EQ (Format ("%lu", static_cast<UINT64> (18446744073709551615ULL)), "18446744073709551615");
  EXPECT_EQ (Format ("%d %ld %d", 1, static_cast<INT64> (2), 3), "1 2 3");
}

TEST (Formatter, HexadecimalIsUpperCase) {
  EXPECT_EQ (Format ("%x", 0xabcdefu), "ABCDEF");
  EXPECT_EQ (Format ("%x,%x", 16u, 15u), "10,F");
  EXPECT_EQ (Format ("%x", -1), "FFFFFFFF");  // 32 bits, not sign-extended
  EXPECT_EQ (Format ("%lx", static_cast<UINT64> (0x123456789AULL)), "123456789A");
  EXPECT_EQ (Format ("%02x", 10u), "0A");
  EXPECT_EQ (Format ("%04x", 0x1F0u), "01F0");
  EXPECT_EQ (Format ("%4x", 0x1Fu), "  1F");
  EXPECT_EQ (Format ("%8X", 0x1Fu), "0000001F");  // %X pads with zeros
}

TEST (Formatter, WidthPaddingAndFlags) {
  EXPECT_EQ (Format ("%04d.%02d.%02d %02d:%02d:%02d", 2024, 3, 9, 7, 5, 0), "2024.03.09 07:05:00");
  EXPECT_EQ (Format ("[%5d]", 42), "[   42]");
  EXPECT_EQ (Format ("[%-5d]", 42), "[42   ]");
  EXPECT_EQ (Format ("[%05d]", -42), "[-0042]");
  EXPECT_EQ (Format ("[%-05d]", 42), "[42   ]");   // left-justified: no zeros
  EXPECT_EQ (Format ("[%+d]", 42), "[+42]");
  EXPECT_EQ (Format ("[%,d]", 1234567), "[1,234,567]");
  EXPECT_EQ (Format ("[%2d]", 12345), "[12345]");  // width never cuts
  EXPECT_EQ (Format ("%d%%", 50), "50%");
}

TEST (Formatter, TextsCharactersAndStatus) {
  EXPECT_EQ (Format ("open %a failed", A ("\\efi\\a.txt")), "open \\efi\\a.txt failed");
  EXPECT_EQ (Format ("[%6a][%-6a]", A ("ab"), A ("cd")), "[    ab][cd    ]");
  EXPECT_EQ (Format ("%.3a", A ("abcdef")), "abc");
  EXPECT_EQ (Format ("%a", static_cast<const CHAR8 *> (nullptr)), "<null string>");
  const CHAR16 Wide[] = {'w', 'i', 'd', 'e', 0};
  EXPECT_EQ (Format ("%s!", Wide), "wide!");
  EXPECT_EQ (Format ("%c%c", 'o', 'k'), "ok");
  EXPECT_EQ (Format ("%r", EFI_SUCCESS), "Success");
  EXPECT_EQ (Format ("%r", EFI_NOT_FOUND), "Not Found");
  EXPECT_EQ (Format ("%r", EFI_LOAD_ERROR), "Load Error");
  EXPECT_EQ (Format ("%r", EFI_ACCESS_DENIED), "Access Denied");
  EXPECT_EQ (Format ("%r", EFIERR (200)), "80000000000000C8");
  // GBK bytes pass through untouched.
  EXPECT_EQ (Format ("\xB1\xC8\xBD\xCF %d", 3), "\xB1\xC8\xBD\xCF 3");
  // Line ends: "\n" becomes "\r\n", "\r\n" stays.
  EXPECT_EQ (Format ("a\nb\r\nc"), "a\r\nb\r\nc");
}

TEST (Formatter, StaysWithinTheBuffer) {
  CHAR8 Buffer[8];
  std::memset (Buffer, 0x5A, sizeof (Buffer));
  EXPECT_EQ (AsciiSPrint (Buffer, 6, A ("%d-%a"), 12345, A ("xyz")), 5u);
  EXPECT_STREQ (reinterpret_cast<char *> (Buffer), "12345");
  EXPECT_EQ (Buffer[6], 0x5A);
  EXPECT_EQ (AsciiSPrint (Buffer, 1, A ("abc")), 0u);
  EXPECT_EQ (Buffer[0], 0);
  Buffer[0] = 0x5A;
  EXPECT_EQ (AsciiSPrint (Buffer, 0, A ("abc")), 0u);
  EXPECT_EQ (Buffer[0], 0x5A);  // a size of 0 writes nothing
  // Huge widths are cut at the buffer too.
  EXPECT_EQ (AsciiSPrint (Buffer, sizeof (Buffer), A ("%99999d"), 1), 7u);
  EXPECT_EQ (AsciiSPrint (Buffer, sizeof (Buffer), A ("%*d|%-*a|"), 2000000000, 5, 2000000000, A ("x")), 7u);
  EXPECT_STREQ (reinterpret_cast<char *> (Buffer), "       ");
  EXPECT_EQ (AsciiSPrint (Buffer, sizeof (Buffer), A ("%*d"), -3, 5), 3u);  // negative width: left-justified
  EXPECT_STREQ (reinterpret_cast<char *> (Buffer), "5  ");
}

TEST (Formatter, PrintWritesUtf16ToTheConsoleAndStopsAt320) {
  env::Firmware Fw;
  EFI_SYSTEM_TABLE *SavedSt = gST;
  gST = Fw.SystemTable ();
  EXPECT_EQ (Print (u"Version %x VS %x\r\n", 8u, 9u), 16u);
  EXPECT_EQ (Fw.ConsoleText (), "Version 8 VS 9\r\n");
  Fw.ClearConsole ();
  Print (u"%a\u00e9", A ("caf"));
  EXPECT_EQ (Fw.ConsoleText (), "caf\xC3\xA9");
  Fw.ClearConsole ();
  std::string Long (400, 'x');
  EXPECT_EQ (Print (u"%a", A (Long.c_str ())), 320u);
  EXPECT_EQ (Fw.ConsoleText (), std::string (320, 'x'));
  gST = SavedSt;
}

}  // namespace
