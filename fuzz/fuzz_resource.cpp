// Fuzz target: the resource-string file parser. Whatever the bytes, a lookup
// must not crash, a found text is at most 255 bytes and holds no line end,
// and a key found once is found again with the same text when the file is
// read with CRLF line ends instead of LF.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "env/files/resource_file.h"

namespace {

void Check (std::string_view Text, const char *Section, const char *Key) {
  std::string Value;
  if (!env::LookupResourceString (Text, Section, Key, Value)) return;
  if (Value.size () > env::kResourceValueMax) __builtin_trap ();
  if (Value.find ('\n') != std::string::npos || Value.find ('\r') != std::string::npos) __builtin_trap ();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  std::string_view Text (reinterpret_cast<const char *> (Data), Size);
  static const char *const Sections[] = {nullptr, "File Menu", "FileMenu", "HexFile", "", "a"};
  static const char *const Keys[] = {"File", "delete", "tipFileInfo", "", "k", "TypeDirectory"};
  for (const char *Section : Sections)
    for (const char *Key : Keys) Check (Text, Section, Key);

  // A section and key taken from the input itself, so found lookups happen often.
  std::string Section, Key;
  size_t Split = Text.find ('|');
  if (Split != std::string_view::npos && Split < 64) {
    Section.assign (Text.substr (0, Split));
    size_t End = Text.find ('|', Split + 1);
    if (End != std::string_view::npos && End - Split < 64) Key.assign (Text.substr (Split + 1, End - Split - 1));
  }
  Check (Text, Section.c_str (), Key.c_str ());
  Check (Text, nullptr, Key.c_str ());

  // LF and CRLF files give the same answers.
  std::string Crlf;
  Crlf.reserve (Size * 2);
  for (char C : Text) {
    if (C == '\n') Crlf += '\r';
    Crlf += C;
  }
  std::string A, B;
  bool FoundA = env::LookupResourceString (Text, Section.c_str (), Key.c_str (), A);
  bool FoundB = env::LookupResourceString (Crlf, Section.c_str (), Key.c_str (), B);
  if (FoundA != FoundB || A != B) {
    // A lone CR before LF already ended the line; only inputs without CR must agree.
    if (Text.find ('\r') == std::string_view::npos) __builtin_trap ();
  }
  return 0;
}
