// The hex viewer: a window that shows any file as pages of 4096 bytes, 16
// bytes a line, with the offset within the page, 16 hexadecimal columns and a
// text column that shows printable bytes and GBK double-byte characters.
//
// Only one page of the file is ever held in memory: the file stays open for
// the window's life and each page is read with ReadAt into PageBuffer. The
// list's rows are created once when the window opens; paging only rewrites
// the cell texts of all 256 lines.
#include "viewers/viewers.h"

#include "core/bindings.h"
#include "core/paint_forwarder.h"
#include "core/resource_format.h"
#include "core/strings.h"
#include "filemanager/file_types.h"
#include "platform/library.h"
#include "util/string_utils.h"
#include "viewers/viewer_records.h"

namespace {

constexpr UINT32 kPageSize = HEX_PAGE_SIZE;
constexpr UINT16 kLinesPerPage = HEX_PAGE_SIZE / HEX_BYTES_PER_LINE;
constexpr UINT64 kLargestFile = 0x1000000000ull;   // 64 GiB: refused from here on

const CHAR8 *HexText (const char *Key) {
  return GetString ("HexFile"_a, reinterpret_cast<const CHAR8 *> (Key));
}

// Number of bytes of the current page that belong to the file.
UINT32 ValidBytes (const HEX_VIEWER *Viewer) {
  UINT64 Offset = (UINT64)Viewer->CurrentPage * kPageSize;
  if (Offset >= Viewer->FileSize) {
    return 0;
  }
  UINT64 Left = Viewer->FileSize - Offset;
  return Left < kPageSize ? (UINT32)Left : kPageSize;
}

// Text column of line Row. *Carry is set when a double-byte character of
// this line takes the first byte of the next one, and is consumed here when
// the previous line left it set. Text must hold at least 18 bytes.
VOID BuildTextColumn (const UINT8 *Page, UINT32 Valid, UINT16 Row, BOOLEAN *Carry, CHAR8 *Text) {
  UINT32 Position = 0;
  if (*Carry) {
    Text[0] = ' ';
    Position = 1;
    *Carry = FALSE;
  }
  while (Position < HEX_BYTES_PER_LINE) {
    UINT32 Index = (UINT32)Row * HEX_BYTES_PER_LINE + Position;
    UINT8 Byte = Page[Index];
    if (Index >= Valid) {
      Text[Position++] = ' ';
    } else if (Byte < 32) {
      Text[Position++] = '.';
    } else if (Byte < 128) {
      Text[Position++] = Byte;
    } else if (Index + 1 >= kPageSize) {
      // A lead byte that ends the page buffer has no second byte to pair
      // with: it is shown as "." rather than as half a character.
      Text[Position++] = '.';
    } else {
      Text[Position] = Byte;
      Text[Position + 1] = Page[Index + 1];
      Position += 2;
      if (Position > HEX_BYTES_PER_LINE) {
        *Carry = TRUE;
      }
    }
  }
  Text[Position] = 0;
}

BOOLEAN PageHasNonZeroByte (const HEX_VIEWER *Viewer) {
  for (UINT32 I = 0; I < kPageSize; I++) {
    if (Viewer->PageBuffer[I] != 0) {
      return TRUE;
    }
  }
  return FALSE;
}

VOID SetButtonEnabled (HEX_VIEWER *Viewer, UINT8 Id, BOOLEAN Enabled) {
  CONTROL *Button = gWindowBase->GetControl (&Viewer->Header, Id);
  if (Button == nullptr) {
    return;
  }
  if (Enabled) {
    Button->Flags |= WINDOW_FLAG_ENABLED;
  } else {
    Button->Flags &= ~WINDOW_FLAG_ENABLED;
  }
}

VOID RedrawPage (HEX_VIEWER *Viewer) {
  ShowHexPage (Viewer);
  gWindowBase->Redraw (Viewer->PageField);
  gWindowBase->Redraw (Viewer->List);
}

BOOLEAN PageUp (HEX_VIEWER *Viewer) {
  if (Viewer->CurrentPage == 0) {
    return FALSE;
  }
  Viewer->CurrentPage--;
  if (Viewer->CurrentPage == 0) {
    SetButtonEnabled (Viewer, HEX_BUTTON_PAGE_UP, FALSE);
  }
  if (Viewer->CurrentPage + 1 < Viewer->PageCount) {
    SetButtonEnabled (Viewer, HEX_BUTTON_PAGE_DOWN, TRUE);
  }
  RedrawPage (Viewer);
  return TRUE;
}

BOOLEAN PageDown (HEX_VIEWER *Viewer) {
  if ((UINT64)Viewer->CurrentPage + 1 >= Viewer->PageCount) {
    return FALSE;
  }
  Viewer->CurrentPage++;
  if (Viewer->CurrentPage == Viewer->PageCount - 1) {
    SetButtonEnabled (Viewer, HEX_BUTTON_PAGE_DOWN, FALSE);
  }
  if (Viewer->CurrentPage != 0) {
    SetButtonEnabled (Viewer, HEX_BUTTON_PAGE_UP, TRUE);
  }
  RedrawPage (Viewer);
  return TRUE;
}

UINT8 EFIAPI HexViewerHandler (WINDOW_HEADER *Window, MESSAGE *Message) {
  HEX_VIEWER *Viewer = reinterpret_cast<HEX_VIEWER *> (Window);
  switch (Message->Type) {
    case MSG_SYSCOMMAND:
      switch (Message->Word2) {
        case SYSCMD_RESTORE:
        case SYSCMD_CLOSE:
          return 1;
        case HEX_BUTTON_PAGE_UP:
          PageUp (Viewer);
          return 0;
        case HEX_BUTTON_PAGE_DOWN:
          PageDown (Viewer);
          return 0;
        case HEX_BUTTON_BACK_NON_ZERO:
          while (PageUp (Viewer) && !PageHasNonZeroByte (Viewer)) {
          }
          return 0;
        case HEX_BUTTON_FORWARD_NON_ZERO:
          while (PageDown (Viewer) && !PageHasNonZeroByte (Viewer)) {
          }
          return 0;
        default:
          return 0;
      }
    case MSG_ACTIVATE:
      return 1;
    default:
      return 0;
  }
}

VOID EFIAPI HexViewerDestroy (WINDOW_HEADER *Window) {
  HEX_VIEWER *Viewer = reinterpret_cast<HEX_VIEWER *> (Window);
  if (Viewer->FileHandle != 0) {
    gFileDriver->CloseHandle (Viewer->FileHandle);
    Viewer->FileHandle = 0;
  }
  if (Viewer->PageBuffer != nullptr) {
    FreePool (Viewer->PageBuffer);
    Viewer->PageBuffer = nullptr;
  }
}

VOID Refuse (const CHAR8 *Path, const char *CaptionKey) {
  gWindowBase->MessageBox (1, Path, HexText (CaptionKey), 0);
}

VOID AddColumns (LIST_CONTROL *List) {
  UINT16 CharWidth = gGuiDriver->GetCharWidth ();
  gControlDriver->AddColumn (List, HexText ("offset"), 22, (UINT16)(4 * CharWidth), FALSE, FALSE);
  for (UINT32 Column = 0; Column < HEX_BYTES_PER_LINE; Column++) {
    CHAR8 Title[8];
    ZeroMem (Title, sizeof (Title));
    AsciiSPrint (Title, sizeof (Title), "%02x"_a, Column);
    gControlDriver->AddColumn (List, Title, 4, (UINT16)(2 * CharWidth), TRUE, TRUE);
  }
  gControlDriver->AddColumn (List, "ASCII"_a, 19, (UINT16)(12 * CharWidth), FALSE, FALSE);
}

// One row per line of a full page, at most 256; the offset text is relative
// to the page, so the same rows serve every page.
VOID AddLines (LIST_CONTROL *List, UINT64 FileSize) {
  UINT64 Lines = (FileSize + HEX_BYTES_PER_LINE - 1) / HEX_BYTES_PER_LINE;
  if (Lines > kLinesPerPage) {
    Lines = kLinesPerPage;
  }
  DIRECTORY_ENTRY Entry;
  for (UINT32 Line = 0; Line < Lines; Line++) {
    ZeroMem (&Entry, sizeof (Entry));
    AsciiSPrint (Entry.Name, sizeof (Entry.Name), "%04x"_a, Line * HEX_BYTES_PER_LINE);
    gControlDriver->AddListItem (List, ICON_NONE, FALSE, Line, 0, &Entry);
  }
}

}  // namespace

