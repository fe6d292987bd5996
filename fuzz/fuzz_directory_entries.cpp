// Directory entries of any bytes flowing into the main window's listing and
// into the comparison walk. The file driver's table is given a fuzz-fed
// OpenDirectory, ReadDirectory, GetListingNotes, GetFileInfo and ReadAt:
//   byte 0        switches: bit 0 short reads, bit 1 compare contents
//   bytes 1-24    the listing notes every listing reports
//   byte 25       how many of the records belong to the source volume
//   the rest      216-byte directory entry records, taken as they are (names
//                 without terminator, any sizes, dates and flags)
// Every folder down to two levels lists the records of its volume; deeper
// folders cannot be opened, so the walk ends. File contents are the input's
// bytes repeated, up to 32 MiB of reads per input.
#include <stddef.h>
#include <stdint.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "compare/compare_records.h"
#include "compare/file_comparison.h"
#include "compare/file_comparison_window.h"
#include "env/controls/control_driver.h"
#include "env/files/file_driver.h"
#include "filemanager/listing.h"
#include "filemanager/main_window.h"
#include "fuzz_session.h"
#include "platform/library.h"

namespace {

constexpr size_t kHeader = 26;
constexpr uint64_t kReadBudget = 32u << 20;

struct OpenFake {
  int Side;                     // 0 source, 1 backup
  const DIRECTORY_ENTRY *Entry; // the record the path names, null for a folder without one
};

struct Input {
  uint8_t Switches = 0;
  LISTING_NOTES Notes {};
  std::vector<DIRECTORY_ENTRY> Records[2];
  std::vector<uint8_t> Bytes;
  std::map<UINT16, OpenFake> Handles;
  UINT16 NextHandle = 1;
  uint64_t BytesRead = 0;
  UINT8 Volumes[2];
} gInput;

FILE_DRIVER_PROTOCOL gReal;

int SideOf (UINT8 Volume) {
  if (Volume == gInput.Volumes[0]) return 0;
  if (Volume == gInput.Volumes[1]) return 1;
  return -1;
}

// The record whose name is the last component of Path, when Path has one.
const DIRECTORY_ENTRY *Named (int Side, const std::string &Path) {
  size_t Slash = Path.find_last_of ('\\');
  std::string Last = Slash == std::string::npos ? Path : Path.substr (Slash + 1);
  if (Last.empty ()) return nullptr;
  for (const DIRECTORY_ENTRY &E : gInput.Records[Side])
    if (strnlen (reinterpret_cast<const char *> (E.Name), sizeof (E.Name)) == Last.size () &&
        std::memcmp (E.Name, Last.data (), Last.size ()) == 0)
      return &E;
  return nullptr;
}

UINT16 EFIAPI OpenDirectory (UINT8 Volume, const CHAR8 *Path) {
  int Side = SideOf (Volume);
  if (Side < 0 || Path == nullptr) return gReal.OpenDirectory (Volume, Path);
  std::string P (reinterpret_cast<const char *> (Path));
  size_t Depth = 0;
  for (size_t I = 1; I < P.size (); I++) Depth += P[I] == '\\';
  if (P.size () > 1 && P.back () != '\\') Depth++;
  if (Depth > 2 || gInput.Handles.size () > 64) return 0;
  UINT16 Handle = gInput.NextHandle++;
  if (gInput.NextHandle >= 0x7000) gInput.NextHandle = 1;
  gInput.Handles[Handle] = {Side, Named (Side, P)};
  return Handle;
}

OpenFake *Find (UINT16 Handle) {
  auto It = gInput.Handles.find (static_cast<UINT16> (Handle & 0x7FFF));
  return It == gInput.Handles.end () ? nullptr : &It->second;
}

VOID EFIAPI CloseHandle (UINT16 Handle) {
  if (gInput.Handles.erase (Handle) == 0) gReal.CloseHandle (Handle);
}

DIRECTORY_ENTRY *EFIAPI ReadDirectory (UINT16 Handle, UINT16 *Count) {
  OpenFake *Open = Find (Handle);
  if (Open == nullptr) return gReal.ReadDirectory (Handle, Count);
  const auto &Records = gInput.Records[Open->Side];
  *Count = static_cast<UINT16> (Records.size ());
  if (Records.empty ()) return nullptr;
  auto *Copy = static_cast<DIRECTORY_ENTRY *> (AllocatePool (Records.size () * sizeof (DIRECTORY_ENTRY)));
  if (Copy != nullptr) std::memcpy (Copy, Records.data (), Records.size () * sizeof (DIRECTORY_ENTRY));
  return Copy;
}

BOOLEAN EFIAPI GetListingNotes (UINT16 Handle, LISTING_NOTES *Notes) {
  if (Find (Handle) == nullptr) return gReal.GetListingNotes (Handle, Notes);
  *Notes = gInput.Notes;
  return TRUE;
}

BOOLEAN EFIAPI GetFileInfo (UINT16 Handle, FILE_INFO *Info) {
  OpenFake *Open = Find (Handle);
  if (Open == nullptr) return gReal.GetFileInfo (Handle, Info);
  std::memset (Info, 0, sizeof (*Info));
  Info->IsDirectory = Open->Entry == nullptr || Open->Entry->IsDirectory != 0;
  if (Open->Entry != nullptr) {
    Info->Size = Open->Entry->Size;
    Info->EntryWord = Open->Entry->EntryWord;
    std::memcpy (&Info->TimeStamp, &Open->Entry->Year, sizeof (UINT64));
  }
  return TRUE;
}

UINT32 EFIAPI ReadAt (UINT16 Handle, UINT64 Offset, VOID *Buffer, UINT32 Length) {
  OpenFake *Open = Find (Handle);
  if (Open == nullptr) return gReal.ReadAt (Handle, Offset, Buffer, Length);
  // A volume that fails once an input has read 32 MiB: files of any size
  // reach the read-error path instead of keeping an input for seconds.
  if (gInput.BytesRead > kReadBudget) return 0;
  gInput.BytesRead += Length;
  // The input repeated from Offset on: one pass of the input, then copies of
  // what is already filled, so a walk through a file of terabytes stays fast.
  auto *Out = static_cast<uint8_t *> (Buffer);
  const size_t Period = gInput.Bytes.size ();
  size_t Start = Offset % Period;
  size_t Filled = std::min<size_t> (Length, Period);
  for (size_t I = 0; I < Filled; I++) Out[I] = gInput.Bytes[(Start + I) % Period];
  while (Filled < Length) {
    size_t Step = std::min<size_t> (Filled, Length - Filled);
    std::memcpy (Out + Filled, Out, Step);
    Filled += Step;
  }
  return (gInput.Switches & 1) ? Length / 2 : Length;
}

fuzz::Session &Driver () {
  static fuzz::Session *S = [] {
    auto *New = new fuzz::Session (false);
    FILE_DRIVER_PROTOCOL *Table = New->Env->files ().Table ();
    gReal = *Table;
    Table->OpenDirectory = OpenDirectory;
    Table->CloseHandle = CloseHandle;
    Table->ReadDirectory = ReadDirectory;
    Table->GetListingNotes = GetListingNotes;
    Table->GetFileInfo = GetFileInfo;
    Table->ReadAt = ReadAt;
    gInput.Volumes[0] = static_cast<UINT8> (New->Volumes[0]);
    gInput.Volumes[1] = static_cast<UINT8> (New->Volumes[1]);
    return New;
  }();
  return *S;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  if (Size < kHeader) return 0;
  fuzz::Session &S = Driver ();
  gInput.Switches = Data[0];
  std::memcpy (&gInput.Notes, Data + 1, sizeof (LISTING_NOTES));
  size_t Count = (Size - kHeader) / sizeof (DIRECTORY_ENTRY);
  size_t SourceCount = Data[25] < Count ? Data[25] : Count;
  for (auto &Side : gInput.Records) Side.clear ();
  for (size_t I = 0; I < Count; I++) {
    DIRECTORY_ENTRY E;
    std::memcpy (&E, Data + kHeader + I * sizeof (E), sizeof (E));
    gInput.Records[I < SourceCount ? 0 : 1].push_back (E);
  }
  gInput.Bytes.assign (Data, Data + Size);
  gInput.BytesRead = 0;

  auto *Main = reinterpret_cast<MAIN_WINDOW *> (
      S.Surveyor->OpenVolumeWindow (0, 0, gInput.Volumes[0], nullptr, nullptr));
  fuzz::Check (Main != nullptr);
  UINT16 Rows = Main->List->RowCount;
  fuzz::Check (Rows <= gInput.Records[0].size ());
  for (UINT16 Row = 0; Row < Rows && Row < 8; Row++) {
    ShowSelection (Main, Row, 1);
    OpenItem (Main, Row);
  }
  ShowSelection (Main, Rows, 0);
  S.Env->windows ().DestroyAllWindows ();

  auto *Window = reinterpret_cast<FILE_COMPARISON_WINDOW *> (
      OpenFileComparison (gInput.Volumes[0], gInput.Volumes[1], fuzz::A8 ("\\")));
  fuzz::Check (Window != nullptr);
  if (Window->Job != nullptr) Window->Job->CompareContents = (gInput.Switches & 2) ? 1 : 0;
  S.RunTimers (20000);
  // Closing the window cancels a job that is still walking.
  S.EndInput ();
  fuzz::Check (gInput.Handles.empty ());
  return 0;
}
