// The context menu on a difference line of a comparison window: open the
// line's folder on either volume, delete the file, or put the file of either
// volume on the clipboard. One popup serves every comparison window.
#include "compare/file_comparison_texts.h"
#include "compare/file_comparison_window.h"
#include "core/bindings.h"
#include "filemanager/main_window.h"
#include "platform/library.h"
#include "util/string_utils.h"

WINDOW_HEADER *gResultMenu;

void ResetResultMenuState () { gResultMenu = nullptr; }

BOOLEAN SelectedEntries (FILE_COMPARISON_WINDOW *Window, RESULT_ENTRY **Entry, RESULT_ENTRY **Folder) {
  if (Window == nullptr || Window->LogView == nullptr) return FALSE;
  COMPARE_RESULT *Result = Window->Snapshot;
  if (Result == nullptr && Window->Job != nullptr) Result = Window->Job->Result;
  if (Result == nullptr) return FALSE;
  UINT16 Line = Window->LogView->SelectedLine;
  if (Line >= Result->EntryCount || Line >= COMPARE_MAX_ENTRIES) return FALSE;
  RESULT_ENTRY *E = &Result->Entries[Line];
  if (E->Name == nullptr || E->Name[0] == 0) return FALSE;
  RESULT_ENTRY *F = E;
  if (E->IsHeading == 0) {
    if (E->Link >= COMPARE_MAX_ENTRIES) return FALSE;
    F = &Result->Entries[E->Link];
    if (F->Name == nullptr || F->Name[0] == 0) return FALSE;
  }
  *Entry = E;
  *Folder = F;
  return TRUE;
}

static VOID OpenFolder (WINDOW_HEADER *Context, BOOLEAN Backup) {
  FILE_COMPARISON_WINDOW *Window = (FILE_COMPARISON_WINDOW *)Context;
  RESULT_ENTRY *E;
  RESULT_ENTRY *F;
  if (!SelectedEntries (Window, &E, &F)) return;
  UINT8 Volume = Backup ? Window->BackupVolume : Window->SourceVolume;
  WINDOW_HEADER *Opened = OpenVolumeWindow (0, 0, Volume, nullptr, F->Name);
  if (Opened != nullptr) gWindowBase->ActivateWindow (Opened);
}

static VOID EFIAPI OpenSourceFolderCommand (VOID *, WINDOW_HEADER *Context) { OpenFolder (Context, FALSE); }
static VOID EFIAPI OpenBackupFolderCommand (VOID *, WINDOW_HEADER *Context) { OpenFolder (Context, TRUE); }

static VOID EFIAPI DeleteSourceFileCommand (VOID *, WINDOW_HEADER *Context) {
  FILE_COMPARISON_WINDOW *Window = (FILE_COMPARISON_WINDOW *)Context;
  RESULT_ENTRY *E;
  RESULT_ENTRY *F;
  if (!SelectedEntries (Window, &E, &F)) return;
  if (E->IsHeading != 0) {
    gJobioDriver->DeleteFile (Window->SourceVolume, E->Name);
    return;
  }
  if (F->IsDirectory == 0) return;
  CHAR8 Path[512];
  CopyStringN (Path, F->Name, sizeof (Path));
  AppendStringN (Path, "\\"_a, sizeof (Path));
  AppendStringN (Path, E->Name, sizeof (Path));
  gJobioDriver->DeleteFile (Window->SourceVolume, Path);
}

static VOID PutOnClipboard (UINT8 Volume, const CHAR8 *Directory, const CHAR8 *Name) {
  UINT32 Id = gJobioDriver->BeginClipboard (Volume, Directory);
  if (Id != 0) gJobioDriver->AddToClipboard (Id, Name);
}

static VOID CopyFile (WINDOW_HEADER *Context, BOOLEAN Backup) {
  FILE_COMPARISON_WINDOW *Window = (FILE_COMPARISON_WINDOW *)Context;
  RESULT_ENTRY *E;
  RESULT_ENTRY *F;
  if (!SelectedEntries (Window, &E, &F)) return;
  UINT8 Volume = Backup ? Window->BackupVolume : Window->SourceVolume;
  if (E->IsHeading != 0) {
    CHAR8 Directory[512];
    const CHAR8 *Name = nullptr;
    if (SplitPath (E->Name, Directory, &Name) && Name != nullptr) PutOnClipboard (Volume, Directory, Name);
    return;
  }
  if (F->IsDirectory != 0) PutOnClipboard (Volume, F->Name, E->Name);
}

