// The walk of a comparison job: the checks of the root path, the levels of the
// directory tree (listed one state per tick), the matching of names, and the
// comparison of files by size, time stamp and, when asked, contents.
#include "compare/compare_internal.h"
#include "compare/compare_texts.h"
#include "core/bindings.h"
#include "platform/library.h"
#include "util/string_utils.h"

#define LINE_SIZE 512

static VOID CloseLevelHandles (COMPARE_LEVEL *Level) {
  if (Level->SourceHandle != 0) gFileDriver->CloseHandle (Level->SourceHandle);
  if (Level->BackupHandle != 0) gFileDriver->CloseHandle (Level->BackupHandle);
  Level->SourceHandle = 0;
  Level->BackupHandle = 0;
}

VOID ReleaseLevel (COMPARE_LEVEL *Level) {
  if (Level->SourceEntries != nullptr) FreePool (Level->SourceEntries);
  if (Level->BackupEntries != nullptr && Level->BackupEntries != Level->SourceEntries) {
    FreePool (Level->BackupEntries);
  }
  Level->SourceEntries = nullptr;
  Level->BackupEntries = nullptr;
  CloseLevelHandles (Level);
}

// Reports one of the root messages, formatted with the root path.
static VOID ReportRootMessage (COMPARE_JOB *Job, const CHAR8 *Format) {
  CHAR8 Line[LINE_SIZE];
  AsciiSPrint (Line, sizeof (Line), Format, Job->RootPath);
  ReportProgress (Job, PROGRESS_LINE, Line);
}

static DIRECTORY_ENTRY *SingleEntry (const CHAR8 *Name, const FILE_INFO *Info, UINT64 Size) {
  DIRECTORY_ENTRY *Entry = (DIRECTORY_ENTRY *)AllocateZeroPool (sizeof (DIRECTORY_ENTRY));
  if (Entry == nullptr) return nullptr;
  CopyStringN (Entry->Name, Name, sizeof (Entry->Name));
  Entry->IsDirectory = 0;
  Entry->Matched = 1;
  Entry->EntryWord = Info->EntryWord;
  Entry->Size = Size;
  return Entry;
}

BOOLEAN CheckRootPath (COMPARE_JOB *Job) {
  COMPARE_LEVEL *Level = &Job->Levels[0];
  ZeroMem (Level, sizeof (*Level));
  FILE_INFO SourceInfo;
  FILE_INFO BackupInfo;
  ZeroMem (&SourceInfo, sizeof (SourceInfo));
  ZeroMem (&BackupInfo, sizeof (BackupInfo));

  const CHAR8 *Message = nullptr;
  Level->SourceHandle = gFileDriver->OpenDirectory (Job->SourceVolume, Job->RootPath);
  if (Level->SourceHandle == 0) {
    Message = CmpTextRootMissing;
  } else if (!gFileDriver->GetFileInfo (Level->SourceHandle, &SourceInfo)) {
    Message = CmpTextRootUnusable;
  } else if ((Level->BackupHandle = gFileDriver->OpenDirectory (Job->BackupVolume, Job->RootPath)) == 0) {
    Message = CmpTextRootMissingInBackup;
  } else if (!gFileDriver->GetFileInfo (Level->BackupHandle, &BackupInfo)) {
    Message = CmpTextRootBackupUnusable;
  } else if ((SourceInfo.IsDirectory != 0) != (BackupInfo.IsDirectory != 0)) {
    Message = CmpTextRootTypeDiffers;
  } else if (SourceInfo.IsDirectory != 0) {
    CloseLevelHandles (Level);   // directory mode: the levels open their own handles
    return TRUE;
  } else if (SourceInfo.Size != BackupInfo.Size) {
    Message = CmpTextRootSizeDiffers;
  }
  if (Message != nullptr) {
    ReportRootMessage (Job, Message);
    CloseLevelHandles (Level);
    return FALSE;
  }

  // Two files of one size: level 0 becomes a level of that one entry, whose
  // open handles go straight to the content comparison.
  const CHAR8 *Name = nullptr;
  if (!SplitPath (Job->RootPath, Level->Path, &Name) || Name == nullptr) {
    CloseLevelHandles (Level);
    return FALSE;
  }
  Level->SourceEntries = SingleEntry (Name, &SourceInfo, SourceInfo.Size);
  Level->BackupEntries = SingleEntry (Name, &BackupInfo, SourceInfo.Size);
  if (Level->SourceEntries == nullptr || Level->BackupEntries == nullptr) {
    ReleaseLevel (Level);
    return FALSE;
  }
  Level->Cursor = 0;
  Level->SourceCount = 1;
  Level->BackupCount = 1;
  Level->FileSize = SourceInfo.Size;
  Level->FileOffset = 0;
  Level->State = LEVEL_STATE_PROCESSING;
  Level->HeadingAdded = 0;
  Level->HeadingIndex = 0;
  Job->Depth = 0;
  Job->ItemCount = 1;
  return TRUE;
}

