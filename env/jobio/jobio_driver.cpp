#include "env/jobio/jobio_driver.h"
#include "env/ascii_case.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "env/files/file_driver.h"
#include "env/files/host_path.h"
#include "env/windows/window_base.h"
#include "services/messages.h"
#include "services/window_base.h"

namespace env {

namespace {


bool IsBareName (const char *Name) {
  if (!Name || !Name[0]) return false;
  if (std::strcmp (Name, ".") == 0 || std::strcmp (Name, "..") == 0) return false;
  for (const char *P = Name; *P; P++)
    if (*P == '\\' || *P == '/') return false;
  return true;
}

// The canonical form of an existing host path, empty when it cannot be found.
std::string RealPath (const std::string &Path) {
  char *Real = realpath (Path.c_str (), nullptr);
  if (!Real) return {};
  std::string Out (Real);
  std::free (Real);
  return Out;
}

// True for an existing regular file or folder (links followed).
bool IsFileOrFolder (const std::string &Path, struct stat *Info = nullptr) {
  struct stat St;
  if (stat (Path.c_str (), &St) != 0) return false;
  if (Info) *Info = St;
  return S_ISREG (St.st_mode) || S_ISDIR (St.st_mode);
}

bool IsFolder (const std::string &Path) {
  struct stat St;
  return stat (Path.c_str (), &St) == 0 && S_ISDIR (St.st_mode);
}

}  // namespace

struct JobioDriver::State {
  Firmware &Fw;
  FileDriver &Files;
  WindowBase *Windows;
  JOBIO_DRIVER_PROTOCOL Table {};
  State *Previous = nullptr;

  uint32_t NextId = 1;
  uint32_t Id = 0;
  int Volume = -1;
  std::string Directory;
  std::vector<std::string> Names;
  unsigned Notifications = 0;
  long long FailAfter = -1;   // bytes a copy may still write before it is made to fail

  State (Firmware &F, FileDriver &Fd, WindowBase *W) : Fw (F), Files (Fd), Windows (W) {}

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

  // Host path of Directory\Name on Volume, empty when refused.
  std::string Resolve (int OnVolume, const std::string &Dir, const std::string &Name) const {
    std::string Path = Dir;
    if (!Name.empty ()) {
      if (Path.empty () || Path.back () != '\\') Path += '\\';
      Path += Name;
    }
    return Files.ResolvePath (OnVolume, Path.c_str ());
  }

  std::string VolumeRoot (int OnVolume) const { return RealPath (Files.HostPath (OnVolume)); }

  // ---------------------------------------------------------------- copying
  bool CopyData (int In, int Out) {
    char Buffer[65536];
    for (;;) {
      ssize_t N = read (In, Buffer, sizeof Buffer);
      if (N < 0) return false;
      if (N == 0) return true;
      if (FailAfter >= 0) {
        if (FailAfter < N) {
          FailAfter = -1;
          return false;
        }
        FailAfter -= N;
      }
      ssize_t Done = 0;
      while (Done < N) {
        ssize_t W = write (Out, Buffer + Done, (size_t) (N - Done));
        if (W <= 0) return false;
        Done += W;
      }
    }
  }

  bool CopyFile (const std::string &From, const std::string &To, bool *Created = nullptr) {
    int In = open (From.c_str (), O_RDONLY | O_CLOEXEC);
    if (In < 0) return false;
    struct stat St;
    if (fstat (In, &St) != 0 || !S_ISREG (St.st_mode)) {
      close (In);
      return false;
    }
    // O_EXCL: an entry that appeared meanwhile is never overwritten.
    int Out = open (To.c_str (), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, St.st_mode & 0777);
    if (Out < 0) {
      close (In);
      return false;
    }
    if (Created) *Created = true;
    bool Ok = CopyData (In, Out);
    struct timespec Times[2] = {St.st_atim, St.st_mtim};
    if (Ok && futimens (Out, Times) != 0) Ok = false;
    if (close (Out) != 0) Ok = false;
    close (In);
    return Ok;
  }

  // Copies the folder From (its contents and time) to the new folder To.
  bool CopyFolder (const std::string &From, const std::string &To, const std::string &Root, unsigned Depth,
                   bool *Created = nullptr) {
    if (Depth > 256) return false;
    struct stat St;
    if (stat (From.c_str (), &St) != 0) return false;
    if (mkdir (To.c_str (), (St.st_mode & 0777) | 0700) != 0) return false;
    if (Created) *Created = true;
    DIR *Dir = opendir (From.c_str ());
    if (!Dir) return false;
    bool Ok = true;
    while (Ok) {
      errno = 0;
      struct dirent *E = readdir (Dir);
      if (!E) {
        if (errno != 0) Ok = false;
        break;
      }
      if (std::strcmp (E->d_name, ".") == 0 || std::strcmp (E->d_name, "..") == 0) continue;
      std::string Source = From + "/" + E->d_name, Target = To + "/" + E->d_name;
      struct stat Entry;
      if (lstat (Source.c_str (), &Entry) != 0) {
        Ok = false;
        break;
      }
      if (S_ISLNK (Entry.st_mode)) {
        // A linked file inside the volume is copied as a file; links to
        // folders and links leading out are left out.
        struct stat Target2;
        if (stat (Source.c_str (), &Target2) == 0 && S_ISREG (Target2.st_mode) && StaysInside (Root, Source))
          Ok = CopyFile (Source, Target);
        continue;
      }
      if (S_ISREG (Entry.st_mode))
        Ok = CopyFile (Source, Target);
      else if (S_ISDIR (Entry.st_mode))
        Ok = CopyFolder (Source, Target, Root, Depth + 1);
    }
    closedir (Dir);
    if (Ok) {
      struct timespec Times[2] = {St.st_atim, St.st_mtim};
      if (utimensat (AT_FDCWD, To.c_str (), Times, 0) != 0) Ok = false;
    }
    return Ok;
  }

