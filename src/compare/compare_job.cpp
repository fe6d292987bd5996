// Life of a comparison job: the table of four slots, creation and release,
// the timer tick that advances the walk, and the five operations offered to
// applications (start with a window or a callback, cancel, snapshot, free).
#include "compare/compare_job.h"

#include "compare/compare_internal.h"
#include "core/bindings.h"
#include "core/driver_state.h"
#include "platform/library.h"

COMPARE_JOB *gCompareJobs[COMPARE_JOB_SLOTS];
CHAR8 gCompareScratchPath[512];

// The job whose tick is running, and whether it was cancelled meanwhile (a
// progress handler may cancel the job that reports to it; the job is then
// freed when its step has returned, never under its own feet).
static COMPARE_JOB *gRunningJob;
static BOOLEAN gRunningCancelled;

void ResetCompareJobsState () {
  for (UINTN I = 0; I < COMPARE_JOB_SLOTS; I++) gCompareJobs[I] = nullptr;
  ZeroMem (gCompareScratchPath, sizeof (gCompareScratchPath));
  gRunningJob = nullptr;
  gRunningCancelled = FALSE;
}

static INTN JobSlot (const COMPARE_JOB *Job) {
  if (Job == nullptr) return -1;
  for (UINTN I = 0; I < COMPARE_JOB_SLOTS; I++) {
    if (gCompareJobs[I] == Job) return (INTN)I;
  }
  return -1;
}

static INTN FreeSlot () {
  for (UINTN I = 0; I < COMPARE_JOB_SLOTS; I++) {
    if (gCompareJobs[I] == nullptr) return (INTN)I;
  }
  return -1;
}

BOOLEAN CompareJobCancelled (const COMPARE_JOB *Job) {
  return Job == gRunningJob && gRunningCancelled;
}

COMPARE_JOB *CreateCompareJob (UINT8 SourceVolume, UINT8 BackupVolume, const CHAR8 *Path, WINDOW_HEADER *Window,
                               COMPARE_PROGRESS_CALLBACK Callback) {
  if (Path == nullptr) return nullptr;
  UINTN Length = 0;
  while (Path[Length] != 0) {
    if (++Length >= COMPARE_MAX_ROOT_PATH) return nullptr;
  }

  COMPARE_JOB *Job = (COMPARE_JOB *)AllocateZeroPool (sizeof (COMPARE_JOB));
  if (Job == nullptr) return nullptr;
  Job->SourceVolume = SourceVolume;
  Job->BackupVolume = BackupVolume;
  CopyMem (Job->RootPath, Path, Length + 1);
  Job->Done = 0;
  Job->CompareContents = 0;
  Job->Depth = COMPARE_NO_LEVEL;
  Job->NotifyWindow = Window;
  Job->NotifyCallback = Callback;

  // A refused allocation ends the creation; whatever was taken is returned.
  Job->Result = (COMPARE_RESULT *)AllocateZeroPool (sizeof (COMPARE_RESULT));
  if (Job->Result != nullptr) Job->Result->Text = (CHAR8 *)AllocatePool (COMPARE_TEXT_SIZE);
  if (Job->Result != nullptr && Job->Result->Text != nullptr) {
    Job->SourceBuffer = (UINT8 *)AllocatePool (COMPARE_CHUNK_SIZE);
    Job->BackupBuffer = (UINT8 *)AllocatePool (COMPARE_CHUNK_SIZE);
  }
  if (Job->SourceBuffer == nullptr || Job->BackupBuffer == nullptr) {
    FreeCompareJob (Job);
    return nullptr;
  }
  return Job;
}

VOID FreeCompareJob (COMPARE_JOB *Job) {
  if (Job == nullptr) return;
  INTN Slot = JobSlot (Job);
  if (Slot >= 0) {
    gWindowBase->KillTimer (CompareTimerTick, Job);
    gCompareJobs[Slot] = nullptr;
  }
  if (Job->Depth < COMPARE_NO_LEVEL) {
    for (INTN Level = Job->Depth; Level >= 0; Level--) ReleaseLevel (&Job->Levels[Level]);
  }
  Job->Depth = COMPARE_NO_LEVEL;
  if (Job->BackupBuffer != nullptr) FreePool (Job->BackupBuffer);
  if (Job->SourceBuffer != nullptr) FreePool (Job->SourceBuffer);
  if (Job->Result != nullptr) {
    if (Job->Result->Text != nullptr) FreePool (Job->Result->Text);
    FreePool (Job->Result);
  }
  FreePool (Job);
}

