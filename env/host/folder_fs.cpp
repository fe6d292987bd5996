#include "env/host/folder_fs.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace env {

namespace {

FolderFsHook gHook = nullptr;
void *gHookContext = nullptr;

void CallHook (const std::string &Name) {
  if (gHook != nullptr) gHook (Name, gHookContext);
}

constexpr int kMaxLinkHops = 40;

// Closes a descriptor when it goes out of scope unless released.
struct Fd {
  int Value = -1;
  explicit Fd (int V = -1) : Value (V) {}
  Fd (const Fd &) = delete;
  Fd &operator= (const Fd &) = delete;
  Fd (Fd &&Other) noexcept : Value (Other.Value) { Other.Value = -1; }
  Fd &operator= (Fd &&Other) noexcept {
    if (this != &Other) {
      if (Value >= 0) ::close (Value);
      Value = Other.Release ();
    }
    return *this;
  }
  ~Fd () {
    if (Value >= 0) ::close (Value);
  }
  int Release () {
    int V = Value;
    Value = -1;
    return V;
  }
};

bool ValidName (const std::string &Name) {
  return !Name.empty () && Name != "." && Name != ".." && Name.find ('/') == std::string::npos &&
         Name.find ('\0') == std::string::npos;
}

uint64_t IdentityOf (const struct stat &St) {
  return (static_cast<uint64_t> (St.st_dev) << 40) ^ static_cast<uint64_t> (St.st_ino);
}

void FillInfo (NodeInfo &Info, const struct stat &Target, const struct stat &Entry) {
  Info.Kind = S_ISDIR (Target.st_mode) ? NodeKind::Directory : NodeKind::File;
  Info.Link = S_ISLNK (Entry.st_mode);
  Info.Size = S_ISDIR (Target.st_mode) ? 0 : static_cast<uint64_t> (Target.st_size);
  Info.Seconds = Target.st_mtim.tv_sec;
  Info.Nanoseconds = static_cast<uint32_t> (Target.st_mtim.tv_nsec);
  Info.TimeStamp = (static_cast<uint64_t> (Target.st_mtim.tv_sec) << 8) |
                   (static_cast<uint64_t> (Target.st_mtim.tv_nsec) * 256 / 1000000000ull);
  time_t When = Target.st_mtim.tv_sec;
  struct tm Local {};
  if (localtime_r (&When, &Local) != nullptr) {
    Info.Modified.Year = static_cast<uint16_t> (Local.tm_year + 1900);
    Info.Modified.Month = static_cast<uint8_t> (Local.tm_mon + 1);
    Info.Modified.Day = static_cast<uint8_t> (Local.tm_mday);
    Info.Modified.Hour = static_cast<uint8_t> (Local.tm_hour);
    Info.Modified.Minute = static_cast<uint8_t> (Local.tm_min);
    Info.Modified.Second = static_cast<uint8_t> (Local.tm_sec);
  }
  Info.EntryWord = static_cast<uint32_t> (Target.st_ino);
  Info.Identity = IdentityOf (Entry);
  Info.ReadOnly = false;
}

// A link shown as a file: its own time, its target text as contents.
void FillLinkInfo (NodeInfo &Info, const struct stat &Entry, size_t TargetLength) {
  FillInfo (Info, Entry, Entry);
  Info.Kind = NodeKind::File;
  Info.Size = TargetLength;
}

int64_t MonotonicNs () {
  struct timespec Now;
  clock_gettime (CLOCK_MONOTONIC_COARSE, &Now);
  return int64_t (Now.tv_sec) * 1000000000 + Now.tv_nsec;
}

bool ReadLinkAt (int Dir, const std::string &Name, std::string &Target) {
  char Buffer[4096];
  ssize_t N = ::readlinkat (Dir, Name.c_str (), Buffer, sizeof Buffer);
  if (N < 0 || static_cast<size_t> (N) >= sizeof Buffer) return false;
  Target.assign (Buffer, static_cast<size_t> (N));
  return true;
}

class FolderVolume;

// An open directory, file, or link shown as a file.
class FolderNode : public FsNode {
 public:
  FolderNode (const FolderVolume &Volume, int Descriptor, std::vector<std::string> Path, bool Writable)
      : Volume_ (Volume), Fd_ (Descriptor), Path_ (std::move (Path)), Writable_ (Writable) {}
  // A link that cannot be followed: its target text is its contents.
  FolderNode (const FolderVolume &Volume, const NodeInfo &LinkInfo, std::string Target)
      : Volume_ (Volume), Path_ (), LinkInfo_ (LinkInfo), LinkTarget_ (std::move (Target)), IsLink_ (true) {}

