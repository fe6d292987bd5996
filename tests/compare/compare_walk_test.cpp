// The walk of a directory comparison: the reference tree pair with its exact
// report, matching of names, failed levels, the depth limit, a full result,
// line widths and cancelling.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>

#include "compare_support.h"
#include "env/files/file_driver.h"
#include "env/windows/window_base.h"

namespace {

const std::filesystem::path kReference = std::filesystem::path (__FILE__).parent_path () / "reference";

std::vector<std::string> Split (const std::string &Line, char By) {
  std::vector<std::string> Parts;
  std::string Part;
  std::istringstream In (Line);
  while (std::getline (In, Part, By)) Parts.push_back (Part);
  return Parts;
}

// Replaces {name} and {name:argument} by the built-in texts.
std::string Expand (const std::string &Pattern) {
  std::string Out;
  size_t At = 0;
  while (At < Pattern.size ()) {
    size_t Open = Pattern.find ('{', At);
    if (Open == std::string::npos) {
      Out += Pattern.substr (At);
      break;
    }
    size_t Close = Pattern.find ('}', Open);
    Out += Pattern.substr (At, Open - At);
    std::string Name = Pattern.substr (Open + 1, Close - Open - 1);
    size_t Colon = Name.find (':');
    if (Colon == std::string::npos) {
      Out += Text (Name);
    } else {
      Out += TextWith (Name.substr (0, Colon), {Name.substr (Colon + 1)});
    }
    At = Close + 1;
  }
  return Out;
}

// The entries of a result that are not headings, as (name, code) pairs.
using Coded = std::multiset<std::pair<std::string, int>>;
Coded Differences (const COMPARE_RESULT *Result) {
  Coded Out;
  for (const StoredEntry &E : StoredEntries (Result))
    if (E.IsHeading == 0) Out.insert ({E.Name, E.Code});
  return Out;
}

class CompareWalkTest : public CompareTest {
 protected:
  void BuildTrees (const std::filesystem::path &Manifest) {
    std::ifstream In (Manifest);
    ASSERT_TRUE (In.good ()) << Manifest;
    std::string Line;
    while (std::getline (In, Line)) {
      if (Line.empty () || Line[0] == '#') continue;
      std::istringstream Fields (Line);
      std::string Side, Kind, Path, Content;
      long Offset = 0;
      Fields >> Side >> Kind >> Path;
      if (Kind == "file") Fields >> Content >> Offset;
      for (int Volume : {Src, Bak}) {
        if ((Side == "S" && Volume != Src) || (Side == "B" && Volume != Bak)) continue;
        if (Kind == "dir") {
          MakeDir (Volume, Path);
        } else {
          Put (Volume, Path, Content, kTime + Offset);
        }
      }
    }
  }
};

TEST_F (CompareWalkTest, ReferenceTreesGiveTheExpectedReport) {
  BuildTrees (kReference / "trees.txt");
  const COMPARE_RESULT *Result = Compared ("\\data");
  ASSERT_NE (Result, nullptr);

  std::vector<std::string> Want, Got;
  std::vector<StoredEntry> WantEntries;
  std::vector<uint32_t> WantCounters;
  std::ifstream In (kReference / "expected_report.txt");
  std::string Line;
  while (std::getline (In, Line)) {
    if (Line.empty () || Line[0] == '#') continue;
    std::vector<std::string> F = Split (Line, '|');
    if (F[0] == "L") Want.push_back (F[1] + " " + Expand (F[2]));
    if (F[0] == "F") Want.push_back (F[1] + " (final)");
    if (F[0] == "E")
      WantEntries.push_back ({F[1], std::stoi (F[2]), std::stoi (F[3]), std::stoi (F[4]), std::stoi (F[5])});
    if (F[0] == "C")
      for (int I = 1; I <= 4; I++) WantCounters.push_back (static_cast<uint32_t> (std::stoul (F[I])));
  }
  for (const Report &R : gReports)
    Got.push_back (std::to_string (R.ItemCount) + (R.Finished ? " (final)" : " " + R.Line));
  EXPECT_EQ (Got, Want);
  EXPECT_EQ (StoredEntries (Result), WantEntries);
  std::vector<uint32_t> Counters = {Result->TotalCount, Result->DeletedCount, Result->AddedCount,
                                    Result->ChangedCount};
  EXPECT_EQ (Counters, WantCounters);
  EXPECT_EQ (Env ().files ().OpenHandleCount (), 0u);
}

TEST_F (CompareWalkTest, TimeStampsCompareByTheSecond) {
  Put (Src, "t/a", "x", kTime, 100000000);
  Put (Bak, "t/a", "x", kTime, 900000000);   // same second, other fraction: equal
  Put (Src, "t/b", "x", kTime, 0);
  Put (Bak, "t/b", "x", kTime + 1, 0);        // next second: changed
  EXPECT_EQ (StoredEntries (Compared ("\\t")), (std::vector<StoredEntry> {{"\\t", 1, 11, 1, 1}, {"b", 0, 11, 0, 0}}));
}

TEST_F (CompareWalkTest, NamesMatchWithoutAsciiCaseOnly) {
  // ASCII letters in another case match; a byte of 0x80 or more must be equal.
  Put (Src, "m/ReadMe.TXT", "1");
  Put (Bak, "m/readme.txt", "1");
  Put (Src, "m/\xC0" "x", "1");
  Put (Bak, "m/\xE0" "x", "1");
  // Two source names that differ only in case both match the one backup name.
  Put (Src, "m/Data.bin", "1");
  Put (Src, "m/DATA.BIN", "1");
  Put (Bak, "m/data.bin", "1");
  Put (Src, "m/.hidden", "1");   // a name, not "." or ".."
  // Matched names are compared under the source's spelling; the host file
  // system of the stand-in volumes tells case apart, so the backup file of
  // another spelling cannot be opened (code 2). Nothing is new or deleted but
  // the two non-ASCII names and the dotted one.
  const COMPARE_RESULT *Result = Compared ("\\m");
  ASSERT_NE (Result, nullptr);
  EXPECT_EQ (Differences (Result), (Coded {{"ReadMe.TXT", 2}, {"Data.bin", 2}, {"DATA.BIN", 2}, {"\xC0" "x", 10},
                                           {"\xE0" "x", 9}, {".hidden", 10}}));
  EXPECT_EQ (Totals (Result), "total 5 deleted 1 added 2 changed 0 entries 7");
}

// Many names that fall into few classes of names equal but for ASCII case:
// new, deleted and unopenable entries must follow the first-match rule over
// the backup listing, with the name index and, when its memory is refused,
// without it.
TEST_F (CompareWalkTest, MatchingFollowsTheFirstMatchRuleOverWholeListings) {
  const std::string Letters[] = {"a", "A", "b", "B", "\xE0", "\xC0"};
  std::set<std::string> Source, Backup;
  std::mt19937 Random (7);
  auto Name = [&] {
    std::string N;
    for (size_t Length = 1 + Random () % 3; N.size () < Length;) N += Letters[Random () % 6];
    return N;
  };
  for (int I = 0; I < 150; I++) Source.insert (Name ());
  for (int I = 0; I < 150; I++) Backup.insert (Name ());
  for (const std::string &N : Source) Put (Src, "m/sub/" + N, "1");
  for (const std::string &N : Backup) Put (Bak, "m/sub/" + N, "1");

  // The rule, over the backup listing in the file driver's own order.
  auto Fold = [] (std::string N) {
    for (char &C : N)
      if (C >= 'a' && C <= 'z') C = static_cast<char> (C - 'a' + 'A');
    return N;
  };
  FILE_DRIVER_PROTOCOL *Files = Env ().files ().Table ();
  UINT16 Handle = Files->OpenDirectory (static_cast<UINT8> (Bak), reinterpret_cast<const CHAR8 *> ("\\m\\sub"));
  UINT16 Count = 0;
  DIRECTORY_ENTRY *Listing = Files->ReadDirectory (Handle, &Count);
  std::map<std::string, std::string> FirstOfClass;
  for (UINT16 I = 0; I < Count; I++) {
    std::string N = reinterpret_cast<const char *> (Listing[I].Name);
    if (N != "." && N != "..") FirstOfClass.emplace (Fold (N), N);
  }
  Fw ().FreePool (Listing);
  Files->CloseHandle (Handle);
  Coded Want;
  std::set<std::string> SourceClasses;
  for (const std::string &N : Source) {
    SourceClasses.insert (Fold (N));
    if (FirstOfClass.count (Fold (N)) == 0) Want.insert ({N, 10});
    else if (Backup.count (N) == 0) Want.insert ({N, 2});   // the backup file of this spelling does not exist
  }
  for (const std::string &N : Backup)
    if (SourceClasses.count (Fold (N)) == 0 || FirstOfClass[Fold (N)] != N) Want.insert ({N, 9});

  for (bool RefuseIndex : {false, true}) {
    gReports.clear ();
    COMPARE_JOB *Job = Start ("\\m");
    ASSERT_NE (Job, nullptr);
    while (Job->Depth != 1 || Job->Levels[1].State != 4) Env ().windows ().RunTimerTick ();
    if (RefuseIndex) Fw ().FailService (env::BootService::AllocatePool, EFI_OUT_OF_RESOURCES);
    Env ().windows ().RunTimerTick ();   // the level's names are matched
    Fw ().ClearFailures ();
    ASSERT_GT (RunToEnd (), 0);
    EXPECT_EQ (Differences (gFinalSnapshot), Want) << (RefuseIndex ? "without the index" : "with the index");
  }
}

TEST_F (CompareWalkTest, FailedLevelsAreHeadingsAndTheWalkGoesOn) {
  // "Sub" and "sub" match; the backup folder of the source's spelling cannot
  // be opened on the case-telling host: code 2, one more item, then the walk
  // continues with the next entry.
  Put (Src, "f/Sub/x", "1");
  Put (Bak, "f/sub/x", "1");
  Put (Src, "f/z.txt", "1");
  const COMPARE_RESULT *Result = Compared ("\\f");
  ASSERT_NE (Result, nullptr);
  EXPECT_EQ (StoredEntries (Result),
             (std::vector<StoredEntry> {{"\\f\\Sub", 1, 2, 1, 0}, {"\\f", 1, 11, 1, 1}, {"z.txt", 0, 10, 0, 1}}));
  EXPECT_EQ (Totals (Result), "total 3 deleted 0 added 1 changed 0 entries 3");   // 1 for the failed level
  std::vector<std::string> L = Lines ();
  EXPECT_NE (std::find (L.begin (), L.end (), "\\f\\Sub - " + Text ("backup folder open failed")), L.end ());
  EXPECT_NE (std::find (L.begin (), L.end (), "\\f\\Sub" + Text ("cannot compare")), L.end ());
}

TEST_F (CompareWalkTest, LevelsBelow31AreSkippedSilently) {
  // Folders l1 .. l33 on both sides; level n is the folder n deep below the root.
  std::string Path = "deep";
  for (int Level = 1; Level <= 33; Level++) {
    Path += "/l" + std::to_string (Level);
    MakeDir (Src, Path);
    MakeDir (Bak, Path);
    if (Level == 31) Put (Src, Path + "/at31", "1");   // level 31: compared
    if (Level == 32) Put (Src, Path + "/at32", "1");   // level 32: never looked at
  }
  const COMPARE_RESULT *Result = Compared ("\\deep");
  ASSERT_NE (Result, nullptr);
  // One entry on levels 0 to 30, two on 31 (l32 and at31).
  EXPECT_EQ (Totals (Result), "total 33 deleted 0 added 1 changed 0 entries 2");
  EXPECT_EQ (StoredEntries (Result)[1].Name, "at31");
}

TEST_F (CompareWalkTest, FullResultEndsTheJobAtTheNextTick) {
  // a: 1023 new files (a heading and 1023 entries fill the 1024 entries);
  // b: a deleted file needs a heading that no longer fits; c is never reached.
  Both ("r/a/keep", "k");
  for (int I = 0; I < 1023; I++) Put (Src, "r/a/n" + std::to_string (10000 + I), "1");
  Both ("r/b/x", "x");
  Put (Bak, "r/b/y", "y");
  Put (Src, "r/c/new", "1");
  Put (Bak, "r/c/old", "1");
  COMPARE_JOB *Job = Start ("\\r");
  ASSERT_NE (Job, nullptr);
  for (int Tick = 0; Tick < 100000 && Job->Done == 0; Tick++) Env ().windows ().RunTimerTick ();
  ASSERT_EQ (Job->Done, 1);
  // The deleted file of b is counted although not stored.
  EXPECT_EQ (Totals (Job->Result), "total 0 deleted 1 added 1023 changed 0 entries 1024");
  size_t Before = gReports.size ();
  EXPECT_FALSE (gReports.back ().Finished);
  Env ().windows ().RunTimerTick ();   // the final report, and nothing else
  ASSERT_EQ (gReports.size (), Before + 1);
  ASSERT_TRUE (gReports.back ().Finished);
  EXPECT_EQ (gFinalSnapshot->Entries[0].Link, 1023);
  EXPECT_EQ (LiveJobs (), 0u);
  for (const std::string &L : Lines ()) EXPECT_EQ (L.find ("\\r\\b -"), std::string::npos);
}

TEST_F (CompareWalkTest, CallbackLinesAreFittedTo255) {
  // A root path of 302 characters: the level line keeps 241 bytes of it,
  // its first and last 119 around "...".
  std::string First = "p" + std::string (149, 'q'), Second (150, 'r'), Root = "\\" + First + "\\" + Second;
  Both (First + "/" + Second + "/f", "1");
  ASSERT_NE (Start (Root), nullptr);
  ASSERT_EQ (gReports.size (), 1u);
  EXPECT_EQ (gReports[0].Line,
             Root.substr (0, 119) + "..." + Root.substr (Root.size () - 119) + TextWith ("file count", {"1"}));
  Surveyor ()->CancelCompareJob (reinterpret_cast<COMPARE_JOB *> (0x1234));   // unknown: left alone
  EXPECT_EQ (LiveJobs (), 1u);
  ASSERT_GT (RunToEnd (), 0);
}

TEST_F (CompareWalkTest, CancelFreesEverythingAtAnyPoint) {
  std::string Big (300000, 'b');
  Both ("c/big.bin", Big);
  Both ("c/sub/x", "1");
  Put (Src, "c/sub/new", "1");
  size_t Baseline = Fw ().LiveAllocations ();
  // Cancel after every number of ticks from 0 to the end of the walk.
  for (int Ticks = 0;; Ticks++) {
    gReports.clear ();
    COMPARE_JOB *Job = Start ("\\c");
    ASSERT_NE (Job, nullptr);
    Job->CompareContents = 1;
    bool Ended = false;
    for (int T = 0; T < Ticks && !Ended; T++) {
      Env ().windows ().RunTimerTick ();
      Ended = !gReports.empty () && gReports.back ().Finished;
    }
    if (Ended) break;
    size_t Count = gReports.size ();
    Surveyor ()->CancelCompareJob (Job);
    EXPECT_EQ (gReports.size (), Count) << "no report after a cancel";
    EXPECT_EQ (LiveJobs (), 0u);
    EXPECT_EQ (Fw ().LiveAllocations (), Baseline) << Ticks;
    EXPECT_EQ (Env ().files ().OpenHandleCount (), 0u) << Ticks;
    ASSERT_LT (Ticks, 100);
  }
}

// A client that cancels its own job at its second report and starts another
// one in the same report: the cancelled job's slot is free at once.
int gCancellingCalls;
COMPARE_JOB *gStartedInReport;
VOID EFIAPI CancellingCallback (COMPARE_JOB *Job, CHAR8 *Line, UINT32 ItemCount, BOOLEAN Finished) {
  if (++gCancellingCalls != 2) return;
  gProtocol->CancelCompareJob (Job);
  gProtocol->CancelCompareJob (Job);   // no longer in the table: left alone
  gStartedInReport = gProtocol->StartCompareJobWithCallback (Job->SourceVolume, Job->BackupVolume,
                                                             reinterpret_cast<const CHAR8 *> ("\\k"), nullptr);
}

TEST_F (CompareWalkTest, CancelFromInsideAReportFreesTheSlotAtOnce) {
  Both ("k/keep", "k");
  Put (Src, "k/a", "1");
  gCancellingCalls = 0;
  gStartedInReport = nullptr;
  COMPARE_JOB *Job = Surveyor ()->StartCompareJobWithCallback (static_cast<UINT8> (Src), static_cast<UINT8> (Bak),
                                                               reinterpret_cast<const CHAR8 *> ("\\k"),
                                                               CancellingCallback);
  ASSERT_NE (Job, nullptr);
  COMPARE_JOB *Others[3];
  for (COMPARE_JOB *&Other : Others) ASSERT_NE (Other = Start ("\\k"), nullptr);
  EXPECT_EQ (Start ("\\k"), nullptr) << "a fifth job while four run";
  Env ().windows ().RunTimerTick ();
  ASSERT_NE (gStartedInReport, nullptr) << "the cancelled job still held its slot";
  for (int I = 0; I < 1000 && LiveJobs () > 0; I++) Env ().windows ().RunTimerTick ();
  EXPECT_EQ (gCancellingCalls, 2) << "no report after the cancel";
  // The jobs ended by themselves: all four slots are free again.
  for (COMPARE_JOB *&Other : Others) ASSERT_NE (Other = Start ("\\k"), nullptr);
  ASSERT_NE (Job = Start ("\\k"), nullptr);
  EXPECT_EQ (Start ("\\k"), nullptr);
  for (COMPARE_JOB *Other : Others) Surveyor ()->CancelCompareJob (Other);
  Surveyor ()->CancelCompareJob (Job);
  EXPECT_EQ (LiveJobs (), 0u);
}

}  // namespace
