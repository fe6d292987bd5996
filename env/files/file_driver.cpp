#include "env/files/file_driver.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <unordered_map>
#include <utility>
#include <vector>

#include "env/files/host_path.h"
#include "env/files/resource_file.h"

namespace env {

namespace {

struct OpenObject {
  int Volume = -1;
  std::string Host;
  bool Directory = false;
  bool Root = false;   // the volume's root (no "." or ".." records)
  int Fd = -1;         // files only
  bool Listed = false; // ReadDirectory ran: Notes describe its result
  LISTING_NOTES Notes {};
};

struct Mounted {
  std::string Folder;  // as given
  std::string Root;    // canonical
  unsigned Flushes = 0;
  LISTING_NOTES LeftOut {};   // summed over every listing since the mount
};

std::string Canonical (const std::string &Folder) {
  std::error_code Error;
  std::filesystem::path Real = std::filesystem::weakly_canonical (std::filesystem::absolute (Folder, Error), Error);
  if (Error) return {};
  std::string Text = Real.native ();
  while (Text.size () > 1 && Text.back () == '/') Text.pop_back ();
  return Text;
}

char Lower (char C) { return (C >= 'A' && C <= 'Z') ? static_cast<char> (C - 'A' + 'a') : C; }

// Folders first, then files; by name without case, then byte by byte.
bool ListedBefore (const std::pair<std::string, struct stat> &A, const std::pair<std::string, struct stat> &B) {
  bool DirA = S_ISDIR (A.second.st_mode), DirB = S_ISDIR (B.second.st_mode);
  if (DirA != DirB) return DirA;
  const std::string &X = A.first, &Y = B.first;
  size_t N = std::min (X.size (), Y.size ());
  for (size_t I = 0; I < N; I++) {
    unsigned char Cx = static_cast<unsigned char> (Lower (X[I])), Cy = static_cast<unsigned char> (Lower (Y[I]));
    if (Cx != Cy) return Cx < Cy;
  }
  if (X.size () != Y.size ()) return X.size () < Y.size ();
  return X < Y;
}

void FillEntry (DIRECTORY_ENTRY &Entry, const std::string &Name, const struct stat &Info, bool Dots) {
  std::memset (&Entry, 0, sizeof (Entry));
  std::memcpy (Entry.Name, Name.data (), std::min (Name.size (), sizeof (Entry.Name) - 1));
  bool Directory = S_ISDIR (Info.st_mode);
  Entry.Size = (Directory || Dots) ? 0 : static_cast<UINT64> (Info.st_size);
  time_t When = Info.st_mtim.tv_sec;
  struct tm Local {};
  if (localtime_r (&When, &Local) != nullptr) {
    Entry.Year = static_cast<UINT16> (Local.tm_year + 1900);
    Entry.Month = static_cast<UINT8> (Local.tm_mon + 1);
    Entry.Day = static_cast<UINT8> (Local.tm_mday);
    Entry.Hour = static_cast<UINT8> (Local.tm_hour);
    Entry.Minute = static_cast<UINT8> (Local.tm_min);
    Entry.Second = static_cast<UINT8> (Local.tm_sec);
  }
  Entry.IsDirectory = Directory ? 1 : 0;
  Entry.EntryWord = static_cast<UINT32> (Info.st_ino);
}

bool SameGuid (const EFI_GUID &A, const EFI_GUID &B) { return std::memcmp (&A, &B, sizeof (EFI_GUID)) == 0; }

}  // namespace

struct FileDriver::State {
  Firmware *Fw = nullptr;
  FileDriver *Owner = nullptr;
  State *Previous = nullptr;   // the driver that was current before this one
  FILE_DRIVER_PROTOCOL Table {};
  std::string System;          // as given
  std::string SystemRoot;      // canonical
  Mounted Volumes[VOLUME_COUNT];
  std::vector<std::pair<EFI_GUID, VOID *>> Services;
  std::unordered_map<uint16_t, OpenObject> Handles;
  uint16_t NextHandle = 1;

  bool ValidVolume (UINT8 Volume) const { return Volume < VOLUME_COUNT && Table.Volumes[Volume].InUse != 0; }
  bool Protected (UINT8 Volume) const { return (Table.Volumes[Volume].Flags & VOLUME_FLAG_WRITE_PROTECTED) != 0; }