  bool Describe (NodeInfo &Out) override {
    if (IsLink_) {
      Out = LinkInfo_;
      return true;
    }
    struct stat St;
    if (::fstat (Fd_.Value, &St) != 0) return false;
    FillInfo (Out, St, St);
    return true;
  }

  std::unique_ptr<FsNode> Open (const std::string &Name, NodeInfo *Info = nullptr,
                                const NodeInfo *Hint = nullptr) override;
  bool List (std::vector<ListedEntry> &Out, ListGaps &Gaps) override;
  std::unique_ptr<FsNode> Create (const std::string &Name, NodeKind Kind) override;
  bool Rename (const std::string &From, const std::string &To) override;
  bool Remove (const std::string &Name, const NodeInfo &Expected) override;
  bool ReadLink (const std::string &Name, std::string &Target) override {
    return IsDirectory () && ValidName (Name) && ReadLinkAt (Fd_.Value, Name, Target);
  }
  bool MakeLink (const std::string &Name, const std::string &Target) override {
    CallHook (Name);
    return IsDirectory () && ValidName (Name) && !Target.empty () &&
           ::symlinkat (Target.c_str (), Fd_.Value, Name.c_str ()) == 0;
  }

  uint32_t ReadAt (uint64_t Offset, void *Buffer, uint32_t Length) override {
    if (IsLink_) {
      if (Offset >= LinkTarget_.size ()) return 0;
      size_t N = std::min<size_t> (Length, LinkTarget_.size () - Offset);
      std::memcpy (Buffer, LinkTarget_.data () + Offset, N);
      return static_cast<uint32_t> (N);
    }
    if (Offset > static_cast<uint64_t> (INT64_MAX)) return 0;
    uint32_t Done = 0;
    while (Done < Length) {
      ssize_t Got = ::pread (Fd_.Value, static_cast<uint8_t *> (Buffer) + Done, Length - Done,
                             static_cast<off_t> (Offset + Done));
      if (Got < 0 && errno == EINTR) continue;
      if (Got <= 0) break;
      Done += static_cast<uint32_t> (Got);
    }
    return Done;
  }

  bool Write (const void *Data, size_t Length) override {
    if (!Writable_) return false;
    const auto *Bytes = static_cast<const uint8_t *> (Data);
    while (Length > 0) {
      ssize_t N = ::write (Fd_.Value, Bytes, Length);
      if (N < 0 && errno == EINTR) continue;
      if (N <= 0) return false;
      Bytes += N, Length -= static_cast<size_t> (N);
    }
    return true;
  }

  bool Finish (const NodeInfo &Source) override {
    if (IsLink_) return false;
    struct timespec Times[2];
    Times[0].tv_sec = Times[1].tv_sec = static_cast<time_t> (Source.Seconds);
    Times[0].tv_nsec = Times[1].tv_nsec = Source.Nanoseconds;
    if (::futimens (Fd_.Value, Times) != 0) return false;
    return ::fsync (Fd_.Value) == 0 || errno == EINVAL;
  }

  int Descriptor () const { return Fd_.Value; }
  // What the node was opened as (StillAt compares a path's object with it).
  void OpenedAs (const struct stat &St) {
    Device_ = St.st_dev, Inode_ = St.st_ino;
    Seen (MonotonicNs ());
  }
  // When the node was last known to be at its path.
  void Seen (int64_t Ns) { SeenAt_ = Ns; }
  int64_t SeenAt () const { return SeenAt_; }
  bool Is (const struct stat &St) const { return Inode_ != 0 && St.st_dev == Device_ && St.st_ino == Inode_; }

 private:
  bool IsDirectory () const {
    struct stat St;
    return !IsLink_ && ::fstat (Fd_.Value, &St) == 0 && S_ISDIR (St.st_mode);
  }
  // Opens the entry Name of this directory; follows a link only when it
  // resolves beneath the volume. Entry receives the entry's own stat.
  std::unique_ptr<FsNode> OpenEntry (const std::string &Name, struct stat &Entry, struct stat &Target);
  std::unique_ptr<FsNode> CreateEntry (const std::string &Name, NodeKind Kind);

