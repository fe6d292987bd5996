// Fuzz target: the difference lines of a comparison job, as the backup check
// reads them. Whatever the bytes, a line either matches none of the job's
// fixed texts or is taken apart so that telling it again in the job's own
// words gives the line back (as UTF-8), and telling it in English works.
#include <cstddef>
#include <cstdint>
#include <string>

#include "env/gui/gbk.h"
#include "tools/surveyor/difference_lines.h"

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  std::string Line (reinterpret_cast<const char *> (Data), Size);
  Line = Line.substr (0, Line.find ('\0'));   // the job's lines end at their terminator
  surveyor::DifferenceLine Parsed;
  if (!surveyor::ParseDifferenceLine (Line, Parsed)) return 0;
  surveyor::TellDifference (Parsed, surveyor::Language::English);
  // Subjects are printed as the host's bytes: only an ASCII one reads the
  // same once the line is turned into UTF-8 ("\\" at its start is made "\").
  for (char C : Parsed.Subject)
    if (static_cast<unsigned char> (C) >= 0x80) return 0;
  if (Parsed.Subject.compare (0, 2, "\\\\") == 0) return 0;
  if (surveyor::TellDifference (Parsed, surveyor::Language::Chinese) != env::GbkToUtf8 (Line)) __builtin_trap ();
  return 0;
}
