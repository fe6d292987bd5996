// The file-manager window of a volume: opening, layout and closing.
//
// There is at most one main window per volume. New windows cascade by 30
// pixels from the position of the previous one (restarting at 50, 50), take
// the process-wide default size, and the first window of a load starts from
// the rectangle remembered under "Surveyor" in the position store. The last
// main window to close stores its rectangle there again.
//
// Layout, top to bottom: the menu header (menu row, toolbar, path row), the
// four-column list, and a status line of one line height + 8 pixels.
//
// Asking for the window of a volume that already has one switches it to the
// given path; the go-up command then follows that path as it does when the
// user navigates. A path that would not fit in CurrentPath (512 bytes) is
// ignored there, and falls back to the root for a new window.

#include "filemanager/main_window.h"

#include "core/bindings.h"
#include "core/driver_state.h"
#include "core/paint_forwarder.h"
#include "core/strings.h"
#include "filemanager/file_types.h"
#include "filemanager/listing.h"
#include "filemanager/main_window_internal.h"
#include "fileops/file_ops.h"
#include "menu_header/menu_header.h"
#include "platform/library.h"
#include "util/position_store.h"
#include "util/string_utils.h"

static_assert (offsetof (MAIN_WINDOW, Volume) == 272 && offsetof (MAIN_WINDOW, VolumeIndex) == 280);
static_assert (offsetof (MAIN_WINDOW, ReadOnly) == 283 && offsetof (MAIN_WINDOW, MenuBar) == 288);
static_assert (offsetof (MAIN_WINDOW, List) == 312 && offsetof (MAIN_WINDOW, CurrentPath) == 320);
static_assert (offsetof (MAIN_WINDOW, DirHandle) == 832 && offsetof (MAIN_WINDOW, RowStack) == 836);

UINT16 gDefaultWidth;
UINT16 gDefaultHeight;
UINT16 gCascadeX;
UINT16 gCascadeY;

