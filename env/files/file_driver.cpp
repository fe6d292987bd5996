#include "env/files/file_driver.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <unordered_map>
#include <utility>

#include "env/ascii_case.h"
#include "env/files/resource_file.h"
#include "env/files/volume_path.h"
#include "env/pool.h"

namespace env {

namespace {

constexpr size_t kRememberedListings = 16;
constexpr size_t kMaxResourceFile = 16u << 20;

struct OpenObject {
  int Volume = -1;
  std::shared_ptr<FsNode> Node;
  std::vector<std::string> Path;   // components from the root
  bool Directory = false;
  NodeInfo Self;                   // as found when opened (the "." record)
  std::shared_ptr<FsNode> Above;   // directories: the one holding it (the ".." record)
  bool Listed = false;             // ReadDirectory ran: Notes describe its result
  LISTING_NOTES Notes {};
};

// The directories along the path walked last (Nodes[I] holds the
// directory of Path's first I + 1 components), kept so that the next walk
// starts at the deepest one the two paths share; and the volume's root,
// where every other walk starts.
struct DirectoryCache {
  std::vector<std::string> Path;
  std::vector<std::shared_ptr<FsNode>> Nodes;
  std::shared_ptr<FsNode> Root;

  void Clear () {
    Path.clear ();
    Nodes.clear ();
  }
  // Keeps only the first Length directories.
  void Keep (size_t Length) {
    Path.resize (std::min (Length, Path.size ()));
    Nodes.resize (Path.size ());
  }
};

// A directory's entries in the order ReadDirectory sorts them.
struct Listing {
  std::vector<std::string> Path;
  std::vector<ListedEntry> Entries;
};

struct MountedVolume {
  std::unique_ptr<VolumeFs> Fs;
  unsigned Flushes = 0;
  LISTING_NOTES LeftOut {};
  DirectoryCache Cache;
  std::vector<Listing> Listings;   // the latest listings, newest last
};

// By name without case, then byte by byte.
bool NameBefore (const std::string &X, const std::string &Y) {
  size_t N = std::min (X.size (), Y.size ());
  for (size_t I = 0; I < N; I++) {
    auto Cx = static_cast<unsigned char> (AsciiLower (X[I])), Cy = static_cast<unsigned char> (AsciiLower (Y[I]));
    if (Cx != Cy) return Cx < Cy;
  }
  if (X.size () != Y.size ()) return X.size () < Y.size ();
  return X < Y;
}

bool IsFolder (const ListedEntry &Entry) { return Entry.Info.Kind == NodeKind::Directory; }

// Folders first, then files; each by name.
bool ListedBefore (const ListedEntry &A, const ListedEntry &B) {
  if (IsFolder (A) != IsFolder (B)) return IsFolder (A);
  return NameBefore (A.Name, B.Name);
}

// Name among sorted entries of one kind, or null.
const NodeInfo *FindSorted (std::vector<ListedEntry>::const_iterator First,
                            std::vector<ListedEntry>::const_iterator Last, const std::string &Name) {
  auto It = std::lower_bound (First, Last, Name,
                              [] (const ListedEntry &E, const std::string &N) { return NameBefore (E.Name, N); });
  return It != Last && It->Name == Name ? &It->Info : nullptr;
}

void FillEntry (DIRECTORY_ENTRY &Entry, const std::string &Name, const NodeInfo &Info, bool Dots) {
  std::memset (&Entry, 0, sizeof (Entry));
  std::memcpy (Entry.Name, Name.data (), std::min (Name.size (), sizeof (Entry.Name) - 1));
  bool Directory = Info.Kind == NodeKind::Directory;
  Entry.Size = (Directory || Dots) ? 0 : Info.Size;
  Entry.Year = Info.Modified.Year;
  Entry.Month = Info.Modified.Month;
  Entry.Day = Info.Modified.Day;
  Entry.Hour = Info.Modified.Hour;
  Entry.Minute = Info.Modified.Minute;
  Entry.Second = Info.Modified.Second;
  Entry.IsDirectory = Directory ? 1 : 0;
  Entry.EntryWord = Info.EntryWord;
}

bool SameGuid (const EFI_GUID &A, const EFI_GUID &B) { return std::memcmp (&A, &B, sizeof (EFI_GUID)) == 0; }

bool BareName (const CHAR8 *Name) {
  if (Name == nullptr) return false;
  const char *Text = reinterpret_cast<const char *> (Name);
  size_t Length = 0;
  while (Length <= kMaxEntryName && Text[Length] != '\0') {
    if (Text[Length] == '\\' || Text[Length] == '/') return false;
    Length++;
  }
  if (Length == 0 || Length > kMaxEntryName) return false;
  return std::strcmp (Text, ".") != 0 && std::strcmp (Text, "..") != 0;
}

void AddNotes (LISTING_NOTES &Sum, const LISTING_NOTES &Notes) {
  Sum.NameTooLong += Notes.NameTooLong, Sum.NameUnusable += Notes.NameUnusable;
  Sum.Unreadable += Notes.Unreadable, Sum.OverLimit += Notes.OverLimit;
  Sum.FolderUnreadable += Notes.FolderUnreadable;
}

}  // namespace

bool SameEntryName (const std::string &A, const std::string &B, bool CaseInsensitive) {
  return CaseInsensitive ? EqualIgnoringAsciiCase (A, B) : A == B;
}

bool ReadWhole (FsNode &File, std::vector<uint8_t> &Bytes, size_t Limit) {
  NodeInfo Info;
  if (!File.Describe (Info) || Info.Kind != NodeKind::File || Info.Size > Limit) return false;
  Bytes.resize (static_cast<size_t> (Info.Size));
  size_t Done = 0;
  while (Done < Bytes.size ()) {
    uint32_t Chunk = static_cast<uint32_t> (std::min<size_t> (Bytes.size () - Done, 1u << 20));
    uint32_t Got = File.ReadAt (Done, Bytes.data () + Done, Chunk);
    if (Got == 0) break;
    Done += Got;
  }
  // A file that shrank meanwhile, or could not be read whole, is refused.
  return Done == Bytes.size ();
}

struct FileDriver::State {
  FileDriver *Owner = nullptr;
  State *Previous = nullptr;   // the driver that was current before this one
  FILE_DRIVER_PROTOCOL Table {};
  std::unique_ptr<VolumeFs> System;
  struct CachedResource {
    std::string Path;
    NodeInfo Info;
    std::string Text;
  } Resource;
  MountedVolume Volumes[VOLUME_COUNT];
  std::vector<std::pair<EFI_GUID, VOID *>> Services;
  std::unordered_map<uint16_t, OpenObject> Handles;
  uint16_t NextHandle = 1;

