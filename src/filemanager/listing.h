// Listing of the main window's current directory and navigation.
#pragma once

#include "filemanager/main_window.h"

BOOLEAN LoadListing (MAIN_WINDOW *Window, const CHAR8 *Path);
VOID Refresh (MAIN_WINDOW *Window);
VOID EnterDirectory (MAIN_WINDOW *Window, const CHAR8 *Name);
BOOLEAN GoUp (MAIN_WINDOW *Window);
VOID EFIAPI GoUpCommand (VOID *Item, WINDOW_HEADER *Context);
VOID RecountDepth (MAIN_WINDOW *Window);
VOID OpenItem (MAIN_WINDOW *Window, UINT16 Row);
VOID ShowSelection (MAIN_WINDOW *Window, UINT16 Value, UINT16 SelectedCount);
VOID ShowPathStatus (MAIN_WINDOW *Window);
// CurrentPath, a "\" unless it ends with one, then Name, into a 512-byte Buffer; false when it does not fit.
BOOLEAN BuildFullPath (const MAIN_WINDOW *Window, const CHAR8 *Name, CHAR8 *Buffer);
