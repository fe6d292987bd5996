// The resource-string file: an INI-style text of sections and keys.
//
//   ; comment            # comment too
//   TopKey = value        keys before the first "[...]" line have no section
//   [File Menu]
//   File = File(F)
//
// Lines end with LF, CRLF or a lone CR; the last line needs no line end.
// Blank lines and lines whose first non-blank byte is ';' or '#' are skipped,
// as are lines with neither "[" in front nor "=" anywhere. Spaces and tabs
// around section names, keys and values are trimmed; the value is everything
// after the first '='. A value written between double quotes loses the two
// quotes and keeps its inner spaces ("Folder: "); other quotes stay.
// Section names and keys are compared without regard to the case of ASCII
// letters; the first matching line wins. Any other byte (non-ASCII, control bytes, NUL) is kept as it is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace env {

// Longest value handed back; longer values are cut to this many bytes.
constexpr size_t kResourceValueMax = 255;

// Looks up Key in Section (nullptr: the keys in front of every section) of
// the file text. On success Value holds the text, at most kResourceValueMax
// bytes, and the result is true.
bool LookupResourceString (std::string_view Text, const char *Section, const char *Key, std::string &Value);

}  // namespace env
