// Pieces of the main window shared between its source files.
#pragma once

#include "filemanager/main_window.h"

// Process-wide default size and cascade position of new main windows.
extern UINT16 gDefaultWidth;
extern UINT16 gDefaultHeight;
extern UINT16 gCascadeX;
extern UINT16 gCascadeY;

// The menu-bar path field of the window, or null.
CONTROL *MainPathField (MAIN_WINDOW *Window);
// Lays the window out for a new size; refused below the minimum size.
VOID ResizeMainWindow (MAIN_WINDOW *Window, UINT16 Width, UINT16 Height);
// Smallest width and height a main window accepts.
UINT16 MainMinimumWidth ();
UINT16 MainMinimumHeight (MAIN_WINDOW *Window);

// Enables or greys the go-up command on the toolbar (redrawn) and in the File popup.
VOID SetGoUpEnabled (MAIN_WINDOW *Window, BOOLEAN Enable);

VOID EFIAPI ExitCommand (VOID *Item, WINDOW_HEADER *Context);
VOID EFIAPI AboutCommand (VOID *Item, WINDOW_HEADER *Context);