BOOLEAN ShowHexPage (HEX_VIEWER *Viewer) {
  UINT64 Offset = (UINT64)Viewer->CurrentPage * kPageSize;
  UINT32 Count = ValidBytes (Viewer);
  if (gFileDriver->ReadAt (Viewer->FileHandle, Offset, Viewer->PageBuffer, Count) != Count) {
    return FALSE;
  }

  CHAR8 PageText[64];
  ZeroMem (PageText, sizeof (PageText));
  FormatResourceText (PageText, sizeof (PageText), HexText ("tipCurrentPage"), Viewer->CurrentPage);
  gWindowBase->SetWindowText (Viewer->PageField, PageText);

  static const char kDigits[] = "0123456789ABCDEF";
  BOOLEAN Carry = FALSE;
  for (UINT16 Row = 0; Row < kLinesPerPage; Row++) {
    for (UINT8 Column = 0; Column < HEX_BYTES_PER_LINE; Column++) {
      UINT32 Index = (UINT32)Row * HEX_BYTES_PER_LINE + Column;
      CHAR8 Cell[3];
      if (Index < Count) {
        UINT8 Byte = Viewer->PageBuffer[Index];
        Cell[0] = (CHAR8)kDigits[Byte >> 4];
        Cell[1] = (CHAR8)kDigits[Byte & 0x0F];
      } else {
        Cell[0] = '-';
        Cell[1] = '-';
      }
      Cell[2] = 0;
      gControlDriver->SetItemText (Viewer->List, (UINT8)(Column + 1), Row, Cell);
    }
    CHAR8 Text[HEX_BYTES_PER_LINE + 2];
    BuildTextColumn (Viewer->PageBuffer, Count, Row, &Carry, Text);
    gControlDriver->SetItemText (Viewer->List, HEX_BYTES_PER_LINE + 1, Row, Text);
  }
  return TRUE;
}

