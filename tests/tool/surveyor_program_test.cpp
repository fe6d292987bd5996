// End-to-end runs of the surveyor program: scripted sessions against
// generated folders, checked through the screen dump and the files on disk,
// and the backup check's output and exit status.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

struct RunResult {
  int Status = -1;
  std::string Output;
};

// Runs the program with Arguments, Input on its standard input and the
// variables of Environment ("NAME=VALUE ...") set.
RunResult RunProgram (const std::string &Arguments, const std::string &Input = "",
                      const std::string &Environment = "") {
  fs::path InputFile = fs::temp_directory_path () / ("surveyor-input-" + std::to_string (::getpid ()));
  std::ofstream (InputFile) << Input;
  std::string Command = "env " + Environment + " " + std::string (SURVEYOR_TOOL) + " --no-settings " + Arguments +
                        " < " + InputFile.string () + " 2>&1";
  RunResult Result;
  FILE *Pipe = ::popen (Command.c_str (), "r");
  if (Pipe == nullptr) return Result;
  std::array<char, 4096> Buffer;
  size_t Got;
  while ((Got = std::fread (Buffer.data (), 1, Buffer.size (), Pipe)) > 0) Result.Output.append (Buffer.data (), Got);
  int Raw = ::pclose (Pipe);
  Result.Status = WIFEXITED (Raw) ? WEXITSTATUS (Raw) : -1;
  fs::remove (InputFile);
  return Result;
}

class ProgramTest : public ::testing::Test {
 protected:
  void SetUp () override {
    Root = fs::temp_directory_path () / ("surveyor-e2e-" + std::to_string (::getpid ()) + "-" +
                                         ::testing::UnitTest::GetInstance ()->current_test_info ()->name ());
    fs::remove_all (Root);
    fs::create_directories (Root);
  }
  void TearDown () override { fs::remove_all (Root); }

  fs::path Make (const std::string &Relative, const std::string &Content = "") {
    fs::path Path = Root / Relative;
    fs::create_directories (Path.parent_path ());
    std::ofstream (Path, std::ios::binary) << Content;
    return Path;
  }
  static std::string Read (const fs::path &Path) {
    std::ifstream In (Path, std::ios::binary);
    std::stringstream Text;
    Text << In.rdbuf ();
    return Text.str ();
  }

  fs::path Root;
};

// The whole file manager by keys alone, as in firmware without a pointer,
// then a rename and a new folder through the menus.
TEST_F (ProgramTest, KeysAloneBrowseCopyPasteRenameAndDelete) {
  Make ("left/docs/report.txt", "quarterly numbers\n");
  Make ("left/photo.bmp", "not really a picture");
  fs::create_directories (Root / "left/archive");
  fs::create_directories (Root / "right");
  std::string Script =
      "volume " + (Root / "left").string () + " label=Left\n"
      "volume " + (Root / "right").string () + " label=Right\n"
      "open 0\n"
      "key down\nkey enter\nexpect report.txt\n"                // into docs, the second row
      "key backspace\nexpect \"* docs\"\n"                        // back, docs selected again
      "key ctrl+end\nkey ctrl+space\nkey ctrl+c\n"                // docs and photo.bmp copied
      "key ctrl+o\nkey down\nkey enter\nexpect \"window \"\"Right\"\"\"\n"   // the volume chooser
      "key ctrl+v\nexpect photo.bmp\n"
      "key end\nkey f2\nkey backspace\nkey backspace\nkey backspace\nkey backspace\n"
      "key 2\nkey .\nkey b\nkey m\nkey p\nkey enter\nexpect photo2.bmp\n"   // renamed
      "key home\nkey delete\n"                                  // docs deleted again
      "select photo2.bmp\nrclick photo2.bmp\nmenu Rename\ntype photo3.bmp\nkey enter\n"   // by the pointer
      "menu File(F)\nmenu \"New folder\"\ntype made\nkey enter\nexpect made\n"
      "key ctrl+w\nexpect \"window \"\"Left\"\"\"\n";
  RunResult R = RunProgram ("run -", Script);
  ASSERT_EQ (R.Status, 0) << R.Output;
  EXPECT_EQ (Read (Root / "right/photo3.bmp"), "not really a picture");
  EXPECT_TRUE (fs::is_directory (Root / "right/made"));
  EXPECT_EQ (std::distance (fs::directory_iterator (Root / "right"), fs::directory_iterator ()), 2);
  EXPECT_EQ (Read (Root / "left/docs/report.txt"), "quarterly numbers\n");
  EXPECT_EQ (Read (Root / "left/photo.bmp"), "not really a picture");
}