namespace {

constexpr UINT16 FirstWidth = 400;
constexpr UINT16 FirstHeight = 300;
constexpr UINT16 FirstX = 100;
constexpr UINT16 FirstY = 100;
constexpr UINT16 FallbackWidth = 500;
constexpr UINT16 FallbackHeight = 375;
constexpr UINT16 CascadeStep = 30;
constexpr UINT16 CascadeLimit = 150;
constexpr UINT16 CascadeRestart = 50;
constexpr UINT8 ToolbarIconSize = 16;
constexpr UINT8 IconLoadOption = 255;

const CHAR8 *PositionName () { return "Surveyor"_a; }

const CHAR8 *FileSystemLabel (UINT8 Type) {
  switch (Type) {
    case 1: return "FAT32"_a;
    case 2: return "NTFS"_a;
    case 3: return "EFI_RAW"_a;
    case 5: return "KELDAR FAT"_a;
    case 6: return "KELDAR NTFS"_a;
    case 8: return "IMAGE"_a;
    default: return "UnKnown File System"_a;
  }
}

struct TOOLBAR_BUTTON {
  const char *IconPath;
  const char *LabelKey;
  const char *TooltipKey;
  COMMAND_CALLBACK Command;
};

const TOOLBAR_BUTTON ToolbarButtons[] = {
    {"\\efi\\kivora\\icon\\surveyor\\goback.ico", "back", "back_ttip", GoUpCommand},
    {"\\efi\\kivora\\icon\\surveyor\\copyfile.ico", "copy", "copy_ttip", CopyCommand},
    {"\\efi\\kivora\\icon\\surveyor\\paste.ico", "paste", "paste_ttip", PasteCommand},
    {"\\efi\\kivora\\icon\\surveyor\\delete.ico", "delete", "delete_ttip", DeleteCommand},
};

struct COLUMN {
  const char *TitleKey;
  UINT16 Capacity;
  UINT16 WidthInCharacters;
  BOOLEAN FirstFlag;
  BOOLEAN SecondFlag;
};

const COLUMN Columns[] = {
    {"name", 192, 10, 1, 0},
    {"size", 32, 8, 0, 1},
    {"type", 16, 8, 0, 0},
    {"date", 32, 12, 0, 0},
};

const CHAR8 *Text8 (const char *Text) { return reinterpret_cast<const CHAR8 *> (Text); }

MAIN_WINDOW *FindVolumeWindow (UINT8 VolumeIndex) {
  for (WINDOW_HEADER *Window = gWindowBase->FindNextWindow (nullptr, MainWindowHandler); Window != nullptr;
       Window = gWindowBase->FindNextWindow (Window, MainWindowHandler)) {
    MAIN_WINDOW *Main = reinterpret_cast<MAIN_WINDOW *> (Window);
    if (Main->VolumeIndex == VolumeIndex) return Main;
  }
  return nullptr;
}

UINT16 MenuBarBottom (MAIN_WINDOW *Window) {
  if (Window->MenuBar == nullptr) return gWindowBase->CaptionHeight;
  return (UINT16) (Window->MenuBar->Y + Window->MenuBar->Height);
}

UINT16 StatusLineHeight () { return (UINT16) (gGuiDriver->GetLineHeight () + 8); }

VOID BuildPopups (MAIN_WINDOW *Window) {
  if (Window->FilePopup != nullptr) return;
  WINDOW_HEADER *Self = &Window->Header;
  WINDOW_HEADER *File = gWindowBase->CreatePopupMenu (Self, 0, 0, 0);
  Window->FilePopup = File;
  if (File != nullptr) {
    gWindowBase->AppendMenuItem (File, GetString ("FileMenu"_a, "delete"_a), DeleteCommand, Self, 0);
    gWindowBase->AppendMenuItem (File, GetString ("FileMenu"_a, "copy file"_a), CopyCommand, Self, 0);
    gWindowBase->AppendMenuItem (File, GetString ("FileMenu"_a, "paste file"_a), PasteCommand, Self, 0);
    gWindowBase->AppendMenuSeparator (File);
    gWindowBase->AppendMenuItem (File, GetString ("FileMenu"_a, "gouplayer"_a), GoUpCommand, Self, 0);
    gWindowBase->AppendMenuItem (File, GetString ("FileMenu"_a, "newdir"_a), NewDirCommand, Self, 0);
    gWindowBase->AppendMenuSeparator (File);
    gWindowBase->AppendMenuItem (File, GetString ("FileMenu"_a, "exit"_a), ExitCommand, Self, 0);
    if (Window->ReadOnly) {
      gWindowBase->EnableMenuItem (File, DeleteCommand, FALSE);
      gWindowBase->EnableMenuItem (File, PasteCommand, FALSE);
      gWindowBase->EnableMenuItem (File, NewDirCommand, FALSE);
    }
  }
  WINDOW_HEADER *Help = gWindowBase->CreatePopupMenu (Self, 0, 0, 0);
  Window->HelpPopup = Help;
  if (Help != nullptr) gWindowBase->AppendMenuItem (Help, GetString ("FileMenu"_a, "about"_a), AboutCommand, Self, 0);
}

VOID FillMenuBar (MAIN_WINDOW *Window) {
  WINDOW_HEADER *Bar = Window->MenuBar;
  if (Bar == nullptr) return;
  WINDOW_HEADER *Self = &Window->Header;
  AddHeaderItem (Bar, ICON_NONE, GetString ("File Menu"_a, "File"_a), nullptr, Window->FilePopup, Self);
  AddHeaderItem (Bar, ICON_NONE, GetString ("File Menu"_a, "Help"_a), nullptr, Window->HelpPopup, Self);
  for (const TOOLBAR_BUTTON &Button : ToolbarButtons) {
    UINT8 Icon = gWindowBase->LoadIcon (Text8 (Button.IconPath), ToolbarIconSize, IconLoadOption);
    MENU_ITEM *Item = AddHeaderItem (Bar, Icon, GetString ("toolbar"_a, Text8 (Button.LabelKey)), Button.Command,
                                     nullptr, Self);
    if (Item != nullptr) gWindowBase->SetTooltip (Item, GetString ("toolbar"_a, Text8 (Button.TooltipKey)), 0, 0);
  }
  if (Window->ReadOnly) {
    EnableHeaderItem (Bar, PasteCommand, FALSE, FALSE);
    EnableHeaderItem (Bar, DeleteCommand, FALSE, FALSE);
  }
}

VOID CreateList (MAIN_WINDOW *Window) {
  UINT16 Top = (UINT16) (MenuBarBottom (Window) + 1);
  UINT16 Width = (UINT16) (Window->Header.Width - 5);
  UINT16 Height = (UINT16) (Window->Header.Height - StatusLineHeight () - Top);
  Window->List = gControlDriver->CreateListView (&Window->Header, 2, Top, Width, Height, 1);
  if (Window->List == nullptr) return;
  UINT16 CharWidth = gGuiDriver->GetCharWidth ();
  for (const COLUMN &Column : Columns) {
    gControlDriver->AddColumn (Window->List, GetString ("ListHeader"_a, Text8 (Column.TitleKey)), Column.Capacity,
                               (UINT16) (Column.WidthInCharacters * CharWidth), Column.FirstFlag, Column.SecondFlag);
  }
}

// The first window of a load starts from the remembered rectangle, which must
// leave room for the menu header and six lines of list.
VOID RestoreRememberedRectangle (MAIN_WINDOW *Window) {
  gDefaultWidth = FirstWidth;
  gDefaultHeight = FirstHeight;
  gCascadeX = FirstX;
  gCascadeY = FirstY;
  LoadWindowPosition (PositionName (), &gCascadeX, &gCascadeY, &gDefaultWidth, &gDefaultHeight);
  UINT16 MinWidth = MainMinimumWidth ();
  UINT16 MinHeight = MainMinimumHeight (Window);
  if (gDefaultWidth < MinWidth || gDefaultHeight < MinHeight) {
    gCascadeX = FirstX;
    gCascadeY = FirstY;
    gDefaultWidth = MinWidth;
    gDefaultHeight = MinHeight;
  }
}

VOID ShowInitialDirectory (MAIN_WINDOW *Window, const CHAR8 *InitialPath) {
  if (InitialPath != nullptr && StringLength (InitialPath) < MAIN_PATH_SIZE && LoadListing (Window, InitialPath)) {
    CopyString (Window->CurrentPath, InitialPath);
    SetHeaderPath (Window->MenuBar, InitialPath, FALSE);
    return;
  }
  LoadListing (Window, "\\"_a);
  CopyString (Window->CurrentPath, "\\"_a);
}

VOID EFIAPI MainWindowDestroyed (WINDOW_HEADER *Self) {
  MAIN_WINDOW *Window = reinterpret_cast<MAIN_WINDOW *> (Self);
  WINDOW_HEADER *Other = gWindowBase->FindNextWindow (nullptr, MainWindowHandler);
  if (Other == Self) Other = gWindowBase->FindNextWindow (Self, MainWindowHandler);
  if (Other == nullptr) {
    UINT16 X, Y, Width, Height;
    if (Self->Flags & WINDOW_FLAG_MAXIMIZED) {
      Width = Self->RestoreWidth;
      Height = Self->RestoreHeight;
      X = Self->RestoreX;
      Y = Self->RestoreY;
    } else {
      X = Self->X;
      Y = Self->Y;
      Width = Self->Width;
      Height = Self->Height;
    }
    SaveWindowPosition (PositionName (), X, Y, Width, Height);
    gCascadeX = X;
    gCascadeY = Y;
    gDefaultWidth = Width;
    gDefaultHeight = Height;
  }
  if (Window->DirHandle != 0) {
    gFileDriver->CloseHandle (Window->DirHandle);
    Window->DirHandle = 0;
  }
  if (Window->FilePopup != nullptr) {
    gWindowBase->DestroyWindow (Window->FilePopup);
    Window->FilePopup = nullptr;
  }
  if (Window->HelpPopup != nullptr) {
    gWindowBase->DestroyWindow (Window->HelpPopup);
    Window->HelpPopup = nullptr;
  }
  gFileDriver->FlushVolume (Window->VolumeIndex);
}

}  // namespace

