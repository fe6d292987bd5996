// Listing of a main window's current directory and navigation between
// directories.
//
// CurrentPath always starts with "\" and is at most 511 characters. Depth is
// the number of components of CurrentPath (at most 63) and RowStack[Depth] the
// row to select when that level is shown again, so that going up returns to
// the row from which the user descended.
//
// A step into a directory whose path would not fit in CurrentPath is refused
// with a message box (text "fail_path_too_long", caption the directory name);
// the window keeps showing the directory it was on, and so does a step into a
// folder that cannot be read, after a message box. Status field 1 says how
// many entries the listing could not show and why.

#include "filemanager/listing.h"

#include "core/bindings.h"
#include "core/resource_format.h"
#include "core/strings.h"
#include "filemanager/file_types.h"
#include "filemanager/listing_notice.h"
#include "filemanager/main_window_internal.h"
#include "fileops/file_ops.h"
#include "menu_header/menu_header.h"
#include "platform/library.h"
#include "util/string_utils.h"

namespace {

constexpr UINTN CellSize = 64;
constexpr UINT16 StatusPathLimit = 250;
constexpr UINT16 MaxDepth = 63;
// Status field that says what the listing left out (field 0 is the path or
// selection, field 2 the file-system label).
constexpr UINT8 LeftOutField = 1;
constexpr UINT16 LeftOutTextSize = 128;

BOOLEAN EndsWithSeparator (const CHAR8 *Path) {
  UINT16 Length = StringLength (Path);
  return Length > 0 && Path[Length - 1] == '\\';
}

VOID SetSelectionCommandsEnabled (MAIN_WINDOW *Window, BOOLEAN Enable) {
  // Delete never becomes available on a write-protected volume.
  BOOLEAN EnableDelete = Enable && !Window->ReadOnly;
  if (Window->FilePopup != nullptr) {
    gWindowBase->EnableMenuItem (Window->FilePopup, DeleteCommand, EnableDelete);
    gWindowBase->EnableMenuItem (Window->FilePopup, CopyCommand, Enable);
  }
  if (Window->MenuBar != nullptr) {
    EnableHeaderItem (Window->MenuBar, DeleteCommand, EnableDelete, TRUE);
    EnableHeaderItem (Window->MenuBar, CopyCommand, Enable, TRUE);
  }
}

// Adds the row of an entry; false when the list has no room for it.
BOOLEAN AddEntryRow (MAIN_WINDOW *Window, DIRECTORY_ENTRY *Entry) {
  Entry->Name[sizeof (Entry->Name) - 1] = 0;
  BOOLEAN IsDirectory = Entry->IsDirectory != 0;
  UINT8 Icon;
  if (IsDirectory) {
    Icon = gFileIcons.Directory;
  } else {
    Icon = IconForName (Entry->Name);
    if (Icon >= ICON_NONE) Icon = gFileIcons.Unknown;
  }
  UINT16 Row = gControlDriver->AddListItem (Window->List, Icon, IsDirectory ? 1 : 0, Entry->EntryWord, Entry->Size,
                                            Entry);
  if (Row == 0xFFFF) return FALSE;

  CHAR8 Cell[CellSize];
  ZeroMem (Cell, sizeof (Cell));
  AsciiSPrint (Cell, sizeof (Cell), "%ld"_a, Entry->Size);
  GroupThousands (Cell);
  gControlDriver->SetItemText (Window->List, 1, Row, Cell);

  gControlDriver->SetItemText (Window->List, 2, Row,
                               IsDirectory ? GetString (nullptr, "TypeDirectory"_a) : " "_a);

  ZeroMem (Cell, sizeof (Cell));
  AsciiSPrint (Cell, sizeof (Cell), "%04d.%02d.%02d %02d:%02d:%02d"_a, (UINT32) Entry->Year, (UINT32) Entry->Month,
               (UINT32) Entry->Day, (UINT32) Entry->Hour, (UINT32) Entry->Minute, (UINT32) Entry->Second);
  gControlDriver->SetItemText (Window->List, 3, Row, Cell);
  return TRUE;
}

}  // namespace