// How a run ends: its status and what it says, for scripts and for mistakes
// on the command line.
TEST_F (ProgramTest, RunsEndWithTheirStatusAndSayWhy) {
  Make ("vol/a.txt", "a");
  fs::path Shot = Root / "box.png";
  std::string Volume = "volume " + (Root / "vol").string () + "\nopen 0\n";
  std::string About = Volume + "menu Help(H)\nmenu \"About Surveyor\"\n";
  struct Case {
    std::string Arguments, Input;
    int Status;
    std::vector<std::string> Says;
  } Cases[] = {
      {"run -", Volume + "expect nothing-like-this\nopen 0\n", 1, {"-:3: expected \"nothing-like-this\"", "a.txt"}},
      // Inside a box the dump shows it and the shot is taken; answer closes
      // it, and a second answer has no box left.
      {"run -", About + "expect \"message box\"\nshot " + Shot.string () + "\nanswer\nanswer\n", 1,
       {"-:8: no message box to answer"}},
      // Any other command presses the box's button first, then runs.
      {"run -", About + "select a.txt\nexpect \"* a.txt\"\n", 0, {}},
      // Without a folder the sample volume is mounted.
      {"run -", "open 0\nexpect readme.txt\nexpect pictures\n", 0, {}},
      {"--frobnicate run x", "", 2, {"unknown option --frobnicate"}},
      {"--volume " + Root.string () + ",flags=300 run -", "", 2, {"bad volume option"}},
      {"compare a b --lang fr", "", 2, {"--lang wants en or zh"}},
      {"--help", "", 0, {"surveyor [OPTIONS] compare SOURCE BACKUP", "3 when part of the tree could not be checked"}},
  };
  for (const Case &C : Cases) {
    RunResult R = RunProgram (C.Arguments, C.Input);
    EXPECT_EQ (R.Status, C.Status) << C.Arguments << "\n" << C.Input << R.Output;
    for (const std::string &Text : C.Says)
      EXPECT_NE (R.Output.find (Text), std::string::npos) << Text << "\n" << R.Output;
  }
  EXPECT_GT (fs::file_size (Shot), 1000u);
}

// The lines of a backup check's output before its summary, and the summary.
struct CheckOutput {
  std::vector<std::string> Lines;
  std::vector<std::string> Summary;
};

// The summary's time ("in 0.02 s") is left out: two runs may differ there.
CheckOutput SplitCheck (const std::string &Output) {
  CheckOutput Out;
  std::istringstream In (Output);
  std::string Line;
  std::getline (In, Line);   // "Checking ..."
  bool InSummary = false;
  while (std::getline (In, Line)) {
    if (Line.empty ()) InSummary = true;
    else if (InSummary) Out.Summary.push_back (std::regex_replace (Line, std::regex (" in [0-9.]+ s:"), ":"));
    else Out.Lines.push_back (Line);
  }
  return Out;
}

class CompareProgramTest : public ProgramTest {
 protected:
  // The same file in the source and the backup, with one modification time.
  void Same (const std::string &Relative, const std::string &Content) {
    Make ("src/" + Relative, Content);
    Make ("bak/" + Relative, Content);
    fs::last_write_time (Root / "bak" / Relative, fs::last_write_time (Root / "src" / Relative));
  }
  RunResult Compare (const std::string &Options = "", const std::string &Environment = "") {
    return RunProgram ("compare " + (Root / "src").string () + " " + (Root / "bak").string () + " " + Options, "",
                       Environment);
  }
};

