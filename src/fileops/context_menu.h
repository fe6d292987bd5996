// The right-button menu of the main window's listing, shared by all main windows.
#pragma once

#include "filemanager/main_window.h"

VOID ShowContextMenu (MAIN_WINDOW *Window, UINT16 X, UINT16 Y, UINT16 SelectedCount);