BOOLEAN BeginWalk (COMPARE_JOB *Job) {
  Job->Depth = COMPARE_NO_LEVEL;
  if (!CheckRootPath (Job)) {
    ReportProgress (Job, PROGRESS_LINE, CmpTextCompareFailed);
    return FALSE;
  }
  if (Job->Depth < COMPARE_NO_LEVEL) {   // single-file mode
    Job->Done = 0;
    ReportProgress (Job, PROGRESS_LEVEL, nullptr);
    return TRUE;
  }
  ZeroMem (Job->Levels, sizeof (Job->Levels));
  Job->Depth = COMPARE_NO_LEVEL;
  CopyString (Job->Levels[0].Path, Job->RootPath);
  if (!CompareRootLevel (Job, &Job->Levels[0])) {
    Job->Depth = 0;
    Job->Levels[0].State = LEVEL_STATE_FAILED;
    Job->Done = 1;
    return FALSE;
  }
  Job->Depth = 0;
  Job->Done = 0;
  Job->Levels[0].State = LEVEL_STATE_PROCESSING;
  ReportProgress (Job, PROGRESS_LEVEL, nullptr);
  return TRUE;
}

// A level's failure: stored and reported under the level's own path.
static VOID FailLevel (COMPARE_JOB *Job, COMPARE_LEVEL *Level, const CHAR8 *Message, UINT8 Code) {
  ReportDifference (Job, Level->Path, Message, 1, Code);
}

// Source and backup counts of a listed level: matching, or one of the two
// one-sided cases. Returns false when the level fails.
static BOOLEAN ExamineCounts (COMPARE_JOB *Job, COMPARE_LEVEL *Level, BOOLEAN AtRoot) {
  Job->ItemCount += Level->SourceCount > Level->BackupCount ? Level->SourceCount : Level->BackupCount;
  CHAR8 Message[LINE_SIZE];
  if (Level->SourceCount != 0 && Level->BackupCount != 0) {
    MatchEntries (Level);
  } else if (Level->SourceCount != 0) {
    AsciiSPrint (Message, sizeof (Message), CmpTextBackupEmpty, (UINT32)Level->SourceCount);
    FailLevel (Job, Level, Message, DIFF_BACKUP_EMPTY);
    return FALSE;
  } else if (Level->BackupCount != 0 && !AtRoot) {
    // At the root each backup entry is reported as deleted when the level is left.
    AsciiSPrint (Message, sizeof (Message), CmpTextSourceEmpty, (UINT32)Level->BackupCount);
    FailLevel (Job, Level, Message, DIFF_SOURCE_EMPTY);
    return FALSE;
  }
  return TRUE;
}

// The file driver lists "." and ".." first in every directory but the root,
// as FAT does. They name the level itself and its parent, not entries to
// compare: they are taken out of the listing, which keeps the counts (and
// the empty-folder cases) those of the real entries.
static VOID DropDotEntries (DIRECTORY_ENTRY *Entries, UINT16 *Count) {
  if (Entries == nullptr) {
    *Count = 0;
    return;
  }
  UINT16 Kept = 0;
  for (UINT16 I = 0; I < *Count; I++) {
    const CHAR8 *Name = Entries[I].Name;
    BOOLEAN Dot = Name[0] == '.' && (Name[1] == 0 || (Name[1] == '.' && Name[2] == 0));
    if (Dot) continue;
    if (Kept != I) CopyMem (&Entries[Kept], &Entries[I], sizeof (DIRECTORY_ENTRY));
    Kept++;
  }
  *Count = Kept;
}