VOID SetGoUpEnabled (MAIN_WINDOW *Window, BOOLEAN Enable) {
  if (Window->MenuBar != nullptr) EnableHeaderItem (Window->MenuBar, GoUpCommand, Enable, TRUE);
  if (Window->FilePopup != nullptr) gWindowBase->EnableMenuItem (Window->FilePopup, GoUpCommand, Enable);
}

BOOLEAN BuildFullPath (const MAIN_WINDOW *Window, const CHAR8 *Name, CHAR8 *Buffer) {
  UINT16 PathLength = StringLength (Window->CurrentPath);
  BOOLEAN AddSeparator = !EndsWithSeparator (Window->CurrentPath);
  UINTN Total = (UINTN) PathLength + (AddSeparator ? 1 : 0) + StringLength (Name);
  if (Total >= MAIN_PATH_SIZE) return FALSE;
  CopyString (Buffer, Window->CurrentPath);
  if (AddSeparator) AppendString (Buffer, "\\"_a);
  AppendString (Buffer, Name);
  return TRUE;
}

BOOLEAN LoadListing (MAIN_WINDOW *Window, const CHAR8 *Path, BOOLEAN *Unreadable) {
  if (Unreadable != nullptr) *Unreadable = FALSE;
  UINT16 Handle = gFileDriver->OpenDirectory (Window->VolumeIndex, Path);
  if (Handle == 0) return FALSE;
  UINT16 Count = 0;
  DIRECTORY_ENTRY *Entries = gFileDriver->ReadDirectory (Handle, &Count);
  LISTING_NOTES Notes;
  ReadListingNotes (Handle, &Notes);
  if (Window->DirHandle != 0) gFileDriver->CloseHandle (Window->DirHandle);
  Window->DirHandle = Handle;
  BOOLEAN FolderUnreadable = Entries == nullptr && Notes.FolderUnreadable != 0;
  UINT32 Refused = 0;
  if (Entries != nullptr) {
    for (UINT16 I = 0; I < Count; I++) {
      if (!AddEntryRow (Window, &Entries[I])) Refused++;
    }
    FreePool (Entries);
  }
  CHAR8 Notice[LeftOutTextSize];
  DescribeLeftOut (&Notes, Refused, Notice, sizeof (Notice));
  gWindowBase->SetStatusText (&Window->Header, LeftOutField, Notice);
  if (FolderUnreadable) {
    ReportUnreadableFolder (Path);
    if (Unreadable != nullptr) *Unreadable = TRUE;
  }
  return TRUE;
}

BOOLEAN Refresh (MAIN_WINDOW *Window) {
  if (Window->Volume != nullptr && Window->Volume->Kind == VOLUME_KIND_REOPEN && Window->DirHandle != 0) {
    gFileDriver->CloseHandle (Window->DirHandle);
    Window->DirHandle = 0;
  }
  LIST_CONTROL *List = Window->List;
  gControlDriver->ClearList (List);
  BOOLEAN Unreadable = FALSE;
  LoadListing (Window, Window->CurrentPath, &Unreadable);
  List->CurrentRow = Window->RowStack[Window->Depth];
  if (List->ScrollBar != nullptr && List->VisibleRows < List->RowCount) {
    gControlDriver->SetScrollPosition (List->ScrollBar, List->CurrentRow);
  }
  gWindowBase->Redraw (List);
  SetHeaderPath (Window->MenuBar, Window->CurrentPath, TRUE);
  ShowPathStatus (Window);
  return !Unreadable;
}

namespace {

BOOLEAN TryEnterDirectory (MAIN_WINDOW *Window, const CHAR8 *Name) {
  CHAR8 Path[MAIN_PATH_SIZE];
  if (!BuildFullPath (Window, Name, Path)) return FALSE;
  Window->RowStack[Window->Depth] = Window->List->CurrentRow;
  CopyString (Window->CurrentPath, Path);
  SetGoUpEnabled (Window, TRUE);
  if (Window->Depth < MaxDepth) {
    Window->Depth++;
    Window->RowStack[Window->Depth] = 0;
  }
  return TRUE;
}

}  // namespace

VOID EnterDirectory (MAIN_WINDOW *Window, const CHAR8 *Name) { TryEnterDirectory (Window, Name); }

