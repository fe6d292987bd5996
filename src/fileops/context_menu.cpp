// The right-button menu of the main window's listing. One popup serves every
// main window: each showing re-targets it to the window that asked and
// enables its items by the selection, the volume's write protection and the
// clipboard. Besides the file operations it offers the file-attributes window
// of the NTFS service and the comparison of the selected path against the two
// comparison volumes.
#include "fileops/context_menu.h"

#include "compare/file_comparison.h"
#include "core/bindings.h"
#include "core/driver_state.h"
#include "core/strings.h"
#include "filemanager/listing.h"
#include "fileops/file_ops.h"
#include "platform/library.h"

#define MENU_SECTION "RightMouseMenu"_a

static WINDOW_HEADER *gContextMenu;

void ResetContextMenuState () { gContextMenu = nullptr; }

static VOID EFIAPI FileAttrCommand (VOID *Item, WINDOW_HEADER *Context);
static VOID EFIAPI FileCompare1Command (VOID *Item, WINDOW_HEADER *Context);
static VOID EFIAPI FileCompare2Command (VOID *Item, WINDOW_HEADER *Context);

static const COMMAND_CALLBACK gContextCommands[] = {
    CopyCommand, DeleteCommand, RenameCommand, PasteCommand, FileAttrCommand, FileCompare1Command, FileCompare2Command,
};

static VOID Enable (COMMAND_CALLBACK Command, BOOLEAN Enabled) {
  gWindowBase->EnableMenuItem (gContextMenu, Command, Enabled);
}

static VOID BuildContextMenu (MAIN_WINDOW *Window, UINT16 X, UINT16 Y) {
  WINDOW_HEADER *Header = &Window->Header;
  if (gContextMenu != nullptr) {
    gContextMenu->Owner = Header;
    for (COMMAND_CALLBACK Command : gContextCommands) gWindowBase->SetMenuItemContext (gContextMenu, Command, Header);
  } else {
    gContextMenu = gWindowBase->CreatePopupMenu (Header, 0, 0, 0);
    if (gContextMenu == nullptr) return;
    gWindowBase->AppendMenuItem (gContextMenu, GetString (MENU_SECTION, "Copy"_a), CopyCommand, Header, 0);
    gWindowBase->AppendMenuItem (gContextMenu, GetString (MENU_SECTION, "Delete"_a), DeleteCommand, Header, 0);
    gWindowBase->AppendMenuItem (gContextMenu, GetString (MENU_SECTION, "Rename"_a), RenameCommand, Header, 0);
    gWindowBase->AppendMenuItem (gContextMenu, GetString (MENU_SECTION, "paste"_a), PasteCommand, Header, 0);
    if (gWindowBase->QueryExtendedMenus ()) {
      gWindowBase->AppendMenuSeparator (gContextMenu);
      gWindowBase->AppendMenuItem (gContextMenu, GetString (MENU_SECTION, "fileAttr"_a), FileAttrCommand, Header, 0);
    }
    gWindowBase->AppendMenuSeparator (gContextMenu);
    gWindowBase->AppendMenuItem (gContextMenu, GetString (MENU_SECTION, "FileCompare1"_a), FileCompare1Command,
                                 Header, 0);
    gWindowBase->AppendMenuItem (gContextMenu, GetString (MENU_SECTION, "FileCompare2"_a), FileCompare2Command,
                                 Header, 0);
  }
  if (Window->ReadOnly != 0) {
    Enable (RenameCommand, FALSE);
    Enable (DeleteCommand, FALSE);
    Enable (PasteCommand, FALSE);
  }
  // Open to the left of or above the click when the popup would cross the edge.
  UINT32 ScreenWidth = gGuiDriver->ScreenWidth;
  UINT32 ScreenHeight = gGuiDriver->ScreenHeight;
  if ((UINT32)X + gContextMenu->Width + 2 > ScreenWidth) X = X > gContextMenu->Width ? X - gContextMenu->Width : 0;
  if ((UINT32)Y + gContextMenu->Height + 2 > ScreenHeight) Y = Y > gContextMenu->Height ? Y - gContextMenu->Height : 0;
  gContextMenu->X = X;
  gContextMenu->Y = Y;
}

static BOOLEAN IsSystemDriveLabel (const CHAR8 *Label) {
  if (Label[0] == 'C' && Label[1] == ':' && Label[2] == 0) return TRUE;
  return Label[0] == 0x43 && Label[1] == 0xC5 && Label[2] == 0xCC && Label[3] == 0;
}

// The comparison volumes for a window of the system drive: flags 0x81 give the
// first, 0x82 the second; a later volume wins over an earlier one.
static BOOLEAN FindCompareTargets (MAIN_WINDOW *Window) {
  Window->CompareTarget1 = NO_COMPARE_TARGET;
  Window->CompareTarget2 = NO_COMPARE_TARGET;
  const VOLUME_RECORD *Volume = Window->Volume;
  if (Volume == nullptr) return FALSE;
  if ((Volume->Flags & VOLUME_FLAG_WRITE_PROTECTED) != 0) return FALSE;
  if (!IsSystemDriveLabel (Volume->Label)) return FALSE;
  for (UINT8 Index = 0; Index < VOLUME_COUNT; Index++) {
    const VOLUME_RECORD *Other = &gFileDriver->Volumes[Index];
    if (Other->InUse == 0 || Other->Offered == 0) continue;
    if (Other->Flags == VOLUME_FLAG_COMPARE_1) Window->CompareTarget1 = Index;
    if (Other->Flags == VOLUME_FLAG_COMPARE_2) Window->CompareTarget2 = Index;
  }
  return TRUE;
}

