// The file comparison window: runs one comparison job and lists its differences.
#pragma once

#include "platform/uefi.h"
#include "services/window_records.h"

WINDOW_HEADER *OpenFileComparison (UINT8 SourceVolume, UINT8 BackupVolume, const CHAR8 *Path);
