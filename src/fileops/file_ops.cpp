// Copy, paste, delete, rename and new directory of the main window.
//
// Copy, paste and delete go through the jobio driver's clipboard: a copy
// replaces the clipboard with the selected names, a paste copies them into
// the current directory, and a delete collects the selection into the
// clipboard first and then deletes it. Rename and new directory are in-place
// edits of the list; when the edit ends, the main window's handler hands the
// notification to RenameFinished or NewDirFinished, which ask the file
// driver. No confirmation or progress is shown here; failures are reported
// with a message box and the list is refreshed afterwards.
#include "fileops/file_ops.h"

#include "core/bindings.h"
#include "core/strings.h"
#include "filemanager/file_types.h"
#include "filemanager/listing.h"
#include "platform/library.h"
#include "util/string_utils.h"

namespace {

constexpr UINT16 kPathSize = MAIN_PATH_SIZE;

MAIN_WINDOW *MainOf (WINDOW_HEADER *Context) {
  return reinterpret_cast<MAIN_WINDOW *> (Context);
}

BOOLEAN IsDotEntry (const CHAR8 *Name) {
  if (Name[0] == '.' && Name[1] == 0) {
    return TRUE;
  }
  return Name[0] == '.' && Name[1] == '.';
}

BOOLEAN HasSeparator (const CHAR8 *Name) {
  for (UINT32 I = 0; Name[I] != 0; I++) {
    if (Name[I] == '\\') {
      return TRUE;
    }
  }
  return FALSE;
}

VOID RememberCurrentRow (MAIN_WINDOW *Window) {
  if (Window->Depth < ROW_STACK_DEPTH) {
    Window->RowStack[Window->Depth] = Window->List->CurrentRow;
  }
}

VOID ShowFailure (const char *TextKey, const CHAR8 *Caption) {
  gWindowBase->MessageBox (1, GetString (nullptr, reinterpret_cast<const CHAR8 *> (TextKey)), Caption, 0);
}

// The typed text of an in-place edit (the edit control's text), or null.
const CHAR8 *TypedText (MESSAGE *Record) {
  const CONTROL *Edit = static_cast<const CONTROL *> (Record->Pointer8);
  if (Edit == nullptr) {
    return nullptr;
  }
  return Edit->Text;
}

VOID RefreshAndRedraw (MAIN_WINDOW *Window) {
  Refresh (Window);
  gWindowBase->Redraw (Window->List);
}

}  // namespace

UINT16 CollectSelection (MAIN_WINDOW *Window) {
  UINT32 Id = gJobioDriver->BeginClipboard (Window->VolumeIndex, Window->CurrentPath);
  if (Id == 0) {
    return 0;
  }
  UINT16 Count = 0;
  UINT16 Cursor = 0;
  for (LIST_ITEM *Item = gControlDriver->GetNextSelected (Window->List, &Cursor); Item != nullptr;
       Item = gControlDriver->GetNextSelected (Window->List, &Cursor)) {
    if (IsDotEntry (Item->Name)) {
      continue;
    }
    if (gJobioDriver->AddToClipboard (Id, Item->Name)) {
      Count++;
    }
  }
  return Count;
}

VOID EFIAPI CopyCommand (VOID *Item, WINDOW_HEADER *Context) {
  if (Context == nullptr) {
    return;
  }
  CollectSelection (MainOf (Context));
}

VOID EFIAPI PasteCommand (VOID *Item, WINDOW_HEADER *Context) {
  if (Context == nullptr || !gJobioDriver->HasClipboard ()) {
    return;
  }
  MAIN_WINDOW *Window = MainOf (Context);
  RememberCurrentRow (Window);
  UINT32 Result = gJobioDriver->PasteClipboard (Window->VolumeIndex, Window->CurrentPath);
  if (Result != 1) {
    ShowFailure ("FailCopyFile", GetString (nullptr, "OperationNotDone"_a));
  }
  gFileDriver->FlushVolume (Window->VolumeIndex);
  Refresh (Window);
}

