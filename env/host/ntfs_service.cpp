#include "env/host/ntfs_service.h"
#include "env/ascii_case.h"

#include <sys/stat.h>

#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "env/files/file_driver.h"
#include "env/host/environment.h"
#include "env/windows/window_base.h"
#include "services/file_driver.h"
#include "services/gui_driver.h"
#include "services/messages.h"
#include "services/window_base.h"

namespace env {

struct NtfsService::State {
  Environment &Env;
  WindowBase &Windows;
  FileDriver &Files;
  NTFS_SERVICE_PROTOCOL Table {};
  bool Ready = true;
  unsigned Opened = 0;
  State *Previous = nullptr;
  explicit State (Environment &E) : Env (E), Windows (E.windows ()), Files (E.files ()) {}
};

namespace {

NtfsService::State *gCurrent = nullptr;

// Host path of the entry Name whose entry word (low 32 bits of the inode) is
// Entry, searched breadth-first below Root; empty when not found.
std::string FindByName (const std::string &Root, const std::string &Name, uint32_t Entry) {
  namespace fs = std::filesystem;
  std::vector<fs::path> Queue {fs::path (Root)};
  size_t Seen = 0;
  for (size_t I = 0; I < Queue.size () && Seen < kNtfsSearchLimit; I++) {
    std::error_code Ec;
    fs::directory_iterator It (Queue[I], fs::directory_options::skip_permission_denied, Ec), End;
    for (; !Ec && It != End && Seen < kNtfsSearchLimit; It.increment (Ec)) {
      Seen++;
      const fs::path &P = It->path ();
      struct stat St;
      if (lstat (P.c_str (), &St) != 0 || S_ISLNK (St.st_mode)) continue;
      if (EqualIgnoringAsciiCase (P.filename ().string (), Name) && (uint32_t) St.st_ino == Entry) return P.string ();
      if (S_ISDIR (St.st_mode)) Queue.push_back (P);
    }
  }
  return {};
}

UINT8 EFIAPI AttributesHandler (WINDOW_HEADER *, MESSAGE *Message) {
  if (!Message) return 0;
  if (Message->Type == MSG_ACTIVATE) return 1;
  if (Message->Type == MSG_SYSCOMMAND && (Message->Word2 == SYSCMD_RESTORE || Message->Word2 == SYSCMD_CLOSE)) return 1;
  return 0;
}

VOID EFIAPI AttributesPaint (WINDOW_HEADER *Window, MESSAGE *Message, VOID *Extra) {
  if (!gCurrent) return;
  WINDOW_BASE_PROTOCOL *Base = gCurrent->Windows.Table ();
  if (Base && Base->DefaultPaint) Base->DefaultPaint (Window, Message, Extra);
}

VOID EFIAPI AttributesDestroy (WINDOW_HEADER *) {}

BOOLEAN EFIAPI PrepareOp () { return gCurrent && gCurrent->Ready ? TRUE : FALSE; }

WINDOW_HEADER *EFIAPI OpenAttributesWindowOp (UINT8 Volume, UINT32 EntryNumber, const CHAR8 *PathOrName, UINTN) {
  NtfsService::State *S = gCurrent;
  if (!S || !PathOrName || Volume >= VOLUME_COUNT) return nullptr;
  std::string Root = S->Env.HostFolder (Volume);
  if (Root.empty ()) return nullptr;
  WINDOW_BASE_PROTOCOL *Base = S->Windows.Table ();
  if (!Base || !Base->CreateWindow) return nullptr;

  std::string Text ((const char *) PathOrName);
  std::string Name = Text;
  size_t Slash = Name.find_last_of ('\\');
  if (Slash != std::string::npos) Name = Name.substr (Slash + 1);
  if (Name.empty ()) Name = "\\";

  std::vector<std::string> Lines;
  Lines.push_back ("Name: " + Name);
  Lines.push_back ("Entry: " + std::to_string (EntryNumber));
  const FILE_DRIVER_PROTOCOL *Fd = S->Files.Table ();
  Lines.push_back ("Volume: " + std::to_string (Volume) + " " + std::string ((const char *) Fd->Volumes[Volume].Label));
  // A path is looked up on the volume; a bare name by its entry number.
  NodeInfo Info;
  bool Found = false;
  if (!Text.empty () && Text[0] == '\\') {
    Found = S->Files.OpenPath (Volume, Text.c_str (), &Info) != nullptr;
  } else if (!Text.empty ()) {
    std::string Host = FindByName (Root, Text, EntryNumber);
    struct stat St;
    if (!Host.empty () && stat (Host.c_str (), &St) == 0) {
      Found = true;
      Info.Kind = S_ISDIR (St.st_mode) ? NodeKind::Directory : NodeKind::File;
      Info.Size = static_cast<uint64_t> (St.st_size);
      Info.Seconds = St.st_mtime;
    }
  }
  if (Found) {
    if (Info.Kind == NodeKind::Directory)
      Lines.push_back ("Size: folder");
    else
      Lines.push_back ("Size: " + std::to_string ((unsigned long long) Info.Size) + " bytes");
    char Date[64] = "";
    struct tm Local;
    time_t When = static_cast<time_t> (Info.Seconds);
    if (localtime_r (&When, &Local)) std::strftime (Date, sizeof Date, "%Y-%m-%d %H:%M:%S", &Local);
    Lines.push_back (std::string ("Modified: ") + Date);
  } else {
    Lines.push_back ("Not found on the volume");
  }

  UINT16 LineHeight = 16;
  if (Base->GuiDriver && Base->GuiDriver->GetLineHeight) LineHeight = Base->GuiDriver->GetLineHeight ();
  UINT16 Top = (UINT16) (Base->CaptionHeight + 8);
  UINT16 Height = (UINT16) (Top + Lines.size () * (LineHeight + 6) + 10);
  WINDOW_HEADER *Window = Base->CreateWindow (272, Base->Desktop, AttributesHandler, AttributesPaint,
                                              AttributesDestroy, 140, 120, 380, Height);
  if (!Window) return nullptr;
  S->Opened++;
  std::string Title = "Attributes - " + Name;
  if (Base->SetWindowText) Base->SetWindowText (Window, (const CHAR8 *) Title.c_str ());
  if (Base->CreateTextField)
    for (size_t I = 0; I < Lines.size (); I++)
      Base->CreateTextField (Window, 10, (UINT16) (Top + I * (LineHeight + 6)), 360, (UINT16) (LineHeight + 4), 0,
                             FALSE, (const CHAR8 *) Lines[I].c_str ());
  return Window;
}

}  // namespace

NtfsService::NtfsService (Environment &Env) : State_ (new State (Env)) {
  State_->Table.Version = 1;
  State_->Table.Prepare = PrepareOp;
  State_->Table.OpenAttributesWindow = OpenAttributesWindowOp;
  State_->Previous = gCurrent;
  gCurrent = State_.get ();
}

NtfsService::~NtfsService () {
  if (gCurrent == State_.get ()) gCurrent = State_->Previous;
}

NTFS_SERVICE_PROTOCOL *NtfsService::Table () { return &State_->Table; }
void NtfsService::SetReady (bool Ready) { State_->Ready = Ready; }
unsigned NtfsService::WindowsOpened () const { return State_->Opened; }

}  // namespace env
