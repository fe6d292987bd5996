// Placeholder until the file operations land.
#include "fileops/file_ops.h"

UINT16 CollectSelection (MAIN_WINDOW *) { return 0; }
VOID EFIAPI CopyCommand (VOID *, WINDOW_HEADER *) {}
VOID EFIAPI PasteCommand (VOID *, WINDOW_HEADER *) {}
VOID EFIAPI DeleteCommand (VOID *, WINDOW_HEADER *) {}
VOID EFIAPI RenameCommand (VOID *, WINDOW_HEADER *) {}
VOID EFIAPI NewDirCommand (VOID *, WINDOW_HEADER *) {}
VOID RenameFinished (MAIN_WINDOW *, MESSAGE *) {}
VOID NewDirFinished (MAIN_WINDOW *, MESSAGE *) {}
BOOLEAN RenameItem (MAIN_WINDOW *, const CHAR8 *, const CHAR8 *) { return FALSE; }
BOOLEAN MakeDirectory (MAIN_WINDOW *, const CHAR8 *) { return FALSE; }
