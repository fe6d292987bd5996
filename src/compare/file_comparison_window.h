// The file comparison window's object and the operations its parts share.
#pragma once

#include "compare/compare_records.h"
#include "services/window_records.h"

#define FILE_COMPARISON_SIZE    848
#define FILE_COMPARISON_PAUSE   33     // id of the pause button
#define FILE_COMPARISON_MAX_LINES 1024

typedef struct {
  WINDOW_HEADER Header;        // 0
  CHAR8 RootPath[512];         // 272 the path compared
  UINT8 SourceVolume;          // 784
  UINT8 BackupVolume;          // 785
  UINT8 Reserved[6];           // 786
  CONTROL *LevelField;         // 792 the job's line of the current level
  CONTROL *EntryField;         // 800 the job's line of the current entry
  CONTROL *ResultLabel;        // 808
  LOG_VIEW *LogView;           // 816 difference lines
  COMPARE_JOB *Job;            // 824 null once the job has ended or failed to start
  COMPARE_RESULT *Snapshot;    // 832 copy of the result taken when the job ended
} FILE_COMPARISON_WINDOW;

static_assert (sizeof (FILE_COMPARISON_WINDOW) <= FILE_COMPARISON_SIZE);
static_assert (offsetof (FILE_COMPARISON_WINDOW, RootPath) == 272);

// The shared result popup, built on first use (result_menu.cpp).
extern WINDOW_HEADER *gResultMenu;

// Builds (or re-targets) the result menu for the selected line of the log
// view and places it at X, Y; false when the line has no usable entry.
BOOLEAN BuildResultMenu (FILE_COMPARISON_WINDOW *Window, UINT16 X, UINT16 Y);
// Releases the shared popup's hold on a window that goes away.
VOID DetachResultMenu (FILE_COMPARISON_WINDOW *Window);
// Result entry E of the selected line and its folder entry F; false when the
// line is not usable.
BOOLEAN SelectedEntries (FILE_COMPARISON_WINDOW *Window, RESULT_ENTRY **Entry, RESULT_ENTRY **Folder);
VOID ResetResultMenuState ();
