// The file manager on real firmware: the disk image booted under QEMU and
// OVMF, driven by keys over QMP (no pointer: Debian's OVMF has no mouse
// driver), its screen compared with golden images and its disks read with
// mtools after the machine is off. The root of the boot volume lists data,
// docs, EFI, empty, pictures, tools and readme.txt.
#include <fstream>

#include "boot/boot_support.h"

namespace fs = std::filesystem;

namespace {

// A folder of files to put on a second disk.
fs::path Folder (const fs::path &Where, const std::vector<std::pair<std::string, std::string>> &Files) {
  for (const auto &[Path, Bytes] : Files) {
    fs::create_directories ((Where / Path).parent_path ());
    std::ofstream (Where / Path, std::ios::binary) << Bytes;
  }
  return Where;
}

}  // namespace

TEST_F (FirmwareBoot, ShowsTheFileManagerAndBrowsesByKeys) {
  std::string Output;
  fs::path Main = Scratch ("main.png"), Back = Scratch ("back.png");
  // Into EFI (third row) and back up: the row we left is selected again.
  ASSERT_EQ (Boot ({"--shot", Main.string (), "--keys", "down down ret backspace", "--shot", Back.string ()}, Output), 0)
      << Output;
  EXPECT_EQ (MatchScreen ("firmware_main_window", Main), "");
  EXPECT_EQ (MatchScreen ("firmware_back_up", Back), "");
}

TEST_F (FirmwareBoot, CopiesPastesRenamesAndDeletesOnTheDisks) {
  fs::path Disk = MakeDisk ("BACKUP", Folder (Scratch ("backup"), {{"old/b.txt", "backup file"}}));
  std::vector<std::string> BootBefore = FatTree (BootImage (), true);
  std::string Output;
  fs::path Clash = Scratch ("clash.png");
  // BACKUP is a USB stick plugged in while the file manager runs.
  ASSERT_EQ (Boot ({"--plug", Disk.string (),
                    // docs and readme.txt selected and copied, the volume chooser
                    // opens BACKUP, and both are pasted there.
                    "--keys", "down ctrl+end ctrl+spc ctrl+c ctrl+o down ret ctrl+v",
                    // The same again: every name clashes, a message box says so.
                    "--keys", "ctrl+v", "--shot", Clash.string (), "--keys", "ret",
                    // readme.txt becomes readme2.txt; old is deleted; both windows close.
                    "--keys", "end f2 backspace backspace backspace backspace 2 dot t x t ret home down delete",
                    "--keys", "ctrl+w ctrl+w", "--wait-done"},
                   Output),
            0)
      << Output;
  EXPECT_EQ (MatchScreen ("firmware_paste_clash", Clash), "");
  EXPECT_EQ (FatTree (BootImage (), true), BootBefore) << "nothing changed on the boot volume";
  const std::vector<std::string> Expected = {"/docs/", "/docs/guide/", "/docs/guide/chapter1.txt",
                                             "/docs/notes.txt", "/docs/settings.ini", "/readme2.txt"};
  std::vector<std::string> Names;
  for (const std::string &Entry : FatTree (Disk, false)) Names.push_back (Entry.substr (0, Entry.find (' ')));
  EXPECT_EQ (Names, Expected);
  for (const char *Path : {"/docs/guide/chapter1.txt", "/docs/notes.txt", "/docs/settings.ini"})
    EXPECT_EQ (ReadFatFile (Disk, Path, false), ReadFatFile (BootImage (), Path, true)) << Path;
  EXPECT_EQ (ReadFatFile (Disk, "/readme2.txt", false), ReadFatFile (BootImage (), "/readme.txt", true));
}

TEST_F (FirmwareBoot, ShowsTextAndPicturesInTheViewers) {
  std::string Output;
  fs::path Hex = Scratch ("hex.png"), Bmp = Scratch ("bmp.png"), Jpeg = Scratch ("jpeg.png");
  ASSERT_EQ (Boot ({"--keys", "end ret", "--shot", Hex.string (), "--keys", "ctrl+w home p ret g ret", "--shot",
                    Bmp.string (), "--keys", "ctrl+w l ret", "--shot", Jpeg.string ()},
                   Output),
            0)
      << Output;
  EXPECT_EQ (MatchScreen ("firmware_hex_viewer", Hex), "");
  EXPECT_EQ (MatchScreen ("firmware_bmp_viewer", Bmp), "");
  EXPECT_EQ (MatchScreen ("firmware_jpeg_viewer", Jpeg), "");
}

TEST_F (FirmwareBoot, ComparesAFolderWithTheBackupNamedInTheConfiguration) {
  // The backup of docs: notes.txt changed, the guide missing, an extra file.
  std::string Notes = ReadFatFile (BootImage (), "/docs/notes.txt", true);
  fs::path Disk = MakeDisk ("BACKUP", Folder (Scratch ("backup"), {{"docs/notes.txt", Notes + "changed"},
                                                                    {"docs/settings.ini", ReadFatFile (BootImage (), "/docs/settings.ini", true)},
                                                                    {"docs/extra.txt", "only in the backup"}}));
  std::ofstream (Scratch ("surveyor.cfg")) << "source = SURVEYOR\ncompare1 = BACKUP\n";
  std::string Output;
  ASSERT_EQ (std::system (("mcopy -o -i " + BootImage ().string () + "@@1M " + Scratch ("surveyor.cfg").string () +
                           " ::/EFI/kivora/surveyor.cfg")
                              .c_str ()),
             0);
  fs::path Shot = Scratch ("compare.png");
  // docs, its context menu, and its fifth enabled item: the first backup.
  ASSERT_EQ (Boot ({"--disk", Disk.string (), "--keys", "down shift+f10 down down down down down ret", "--shot",
                    Shot.string ()},
                   Output),
            0)
      << Output;
  EXPECT_EQ (MatchScreen ("firmware_comparison", Shot), "");
}

TEST_F (FirmwareBoot, KeepsTheWindowWhereItWasClosedAcrossBoots) {
  fs::path Vars = Scratch ("vars.fd"), Shot = Scratch ("second-boot.png");
  std::string Output;
  ASSERT_EQ (Boot ({"--vars", Vars.string (), "--keys", "alt+right alt+right alt+right alt+down alt+down ctrl+w",
                    "--wait-done"},
                   Output),
            0)
      << Output;
  ASSERT_EQ (Boot ({"--vars", Vars.string (), "--shot", Shot.string ()}, Output), 0) << Output;
  EXPECT_EQ (MatchScreen ("firmware_position_kept", Shot), "");
}