static VOID EFIAPI CopySourceFileCommand (VOID *, WINDOW_HEADER *Context) { CopyFile (Context, FALSE); }
static VOID EFIAPI CopyBackupFileCommand (VOID *, WINDOW_HEADER *Context) { CopyFile (Context, TRUE); }

static const COMMAND_CALLBACK gResultCommands[] = {
    OpenSourceFolderCommand, OpenBackupFolderCommand, DeleteSourceFileCommand,
    CopySourceFileCommand,   CopyBackupFileCommand,
};

BOOLEAN BuildResultMenu (FILE_COMPARISON_WINDOW *Window, UINT16 X, UINT16 Y) {
  RESULT_ENTRY *E;
  RESULT_ENTRY *F;
  if (!SelectedEntries (Window, &E, &F)) return FALSE;
  WINDOW_HEADER *Header = &Window->Header;
  if (gResultMenu == nullptr) {
    gResultMenu = gWindowBase->CreatePopupMenu (Header, 0, 0, 0);
    if (gResultMenu == nullptr) return FALSE;
    gWindowBase->AppendMenuItem (gResultMenu, FcTextMenuOpenFolder, OpenSourceFolderCommand, Header, 0);
    gWindowBase->AppendMenuItem (gResultMenu, FcTextMenuOpenBackupFolder, OpenBackupFolderCommand, Header, 0);
    gWindowBase->AppendMenuSeparator (gResultMenu);
    gWindowBase->AppendMenuItem (gResultMenu, FcTextMenuDeleteFile, DeleteSourceFileCommand, Header, 0);
    gWindowBase->AppendMenuItem (gResultMenu, FcTextMenuCopyFile, CopySourceFileCommand, Header, 0);
    gWindowBase->AppendMenuItem (gResultMenu, FcTextMenuCopyBackupFile, CopyBackupFileCommand, Header, 0);
  } else {
    gResultMenu->Owner = Header;
    for (COMMAND_CALLBACK Command : gResultCommands) gWindowBase->SetMenuItemContext (gResultMenu, Command, Header);
  }

  BOOLEAN SourceSide = E->Code != DIFF_DELETED && E->Code != DIFF_SOURCE_EMPTY;
  BOOLEAN BackupSide = E->Code != DIFF_NEW && E->Code != DIFF_BACKUP_EMPTY;
  gWindowBase->EnableMenuItem (gResultMenu, CopyBackupFileCommand, BackupSide);
  gWindowBase->EnableMenuItem (gResultMenu, DeleteSourceFileCommand, SourceSide);
  gWindowBase->EnableMenuItem (gResultMenu, CopySourceFileCommand, SourceSide);

  // Open to the left of or above the click when the popup would cross the edge.
  UINT32 ScreenWidth = gGuiDriver->ScreenWidth;
  UINT32 ScreenHeight = gGuiDriver->ScreenHeight;
  if ((UINT32)X + gResultMenu->Width + 2 > ScreenWidth) X = X > gResultMenu->Width ? X - gResultMenu->Width : 0;
  if ((UINT32)Y + gResultMenu->Height + 2 > ScreenHeight) Y = Y > gResultMenu->Height ? Y - gResultMenu->Height : 0;
  gResultMenu->X = X;
  gResultMenu->Y = Y;
  return TRUE;
}

VOID DetachResultMenu (FILE_COMPARISON_WINDOW *Window) {
  if (gResultMenu == nullptr || gResultMenu->Owner != (VOID *)&Window->Header) return;
  // The popup outlives the window: its commands must not reach a window that is gone.
  for (COMMAND_CALLBACK Command : gResultCommands) gWindowBase->SetMenuItemContext (gResultMenu, Command, nullptr);
}
