// Placeholder until the viewers land: they open nothing.
#include "viewers/viewers.h"

WINDOW_HEADER *OpenHexViewer (UINT16, UINT16, const CHAR8 *, UINT8) { return nullptr; }
WINDOW_HEADER *OpenImageViewer (UINT16, UINT16, UINT8, const CHAR8 *) { return nullptr; }
WINDOW_HEADER *OpenIconViewer (UINT16, UINT16, UINT8, const CHAR8 *) { return nullptr; }
