#include "env/jobio/jobio_driver.h"

#include <algorithm>
#include <cstring>

#include "env/ascii_case.h"
#include "env/files/file_driver.h"
#include "env/files/volume_path.h"
#include "env/windows/window_base.h"
#include "services/messages.h"
#include "services/window_base.h"

namespace env {

namespace {

constexpr unsigned kMaxCopyDepth = 256;
constexpr size_t kCopyChunk = 64 * 1024;
constexpr size_t kMaxReportedRemains = 12;

bool IsBareName (const char *Name) {
  if (!Name || !Name[0]) return false;
  if (std::strcmp (Name, ".") == 0 || std::strcmp (Name, "..") == 0) return false;
  for (const char *P = Name; *P; P++)
    if (*P == '\\' || *P == '/') return false;
  return true;
}

std::string JoinPath (const std::string &Directory, const std::string &Name) {
  std::string Path = Directory;
  if (Path.empty () || Path.back () != '\\') Path += '\\';
  return Path + Name;
}

const ListedEntry *FindEntry (const std::vector<ListedEntry> &Entries, const std::string &Name, bool CaseInsensitive) {
  for (const ListedEntry &E : Entries)
    if (SameEntryName (E.Name, Name, CaseInsensitive)) return &E;
  return nullptr;
}

bool SameObject (const NodeInfo &Now, const NodeInfo &Seen) {
  if (Now.Link != Seen.Link || Now.Kind != Seen.Kind) return false;
  return Now.Identity == 0 || Seen.Identity == 0 || Now.Identity == Seen.Identity;
}

}  // namespace

struct JobioDriver::State {
  FileDriver &Files;
  WindowBase *Windows;
  JOBIO_DRIVER_PROTOCOL Table {};
  State *Previous = nullptr;

  struct Held {
    std::string Name;
    NodeInfo Seen;
  };
  uint32_t NextId = 1;
  uint32_t Id = 0;
  int Volume = -1;
  std::string Directory;
  std::vector<Held> Names;
  // The clipboard's folder as opened by BeginClipboard, and its entries when
  // a name had to be looked up there.
  std::shared_ptr<FsNode> Folder;
  std::vector<std::string> FolderPath;
  std::vector<ListedEntry> FolderEntries;
  bool FolderListed = false;
  unsigned Notifications = 0;
  long long FailAfter = -1;   // bytes a copy may still write before it is made to fail
  unsigned TempCounter = 0;
  std::vector<std::string> Remaining;

  State (FileDriver &Fd, WindowBase *W) : Files (Fd), Windows (W) {}

  bool Has () const { return !Names.empty (); }

  void Announce (bool Before) {
    bool Now = Has ();
    if (Now == Before) return;
    Notifications++;
    if (!Windows) return;
    WINDOW_BASE_PROTOCOL *Base = Windows->Table ();
    if (!Base || !Base->SendMessage) return;
    for (WINDOW_HEADER *Window : Windows->TopLevelWindows ()) {
      MESSAGE Message {};
      Message.Type = MSG_CLIPBOARD;
      Message.Code = Now ? 1 : 0;
      Base->SendMessage (Window, &Message);
    }
  }

  // ---------------------------------------------------------------- copying

  bool CopyData (FsNode &From, FsNode &To, uint64_t Size) {
    std::vector<uint8_t> Buffer (kCopyChunk);
    uint64_t Offset = 0;
    for (;;) {
      uint32_t N = From.ReadAt (Offset, Buffer.data (), static_cast<uint32_t> (Buffer.size ()));
      if (N == 0) return Offset >= Size;
      if (FailAfter >= 0) {
        if (FailAfter < static_cast<long long> (N)) {
          FailAfter = -1;
          return false;
        }
        FailAfter -= N;
      }
      if (!To.Write (Buffer.data (), N)) return false;
      Offset += N;
    }
  }

