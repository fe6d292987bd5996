// Localized texts, looked up by section and key in the resource file.
#pragma once

#include "platform/uefi.h"

#define RESOURCE_FILE_PATH "\\efi\\kivora\\strings\\surveyor.res"

// Returns the text (at most 255 characters) or "***" when it is missing. The
// text lives in one of three rotating buffers: two further calls keep it.
CHAR8 *GetString (const CHAR8 *Section, const CHAR8 *Key);
