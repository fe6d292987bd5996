// The file dialog: a small window in which a user picks a volume, then a file
// or a directory in a tree, optionally types a name, and presses Open. The
// dialog returns at once; the choice reaches the application later through
// the window base's CompleteDialog. The tree's context menu creates and
// renames directories in place.
#include "filedialog/file_dialog.h"

#include "core/bindings.h"
#include "core/paint_forwarder.h"
#include "core/strings.h"
#include "filemanager/file_types.h"
#include "filemanager/listing_notice.h"
#include "platform/library.h"
#include "util/string_utils.h"

namespace {

constexpr UINT16 kDialogWidth = 400;
constexpr UINT16 kDialogHeight = 300;
constexpr UINT16 kPathSize = 512;
constexpr UINT16 kStatusSize = 256;
// Longest parent path under which a directory may be created.
constexpr UINT16 kLongestParent = 510;
// Icon argument of the context menu's items and of a new tree item.
constexpr UINT8 kNoMenuIcon = 126;
// Status field that says what the tree's last listing left out (field 0
// shows the chosen path).
constexpr UINT8 kLeftOutField = 1;
constexpr UINT16 kNoticeSize = 128;

const CHAR8 *DialogText (const char *Key) { return GetString ("File Dialog"_a, reinterpret_cast<const CHAR8 *> (Key)); }

FILE_DIALOG *AsDialog (WINDOW_HEADER *Window) { return reinterpret_cast<FILE_DIALOG *> (Window); }

// Builds Parent, a "\" unless Parent ends with one, and Name into Path
// (kPathSize bytes). False, with Path holding as much as fits, when the whole
// would not fit.
BOOLEAN JoinPath (CHAR8 *Path, const CHAR8 *Parent, const CHAR8 *Name) {
  UINT32 ParentLength = StringLength (Parent);
  UINT32 NameLength = StringLength (Name);
  BOOLEAN NeedsSeparator = ParentLength == 0 || Parent[ParentLength - 1] != '\\';
  UINT32 Total = ParentLength + (NeedsSeparator ? 1 : 0) + NameLength;
  CopyStringN (Path, Parent, kPathSize);
  if (NeedsSeparator) {
    AppendStringN (Path, "\\"_a, kPathSize);
  }
  AppendStringN (Path, Name, kPathSize);
  return Total < kPathSize;
}

// Adds the entries under ParentPath to the tree, stopping once the tree holds
// FILE_DIALOG_TREE_LIMIT items. Directories get the directory icon and are
// marked as having children when they hold something the tree would show;
// files get the unknown-file icon and no children. Returns the number of
// entries left out for want of room.
UINT32 AddTreeEntries (FILE_DIALOG *Dialog, DIRECTORY_ENTRY *Entries, UINT16 Count, const CHAR8 *ParentPath) {
  for (UINT16 I = 0; I < Count; I++) {
    DIRECTORY_ENTRY *Entry = &Entries[I];
    BOOLEAN HasChildren = FALSE;
    UINT8 Icon = gFileIcons.Unknown;
    if (Entry->IsDirectory != 0) {
      Icon = gFileIcons.Directory;
      CHAR8 ChildPath[kPathSize];
      // A child whose path would not fit cannot be opened: it shows no children.
      if (JoinPath (ChildPath, ParentPath, Entry->Name)) {
        HasChildren = HasSubEntries (Dialog->DialogVolume, ChildPath, Dialog->DirsOnly);
      }
    }
    UINTN Items = gControlDriver->AddFileListItem (Dialog->FileTree, HasChildren, Icon, 0, Entry, ParentPath);
    if (Items >= FILE_DIALOG_TREE_LIMIT) {
      return (UINT32)(Count - I - 1);
    }
  }
  return 0;
}

// Says in status field 1 what the listing of a folder left out (nothing when
// all is shown). A folder that could not be read at all (nothing listed) is
// also reported with a message box.
VOID ShowLeftOut (FILE_DIALOG *Dialog, const CHAR8 *Path, const LISTING_NOTES *Notes, UINT16 Listed,
                  UINT32 Refused) {
  if (Listed == 0 && Notes->FolderUnreadable != 0) {
    ReportUnreadableFolder (Path);
  }
  CHAR8 Notice[kNoticeSize];
  DescribeLeftOut (Notes, Refused, Notice, sizeof (Notice));
  gWindowBase->SetStatusText (&Dialog->Header, kLeftOutField, Notice);
}

VOID LoadTree (FILE_DIALOG *Dialog) {
  gControlDriver->ClearFileList (Dialog->FileTree);
  CopyString (Dialog->CurrentDir, "\\"_a);
  DIRECTORY_ENTRY *Entries = nullptr;
  LISTING_NOTES Notes;
  UINT16 Count = ReadFilteredDirectory (Dialog->DialogVolume, "\\"_a, Dialog->DirsOnly, &Entries, &Notes);
  if (Count == 0) {
    // An empty or unreadable root: the root item alone, without children.
    gControlDriver->AddFileListItem (Dialog->FileTree, FALSE, gFileIcons.Directory, 0, "\\"_a, "\\"_a);
    ShowLeftOut (Dialog, "\\"_a, &Notes, 0, 0);
    return;
  }
  UINTN Items = gControlDriver->AddFileListItem (Dialog->FileTree, TRUE, gFileIcons.Directory, 0, "\\"_a, "\\"_a);
  UINT32 Refused = Count;
  if (Items < FILE_DIALOG_TREE_LIMIT) {
    Refused = AddTreeEntries (Dialog, Entries, Count, "\\"_a);
  }
  FreePool (Entries);
  ShowLeftOut (Dialog, "\\"_a, &Notes, Count, Refused);
  gWindowBase->Redraw (Dialog->FileTree);
}

VOID ExpandItem (FILE_DIALOG *Dialog, const CHAR8 *ItemPath) {
  DIRECTORY_ENTRY *Entries = nullptr;
  LISTING_NOTES Notes;
  UINT16 Count = ReadFilteredDirectory (Dialog->DialogVolume, ItemPath, Dialog->DirsOnly, &Entries, &Notes);
  if (Count == 0) {
    ShowLeftOut (Dialog, ItemPath, &Notes, 0, 0);
    return;
  }
  UINT32 Refused = AddTreeEntries (Dialog, Entries, Count, ItemPath);
  FreePool (Entries);
  ShowLeftOut (Dialog, ItemPath, &Notes, Count, Refused);
  gWindowBase->Redraw (Dialog->FileTree);
}

VOID FillVolumeCombo (FILE_DIALOG *Dialog, UINT8 InitialVolume) {
  UINT8 Rows = 0;
  for (UINT8 Volume = 0; Volume < VOLUME_COUNT; Volume++) {
    VOLUME_RECORD *Record = &gFileDriver->Volumes[Volume];
    if (Record->InUse == 0 || Record->Offered == 0) {
      continue;
    }
    gControlDriver->AddComboItem (Dialog->VolumeCombo, Record->Label, 0);
    Dialog->VolumeByRow[Rows] = Volume;
    if (Volume == InitialVolume) {
      Dialog->VolumeCombo->CurrentRow = Rows;
      Dialog->VolumeCombo->ChosenRow = Rows;
    }
    Rows++;
  }
  Dialog->VolumeCount = Rows;
}

// Takes the combo box's choice; true when it names another volume than the tree shows.
BOOLEAN VolumeChanged (FILE_DIALOG *Dialog) {
  UINT16 Row = Dialog->VolumeCombo->CurrentRow;
  if (Row >= Dialog->VolumeCount || Dialog->VolumeByRow[Row] == Dialog->DialogVolume) {
    return FALSE;
  }
  Dialog->DialogVolume = Dialog->VolumeByRow[Row];
  return TRUE;
}

BOOLEAN IsDirectoryItem (FILE_DIALOG *Dialog, UINT16 Index) {
  FILE_LIST_ITEM *Item = gControlDriver->GetFileListItem (Dialog->FileTree, Index);
  return Item != nullptr && Item->Icon == gFileIcons.Directory;
}

// A directory becomes the current directory and empties the name field; a
// file gives its directory and its name. The status line shows the path.
VOID SelectItem (FILE_DIALOG *Dialog, UINT16 Index, const CHAR8 *ItemPath) {
  if (IsDirectoryItem (Dialog, Index)) {
    gWindowBase->SetWindowText (Dialog->NameField, ""_a);
    gWindowBase->Redraw (Dialog->NameField);
    CopyStringN (Dialog->CurrentDir, ItemPath, kPathSize);
  } else {
    CHAR8 Directory[kPathSize];
    const CHAR8 *Name = nullptr;
    if (SplitPath (ItemPath, Directory, &Name)) {
      CopyStringN (Dialog->CurrentDir, Directory, kPathSize);
      gWindowBase->SetWindowText (Dialog->NameField, Name);
    } else {
      // No name after the last "\": the path itself is the directory.
      CopyStringN (Dialog->CurrentDir, ItemPath, kPathSize);
      gWindowBase->SetWindowText (Dialog->NameField, ""_a);
    }
    gWindowBase->Redraw (Dialog->NameField);
  }
  CHAR8 Status[kStatusSize];
  CopyStringN (Status, DialogText ("Tip_Dir"), kStatusSize);
  AppendStringN (Status, ItemPath, kStatusSize);
  gWindowBase->SetStatusText (&Dialog->Header, 0, Status);
}

// Hands the choice to the application: the volume in byte 0, then the
// current directory joined with the typed name. A trailing "\" is dropped
// unless the path is the root itself.
VOID CompleteChoice (FILE_DIALOG *Dialog) {
  CHAR8 *Result = static_cast<CHAR8 *> (AllocateZeroPool (FILE_DIALOG_RESULT_SIZE));
  if (Result == nullptr) {
    return;
  }
  Result[0] = Dialog->DialogVolume;
  CHAR8 *Path = Result + 1;
  constexpr UINT16 kRoom = FILE_DIALOG_RESULT_SIZE - 1;
  CopyStringN (Path, Dialog->CurrentDir, kRoom);
  UINT16 Length = StringLength (Path);
  if (Length == 0 || Path[Length - 1] != '\\') {
    AppendStringN (Path, "\\"_a, kRoom);
  }
  const CHAR8 *Typed = Dialog->NameField != nullptr ? Dialog->NameField->Text : nullptr;
  if (Typed != nullptr) {
    AppendStringN (Path, Typed, kRoom);
  }
  Length = StringLength (Path);
  if (Length > 2 && Path[Length - 1] == '\\') {
    Path[Length - 1] = 0;
  }
  gWindowBase->CompleteDialog (&Dialog->Header, Result, FILE_DIALOG_RESULT_SIZE, 0);
  FreePool (Result);
}

VOID EFIAPI TreeNewDirCommand (VOID *Item, WINDOW_HEADER *Context) {
  gControlDriver->BeginFileListNewItem (AsDialog (Context)->FileTree, kNoMenuIcon);
}

VOID EFIAPI TreeRenameCommand (VOID *Item, WINDOW_HEADER *Context) {
  gControlDriver->BeginFileListRename (AsDialog (Context)->FileTree, Context);
}

// "Delete folder" is offered with the other directory items so that the menu
// reads like the file manager's, but a dialog that only picks a path never
// deletes anything: choosing the item closes the menu and changes nothing.
VOID EFIAPI TreeDelDirCommand (VOID *Item, WINDOW_HEADER *Context) {}

VOID ShowDialogMenu (FILE_DIALOG *Dialog, UINT16 X, UINT16 Y) {
  if (Dialog->DialogPopup == nullptr) {
    WINDOW_HEADER *Popup = gWindowBase->CreatePopupMenu (&Dialog->Header, 0, 0, 0);
    if (Popup == nullptr) {
      return;
    }
    Dialog->DialogPopup = Popup;
    gWindowBase->AppendMenuItem (Popup, DialogText ("menu_createdir"), TreeNewDirCommand, &Dialog->Header, kNoMenuIcon);
    gWindowBase->AppendMenuItem (Popup, DialogText ("menu_deldir"), TreeDelDirCommand, &Dialog->Header, kNoMenuIcon);
    gWindowBase->AppendMenuItem (Popup, DialogText ("menu_rename"), TreeRenameCommand, &Dialog->Header, kNoMenuIcon);
  }
  // The menu opens at the click, whatever the screen edges.
  Dialog->DialogPopup->X = X;
  Dialog->DialogPopup->Y = Y;
}

BOOLEAN CreateTreeDirectory (FILE_DIALOG *Dialog, const CHAR8 *ParentPath, const CHAR8 *Name) {
  if (StringLength (ParentPath) > kLongestParent) {
    return FALSE;
  }
  CHAR8 Path[kPathSize];
  // A path that does not fit is refused like a creation the file driver refused.
  if (JoinPath (Path, ParentPath, Name) && gFileDriver->CreateDirectory (Dialog->DialogVolume, Path, 1)) {
    return TRUE;
  }
  gWindowBase->MessageBox (1, Path, DialogText ("Tip_FailCreateFile"), 0);
  return FALSE;
}

BOOLEAN RenameTreeItem (FILE_DIALOG *Dialog, const CHAR8 *ItemPath, const CHAR8 *NewName) {
  CHAR8 Directory[kPathSize];
  const CHAR8 *Name = nullptr;
  if (!SplitPath (ItemPath, Directory, &Name)) {
    return FALSE;
  }
  if (gFileDriver->RenamePath (Dialog->DialogVolume, ItemPath, NewName)) {
    return TRUE;
  }
  gWindowBase->MessageBox (1, Directory, DialogText ("Tip_FailRename"), 0);
  return FALSE;
}

UINTN TreeNotification (FILE_DIALOG *Dialog, MESSAGE *Message) {
  UINT16 Index = Message->Word4;
  TREE_NOTIFY_DATA *Data = static_cast<TREE_NOTIFY_DATA *> (Message->Pointer8);
  const CHAR8 *ItemPath = Data != nullptr ? Data->ItemPath : nullptr;
  const CHAR8 *Typed = (Data != nullptr && Data->TypedName != nullptr) ? Data->TypedName : ""_a;
  switch (Message->Code) {
    case TREE_ACTIVATED: {
      if (ItemPath == nullptr) {
        return 0;
      }
      SelectItem (Dialog, Index, ItemPath);
      if (IsDirectoryItem (Dialog, Index) && Dialog->DirsOnly == 0) {
        return 0;
      }
      Message->Type = MSG_ACTIVATE;
      Message->Code = 0;
      Message->Pointer8 = &Dialog->Header;
      gWindowBase->PostMessage (&Dialog->Header, Message);
      CompleteChoice (Dialog);
      return 1;
    }
    case TREE_CONTEXT:
      if (Data == nullptr) {
        return 0;
      }
      ShowDialogMenu (Dialog, Data->X, Data->Y);
      if (Dialog->DialogPopup != nullptr) {
        gWindowBase->ShowPopupMenu (Dialog->DialogPopup);
      }
      return 0;
    case TREE_EXPANDED:
      if (ItemPath != nullptr) {
        ExpandItem (Dialog, ItemPath);
      }
      return 0;
    case TREE_SELECTED:
      if (ItemPath != nullptr) {
        SelectItem (Dialog, Index, ItemPath);
      }
      return 0;
    case TREE_NEW_ITEM_DONE:
      if (Data != nullptr && (ItemPath == nullptr || !CreateTreeDirectory (Dialog, ItemPath, Typed))) {
        Data->Answer = TREE_REFUSE_EDIT;
      }
      return 0;
    case TREE_RENAME_DONE:
      if (Data != nullptr && (ItemPath == nullptr || !RenameTreeItem (Dialog, ItemPath, Typed))) {
        Data->Answer = TREE_REFUSE_EDIT;
      }
      return 0;
    default:
      return 0;
  }
}

UINT8 EFIAPI FileDialogHandler (WINDOW_HEADER *Window, MESSAGE *Message) {
  FILE_DIALOG *Dialog = AsDialog (Window);
  switch (Message->Type) {
    case MSG_SYSCOMMAND:
      if (Message->Word2 == SYSCMD_RESTORE || Message->Word2 == SYSCMD_CLOSE) {
        return 1;
      }
      if (Message->Word2 == FILE_DIALOG_OPEN_BUTTON) {
        CompleteChoice (Dialog);
        return 1;
      }
      return 0;
    case MSG_NOTIFY:
      if (Message->Code == NOTIFY_SELECTION && Dialog->VolumeCombo != nullptr &&
          Message->Word10 == Dialog->VolumeCombo->Control.Id && VolumeChanged (Dialog)) {
        LoadTree (Dialog);
      }
      return 0;
    case MSG_ACTIVATE:
      return 1;
    case MSG_TREE_NOTIFY:
      return static_cast<UINT8> (TreeNotification (Dialog, Message));
    default:
      return 0;
  }
}

VOID EFIAPI FileDialogDestroy (WINDOW_HEADER *Window) {
  FILE_DIALOG *Dialog = AsDialog (Window);
  if (Dialog->DialogPopup != nullptr) {
    gWindowBase->DestroyWindow (Dialog->DialogPopup);
    Dialog->DialogPopup = nullptr;
  }
}

}  // namespace

