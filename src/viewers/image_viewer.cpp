// Placeholder until the image viewer lands.
#include "viewers/viewers.h"
WINDOW_HEADER *OpenImageViewer (UINT16, UINT16, UINT8, const CHAR8 *) { return nullptr; }
WINDOW_HEADER *OpenIconViewer (UINT16, UINT16, UINT8, const CHAR8 *) { return nullptr; }
