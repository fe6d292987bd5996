#include "env/files/resource_file.h"
#include "env/ascii_case.h"

#include <cstring>

namespace env {

namespace {

std::string_view Trim (std::string_view S) {
  size_t Begin = 0, End = S.size ();
  while (Begin < End && (S[Begin] == ' ' || S[Begin] == '\t')) Begin++;
  while (End > Begin && (S[End - 1] == ' ' || S[End - 1] == '\t')) End--;
  return S.substr (Begin, End - Begin);
}

bool SameName (std::string_view A, const char *B) { return EqualIgnoringAsciiCase (A, B); }

}  // namespace

bool LookupResourceString (std::string_view Text, const char *Section, const char *Key, std::string &Value) {
  if (Key == nullptr) return false;
  bool InSection = (Section == nullptr);   // the null section is the part before any "[...]"
  size_t Pos = 0;
  while (Pos < Text.size ()) {
    size_t End = Pos;
    while (End < Text.size () && Text[End] != '\n' && Text[End] != '\r') End++;
    std::string_view Line = Trim (Text.substr (Pos, End - Pos));
    Pos = End + 1;
    if (Line.empty () || Line[0] == ';' || Line[0] == '#') continue;

    if (Line[0] == '[') {
      size_t Close = Line.find (']');
      std::string_view Name = Trim (Line.substr (1, Close == std::string_view::npos ? std::string_view::npos : Close - 1));
      InSection = (Section != nullptr) && SameName (Name, Section);
      continue;
    }
    if (!InSection) continue;

    size_t Equal = Line.find ('=');
    if (Equal == std::string_view::npos) continue;
    if (!SameName (Trim (Line.substr (0, Equal)), Key)) continue;
    std::string_view Found = Trim (Line.substr (Equal + 1));
    if (Found.size () >= 2 && Found.front () == '"' && Found.back () == '"') Found = Found.substr (1, Found.size () - 2);
    if (Found.size () > kResourceValueMax) Found = Found.substr (0, kResourceValueMax);
    Value.assign (Found.data (), Found.size ());
    return true;
  }
  return false;
}

}  // namespace env
