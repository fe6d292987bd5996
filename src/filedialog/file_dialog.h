// The file dialog offered to applications.
#pragma once

#include "platform/uefi.h"
#include "services/window_records.h"

WINDOW_HEADER *EFIAPI OpenFileDialog (UINT16 X, UINT16 Y, const CHAR8 *Title, UINT8 Volume, UINT8 DirsOnly);
