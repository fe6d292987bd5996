// What a comparison job records and tells: differences stored in the result
// record (headings with the entries filed under them) and the lines of
// progress sent to the job's window or callback.
#include "compare/compare_internal.h"
#include "compare/compare_texts.h"
#include "core/bindings.h"
#include "platform/library.h"
#include "util/string_utils.h"

#define LINE_SIZE 256
#define NO_HEADING COMPARE_MAX_ENTRIES

static VOID RaiseCounter (COMPARE_RESULT *Result, UINT8 Code) {
  switch (Code) {
    case DIFF_TYPE_DIFFERS:
      Result->DeletedCount++;
      Result->AddedCount++;
      break;
    case DIFF_SOURCE_EMPTY:
    case DIFF_DELETED:
      Result->DeletedCount++;
      break;
    case DIFF_BACKUP_EMPTY:
    case DIFF_NEW:
      Result->AddedCount++;
      break;
    case DIFF_CHANGED:
      Result->ChangedCount++;
      break;
    default:
      break;
  }
}

// Limit handed to AppendFitted: Room bytes less the message, never below 0.
static UINT16 FitLimit (UINTN Room, const CHAR8 *Message) {
  UINTN Length = StringLength (Message);
  return Length < Room ? (UINT16)(Room - Length) : 0;
}

VOID ReportDifference (COMPARE_JOB *Job, const CHAR8 *Name, const CHAR8 *Message, UINT8 IsDirectory, UINT8 Code) {
  COMPARE_RESULT *Result = Job->Result;
  RaiseCounter (Result, Code);
  CHAR8 Line[LINE_SIZE];

  if (Name[0] != '\\' && Job->Depth < COMPARE_NO_LEVEL) {
    // An entry of the current level, filed under the level's heading.
    COMPARE_LEVEL *Level = &Job->Levels[Job->Depth];
    if (Level->HeadingAdded == 0) {
      Line[0] = 0;
      AppendFitted (Line, Level->Path, 232);
      AppendStringN (Line, CmpTextHeadingSuffix, sizeof (Line));
      UINT16 Index = AddResultEntry (Result, Level->Path, NO_HEADING, 1, DIFF_CHANGED);
      if (Index >= COMPARE_MAX_ENTRIES) {
        Job->Done = 1;   // the result is full: the job ends at its next tick
        return;
      }
      ReportProgress (Job, PROGRESS_LINE, Line);
      Level->HeadingAdded = 1;
      Level->HeadingIndex = Index;
    }
    CopyString (Line, CmpTextIndent);
    AppendFitted (Line, Name, FitLimit (248, Message));
    AppendStringN (Line, CmpTextSeparator, sizeof (Line));
    AppendStringN (Line, Message, sizeof (Line));
    AddResultEntry (Result, Name, Level->HeadingIndex, IsDirectory, Code);
    ReportProgress (Job, PROGRESS_LINE, Line);
    return;
  }

  // A whole path (a failed level, or the root), stored as a heading of its own.
  Line[0] = 0;
  AppendFitted (Line, Name, FitLimit (250, Message));
  AppendStringN (Line, CmpTextSeparator, sizeof (Line));
  AppendStringN (Line, Message, sizeof (Line));
  UINT16 Index = AddResultEntry (Result, Name, NO_HEADING, 1, Code);
  if (Index < COMPARE_MAX_ENTRIES) {
    ReportProgress (Job, PROGRESS_LINE, Line);
  } else {
    Job->Done = 1;
  }
}

UINT16 AddResultEntry (COMPARE_RESULT *Result, const CHAR8 *Name, UINT16 HeadingIndex, UINT8 IsDirectory,
                       UINT8 Code) {
  UINTN Size = (UINTN)StringLength (Name) + 1;
  if (Result->TextUsed > COMPARE_TEXT_SIZE || Size > COMPARE_TEXT_SIZE - Result->TextUsed ||
      Result->EntryCount >= COMPARE_MAX_ENTRIES) {
    return COMPARE_MAX_ENTRIES;
  }
  UINT16 Index = Result->EntryCount;
  RESULT_ENTRY *Entry = &Result->Entries[Index];
  Entry->Name = Result->Text + Result->TextUsed;
  CopyMem (Entry->Name, Name, Size);
  Result->TextUsed += (UINT32)Size;
  Entry->IsDirectory = IsDirectory;
  Entry->Code = Code;
  if (HeadingIndex >= Index) {
    Entry->Link = 0;
    Entry->IsHeading = 1;
  } else {
    Entry->Link = HeadingIndex;
    Entry->IsHeading = 0;
    Result->Entries[HeadingIndex].Link++;
  }
  Result->EntryCount++;
  return Index;
}

UINT16 ProgressLineWidth (const COMPARE_JOB *Job) {
  if (Job->NotifyWindow == nullptr) return 255;
  INTN Half = gGuiDriver->GetCharWidth () / 2;
  if (Half < 1) Half = 1;
  INTN Width = ((INTN)Job->NotifyWindow->Width - 10) / Half;
  if (Width < 33) Width = 33;
  if (Width > 255) Width = 255;
  return (UINT16)Width;
}

VOID ReportProgress (COMPARE_JOB *Job, UINT16 Kind, const CHAR8 *Text) {
  if (Job->NotifyWindow == nullptr && Job->NotifyCallback == nullptr) return;
  if (CompareJobCancelled (Job)) return;

  UINT16 Width = ProgressLineWidth (Job);
  CHAR8 Line[LINE_SIZE];
  const CHAR8 *Shown = Text;
  if (Kind == PROGRESS_LEVEL || Kind == PROGRESS_ENTRY) {
    if (Job->Depth >= COMPARE_NO_LEVEL) return;
    const COMPARE_LEVEL *Level = &Job->Levels[Job->Depth];
    Line[0] = 0;
    if (Kind == PROGRESS_LEVEL) {
      AppendFitted (Line, Level->Path, Width - 13);
      if (Level->State == LEVEL_STATE_FAILED) {
        AppendStringN (Line, CmpTextCannotCompare, sizeof (Line));
      } else if (Level->State == LEVEL_STATE_PROCESSING) {
        CHAR8 Count[32];
        AsciiSPrint (Count, sizeof (Count), CmpTextFileCount, (UINT32)Level->SourceCount);
        AppendStringN (Line, Count, sizeof (Line));
      } else {
        AppendStringN (Line, CmpTextPreparing, sizeof (Line));
      }
    } else {
      if (Level->Cursor >= Level->SourceCount) return;
      const DIRECTORY_ENTRY *Entry = &Level->SourceEntries[Level->Cursor];
      if (Entry->IsDirectory != 0) {
        AppendFitted (Line, Entry->Name, Width - 13);
        AppendStringN (Line, CmpTextFolderMark, sizeof (Line));
      } else {
        AppendFitted (Line, Entry->Name, Width);
      }
    }
    Shown = Line;
  }

  if (Job->NotifyWindow != nullptr) {
    MESSAGE Message;
    ZeroMem (&Message, sizeof (Message));
    Message.Type = MSG_NOTIFY;
    Message.Code = NOTIFY_COMPARE;
    Message.Word2 = Kind;
    UINT32 Count = Job->ItemCount;
    CopyMem ((UINT8 *)&Message + 4, &Count, sizeof (Count));
    Message.Pointer8 = (VOID *)Shown;
    gWindowBase->SendMessage (Job->NotifyWindow, &Message);
  } else {
    Job->NotifyCallback (Job, (CHAR8 *)Shown, Job->ItemCount, Kind > PROGRESS_LINE);
  }
}
