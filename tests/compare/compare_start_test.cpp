// Starting comparison jobs: refusals, the root checks, and single-file jobs.
#include <string>

#include "compare_support.h"

namespace {

TEST_F (CompareTest, PathLengthLimitIs479Characters) {
  // "\" + 200 + "\" + 200 + "\" + 77 characters = 480; one fewer in the last part = 479.
  std::string A (200, 'a'), B (200, 'b'), C (76, 'c');
  MakeDir (Src, A + "/" + B + "/" + C);
  MakeDir (Bak, A + "/" + B + "/" + C);
  std::string Path479 = "\\" + A + "\\" + B + "\\" + C;
  COMPARE_JOB *Job = Start (Path479);
  ASSERT_NE (Job, nullptr);
  EXPECT_EQ (std::string (reinterpret_cast<const char *> (Job->RootPath)), Path479);
  Surveyor ()->CancelCompareJob (Job);

  gReports.clear ();
  EXPECT_EQ (Start (Path479 + "c"), nullptr);
  EXPECT_TRUE (gReports.empty ()) << "a refused path is not even looked at";
  EXPECT_EQ (LiveJobs (), 0u);
}

TEST_F (CompareTest, RootChecksReportTheirMessageThenCompareFailed) {
  MakeDir (Src, "only-source");
  Put (Src, "only-backup-x", "1");
  MakeDir (Bak, "only-backup");
  MakeDir (Src, "dir-vs-file");
  Put (Bak, "dir-vs-file", "1");
  Put (Src, "sizes.bin", "12345");
  Put (Bak, "sizes.bin", "1234");

  struct Case {
    std::string Path, Message;
  } Cases[] = {
      {"\\missing", "root missing"},
      {"\\only-backup", "root missing"},
      {"\\only-source", "root missing in backup"},
      {"\\dir-vs-file", "root type differs"},
      {"\\sizes.bin", "root size differs"},
  };
  for (const Case &C : Cases) {
    gReports.clear ();
    EXPECT_EQ (Start (C.Path), nullptr) << C.Path;
    EXPECT_EQ (Lines (), (std::vector<std::string> {TextWith (C.Message, {C.Path}), Text ("compare failed")}))
        << C.Path;
    EXPECT_EQ (gReports.size (), 2u) << C.Path << ": no final report";
  }
  EXPECT_EQ (LiveJobs (), 0u);
}

TEST_F (CompareTest, EmptyBackupRootRefusesTheStartWithItsDifference) {
  Put (Src, "r/a.txt", "1");
  Put (Src, "r/b.txt", "2");
  MakeDir (Bak, "r");
  EXPECT_EQ (Start ("\\r"), nullptr);
  ASSERT_EQ (gReports.size (), 1u);
  EXPECT_EQ (gReports[0].Line, "\\r - " + TextWith ("backup empty", {"2"}));
  EXPECT_EQ (gReports[0].ItemCount, 2u);

  // A root whose source side is empty is no failure: each backup entry is deleted.
  MakeDir (Src, "e");
  Put (Bak, "e/x", "1");
  MakeDir (Bak, "e/y");
  Put (Bak, "e/z", "1");
  const COMPARE_RESULT *Result = Compared ("\\e");
  ASSERT_NE (Result, nullptr);
  std::vector<StoredEntry> Deleted = {{"\\e", 1, 11, 1, 3}, {"y", 1, 9, 0, 0}, {"x", 0, 9, 0, 0}, {"z", 0, 9, 0, 0}};
  EXPECT_EQ (StoredEntries (Result), Deleted);
  EXPECT_EQ (Totals (Result), "total 3 deleted 3 added 0 changed 0 entries 4");
}

// Equal sizes: no difference whatever the time stamps say, unless the
// contents are compared.
TEST_F (CompareTest, SingleFileJobs) {
  Put (Src, "docs/report.txt", "abcdef", kTime);
  Put (Bak, "docs/report.txt", "abcxef", kTime + 100);
  const std::string Level = "\\docs" + TextWith ("file count", {"1"});
  for (bool Contents : {false, true}) {
    gReports.clear ();
    COMPARE_JOB *Job = Start ("\\docs\\report.txt");
    ASSERT_NE (Job, nullptr);
    Job->CompareContents = Contents;
    ASSERT_GT (RunToEnd (), 0);
    std::vector<StoredEntry> Entries;
    std::vector<std::string> Want = {Level, "report.txt"};
    if (Contents) {
      Entries = {{"\\docs", 1, 11, 1, 1}, {"report.txt", 0, 11, 0, 0}};
      Want.insert (Want.end (), {"\\docs" + Text ("heading suffix"), "  report.txt - " + Text ("contents differ")});
    }
    EXPECT_EQ (StoredEntries (gFinalSnapshot), Entries) << Contents;
    EXPECT_EQ (Lines (), Want);
    EXPECT_EQ (Totals (gFinalSnapshot), Contents ? "total 1 deleted 0 added 0 changed 1 entries 2"
                                                 : "total 1 deleted 0 added 0 changed 0 entries 0");
    EXPECT_EQ (gReports.back ().ItemCount, 1u);
    EXPECT_FALSE (gReports.back ().HasLine);
  }
}

TEST_F (CompareTest, SingleFileAtTheVolumeRootAndLargeFilesInChunks) {
  // 200000 bytes: four chunks of at most 65536, one per tick, the last byte differs.
  std::string Big (200000, 'q');
  Put (Src, "big.bin", Big);
  Big.back () = 'r';
  Put (Bak, "big.bin", Big);
  COMPARE_JOB *Job = Start ("\\big.bin");
  ASSERT_NE (Job, nullptr);
  Job->CompareContents = 1;
  for (uint32_t Offset : {65536u, 131072u, 196608u}) {
    Env ().windows ().RunTimerTick ();
    EXPECT_EQ (Job->Levels[0].FileOffset, Offset);
  }
  ASSERT_GT (RunToEnd (), 0);
  EXPECT_EQ (StoredEntries (gFinalSnapshot),
             (std::vector<StoredEntry> {{"\\", 1, 11, 1, 1}, {"big.bin", 0, 11, 0, 0}}));
}

TEST_F (CompareTest, HostileArgumentsAndRefusedMemoryLeaveNothing) {
  Both ("h/a", "1");
  EXPECT_EQ (Surveyor ()->StartCompareJobWithCallback (static_cast<UINT8> (Src), static_cast<UINT8> (Bak), nullptr,
                                                       ReportCallback),
             nullptr);
  // Volume numbers that hold no volume behave as missing roots.
  gReports.clear ();
  EXPECT_EQ (Surveyor ()->StartCompareJobWithCallback (200, static_cast<UINT8> (Bak),
                                                       reinterpret_cast<const CHAR8 *> ("\\h"), ReportCallback),
             nullptr);
  ASSERT_EQ (gReports.size (), 2u);
  EXPECT_EQ (gReports[0].Line, TextWith ("root missing", {"\\h"}));
  Surveyor ()->CancelCompareJob (nullptr);
  EXPECT_EQ (Surveyor ()->SnapshotCompareResult (nullptr), nullptr);
  Surveyor ()->FreeCompareSnapshot (nullptr);

  // The job, its result, the text and the two buffers: each refused in turn.
  size_t Baseline = Fw ().LiveAllocations ();
  for (unsigned Skip = 0; Skip < 5; Skip++) {
    Fw ().FailService (env::BootService::AllocatePool, EFI_OUT_OF_RESOURCES, 1, Skip);
    EXPECT_EQ (Start ("\\h"), nullptr) << Skip;
    Fw ().ClearFailures ();
    EXPECT_EQ (Fw ().LiveAllocations (), Baseline) << Skip;
    EXPECT_EQ (LiveJobs (), 0u);
  }
  COMPARE_JOB *Job = Start ("\\h");
  ASSERT_NE (Job, nullptr);
  // A snapshot that cannot get its memory is null, and the job runs on.
  Fw ().FailService (env::BootService::AllocatePool, EFI_OUT_OF_RESOURCES, 1, 1);
  EXPECT_EQ (Surveyor ()->SnapshotCompareResult (Job), nullptr);
  Fw ().ClearFailures ();
  EXPECT_GT (RunToEnd (), 0);
}

}  // namespace