  const FolderVolume &Volume_;
  Fd Fd_;
  bool Listed_ = false;             // Fd_ has read entries: the next listing starts over
  std::vector<std::string> Path_;   // components from the volume's root (for resolving links)
  bool Writable_ = false;
  NodeInfo LinkInfo_;
  std::string LinkTarget_;
  bool IsLink_ = false;
  dev_t Device_ = 0;
  ino_t Inode_ = 0;
  int64_t SeenAt_ = INT64_MIN / 2;
};

class FolderVolume : public VolumeFs {
 public:
  explicit FolderVolume (int Root) : Root_ (Root) {}

  std::unique_ptr<FsNode> OpenRoot () override {
    int Copy = ::openat (Root_.Value, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (Copy < 0) return nullptr;
    return std::make_unique<FolderNode> (*this, Copy, std::vector<std::string> {}, false);
  }
  void Flush () override { ::syncfs (Root_.Value); }
  // A path is looked at again once its directory has not been seen there
  // for kRecheckNs: a rename in the meantime is no different from one that
  // came a moment later, and a walk through many files of one folder costs
  // no extra call.
  bool StillAt (FsNode &Directory, const std::vector<std::string> &Path) override {
    auto &Node = static_cast<FolderNode &> (Directory);
    int64_t Now = MonotonicNs ();
    if (Now - Node.SeenAt () < kRecheckNs) return true;
    std::string Relative = ".";
    for (const std::string &Part : Path) Relative += "/" + Part;
    struct stat There;
    bool Same = ::fstatat (Root_.Value, Relative.c_str (), &There, AT_SYMLINK_NOFOLLOW) == 0 && Node.Is (There);
    if (Same) Node.Seen (Now);
    return Same;
  }
  std::string RunTag () const override { return std::to_string (static_cast<long> (::getpid ())); }
  bool RunEnded (const std::string &Tag) const override {
    if (Tag.empty () || Tag.size () > 9 || Tag.find_first_not_of ("0123456789") != std::string::npos) return false;
    long Pid = std::stol (Tag);
    if (Pid <= 0 || Pid == static_cast<long> (::getpid ())) return false;
    return ::kill (static_cast<pid_t> (Pid), 0) != 0 && errno == ESRCH;
  }

  // Opens Path (components beneath the root, links inside it followed up to
  // kMaxLinkHops times) and returns the descriptor, or -1. Path is changed
  // to the resolved components.
  int OpenBeneath (std::vector<std::string> &Path) const {
    std::vector<std::string> Pending (Path.rbegin (), Path.rend ());
    std::vector<std::string> Done;
    Fd Current (::openat (Root_.Value, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    int Hops = 0;
    while (Current.Value >= 0 && !Pending.empty ()) {
      std::string Part = std::move (Pending.back ());
      Pending.pop_back ();
      if (Part.empty () || Part == ".") continue;
      if (Part == "..") {
        if (Done.empty ()) return -1;   // above the volume
        Done.pop_back ();
        std::vector<std::string> Again = Done;
        Done.clear ();
        for (auto It = Again.rbegin (); It != Again.rend (); ++It) Pending.push_back (*It);
        Current = Fd (::openat (Root_.Value, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        continue;
      }
      struct stat St;
      if (::fstatat (Current.Value, Part.c_str (), &St, AT_SYMLINK_NOFOLLOW) != 0) return -1;
      if (S_ISLNK (St.st_mode)) {
        std::string Target;
        if (++Hops > kMaxLinkHops || !ReadLinkAt (Current.Value, Part, Target) || Target.empty () ||
            Target[0] == '/')
          return -1;
        // The target's components replace the link, relative to its folder.
        std::vector<std::string> Parts;
        size_t Start = 0;
        while (Start <= Target.size ()) {
          size_t End = Target.find ('/', Start);
          if (End == std::string::npos) End = Target.size ();
          Parts.push_back (Target.substr (Start, End - Start));
          Start = End + 1;
        }
        for (auto It = Parts.rbegin (); It != Parts.rend (); ++It) Pending.push_back (*It);
        continue;
      }
      Current = Fd (::openat (Current.Value, Part.c_str (), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
      if (Current.Value < 0) return -1;
      Done.push_back (std::move (Part));
      if (!Pending.empty ()) {
        struct stat Opened;
        if (::fstat (Current.Value, &Opened) != 0 || !S_ISDIR (Opened.st_mode)) return -1;
      }
    }
    Path = std::move (Done);
    return Current.Release ();
  }

 private:
  static constexpr int64_t kRecheckNs = 10 * 1000000;
  Fd Root_;
};

std::unique_ptr<FsNode> FolderNode::OpenEntry (const std::string &Name, struct stat &Entry, struct stat &Target) {
  if (IsLink_ || !ValidName (Name)) return nullptr;
  std::vector<std::string> Path = Path_;
  Path.push_back (Name);
  // The entry itself, never through a link (O_NOFOLLOW fails on one).
  int Opened = ::openat (Fd_.Value, Name.c_str (), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
  bool ViaLink = Opened < 0;
  if (ViaLink) {
    if (errno != ELOOP || ::fstatat (Fd_.Value, Name.c_str (), &Entry, AT_SYMLINK_NOFOLLOW) != 0 ||
        !S_ISLNK (Entry.st_mode))
      return nullptr;
    Opened = Volume_.OpenBeneath (Path);
    if (Opened < 0) {
      // Not followable: the link itself, shown as a file of its target text.
      std::string LinkText;
      if (!ReadLinkAt (Fd_.Value, Name, LinkText)) return nullptr;
      NodeInfo Info;
      FillLinkInfo (Info, Entry, LinkText.size ());
      Target = Entry;
      return std::make_unique<FolderNode> (Volume_, Info, std::move (LinkText));
    }
  }
  Fd Guard (Opened);
  if (::fstat (Opened, &Target) != 0 || (!S_ISREG (Target.st_mode) && !S_ISDIR (Target.st_mode))) return nullptr;
  if (!ViaLink) Entry = Target;
  auto Node = std::make_unique<FolderNode> (Volume_, Guard.Release (), std::move (Path), false);
  Node->OpenedAs (Target);
  return Node;
}

std::unique_ptr<FsNode> FolderNode::Open (const std::string &Name, NodeInfo *Info, const NodeInfo *Hint) {
  CallHook (Name);
  // A plain file just listed: its entry is opened and its listing believed.
  if (Hint != nullptr && !Hint->Link && Hint->Kind == NodeKind::File && Info != nullptr && ValidName (Name) &&
      !IsLink_) {
    int Opened = ::openat (Fd_.Value, Name.c_str (), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (Opened >= 0) {
      *Info = *Hint;
      // A file resolves no links of its own: it needs no path.
      return std::make_unique<FolderNode> (Volume_, Opened, std::vector<std::string> {}, false);
    }
  }
  struct stat Entry, Target;
  std::unique_ptr<FsNode> Node = OpenEntry (Name, Entry, Target);
  if (Node && Info != nullptr) {
    if (S_ISLNK (Entry.st_mode) && S_ISLNK (Target.st_mode))
      Node->Describe (*Info);   // a link shown as its target text
    else
      FillInfo (*Info, Target, Entry);
  }
  return Node;
}

bool FolderNode::List (std::vector<ListedEntry> &Out, ListGaps &Gaps) {
  Out.clear ();
  struct stat Self;
  // A folder removed since it was opened has nothing left to list.
  if (IsLink_ || ::fstat (Fd_.Value, &Self) != 0 || !S_ISDIR (Self.st_mode) || Self.st_nlink == 0) return false;
  // The directory's own descriptor reads its entries, from the start each
  // time (a DIR stream would cost three more calls per folder).
  if (Listed_ && ::lseek (Fd_.Value, 0, SEEK_SET) != 0) return false;
  Listed_ = true;
  alignas (8) char Buffer[32768];
  ssize_t Filled = 0, Offset = 0;
  bool Ok = true;
  for (;;) {
    if (Offset >= Filled) {
      Filled = ::getdents64 (Fd_.Value, Buffer, sizeof Buffer);
      Offset = 0;
      if (Filled < 0 && errno == EINTR) continue;
      if (Filled <= 0) {
        Ok = Filled == 0;
        break;
      }
    }
    const auto *Item = reinterpret_cast<const struct dirent64 *> (Buffer + Offset);
    Offset += Item->d_reclen;
    std::string Name = Item->d_name;
    if (Name == "." || Name == "..") continue;
    if (Name.size () > kMaxEntryName) {
      Gaps.NameTooLong++;
      continue;
    }
    if (Name.find ('\\') != std::string::npos) {
      Gaps.NameUnusable++;
      continue;
    }
    ListedEntry Entry;
    Entry.Name = std::move (Name);
    struct stat Own;
    if (::fstatat (Fd_.Value, Entry.Name.c_str (), &Own, AT_SYMLINK_NOFOLLOW) != 0) {
      Gaps.Unreadable++;
      continue;
    }
    if (S_ISREG (Own.st_mode) || S_ISDIR (Own.st_mode)) {
      FillInfo (Entry.Info, Own, Own);
    } else if (S_ISLNK (Own.st_mode)) {
      std::vector<std::string> Path = Path_;
      Path.push_back (Entry.Name);
      Fd Target (Volume_.OpenBeneath (Path));
      struct stat St;
      if (Target.Value >= 0 && ::fstat (Target.Value, &St) == 0 && (S_ISREG (St.st_mode) || S_ISDIR (St.st_mode))) {
        FillInfo (Entry.Info, St, Own);
      } else {
        std::string LinkText;
        if (!ReadLinkAt (Fd_.Value, Entry.Name, LinkText)) {
          Gaps.Unreadable++;
          continue;
        }
        FillLinkInfo (Entry.Info, Own, LinkText.size ());
      }
    } else {
      Gaps.Unreadable++;
      continue;
    }
    Out.push_back (std::move (Entry));
  }
  return Ok;
}

std::unique_ptr<FsNode> FolderNode::Create (const std::string &Name, NodeKind Kind) {
  if (!IsDirectory () || !ValidName (Name)) return nullptr;
  std::unique_ptr<FsNode> Made = CreateEntry (Name, Kind);
  if (Made) CallHook (Name);
  return Made;
}

std::unique_ptr<FsNode> FolderNode::CreateEntry (const std::string &Name, NodeKind Kind) {
  std::vector<std::string> Path = Path_;
  Path.push_back (Name);
  if (Kind == NodeKind::Directory) {
    if (::mkdirat (Fd_.Value, Name.c_str (), 0777) != 0) return nullptr;
    int Opened = ::openat (Fd_.Value, Name.c_str (), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (Opened < 0) return nullptr;
    return std::make_unique<FolderNode> (Volume_, Opened, std::move (Path), false);
  }
  int Opened = ::openat (Fd_.Value, Name.c_str (), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
  if (Opened < 0) return nullptr;
  return std::make_unique<FolderNode> (Volume_, Opened, std::move (Path), true);
}

bool FolderNode::Rename (const std::string &From, const std::string &To) {
  if (!IsDirectory () || !ValidName (From) || !ValidName (To)) return false;
  if (::renameat2 (Fd_.Value, From.c_str (), Fd_.Value, To.c_str (), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // File systems without RENAME_NOREPLACE: check, then rename.
  struct stat St;
  if (::fstatat (Fd_.Value, To.c_str (), &St, AT_SYMLINK_NOFOLLOW) == 0) return false;
  return ::renameat (Fd_.Value, From.c_str (), Fd_.Value, To.c_str ()) == 0;
}

bool FolderNode::Remove (const std::string &Name, const NodeInfo &Expected) {
  CallHook (Name);
  if (!IsDirectory () || !ValidName (Name)) return false;
  struct stat St;
  if (::fstatat (Fd_.Value, Name.c_str (), &St, AT_SYMLINK_NOFOLLOW) != 0) return false;
  // The same entry: its kind, and its number when known (a number alone
  // could be one the file system just gave a new entry).
  if (S_ISLNK (St.st_mode) != Expected.Link ||
      (!Expected.Link && S_ISDIR (St.st_mode) != (Expected.Kind == NodeKind::Directory)) ||
      (Expected.Identity != 0 && IdentityOf (St) != Expected.Identity))
    return false;
  return ::unlinkat (Fd_.Value, Name.c_str (), S_ISDIR (St.st_mode) ? AT_REMOVEDIR : 0) == 0;
}

}  // namespace

std::unique_ptr<VolumeFs> OpenFolderVolume (const std::string &Folder) {
  int Root = ::open (Folder.c_str (), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (Root < 0) return nullptr;
  return std::make_unique<FolderVolume> (Root);
}

void SetFolderFsHook (FolderFsHook Hook, void *Context) {
  gHook = Hook;
  gHookContext = Context;
}

}  // namespace env