  uint32_t Paste (int ToVolume, const char *ToDirectory) {
    if (!Has () || Volume < 0) return kPasteNothing;
    if (ToVolume < 0 || ToVolume >= 24 || !ToDirectory) return kPasteBadTarget;
    if (Files.WriteProtected (ToVolume)) return kPasteBadTarget;
    std::string Target = Files.ResolvePath (ToVolume, ToDirectory);
    if (Target.empty () || !IsFolder (Target)) return kPasteBadTarget;
    std::string TargetReal = RealPath (Target);
    std::string SourceRoot = VolumeRoot (Volume);
    if (TargetReal.empty () || SourceRoot.empty ()) return kPasteBadTarget;

    // Names already in the destination (a clash ignores the case of ASCII letters).
    std::vector<std::string> Existing;
    if (DIR *Dir = opendir (Target.c_str ())) {
      while (struct dirent *E = readdir (Dir)) Existing.push_back (E->d_name);
      closedir (Dir);
    } else {
      return kPasteBadTarget;
    }

    std::vector<std::string> Sources;
    for (const std::string &Name : Names) {
      std::string Source = Resolve (Volume, Directory, Name);
      if (Source.empty () || !IsFileOrFolder (Source)) return kPasteSourceGone;
      Sources.push_back (Source);
    }
    for (size_t I = 0; I < Names.size (); I++) {
      if (!IsFolder (Sources[I])) continue;
      std::string SourceReal = RealPath (Sources[I]);
      if (SourceReal.empty ()) return kPasteSourceGone;
      if (TargetReal == SourceReal || TargetReal.compare (0, SourceReal.size () + 1, SourceReal + "/") == 0)
        return kPasteIntoItself;
    }
    for (const std::string &Name : Names)
      for (const std::string &Other : Existing)
        if (EqualIgnoringAsciiCase (Name, Other)) return kPasteNameClash;

    std::vector<std::string> Made;
    bool Ok = true;
    for (size_t I = 0; I < Names.size () && Ok; I++) {
      std::string To = Target + "/" + Names[I];
      // Only entries this paste created are ever removed again.
      bool Created = false;
      if (IsFolder (Sources[I]))
        Ok = CopyFolder (Sources[I], To, SourceRoot, 0, &Created);
      else
        Ok = CopyFile (Sources[I], To, &Created);
      if (Created) Made.push_back (To);
    }
    FailAfter = -1;
    if (Ok) return kPasteDone;
    for (const std::string &Path : Made) {
      std::error_code Ec;
      std::filesystem::remove_all (Path, Ec);
    }
    return kPasteFailed;
  }

  uint32_t Delete () {
    if (!Has ()) return 0;
    bool Before = Has ();
    uint32_t Result = 1;
    if (Files.WriteProtected (Volume)) {
      Result = 0;
    } else {
      for (const std::string &Name : Names) {
        std::string Path = Resolve (Volume, Directory, Name);
        if (Path.empty ()) {
          Result = 0;
          continue;
        }
        struct stat St;
        if (lstat (Path.c_str (), &St) != 0) continue;   // already gone
        std::error_code Ec;
        std::filesystem::remove_all (Path, Ec);
        if (Ec || lstat (Path.c_str (), &St) == 0) Result = 0;
      }
    }
    Names.clear ();
    Id = 0;
    Announce (Before);
    return Result;
  }
};

namespace {

JobioDriver::State *gCurrent = nullptr;
JobioDriver::State *Current () { return gCurrent; }

UINT32 EFIAPI BeginClipboardOp (UINT8 Volume, const CHAR8 *Directory) {
  JobioDriver::State *S = Current ();
  if (!S || !Directory) return 0;
  std::string Host = S->Files.ResolvePath (Volume, (const char *) Directory);
  if (Host.empty () || !IsFolder (Host)) return 0;
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
  if (!S || Id == 0 || Id != S->Id || !IsBareName ((const char *) Name)) return FALSE;
  std::string Text ((const char *) Name);
  std::string Host = S->Resolve (S->Volume, S->Directory, Text);
  if (Host.empty () || !IsFileOrFolder (Host)) return FALSE;
  for (const std::string &Held : S->Names)
    if (Held == Text) return TRUE;
  bool Before = S->Has ();
  S->Names.push_back (Text);
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
  if (!S || !Path || S->Files.WriteProtected (Volume)) return FALSE;
  std::string Host = S->Files.ResolvePath (Volume, (const char *) Path);
  if (Host.empty ()) return FALSE;
  std::string Root = S->VolumeRoot (Volume);
  std::string Parent = RealPath (std::filesystem::path (Host).parent_path ().string ());
  if (Root.empty () || Parent.empty () || Host == Root || RealPath (Host) == Root) return FALSE;
  struct stat St;
  if (lstat (Host.c_str (), &St) != 0) return FALSE;
  if (S_ISDIR (St.st_mode)) return rmdir (Host.c_str ()) == 0 ? TRUE : FALSE;
  return unlink (Host.c_str ()) == 0 ? TRUE : FALSE;
}

}  // namespace

JobioDriver::JobioDriver (Firmware &Fw, FileDriver &Files, WindowBase *Windows, uint32_t Version)
    : State_ (new State (Fw, Files, Windows)) {
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
std::vector<std::string> JobioDriver::ClipboardNames () const { return State_->Names; }
unsigned JobioDriver::NotificationCount () const { return State_->Notifications; }
void JobioDriver::FailCopyAfter (long long Bytes) { State_->FailAfter = Bytes; }

}  // namespace env