  // Copies the entry Source (described by Info) of the directory From to the
  // new entry Name of the directory To.
  bool CopyEntry (FsNode &From, const std::string &Source, const NodeInfo &Info, FsNode &To, const std::string &Name,
                  unsigned Depth) {
    if (Info.Link) {
      std::string Target;
      return From.ReadLink (Source, Target) && To.MakeLink (Name, Target);
    }
    std::unique_ptr<FsNode> In = From.Open (Source);
    NodeInfo Now;
    if (!In || !In->Describe (Now) || Now.Kind != Info.Kind) return false;
    std::unique_ptr<FsNode> Out = To.Create (Name, Info.Kind);
    if (!Out) return false;
    bool Ok = Info.Kind == NodeKind::Directory ? CopyTree (*In, *Out, Depth + 1) : CopyData (*In, *Out, Now.Size);
    return Ok && Out->Finish (Now);
  }

  bool CopyTree (FsNode &From, FsNode &To, unsigned Depth) {
    if (Depth > kMaxCopyDepth) return false;
    std::vector<ListedEntry> Entries;
    ListGaps Gaps;
    // Entries that cannot be read would be missing from the copy: fail instead.
    if (!From.List (Entries, Gaps) || Gaps.NameTooLong + Gaps.NameUnusable + Gaps.Unreadable != 0) return false;
    for (const ListedEntry &E : Entries)
      if (!CopyEntry (From, E.Name, E.Info, To, E.Name, Depth)) return false;
    return true;
  }

  // ---------------------------------------------------------------- removing

  // Removes the entry Name of Parent if it is still what Seen describes,
  // folders with everything in them; what remains is added to Remaining
  // (shown as Shown).
  bool RemoveTree (FsNode &Parent, const std::string &Name, const NodeInfo &Seen, const std::string &Shown,
                   unsigned Depth = 0) {
    if (Seen.Kind == NodeKind::Directory && !Seen.Link) {
      std::unique_ptr<FsNode> Folder = Depth <= kMaxCopyDepth ? Parent.Open (Name) : nullptr;
      NodeInfo Now;
      if (!Folder || !Folder->Describe (Now) || Now.Kind != NodeKind::Directory ||
          (Seen.Identity != 0 && Now.Identity != 0 && Now.Identity != Seen.Identity)) {
        Remaining.push_back (Shown + "  (changed since it was listed)");
        return false;
      }
      std::vector<ListedEntry> Entries;
      ListGaps Gaps;
      bool Ok = Folder->List (Entries, Gaps) && Gaps.NameTooLong + Gaps.NameUnusable + Gaps.Unreadable == 0;
      for (const ListedEntry &E : Entries) Ok = RemoveTree (*Folder, E.Name, E.Info, Shown + "\\" + E.Name, Depth + 1) && Ok;
      if (!Ok) return false;
    }
    if (Parent.Remove (Name, Seen)) return true;
    Remaining.push_back (Shown + "  (could not be removed)");
    return false;
  }

  // ------------------------------------------------------------------ paste

  std::string TempName (VolumeFs &Fs, const std::vector<ListedEntry> &Existing, bool CaseInsensitive) {
    for (;;) {
      std::string Name = kPartialPrefix + Fs.RunTag () + "-" + std::to_string (++TempCounter);
      if (!FindEntry (Existing, Name, CaseInsensitive)) return Name;
    }
  }

  // Removes what pastes of runs that have ended left in Folder.
  void RemoveLeftovers (VolumeFs &Fs, FsNode &Folder, const std::vector<ListedEntry> &Entries) {
    const size_t Prefix = std::strlen (kPartialPrefix);
    for (const ListedEntry &E : Entries) {
      if (E.Name.compare (0, Prefix, kPartialPrefix) != 0) continue;
      size_t Dash = E.Name.rfind ('-');
      if (Dash == std::string::npos || Dash < Prefix) continue;
      if (!Fs.RunEnded (E.Name.substr (Prefix, Dash - Prefix))) continue;
      RemoveTree (Folder, E.Name, E.Info, E.Name);
    }
    Remaining.clear ();
  }

