#include "support/folder_override.h"

#include <cstdio>
#include <cstring>
#include <set>

#include "platform/library.h"

namespace {

struct Override {
  FILE_DRIVER_PROTOCOL Real;
  std::string Path;
  LISTING_NOTES Notes;
  uint32_t Count;
  std::set<UINT16> Handles;
} *gOverride;

UINT16 EFIAPI OpenDirectory (UINT8 Volume, const CHAR8 *Path) {
  UINT16 Handle = gOverride->Real.OpenDirectory (Volume, Path);
  if (Handle != 0 && Path != nullptr && gOverride->Path == reinterpret_cast<const char *> (Path))
    gOverride->Handles.insert (Handle);
  return Handle;
}

VOID EFIAPI CloseHandle (UINT16 Handle) {
  gOverride->Handles.erase (Handle);
  gOverride->Real.CloseHandle (Handle);
}

DIRECTORY_ENTRY *EFIAPI ReadDirectory (UINT16 Handle, UINT16 *Count) {
  if (gOverride->Handles.count (Handle) == 0) return gOverride->Real.ReadDirectory (Handle, Count);
  *Count = static_cast<UINT16> (gOverride->Count);
  if (gOverride->Count == 0) return nullptr;
  auto *Entries = static_cast<DIRECTORY_ENTRY *> (AllocateZeroPool (gOverride->Count * sizeof (DIRECTORY_ENTRY)));
  for (uint32_t I = 0; I < gOverride->Count; I++)
    std::snprintf (reinterpret_cast<char *> (Entries[I].Name), sizeof (Entries[I].Name), "f%u", I);
  return Entries;
}

BOOLEAN EFIAPI GetListingNotes (UINT16 Handle, LISTING_NOTES *Notes) {
  if (gOverride->Handles.count (Handle) == 0) return gOverride->Real.GetListingNotes (Handle, Notes);
  *Notes = gOverride->Notes;
  return TRUE;
}

}  // namespace

FolderOverride::FolderOverride (FILE_DRIVER_PROTOCOL *Table, std::string Path, const LISTING_NOTES &Notes,
                                uint32_t Count)
    : Table_ (Table), Saved_ (*Table) {
  gOverride = new Override {*Table, std::move (Path), Notes, Count, {}};
  Table->OpenDirectory = OpenDirectory;
  Table->CloseHandle = CloseHandle;
  Table->ReadDirectory = ReadDirectory;
  Table->GetListingNotes = GetListingNotes;
}

FolderOverride::~FolderOverride () {
  Table_->OpenDirectory = Saved_.OpenDirectory;
  Table_->CloseHandle = Saved_.CloseHandle;
  Table_->ReadDirectory = Saved_.ReadDirectory;
  Table_->GetListingNotes = Saved_.GetListingNotes;
  delete gOverride;
  gOverride = nullptr;
}

LISTING_NOTES UnreadableFolderNotes () {
  LISTING_NOTES Notes {};
  Notes.FolderUnreadable = 1;
  return Notes;
}