// One listing state of a level; the root runs them all at once.
static BOOLEAN RunLevelState (COMPARE_JOB *Job, COMPARE_LEVEL *Level, BOOLEAN AtRoot) {
  switch (Level->State) {
    case 0:
      Level->HeadingAdded = 0;
      Level->ListingChecked = 0;
      Level->Cursor = 0;
      Level->SourceEntries = nullptr;
      Level->BackupEntries = nullptr;
      Level->SourceCount = 0;
      Level->BackupCount = 0;
      Level->SourceHandle = 0;
      Level->BackupHandle = 0;
      Level->FileSize = 0;
      Level->FileOffset = 0;
      Level->SourceHandle = gFileDriver->OpenDirectory (Job->SourceVolume, Level->Path);
      if (Level->SourceHandle == 0) {
        Job->ItemCount++;
        FailLevel (Job, Level, CmpTextFolderOpenFailed, DIFF_OPEN_FAILED);
        return FALSE;
      }
      break;
    case 1:
      Level->BackupHandle = gFileDriver->OpenDirectory (Job->BackupVolume, Level->Path);
      if (Level->BackupHandle == 0) {
        FailLevel (Job, Level, CmpTextBackupFolderOpenFailed, DIFF_BACKUP_OPEN_FAILED);
        Job->ItemCount++;
        return FALSE;
      }
      break;
    case 2: {
      FILE_INFO SourceInfo;
      FILE_INFO BackupInfo;
      ZeroMem (&SourceInfo, sizeof (SourceInfo));
      ZeroMem (&BackupInfo, sizeof (BackupInfo));
      const CHAR8 *Message = nullptr;
      UINT8 Code = 0;
      if (!gFileDriver->GetFileInfo (Level->SourceHandle, &SourceInfo)) {
        Message = CmpTextFolderUnusable;
        Code = DIFF_INFO_FAILED;
      } else if (!gFileDriver->GetFileInfo (Level->BackupHandle, &BackupInfo)) {
        Message = CmpTextBackupFolderUnusable;
        Code = DIFF_BACKUP_INFO_FAILED;
      } else if ((SourceInfo.IsDirectory != 0) != (BackupInfo.IsDirectory != 0)) {
        Message = CmpTextTypeDiffers;
        Code = DIFF_TYPE_DIFFERS;
      }
      if (Message != nullptr) {
        FailLevel (Job, Level, Message, Code);
        Job->ItemCount++;
        return FALSE;
      }
      Level->SourceEntries = gFileDriver->ReadDirectory (Level->SourceHandle, &Level->SourceCount);
      DropDotEntries (Level->SourceEntries, &Level->SourceCount);
      break;
    }
    case 3:
      Level->BackupEntries = gFileDriver->ReadDirectory (Level->BackupHandle, &Level->BackupCount);
      DropDotEntries (Level->BackupEntries, &Level->BackupCount);
      break;
    case 4:
      CloseLevelHandles (Level);
      if (!ExamineCounts (Job, Level, AtRoot)) return FALSE;
      break;
    default:
      return TRUE;
  }
  Level->State++;
  return TRUE;
}

BOOLEAN CompareRootLevel (COMPARE_JOB *Job, COMPARE_LEVEL *Level) {
  Level->State = 0;
  while (Level->State < LEVEL_STATE_PROCESSING) {
    if (!RunLevelState (Job, Level, TRUE)) {
      CloseLevelHandles (Level);
      return FALSE;
    }
  }
  return TRUE;
}

VOID StepLevel (COMPARE_JOB *Job, COMPARE_LEVEL *Level) {
  if (Level->State >= LEVEL_STATE_PROCESSING) return;
  if (!RunLevelState (Job, Level, FALSE)) Level->State = LEVEL_STATE_FAILED;
}

BOOLEAN StepEntry (COMPARE_JOB *Job) {
  COMPARE_LEVEL *Level = &Job->Levels[Job->Depth];
  if (Level->Cursor >= Level->SourceCount) return FALSE;
  ReportProgress (Job, PROGRESS_ENTRY, nullptr);
  DIRECTORY_ENTRY *Entry = &Level->SourceEntries[Level->Cursor];
  if (Entry->Matched == 0) return FALSE;   // reported as new when the level is left
  if (Entry->IsDirectory != 0) return PushLevel (Job, Entry);
  return CompareFile (Job, Entry);
}

BOOLEAN NextEntry (COMPARE_JOB *Job) {
  COMPARE_LEVEL *Level = &Job->Levels[Job->Depth];
  CloseLevelHandles (Level);
  Level->ListingChecked = 0;
  Level->Cursor++;
  for (;;) {
    Level = &Job->Levels[Job->Depth];
    if (Level->Cursor < Level->SourceCount) return TRUE;
    if (!PopLevel (Job)) return FALSE;
    ReportProgress (Job, PROGRESS_LEVEL, nullptr);
    Job->Levels[Job->Depth].Cursor++;
  }
}

