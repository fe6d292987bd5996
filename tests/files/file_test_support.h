// A firmware and a file driver over temporary folders, without the rest of
// the environment; every test ends with the pool back at its baseline.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "env/files/file_driver.h"
#include "env/host/environment.h"
#include "env/host/folder_fs.h"
#include "support/driver_fixture.h"

class FileDriverTest : public ::testing::Test {
 protected:
  void SetUp () override {
    Files_ = std::make_unique<env::FileDriver> (env::OpenFolderVolume (System_.Path ().string ()), 9);
    T = Files_->Table ();
    Baseline_ = Fw_.LiveAllocations ();
  }
  void TearDown () override {
    EXPECT_EQ (Fw_.LiveAllocations (), Baseline_) << "pool blocks left behind";
    Files_.reset ();
  }

  int Mount (const std::filesystem::path &Folder, uint8_t Flags = 0, std::string Label = "") {
    env::VolumeSpec Spec;
    Spec.Folder = Folder.string ();
    Spec.Flags = Flags;
    Spec.Label = std::move (Label);
    return env::MountFolder (*Files_, Spec);
  }
  // Mounts the test's own folder as a volume.
  int MountMain (uint8_t Flags = 0) { return Volume_ = Mount (Main_.Path (), Flags); }
  std::filesystem::path Host (const std::string &Relative = "") const { return Main_.Path () / Relative; }
  void Write (const std::string &Relative, const std::string &Bytes) { WriteHostFile (Host (Relative), Bytes); }
  void Dir (const std::string &Relative) { std::filesystem::create_directories (Host (Relative)); }

  const CHAR8 *A (const std::string &Text) { return reinterpret_cast<const CHAR8 *> (Text.c_str ()); }

  // The listing of a path as a copy, the pool array freed; Ok false when the
  // directory could not be opened.
  std::vector<DIRECTORY_ENTRY> List (const std::string &Path, bool *Ok = nullptr) {
    std::vector<DIRECTORY_ENTRY> Out;
    UINT16 Handle = T->OpenDirectory (static_cast<UINT8> (Volume_), A (Path));
    if (Ok != nullptr) *Ok = Handle != 0;
    if (Handle == 0) return Out;
    UINT16 Count = 0xABCD;
    DIRECTORY_ENTRY *Entries = T->ReadDirectory (Handle, &Count);
    if (Entries != nullptr) {
      Out.assign (Entries, Entries + Count);
      Fw_.FreePool (Entries);
    } else {
      EXPECT_EQ (Count, 0);
    }
    T->CloseHandle (Handle);
    return Out;
  }
  static std::vector<std::string> Names (const std::vector<DIRECTORY_ENTRY> &Entries) {
    std::vector<std::string> Out;
    for (auto &E : Entries) Out.emplace_back (reinterpret_cast<const char *> (E.Name));
    return Out;
  }
  // Each entry as "name size", folders as "name/ size".
  static std::vector<std::string> Rows (const std::vector<DIRECTORY_ENTRY> &Entries) {
    std::vector<std::string> Out;
    for (auto &E : Entries)
      Out.push_back (reinterpret_cast<const char *> (E.Name) + std::string (E.IsDirectory ? "/ " : " ") +
                     std::to_string (E.Size));
    return Out;
  }

  // Sets the modification (and access) time of a host file.
  void SetModified (const std::string &Relative, time_t Seconds, long Nanoseconds = 0) {
    struct timespec Times[2] = {{Seconds, Nanoseconds}, {Seconds, Nanoseconds}};
    ASSERT_EQ (utimensat (AT_FDCWD, Host (Relative).c_str (), Times, 0), 0);
  }

  TempFolder Main_, System_;
  env::Firmware Fw_;
  std::unique_ptr<env::FileDriver> Files_;
  FILE_DRIVER_PROTOCOL *T = nullptr;
  int Volume_ = -1;
  size_t Baseline_ = 0;
};
