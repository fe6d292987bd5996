#include "env/uefi/sfs_volume.h"

#include <cstring>
#include <vector>

#include "env/gui/gbk.h"
#include "env/uefi/uefi_globals.h"

namespace env {

bool Utf16ToGbk (const CHAR16 *Text, std::string &Out) {
  Out.clear ();
  for (size_t I = 0; Text[I] != 0; I++) {
    char32_t Cp = Text[I];
    if (Cp >= 0xD800 && Cp < 0xE000) return false;   // outside GBK's plane
    if (!UnicodeToGbk (Cp, Out)) return false;
  }
  return true;
}

bool GbkToUtf16 (const std::string &Text, std::u16string &Out) {
  Out.clear ();
  const auto *Bytes = reinterpret_cast<const unsigned char *> (Text.data ());
  for (size_t I = 0; I < Text.size ();) {
    GbkChar C = GbkCharAt (Bytes, Text.size (), I);
    if (C.CodePoint == 0xFFFD || C.CodePoint > 0xFFFF) return false;
    Out.push_back (static_cast<char16_t> (C.CodePoint));
    I += C.Bytes;
  }
  return true;
}

namespace {

const EFI_GUID kFileInfoGuid = EFI_FILE_INFO_ID;
const EFI_GUID kFileSystemInfoGuid = EFI_FILE_SYSTEM_INFO_ID;
const EFI_GUID kSimpleFileSystemGuid = EFI_SIMPLE_FILE_SYSTEM_PROTOCOL_GUID;
const EFI_GUID kBlockIoGuid = EFI_BLOCK_IO_PROTOCOL_GUID;

bool ValidName (const std::string &Name) {
  return !Name.empty () && Name != "." && Name != ".." && Name.find_first_of (std::string ("\\/\0", 3)) == std::string::npos;
}

int64_t DaysFromCivil (int64_t Y, unsigned M, unsigned D) {
  Y -= M <= 2;
  const int64_t Era = (Y >= 0 ? Y : Y - 399) / 400;
  const unsigned Yoe = static_cast<unsigned> (Y - Era * 400);
  const unsigned Doy = (153 * (M + (M > 2 ? -3 : 9)) + 2) / 5 + D - 1;
  const unsigned Doe = Yoe * 365 + Yoe / 4 - Yoe / 100 + Doy;
  return Era * 146097 + static_cast<int64_t> (Doe) - 719468;
}

uint32_t HashPath (const std::vector<std::string> &Path) {
  uint32_t Hash = 2166136261u;
  for (const std::string &Part : Path) {
    for (char C : "\\") Hash = (Hash ^ static_cast<unsigned char> (C)) * 16777619u;
    for (char C : Part) {
      char Upper = C >= 'a' && C <= 'z' ? static_cast<char> (C - 32) : C;
      Hash = (Hash ^ static_cast<unsigned char> (Upper)) * 16777619u;
    }
  }
  return Hash;
}

// The file information of an open object, in a buffer of its own size.
bool ReadInfo (EFI_FILE_PROTOCOL *File, std::vector<uint8_t> &Buffer) {
  UINTN Size = 0;
  EFI_GUID Guid = kFileInfoGuid;
  EFI_STATUS Status = File->GetInfo (File, &Guid, &Size, nullptr);
  if (Status != EFI_BUFFER_TOO_SMALL || Size < SIZE_OF_EFI_FILE_INFO) return false;
  Buffer.assign (Size + 2, 0);
  return !EFI_ERROR (File->GetInfo (File, &Guid, &Size, Buffer.data ()));
}

void Describe (const EFI_FILE_INFO &Info, const std::vector<std::string> &Path, NodeInfo &Out) {
  Out = NodeInfo {};
  Out.Kind = (Info.Attribute & EFI_FILE_DIRECTORY) != 0 ? NodeKind::Directory : NodeKind::File;
  Out.Size = Out.Kind == NodeKind::Directory ? 0 : Info.FileSize;
  const EFI_TIME &T = Info.ModificationTime;
  Out.Modified = NodeTime {T.Year, T.Month, T.Day, T.Hour, T.Minute, T.Second};
  if (T.Month >= 1 && T.Month <= 12)
    Out.Seconds = DaysFromCivil (T.Year, T.Month, T.Day) * 86400 + T.Hour * 3600 + T.Minute * 60 + T.Second;
  Out.Nanoseconds = T.Nanosecond < 1000000000u ? T.Nanosecond : 0;
  Out.TimeStamp = (static_cast<uint64_t> (Out.Seconds) << 8) | (uint64_t (Out.Nanoseconds) * 256 / 1000000000ull);
  Out.EntryWord = HashPath (Path);
  Out.ReadOnly = (Info.Attribute & EFI_FILE_READ_ONLY) != 0;
}

class SfsNode : public FsNode {
 public:
  SfsNode (EFI_FILE_PROTOCOL *File, std::vector<std::string> Path) : File_ (File), Path_ (std::move (Path)) {}
  ~SfsNode () override {
    if (File_ != nullptr) File_->Close (File_);
  }