TEST_F (CompareProgramTest, EveryDifferenceIsALineAndTheTotalsCountTheLines) {
  Same ("same.txt", "same");
  Make ("src/only-new.txt", "new");
  Make ("bak/only-old.txt", "old");
  Same ("sub/changed.txt", "one");
  Make ("bak/sub/changed.txt", "two!");
  Make ("src/kind/inside", "k");
  Make ("bak/kind", "k");
  Make ("src/filedir", "f");
  fs::create_directories (Root / "bak/filedir");
  fs::create_directories (Root / "src/emptied");
  Make ("bak/emptied/a", "a");
  Make ("bak/emptied/b", "b");
  Make ("src/filled/a", "a");
  fs::create_directories (Root / "bak/filled");
  Make ("src/newdir/x", "x");
  Make ("bak/olddir/y", "y");

  RunResult R = Compare ("--lang en");
  ASSERT_EQ (R.Status, 1) << R.Output;
  CheckOutput Check = SplitCheck (R.Output);
  EXPECT_EQ (Check.Lines, (std::vector<std::string> {"\\emptied - folder is empty, the backup has 2 files",
                                                     "\\filled - folder has 1 new files, the backup folder is empty",
                                                     "\\kind - not of the same kind as in the backup",
                                                     "\\sub - folder contents changed",
                                                     "  changed.txt - file changed (size or time)",
                                                     "\\ - folder contents changed",
                                                     "  filedir - a file on one side, a folder on the other",
                                                     "  olddir - folder deleted",
                                                     "  only-old.txt - file deleted",
                                                     "  newdir - new folder",
                                                     "  only-new.txt - new file"}));
  EXPECT_EQ (Check.Summary, std::vector<std::string> {
                                "13 entries checked: 9 differences (3 new, 3 deleted, 1 changed, 2 of another kind)."});

  // The driver's own texts, chosen or taken from a Chinese locale, and the
  // same totals whatever the language.
  struct Language {
    std::string Option, Environment, Says;
  } Languages[] = {
      {"--lang zh", "LANG=C.UTF-8", "  only-new.txt - 新增文件!"},
      {"", "LC_ALL= LC_MESSAGES= LANG=zh_CN.UTF-8", "\\emptied - 文件夹为空，备份有2个文件"},
      {"", "LC_ALL= LC_MESSAGES= LANG=C.UTF-8", "  only-new.txt - new file"},
  };
  for (const Language &L : Languages) {
    RunResult Told = Compare (L.Option, L.Environment);
    EXPECT_EQ (Told.Status, 1) << Told.Output;
    EXPECT_NE (Told.Output.find (L.Says), std::string::npos) << L.Environment << "\n" << Told.Output;
    EXPECT_EQ (SplitCheck (Told.Output).Summary, Check.Summary);
  }
}

TEST_F (CompareProgramTest, ContentsAndTheComparedPathDecideTheStatus) {
  Same ("docs/a.txt", "abc");
  Same ("docs/b.txt", "xyz");
  Make ("src/docs/only-here.txt", "1");
  // Same size and time, other bytes: equal for the quick check, not with contents.
  Make ("bak/docs/b.txt", "xyZ");
  fs::last_write_time (Root / "bak/docs/b.txt", fs::last_write_time (Root / "src/docs/b.txt"));
  std::string Long (479, 'p');

  struct Case {
    std::string Options;
    int Status;
    std::string Says;
  } Cases[] = {
      {"docs/a.txt --lang en", 0, "1 entry checked"},
      {"docs/b.txt --lang en", 0, "no differences."},
      {"docs/b.txt --contents --lang en", 1, "  b.txt - file contents differ"},
      {"docs --contents --lang en", 1, "2 differences (1 new, 1 changed)."},
      {"docs/only-here.txt --lang en", 1, "\\docs\\only-here.txt does not exist in the backup"},
      {"nope --lang en", 2, "The check could not start: the path is missing or unreadable in the source."},
      {Long, 2, "must be shorter than 480 bytes"},
  };
  for (const Case &C : Cases) {
    RunResult R = Compare (C.Options);
    EXPECT_EQ (R.Status, C.Status) << C.Options << "\n" << R.Output;
    EXPECT_NE (R.Output.find (C.Says), std::string::npos) << C.Options << "\n" << R.Output;
  }
}