WINDOW_HEADER *OpenHexViewer (UINT16 X, UINT16 Y, const CHAR8 *Path, UINT8 VolumeIndex) {
  if (Path == nullptr) {
    return nullptr;
  }
  // A path that cannot be kept in the window is treated like one that
  // cannot be opened (the file driver refuses such paths anyway).
  if (StringLength (Path) >= HEX_PATH_SIZE || VolumeIndex >= VOLUME_COUNT) {
    Refuse (Path, "tip_failOpen");
    return nullptr;
  }
  UINT16 Handle = gFileDriver->OpenDirectory (VolumeIndex, Path);
  if (Handle == 0) {
    Refuse (Path, "tip_failOpen");
    return nullptr;
  }
  FILE_INFO Info;
  ZeroMem (&Info, sizeof (Info));
  if (!gFileDriver->GetFileInfo (Handle, &Info)) {
    gFileDriver->CloseHandle (Handle);
    Refuse (Path, "tip_failGetFileInfo");
    return nullptr;
  }
  if (Info.IsDirectory != 0 || Info.Size >= kLargestFile) {
    gFileDriver->CloseHandle (Handle);
    Refuse (Path, "tip_notsupport");
    return nullptr;
  }

  UINT16 CharWidth = gGuiDriver->GetCharWidth ();
  UINT16 Width = (UINT16)(2 * CharWidth * 16 + 4 * CharWidth + 4 + 12 * CharWidth);
  UINT16 Height = (UINT16)((UINT32)Width * 3 / 4);
  HEX_VIEWER *Viewer = reinterpret_cast<HEX_VIEWER *> (gWindowBase->CreateWindow (
      HEX_VIEWER_SIZE, gWindowBase->Desktop, HexViewerHandler, PaintForwarder, HexViewerDestroy, X, Y, Width,
      Height));
  if (Viewer == nullptr) {
    gFileDriver->CloseHandle (Handle);
    return nullptr;
  }

  // From here the destroy callback releases the handle and the page buffer.
  CHAR8 Title[sizeof (gFileDriver->Volumes[0].Label) + 2 + HEX_PATH_SIZE];
  ZeroMem (Title, sizeof (Title));
  CopyStringN (Title, gFileDriver->Volumes[VolumeIndex].Label, sizeof (gFileDriver->Volumes[0].Label));
  AppendString (Title, "  "_a);
  AppendString (Title, Path);
  gWindowBase->SetWindowText (&Viewer->Header, Title);
  CopyString (Viewer->Path, Path);
  Viewer->VolumeIndex = VolumeIndex;
  Viewer->FileHandle = Handle;

  UINT16 CaptionHeight = gWindowBase->CaptionHeight;
  UINT16 LineHeight = gGuiDriver->GetLineHeight ();
  UINT16 WindowHeight = Viewer->Header.Height;
  Viewer->List = gControlDriver->CreateListView (&Viewer->Header, 2, (UINT16)(CaptionHeight + LineHeight + 22),
                                                 (UINT16)(Width - 4),
                                                 (UINT16)(WindowHeight - (CaptionHeight + LineHeight + 24)), 0);
  Viewer->PageBuffer = static_cast<UINT8 *> (AllocateZeroPool (kPageSize));
  if (Viewer->List == nullptr || Viewer->PageBuffer == nullptr) {
    gWindowBase->DestroyWindow (&Viewer->Header);
    return nullptr;
  }
  Viewer->List->Option = 1;

  Viewer->FileSize = Info.Size;
  Viewer->PageCount = (UINT32)((Info.Size + kPageSize - 1) / kPageSize);
  Viewer->CurrentPage = 0;

  AddColumns (Viewer->List);
  AddLines (Viewer->List, Info.Size);

  // Paging buttons, from the right edge leftwards: page down, page up,
  // "!0<<", ">>!0".
  CharWidth = gGuiDriver->GetCharWidth ();
  LineHeight = gGuiDriver->GetLineHeight ();
  UINT16 ButtonY = (UINT16)(CaptionHeight + 6);
  UINT16 ButtonHeight = (UINT16)(LineHeight + 10);
  UINT16 PageButtonWidth = (UINT16)(5 * CharWidth);
  UINT16 SearchButtonWidth = (UINT16)(3 * CharWidth);
  UINT16 X0 = (UINT16)((Width - 10) - (2 * PageButtonWidth + 10));
  UINT16 X1 = (UINT16)(X0 - 10 - SearchButtonWidth);
  UINT16 X2 = (UINT16)(X1 - 10 - SearchButtonWidth);
  gWindowBase->CreateButton (&Viewer->Header, HEX_BUTTON_PAGE_UP, HexText ("pageup"), X0, ButtonY, PageButtonWidth,
                             ButtonHeight, 0);
  gWindowBase->CreateButton (&Viewer->Header, HEX_BUTTON_PAGE_DOWN, HexText ("pagedown"),
                             (UINT16)(X0 + PageButtonWidth + 10), ButtonY, PageButtonWidth, ButtonHeight, 0);
  gWindowBase->CreateButton (&Viewer->Header, HEX_BUTTON_BACK_NON_ZERO, "!0<<"_a, X1, ButtonY, SearchButtonWidth,
                             ButtonHeight, 0);
  gWindowBase->CreateButton (&Viewer->Header, HEX_BUTTON_FORWARD_NON_ZERO, ">>!0"_a, X2, ButtonY,
                             SearchButtonWidth, ButtonHeight, 0);

  CHAR8 Information[512];
  ZeroMem (Information, sizeof (Information));
  FormatResourceText (Information, sizeof (Information), HexText ("tipFileInfo"), Info.Size, Viewer->PageCount);
  UINT16 InformationWidth = gGuiDriver->GetTextWidth (Information);
  gWindowBase->CreateTextField (&Viewer->Header, 3, ButtonY, (UINT16)(InformationWidth + 4), ButtonHeight, 0, FALSE,
                                Information);
  // The page field takes the room between the label and the leftmost
  // button; a label too wide for that leaves it without width.
  INT32 PageFieldWidth = (INT32)X2 - ((INT32)InformationWidth + 7) - 8;
  if (PageFieldWidth < 0) {
    PageFieldWidth = 0;
  }
  Viewer->PageField = gWindowBase->CreateTextField (&Viewer->Header, (UINT16)(InformationWidth + 11), ButtonY,
                                                    (UINT16)PageFieldWidth, ButtonHeight, 0, FALSE, "0"_a);

  ShowHexPage (Viewer);
  gWindowBase->SetWindowIcon (&Viewer->Header, gFileIcons.Hex, FALSE);
  return &Viewer->Header;
}
