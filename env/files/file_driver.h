// The stand-in file driver: volumes backed by host folders, directory
// listings, file handles, the resource-string file and the service registry.
//
// Behaviour chosen for this driver (the driver under test relies only on the
// table's documented results):
// - Volumes: 24 slots. Mount takes the next free slot and fills its record:
//   InUse 1, Offered 1, Kind, Flags, FileSystemType, Label (the given label or
//   the folder's last component, cut to 123 bytes). Unmount clears the record
//   and closes every handle of that volume.
// - Paths: see host_path.h ("\"-separated, doubled and trailing "\" accepted,
//   "." ignored, ".." never above the root, 511 bytes at most, no "/" inside a
//   name, symbolic links never followed out of the folder).
// - Listings: "." and ".." first in every directory but the root, then the
//   folders, then the files, each group by name (ASCII letters compared
//   without case, then byte by byte). Host names longer than 191 bytes,
//   names holding "\" (unreachable by a volume path), symbolic links leading
//   out of the folder or nowhere, and entries that are neither folders nor
//   regular files are left out; at most 65535 records. The date fields are
//   the modification time in the process's local time zone (TZ). The entry
//   word is the low 32 bits of the host inode number (stable per file). The
//   "." record describes the directory itself and ".." its parent; both have
//   size 0. An empty directory gives a null array with count 0.
// - Handles: 1..0x7FFF, handed out in turn (a closed number is not reused at
//   once); at most kMaxOpenHandles open at a time, beyond that OpenDirectory
//   gives 0. A file handle keeps the host file open; a directory handle is
//   read afresh by each ReadDirectory.
// - GetFileInfo (handle, or handle | 0x8000 for the same open object) fills
//   Size, TimeStamp ((Unix seconds << 8) | sub-second in 1/256 s), EntryWord
//   and IsDirectory; it writes the first 40 bytes of the record only, the
//   rest is left as it was.
// - ReadFile refuses files over kMaxReadFile bytes; a 0-byte file gives a
//   1-byte pool block and size 0.
// - CreateDirectory: Mode 1 makes a folder, Mode 0 an empty file; the name
//   must not exist, its parent must, and it must fit 191 bytes.
// - RenamePath: the new name is bare (no "\" or "/"), not empty, not "." or
//   "..", at most 191 bytes, and not an existing entry of the folder.
// - Write-protected volumes (flags bit 7) refuse CreateDirectory and
//   RenamePath. FlushVolume only counts its calls.
// - The resource file: ReadResourceString's File is a path in the system
//   folder (confined like a volume path); the format is in resource_file.h.
//   A missing file, section or key gives FALSE and leaves the buffer as it
//   was; values are cut to 255 bytes.
// - The table operations reach the driver object constructed last that is
//   still alive (one environment at a time).
#pragma once

#include <memory>
#include <string>

#include "env/environment.h"
#include "services/file_driver.h"

namespace env {

constexpr size_t kMaxOpenHandles = 512;
constexpr uint64_t kMaxReadFile = 256ull << 20;
constexpr size_t kMaxEntryName = 191;

class FileDriver {
 public:
  FileDriver (Firmware &Fw, const std::string &SystemDir, uint32_t Version);
  ~FileDriver ();
  FileDriver (const FileDriver &) = delete;
  FileDriver &operator= (const FileDriver &) = delete;
  FILE_DRIVER_PROTOCOL *Table ();

  int Mount (const VolumeSpec &Spec);       // next free slot, or -1
  bool Unmount (int Volume);
  std::string HostPath (int Volume) const;  // the folder behind a volume, empty when none
  const std::string &SystemDir () const;

  // Siblings found through LocateService.
  void RegisterService (const EFI_GUID &Guid, VOID *Table);
  void UnregisterService (const EFI_GUID &Guid);

  // For tests and the other siblings.
  unsigned FlushCount (int Volume) const;
  size_t OpenHandleCount () const;
  // What the listings of a volume left out since it was mounted, summed by
  // reason (FolderUnreadable counts folders); Listed is not summed.
  LISTING_NOTES LeftOutTotals (int Volume) const;
  bool WriteProtected (int Volume) const;   // false for a volume not mounted
  // The confined host path of a volume path, empty when refused or no volume.
  std::string ResolvePath (int Volume, const char *Path) const;

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
