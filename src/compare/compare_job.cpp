#include "compare/compare_job.h"

#include "core/driver_state.h"

COMPARE_JOB *EFIAPI StartCompareJob (UINT8, UINT8, const CHAR8 *, WINDOW_HEADER *) { return nullptr; }
COMPARE_JOB *EFIAPI StartCompareJobWithCallback (UINT8, UINT8, const CHAR8 *, COMPARE_PROGRESS_CALLBACK) {
  return nullptr;
}
VOID EFIAPI CancelCompareJob (COMPARE_JOB *) {}
COMPARE_RESULT *EFIAPI SnapshotCompareResult (COMPARE_JOB *) { return nullptr; }
VOID EFIAPI FreeCompareSnapshot (COMPARE_RESULT *) {}
void ResetCompareJobsState () {}