  bool ValidVolume (int Volume) const {
    return Volume >= 0 && Volume < VOLUME_COUNT && Table.Volumes[Volume].InUse != 0 && Volumes[Volume].Fs;
  }
  bool Protected (int Volume) const { return (Table.Volumes[Volume].Flags & VOLUME_FLAG_WRITE_PROTECTED) != 0; }
  bool Fat (int Volume) const {
    uint8_t Type = Table.Volumes[Volume].FileSystemType;
    return Type == kFileSystemFat32 || Type == kFileSystemKeldarFat;
  }

  OpenObject *Find (UINT16 Handle) {
    auto It = Handles.find (static_cast<uint16_t> (Handle & 0x7FFF));
    return It == Handles.end () ? nullptr : &It->second;
  }

  // Walks Components from the root of Fs (or from the deepest cached
  // directory above them). Info, when given, receives the description of
  // what it reached, and Above the directory holding it (the root for the
  // root). What the latest listing of the last directory says of the last
  // name spares the volume some work. Null when some component cannot be
  // opened.
  std::shared_ptr<FsNode> Walk (VolumeFs &Fs, DirectoryCache *Cache, const std::vector<Listing> *Listings,
                                const std::vector<std::string> &Components, NodeInfo *Info = nullptr,
                                std::shared_ptr<FsNode> *Above = nullptr) {
    size_t Start = 0;
    std::shared_ptr<FsNode> Node;
    if (Cache != nullptr) {
      size_t Shared = 0;
      while (Shared < Cache->Path.size () && Shared < Components.size () && Cache->Path[Shared] == Components[Shared])
        Shared++;
      Cache->Keep (Shared);
      if (Shared > 0 && !Fs.StillAt (*Cache->Nodes.back (), Cache->Path)) Cache->Clear ();
      if (!Cache->Root) Cache->Root = Fs.OpenRoot ();
      Start = Cache->Path.size ();
      Node = Start > 0 ? Cache->Nodes.back () : Cache->Root;
      if (Above != nullptr) *Above = Start > 1 ? Cache->Nodes[Start - 2] : Cache->Root;
    } else {
      Node = Fs.OpenRoot ();
      if (Above != nullptr) *Above = Node;
    }
    if (Node && Start == Components.size () && Info != nullptr && !Node->Describe (*Info)) return nullptr;
    for (size_t I = Start; Node && I < Components.size (); I++) {
      bool Last = I + 1 == Components.size ();
      const NodeInfo *Hint = Last && Listings != nullptr ? Listed (*Listings, Components, I, Components[I]) : nullptr;
      std::shared_ptr<FsNode> Next = Node->Open (Components[I], Last ? Info : nullptr, Hint);
      // Every directory on the way, and the last one reached, is kept for
      // the next walk below it.
      if (Next && Cache != nullptr && (!Last || (Info != nullptr && Info->Kind == NodeKind::Directory))) {
        Cache->Path.push_back (Components[I]);
        Cache->Nodes.push_back (Next);
      }
      if (Above != nullptr) *Above = Node;
      Node = std::move (Next);
    }
    return Node;
  }

