#include "tools/surveyor/backup_check.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "env/files/file_driver.h"
#include "env/gui/gbk.h"
#include "env/windows/window_base.h"
#include "tools/surveyor/check_words.h"

namespace surveyor {

namespace {

// Wide enough for the job's longest lines (255 characters) at any font width.
constexpr UINT16 kListenerWidth = 4096;
constexpr uint64_t kProgressEveryMs = 100;

uint64_t NowMs () {
  return static_cast<uint64_t> (std::chrono::duration_cast<std::chrono::milliseconds> (
                                    std::chrono::steady_clock::now ().time_since_epoch ())
                                    .count ());
}

std::string Text (const CHAR8 *Bytes) { return reinterpret_cast<const char *> (Bytes); }

// A level path and a name joined as the job joins them.
std::string Joined (const CHAR8 *Folder, const CHAR8 *Name) { return Text (Folder) + "\\" + Text (Name); }

uint64_t Sum (const LeftOutCounts &Counts) {
  uint64_t Total = 0;
  for (uint64_t Count : Counts) Total += Count;
  return Total;
}

}  // namespace

LeftOutCounts CountsOf (const LISTING_NOTES &Notes) {
  return {Notes.NameTooLong, Notes.NameUnusable, Notes.Unreadable, Notes.OverLimit, Notes.FolderUnreadable};
}

uint64_t CheckTally::LeftOutCount (int Side) const { return Sum (LeftOut[Side]); }

bool CheckTally::Complete () const {
  return Unreadable == 0 && LongPaths == 0 && TooDeep == 0 && LeftOutCount (0) == 0 && LeftOutCount (1) == 0 &&
         !Overflowed;
}

BackupCheck::BackupCheck (Session &S, Language In, std::FILE *Out, std::FILE *Progress)
    : Session_ (S), Lang_ (In), Out_ (Out), Progress_ (Progress) {
  WINDOW_BASE_PROTOCOL *Wb = S.Env ().windows ().Table ();
  Window_ = Wb->CreateWindow (sizeof (WINDOW_HEADER) + sizeof (BackupCheck *), Wb->Desktop, OnMessage, nullptr,
                              nullptr, 0, 0, kListenerWidth, 100);
  if (Window_ != nullptr) {
    BackupCheck *Self = this;
    std::memcpy (Window_ + 1, &Self, sizeof (Self));
  }
}

BackupCheck::~BackupCheck () {
  if (Window_ != nullptr) Session_.Env ().windows ().Table ()->DestroyWindow (Window_);
}

CheckTally BackupCheck::Run (const std::string &Path, bool Contents) {
  Tally_ = CheckTally ();
  RootPath_ = Path;
  Finished_ = false;
  if (Window_ == nullptr) return Tally_;
  COMPARE_JOB *Job = Session_.Surveyor ()->StartCompareJob (0, 1, reinterpret_cast<const CHAR8 *> (Path.c_str ()),
                                                           Window_);
  Tally_.Started = Job != nullptr;
  if (Job != nullptr) {
    Job_ = Job;
    Job->CompareContents = Contents ? 1 : 0;
    StoredEntries_ = Job->Result->EntryCount;
    env::WindowBase &Windows = Session_.Env ().windows ();
    while (!Finished_ && Windows.TimerCount () > 0) {
      Windows.RunTimerTick ();
      Windows.PumpMessages ();
    }
    Job_ = nullptr;
  }
  ClearProgress ();
  // The root's listings were read while the job started, without a report
  // between them: what they left out is what the volume's totals hold beyond
  // the folders noted on the way.
  for (int Side = 0; Side < 2; Side++) {
    LeftOutCounts Root = CountsOf (Session_.Env ().files ().LeftOutTotals (Side));
    for (size_t Reason = 0; Reason < Root.size (); Reason++) Root[Reason] -= Tally_.LeftOut[Side][Reason];
    // The volume counts unreadable folders in a byte: the root's is 0 or 1 modulo 256.
    Root[kUnlistedFolder] %= 256;
    NoteLeftOut (RootPath_, Side, Root);
  }
  return Tally_;
}

UINT8 EFIAPI BackupCheck::OnMessage (WINDOW_HEADER *Window, MESSAGE *Message) {
  if (Message->Type != MSG_NOTIFY || Message->Code != NOTIFY_COMPARE) return 0;
  BackupCheck *Self = nullptr;
  std::memcpy (&Self, Window + 1, sizeof (Self));
  UINT32 Items = 0;
  std::memcpy (&Items, reinterpret_cast<const UINT8 *> (Message) + 4, sizeof (Items));
  Self->OnReport (Message->Word2, Items, static_cast<const CHAR8 *> (Message->Pointer8));
  return 1;
}

void BackupCheck::OnReport (UINT16 Kind, UINT32 Items, const CHAR8 *Line) {
  Tally_.Items = Items;
  switch (Kind) {
    case PROGRESS_LEVEL:
      OnLevel ();
      break;
    case PROGRESS_ENTRY:
      OnEntry ();
      break;
    case PROGRESS_LINE:
      if (Line != nullptr) OnDifference (Text (Line));
      break;
    case PROGRESS_FINISHED:
      OnFinished ();
      break;
  }
}

// A level has read a listing (states 3 and 4 follow the source and the
// backup listing, their handles still open): what did it leave out?
void BackupCheck::OnLevel () {
  if (Job_ == nullptr || Job_->Depth >= COMPARE_NO_LEVEL) return;
  const COMPARE_LEVEL &Level = Job_->Levels[Job_->Depth];
  FILE_DRIVER_PROTOCOL *Files = Session_.Env ().files ().Table ();
  LISTING_NOTES Notes {};
  if (Level.State == 3 && Files->GetListingNotes (Level.SourceHandle, &Notes)) {
    NoteLeftOut (Text (Level.Path), 0, CountsOf (Notes));
  } else if (Level.State == 4 && Files->GetListingNotes (Level.BackupHandle, &Notes)) {
    NoteLeftOut (Text (Level.Path), 1, CountsOf (Notes));
  }
  ShowProgress ();
}

// A folder present on both sides that the job will pass over: too deep, or
// its path too long.
void BackupCheck::OnEntry () {
  if (Job_ == nullptr || Job_->Depth >= COMPARE_NO_LEVEL) return;
  const COMPARE_LEVEL &Level = Job_->Levels[Job_->Depth];
  if (Level.Cursor >= Level.SourceCount) return;
  const DIRECTORY_ENTRY &Entry = Level.SourceEntries[Level.Cursor];
  if (Entry.Matched != 0 && Entry.IsDirectory != 0) {
    std::string Path = Joined (Level.Path, Entry.Name);
    if (Job_->Depth + 1 >= COMPARE_MAX_LEVELS) {
      Tally_.TooDeep++;
      Print (ReadablePath (Path) + NotCheckedTooDeep ());
    } else if (Path.size () > COMPARE_MAX_PATH) {
      Tally_.LongPaths++;
      Print (ReadablePath (Path) + NotCheckedLongPath ());
    }
  }
  ShowProgress ();
}

void BackupCheck::OnDifference (const std::string &Line) {
  // The entry the job stored for this line names it in full; a line with no
  // entry of its own means that the list of differences is full.
  std::string Subject;
  if (Job_ != nullptr) {
    const COMPARE_RESULT *Result = Job_->Result;
    if (Result->EntryCount > StoredEntries_) {
      Subject = Text (Result->Entries[Result->EntryCount - 1].Name);
    } else {
      Tally_.Overflowed = true;
    }
    StoredEntries_ = Result->EntryCount;
  }
  DifferenceLine Parsed;
  if (!ParseDifferenceLine (Line, Parsed)) {
    Print (env::GbkToUtf8 (Line));
    return;
  }
  // While the job starts, every line is about the path compared.
  if (Job_ == nullptr && !Parsed.Indented) Subject = RootPath_;

  std::string Told = TellDifference (Parsed, Lang_, Subject);
  switch (FindingOf (Parsed)) {
    case Finding::Failed:
      return;   // the summary says how the start failed
    case Finding::Heading:
      break;
    case Finding::New:
      Tally_.New++;
      break;
    case Finding::Deleted:
      Tally_.Deleted++;
      break;
    case Finding::Changed:
      Tally_.Changed++;
      break;
    case Finding::KindDiffers:
      Tally_.KindDiffers++;
      break;
    case Finding::SourceMissing:
      Tally_.SourceMissing = true;
      break;
    case Finding::Unreadable: {
      // A file whose path does not fit is reported as one that did not open.
      const COMPARE_LEVEL *Level = Job_ != nullptr && Job_->Depth < COMPARE_NO_LEVEL ? &Job_->Levels[Job_->Depth]
                                                                                     : nullptr;
      if (IsOpenFailure (Parsed) && Level != nullptr && Level->Cursor < Level->SourceCount &&
          Joined (Level->Path, Level->SourceEntries[Level->Cursor].Name).size () > COMPARE_MAX_PATH) {
        Tally_.LongPaths++;
        Told += PathTooLongRemark ();
      } else {
        Tally_.Unreadable++;
      }
      break;
    }
  }
  Print (Told);
}

// The final report, while the job still exists: did it list all it found,
// and did its walk reach the end?
void BackupCheck::OnFinished () {
  Finished_ = true;
  if (Job_ == nullptr) return;
  const COMPARE_RESULT *Result = Job_->Result;
  // Every difference raises the job's counters, listed or not.
  auto Beyond = [] (UINT32 Counted, unsigned Seen) { return Counted > Seen ? Counted - Seen : 0u; };
  unsigned Added = Beyond (Result->AddedCount, Tally_.New + Tally_.KindDiffers);
  unsigned Deleted = Beyond (Result->DeletedCount, Tally_.Deleted + Tally_.KindDiffers);
  Tally_.Unlisted = std::max (Added, Deleted) + Beyond (Result->ChangedCount, Tally_.Changed);
  if (Tally_.Unlisted > 0) Tally_.Overflowed = true;
  if (Job_->Depth >= COMPARE_NO_LEVEL) return;

  // Cut short: count what the open folders still held (entries after each
  // cursor, and the unmatched ones whose report comes when a folder is left).
  Tally_.Overflowed = true;
  Tally_.StoppedIn = ReadablePath (Text (Job_->Levels[Job_->Depth].Path));
  for (UINT16 Depth = 0; Depth <= Job_->Depth; Depth++) {
    const COMPARE_LEVEL &Level = Job_->Levels[Depth];
    if (Level.State != LEVEL_STATE_PROCESSING) continue;
    unsigned Next = Level.Cursor + (Depth < Job_->Depth ? 1u : 0u);
    for (unsigned I = 0; I < Level.SourceCount; I++)
      if (I >= Next || Level.SourceEntries[I].Matched == 0) Tally_.NotReached++;
    for (unsigned I = 0; I < Level.BackupCount; I++)
      if (Level.SourceCount == 0 || Level.BackupEntries[I].Matched == 0) Tally_.NotReached++;
  }
}

void BackupCheck::NoteLeftOut (const std::string &Folder, int Side, const LeftOutCounts &Counts) {
  if (Sum (Counts) == 0) return;
  for (size_t Reason = 0; Reason < Counts.size (); Reason++) Tally_.LeftOut[Side][Reason] += Counts[Reason];
  Print (ReadablePath (Folder) + NotCheckedLeftOut (Side, Counts));
}

void BackupCheck::Print (const std::string &Line) {
  ClearProgress ();
  std::fputs (Line.c_str (), Out_);
  std::fputc ('\n', Out_);
}

void BackupCheck::ShowProgress () {
  if (Progress_ == nullptr || Job_ == nullptr || Job_->Depth >= COMPARE_NO_LEVEL) return;
  uint64_t Now = NowMs ();
  if (Now - LastProgress_ < kProgressEveryMs) return;
  LastProgress_ = Now;
  std::fflush (Out_);
  std::string Shown = WalkProgress (ReadablePath (Text (Job_->Levels[Job_->Depth].Path)), Tally_.Items);
  ClearProgress ();
  std::fputs (Shown.c_str (), Progress_);
  std::fflush (Progress_);
  ProgressWidth_ = Shown.size ();
}

void BackupCheck::ClearProgress () {
  if (Progress_ == nullptr || ProgressWidth_ == 0) return;
  std::fprintf (Progress_, "\r%*s\r", static_cast<int> (ProgressWidth_), "");
  ProgressWidth_ = 0;
}

}  // namespace surveyor