  bool Describe (NodeInfo &Out) override {
    std::vector<uint8_t> Buffer;
    if (!ReadInfo (File_, Buffer)) return false;
    env::Describe (*reinterpret_cast<const EFI_FILE_INFO *> (Buffer.data ()), Path_, Out);
    return true;
  }

  std::unique_ptr<FsNode> Open (const std::string &Name, NodeInfo *Info = nullptr,
                                const NodeInfo *Hint = nullptr) override {
    std::unique_ptr<FsNode> Node = OpenChild (Name, EFI_FILE_MODE_READ, 0);
    // A listing made a moment ago spares the file system's information call.
    if (Node && Info != nullptr) {
      if (Hint != nullptr) *Info = *Hint;
      else if (!Node->Describe (*Info)) return nullptr;
    }
    return Node;
  }

  bool List (std::vector<ListedEntry> &Out, ListGaps &Gaps) override {
    Out.clear ();
    NodeInfo Self;
    if (!Describe (Self) || Self.Kind != NodeKind::Directory) return false;
    if (EFI_ERROR (File_->SetPosition (File_, 0))) return false;
    std::vector<uint8_t> Buffer (SIZE_OF_EFI_FILE_INFO + 512 * sizeof (CHAR16));
    for (;;) {
      UINTN Size = Buffer.size ();
      EFI_STATUS Status = File_->Read (File_, &Size, Buffer.data ());
      if (Status == EFI_BUFFER_TOO_SMALL) {
        Buffer.resize (Size + 2);
        continue;
      }
      if (EFI_ERROR (Status)) return false;
      if (Size == 0) return true;
      Buffer.resize (std::max<size_t> (Buffer.size (), Size + 2));
      Buffer[Size] = Buffer[Size + 1] = 0;
      const auto &Info = *reinterpret_cast<const EFI_FILE_INFO *> (Buffer.data ());
      ListedEntry Entry;
      if (!Utf16ToGbk (Info.FileName, Entry.Name)) {
        Gaps.NameUnusable++;
        continue;
      }
      if (Entry.Name == "." || Entry.Name == "..") continue;
      if (Entry.Name.size () > kMaxEntryName) {
        Gaps.NameTooLong++;
        continue;
      }
      std::vector<std::string> Path = Path_;
      Path.push_back (Entry.Name);
      env::Describe (Info, Path, Entry.Info);
      Out.push_back (std::move (Entry));
    }
  }

  std::unique_ptr<FsNode> Create (const std::string &Name, NodeKind Kind) override {
    // Never opens what exists: FAT's create would.
    if (!ValidName (Name) || Open (Name)) return nullptr;
    return OpenChild (Name, EFI_FILE_MODE_READ | EFI_FILE_MODE_WRITE | EFI_FILE_MODE_CREATE,
                      Kind == NodeKind::Directory ? EFI_FILE_DIRECTORY : 0);
  }