  std::shared_ptr<FsNode> OpenOnVolume (int Volume, const std::vector<std::string> &Components, NodeInfo *Info = nullptr,
                                        std::shared_ptr<FsNode> *Above = nullptr) {
    MountedVolume &V = Volumes[Volume];
    return Walk (*V.Fs, &V.Cache, &V.Listings, Components, Info, Above);
  }

  void Remember (int Volume, const std::vector<std::string> &Path, std::vector<ListedEntry> &&Entries) {
    auto &List = Volumes[Volume].Listings;
    List.erase (std::remove_if (List.begin (), List.end (), [&] (const Listing &L) { return L.Path == Path; }),
                List.end ());
    if (List.size () >= kRememberedListings) List.erase (List.begin ());
    List.push_back (Listing {Path, std::move (Entries)});
  }

  // How Name looked in the latest listing of the directory Path, or null.
  static const NodeInfo *Listed (const std::vector<Listing> &Listings, const std::vector<std::string> &Path,
                                 size_t PathLength, const std::string &Name) {
    for (auto L = Listings.rbegin (); L != Listings.rend (); ++L) {
      if (L->Path.size () != PathLength || !std::equal (L->Path.begin (), L->Path.end (), Path.begin ())) continue;
      auto Files = std::partition_point (L->Entries.begin (), L->Entries.end (), IsFolder);
      const NodeInfo *Found = FindSorted (L->Entries.begin (), Files, Name);
      return Found != nullptr ? Found : FindSorted (Files, L->Entries.end (), Name);
    }
    return nullptr;
  }

  // The description of Name in a listing of Directory made now; false when
  // the name is not there (compared as the volume compares names).
  bool FindNow (int Volume, FsNode &Directory, const std::string &Name, std::string *Found = nullptr) {
    std::vector<ListedEntry> Entries;
    ListGaps Gaps;
    if (!Directory.List (Entries, Gaps)) return false;
    for (const ListedEntry &E : Entries)
      if (SameEntryName (E.Name, Name, Fat (Volume))) {
        if (Found != nullptr) *Found = E.Name;
        return true;
      }
    return false;
  }

