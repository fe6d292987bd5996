// The jobio driver's clipboard on real temporary folders: copy, paste and
// delete, and every refusal leaving the files exactly as they were.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <tuple>

#include "env/files/file_driver.h"
#include "env/host/folder_fs.h"
#include "env/jobio/jobio_driver.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"

namespace fs = std::filesystem;

namespace {

// Every entry below a folder: "<dir>" for folders, the bytes for files, and
// the modification time, so that "nothing changed" can be checked exactly.
using Snapshot = std::map<std::string, std::pair<std::string, long long>>;

long long MTimeNs (const fs::path &P) {
  struct stat St;
  if (lstat (P.c_str (), &St) != 0) return -1;
  return (long long) St.st_mtim.tv_sec * 1000000000LL + St.st_mtim.tv_nsec;
}

Snapshot Take (const fs::path &Root) {
  Snapshot S;
  for (auto &E : fs::recursive_directory_iterator (Root)) {
    S[fs::relative (E.path (), Root).string ()] = {E.is_directory () ? "<dir>" : ReadHostFile (E.path ()), MTimeNs (E.path ())};
  }
  return S;
}

void SetTime (const fs::path &P, time_t Seconds) {
  struct timespec T[2] = {{Seconds, 0}, {Seconds, 250000000}};
  utimensat (AT_FDCWD, P.c_str (), T, AT_SYMLINK_NOFOLLOW);
}

class ClipboardTest : public DriverTest {
 protected:
  bool AutoLoad () override { return false; }
  void SetUp () override {
    DriverTest::SetUp ();
    Src = MakeVolume ("src");
    Dst = MakeVolume ("dst");
    Locked = MakeVolume ("locked", VOLUME_FLAG_WRITE_PROTECTED);
    WriteFile (Src, "a.txt", "alpha");
    WriteFile (Src, "docs/b.bin", std::string ("\0\1\2\3binary", 10));
    WriteFile (Src, "docs/deep/c.txt", std::string (200000, 'c'));
    MakeDir (Src, "docs/empty");
    WriteFile (Dst, "keep.txt", "keep");
    WriteFile (Locked, "x.txt", "locked data");
    MakeDir (Locked, "sub");
    SetTime (VolumePath (Src) / "a.txt", 1000000000);
    SetTime (VolumePath (Src) / "docs/deep/c.txt", 1100000000);
    SetTime (VolumePath (Src) / "docs/deep", 1200000000);
    SetTime (VolumePath (Src) / "docs", 1300000000);
    J = Env ().jobio ().Table ();
  }
  UINT32 Clip (int Volume, const char *Dir, std::initializer_list<const char *> Names) {
    UINT32 Id = J->BeginClipboard ((UINT8) Volume, (const CHAR8 *) Dir);
    EXPECT_NE (Id, 0u);
    for (const char *N : Names) EXPECT_TRUE (J->AddToClipboard (Id, (const CHAR8 *) N)) << N;
    return Id;
  }
  UINT32 Paste (int Volume, const char *Dir) { return J->PasteClipboard ((UINT8) Volume, (const CHAR8 *) Dir); }

