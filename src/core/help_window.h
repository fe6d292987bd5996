// The help window: one plain window with a read-only text, at most one at a time.
#pragma once

#include "platform/uefi.h"
#include "services/window_records.h"

WINDOW_HEADER *EFIAPI ShowHelpWindow (UINT8 Volume, const CHAR8 *Source, UINT16 Length, const CHAR8 *Title);