VOID ShowContextMenu (MAIN_WINDOW *Window, UINT16 X, UINT16 Y, UINT16 SelectedCount) {
  if (Window == nullptr) return;
  UINT16 OriginX = 0;
  UINT16 OriginY = 0;
  if (Window->List != nullptr) gWindowBase->GetControlOrigin (&OriginX, &OriginY, Window->List);
  BuildContextMenu (Window, (UINT16)(X + OriginX), (UINT16)(Y + OriginY));
  if (gContextMenu == nullptr) return;
  Enable (FileCompare1Command, FALSE);
  Enable (FileCompare2Command, FALSE);
  if (SelectedCount != 0) {
    if (Window->ReadOnly == 0) {
      Enable (DeleteCommand, TRUE);
      Enable (CopyCommand, TRUE);
      Enable (PasteCommand, FALSE);
      Enable (RenameCommand, SelectedCount == 1);
    }
    if (SelectedCount != 1) {
      Enable (FileAttrCommand, FALSE);
    } else {
      Enable (FileAttrCommand, TRUE);
      if (FindCompareTargets (Window)) {
        if (Window->CompareTarget1 < VOLUME_COUNT) Enable (FileCompare1Command, TRUE);
        if (Window->CompareTarget2 < VOLUME_COUNT) Enable (FileCompare2Command, TRUE);
      }
    }
  } else {
    if (Window->ReadOnly == 0) {
      Enable (DeleteCommand, FALSE);
      Enable (CopyCommand, FALSE);
      Enable (RenameCommand, FALSE);
      Enable (PasteCommand, gJobioDriver->HasClipboard ());
    }
    Enable (FileAttrCommand, FALSE);
  }
  gWindowBase->ShowPopupMenu (gContextMenu);
}

// Full path of the first selected row, or false when there is none or it
// does not fit the 512-byte buffer.
static BOOLEAN FirstSelectedPath (MAIN_WINDOW *Window, LIST_ITEM **Row, CHAR8 *Path) {
  if (Window->List == nullptr) return FALSE;
  UINT16 Cursor = 0;
  *Row = gControlDriver->GetNextSelected (Window->List, &Cursor);
  if (*Row == nullptr) return FALSE;
  return BuildFullPath (Window, (*Row)->Name, Path);
}

static VOID StartCompare (MAIN_WINDOW *Window, BOOLEAN Second) {
  if (Window == nullptr) return;
  UINT8 Target = Second ? Window->CompareTarget2 : Window->CompareTarget1;
  if (Target >= VOLUME_COUNT || gFileDriver->Volumes[Target].InUse == 0) return;
  LIST_ITEM *Row;
  CHAR8 Path[MAIN_PATH_SIZE];
  if (!FirstSelectedPath (Window, &Row, Path)) return;
  WINDOW_HEADER *Comparison = OpenFileComparison (Window->VolumeIndex, Target, Path);
  if (Comparison != nullptr) gWindowBase->ActivateWindow (Comparison);
}

static VOID EFIAPI FileCompare1Command (VOID *, WINDOW_HEADER *Context) {
  StartCompare ((MAIN_WINDOW *)Context, FALSE);
}

static VOID EFIAPI FileCompare2Command (VOID *, WINDOW_HEADER *Context) {
  StartCompare ((MAIN_WINDOW *)Context, TRUE);
}

static VOID EFIAPI FileAttrCommand (VOID *, WINDOW_HEADER *Context) {
  MAIN_WINDOW *Window = (MAIN_WINDOW *)Context;
  if (Window == nullptr || Window->Volume == nullptr || Window->Volume->Kind != VOLUME_KIND_NTFS_ATTRIBUTES) return;
  NTFS_SERVICE_PROTOCOL *Ntfs = gNtfsService != nullptr ? gNtfsService : BindNtfsService ();
  if (Ntfs == nullptr || !Ntfs->Prepare ()) return;
  LIST_ITEM *Row;
  CHAR8 Path[MAIN_PATH_SIZE];
  if (!FirstSelectedPath (Window, &Row, Path)) return;

  WINDOW_HEADER *Attributes = nullptr;
  UINT16 Handle = gFileDriver->OpenDirectory (Window->VolumeIndex, Path);
  BOOLEAN Directory = FALSE;
  FILE_INFO Info;
  ZeroMem (&Info, sizeof (Info));
  if (Handle != 0) {
    // The open handle's own information, asked for with the handle + 0x8000.
    BOOLEAN Ok = gFileDriver->GetFileInfo ((UINT16)(Handle + FILE_HANDLE_INFO_BIT), &Info);
    gFileDriver->CloseHandle (Handle);
    if (!Ok) return;
    // The file driver opens files too: only a directory takes the full path.
    Directory = Info.IsDirectory != 0 || Row->IsDirectory != 0;
  }
  if (Directory) {
    Attributes = Ntfs->OpenAttributesWindow (Window->VolumeIndex, Info.EntryWord, Path, 0);
  } else {
    Attributes = Ntfs->OpenAttributesWindow (Window->VolumeIndex, Row->EntryWord, Row->Name, 0);
  }
  if (Attributes != nullptr) gWindowBase->ActivateWindow (Attributes);
}
