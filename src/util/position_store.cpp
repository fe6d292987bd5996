// Placeholder until the position store lands.
#include "util/position_store.h"

BOOLEAN LoadWindowPosition (const CHAR8 *, UINT16 *, UINT16 *, UINT16 *, UINT16 *) { return FALSE; }
VOID SaveWindowPosition (const CHAR8 *, UINT16, UINT16, UINT16, UINT16) {}