BOOLEAN PushLevel (COMPARE_JOB *Job, DIRECTORY_ENTRY *Entry) {
  if (Job->Depth + 1 >= COMPARE_MAX_LEVELS) return FALSE;
  COMPARE_LEVEL *Level = &Job->Levels[Job->Depth];
  UINTN NameLength = 0;
  while (NameLength < sizeof (Entry->Name) && Entry->Name[NameLength] != 0) NameLength++;
  if ((UINTN)StringLength (Level->Path) + NameLength + 1 > COMPARE_MAX_PATH) return FALSE;

  COMPARE_LEVEL *Next = &Job->Levels[Job->Depth + 1];
  CopyString (Next->Path, Level->Path);
  AppendString (Next->Path, "\\"_a);
  UINT16 PathLength = StringLength (Next->Path);
  CopyMem (Next->Path + PathLength, Entry->Name, NameLength);
  Next->Path[PathLength + NameLength] = 0;
  Next->State = 0;
  Job->Depth++;
  ReportProgress (Job, PROGRESS_LEVEL, nullptr);
  StepLevel (Job, Next);
  return TRUE;
}

// Reports the entries of a finished level that have no partner on the other side.
static VOID ReportUnmatched (COMPARE_JOB *Job, COMPARE_LEVEL *Level) {
  if (Level->BackupCount == 0) return;
  for (UINT16 B = 0; B < Level->BackupCount; B++) {
    DIRECTORY_ENTRY *Entry = &Level->BackupEntries[B];
    if (Level->SourceCount != 0 && Entry->Matched != 0) continue;
    ReportDifference (Job, Entry->Name, Entry->IsDirectory != 0 ? CmpTextFolderDeleted : CmpTextFileDeleted,
                      Entry->IsDirectory != 0, DIFF_DELETED);
  }
  for (UINT16 S = 0; S < Level->SourceCount; S++) {
    DIRECTORY_ENTRY *Entry = &Level->SourceEntries[S];
    if (Entry->Matched != 0) continue;
    ReportDifference (Job, Entry->Name, Entry->IsDirectory != 0 ? CmpTextFolderNew : CmpTextFileNew,
                      Entry->IsDirectory != 0, DIFF_NEW);
  }
}

BOOLEAN PopLevel (COMPARE_JOB *Job) {
  if (Job->Depth >= COMPARE_NO_LEVEL) return FALSE;
  COMPARE_LEVEL *Level = &Job->Levels[Job->Depth];
  if (Level->State == LEVEL_STATE_PROCESSING) ReportUnmatched (Job, Level);
  ReleaseLevel (Level);
  if (Job->Depth > 0) {
    Job->Depth--;
    return TRUE;
  }
  Job->Depth = COMPARE_NO_LEVEL;
  Job->Done = 1;
  Job->Result->TotalCount = Job->ItemCount;
  return FALSE;
}

// Size, time stamp (to the second) and kind of a matched file pair by what
// the two listings say: the message of the difference (with its code), or
// null when they agree.
static const CHAR8 *ListedDifference (const DIRECTORY_ENTRY *Source, const DIRECTORY_ENTRY *Backup, UINT8 *Code) {
  if (Backup->IsDirectory != 0) {
    *Code = DIFF_TYPE_DIFFERS;
    return CmpTextIsADirectory;
  }
  if (Source->Size != Backup->Size || Source->Year != Backup->Year || Source->Month != Backup->Month ||
      Source->Day != Backup->Day || Source->Hour != Backup->Hour || Source->Minute != Backup->Minute ||
      Source->Second != Backup->Second) {
    *Code = DIFF_CHANGED;
    return CmpTextFileChanged;
  }
  return nullptr;
}

// The same by the information records of the two opened files.
static const CHAR8 *InfoDifference (const FILE_INFO *Source, const FILE_INFO *Backup, UINT8 *Code) {
  if (Source->IsDirectory != 0 || Backup->IsDirectory != 0) {
    *Code = DIFF_TYPE_DIFFERS;
    return CmpTextIsADirectory;
  }
  if (Source->Size != Backup->Size || (Source->TimeStamp >> 8) != (Backup->TimeStamp >> 8)) {
    *Code = DIFF_CHANGED;
    return CmpTextFileChanged;
  }
  return nullptr;
}