VOID EFIAPI CompareTimerTick (VOID *Context) {
  COMPARE_JOB *Job = (COMPARE_JOB *)Context;
  if (JobSlot (Job) < 0) return;   // a timer outliving its job does nothing

  COMPARE_JOB *OuterJob = gRunningJob;
  BOOLEAN OuterCancelled = gRunningCancelled;
  gRunningJob = Job;
  gRunningCancelled = FALSE;

  BOOLEAN Finished = FALSE;
  if (Job->Done != 0 || Job->Depth >= COMPARE_NO_LEVEL) {
    gWindowBase->KillTimer (CompareTimerTick, Job);
    ReportProgress (Job, PROGRESS_FINISHED, nullptr);
    Finished = TRUE;
  } else {
    COMPARE_LEVEL *Level = &Job->Levels[Job->Depth];
    if (Level->State == LEVEL_STATE_FAILED) {
      // The failed directory counts as done: back to its parent's next entry.
      PopLevel (Job);
      ReportProgress (Job, PROGRESS_LEVEL, nullptr);
      if (Job->Depth < COMPARE_NO_LEVEL) Job->Levels[Job->Depth].Cursor++;
    } else if (Level->State == LEVEL_STATE_PROCESSING) {
      if (!StepEntry (Job)) NextEntry (Job);
    } else {
      StepLevel (Job, Level);
      ReportProgress (Job, PROGRESS_LEVEL, nullptr);
    }
  }

  BOOLEAN Cancelled = gRunningCancelled;
  gRunningJob = OuterJob;
  gRunningCancelled = OuterCancelled;
  if (Finished || Cancelled) FreeCompareJob (Job);
}

static COMPARE_JOB *StartJob (UINT8 SourceVolume, UINT8 BackupVolume, const CHAR8 *Path, WINDOW_HEADER *Window,
                              COMPARE_PROGRESS_CALLBACK Callback) {
  if (FreeSlot () < 0) return nullptr;
  COMPARE_JOB *Job = CreateCompareJob (SourceVolume, BackupVolume, Path, Window, Callback);
  if (Job == nullptr) return nullptr;
  if (!BeginWalk (Job)) {
    FreeCompareJob (Job);
    return nullptr;
  }
  if (!gWindowBase->SetTimer (CompareTimerTick, Job)) {
    FreeCompareJob (Job);
    return nullptr;
  }
  // The reports of BeginWalk ran client code, which may have started jobs of
  // its own: take the first slot that is free now.
  INTN Slot = FreeSlot ();
  if (Slot < 0) {
    gWindowBase->KillTimer (CompareTimerTick, Job);
    FreeCompareJob (Job);
    return nullptr;
  }
  gCompareJobs[Slot] = Job;
  return Job;
}

COMPARE_JOB *EFIAPI StartCompareJob (UINT8 SourceVolume, UINT8 BackupVolume, const CHAR8 *Path,
                                     WINDOW_HEADER *Window) {
  return StartJob (SourceVolume, BackupVolume, Path, Window, nullptr);
}

COMPARE_JOB *EFIAPI StartCompareJobWithCallback (UINT8 SourceVolume, UINT8 BackupVolume, const CHAR8 *Path,
                                                 COMPARE_PROGRESS_CALLBACK Callback) {
  return StartJob (SourceVolume, BackupVolume, Path, nullptr, Callback);
}

VOID EFIAPI CancelCompareJob (COMPARE_JOB *Job) {
  INTN Slot = JobSlot (Job);
  if (Slot < 0) return;
  if (Job == gRunningJob) {
    // Cancelled from inside one of its own reports: the timer stops and the
    // slot is free at once (a start made in the same report may take it);
    // the memory goes once the step in progress has returned.
    gWindowBase->KillTimer (CompareTimerTick, Job);
    gCompareJobs[Slot] = nullptr;
    gRunningCancelled = TRUE;
    return;
  }
  FreeCompareJob (Job);
}

COMPARE_RESULT *EFIAPI SnapshotCompareResult (COMPARE_JOB *Job) {
  if (Job == nullptr || Job->Result == nullptr || Job->Result->Text == nullptr) return nullptr;
  const COMPARE_RESULT *Source = Job->Result;
  COMPARE_RESULT *Copy = (COMPARE_RESULT *)AllocatePool (sizeof (COMPARE_RESULT));
  if (Copy == nullptr) return nullptr;
  CHAR8 *Text = (CHAR8 *)AllocatePool (COMPARE_TEXT_SIZE);
  if (Text == nullptr) {
    FreePool (Copy);
    return nullptr;
  }
  CopyMem (Copy, Source, sizeof (COMPARE_RESULT));
  UINT32 Used = Source->TextUsed <= COMPARE_TEXT_SIZE ? Source->TextUsed : COMPARE_TEXT_SIZE;
  CopyMem (Text, Source->Text, Used);
  Copy->Text = Text;
  // Every name points to the same offset in the copy's own text.
  for (UINTN I = 0; I < COMPARE_MAX_ENTRIES; I++) {
    CHAR8 *Name = Source->Entries[I].Name;
    if (Name == nullptr) continue;
    UINTN Offset = (UINTN)(Name - Source->Text);
    Copy->Entries[I].Name = Offset < COMPARE_TEXT_SIZE ? Text + Offset : nullptr;
  }
  return Copy;
}

VOID EFIAPI FreeCompareSnapshot (COMPARE_RESULT *Snapshot) {
  if (Snapshot == nullptr) return;
  if (Snapshot->Text != nullptr) FreePool (Snapshot->Text);
  FreePool (Snapshot);
}