  int Src = -1, Dst = -1, Locked = -1;
  JOBIO_DRIVER_PROTOCOL *J = nullptr;
};

TEST_F (ClipboardTest, ClipboardIdsAndNames) {
  EXPECT_EQ (J->HasClipboard (), FALSE);
  UINT32 First = J->BeginClipboard ((UINT8) Src, (const CHAR8 *) "\\");
  EXPECT_NE (First, 0u);
  EXPECT_EQ (J->HasClipboard (), FALSE) << "an empty clipboard holds nothing to paste";
  EXPECT_TRUE (J->AddToClipboard (First, (const CHAR8 *) "a.txt") && J->AddToClipboard (First, (const CHAR8 *) "docs"));
  EXPECT_EQ (J->HasClipboard (), TRUE);

  // Names that are not entries of the directory, or not bare names.
  for (const char *Bad : {"missing", ".", "..", "docs\\b.bin", "docs/b.bin", ""})
    EXPECT_FALSE (J->AddToClipboard (First, (const CHAR8 *) Bad)) << Bad;
  EXPECT_FALSE (J->AddToClipboard (First, nullptr));

  // A new clipboard replaces the old one; the old id no longer adds names.
  UINT32 Second = J->BeginClipboard ((UINT8) Src, (const CHAR8 *) "\\docs\\");
  EXPECT_TRUE (Second != 0 && Second != First && !J->HasClipboard ());
  EXPECT_FALSE (J->AddToClipboard (First, (const CHAR8 *) "a.txt") || J->AddToClipboard (0, (const CHAR8 *) "b.bin"));
  EXPECT_TRUE (J->AddToClipboard (Second, (const CHAR8 *) "b.bin") && J->AddToClipboard (Second, (const CHAR8 *) "b.bin"));
  EXPECT_EQ (Env ().jobio ().ClipboardNames (), std::vector<std::string> {"b.bin"});

  // Missing directories and volumes give no clipboard and keep the current one.
  for (const char *Dir : {"\\nowhere", "\\a.txt", "\\..\\..", static_cast<const char *> (nullptr)})
    EXPECT_EQ (J->BeginClipboard ((UINT8) Src, (const CHAR8 *) Dir), 0u) << (Dir ? Dir : "null");
  EXPECT_EQ (J->BeginClipboard (20, (const CHAR8 *) "\\"), 0u);
  EXPECT_EQ (J->HasClipboard (), TRUE);

  // A write-protected volume can still be copied from.
  EXPECT_NE (J->BeginClipboard ((UINT8) Locked, (const CHAR8 *) "\\"), 0u);
}

TEST_F (ClipboardTest, PasteCopiesFilesAndFoldersWithTimes) {
  Clip (Src, "\\", {"a.txt", "docs"});
  Snapshot Before = Take (VolumePath (Src));
  ASSERT_EQ (Paste (Dst, "\\"), 1u);
  fs::path D = VolumePath (Dst);
  // The destination holds its old file and the source's entries with their bytes and times.
  Snapshot Want = Before;
  Want["keep.txt"] = {"keep", MTimeNs (D / "keep.txt")};
  EXPECT_TRUE (Want == Take (D));
  EXPECT_TRUE (Before == Take (VolumePath (Src))) << "the source is never changed by a paste";

  // The clipboard stays: the same names paste again into another folder,
  // also one below the source folder (a file is not a folder of itself).
  EXPECT_EQ (J->HasClipboard (), TRUE);
  MakeDir (Dst, "again");
  EXPECT_EQ (Paste (Dst, "\\again"), 1u);
  EXPECT_EQ (ReadHostFile (D / "again/docs/deep/c.txt"), std::string (200000, 'c'));
  Clip (Src, "\\", {"a.txt"});
  EXPECT_EQ (Paste (Src, "\\docs\\empty"), 1u);
  EXPECT_EQ (ReadHostFile (VolumePath (Src) / "docs/empty/a.txt"), "alpha");
}

TEST_F (ClipboardTest, RefusedPastesChangeNothing) {
  fs::path S = VolumePath (Src), D = VolumePath (Dst), L = VolumePath (Locked);
  WriteFile (Dst, "sub/A.TXT", "other data");
  Snapshot SrcBefore = Take (S), DstBefore = Take (D), LockedBefore = Take (L);
  auto Unchanged = [&] (const char *What) {
    EXPECT_TRUE (SrcBefore == Take (S)) << What;
    EXPECT_TRUE (DstBefore == Take (D)) << What;
    EXPECT_TRUE (LockedBefore == Take (L)) << What;
  };

  EXPECT_NE (Paste (Dst, "\\"), 1u);
  Unchanged ("empty clipboard");

  // A name clash (ASCII case ignored) refuses the whole paste, also the
  // names that would not clash; so does the source folder itself (every name
  // clashes), a folder into itself or one of its subfolders, and a
  // write-protected, missing or odd destination.
  Clip (Src, "\\", {"docs", "a.txt"});
  const std::pair<int, const char *> Refused[] = {
      {Dst, "\\sub"},    {Src, "\\"},       {Src, "\\docs"},         {Src, "\\docs\\deep"}, {Locked, "\\"}, {Locked, "\\sub"},
      {Dst, "\\nowhere"}, {Dst, "\\keep.txt"}, {Dst, "\\..\\..\\"}, {22, "\\"},           {Dst, nullptr}};
  for (auto [Volume, Dir] : Refused) {
    EXPECT_NE (Paste (Volume, Dir), 1u) << Volume << " " << (Dir ? Dir : "null");
    Unchanged (Dir ? Dir : "null");
  }

  // A folder holding a name that cannot be copied (no path reaches it).
  WriteFile (Src, "odd/back\\slash", "x");
  Clip (Src, "\\", {"odd"});
  SrcBefore = Take (S);
  EXPECT_NE (Paste (Dst, "\\"), 1u);
  Unchanged ("a name that cannot be copied");

  Clip (Src, "\\", {"a.txt"});
  fs::rename (S / "a.txt", S / "moved.txt");
  SrcBefore = Take (S);
  EXPECT_NE (Paste (Dst, "\\"), 1u);
  Unchanged ("source gone");
}

TEST_F (ClipboardTest, FailureHalfWayRemovesWhatWasMade) {
  fs::path S = VolumePath (Src), D = VolumePath (Dst);
  Snapshot SrcBefore = Take (S), DstBefore = Take (D);
  Clip (Src, "\\", {"a.txt", "docs"});
  // a.txt (5 bytes) and b.bin (10 bytes) go through; c.txt breaks off.
  Env ().jobio ().FailCopyAfter (5000);
  EXPECT_NE (Paste (Dst, "\\"), 1u);
  EXPECT_TRUE (DstBefore == Take (D)) << "the partial copy is removed, the old files kept";
  EXPECT_TRUE (SrcBefore == Take (S));
  EXPECT_EQ (Paste (Dst, "\\"), 1u);
  EXPECT_EQ (ReadHostFile (D / "docs/deep/c.txt"), std::string (200000, 'c'));
}

TEST_F (ClipboardTest, DeleteRemovesTreesAndEmptiesTheClipboard) {
  fs::path S = VolumePath (Src), L = VolumePath (Locked);
  EXPECT_EQ (J->DeleteClipboardFiles (), 0u);

  // Write-protected volume: failure, nothing deleted, clipboard emptied.
  Snapshot LockedBefore = Take (L);
  Clip (Locked, "\\", {"x.txt", "sub"});
  EXPECT_EQ (J->DeleteClipboardFiles (), 0u);
  EXPECT_TRUE (LockedBefore == Take (L) && !J->HasClipboard ());

  Clip (Src, "\\", {"docs", "a.txt"});
  EXPECT_EQ (J->DeleteClipboardFiles (), 1u);
  EXPECT_TRUE (fs::is_empty (S) && !J->HasClipboard ());

  // DeleteFile: one file or one empty folder; never a full folder, the root,
  // a missing entry or anything on a write-protected volume.
  WriteFile (Src, "f/one.txt", "1");
  MakeDir (Src, "g");
  const std::tuple<int, const char *, bool> Deletes[] = {
      {Src, "\\f", false}, {Src, "\\f\\one.txt", true}, {Src, "\\f", true}, {Src, "\\g", true},
      {Src, "\\", false},  {Src, "\\missing", false},     {Locked, "\\x.txt", false}};
  for (auto [Volume, Path, Done] : Deletes) EXPECT_EQ (J->DeleteFile ((UINT8) Volume, (const CHAR8 *) Path), Done) << Path;
  EXPECT_TRUE (fs::is_empty (S));
  EXPECT_EQ (ReadHostFile (L / "x.txt"), "locked data");
}

TEST_F (ClipboardTest, LinksAreCopiedAsLinksAndNeverFollowedOut) {
  fs::path S = VolumePath (Src), D = VolumePath (Dst);
  TempFolder Outside;
  WriteHostFile (Outside.Path () / "secret.txt", "secret");
  fs::create_symlink (Outside.Path () / "secret.txt", S / "docs/out.txt");
  fs::create_symlink ("../a.txt", S / "docs/in.txt");
  fs::create_directory_symlink (S, S / "docs/loop");
  Clip (Src, "\\", {"docs"});
  ASSERT_EQ (Paste (Dst, "\\"), 1u);
  // Each link is copied as a link with its own target; the inner one still
  // leads to a file of the volume, the others lead nowhere in it.
  EXPECT_EQ (fs::read_symlink (D / "docs/in.txt"), "../a.txt");
  EXPECT_EQ (fs::read_symlink (D / "docs/out.txt"), Outside.Path () / "secret.txt");
  EXPECT_EQ (fs::read_symlink (D / "docs/loop"), S);
  UINTN Size = 0;
  auto *Text = static_cast<char *> (Env ().files ().Table ()->ReadFile ((UINT8) Dst, (const CHAR8 *) "\\docs\\out.txt", &Size));
  ASSERT_NE (Text, nullptr);
  EXPECT_EQ (std::string (Text, Size), (Outside.Path () / "secret.txt").string ()) << "the target, never the secret";
  Fw ().FreePool (Text);
  // Deleting the folder removes the links, never what they lead to.
  Clip (Src, "\\", {"docs"});
  EXPECT_EQ (J->DeleteClipboardFiles (), 1u);
  EXPECT_FALSE (fs::exists (fs::symlink_status (S / "docs")));
  EXPECT_EQ (ReadHostFile (Outside.Path () / "secret.txt"), "secret");
  EXPECT_EQ (ReadHostFile (S / "a.txt"), "alpha");
}

// A hostile change at a chosen moment of a paste or delete: when the hook
// sees the Nth name, Swap runs.
struct Saboteur {
  std::string Name;
  int Countdown = 0;
  std::function<void ()> Swap;
  static void Hook (const std::string &Seen, void *Context) {
    auto *S = static_cast<Saboteur *> (Context);
    if (S->Swap && (S->Name.empty () || Seen == S->Name) && --S->Countdown == 0) {
      auto Swap = std::move (S->Swap);
      Swap ();
    }
  }
  Saboteur (std::string N, int Count, std::function<void ()> What) : Name (std::move (N)), Countdown (Count), Swap (What) {
    env::SetFolderFsHook (Hook, this);
  }
  ~Saboteur () { env::SetFolderFsHook (nullptr, nullptr); }
};

TEST_F (ClipboardTest, FoldersSwappedForLinksMidPasteNeverLeadOut) {
  fs::path S = VolumePath (Src), D = VolumePath (Dst);
  for (int I = 0; I < 30; I++) WriteFile (Src, "big/f" + std::to_string (I), "data " + std::to_string (I));
  WriteFile (Dst, "target/keep.txt", "keep");
  TempFolder Outside;
  WriteHostFile (Outside.Path () / "big/f7", "outside file");
  WriteHostFile (Outside.Path () / "precious/kept.txt", "precious");
  Snapshot OutsideBefore = Take (Outside.Path ());
  struct Case {
    const char *What;
    fs::path Swapped;      // the folder replaced by a link to Outside
    const char *Name;      // at the third entry of this name the swap happens
    bool Fail;             // the paste then fails and rolls back
  } Cases[] = {
      {"destination swapped, paste completes", D / "target", nullptr, false},
      {"destination swapped, paste rolls back", D / "target", nullptr, true},
      {"source swapped, paste completes", S / "big", nullptr, false},
  };
  for (const Case &C : Cases) {
    SCOPED_TRACE (C.What);
    fs::remove_all (D / "target");
    WriteFile (Dst, "target/keep.txt", "keep");
    Clip (Src, "\\", {"big"});
    fs::path Moved = C.Swapped.string () + ".moved";
    Saboteur Swap (C.Name ? C.Name : "", 3, [&] {
      fs::rename (C.Swapped, Moved);
      fs::create_directory_symlink (Outside.Path (), C.Swapped);
    });
    if (C.Fail) Env ().jobio ().FailCopyAfter (100);
    UINT32 Result = Paste (Dst, "\\target");
    EXPECT_TRUE (OutsideBefore == Take (Outside.Path ())) << "nothing outside the volume changed";
    // The paste went on in the folder it had opened, wherever that went.
    fs::path Written = C.Swapped == D / "target" ? Moved : D / "target";
    if (C.Fail) {
      EXPECT_EQ (Result, env::kPasteFailed);
      EXPECT_FALSE (fs::exists (Written / "big"));
    } else {
      EXPECT_EQ (Result, 1u);
      EXPECT_EQ (ReadHostFile (Written / "big/f7"), "data 7");
    }
    EXPECT_EQ (ReadHostFile (Written / "keep.txt"), "keep");
    fs::remove (C.Swapped);
    fs::rename (Moved, C.Swapped);
  }
}

TEST_F (ClipboardTest, AKilledPasteLeavesNoFinalNameAndIsCleanedUpLater) {
  fs::path D = VolumePath (Dst);
  WriteFile (Src, "large.bin", std::string (3 << 20, 'x'));
  Clip (Src, "\\", {"a.txt", "large.bin"});
  // A child process pastes and dies while large.bin is being written.
  pid_t Child = fork ();
  ASSERT_GE (Child, 0);
  if (Child == 0) {
    // Killed just after the second piece of work (large.bin) was created.
    Saboteur Die (".surveyor-partial-" + std::to_string (getpid ()) + "-2", 1, [] { _exit (9); });
    Paste (Dst, "\\");
    _exit (0);
  }
  int Status = 0;
  waitpid (Child, &Status, 0);
  ASSERT_TRUE (WIFEXITED (Status) && WEXITSTATUS (Status) == 9);
  std::vector<std::string> Names;
  for (auto &E : fs::directory_iterator (D)) Names.push_back (E.path ().filename ().string ());
  std::sort (Names.begin (), Names.end ());
  ASSERT_EQ (Names, (std::vector<std::string> {".surveyor-partial-" + std::to_string (Child) + "-2", "a.txt", "keep.txt"}))
      << "keep.txt, a.txt and one piece of work left behind";
  // The next paste into that folder removes the leftover; a paste of this
  // still running program's own work in progress is never touched.
  WriteHostFile (D / (".surveyor-partial-" + std::to_string (getpid ()) + "-99"), "ours, still being written");
  Clip (Src, "\\", {"large.bin"});
  EXPECT_EQ (Paste (Dst, "\\"), 1u);
  EXPECT_FALSE (fs::exists (D / Names[0]));
  EXPECT_TRUE (fs::exists (D / (".surveyor-partial-" + std::to_string (getpid ()) + "-99")));
  EXPECT_EQ (fs::file_size (D / "large.bin"), 3u << 20);
}

TEST_F (ClipboardTest, DeleteTakesOnlyWhatWasListedAndSaysWhatRemains) {
  fs::path S = VolumePath (Src);
  WriteFile (Src, "x", "a file when listed");
  WriteFile (Src, "tree/inner.txt", "inner");
  WriteFile (Src, "tree/other.txt", "other");
  // The user's listing of the folder, then x becomes a folder full of files.
  UINT16 Handle = Env ().files ().Table ()->OpenDirectory ((UINT8) Src, (const CHAR8 *) "\\");
  UINT16 Count = 0;
  Fw ().FreePool (Env ().files ().Table ()->ReadDirectory (Handle, &Count));
  Env ().files ().Table ()->CloseHandle (Handle);
  fs::remove (S / "x");
  WriteFile (Src, "x/important.doc", "important");
  // And tree\inner.txt is replaced by a folder just before it is removed.
  Saboteur Swap ("inner.txt", 1, [&] {
    fs::remove (S / "tree/inner.txt");
    fs::create_directory (S / "tree/inner.txt");
  });
  Env ().windows ().ClearMessageBoxes ();
  Clip (Src, "\\", {"x", "tree", "a.txt"});
  EXPECT_EQ (J->DeleteClipboardFiles (), env::kDeleteIncomplete);
  EXPECT_EQ (ReadHostFile (S / "x/important.doc"), "important");
  EXPECT_TRUE (fs::is_directory (S / "tree/inner.txt"));
  EXPECT_FALSE (fs::exists (S / "tree/other.txt"));
  EXPECT_FALSE (fs::exists (S / "a.txt"));
  ASSERT_EQ (Env ().windows ().MessageBoxes ().size (), 1u);
  const std::string &Text = Env ().windows ().MessageBoxes ()[0].Text;
  EXPECT_NE (Text.find ("x  (changed since it was listed)"), std::string::npos) << Text;
  EXPECT_NE (Text.find ("tree\\inner.txt"), std::string::npos) << Text;
}

std::vector<std::pair<WINDOW_HEADER *, int>> gClipboardMessages;

UINT8 EFIAPI RecordClipboardMessages (WINDOW_HEADER *Window, MESSAGE *Message) {
  if (Message->Type == MSG_CLIPBOARD) gClipboardMessages.push_back ({Window, Message->Code});
  return 0;
}

// Every change of HasClipboard, and only a change, reaches each window.
TEST_F (ClipboardTest, ChangesAreAnnouncedToEveryTopLevelWindow) {
  gClipboardMessages.clear ();
  WINDOW_HEADER *One = Wb ()->CreateWindow (272, Wb ()->Desktop, RecordClipboardMessages, nullptr, nullptr, 0, 0, 100, 100);
  WINDOW_HEADER *Two = Wb ()->CreateWindow (300, Wb ()->Desktop, RecordClipboardMessages, nullptr, nullptr, 9, 9, 100, 100);
  UINT32 Id = J->BeginClipboard ((UINT8) Src, (const CHAR8 *) "\\");
  J->AddToClipboard (Id, (const CHAR8 *) "a.txt");
  J->AddToClipboard (Id, (const CHAR8 *) "docs");
  Id = J->BeginClipboard ((UINT8) Src, (const CHAR8 *) "\\");   // replaced by an empty one
  J->AddToClipboard (Id, (const CHAR8 *) "a.txt");
  EXPECT_EQ (Paste (Dst, "\\"), 1u);                              // a paste keeps the clipboard
  EXPECT_EQ (J->DeleteClipboardFiles (), 1u);
  EXPECT_EQ (gClipboardMessages, (std::vector<std::pair<WINDOW_HEADER *, int>> {
                                     {One, 1}, {Two, 1}, {One, 0}, {Two, 0}, {One, 1}, {Two, 1}, {One, 0}, {Two, 0}}));
  Env ().windows ().DestroyAllWindows ();
}

}  // namespace
