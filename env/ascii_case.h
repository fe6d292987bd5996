// Names compared the way volumes, resource files and settings compare them:
// ASCII letters without regard to case, every other byte exactly.
#pragma once

#include <string_view>

namespace env {

inline char AsciiUpper (char Ch) { return Ch >= 'a' && Ch <= 'z' ? static_cast<char> (Ch - 'a' + 'A') : Ch; }

inline char AsciiLower (char Ch) { return Ch >= 'A' && Ch <= 'Z' ? static_cast<char> (Ch - 'A' + 'a') : Ch; }

inline bool EqualIgnoringAsciiCase (std::string_view A, std::string_view B) {
  if (A.size () != B.size ()) return false;
  for (size_t I = 0; I < A.size (); I++)
    if (AsciiUpper (A[I]) != AsciiUpper (B[I])) return false;
  return true;
}

}  // namespace env
