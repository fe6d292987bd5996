// Placeholder until the main window lands.
#include "filemanager/main_window.h"

#include "core/driver_state.h"

WINDOW_HEADER *EFIAPI OpenVolumeWindow (UINT16, UINT16, UINT8, VOLUME_RECORD *, const CHAR8 *) { return nullptr; }
UINT8 EFIAPI MainWindowHandler (WINDOW_HEADER *, MESSAGE *) { return 0; }
void ResetFileManagerState () {}