UINT16 ReadFilteredDirectory (UINT8 Volume, const CHAR8 *Path, UINT8 DirsOnly, DIRECTORY_ENTRY **Entries,
                              LISTING_NOTES *Notes) {
  *Entries = nullptr;
  if (Notes != nullptr) {
    ZeroMem (Notes, sizeof (*Notes));
  }
  UINT16 Handle = gFileDriver->OpenDirectory (Volume, Path);
  if (Handle == 0) {
    return 0;
  }
  UINT16 Count = 0;
  DIRECTORY_ENTRY *All = gFileDriver->ReadDirectory (Handle, &Count);
  if (Notes != nullptr) {
    ReadListingNotes (Handle, Notes);
  }
  gFileDriver->CloseHandle (Handle);
  if (All == nullptr) {
    return 0;
  }
  UINT16 Kept = 0;
  for (UINT16 I = 0; I < Count; I++) {
    if (All[I].Name[0] != '.' && (DirsOnly == 0 || All[I].IsDirectory != 0)) {
      Kept++;
    }
  }
  DIRECTORY_ENTRY *Copy = Kept != 0 ? static_cast<DIRECTORY_ENTRY *> (AllocatePool (Kept * sizeof (DIRECTORY_ENTRY)))
                                    : nullptr;
  if (Copy == nullptr) {
    FreePool (All);
    return 0;
  }
  UINT16 Next = 0;
  for (UINT16 I = 0; I < Count; I++) {
    if (All[I].Name[0] != '.' && (DirsOnly == 0 || All[I].IsDirectory != 0)) {
      CopyMem (&Copy[Next++], &All[I], sizeof (DIRECTORY_ENTRY));
    }
  }
  FreePool (All);
  *Entries = Copy;
  return Kept;
}