// Everything the job passes over without a word is named, counted, and makes the check incomplete.
TEST_F (CompareProgramTest, WhatCouldNotBeCheckedIsNamedAndExits3) {
  std::string Name170 (170, 'n'), Name200 (200, 'm');
  struct Case {
    std::string Name;
    std::function<void ()> Build;
    std::string Line, Summary;
  } Cases[] = {
      {"deeper than 31 levels",
       [&] {
         std::string Deep;
         for (int Level = 1; Level <= 33; Level++) Deep += "/l" + std::to_string (Level);
         Make ("src" + Deep + "/changed", "1");
         Make ("bak" + Deep + "/changed", "22");
       },
       "\\l32 - not checked: more than 31 levels below the path compared", "1 folder more than 31 levels deep"},
      {"a folder path longer than 511 bytes",
       [&] {
         for (const char *Side : {"src/", "bak/"}) fs::create_directories (Root / Side / Name170 / Name170 / Name170);
         Make ("src/" + Name170 + "/" + Name170 + "/" + Name170 + "/f", "1");
       },
       Name170 + " - not checked: its path is longer than 511 bytes", "1 file or folder whose path is longer than 511"},
      {"a file path longer than 511 bytes",
       [&] {
         Same (Name170 + "/" + Name170 + "/f" + Name170, "1");
       },
       "  f" + Name170 + " - could not open the file (its path is longer than 511 bytes)",
       "1 file or folder whose path is longer than 511"},
      {"a name longer than 191 bytes",
       [&] {
         Same ("d/ok", "1");
         Make ("src/d/" + Name200, "1");
       },
       "\\d - not checked in the source: 1 name longer than 191 bytes",
       "1 name longer than 191 bytes (source 1, backup 0)"},
      {"a pipe in the listing",
       [&] {
         Same ("p/ok", "1");
         ASSERT_EQ (::mkfifo ((Root / "src/p/pipe").c_str (), 0600), 0);
       },
       "\\p - not checked in the source: 1 entry the file driver could not read",
       "1 entry the file driver could not read"},
      {"more than 65,535 entries in a folder",
       [&] {
         // 65,534 files with "." and "..": one record more than a listing holds. The
         // backup is the source folder itself, mounted a second time.
         // Links are the quickest to make; a file takes 60,000 of them at most.
         Make ("src/big/f00000");
         Make ("src/big/f60000");
         int Folder = ::open ((Root / "src/big").c_str (), O_RDONLY | O_DIRECTORY);
         ASSERT_GE (Folder, 0);
         for (int I = 1; I < 65534; I++) {
           char Name[16];
           std::snprintf (Name, sizeof (Name), "f%05d", I);
           if (I != 60000) ASSERT_EQ (::linkat (Folder, I < 60000 ? "f00000" : "f60000", Folder, Name, 0), 0) << Name;
         }
         ::close (Folder);
         fs::remove_all (Root / "bak");
         fs::create_directory_symlink (Root / "src", Root / "bak");
       },
       "\\big - not checked in the source: 1 entry beyond the 65,535 a folder can list",
       "2 entries beyond the 65,535 a folder can list (source 1, backup 1)"},
      {"a full list of differences",
       [&] {
         Same ("a/keep", "k");
         for (int I = 0; I < 1100; I++) Make ("src/a/n" + std::to_string (I), "1");
         Same ("b/keep", "k");
         Make ("bak/b/gone", "1");
       },
       "  n1099 - new file", "the list of differences filled up (1,024 entries): at least 1 more difference was found"},
  };
  for (const Case &C : Cases) {
    fs::remove_all (Root);
    fs::create_directories (Root / "src");
    fs::create_directories (Root / "bak");
    C.Build ();
    RunResult R = Compare ("--lang en");
    EXPECT_EQ (R.Status, 3) << C.Name << "\n" << R.Output.substr (0, 4000);
    CheckOutput Check = SplitCheck (R.Output);
    EXPECT_TRUE (std::any_of (Check.Lines.begin (), Check.Lines.end (),
                              [&] (const std::string &L) { return L.find (C.Line) != std::string::npos; }))
        << C.Name << "\n" << R.Output.substr (0, 4000);
    ASSERT_GE (Check.Summary.size (), 3u) << C.Name << "\n" << R.Output.substr (0, 4000);
    EXPECT_NE (Check.Summary[1].find (C.Summary), std::string::npos) << C.Name << "\n" << Check.Summary[1];
    EXPECT_EQ (Check.Summary.back (), "The check is incomplete.") << C.Name;
  }
}

TEST_F (CompareProgramTest, AnIdenticalCopyWithLinksExits0) {
  Make ("src/d/file", "hello");
  fs::create_symlink ("file", Root / "src/d/relative");
  fs::create_symlink (Root / "src/d/file", Root / "src/d/absolute");
  fs::create_symlink ("d", Root / "src/folder-link");
  fs::create_symlink ("nowhere", Root / "src/d/dangling");
  fs::create_symlink ("/etc/hostname", Root / "src/d/outside");
  fs::remove_all (Root / "bak");
  ASSERT_EQ (std::system (("cp -a " + (Root / "src").string () + " " + (Root / "bak").string ()).c_str ()), 0);
  RunResult R = Compare ("--lang en");
  EXPECT_EQ (R.Status, 0) << R.Output;
  EXPECT_NE (R.Output.find ("no differences."), std::string::npos) << R.Output;
}

TEST_F (ProgramTest, BrowseShowsTheDesktopUnderXvfb) {
  if (std::system ("command -v xvfb-run > /dev/null 2>&1") != 0) GTEST_SKIP () << "xvfb-run is not installed";
  Make ("vol/readme.txt", "hello");
  fs::path Shot = Root / "desktop.png";
  // xvfb-run wraps the program: the whole command runs under a virtual display.
  std::string Command = "xvfb-run -a " + std::string (SURVEYOR_TOOL) + " --no-settings --frames 1 --shot " +
                        Shot.string () + " browse " + (Root / "vol").string () + " > /dev/null 2>&1";
  ASSERT_EQ (std::system (Command.c_str ()), 0);
  std::string Png = Read (Shot);
  ASSERT_GT (Png.size (), 1000u);
  EXPECT_EQ (Png.substr (1, 3), "PNG");
}

}  // namespace
