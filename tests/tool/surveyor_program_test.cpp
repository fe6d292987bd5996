// End-to-end runs of the surveyor program: scripted sessions against
// generated folders, checked through the screen dump and the files on disk,
// and the backup check's output and exit status.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdlib>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace fs = std::filesystem;

namespace {

struct RunResult {
  int Status = -1;
  std::string Output;
};

RunResult RunProgram (const std::string &Arguments, const std::string &Input = "") {
  fs::path InputFile = fs::temp_directory_path () / ("surveyor-input-" + std::to_string (::getpid ()));
  std::ofstream (InputFile) << Input;
  std::string Command = std::string (SURVEYOR_TOOL) + " --no-settings " + Arguments + " < " + InputFile.string () + " 2>&1";
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

TEST_F (ProgramTest, ScriptBrowsesCopiesAndPastesBetweenVolumes) {
  Make ("left/docs/report.txt", "quarterly numbers\n");
  Make ("left/photo.bmp", "not really a picture");
  fs::create_directories (Root / "right");
  std::string Script =
      "volume " + (Root / "left").string () + " label=Left\n"
      "volume " + (Root / "right").string () + " label=Right\n"
      "open 0\n"
      "expect \"window \"\"Left\"\"\"\n"
      "activate docs\n"
      "expect report.txt\n"
      "select report.txt\n"
      "key ctrl+c\n"
      "open 1\n"
      "button Paste\n"
      "expect report.txt\n"
      "dump\n";
  RunResult R = RunProgram ("run -", Script);
  ASSERT_EQ (R.Status, 0) << R.Output;
  EXPECT_EQ (Read (Root / "right/report.txt"), "quarterly numbers\n");
  EXPECT_EQ (Read (Root / "left/docs/report.txt"), "quarterly numbers\n");
  EXPECT_NE (R.Output.find ("window \"Right\""), std::string::npos) << R.Output;
  EXPECT_NE (R.Output.find ("report.txt | 18"), std::string::npos) << R.Output;
}

TEST_F (ProgramTest, ScriptRenamesAndCreatesFoldersOnDisk) {
  Make ("vol/old.txt", "keep me");
  std::string Script =
      "volume " + (Root / "vol").string () + "\n"
      "open 0\n"
      "select old.txt\n"
      "rclick old.txt\n"
      "menu Rename\n"
      "type new.txt\n"
      "key enter\n"
      "menu File(F)\n"
      "menu \"New folder\"\n"
      "type made\n"
      "key enter\n"
      "expect made\n";
  RunResult R = RunProgram ("run -", Script);
  EXPECT_EQ (R.Status, 0) << R.Output;
  EXPECT_EQ (Read (Root / "vol/new.txt"), "keep me");
  EXPECT_FALSE (fs::exists (Root / "vol/old.txt"));
  EXPECT_TRUE (fs::is_directory (Root / "vol/made"));
}

TEST_F (ProgramTest, FailedExpectationStopsWithLineNumberAndDump) {
  Make ("vol/a.txt", "a");
  std::string Script = "volume " + (Root / "vol").string () + "\nopen 0\nexpect nothing-like-this\nopen 0\n";
  RunResult R = RunProgram ("run -", Script);
  EXPECT_EQ (R.Status, 1);
  EXPECT_NE (R.Output.find ("-:3: expected \"nothing-like-this\""), std::string::npos) << R.Output;
  EXPECT_NE (R.Output.find ("a.txt"), std::string::npos) << R.Output;
}

TEST_F (ProgramTest, ScriptWorksInsideAMessageBoxUntilItIsAnswered) {
  Make ("vol/a.txt", "a");
  fs::path Shot = Root / "box.png";
  std::string Open = "volume " + (Root / "vol").string () + "\nopen 0\nmenu Help(H)\nmenu \"About Surveyor\"\n";
  // Inside the box: the dump shows it, the shot is taken, answer closes it;
  // a second answer has no box left.
  RunResult R = RunProgram ("run -", Open + "expect \"message box\"\nshot " + Shot.string () + "\nanswer\nanswer\n");
  EXPECT_EQ (R.Status, 1) << R.Output;
  EXPECT_NE (R.Output.find ("-:8: no message box to answer"), std::string::npos) << R.Output;
  EXPECT_GT (fs::file_size (Shot), 1000u);
  // Any other command presses the button first, then runs.
  R = RunProgram ("run -", Open + "select a.txt\nexpect \"* a.txt\"\n");
  EXPECT_EQ (R.Status, 0) << R.Output;
}

TEST_F (ProgramTest, CompareReportsDifferencesAndExitStatus) {
  Make ("src/same.txt", "same");
  Make ("src/only-new.txt", "new");
  Make ("src/sub/changed.txt", "one");
  Make ("bak/same.txt", "same");
  Make ("bak/only-old.txt", "old");
  Make ("bak/sub/changed.txt", "two!");
  fs::last_write_time (Root / "bak/same.txt", fs::last_write_time (Root / "src/same.txt"));

  RunResult Differs = RunProgram ("compare " + (Root / "src").string () + " " + (Root / "bak").string ());
  EXPECT_EQ (Differs.Status, 1) << Differs.Output;
  EXPECT_NE (Differs.Output.find ("only-new.txt - 新增文件!"), std::string::npos) << Differs.Output;
  EXPECT_NE (Differs.Output.find ("only-old.txt - 文件被删除!"), std::string::npos) << Differs.Output;
  EXPECT_NE (Differs.Output.find ("changed.txt - 文件发生变化"), std::string::npos) << Differs.Output;
  EXPECT_NE (Differs.Output.find ("1 new, 1 deleted, 1 changed"), std::string::npos) << Differs.Output;

  RunResult Same = RunProgram ("compare " + (Root / "src").string () + " " + (Root / "bak").string () + " same.txt");
  EXPECT_EQ (Same.Status, 0) << Same.Output;
  EXPECT_NE (Same.Output.find ("no differences"), std::string::npos) << Same.Output;

  RunResult Missing = RunProgram ("compare " + (Root / "src").string () + " " + (Root / "bak").string () + " nope");
  EXPECT_EQ (Missing.Status, 2) << Missing.Output;
  EXPECT_NE (Missing.Output.find ("could not start"), std::string::npos) << Missing.Output;
}

TEST_F (ProgramTest, CommandLineMistakesAreExplained) {
  RunResult Unknown = RunProgram ("--frobnicate run x");
  EXPECT_EQ (Unknown.Status, 2);
  EXPECT_NE (Unknown.Output.find ("unknown option --frobnicate"), std::string::npos);
  RunResult BadVolume = RunProgram ("--volume " + Root.string () + ",flags=300 run -");
  EXPECT_EQ (BadVolume.Status, 2);
  EXPECT_NE (BadVolume.Output.find ("bad volume option"), std::string::npos);
  RunResult Help = RunProgram ("--help");
  EXPECT_EQ (Help.Status, 0);
  EXPECT_NE (Help.Output.find ("surveyor [OPTIONS] compare SOURCE BACKUP"), std::string::npos);
}

TEST_F (ProgramTest, SampleVolumeIsMountedWhenNoFolderIsGiven) {
  RunResult R = RunProgram ("run -", "open 0\nexpect readme.txt\nexpect pictures\n");
  EXPECT_EQ (R.Status, 0) << R.Output;
}

}  // namespace

namespace {

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