BOOLEAN HasSubEntries (UINT8 Volume, const CHAR8 *Path, UINT8 DirsOnly) {
  DIRECTORY_ENTRY *Entries = nullptr;
  if (ReadFilteredDirectory (Volume, Path, DirsOnly, &Entries) == 0) {
    return FALSE;
  }
  FreePool (Entries);
  return TRUE;
}

WINDOW_HEADER *EFIAPI OpenFileDialog (UINT16 X, UINT16 Y, const CHAR8 *Title, UINT8 Volume, UINT8 DirsOnly) {
  EnsureFileIcons ();
  WINDOW_HEADER *Window = gWindowBase->CreateWindow (FILE_DIALOG_OBJECT_SIZE, gWindowBase->Desktop, FileDialogHandler,
                                                     PaintForwarder, FileDialogDestroy, X, Y, kDialogWidth,
                                                     kDialogHeight);
  if (Window == nullptr) {
    return nullptr;
  }
  FILE_DIALOG *Dialog = AsDialog (Window);
  gWindowBase->SetWindowText (Window, Title != nullptr ? Title : ""_a);
  Dialog->DirsOnly = DirsOnly;

  UINT16 LineHeight = gGuiDriver->GetLineHeight ();
  UINT16 FieldHeight = static_cast<UINT16> (LineHeight + 10);
  UINT16 Width = kDialogWidth;
  UINT16 Top = static_cast<UINT16> (gWindowBase->CaptionHeight + 6);

  // Volume label and selector.
  const CHAR8 *VolumeLabel = DialogText ("Tip_Partion");
  UINT16 LabelX = 10;
  UINT16 LabelWidth = static_cast<UINT16> (gGuiDriver->GetTextWidth (VolumeLabel) + 6);
  gWindowBase->CreateTextField (Window, LabelX, Top, LabelWidth, FieldHeight, 0, FALSE, VolumeLabel);
  UINT16 ComboX = static_cast<UINT16> (LabelX + LabelWidth);
  Dialog->VolumeCombo = gControlDriver->CreateComboBox (ComboX, Top, static_cast<UINT16> ((Width - 10) - ComboX),
                                                        static_cast<UINT16> (FieldHeight * 10), 0, Window);
  if (Dialog->VolumeCombo != nullptr) {
    FillVolumeCombo (Dialog, Volume);
  }
  Dialog->DialogVolume = Volume;

  // The tree.
  Top = static_cast<UINT16> (Top + LineHeight + 16);
  UINT16 TreeHeight = static_cast<UINT16> ((LineHeight + 6) * 10 + 6);
  Dialog->FileTree = gControlDriver->CreateFileList (Window, 10, Top, static_cast<UINT16> (Width - 20), TreeHeight, 0);
  UINT16 Row = static_cast<UINT16> (Top + TreeHeight + 6);

  // Name label, Open button and name field on one row.
  const CHAR8 *NameLabel = DialogText ("FileNameTip");
  UINT16 NameLabelWidth = static_cast<UINT16> (gGuiDriver->GetTextWidth (NameLabel) + 6);
  gWindowBase->CreateTextField (Window, 10, Row, NameLabelWidth, FieldHeight, 0, FALSE, NameLabel);
  const CHAR8 *OpenText = DialogText ("btOpen");
  UINT16 ButtonWidth = static_cast<UINT16> (gGuiDriver->GetTextWidth (OpenText) + 12);
  gWindowBase->CreateButton (Window, FILE_DIALOG_OPEN_BUTTON, OpenText, static_cast<UINT16> ((Width - 10) - ButtonWidth),
                             Row, ButtonWidth, FieldHeight, 0);
  UINT16 FieldX = static_cast<UINT16> (10 + NameLabelWidth + 3);
  UINT16 FieldWidth = static_cast<UINT16> (((Width - 10) - ButtonWidth) - gGuiDriver->GetCharWidth () / 2 -
                                           (10 + NameLabelWidth) - 3);
  Dialog->NameField = gWindowBase->CreateTextField (Window, FieldX, Row, FieldWidth, FieldHeight, 0, TRUE, ""_a);

  Window->Height = static_cast<UINT16> (Row + 2 * LineHeight + 25);
  UINT8 Icon = gWindowBase->LoadIcon ("\\efi\\kivora\\icon\\surveyor\\files\\dir.ico"_a, 16, 255);
  gWindowBase->SetWindowIcon (Window, Icon, TRUE);
  Window->Flags |= WINDOW_FLAG_DIALOG;

  if (Dialog->FileTree != nullptr) {
    LoadTree (Dialog);
  }
  return Window;
}