  bool Rename (const std::string &From, const std::string &To) override {
    if (!ValidName (To)) return false;
    std::u16string Wide;
    if (!GbkToUtf16 (To, Wide)) return false;
    // A name of another entry is never taken (a change of case of the same
    // entry is no clash: FAT finds it under both names).
    if (Open (To) && !SameIgnoringCase (From, To)) return false;
    std::unique_ptr<FsNode> Entry = OpenChild (From, EFI_FILE_MODE_READ | EFI_FILE_MODE_WRITE, 0);
    if (!Entry) return false;
    EFI_FILE_PROTOCOL *File = static_cast<SfsNode &> (*Entry).File_;
    std::vector<uint8_t> Buffer;
    if (!ReadInfo (File, Buffer)) return false;
    std::vector<uint8_t> Renamed (SIZE_OF_EFI_FILE_INFO + (Wide.size () + 1) * sizeof (CHAR16));
    std::memcpy (Renamed.data (), Buffer.data (), SIZE_OF_EFI_FILE_INFO);
    auto *Info = reinterpret_cast<EFI_FILE_INFO *> (Renamed.data ());
    Info->Size = Renamed.size ();
    std::memcpy (Info->FileName, Wide.c_str (), (Wide.size () + 1) * sizeof (CHAR16));
    EFI_GUID Guid = kFileInfoGuid;
    return !EFI_ERROR (File->SetInfo (File, &Guid, Renamed.size (), Info));
  }

  bool Remove (const std::string &Name, const NodeInfo &Expected) override {
    std::unique_ptr<FsNode> Entry = OpenChild (Name, EFI_FILE_MODE_READ | EFI_FILE_MODE_WRITE, 0);
    NodeInfo Now;
    if (!Entry || !Entry->Describe (Now)) return false;
    // A copied link is a file here.
    NodeKind Kind = Expected.Link ? NodeKind::File : Expected.Kind;
    if (Now.Kind != Kind) return false;
    auto &Node = static_cast<SfsNode &> (*Entry);
    EFI_FILE_PROTOCOL *File = Node.File_;
    Node.File_ = nullptr;   // Delete closes the handle, whatever it answers
    return File->Delete (File) == EFI_SUCCESS;
  }

  bool ReadLink (const std::string &, std::string &) override { return false; }

  bool MakeLink (const std::string &Name, const std::string &Target) override {
    std::unique_ptr<FsNode> File = Create (Name, NodeKind::File);
    if (!File || !File->Write (Target.data (), Target.size ())) return false;
    NodeInfo Info;
    return File->Describe (Info) && File->Finish (Info);
  }

  uint32_t ReadAt (uint64_t Offset, void *Buffer, uint32_t Length) override {
    if (EFI_ERROR (File_->SetPosition (File_, Offset))) return 0;
    uint32_t Done = 0;
    while (Done < Length) {
      UINTN Size = Length - Done;
      if (EFI_ERROR (File_->Read (File_, &Size, static_cast<uint8_t *> (Buffer) + Done)) || Size == 0) break;
      Done += static_cast<uint32_t> (Size);
    }
    return Done;
  }

  bool Write (const void *Data, size_t Length) override {
    const auto *Bytes = static_cast<const uint8_t *> (Data);
    while (Length > 0) {
      UINTN Size = Length;
      if (EFI_ERROR (File_->Write (File_, &Size, const_cast<uint8_t *> (Bytes))) || Size == 0) return false;
      Bytes += Size, Length -= Size;
    }
    return true;
  }

  bool Finish (const NodeInfo &Source) override {
    std::vector<uint8_t> Buffer;
    if (!ReadInfo (File_, Buffer)) return false;
    auto *Info = reinterpret_cast<EFI_FILE_INFO *> (Buffer.data ());
    if (Source.Modified.Month >= 1) {
      EFI_TIME &T = Info->ModificationTime;
      T.Year = Source.Modified.Year, T.Month = Source.Modified.Month, T.Day = Source.Modified.Day;
      T.Hour = Source.Modified.Hour, T.Minute = Source.Modified.Minute, T.Second = Source.Modified.Second;
      T.Nanosecond = 0;
      EFI_GUID Guid = kFileInfoGuid;
      if (EFI_ERROR (File_->SetInfo (File_, &Guid, Buffer.size () - 2, Info))) return false;
    }
    return !EFI_ERROR (File_->Flush (File_));
  }

 private:
  static bool SameIgnoringCase (const std::string &A, const std::string &B) {
    if (A.size () != B.size ()) return false;
    for (size_t I = 0; I < A.size (); I++) {
      char X = A[I] >= 'a' && A[I] <= 'z' ? static_cast<char> (A[I] - 32) : A[I];
      char Y = B[I] >= 'a' && B[I] <= 'z' ? static_cast<char> (B[I] - 32) : B[I];
      if (X != Y) return false;
    }
    return true;
  }

