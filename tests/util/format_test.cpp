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
  EXPECT_EQ (Format ("%d files|%d|%d,%d|%u", 42, -7, 640, 480, 0xFFFFFFFFu), "42 files|-7|640,480|4294967295");
  // %d takes 32 bits: a 64-bit argument is needed for %ld.
  EXPECT_EQ (Format ("%ld|%ld|%lu", static_cast<INT64> (-5000000000LL), static_cast<UINT64> (1234567890123ULL),
                     static_cast<UINT64> (18446744073709551615ULL)),
             "-5000000000|1234567890123|18446744073709551615");
  EXPECT_EQ (Format ("%d %ld %d", 1, static_cast<INT64> (2), 3), "1 2 3");
}

TEST (Formatter, HexadecimalIsUpperCase) {
  // %x takes 32 bits, not sign-extended; %X pads with zeros.
  EXPECT_EQ (Format ("%x|%x,%x|%x|%lx", 0xabcdefu, 16u, 15u, -1, static_cast<UINT64> (0x123456789AULL)),
             "ABCDEF|10,F|FFFFFFFF|123456789A");
  EXPECT_EQ (Format ("%02x|%04x|%4x|%8X", 10u, 0x1F0u, 0x1Fu, 0x1Fu), "0A|01F0|  1F|0000001F");
}

TEST (Formatter, WidthPaddingAndFlags) {
  EXPECT_EQ (Format ("%04d.%02d.%02d %02d:%02d:%02d", 2024, 3, 9, 7, 5, 0), "2024.03.09 07:05:00");
  // Left-justified means no zeros; a width never cuts.
  EXPECT_EQ (Format ("[%5d][%-5d][%05d][%-05d]", 42, 42, -42, 42), "[   42][42   ][-0042][42   ]");
  EXPECT_EQ (Format ("[%+d][%,d][%2d]%d%%", 42, 1234567, 12345, 50), "[+42][1,234,567][12345]50%");
}

TEST (Formatter, TextsCharactersAndStatus) {
  EXPECT_EQ (Format ("open %a failed", A ("\\efi\\a.txt")), "open \\efi\\a.txt failed");
  EXPECT_EQ (Format ("[%6a][%-6a]", A ("ab"), A ("cd")), "[    ab][cd    ]");
  EXPECT_EQ (Format ("%.3a", A ("abcdef")), "abc");
  EXPECT_EQ (Format ("%a", static_cast<const CHAR8 *> (nullptr)), "<null string>");
  const CHAR16 Wide[] = {'w', 'i', 'd', 'e', 0};
  EXPECT_EQ (Format ("%s!", Wide), "wide!");
  EXPECT_EQ (Format ("%c%c", 'o', 'k'), "ok");
  EXPECT_EQ (Format ("%r|%r|%r|%r|%r", EFI_SUCCESS, EFI_NOT_FOUND, EFI_LOAD_ERROR, EFI_ACCESS_DENIED, EFIERR (200)),
             "Success|Not Found|Load Error|Access Denied|80000000000000C8");
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
