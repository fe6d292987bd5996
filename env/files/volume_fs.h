// The file system behind one volume, as the portable file and jobio drivers
// use it: open objects (directories and files) that further work goes through,
// so that an operation keeps acting on what it opened even when the path it
// came by changes meanwhile. The host backs a volume with a folder (every
// component opened beneath the folder's own handle, never following a link
// out of it); firmware backs it with a Simple File System volume.
//
// Names are the volume's 8-bit names (what the driver shows and sends): a
// name is one component, never "." or "..", never holding "\" or "/".
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace env {

enum class NodeKind : uint8_t { File, Directory };

struct NodeTime {
  uint16_t Year = 0;
  uint8_t Month = 0, Day = 0, Hour = 0, Minute = 0, Second = 0;
};

struct NodeInfo {
  NodeKind Kind = NodeKind::File;
  // The entry is a symbolic link. A link the volume can follow (it stays on
  // the volume) shows what it leads to; one it cannot follow (leading out of
  // the volume, or nowhere) shows as a small file whose contents are the
  // link's target, so that a link and its copy look the same anywhere.
  bool Link = false;
  uint64_t Size = 0;              // 0 for directories
  NodeTime Modified;              // calendar time as the volume shows it
  int64_t Seconds = 0;            // modification time: seconds since 1970 and the nanoseconds
  uint32_t Nanoseconds = 0;
  uint64_t TimeStamp = 0;         // (Seconds << 8) | 1/256 s
  uint32_t EntryWord = 0;         // a number that stays with the entry on its volume
  uint64_t Identity = 0;          // tells entries apart at one moment (0: unknown)
  bool ReadOnly = false;
};

// What List could not return, by reason.
struct ListGaps {
  uint32_t NameTooLong = 0;       // longer than the 191 bytes a directory record holds
  uint32_t NameUnusable = 0;      // holding "\" or a character the volume's names cannot carry
  uint32_t Unreadable = 0;        // details could not be read (I/O error, device, pipe)
};

struct ListedEntry {
  std::string Name;
  NodeInfo Info;
};

constexpr size_t kMaxEntryName = 191;

class FsNode {
 public:
  virtual ~FsNode () = default;

  // The open object itself.
  virtual bool Describe (NodeInfo &Out) = 0;

  // ---- directories
  // An entry of this directory, opened for reading; links are followed only
  // when they stay on the volume (one that does not is opened as a file of
  // its target text). Null when there is no such entry or it cannot be
  // opened. Info, when given, receives the object's description as opened.
  // Hint is how the entry looked in a listing made a moment ago; the volume
  // may take it for the description instead of asking again.
  virtual std::unique_ptr<FsNode> Open (const std::string &Name, NodeInfo *Info = nullptr,
                                        const NodeInfo *Hint = nullptr) = 0;
  // Every entry but "." and "..", in the order the volume keeps them.
  virtual bool List (std::vector<ListedEntry> &Out, ListGaps &Gaps) = 0;
  // A new entry; fails when the name exists (never opens or replaces one).
  virtual std::unique_ptr<FsNode> Create (const std::string &Name, NodeKind Kind) = 0;
  // Gives the entry From the name To; fails when To exists.
  virtual bool Rename (const std::string &From, const std::string &To) = 0;
  // Removes the entry Name if it is still the object described by Expected
  // (its kind and, when known, its identity), checked at the moment of
  // removal; a directory must be empty.
  virtual bool Remove (const std::string &Name, const NodeInfo &Expected) = 0;
  // The target text of the link Name (false when it is no link).
  virtual bool ReadLink (const std::string &Name, std::string &Target) = 0;
  // Makes the link Name with the given target (volumes without links write
  // the target text as a file instead).
  virtual bool MakeLink (const std::string &Name, const std::string &Target) = 0;

  // ---- files (and links: their target text)
  // Bytes read at Offset; fewer at the end of the file, 0 on failure.
  virtual uint32_t ReadAt (uint64_t Offset, void *Buffer, uint32_t Length) = 0;
  // Appends to a file made by Create.
  virtual bool Write (const void *Data, size_t Length) = 0;
  // Gives the object the modification time of Source (Seconds and
  // Nanoseconds) and writes everything to the medium.
  virtual bool Finish (const NodeInfo &Source) = 0;
};

class VolumeFs {
 public:
  virtual ~VolumeFs () = default;
  // The volume's root directory, or null when it can no longer be reached.
  virtual std::unique_ptr<FsNode> OpenRoot () = 0;
  // Writes every pending change to the medium.
  virtual void Flush () = 0;
  // Whether the directory opened earlier by the path of Path components is
  // still the one that path names (a cheap check before reusing it).
  virtual bool StillAt (FsNode &Directory, const std::vector<std::string> &Path) = 0;
  // Tag of this program run for temporary names, and whether a run that
  // left a temporary name behind has ended (its leftovers may be removed).
  virtual std::string RunTag () const = 0;
  virtual bool RunEnded (const std::string &Tag) const = 0;
};

}  // namespace env
