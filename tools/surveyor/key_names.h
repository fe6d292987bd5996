// Key names of scripts ("ctrl+c", "alt+f", "delete", "left", "enter",
// "escape", "f5", a single character) as UEFI key data.
#pragma once

#include <string>

#include "platform/uefi.h"

namespace surveyor {

struct KeyStroke {
  CHAR16 Char = 0;     // Unicode character, 0 for keys that only have a scan code
  UINT16 Scan = 0;     // UEFI scan code
  UINT32 Shift = 0;    // UEFI key-state encoding of shift, control and alt
};

bool ParseKeyName (const std::string &Name, KeyStroke &Out);

}  // namespace surveyor