  // Whether the folder Source lies on the way to the directory named by
  // Target (both on Volume): by identity where the volume knows it, else by path.
  bool InsideItself (int OnVolume, const NodeInfo &Source, const std::vector<std::string> &SourcePath,
                     const std::vector<std::string> &Target) {
    bool Fold = Files.CaseInsensitive (OnVolume);
    for (size_t Length = 0; Length <= Target.size (); Length++) {
      std::string Path = "\\";
      for (size_t I = 0; I < Length; I++) Path = JoinPath (Path, Target[I]);
      NodeInfo Info;
      if (Source.Identity != 0 && Files.OpenPath (OnVolume, Path.c_str (), &Info) && Info.Identity == Source.Identity)
        return true;
    }
    if (SourcePath.size () > Target.size ()) return false;
    for (size_t I = 0; I < SourcePath.size (); I++)
      if (!SameEntryName (SourcePath[I], Target[I], Fold)) return false;
    return true;
  }

  uint32_t Paste (int ToVolume, const char *ToDirectory) {
    if (!Has () || Volume < 0) return kPasteNothing;
    if (!ToDirectory || !Files.Mounted (ToVolume) || Files.WriteProtected (ToVolume)) return kPasteBadTarget;
    std::vector<std::string> TargetPath;
    NodeInfo TargetInfo;
    std::shared_ptr<FsNode> Target = Files.OpenPath (ToVolume, ToDirectory, &TargetInfo);
    if (!Target || TargetInfo.Kind != NodeKind::Directory || !SplitVolumePath (ToDirectory, TargetPath))
      return kPasteBadTarget;
    if (!Folder) return kPasteSourceGone;
    FsNode *Source = Folder.get ();
    const std::vector<std::string> &SourcePath = FolderPath;

    std::vector<ListedEntry> Sources, Existing;
    ListGaps Gaps;
    if (!Source->List (Sources, Gaps)) return kPasteSourceGone;
    if (!Target->List (Existing, Gaps)) return kPasteBadTarget;
    VolumeFs &Fs = *Files.Volume (ToVolume);
    RemoveLeftovers (Fs, *Target, Existing);
    Target->List (Existing, Gaps);

    bool SourceFold = Files.CaseInsensitive (Volume), TargetFold = Files.CaseInsensitive (ToVolume);
    std::vector<ListedEntry> Items;
    for (const Held &H : Names) {
      const ListedEntry *E = FindEntry (Sources, H.Name, SourceFold);
      if (E == nullptr) return kPasteSourceGone;
      Items.push_back (*E);
    }
    for (const ListedEntry &Item : Items) {
      if (Item.Info.Kind != NodeKind::Directory || Item.Info.Link || ToVolume != Volume) continue;
      std::vector<std::string> ItemPath = SourcePath;
      ItemPath.push_back (Item.Name);
      if (InsideItself (Volume, Item.Info, ItemPath, TargetPath)) return kPasteIntoItself;
    }
    for (const ListedEntry &Item : Items)
      if (FindEntry (Existing, Item.Name, TargetFold)) return kPasteNameClash;

    // Each item is written under a temporary name, then renamed into place.
    struct Made {
      std::string Name;
      NodeInfo Info;
    };
    std::vector<Made> Done;
    bool Ok = true;
    for (const ListedEntry &Item : Items) {
      std::string Temp = TempName (Fs, Existing, TargetFold);
      Ok = CopyEntry (*Source, Item.Name, Item.Info, *Target, Temp, 0);
      NodeInfo Info = Item.Info;
      Info.Identity = 0;
      if (std::unique_ptr<FsNode> Written = Ok && !Item.Info.Link ? Target->Open (Temp) : nullptr) {
        Written->Describe (Info);
        Info.Link = false;
      }
      if (Ok) Ok = Target->Rename (Temp, Item.Name);
      if (!Ok) {
        RemoveTree (*Target, Temp, Info, Temp);
        break;
      }
      Done.push_back (Made {Item.Name, Info});
    }
    FailAfter = -1;
    if (!Ok) {
      for (auto It = Done.rbegin (); It != Done.rend (); ++It) RemoveTree (*Target, It->Name, It->Info, It->Name);
      Remaining.clear ();
    }
    Files.Forget (ToVolume);
    Fs.Flush ();
    return Ok ? kPasteDone : kPasteFailed;
  }

