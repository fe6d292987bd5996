// The file driver: volumes, directory listings, file handles, the
// resource-string file and the service registry, over the file system behind
// each volume (volume_fs.h).
//
// Behaviour chosen for this driver (the driver under test relies only on the
// table's documented results):
// - Volumes: 24 slots. Mount takes the next free slot (or a given one) and
//   fills its record: InUse 1, Offered 1, Kind, Flags, FileSystemType, Label
//   (cut to 123 bytes). Unmount clears the record and closes every handle of
//   that volume.
// - Paths: see volume_path.h. Every path is walked from the volume's root one
//   component at a time through opened directories; a directory reached by a
//   path is reused for the next path below it while it is still the one that
//   path names.
// - Listings: "." and ".." first in every directory but the root, then the
//   folders, then the files, each group by name (ASCII letters compared
//   without case, then byte by byte). At most 65535 records. What a listing
//   leaves out (names too long, names no path can reach, entries that cannot
//   be read, records beyond 65535) is counted in the handle's listing notes
//   and in the volume's totals. The "." record describes the directory
//   itself and ".." its parent; both have size 0. An empty directory gives a
//   null array with count 0.
// - Handles: 1..0x7FFF, handed out in turn (a closed number is not reused at
//   once); at most kMaxOpenHandles open at a time, beyond that OpenDirectory
//   gives 0. A handle keeps the object it opened, whatever happens to its
//   path later.
// - GetFileInfo (handle, or handle | 0x8000 for the same open object) fills
//   Size, TimeStamp ((Unix seconds << 8) | sub-second in 1/256 s), EntryWord
//   and IsDirectory; it writes the first 40 bytes of the record only.
// - ReadFile refuses files over kMaxReadFile bytes; a 0-byte file gives a
//   1-byte pool block and size 0.
// - CreateDirectory: Mode 1 makes a folder, Mode 0 an empty file; the name
//   must not exist, its parent must, and it must fit 191 bytes.
// - RenamePath: the new name is bare (no "\" or "/"), not empty, not "." or
//   "..", at most 191 bytes, and not an existing entry of the folder.
// - Names on volumes of a FAT file-system type (1 "FAT32", 5) are compared
//   without ASCII case, as FAT does: CreateDirectory and RenamePath refuse a
//   name that differs only in case from another entry.
// - Write-protected volumes (flags bit 7) refuse CreateDirectory and
//   RenamePath. FlushVolume writes the volume's pending changes and counts.
// - The resource file: ReadResourceString's File is a path on the system
//   volume (where \efi\kivora\... lives); the format is in resource_file.h.
//   The file is read again when it changed. A missing file, section or key
//   gives FALSE and leaves the buffer as it was; values are cut to 255 bytes.
// - The table operations reach the driver object constructed last that is
//   still alive (one environment at a time).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "env/files/volume_fs.h"
#include "services/file_driver.h"

namespace env {

constexpr size_t kMaxOpenHandles = 512;
constexpr uint64_t kMaxReadFile = 256ull << 20;
constexpr uint8_t kFileSystemFat32 = 1;
constexpr uint8_t kFileSystemKeldarFat = 5;

// What a volume record says about a volume.
struct VolumeRecordSpec {
  std::string Label;
  uint8_t Flags = 0;           // bit 7 write-protected; 0x81 / 0x82 comparison volumes
  uint8_t Kind = 0;
  uint8_t FileSystemType = kFileSystemFat32;
};

class FileDriver {
 public:
  // System: the volume holding \efi\kivora\... (may be null: no resources).
  FileDriver (std::unique_ptr<VolumeFs> System, uint32_t Version);
  ~FileDriver ();
  FileDriver (const FileDriver &) = delete;
  FileDriver &operator= (const FileDriver &) = delete;
  FILE_DRIVER_PROTOCOL *Table ();

  // Mounts a file system in the next free slot (Slot -1) or the given one;
  // returns the volume number or -1.
  int Mount (std::unique_ptr<VolumeFs> Fs, const VolumeRecordSpec &Spec, int Slot = -1);
  bool Unmount (int Volume);
  bool Mounted (int Volume) const;

  // Siblings found through LocateService.
  void RegisterService (const EFI_GUID &Guid, VOID *Table);
  void UnregisterService (const EFI_GUID &Guid);

  // For the other siblings, tests and tools.
  unsigned FlushCount (int Volume) const;
  size_t OpenHandleCount () const;
  bool WriteProtected (int Volume) const;   // false for a volume not mounted
  bool CaseInsensitive (int Volume) const;  // a FAT file-system type
  VolumeFs *Volume (int Volume);
  // What the listings of a volume left out since it was mounted, summed by
  // reason (FolderUnreadable counts folders); Listed is not summed.
  LISTING_NOTES LeftOutTotals (int Volume) const;

  // The object a volume path names (with its description), or null.
  std::shared_ptr<FsNode> OpenPath (int Volume, const char *Path, NodeInfo *Info = nullptr);
  // The directory holding the last component of Path, and that component;
  // null for the root or a refused path.
  std::shared_ptr<FsNode> OpenParent (int Volume, const char *Path, std::string &Name,
                                      std::vector<std::string> *Components = nullptr);
  // How the entry Name of a directory looked in that directory's latest
  // listing; false when it was not listed.
  bool ListedInfo (int Volume, const std::vector<std::string> &Directory, const std::string &Name,
                    NodeInfo &Info) const;
  // Drops what the driver remembers of a volume's directories (after changes).
  void Forget (int Volume);

  // Whole files, for the siblings (icons): from the system volume, or a volume.
  bool ReadSystemFile (const char *Path, std::vector<uint8_t> &Bytes, size_t Limit);
  bool ReadVolumeFile (int Volume, const char *Path, std::vector<uint8_t> &Bytes, size_t Limit);

  struct State;

 private:
  std::unique_ptr<State> State_;
};

// Whole contents of an open file, at most Limit bytes; false when larger or
// unreadable.
bool ReadWhole (FsNode &File, std::vector<uint8_t> &Bytes, size_t Limit);

// Names the way a volume compares them: without ASCII case on FAT volumes.
bool SameEntryName (const std::string &A, const std::string &B, bool CaseInsensitive);

}  // namespace env
