// The file-manager window of a volume: one per volume.
#pragma once

#include "platform/uefi.h"
#include "services/control_driver.h"
#include "services/file_driver.h"
#include "services/window_records.h"

#define MAIN_WINDOW_SIZE 984
#define MAIN_PATH_SIZE   512
#define ROW_STACK_DEPTH  64
#define NO_COMPARE_TARGET 255

typedef struct {
  WINDOW_HEADER Header;             // 0
  VOLUME_RECORD *Volume;            // 272
  UINT8 VolumeIndex;                // 280
  UINT8 CompareTarget1;             // 281 volume of the first comparison item, 255 when none
  UINT8 CompareTarget2;             // 282
  UINT8 ReadOnly;                   // 283
  UINT32 Reserved;                  // 284
  WINDOW_HEADER *MenuBar;           // 288
  WINDOW_HEADER *FilePopup;         // 296
  WINDOW_HEADER *HelpPopup;         // 304
  LIST_CONTROL *List;               // 312
  CHAR8 CurrentPath[MAIN_PATH_SIZE];// 320
  UINT16 DirHandle;                 // 832
  UINT16 Depth;                     // 834
  UINT16 RowStack[ROW_STACK_DEPTH]; // 836
} MAIN_WINDOW;

static_assert (sizeof (MAIN_WINDOW) <= MAIN_WINDOW_SIZE);

WINDOW_HEADER *EFIAPI OpenVolumeWindow (UINT16 Width, UINT16 Height, UINT8 VolumeIndex, VOLUME_RECORD *Volume,
                                        const CHAR8 *InitialPath);
// The main window's message handler (FindNextWindow walks main windows by it).
UINT8 EFIAPI MainWindowHandler (WINDOW_HEADER *Window, MESSAGE *Message);
