// Placeholder until the file types land.
#include "filemanager/file_types.h"

#include "core/driver_state.h"

FILE_ICON_SET gFileIcons;
UINT8 gIconsLoaded;

VOID LoadFileIcons () {}
VOID EnsureFileIcons () {}
UINT8 IconForName (const CHAR8 *) { return gFileIcons.Unknown; }
VOID OpenFile (MAIN_WINDOW *, const CHAR8 *) {}
void ResetFileTypesState () {}