  // ----------------------------------------------------------------- delete

  uint32_t Delete () {
    if (!Has ()) return 0;
    bool Before = Has ();
    uint32_t Result = 1;
    Remaining.clear ();
    if (Files.WriteProtected (Volume)) {
      Result = 0;
    } else if (Folder) {
      std::vector<ListedEntry> Now;
      ListGaps Gaps;
      Folder->List (Now, Gaps);
      for (const Held &H : Names) {
        const ListedEntry *E = FindEntry (Now, H.Name, false);
        if (E == nullptr) continue;   // already gone
        if (!SameObject (E->Info, H.Seen)) {
          Remaining.push_back (H.Name + "  (changed since it was listed)");
          continue;
        }
        RemoveTree (*Folder, H.Name, H.Seen, H.Name);
      }
      if (!Remaining.empty ()) Result = kDeleteIncomplete;
    }
    Files.Forget (Volume);
    if (VolumeFs *Fs = Files.Volume (Volume)) Fs->Flush ();
    Names.clear ();
    Folder.reset ();
    Id = 0;
    if (Result == kDeleteIncomplete) Explain ();
    Announce (Before);
    return Result;
  }

  // Says which entries an incomplete delete left, in a message box.
  void Explain () {
    if (!Windows || !Windows->Table ()->MessageBox) return;
    std::string Text = "These were not deleted:";
    for (size_t I = 0; I < Remaining.size () && I < kMaxReportedRemains; I++) Text += "\n" + Remaining[I];
    if (Remaining.size () > kMaxReportedRemains)
      Text += "\nand " + std::to_string (Remaining.size () - kMaxReportedRemains) + " more";
    Windows->Table ()->MessageBox (1, reinterpret_cast<const CHAR8 *> (Text.c_str ()),
                                   reinterpret_cast<const CHAR8 *> ("Delete"), 0);
  }

