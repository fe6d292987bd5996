// Test support: one folder whose listing the test decides, for reactions to
// what a real folder rarely shows on demand (a folder that cannot be read,
// more entries than a listing holds).
#pragma once

#include <cstdint>
#include <string>

#include "services/file_driver.h"

// While it lives, ReadDirectory of a handle opened on Path (as the driver
// spells it) returns Count generated file entries ("f0", "f1", ...), or null
// when Count is 0, and GetListingNotes reports Notes for it. Other paths go to
// the real file driver. One at a time.
class FolderOverride {
 public:
  FolderOverride (FILE_DRIVER_PROTOCOL *Table, std::string Path, const LISTING_NOTES &Notes, uint32_t Count = 0);
  ~FolderOverride ();
  FolderOverride (const FolderOverride &) = delete;
  FolderOverride &operator= (const FolderOverride &) = delete;

 private:
  FILE_DRIVER_PROTOCOL *Table_;
  FILE_DRIVER_PROTOCOL Saved_;
};

// Notes of a folder that could not be read.
LISTING_NOTES UnreadableFolderNotes ();
