// Shared helpers of the comparison tests: the built-in GBK texts by name, a
// recorder of progress reports, and a fixture with a source and a backup
// volume whose files get fixed modification times.
#pragma once

#include <ctime>
#include <map>
#include <string>
#include <vector>

#include "env/files/file_driver.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"

// The built-in text called Name, as its GBK bytes (with its "%a"/"%d" still in
// it when it has a placeholder).
std::string Text (const std::string &Name);
// Text with its placeholders replaced, in order, by Args ("%a" and "%d" alike).
std::string TextWith (const std::string &Name, const std::vector<std::string> &Args);

// One progress report as a callback received it.
struct Report {
  uint32_t ItemCount = 0;
  bool HasLine = false;
  std::string Line;
  bool Finished = false;
};

// Reports of every job started with ReportCallback, in arrival order.
extern std::vector<Report> gReports;
// The callback snapshots the result at the final report (the job is freed
// right after it) into gFinalSnapshot, freeing the snapshot of an earlier job.
extern COMPARE_RESULT *gFinalSnapshot;
extern SURVEYOR_PROTOCOL *gProtocol;
VOID EFIAPI ReportCallback (COMPARE_JOB *Job, CHAR8 *Line, UINT32 ItemCount, BOOLEAN Finished);

// A stored result entry in a form that compares well.
struct StoredEntry {
  std::string Name;
  int IsDirectory;
  int Code;
  int IsHeading;
  int Link;
  bool operator== (const StoredEntry &) const = default;
};
// The entries of a result; none for no result.
std::vector<StoredEntry> StoredEntries (const COMPARE_RESULT *Result);
std::ostream &operator<< (std::ostream &Out, const StoredEntry &Entry);
// The totals of a result: "total T deleted D added A changed C entries E".
std::string Totals (const COMPARE_RESULT *Result);

class CompareTest : public DriverTest {
 protected:
  static constexpr time_t kTime = 1700000000;   // one fixed modification second

  void SetUp () override;
  void TearDown () override;

  // A file with content Bytes and modification time When (whole seconds plus Nanos).
  void Put (int Volume, const std::string &Relative, const std::string &Bytes, time_t When = kTime, long Nanos = 0);
  void Both (const std::string &Relative, const std::string &Bytes, time_t When = kTime);

  COMPARE_JOB *Start (const std::string &Path);
  // Runs a job on Path to its end (the reports of earlier jobs dropped); the
  // snapshot taken at its final report, or null (with a failure) when it did
  // not start or end.
  const COMPARE_RESULT *Compared (const std::string &Path);
  // Runs timer ticks until a final report arrives; returns the ticks run, or
  // -1 when Limit ticks passed without one.
  int RunToEnd (int Limit = 100000);
  // Lines of the reports received so far (final report left out).
  std::vector<std::string> Lines () const;
  size_t LiveJobs ();

  int Src = -1;
  int Bak = -1;
};