  bool ReadResource (const char *File, std::string &Text) {
    std::vector<std::string> Components;
    if (!System || !SplitVolumePath (File, Components) || Components.empty ()) return false;
    NodeInfo Info;
    std::shared_ptr<FsNode> Node = Walk (*System, nullptr, nullptr, Components, &Info);
    if (!Node || Info.Kind != NodeKind::File) return false;
    if (Resource.Path == File && Resource.Info.Identity == Info.Identity && Resource.Info.Size == Info.Size &&
        Resource.Info.TimeStamp == Info.TimeStamp) {
      Text = Resource.Text;
      return true;
    }
    std::vector<uint8_t> Bytes;
    if (!ReadWhole (*Node, Bytes, kMaxResourceFile)) return false;
    Resource = CachedResource {File, Info, std::string (Bytes.begin (), Bytes.end ())};
    Text = Resource.Text;
    return true;
  }
};

namespace {

FileDriver::State *Current = nullptr;

VOID *EFIAPI LocateService (const EFI_GUID *Identifier) {
  if (Current == nullptr || Identifier == nullptr) return nullptr;
  for (auto &Entry : Current->Services)
    if (SameGuid (Entry.first, *Identifier)) return Entry.second;
  return nullptr;
}

BOOLEAN EFIAPI ReadResourceString (const CHAR8 *File, const CHAR8 *Section, const CHAR8 *Key, CHAR8 *Buffer) {
  if (Current == nullptr || File == nullptr || Key == nullptr || Buffer == nullptr) return FALSE;
  std::string Text, Value;
  if (!Current->ReadResource (reinterpret_cast<const char *> (File), Text)) return FALSE;
  if (!LookupResourceString (Text, reinterpret_cast<const char *> (Section), reinterpret_cast<const char *> (Key),
                             Value))
    return FALSE;
  std::memcpy (Buffer, Value.data (), Value.size ());
  Buffer[Value.size ()] = 0;
  return TRUE;
}

UINT16 EFIAPI OpenDirectory (UINT8 Volume, const CHAR8 *Path) {
  if (Current == nullptr) return 0;
  FileDriver::State &S = *Current;
  std::vector<std::string> Components;
  if (!S.ValidVolume (Volume) || !SplitVolumePath (reinterpret_cast<const char *> (Path), Components)) return 0;
  if (S.Handles.size () >= kMaxOpenHandles) return 0;
  OpenObject Object;
  std::shared_ptr<FsNode> Above;
  Object.Node = S.OpenOnVolume (Volume, Components, &Object.Self, &Above);
  if (!Object.Node) return 0;
  Object.Volume = Volume;
  Object.Directory = Object.Self.Kind == NodeKind::Directory;
  // A directory keeps the one above it for the ".." record of its listings.
  if (Object.Directory) Object.Above = Components.empty () ? Object.Node : Above;
  Object.Path = std::move (Components);
  uint16_t Handle = S.NextHandle;
  while (S.Handles.count (Handle) != 0) Handle = static_cast<uint16_t> (Handle % 0x7FFF + 1);
  S.NextHandle = static_cast<uint16_t> (Handle % 0x7FFF + 1);
  S.Handles.emplace (Handle, std::move (Object));
  return Handle;
}

VOID EFIAPI CloseHandle (UINT16 Handle) {
  if (Current == nullptr || Handle == 0 || Handle > 0x7FFF) return;
  Current->Handles.erase (Handle);
}

DIRECTORY_ENTRY *EFIAPI ReadDirectory (UINT16 Handle, UINT16 *Count) {
  if (Count != nullptr) *Count = 0;
  if (Current == nullptr || Count == nullptr || Handle == 0 || Handle > 0x7FFF) return nullptr;
  FileDriver::State &S = *Current;
  OpenObject *Object = S.Find (Handle);
  if (Object == nullptr || !Object->Directory) return nullptr;
  LISTING_NOTES &Notes = Object->Notes;
  Notes = LISTING_NOTES {};
  Object->Listed = true;

  std::vector<ListedEntry> Found;
  ListGaps Gaps;
  bool Read = Object->Node->List (Found, Gaps);
  Notes.NameTooLong = Gaps.NameTooLong;
  Notes.NameUnusable = Gaps.NameUnusable;
  Notes.Unreadable = Gaps.Unreadable;
  if (!Read) {
    Notes.FolderUnreadable = 1;
    AddNotes (S.Volumes[Object->Volume].LeftOut, Notes);
    return nullptr;
  }
  std::sort (Found.begin (), Found.end (), ListedBefore);

  size_t Dots = Object->Path.empty () ? 0 : 2;
  size_t Total = std::min<size_t> (Dots + Found.size (), 0xFFFF);
  Notes.OverLimit = static_cast<UINT32> (Dots + Found.size () - Total);
  DIRECTORY_ENTRY *Entries = nullptr;
  if (Total > 0) {
    Entries = static_cast<DIRECTORY_ENTRY *> (PoolAllocate (Total * sizeof (DIRECTORY_ENTRY)));
    if (Entries == nullptr) Notes.FolderUnreadable = 1;
  }
  AddNotes (S.Volumes[Object->Volume].LeftOut, Notes);
  if (Entries != nullptr) {
    size_t Index = 0;
    if (Dots != 0) {
      NodeInfo Parent = Object->Self;
      if (Object->Above) Object->Above->Describe (Parent);
      FillEntry (Entries[Index++], ".", Object->Self, true);
      FillEntry (Entries[Index++], "..", Parent, true);
    }
    for (size_t I = 0; Index < Total; I++) FillEntry (Entries[Index++], Found[I].Name, Found[I].Info, false);
    Notes.Listed = static_cast<UINT32> (Total);
    *Count = static_cast<UINT16> (Total);
  }
  S.Remember (Object->Volume, Object->Path, std::move (Found));
  return Entries;
}

VOID *EFIAPI ReadFile (UINT8 Volume, const CHAR8 *Path, UINTN *Size) {
  if (Size != nullptr) *Size = 0;
  if (Current == nullptr || Size == nullptr) return nullptr;
  std::vector<std::string> Components;
  if (!Current->ValidVolume (Volume) || !SplitVolumePath (reinterpret_cast<const char *> (Path), Components))
    return nullptr;
  NodeInfo Info;
  std::shared_ptr<FsNode> Node = Current->OpenOnVolume (Volume, Components, &Info);
  if (!Node || Info.Kind != NodeKind::File || Info.Size > kMaxReadFile) return nullptr;
  size_t Length = static_cast<size_t> (Info.Size);
  auto *Buffer = static_cast<uint8_t *> (PoolAllocate (Length == 0 ? 1 : Length));
  if (Buffer == nullptr) return nullptr;
  size_t Done = 0;
  while (Done < Length) {
    uint32_t Got = Node->ReadAt (Done, Buffer + Done, static_cast<uint32_t> (std::min<size_t> (Length - Done, 1u << 20)));
    if (Got == 0) break;
    Done += Got;
  }
  if (Done != Length) {   // the file shrank or could not be read whole
    PoolFree (Buffer);
    return nullptr;
  }
  *Size = Length;
  return Buffer;
}

UINT32 EFIAPI ReadAt (UINT16 Handle, UINT64 Offset, VOID *Buffer, UINT32 Length) {
  if (Current == nullptr || Buffer == nullptr || Length == 0 || Handle == 0 || Handle > 0x7FFF) return 0;
  OpenObject *Object = Current->Find (Handle);
  if (Object == nullptr || Object->Directory) return 0;
  return Object->Node->ReadAt (Offset, Buffer, Length);
}

BOOLEAN EFIAPI GetFileInfo (UINT16 Handle, FILE_INFO *Info) {
  if (Current == nullptr || Info == nullptr) return FALSE;
  OpenObject *Object = Current->Find (Handle);
  NodeInfo Node;
  if (Object == nullptr || !Object->Node->Describe (Node)) return FALSE;
  // Only the first 40 bytes are written: every field lies there, and a caller
  // with a 40-byte record is served as well.
  std::memset (Info, 0, 40);
  Info->Size = Node.Kind == NodeKind::Directory ? 0 : Node.Size;
  Info->TimeStamp = Node.TimeStamp;
  Info->EntryWord = Node.EntryWord;
  Info->IsDirectory = Node.Kind == NodeKind::Directory ? 1 : 0;
  return TRUE;
}

BOOLEAN EFIAPI CreateDirectory (UINT8 Volume, const CHAR8 *Path, UINT8 Mode) {
  if (Current == nullptr || (Mode != 0 && Mode != 1)) return FALSE;
  FileDriver::State &S = *Current;
  if (!S.ValidVolume (Volume) || S.Protected (Volume)) return FALSE;
  std::string Name;
  std::vector<std::string> Components;
  std::shared_ptr<FsNode> Parent = Current->Owner->OpenParent (Volume, reinterpret_cast<const char *> (Path), Name,
                                                               &Components);
  if (!Parent || Name.size () > kMaxEntryName || S.FindNow (Volume, *Parent, Name)) return FALSE;
  return Parent->Create (Name, Mode == 1 ? NodeKind::Directory : NodeKind::File) ? TRUE : FALSE;
}

BOOLEAN EFIAPI RenamePath (UINT8 Volume, const CHAR8 *Path, const CHAR8 *NewName) {
  if (Current == nullptr || !BareName (NewName)) return FALSE;
  FileDriver::State &S = *Current;
  if (!S.ValidVolume (Volume) || S.Protected (Volume)) return FALSE;
  std::string Name, Existing;
  std::shared_ptr<FsNode> Parent = Current->Owner->OpenParent (Volume, reinterpret_cast<const char *> (Path), Name);
  std::string To = reinterpret_cast<const char *> (NewName);
  if (!Parent || To == Name || !S.FindNow (Volume, *Parent, Name, &Existing)) return FALSE;
  // Another entry of that name (a case change of the entry itself is no clash).
  std::string Clash;
  if (S.FindNow (Volume, *Parent, To, &Clash) && Clash != Existing) return FALSE;
  bool Done = Parent->Rename (Existing, To);
  Current->Owner->Forget (Volume);
  return Done ? TRUE : FALSE;
}

VOID EFIAPI FlushVolume (UINT8 Volume) {
  if (Current == nullptr || Volume >= VOLUME_COUNT) return;
  Current->Volumes[Volume].Flushes++;
  if (Current->ValidVolume (Volume)) Current->Volumes[Volume].Fs->Flush ();
}

BOOLEAN EFIAPI GetListingNotes (UINT16 Handle, LISTING_NOTES *Notes) {
  if (Current == nullptr || Notes == nullptr || Handle == 0 || Handle > 0x7FFF) return FALSE;
  OpenObject *Object = Current->Find (Handle);
  if (Object == nullptr || !Object->Directory || !Object->Listed) return FALSE;
  *Notes = Object->Notes;
  return TRUE;
}

}  // namespace

FileDriver::FileDriver (std::unique_ptr<VolumeFs> System, uint32_t Version) : State_ (new State) {
  State &S = *State_;
  S.Owner = this;
  S.System = std::move (System);
  FILE_DRIVER_PROTOCOL &T = S.Table;
  T.Version = Version;
  T.LocateService = LocateService;
  T.ReadResourceString = ReadResourceString;
  T.OpenDirectory = OpenDirectory;
  T.CloseHandle = CloseHandle;
  T.ReadDirectory = ReadDirectory;
  T.ReadFile = ReadFile;
  T.ReadAt = ReadAt;
  T.GetFileInfo = GetFileInfo;
  T.CreateDirectory = CreateDirectory;
  T.RenamePath = RenamePath;
  T.FlushVolume = FlushVolume;
  T.GetListingNotes = GetListingNotes;
  S.Previous = Current;
  Current = &S;
}

FileDriver::~FileDriver () {
  State_->Handles.clear ();
  if (Current == State_.get ()) {
    Current = State_->Previous;
  } else {
    // Destroyed out of order: unlink from the chain of earlier drivers.
    for (State *S = Current; S != nullptr; S = S->Previous)
      if (S->Previous == State_.get ()) {
        S->Previous = State_->Previous;
        break;
      }
  }
}

FILE_DRIVER_PROTOCOL *FileDriver::Table () { return &State_->Table; }

int FileDriver::Mount (std::unique_ptr<VolumeFs> Fs, const VolumeRecordSpec &Spec, int Slot) {
  if (!Fs) return -1;
  int First = Slot < 0 ? 0 : Slot, Last = Slot < 0 ? VOLUME_COUNT - 1 : Slot;
  for (int Volume = First; Volume <= Last && Volume < VOLUME_COUNT; Volume++) {
    VOLUME_RECORD &Record = State_->Table.Volumes[Volume];
    if (Record.InUse != 0) continue;
    std::memset (&Record, 0, sizeof (Record));
    Record.InUse = 1;
    Record.Offered = 1;
    Record.Kind = Spec.Kind;
    Record.Flags = Spec.Flags;
    Record.FileSystemType = Spec.FileSystemType;
    std::memcpy (Record.Label, Spec.Label.data (), std::min (Spec.Label.size (), sizeof (Record.Label) - 1));
    State_->Volumes[Volume] = MountedVolume {};
    State_->Volumes[Volume].Fs = std::move (Fs);
    return Volume;
  }
  return -1;
}

bool FileDriver::Unmount (int Volume) {
  if (Volume < 0 || Volume >= VOLUME_COUNT || State_->Table.Volumes[Volume].InUse == 0) return false;
  for (auto It = State_->Handles.begin (); It != State_->Handles.end ();)
    It = It->second.Volume == Volume ? State_->Handles.erase (It) : std::next (It);
  std::memset (&State_->Table.Volumes[Volume], 0, sizeof (VOLUME_RECORD));
  State_->Volumes[Volume] = MountedVolume {};
  return true;
}

bool FileDriver::Mounted (int Volume) const { return State_->ValidVolume (Volume); }

void FileDriver::RegisterService (const EFI_GUID &Guid, VOID *Table) {
  for (auto &Entry : State_->Services)
    if (SameGuid (Entry.first, Guid)) {
      Entry.second = Table;
      return;
    }
  State_->Services.emplace_back (Guid, Table);
}

void FileDriver::UnregisterService (const EFI_GUID &Guid) {
  auto &List = State_->Services;
  List.erase (std::remove_if (List.begin (), List.end (), [&] (auto &Entry) { return SameGuid (Entry.first, Guid); }),
              List.end ());
}

unsigned FileDriver::FlushCount (int Volume) const {
  if (Volume < 0 || Volume >= VOLUME_COUNT) return 0;
  return State_->Volumes[Volume].Flushes;
}

size_t FileDriver::OpenHandleCount () const { return State_->Handles.size (); }

bool FileDriver::WriteProtected (int Volume) const { return State_->ValidVolume (Volume) && State_->Protected (Volume); }

bool FileDriver::CaseInsensitive (int Volume) const { return State_->ValidVolume (Volume) && State_->Fat (Volume); }

VolumeFs *FileDriver::Volume (int Volume) {
  return State_->ValidVolume (Volume) ? State_->Volumes[Volume].Fs.get () : nullptr;
}

LISTING_NOTES FileDriver::LeftOutTotals (int Volume) const {
  if (Volume < 0 || Volume >= VOLUME_COUNT) return {};
  return State_->Volumes[Volume].LeftOut;
}

std::shared_ptr<FsNode> FileDriver::OpenPath (int Volume, const char *Path, NodeInfo *Info) {
  std::vector<std::string> Components;
  if (!State_->ValidVolume (Volume) || !SplitVolumePath (Path, Components)) return nullptr;
  return State_->OpenOnVolume (Volume, Components, Info);
}

std::shared_ptr<FsNode> FileDriver::OpenParent (int Volume, const char *Path, std::string &Name,
                                                std::vector<std::string> *Out) {
  std::vector<std::string> Components;
  if (!State_->ValidVolume (Volume) || !SplitVolumePath (Path, Components) || Components.empty ()) return nullptr;
  Name = Components.back ();
  Components.pop_back ();
  NodeInfo Info;
  std::shared_ptr<FsNode> Parent = State_->OpenOnVolume (Volume, Components, &Info);
  if (!Parent || Info.Kind != NodeKind::Directory) return nullptr;
  if (Out != nullptr) *Out = std::move (Components);
  return Parent;
}

bool FileDriver::ListedInfo (int Volume, const std::vector<std::string> &Directory, const std::string &Name,
                              NodeInfo &Info) const {
  if (!State_->ValidVolume (Volume)) return false;
  const NodeInfo *Found = State::Listed (State_->Volumes[Volume].Listings, Directory, Directory.size (), Name);
  if (Found != nullptr) Info = *Found;
  return Found != nullptr;
}

void FileDriver::Forget (int Volume) {
  if (Volume < 0 || Volume >= VOLUME_COUNT) return;
  State_->Volumes[Volume].Cache.Clear ();
}

bool FileDriver::ReadSystemFile (const char *Path, std::vector<uint8_t> &Bytes, size_t Limit) {
  std::vector<std::string> Components;
  if (!State_->System || !SplitVolumePath (Path, Components) || Components.empty ()) return false;
  std::shared_ptr<FsNode> Node = State_->Walk (*State_->System, nullptr, nullptr, Components);
  return Node && ReadWhole (*Node, Bytes, Limit);
}

bool FileDriver::ReadVolumeFile (int Volume, const char *Path, std::vector<uint8_t> &Bytes, size_t Limit) {
  std::shared_ptr<FsNode> Node = OpenPath (Volume, Path);
  return Node && ReadWhole (*Node, Bytes, Limit);
}

}  // namespace env