VOID EFIAPI DeleteCommand (VOID *Item, WINDOW_HEADER *Context) {
  if (Context == nullptr) {
    return;
  }
  MAIN_WINDOW *Window = MainOf (Context);
  if (CollectSelection (Window) == 0) {
    return;
  }
  RememberCurrentRow (Window);
  UINT32 Result = gJobioDriver->DeleteClipboardFiles ();
  gFileDriver->FlushVolume (Window->VolumeIndex);
  Refresh (Window);
  // Only a plain failure is reported; other results say nothing.
  if (Result == 0) {
    ShowFailure ("FailDelFile", GetString (nullptr, "OperationFail"_a));
  }
}

VOID EFIAPI RenameCommand (VOID *Item, WINDOW_HEADER *Context) {
  if (Context == nullptr) {
    return;
  }
  MAIN_WINDOW *Window = MainOf (Context);
  gControlDriver->BeginRename (Window->List, Context);
}

VOID EFIAPI NewDirCommand (VOID *Item, WINDOW_HEADER *Context) {
  if (Context == nullptr) {
    return;
  }
  MAIN_WINDOW *Window = MainOf (Context);
  gWindowBase->SetFocus (Context, Window->List, 1);
  gControlDriver->BeginNewItem (Window->List, gFileIcons.Directory, TRUE, "new dir"_a);
}

VOID RenameFinished (MAIN_WINDOW *Window, MESSAGE *Record) {
  if (Record->Word4 == 0) {
    const CHAR8 *Typed = TypedText (Record);
    if (Typed == nullptr || Typed[0] == 0) {
      return;
    }
    LIST_ITEM *Item = gControlDriver->GetItem (Window->List, Record->Word2);
    if (Item == nullptr) {
      return;
    }
    // A change of case only is no rename.
    if (NamesEqual (Typed, Item->Name)) {
      return;
    }
    RememberCurrentRow (Window);
    CHAR8 OldName[sizeof (Item->Name)];
    CopyStringN (OldName, Item->Name, sizeof (OldName));
    if (!RenameItem (Window, OldName, Typed)) {
      gWindowBase->MessageBox (1, GetString (nullptr, "fail_rename"_a), OldName, 0);
    }
  }
  RefreshAndRedraw (Window);
}

VOID NewDirFinished (MAIN_WINDOW *Window, MESSAGE *Record) {
  if (Record->Word4 == 0) {
    const CHAR8 *Typed = TypedText (Record);
    if (Typed == nullptr || Typed[0] == 0) {
      return;
    }
    if (gControlDriver->GetItem (Window->List, Record->Word2) == nullptr) {
      return;
    }
    RememberCurrentRow (Window);
    if (!MakeDirectory (Window, Typed)) {
      gWindowBase->MessageBox (1, GetString (nullptr, "fail_create_dir"_a), Typed, 0);
    }
  }
  RefreshAndRedraw (Window);
}

BOOLEAN RenameItem (MAIN_WINDOW *Window, const CHAR8 *OldName, const CHAR8 *NewName) {
  // Both the old and the new full path must fit the 512-byte buffers, and
  // the new name must be a bare name: anything else is refused untouched.
  CHAR8 Path[kPathSize];
  CHAR8 NewPath[kPathSize];
  if (NewName[0] == 0 || HasSeparator (NewName) || !BuildFullPath (Window, NewName, NewPath) ||
      !BuildFullPath (Window, OldName, Path)) {
    return FALSE;
  }
  if (!gFileDriver->RenamePath (Window->VolumeIndex, Path, NewName)) {
    return FALSE;
  }
  gFileDriver->FlushVolume (Window->VolumeIndex);
  return TRUE;
}

BOOLEAN MakeDirectory (MAIN_WINDOW *Window, const CHAR8 *Name) {
  UINT32 NameLength = StringLength (Name);
  if (NameLength == 0 || StringLength (Window->CurrentPath) + NameLength >= 510) {
    return FALSE;
  }
  CHAR8 Path[kPathSize];
  if (!BuildFullPath (Window, Name, Path)) {
    return FALSE;
  }
  return gFileDriver->CreateDirectory (Window->VolumeIndex, Path, 1);
}
