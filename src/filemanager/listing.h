// Listing of the main window's current directory and navigation.
#pragma once

#include "filemanager/main_window.h"

// Appends the entries of Path to the list; false when it cannot be opened.
// A folder that opens but cannot be read is reported with a message box and
// *Unreadable (when given) set; it still counts as listed.
BOOLEAN LoadListing (MAIN_WINDOW *Window, const CHAR8 *Path, BOOLEAN *Unreadable = nullptr);
// Lists CurrentPath again; false when the folder could not be read.
BOOLEAN Refresh (MAIN_WINDOW *Window);
VOID EnterDirectory (MAIN_WINDOW *Window, const CHAR8 *Name);
BOOLEAN GoUp (MAIN_WINDOW *Window);
VOID EFIAPI GoUpCommand (VOID *Item, WINDOW_HEADER *Context);
VOID RecountDepth (MAIN_WINDOW *Window);
VOID OpenItem (MAIN_WINDOW *Window, UINT16 Row);
VOID ShowSelection (MAIN_WINDOW *Window, UINT16 Value, UINT16 SelectedCount);
VOID ShowPathStatus (MAIN_WINDOW *Window);
// CurrentPath, a "\" unless it ends with one, then Name, into a 512-byte Buffer; false when it does not fit.
BOOLEAN BuildFullPath (const MAIN_WINDOW *Window, const CHAR8 *Name, CHAR8 *Buffer);
