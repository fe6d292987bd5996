#include "boot/boot_support.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace fs = std::filesystem;

namespace {

std::string Quote (const std::string &Text) {
  std::string Out = "'";
  for (char C : Text) Out += C == '\'' ? std::string ("'\\''") : std::string (1, C);
  return Out + "'";
}

int RunCommand (const std::string &Command, std::string &Output) {
  Output.clear ();
  FILE *Pipe = popen ((Command + " 2>&1").c_str (), "r");
  if (Pipe == nullptr) return -1;
  std::array<char, 4096> Buffer;
  size_t Got;
  while ((Got = fread (Buffer.data (), 1, Buffer.size (), Pipe)) > 0) Output.append (Buffer.data (), Got);
  int Status = pclose (Pipe);
  return WIFEXITED (Status) ? WEXITSTATUS (Status) : -1;
}

bool Have (const std::string &Program) {
  std::string Ignored;
  return RunCommand ("command -v " + Program, Ignored) == 0;
}

std::string MtoolsImage (const fs::path &Image, bool Partitioned) {
  return Quote (Image.string () + (Partitioned ? "@@1M" : ""));
}

}  // namespace

void FirmwareBoot::SetUp () {
  fs::path Built = fs::path (SURVEYOR_BUILD_DIR) / "surveyor-usb.img";
  if (!Have ("qemu-system-x86_64") || !Have ("mcopy") || !fs::exists ("/usr/share/OVMF") || !fs::exists (Built))
    GTEST_SKIP () << "QEMU, OVMF, mtools or the boot image are missing";
  Work_ = fs::temp_directory_path () / ("surveyor-boot-" + std::to_string (getpid ()) + "-" +
                                        ::testing::UnitTest::GetInstance ()->current_test_info ()->name ());
  fs::remove_all (Work_);
  fs::create_directories (Work_);
  Boot_ = Work_ / "boot.img";
  fs::copy_file (Built, Boot_);
}

void FirmwareBoot::TearDown () {
  if (!Work_.empty () && !HasFailure ()) fs::remove_all (Work_);
}

fs::path FirmwareBoot::MakeDisk (const std::string &Label, const fs::path &Folder) {
  fs::path Disk = Work_ / (Label + ".img");
  std::string Output;
  // One fixed date for everything, as on the boot image: screens stay the same.
  std::string Command = "find " + Quote (Folder.string ()) + " -exec touch -h -d '2026-01-02 03:04:05' {} + && mkfs.fat -F 32 -i 4241434B -n " +
                        Quote (Label) + " -C " + Quote (Disk.string ()) + " 65536 >/dev/null";
  EXPECT_EQ (RunCommand (Command, Output), 0) << Output;
  for (const auto &Entry : fs::directory_iterator (Folder)) {
    Command = "mcopy -i " + Quote (Disk.string ()) + " -s -m -Q " + Quote (Entry.path ().string ()) + " ::/";
    EXPECT_EQ (RunCommand (Command, Output), 0) << Output;
  }
  return Disk;
}

int FirmwareBoot::Boot (const std::vector<std::string> &Args, std::string &Output) {
  std::string Command = Quote (std::string (SURVEYOR_SOURCE_DIR) + "/scripts/boot.sh") + " --headless --image " +
                        Quote (Boot_.string ());
  for (const std::string &A : Args) Command += " " + Quote (A);
  return RunCommand (Command, Output);
}

std::string FirmwareBoot::MatchScreen (const std::string &Name, const fs::path &Shot) {
  Image Screen;
  std::string Error;
  if (!ReadPngImage (Shot.string (), Screen, Error)) return Error;
  // The firmware draws with the environment's own code: the pixels are the
  // host's, exactly; only the screen's size is the firmware's.
  return MatchGolden (Name, Screen, Tolerance {4, 0});
}

std::string FirmwareBoot::ReadFatFile (const fs::path &Image, const std::string &Path, bool Partitioned) {
  std::string Output;
  if (RunCommand ("mtype -i " + MtoolsImage (Image, Partitioned) + " " + Quote ("::" + Path), Output) != 0) return "<none>";
  return Output;
}

std::vector<std::string> FirmwareBoot::FatTree (const fs::path &Image, bool Partitioned) {
  std::string Output;
  RunCommand ("mdir -i " + MtoolsImage (Image, Partitioned) + " -/ -b ::/", Output);
  std::vector<std::string> Paths;
  std::istringstream Lines (Output);
  std::string Line;
  while (std::getline (Lines, Line)) {
    if (Line.rfind ("::/", 0) != 0) continue;
    std::string Path = Line.substr (2);
    if (Path.size () > 1 && Path.back () == '/') {
      Paths.push_back (Path);
      continue;
    }
    std::string Size;
    RunCommand ("mdir -i " + MtoolsImage (Image, Partitioned) + " " + Quote ("::" + Path) + " | awk 'NR==4 {print $3}'", Size);
    Paths.push_back (Path + " " + Size.substr (0, Size.find ('\n')));
  }
  std::sort (Paths.begin (), Paths.end ());
  return Paths;
}
