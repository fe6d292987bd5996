#include "core/help_window.h"

WINDOW_HEADER *EFIAPI ShowHelpWindow (UINT8, const CHAR8 *, UINT16, const CHAR8 *) { return nullptr; }
