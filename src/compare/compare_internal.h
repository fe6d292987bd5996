// Operations shared by the parts of a comparison job: the walk over the two
// trees, the recording of differences and the progress reports. Applications
// see only compare_job.h.
#pragma once

#include "compare/compare_records.h"

// Job table and the scratch path shared by all jobs (ticks never overlap).
extern COMPARE_JOB *gCompareJobs[COMPARE_JOB_SLOTS];
extern CHAR8 gCompareScratchPath[512];

// The walk (compare_walk.cpp).
BOOLEAN BeginWalk (COMPARE_JOB *Job);
BOOLEAN CheckRootPath (COMPARE_JOB *Job);
BOOLEAN CompareRootLevel (COMPARE_JOB *Job, COMPARE_LEVEL *Level);
VOID StepLevel (COMPARE_JOB *Job, COMPARE_LEVEL *Level);
BOOLEAN StepEntry (COMPARE_JOB *Job);
BOOLEAN NextEntry (COMPARE_JOB *Job);
BOOLEAN PushLevel (COMPARE_JOB *Job, DIRECTORY_ENTRY *Entry);
BOOLEAN PopLevel (COMPARE_JOB *Job);
BOOLEAN CompareFile (COMPARE_JOB *Job, DIRECTORY_ENTRY *Entry);
BOOLEAN CompareChunk (COMPARE_JOB *Job);
// Pairs the names of a level's two listings (compare_match.cpp).
VOID MatchEntries (COMPARE_LEVEL *Level);
// Frees both listings of a level and closes its handles.
VOID ReleaseLevel (COMPARE_LEVEL *Level);

// Differences and progress (compare_report.cpp).
VOID ReportDifference (COMPARE_JOB *Job, const CHAR8 *Name, const CHAR8 *Message, UINT8 IsDirectory, UINT8 Code);
UINT16 AddResultEntry (COMPARE_RESULT *Result, const CHAR8 *Name, UINT16 HeadingIndex, UINT8 IsDirectory,
                       UINT8 Code);
VOID ReportProgress (COMPARE_JOB *Job, UINT16 Kind, const CHAR8 *Text);
// Width in characters of the lines sent to the job's window or callback.
UINT16 ProgressLineWidth (const COMPARE_JOB *Job);

// Life of a job (compare_job.cpp).
COMPARE_JOB *CreateCompareJob (UINT8 SourceVolume, UINT8 BackupVolume, const CHAR8 *Path, WINDOW_HEADER *Window,
                               COMPARE_PROGRESS_CALLBACK Callback);
VOID EFIAPI CompareTimerTick (VOID *Context);
VOID FreeCompareJob (COMPARE_JOB *Job);
// True once CancelCompareJob was asked for the job while one of its own steps
// was running; the step then stops reporting and the job is freed after it.
BOOLEAN CompareJobCancelled (const COMPARE_JOB *Job);
