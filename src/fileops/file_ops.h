// Copy, paste, delete, rename and new directory of the main window.
#pragma once

#include "filemanager/main_window.h"

UINT16 CollectSelection (MAIN_WINDOW *Window);
VOID EFIAPI CopyCommand (VOID *Item, WINDOW_HEADER *Context);
VOID EFIAPI PasteCommand (VOID *Item, WINDOW_HEADER *Context);
VOID EFIAPI DeleteCommand (VOID *Item, WINDOW_HEADER *Context);
VOID EFIAPI RenameCommand (VOID *Item, WINDOW_HEADER *Context);
VOID EFIAPI NewDirCommand (VOID *Item, WINDOW_HEADER *Context);
VOID RenameFinished (MAIN_WINDOW *Window, MESSAGE *Record);
VOID NewDirFinished (MAIN_WINDOW *Window, MESSAGE *Record);
BOOLEAN RenameItem (MAIN_WINDOW *Window, const CHAR8 *OldName, const CHAR8 *NewName);
BOOLEAN MakeDirectory (MAIN_WINDOW *Window, const CHAR8 *Name);
