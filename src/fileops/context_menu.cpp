// Placeholder until the context menu lands.
#include "fileops/context_menu.h"

#include "core/driver_state.h"

VOID ShowContextMenu (MAIN_WINDOW *, UINT16, UINT16, UINT16) {}
void ResetContextMenuState () {}