CONTROL *MainPathField (MAIN_WINDOW *Window) {
  if (Window->MenuBar == nullptr) return nullptr;
  return reinterpret_cast<MENU_HEADER *> (Window->MenuBar)->PathField;
}

UINT16 MainMinimumWidth () { return (UINT16) (20 * gGuiDriver->GetCharWidth ()); }

UINT16 MainMinimumHeight (MAIN_WINDOW *Window) {
  return (UINT16) (MenuBarBottom (Window) + 6 * gGuiDriver->GetLineHeight ());
}

VOID ResizeMainWindow (MAIN_WINDOW *Window, UINT16 Width, UINT16 Height) {
  if (Width < MainMinimumWidth () || Height < MainMinimumHeight (Window)) return;
  Window->Header.Width = Width;
  Window->Header.Height = Height;
  UINT16 Top = (UINT16) (MenuBarBottom (Window) + 1);
  MESSAGE Record;
  ZeroMem (&Record, sizeof (Record));
  Record.Type = MSG_RESIZE;
  Record.Code = 1;
  Record.Word2 = (UINT16) (Width - 5);
  Record.Word4 = (UINT16) (Height - StatusLineHeight () - Top);
  Record.Byte7 = 1;
  Record.Word8 = 2;
  Record.Word10 = Top;
  if (Window->List != nullptr) gWindowBase->SendMessage (Window->List, &Record);
  Record.Code = 0;
  Record.Byte7 = 0;
  if (Window->MenuBar != nullptr) gWindowBase->SendMessage (Window->MenuBar, &Record);
}

