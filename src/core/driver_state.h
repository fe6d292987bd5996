// Every part of the driver that keeps process-wide state offers a reset, which
// the entry point calls so that a new load starts from zero.
#pragma once

void ResetStringsState ();
void ResetFileManagerState ();
void ResetFileTypesState ();
void ResetContextMenuState ();
void ResetCompareJobsState ();
void ResetFileComparisonState ();
