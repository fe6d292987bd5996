// Directory comparison jobs: up to four timer-driven walks of a source tree
// against a backup tree.
#pragma once

#include "compare/compare_records.h"

COMPARE_JOB *EFIAPI StartCompareJob (UINT8 SourceVolume, UINT8 BackupVolume, const CHAR8 *Path, WINDOW_HEADER *Window);
COMPARE_JOB *EFIAPI StartCompareJobWithCallback (UINT8 SourceVolume, UINT8 BackupVolume, const CHAR8 *Path,
                                                 COMPARE_PROGRESS_CALLBACK Callback);
VOID EFIAPI CancelCompareJob (COMPARE_JOB *Job);
COMPARE_RESULT *EFIAPI SnapshotCompareResult (COMPARE_JOB *Job);
VOID EFIAPI FreeCompareSnapshot (COMPARE_RESULT *Snapshot);