BOOLEAN GoUp (MAIN_WINDOW *Window) {
  CHAR8 *Path = Window->CurrentPath;
  UINT16 Length = StringLength (Path);
  if (Length < 2) return FALSE;
  Path[Length - 1] = 0;
  for (UINT16 I = (UINT16) (Length - 2); I >= 1; I--) {
    CHAR8 Dropped = Path[I];
    Path[I] = 0;
    if (Dropped == '\\') break;
  }
  if (NamesEqual (Path, "\\"_a)) SetGoUpEnabled (Window, FALSE);
  if (Window->Depth > 0) Window->Depth--;
  return TRUE;
}

VOID EFIAPI GoUpCommand (VOID *, WINDOW_HEADER *Context) {
  if (Context == nullptr) return;
  MAIN_WINDOW *Window = reinterpret_cast<MAIN_WINDOW *> (Context);
  if (GoUp (Window)) Refresh (Window);
}

VOID RecountDepth (MAIN_WINDOW *Window) {
  ZeroMem (Window->RowStack, sizeof (Window->RowStack));
  Window->Depth = 0;
  const CHAR8 *Rest = Window->CurrentPath;
  if (*Rest == '\\') Rest++;
  if (*Rest == 0) return;
  for (; *Rest != 0 && Window->Depth < MaxDepth; Rest++) {
    if (*Rest == '\\') Window->Depth++;
  }
  if (Window->Depth < MaxDepth) Window->Depth++;
}

VOID OpenItem (MAIN_WINDOW *Window, UINT16 Row) {
  LIST_ITEM *Item = gControlDriver->GetItem (Window->List, Row);
  if (Item == nullptr) return;
  CHAR8 Name[sizeof (Item->Name)];
  CopyStringN (Name, Item->Name, sizeof (Name));
  if (Item->Icon != gFileIcons.Directory) {
    OpenFile (Window, Name);
    return;
  }
  if (NamesEqual (Name, "."_a)) return;
  if (NamesEqual (Name, ".."_a)) {
    if (GoUp (Window)) Refresh (Window);
    return;
  }
  if (!TryEnterDirectory (Window, Name)) {
    gWindowBase->MessageBox (1, GetString (nullptr, "fail_path_too_long"_a), Name, 0);
    return;
  }
  // A folder that cannot be read (the user has been told) is left again at once.
  if (!Refresh (Window) && GoUp (Window)) Refresh (Window);
}

VOID ShowSelection (MAIN_WINDOW *Window, UINT16 Value, UINT16 SelectedCount) {
  SetSelectionCommandsEnabled (Window, SelectedCount >= 1);
  CHAR8 Text[CellSize];
  if (SelectedCount == 0) {
    ZeroMem (Text, sizeof (Text));
    FormatResourceText (Text, sizeof (Text), GetString (nullptr, "files_total"_a), (UINT32) Value);
    gWindowBase->SetStatusText (&Window->Header, 0, Text);
    return;
  }
  if (SelectedCount > 1) {
    ZeroMem (Text, sizeof (Text));
    FormatResourceText (Text, sizeof (Text), GetString (nullptr, "files_selected"_a), (UINT32) SelectedCount);
    gWindowBase->SetStatusText (&Window->Header, 0, Text);
    return;
  }
  LIST_ITEM *Item = gControlDriver->GetItem (Window->List, Value);
  if (Item == nullptr) return;
  CHAR8 Line[MAIN_PATH_SIZE + sizeof (Item->Name) + 2];
  CopyString (Line, Window->CurrentPath);
  if (!EndsWithSeparator (Line)) AppendString (Line, "\\"_a);
  AppendStringN (Line, Item->Name, sizeof (Line));
  gWindowBase->SetStatusText (&Window->Header, 0, Line);
  CONTROL *PathField = MainPathField (Window);
  if (PathField != nullptr) {
    gWindowBase->SetWindowText (PathField, Line);
    gWindowBase->Redraw (Window->MenuBar);
  }
}

VOID ShowPathStatus (MAIN_WINDOW *Window) {
  UINT16 Length = StringLength (Window->CurrentPath);
  if (Length >= StatusPathLimit) return;
  CHAR8 Line[MAIN_PATH_SIZE + 1];
  CopyString (Line, Window->CurrentPath);
  if (!EndsWithSeparator (Line)) AppendString (Line, "\\"_a);
  gWindowBase->SetStatusText (&Window->Header, 0, Line);
}