  bool DeleteOne (int OnVolume, const char *Path) {
    if (!Path || Files.WriteProtected (OnVolume)) return false;
    std::string Name;
    std::vector<std::string> ParentPath;
    std::shared_ptr<FsNode> Parent = Files.OpenParent (OnVolume, Path, Name, &ParentPath);
    if (!Parent) return false;
    std::vector<ListedEntry> Now;
    ListGaps Gaps;
    if (!Parent->List (Now, Gaps)) return false;
    const ListedEntry *E = FindEntry (Now, Name, false);
    NodeInfo Seen;
    if (E == nullptr) return false;
    if (!Files.ListedInfo (OnVolume, ParentPath, Name, Seen)) Seen = E->Info;
    bool Done = SameObject (E->Info, Seen) && Parent->Remove (Name, Seen);
    Files.Forget (OnVolume);
    return Done;
  }
};

namespace {

JobioDriver::State *gCurrent = nullptr;
JobioDriver::State *Current () { return gCurrent; }

UINT32 EFIAPI BeginClipboardOp (UINT8 Volume, const CHAR8 *Directory) {
  JobioDriver::State *S = Current ();
  NodeInfo Info;
  std::vector<std::string> Path;
  std::shared_ptr<FsNode> Folder = S && Directory ? S->Files.OpenPath (Volume, (const char *) Directory, &Info) : nullptr;
  if (!Folder || Info.Kind != NodeKind::Directory || !SplitVolumePath ((const char *) Directory, Path)) return 0;
  S->Folder = std::move (Folder);
  S->FolderPath = std::move (Path);
  S->FolderEntries.clear ();
  S->FolderListed = false;
  bool Before = S->Has ();
  S->Id = S->NextId++;
  if (S->NextId == 0) S->NextId = 1;
  S->Volume = Volume;
  S->Directory = (const char *) Directory;
  S->Names.clear ();
  S->Announce (Before);
  return S->Id;
}

BOOLEAN EFIAPI AddToClipboardOp (UINT32 Id, const CHAR8 *Name) {
  JobioDriver::State *S = Current ();
  if (!S || Id == 0 || Id != S->Id || !S->Folder || !IsBareName ((const char *) Name)) return FALSE;
  std::string Text ((const char *) Name);
  if (!S->Folder->Open (Text)) return FALSE;
  for (const JobioDriver::State::Held &H : S->Names)
    if (H.Name == Text) return TRUE;
  // How the user saw it: in the folder's latest listing, else as it is now.
  JobioDriver::State::Held Entry {Text, {}};
  if (!S->Files.ListedInfo (S->Volume, S->FolderPath, Text, Entry.Seen)) {
    if (!S->FolderListed) {
      ListGaps Gaps;
      S->FolderListed = S->Folder->List (S->FolderEntries, Gaps);
    }
    const ListedEntry *E = FindEntry (S->FolderEntries, Text, false);
    if (E == nullptr) return FALSE;
    Entry.Seen = E->Info;
  }
  bool Before = S->Has ();
  S->Names.push_back (Entry);
  S->Announce (Before);
  return TRUE;
}

BOOLEAN EFIAPI HasClipboardOp () {
  JobioDriver::State *S = Current ();
  return S && S->Has () ? TRUE : FALSE;
}

UINT32 EFIAPI PasteClipboardOp (UINT8 Volume, const CHAR8 *Directory) {
  JobioDriver::State *S = Current ();
  return S ? S->Paste (Volume, (const char *) Directory) : kPasteNothing;
}

UINT32 EFIAPI DeleteClipboardFilesOp () {
  JobioDriver::State *S = Current ();
  return S ? S->Delete () : 0;
}

BOOLEAN EFIAPI DeleteFileOp (UINT8 Volume, const CHAR8 *Path) {
  JobioDriver::State *S = Current ();
  return S && S->DeleteOne (Volume, (const char *) Path) ? TRUE : FALSE;
}

}  // namespace

JobioDriver::JobioDriver (FileDriver &Files, WindowBase *Windows, uint32_t Version)
    : State_ (new State (Files, Windows)) {
  JOBIO_DRIVER_PROTOCOL &T = State_->Table;
  T.Version = Version;
  T.BeginClipboard = BeginClipboardOp;
  T.AddToClipboard = AddToClipboardOp;
  T.HasClipboard = HasClipboardOp;
  T.PasteClipboard = PasteClipboardOp;
  T.DeleteClipboardFiles = DeleteClipboardFilesOp;
  T.DeleteFile = DeleteFileOp;
  State_->Previous = gCurrent;
  gCurrent = State_.get ();
}

JobioDriver::~JobioDriver () {
  if (gCurrent == State_.get ()) gCurrent = State_->Previous;
}

JOBIO_DRIVER_PROTOCOL *JobioDriver::Table () { return &State_->Table; }

int JobioDriver::ClipboardVolume () const { return State_->Has () ? State_->Volume : -1; }
std::string JobioDriver::ClipboardDirectory () const { return State_->Directory; }
std::vector<std::string> JobioDriver::ClipboardNames () const {
  std::vector<std::string> Out;
  for (const State::Held &H : State_->Names) Out.push_back (H.Name);
  return Out;
}
unsigned JobioDriver::NotificationCount () const { return State_->Notifications; }
void JobioDriver::FailCopyAfter (long long Bytes) { State_->FailAfter = Bytes; }
const std::vector<std::string> &JobioDriver::LastRemaining () const { return State_->Remaining; }

}  // namespace env