  std::unique_ptr<FsNode> OpenChild (const std::string &Name, UINT64 Mode, UINT64 Attributes) {
    std::u16string Wide;
    if (!ValidName (Name) || !GbkToUtf16 (Name, Wide)) return nullptr;
    EFI_FILE_PROTOCOL *Child = nullptr;
    if (EFI_ERROR (File_->Open (File_, &Child, reinterpret_cast<CHAR16 *> (Wide.data ()), Mode, Attributes)) ||
        Child == nullptr)
      return nullptr;
    std::vector<std::string> Path = Path_;
    Path.push_back (Name);
    return std::make_unique<SfsNode> (Child, std::move (Path));
  }

  EFI_FILE_PROTOCOL *File_;
  std::vector<std::string> Path_;
};

class SfsVolume : public VolumeFs {
 public:
  SfsVolume (EFI_SIMPLE_FILE_SYSTEM_PROTOCOL *Fs, std::string RunTag) : Fs_ (Fs), RunTag_ (std::move (RunTag)) {}

  std::unique_ptr<FsNode> OpenRoot () override {
    EFI_FILE_PROTOCOL *Root = nullptr;
    if (EFI_ERROR (Fs_->OpenVolume (Fs_, &Root)) || Root == nullptr) return nullptr;
    return std::make_unique<SfsNode> (Root, std::vector<std::string> {});
  }

  void Flush () override {
    EFI_FILE_PROTOCOL *Root = nullptr;
    if (EFI_ERROR (Fs_->OpenVolume (Fs_, &Root)) || Root == nullptr) return;
    Root->Flush (Root);
    Root->Close (Root);
  }

  // Only this program changes the volume while it runs.
  bool StillAt (FsNode &, const std::vector<std::string> &) override { return true; }
  std::string RunTag () const override { return RunTag_; }
  bool RunEnded (const std::string &Tag) const override { return Tag != RunTag_; }

 private:
  EFI_SIMPLE_FILE_SYSTEM_PROTOCOL *Fs_;
  std::string RunTag_;
};

}  // namespace

std::unique_ptr<VolumeFs> OpenSfsVolume (EFI_HANDLE Device, const std::string &RunTag, SfsVolumeInfo *Info) {
  EFI_GUID Guid = kSimpleFileSystemGuid;
  EFI_SIMPLE_FILE_SYSTEM_PROTOCOL *Fs = nullptr;
  if (EFI_ERROR (gEnvBootServices->HandleProtocol (Device, &Guid, reinterpret_cast<VOID **> (&Fs))) || Fs == nullptr)
    return nullptr;
  EFI_FILE_PROTOCOL *Root = nullptr;
  if (EFI_ERROR (Fs->OpenVolume (Fs, &Root)) || Root == nullptr) return nullptr;
  if (Info != nullptr) {
    *Info = SfsVolumeInfo {};
    UINTN Size = 0;
    EFI_GUID SystemGuid = kFileSystemInfoGuid;
    if (Root->GetInfo (Root, &SystemGuid, &Size, nullptr) == EFI_BUFFER_TOO_SMALL) {
      std::vector<uint8_t> Buffer (Size + 2, 0);
      if (!EFI_ERROR (Root->GetInfo (Root, &SystemGuid, &Size, Buffer.data ()))) {
        const auto *System = reinterpret_cast<const EFI_FILE_SYSTEM_INFO *> (Buffer.data ());
        Info->ReadOnly = System->ReadOnly != 0;
        Utf16ToGbk (System->VolumeLabel, Info->Label);
      }
    }
    EFI_GUID BlockGuid = kBlockIoGuid;
    EFI_BLOCK_IO *Block = nullptr;
    if (!EFI_ERROR (gEnvBootServices->HandleProtocol (Device, &BlockGuid, reinterpret_cast<VOID **> (&Block))) &&
        Block != nullptr && Block->Media != nullptr && Block->Media->ReadOnly)
      Info->ReadOnly = true;
  }
  Root->Close (Root);
  return std::make_unique<SfsVolume> (Fs, RunTag);
}

}  // namespace env
