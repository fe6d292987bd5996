// Viewers for opened files: hex, image (BMP and JPEG) and icon (ICO).
#pragma once

#include "platform/uefi.h"
#include "services/window_records.h"

WINDOW_HEADER *OpenHexViewer (UINT16 X, UINT16 Y, const CHAR8 *Path, UINT8 VolumeIndex);
WINDOW_HEADER *OpenImageViewer (UINT16 X, UINT16 Y, UINT8 VolumeIndex, const CHAR8 *Path);
WINDOW_HEADER *OpenIconViewer (UINT16 X, UINT16 Y, UINT8 VolumeIndex, const CHAR8 *Path);
