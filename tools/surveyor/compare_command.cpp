#include "tools/surveyor/compare_command.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "env/gui/gbk.h"
#include "env/windows/window_base.h"
#include "tools/surveyor/session.h"

namespace surveyor {

namespace {

// What the job has told us; the callback has no context of its own, so the
// one running comparison is reached through this pointer.
struct CompareReport {
  bool Finished = false;
  bool Progress = false;         // a terminal shows the walk on standard error
  unsigned Lines = 0;
  uint32_t Items = 0;
  uint32_t Added = 0, Deleted = 0, Changed = 0, Entries = 0;
  size_t ProgressWidth = 0;
  uint16_t LastEntryCount = 0;
  bool Starting = true;
  std::vector<std::string> Pending;
};
CompareReport *gReport;

void ClearProgress () {
  if (gReport->Progress && gReport->ProgressWidth > 0) {
    std::fprintf (stderr, "\r%*s\r", static_cast<int> (gReport->ProgressWidth), "");
    gReport->ProgressWidth = 0;
  }
}

VOID EFIAPI OnProgress (COMPARE_JOB *Job, CHAR8 *Line, UINT32 ItemCount, BOOLEAN Finished) {
  CompareReport &R = *gReport;
  R.Items = ItemCount;
  COMPARE_RESULT *Result = Job != nullptr ? Job->Result : nullptr;
  if (Finished) {
    R.Finished = true;
    if (Result != nullptr) {
      R.Added = Result->AddedCount;
      R.Deleted = Result->DeletedCount;
      R.Changed = Result->ChangedCount;
      R.Entries = Result->EntryCount;
    }
    return;
  }
  if (Line == nullptr) return;
  // The callback is not told the kind of a line. Every difference the walk
  // reports is stored in the result first, so a grown entry count marks a
  // difference line; the level and entry lines only show where the walk is.
  uint16_t Count = Result != nullptr ? Result->EntryCount : 0;
  bool Difference = Count != R.LastEntryCount;
  R.LastEntryCount = Count;
  std::string Text = env::GbkToUtf8 (reinterpret_cast<const char *> (Line));
  // Paths under the root "\" carry a doubled separator ("\\a"); one reads better.
  if (Text.compare (0, 2, "\\\\") == 0) Text.erase (0, 1);
  if (Difference) {
    ClearProgress ();
    std::printf ("%s\n", Text.c_str ());
    std::fflush (stdout);
    R.Lines++;
  } else if (R.Starting) {
    // Messages of a start that fails are stored nowhere; keep them until the
    // start has said whether it failed.
    R.Pending.push_back (Text);
  } else if (R.Progress) {
    ClearProgress ();
    std::string Shown = Text.substr (0, 78);
    std::fprintf (stderr, "%s", Shown.c_str ());
    R.ProgressWidth = Shown.size ();
  }
}

}  // namespace

int RunCompareCommand (const CommandLine &Line) {
  Session S (Line);
  std::string Error;
  env::VolumeSpec Source, Backup;
  Source.Folder = Line.Arguments[0];
  Backup.Folder = Line.Arguments[1];
  if (S.Mount (Source, Error) != 0 || S.Mount (Backup, Error) != 1 || !S.LoadDriver (Error)) {
    std::fprintf (stderr, "surveyor: %s\n", Error.c_str ());
    return 2;
  }
  std::string Path = Line.Arguments.size () > 2 ? Line.Arguments[2] : "\\";
  for (char &C : Path)
    if (C == '/') C = '\\';
  if (Path.empty () || Path[0] != '\\') Path = "\\" + Path;

  CompareReport Report;
  Report.Progress = isatty (STDERR_FILENO) != 0;
  gReport = &Report;
  std::printf ("Checking %s against the backup %s, path %s%s\n", Source.Folder.c_str (), Backup.Folder.c_str (),
               Path.c_str (), Line.CompareContents ? ", contents included" : "");

  auto Start = std::chrono::steady_clock::now ();
  COMPARE_JOB *Job = S.Surveyor ()->StartCompareJobWithCallback (
      0, 1, reinterpret_cast<const CHAR8 *> (Path.c_str ()), OnProgress);
  Report.Starting = false;
  if (Job == nullptr) {
    for (const std::string &Text : Report.Pending) std::printf ("%s\n", Text.c_str ());
    std::printf ("The comparison could not start.\n");
    gReport = nullptr;
    return 2;
  }
  Job->CompareContents = Line.CompareContents ? 1 : 0;
  unsigned long Ticks = 0;
  while (!Report.Finished && S.Env ().windows ().TimerCount () > 0) {
    S.Env ().windows ().RunTimerTick ();
    S.Env ().windows ().PumpMessages ();
    Ticks++;
  }
  double Seconds = std::chrono::duration<double> (std::chrono::steady_clock::now () - Start).count ();
  ClearProgress ();
  gReport = nullptr;

  bool Differs = Report.Added + Report.Deleted + Report.Changed > 0 || Report.Entries > 0;
  std::printf ("\n%u entries checked in %.2f s (%lu steps): ", Report.Items, Seconds, Ticks);
  if (!Differs) {
    std::printf ("no differences.\n");
  } else {
    std::printf ("%u new, %u deleted, %u changed.\n", Report.Added, Report.Deleted, Report.Changed);
  }
  return Differs ? 1 : 0;
}

}  // namespace surveyor
