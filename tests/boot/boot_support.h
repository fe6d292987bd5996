// Booting the disk image under QEMU and OVMF (scripts/boot.sh), headless,
// and reading the FAT disks afterwards with mtools. Tests are skipped when
// QEMU, OVMF or the image are not there.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "golden/golden_image.h"

class FirmwareBoot : public ::testing::Test {
 protected:
  void SetUp () override;
  void TearDown () override;

  // A copy of the built boot image in the test's folder.
  const std::filesystem::path &BootImage () const { return Boot_; }
  // A second disk: a FAT volume labelled Label holding the files of Folder.
  std::filesystem::path MakeDisk (const std::string &Label, const std::filesystem::path &Folder);
  std::filesystem::path Scratch (const std::string &Name) const { return Work_ / Name; }

  // Runs scripts/boot.sh --headless --image BootImage () with Args; returns
  // its exit status, with its output in Output.
  int Boot (const std::vector<std::string> &Args, std::string &Output);
  // The screen saved by a boot, compared with reference Name.
  std::string MatchScreen (const std::string &Name, const std::filesystem::path &Shot);

  // Files of a FAT disk image (the boot image's partition starts at 1 MiB).
  static std::string ReadFatFile (const std::filesystem::path &Image, const std::string &Path, bool Partitioned);
  // Every path on the disk with its size ("/dir/", "/file 12"), sorted.
  static std::vector<std::string> FatTree (const std::filesystem::path &Image, bool Partitioned);

 private:
  std::filesystem::path Work_, Boot_;
};