VOID EFIAPI AboutCommand (VOID *, WINDOW_HEADER *) {
  const CHAR8 *Text = GetString ("base"_a, "strAboutString"_a);
  const CHAR8 *Caption = GetString ("base"_a, "strAboutCap"_a);
  gWindowBase->MessageBox (1, Text, Caption, 0);
}

VOID EFIAPI ExitCommand (VOID *, WINDOW_HEADER *Context) {
  if (Context == nullptr) return;
  MESSAGE Close;
  ZeroMem (&Close, sizeof (Close));
  Close.Type = MSG_SYSCOMMAND;
  Close.Word2 = SYSCMD_CLOSE;
  gWindowBase->PostMessage (Context, &Close);
}

WINDOW_HEADER *EFIAPI OpenVolumeWindow (UINT16 Width, UINT16 Height, UINT8 VolumeIndex, VOLUME_RECORD *Volume,
                                        const CHAR8 *InitialPath) {
  if (gNtfsService == nullptr) {
    NTFS_SERVICE_PROTOCOL *Ntfs = BindNtfsService ();
    if (Ntfs != nullptr) Ntfs->Prepare ();
  }
  if (Volume == nullptr) {
    if (VolumeIndex >= VOLUME_COUNT) return nullptr;
    Volume = &gFileDriver->Volumes[VolumeIndex];
  }

  MAIN_WINDOW *Existing = FindVolumeWindow (VolumeIndex);
  if (Existing != nullptr) {
    // A path that would not fit leaves the window as it is. The go-up
    // command follows the new path, as it does when the user navigates.
    if (InitialPath != nullptr && StringLength (InitialPath) < MAIN_PATH_SIZE) {
      CopyString (Existing->CurrentPath, InitialPath);
      RecountDepth (Existing);
      Refresh (Existing);
      SetGoUpEnabled (Existing, !NamesEqual (Existing->CurrentPath, "\\"_a));
    }
    return &Existing->Header;
  }

  BOOLEAN First = FALSE;
  if (gDefaultWidth == 0 || gDefaultHeight == 0) {
    gDefaultWidth = FirstWidth;
    gDefaultHeight = FirstHeight;
    First = TRUE;
  }
  if (Width == 0) Width = gDefaultWidth;
  if (Height == 0) Height = gDefaultHeight;
  EnsureFileIcons ();

  UINT32 ScreenWidth = gGuiDriver->ScreenWidth;
  UINT32 ScreenHeight = gGuiDriver->ScreenHeight;
  UINT16 X = gCascadeX;
  UINT16 Y = gCascadeY;
  if (!((UINT32) X + Width < ScreenWidth && (UINT32) Y + Height < ScreenHeight && Width < ScreenWidth &&
        Height < ScreenHeight && Width >= 100 && Height >= 100)) {
    X = FirstX;
    Y = FirstY;
    Width = FallbackWidth;
    Height = FallbackHeight;
  }
  gCascadeX = (UINT16) (gCascadeX + CascadeStep);
  gCascadeY = (UINT16) (gCascadeY + CascadeStep);
  if (gCascadeX >= CascadeLimit || gCascadeY >= CascadeLimit) {
    gCascadeX = CascadeRestart;
    gCascadeY = CascadeRestart;
  }

  WINDOW_HEADER *Self = gWindowBase->CreateWindow (MAIN_WINDOW_SIZE, gWindowBase->Desktop, MainWindowHandler,
                                                   PaintForwarder, MainWindowDestroyed, X, Y, Width, Height);
  if (Self == nullptr) return nullptr;
  MAIN_WINDOW *Window = reinterpret_cast<MAIN_WINDOW *> (Self);
  Window->Volume = Volume;
  Window->ReadOnly = (Volume->Flags & VOLUME_FLAG_WRITE_PROTECTED) ? 1 : 0;
  Window->CompareTarget1 = NO_COMPARE_TARGET;
  Window->CompareTarget2 = NO_COMPARE_TARGET;
  // Until VolumeIndex is set below, no other window may match this one.
  Window->VolumeIndex = VolumeIndex;
  Window->MenuBar = CreateMenuHeader (Self, TRUE, TRUE);
  CHAR8 Label[sizeof (Volume->Label)];
  CopyStringN (Label, Volume->Label, sizeof (Label));
  gWindowBase->SetWindowText (Self, Label);
  BuildPopups (Window);
  FillMenuBar (Window);
  CreateList (Window);
  if (First) RestoreRememberedRectangle (Window);
  Self->X = gCascadeX;
  Self->Y = gCascadeY;
  Self->Width = gDefaultWidth;
  Self->Height = gDefaultHeight;
  Window->VolumeIndex = VolumeIndex;

  if (Window->List != nullptr) {
    ShowInitialDirectory (Window, InitialPath);
  } else {
    CopyString (Window->CurrentPath, "\\"_a);
  }
  RecountDepth (Window);

  Self->Flags |= WINDOW_FLAG_HAS_ICON | WINDOW_FLAG_RESIZABLE;
  gWindowBase->SetWindowIcon (Self, gFileIcons.Directory, TRUE);
  gWindowBase->SetStatusLayout (Self, 2);
  gWindowBase->SetStatusText (Self, 2, FileSystemLabel (Volume->FileSystemType));

  if (!Window->ReadOnly && !gJobioDriver->HasClipboard ()) {
    if (Window->FilePopup != nullptr) gWindowBase->EnableMenuItem (Window->FilePopup, PasteCommand, FALSE);
    EnableHeaderItem (Window->MenuBar, PasteCommand, FALSE, FALSE);
  }
  if (NamesEqual (Window->CurrentPath, "\\"_a)) {
    EnableHeaderItem (Window->MenuBar, GoUpCommand, FALSE, FALSE);
    if (Window->FilePopup != nullptr) gWindowBase->EnableMenuItem (Window->FilePopup, GoUpCommand, FALSE);
  }
  return Self;
}

void ResetFileManagerState () {
  gDefaultWidth = 0;
  gDefaultHeight = 0;
  gCascadeX = 0;
  gCascadeY = 0;
}
