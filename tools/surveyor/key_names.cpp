#include "tools/surveyor/key_names.h"

#include <cctype>
#include <cstdlib>

#include "env/desktop/desktop_input.h"
#include "services/messages.h"

namespace surveyor {

namespace {

struct NamedKey {
  const char *Name;
  CHAR16 Char;
  UINT16 Scan;
};

// UEFI scan codes: 1 up, 2 down, 3 right, 4 left, 5 home, 6 end, 7 insert,
// 8 delete, 9 page up, 10 page down, 11.. F1.., 0x17 escape; "menu" is the
// key that opens a context menu.
const NamedKey Keys[] = {
    {"up", 0, 0x01},       {"down", 0, 0x02},     {"right", 0, 0x03},  {"left", 0, 0x04},
    {"home", 0, 0x05},     {"end", 0, 0x06},      {"insert", 0, 0x07}, {"delete", 0, 0x08},
    {"pageup", 0, 0x09},   {"pagedown", 0, 0x0A}, {"escape", 0, 0x17}, {"esc", 0, 0x17},
    {"enter", '\r', 0},    {"tab", '\t', 0},      {"backspace", 8, 0}, {"space", ' ', 0},
    {"menu", 0, env::kScanContextMenu},
};

}  // namespace

bool ParseKeyName (const std::string &Name, KeyStroke &Out) {
  Out = KeyStroke ();
  std::string Rest = Name;
  for (;;) {
    size_t Plus = Rest.find ('+');
    if (Plus == std::string::npos || Plus == 0 || Plus + 1 == Rest.size ()) break;
    std::string Modifier = Rest.substr (0, Plus);
    for (char &C : Modifier) C = static_cast<char> (std::tolower (static_cast<unsigned char> (C)));
    if (Modifier == "ctrl" || Modifier == "control")
      Out.Shift |= KEY_STATE_LEFT_CONTROL;
    else if (Modifier == "alt")
      Out.Shift |= KEY_STATE_LEFT_ALT;
    else if (Modifier == "shift")
      Out.Shift |= KEY_STATE_LEFT_SHIFT;
    else
      return false;
    Rest = Rest.substr (Plus + 1);
  }
  if (Out.Shift != 0) Out.Shift |= KEY_STATE_VALID;
  if (Rest.size () == 1) {
    Out.Char = static_cast<unsigned char> (Rest[0]);
    return true;
  }
  std::string Lower = Rest;
  for (char &C : Lower) C = static_cast<char> (std::tolower (static_cast<unsigned char> (C)));
  for (const NamedKey &K : Keys)
    if (Lower == K.Name) {
      Out.Char = K.Char;
      Out.Scan = K.Scan;
      return true;
    }
  if (Lower.size () >= 2 && Lower[0] == 'f') {
    int Number = std::atoi (Lower.c_str () + 1);
    if (Number >= 1 && Number <= 12 && Lower == "f" + std::to_string (Number)) {
      Out.Scan = static_cast<UINT16> (0x0B + Number - 1);
      return true;
    }
  }
  return false;
}

}  // namespace surveyor