  bool Resolve (UINT8 Volume, const CHAR8 *Path, ResolvedPath &Out) const {
    if (!ValidVolume (Volume)) return false;
    return ResolveVolumePath (Volumes[Volume].Root, reinterpret_cast<const char *> (Path), Out);
  }

  // Information about a host object, following links that stay inside Root.
  static bool Describe (const std::string &Root, const std::string &Host, struct stat &Info) {
    struct stat Link;
    if (lstat (Host.c_str (), &Link) != 0) return false;
    if (S_ISLNK (Link.st_mode) && !StaysInside (Root, Host)) return false;
    if (stat (Host.c_str (), &Info) != 0) return false;
    return S_ISDIR (Info.st_mode) || S_ISREG (Info.st_mode);
  }

  OpenObject *Find (UINT16 Handle) {
    auto It = Handles.find (static_cast<uint16_t> (Handle & 0x7FFF));
    return It == Handles.end () ? nullptr : &It->second;
  }

  void Close (uint16_t Handle) {
    auto It = Handles.find (Handle);
    if (It == Handles.end ()) return;
    if (It->second.Fd >= 0) ::close (It->second.Fd);
    Handles.erase (It);
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
  if (Current->SystemRoot.empty ()) return FALSE;
  ResolvedPath Where;
  if (!ResolveVolumePath (Current->SystemRoot, reinterpret_cast<const char *> (File), Where)) return FALSE;
  struct stat Info;
  if (!FileDriver::State::Describe (Current->SystemRoot, Where.Host, Info) || !S_ISREG (Info.st_mode)) return FALSE;
  if (static_cast<uint64_t> (Info.st_size) > kMaxReadFile) return FALSE;
  std::FILE *Stream = std::fopen (Where.Host.c_str (), "rb");
  if (Stream == nullptr) return FALSE;
  std::string Text;
  char Chunk[65536];
  size_t Got;
  while ((Got = std::fread (Chunk, 1, sizeof (Chunk), Stream)) > 0) Text.append (Chunk, Got);
  std::fclose (Stream);
  std::string Value;
  if (!LookupResourceString (Text, reinterpret_cast<const char *> (Section), reinterpret_cast<const char *> (Key), Value))
    return FALSE;
  std::memcpy (Buffer, Value.data (), Value.size ());
  Buffer[Value.size ()] = 0;
  return TRUE;
}

UINT16 EFIAPI OpenDirectory (UINT8 Volume, const CHAR8 *Path) {
  if (Current == nullptr) return 0;
  FileDriver::State &S = *Current;
  ResolvedPath Where;
  if (!S.Resolve (Volume, Path, Where)) return 0;
  if (S.Handles.size () >= kMaxOpenHandles) return 0;
  struct stat Info;
  if (!FileDriver::State::Describe (S.Volumes[Volume].Root, Where.Host, Info)) return 0;

  OpenObject Object;
  Object.Volume = Volume;
  Object.Host = Where.Host;
  Object.Directory = S_ISDIR (Info.st_mode);
  Object.Root = Where.Components.empty ();
  if (!Object.Directory) {
    Object.Fd = ::open (Where.Host.c_str (), O_RDONLY | O_CLOEXEC);
    if (Object.Fd < 0) return 0;
  }
  uint16_t Handle = S.NextHandle;
  while (S.Handles.count (Handle) != 0) Handle = static_cast<uint16_t> (Handle % 0x7FFF + 1);
  S.NextHandle = static_cast<uint16_t> (Handle % 0x7FFF + 1);
  S.Handles.emplace (Handle, std::move (Object));
  return Handle;
}

VOID EFIAPI CloseHandle (UINT16 Handle) {
  if (Current == nullptr || Handle == 0 || Handle > 0x7FFF) return;
  Current->Close (Handle);
}

DIRECTORY_ENTRY *EFIAPI ReadDirectory (UINT16 Handle, UINT16 *Count) {
  if (Count != nullptr) *Count = 0;
  if (Current == nullptr || Count == nullptr || Handle == 0 || Handle > 0x7FFF) return nullptr;
  FileDriver::State &S = *Current;
  OpenObject *Object = S.Find (Handle);
  if (Object == nullptr || !Object->Directory) return nullptr;
  const std::string &Root = S.Volumes[Object->Volume].Root;
  LISTING_NOTES &Notes = Object->Notes;
  Notes = LISTING_NOTES {};
  Object->Listed = true;
  // Whatever the listing leaves out is added to the volume's totals on return.
  struct Totals {
    LISTING_NOTES &Notes, &Sum;
    ~Totals () {
      Sum.NameTooLong += Notes.NameTooLong, Sum.NameUnusable += Notes.NameUnusable;
      Sum.Unreadable += Notes.Unreadable, Sum.OverLimit += Notes.OverLimit;
      Sum.FolderUnreadable += Notes.FolderUnreadable;
    }
  } AddUp {Notes, S.Volumes[Object->Volume].LeftOut};

  std::vector<std::pair<std::string, struct stat>> Found;
  DIR *Folder = ::opendir (Object->Host.c_str ());
  if (Folder == nullptr) {
    Notes.FolderUnreadable = 1;
    return nullptr;
  }
  std::string Prefix = Object->Host;
  if (Prefix.back () != '/') Prefix += '/';
  while (struct dirent *Item = ::readdir (Folder)) {
    std::string Name = Item->d_name;
    if (Name == "." || Name == "..") continue;
    if (Name.size () > kMaxEntryName) {
      Notes.NameTooLong++;
      continue;
    }
    if (Name.find ('\\') != std::string::npos) {
      Notes.NameUnusable++;
      continue;
    }
    struct stat Info;
    if (Item->d_type != DT_LNK && Item->d_type != DT_UNKNOWN) {
      if ((Item->d_type != DT_DIR && Item->d_type != DT_REG) ||
          ::fstatat (dirfd (Folder), Item->d_name, &Info, AT_SYMLINK_NOFOLLOW) != 0) {
        Notes.Unreadable++;
        continue;
      }
    } else if (!FileDriver::State::Describe (Root, Prefix + Name, Info)) {
      Notes.Unreadable++;
      continue;
    }
    Found.emplace_back (std::move (Name), Info);
  }
  ::closedir (Folder);
  std::sort (Found.begin (), Found.end (), ListedBefore);

  std::vector<std::pair<std::string, struct stat>> Dots;
  if (!Object->Root) {
    struct stat Self, Parent;
    if (::stat (Object->Host.c_str (), &Self) != 0) return nullptr;
    std::string Up = Object->Host.substr (0, Object->Host.rfind ('/'));
    if (Up.empty () || ::stat (Up.c_str (), &Parent) != 0) Parent = Self;
    Dots.emplace_back (".", Self);
    Dots.emplace_back ("..", Parent);
  }

  size_t Total = std::min<size_t> (Dots.size () + Found.size (), 0xFFFF);
  Notes.OverLimit = static_cast<UINT32> (Dots.size () + Found.size () - Total);
  if (Total == 0) return nullptr;
  auto *Entries = static_cast<DIRECTORY_ENTRY *> (S.Fw->AllocatePool (Total * sizeof (DIRECTORY_ENTRY)));
  if (Entries == nullptr) {
    Notes.FolderUnreadable = 1;
    return nullptr;
  }
  Notes.Listed = static_cast<UINT32> (Total);
  size_t Index = 0;
  for (auto &Dot : Dots) FillEntry (Entries[Index++], Dot.first, Dot.second, true);
  for (size_t I = 0; Index < Total; I++) FillEntry (Entries[Index++], Found[I].first, Found[I].second, false);
  *Count = static_cast<UINT16> (Total);
  return Entries;
}

VOID *EFIAPI ReadFile (UINT8 Volume, const CHAR8 *Path, UINTN *Size) {
  if (Size != nullptr) *Size = 0;
  if (Current == nullptr || Size == nullptr) return nullptr;
  FileDriver::State &S = *Current;
  ResolvedPath Where;
  if (!S.Resolve (Volume, Path, Where)) return nullptr;
  struct stat Info;
  if (!FileDriver::State::Describe (S.Volumes[Volume].Root, Where.Host, Info) || !S_ISREG (Info.st_mode)) return nullptr;
  if (static_cast<uint64_t> (Info.st_size) > kMaxReadFile) return nullptr;
  int Fd = ::open (Where.Host.c_str (), O_RDONLY | O_CLOEXEC);
  if (Fd < 0) return nullptr;
  size_t Length = static_cast<size_t> (Info.st_size);
  auto *Buffer = static_cast<uint8_t *> (S.Fw->AllocatePool (Length == 0 ? 1 : Length));
  if (Buffer == nullptr) {
    ::close (Fd);
    return nullptr;
  }
  size_t Done = 0;
  while (Done < Length) {
    ssize_t Got = ::pread (Fd, Buffer + Done, Length - Done, static_cast<off_t> (Done));
    if (Got < 0 && errno == EINTR) continue;
    if (Got <= 0) break;
    Done += static_cast<size_t> (Got);
  }
  ::close (Fd);
  if (Done != Length) {   // the file shrank or could not be read whole
    S.Fw->FreePool (Buffer);
    return nullptr;
  }
  *Size = Length;
  return Buffer;
}

UINT32 EFIAPI ReadAt (UINT16 Handle, UINT64 Offset, VOID *Buffer, UINT32 Length) {
  if (Current == nullptr || Buffer == nullptr || Length == 0 || Handle == 0 || Handle > 0x7FFF) return 0;
  OpenObject *Object = Current->Find (Handle);
  if (Object == nullptr || Object->Fd < 0) return 0;
  if (Offset > static_cast<UINT64> (INT64_MAX)) return 0;
  UINT32 Done = 0;
  while (Done < Length) {
    ssize_t Got = ::pread (Object->Fd, static_cast<uint8_t *> (Buffer) + Done, Length - Done,
                           static_cast<off_t> (Offset + Done));
    if (Got < 0 && errno == EINTR) continue;
    if (Got <= 0) break;
    Done += static_cast<UINT32> (Got);
  }
  return Done;
}

BOOLEAN EFIAPI GetFileInfo (UINT16 Handle, FILE_INFO *Info) {
  if (Current == nullptr || Info == nullptr) return FALSE;
  OpenObject *Object = Current->Find (Handle);
  if (Object == nullptr) return FALSE;
  struct stat Host;
  int Result = Object->Fd >= 0 ? ::fstat (Object->Fd, &Host) : ::stat (Object->Host.c_str (), &Host);
  if (Result != 0) return FALSE;
  // Only the first 40 bytes are written: every field lies there, and a caller
  // with a 40-byte record is served as well.
  std::memset (Info, 0, 40);
  Info->Size = S_ISDIR (Host.st_mode) ? 0 : static_cast<UINT64> (Host.st_size);
  Info->TimeStamp = (static_cast<UINT64> (Host.st_mtim.tv_sec) << 8) |
                    (static_cast<UINT64> (Host.st_mtim.tv_nsec) * 256 / 1000000000ull);
  Info->EntryWord = static_cast<UINT32> (Host.st_ino);
  Info->IsDirectory = S_ISDIR (Host.st_mode) ? 1 : 0;
  return TRUE;
}

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

BOOLEAN EFIAPI CreateDirectory (UINT8 Volume, const CHAR8 *Path, UINT8 Mode) {
  if (Current == nullptr || (Mode != 0 && Mode != 1)) return FALSE;
  FileDriver::State &S = *Current;
  ResolvedPath Where;
  if (!S.Resolve (Volume, Path, Where) || S.Protected (Volume) || Where.Components.empty ()) return FALSE;
  if (Where.Components.back ().size () > kMaxEntryName) return FALSE;
  struct stat Info;
  if (::lstat (Where.Host.c_str (), &Info) == 0) return FALSE;
  if (Mode == 1) return ::mkdir (Where.Host.c_str (), 0777) == 0 ? TRUE : FALSE;
  int Fd = ::open (Where.Host.c_str (), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (Fd < 0) return FALSE;
  ::close (Fd);
  return TRUE;
}

BOOLEAN EFIAPI RenamePath (UINT8 Volume, const CHAR8 *Path, const CHAR8 *NewName) {
  if (Current == nullptr || !BareName (NewName)) return FALSE;
  FileDriver::State &S = *Current;
  ResolvedPath Where;
  if (!S.Resolve (Volume, Path, Where) || S.Protected (Volume) || Where.Components.empty ()) return FALSE;
  struct stat Info;
  if (::lstat (Where.Host.c_str (), &Info) != 0) return FALSE;
  std::string Target = Where.Host.substr (0, Where.Host.rfind ('/') + 1) + reinterpret_cast<const char *> (NewName);
  if (Target == Where.Host) return FALSE;
  if (::renameat2 (AT_FDCWD, Where.Host.c_str (), AT_FDCWD, Target.c_str (), RENAME_NOREPLACE) == 0) return TRUE;
  if (errno != EINVAL && errno != ENOSYS) return FALSE;
  // File systems without RENAME_NOREPLACE: check, then rename.
  if (::lstat (Target.c_str (), &Info) == 0) return FALSE;
  return ::rename (Where.Host.c_str (), Target.c_str ()) == 0 ? TRUE : FALSE;
}

BOOLEAN EFIAPI GetListingNotes (UINT16 Handle, LISTING_NOTES *Notes) {
  if (Current == nullptr || Notes == nullptr || Handle == 0 || Handle > 0x7FFF) return FALSE;
  OpenObject *Object = Current->Find (Handle);
  if (Object == nullptr || !Object->Directory || !Object->Listed) return FALSE;
  *Notes = Object->Notes;
  return TRUE;
}

VOID EFIAPI FlushVolume (UINT8 Volume) {
  if (Current == nullptr || Volume >= VOLUME_COUNT) return;
  Current->Volumes[Volume].Flushes++;
}

}  // namespace

FileDriver::FileDriver (Firmware &Fw, const std::string &SystemDir, uint32_t Version) : State_ (new State) {
  State &S = *State_;
  S.Fw = &Fw;
  S.Owner = this;
  S.System = SystemDir;
  if (!SystemDir.empty ()) S.SystemRoot = Canonical (SystemDir);
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
  for (auto &Entry : State_->Handles)
    if (Entry.second.Fd >= 0) ::close (Entry.second.Fd);
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

int FileDriver::Mount (const VolumeSpec &Spec) {
  std::error_code Error;
  if (Spec.Folder.empty () || !std::filesystem::is_directory (Spec.Folder, Error)) return -1;
  std::string Root = Canonical (Spec.Folder);
  if (Root.empty ()) return -1;
  for (int Volume = 0; Volume < VOLUME_COUNT; Volume++) {
    VOLUME_RECORD &Record = State_->Table.Volumes[Volume];
    if (Record.InUse != 0) continue;
    std::memset (&Record, 0, sizeof (Record));
    Record.InUse = 1;
    Record.Offered = 1;
    Record.Kind = Spec.Kind;
    Record.Flags = Spec.Flags;
    Record.FileSystemType = Spec.FileSystemType;
    std::string Label = Spec.Label;
    if (Label.empty ()) {
      Label = std::filesystem::path (Root).filename ().native ();
      if (Label.empty ()) Label.push_back ('/');
    }
    std::memcpy (Record.Label, Label.data (), std::min (Label.size (), sizeof (Record.Label) - 1));
    State_->Volumes[Volume] = Mounted {Spec.Folder, Root, 0};
    return Volume;
  }
  return -1;
}

bool FileDriver::Unmount (int Volume) {
  if (Volume < 0 || Volume >= VOLUME_COUNT || State_->Table.Volumes[Volume].InUse == 0) return false;
  std::vector<uint16_t> Closing;
  for (auto &Entry : State_->Handles)
    if (Entry.second.Volume == Volume) Closing.push_back (Entry.first);
  for (uint16_t Handle : Closing) State_->Close (Handle);
  std::memset (&State_->Table.Volumes[Volume], 0, sizeof (VOLUME_RECORD));
  State_->Volumes[Volume] = Mounted {};
  return true;
}

std::string FileDriver::HostPath (int Volume) const {
  if (Volume < 0 || Volume >= VOLUME_COUNT || State_->Table.Volumes[Volume].InUse == 0) return {};
  return State_->Volumes[Volume].Root;
}

const std::string &FileDriver::SystemDir () const { return State_->System; }

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

LISTING_NOTES FileDriver::LeftOutTotals (int Volume) const {
  if (Volume < 0 || Volume >= VOLUME_COUNT) return {};
  return State_->Volumes[Volume].LeftOut;
}

size_t FileDriver::OpenHandleCount () const { return State_->Handles.size (); }

bool FileDriver::WriteProtected (int Volume) const {
  if (Volume < 0 || Volume >= VOLUME_COUNT || State_->Table.Volumes[Volume].InUse == 0) return false;
  return State_->Protected (static_cast<UINT8> (Volume));
}

std::string FileDriver::ResolvePath (int Volume, const char *Path) const {
  if (Volume < 0 || Volume >= VOLUME_COUNT) return {};
  ResolvedPath Where;
  if (!State_->Resolve (static_cast<UINT8> (Volume), reinterpret_cast<const CHAR8 *> (Path), Where)) return {};
  return Where.Host;
}

}  // namespace env