// Opens the file at the scratch path on both sides as L's handles, reading
// each one's information record when WithInfo is set: the message of the
// first failure (with its code), or null.
static const CHAR8 *OpenFiles (COMPARE_JOB *Job, COMPARE_LEVEL *Level, BOOLEAN Fits, BOOLEAN WithInfo,
                               FILE_INFO *Source, FILE_INFO *Backup, UINT8 *Code) {
  if (!Fits || (Level->SourceHandle = gFileDriver->OpenDirectory (Job->SourceVolume, gCompareScratchPath)) == 0) {
    *Code = DIFF_OPEN_FAILED;
    return CmpTextOpenFailed;
  }
  if (WithInfo && !gFileDriver->GetFileInfo (Level->SourceHandle, Source)) {
    *Code = DIFF_INFO_FAILED;
    return CmpTextInfoFailed;
  }
  if ((Level->BackupHandle = gFileDriver->OpenDirectory (Job->BackupVolume, gCompareScratchPath)) == 0) {
    *Code = DIFF_BACKUP_OPEN_FAILED;
    return CmpTextBackupOpenFailed;
  }
  if (WithInfo && !gFileDriver->GetFileInfo (Level->BackupHandle, Backup)) {
    *Code = DIFF_BACKUP_INFO_FAILED;
    return CmpTextBackupInfoFailed;
  }
  return nullptr;
}

BOOLEAN CompareFile (COMPARE_JOB *Job, DIRECTORY_ENTRY *Entry) {
  COMPARE_LEVEL *Level = &Job->Levels[Job->Depth];
  if (Level->SourceHandle != 0 || Level->ListingChecked != 0) return CompareChunk (Job);

  // Level path, "\", name; a path that does not fit cannot be opened.
  CopyStringN (gCompareScratchPath, Level->Path, sizeof (gCompareScratchPath));
  UINT16 Before = AppendStringN (gCompareScratchPath, "\\"_a, sizeof (gCompareScratchPath));
  UINT16 After = AppendStringN (gCompareScratchPath, Entry->Name, sizeof (gCompareScratchPath));
  BOOLEAN Fits = Before == StringLength (Level->Path) + 1 && After == Before + StringLength (Entry->Name);

  // When the backup listing holds the file under the very same name, the two
  // listings tell size, time and kind as the files' information would: the
  // files are opened only when their contents are to be compared.
  const DIRECTORY_ENTRY *Partner =
      Entry->Partner < Level->BackupCount ? &Level->BackupEntries[Entry->Partner] : nullptr;
  BOOLEAN Listed = Fits && Partner != nullptr && StringsEqual (Partner->Name, Entry->Name);
  FILE_INFO SourceInfo;
  FILE_INFO BackupInfo;
  ZeroMem (&SourceInfo, sizeof (SourceInfo));
  ZeroMem (&BackupInfo, sizeof (BackupInfo));
  UINT8 Code = 0;
  const CHAR8 *Message = nullptr;
  if (!Listed || Job->CompareContents != 0) {
    Message = OpenFiles (Job, Level, Fits, !Listed, &SourceInfo, &BackupInfo, &Code);
  }
  if (Message == nullptr) {
    Message = Listed ? ListedDifference (Entry, Partner, &Code) : InfoDifference (&SourceInfo, &BackupInfo, &Code);
  }
  if (Message != nullptr) {
    ReportDifference (Job, Entry->Name, Message, 0, Code);
    CloseLevelHandles (Level);
    return FALSE;
  }
  Level->ListingChecked = Level->SourceHandle == 0;
  Level->FileOffset = 0;
  Level->FileSize = Listed ? Entry->Size : SourceInfo.Size;
  return TRUE;
}

BOOLEAN CompareChunk (COMPARE_JOB *Job) {
  COMPARE_LEVEL *Level = &Job->Levels[Job->Depth];
  if (Level->SourceHandle == 0 || Level->BackupHandle == 0 || Level->FileOffset >= Level->FileSize) return FALSE;
  if (Job->CompareContents == 0) {
    Level->FileOffset = Level->FileSize;   // equal size and time stamp count as equal
    return FALSE;
  }
  const CHAR8 *Name = Level->Cursor < Level->SourceCount ? Level->SourceEntries[Level->Cursor].Name : ""_a;
  UINT64 Left = Level->FileSize - Level->FileOffset;
  UINT32 Count = Left < COMPARE_CHUNK_SIZE ? (UINT32)Left : COMPARE_CHUNK_SIZE;
  if (gFileDriver->ReadAt (Level->SourceHandle, Level->FileOffset, Job->SourceBuffer, Count) != Count ||
      gFileDriver->ReadAt (Level->BackupHandle, Level->FileOffset, Job->BackupBuffer, Count) != Count) {
    ReportDifference (Job, Name, CmpTextReadError, 0, DIFF_READ_ERROR);
    Level->FileOffset = Level->FileSize;
    return FALSE;
  }
  if (CompareMem (Job->SourceBuffer, Job->BackupBuffer, Count) == 0) {
    Level->FileOffset += Count;
    return TRUE;
  }
  ReportDifference (Job, Name, CmpTextContentsDiffer, 0, DIFF_CHANGED);
  Level->FileOffset = Level->FileSize;
  return FALSE;
}
