// The icon viewer: up to eight images of an ICO file, loaded at size 32
// through the window base and laid out side by side in rows. A file without
// a loadable image still gets a window, which says "No Icon Loaded".
#include "viewers/viewers.h"

#include "core/bindings.h"
#include "filemanager/file_types.h"
#include "platform/library.h"
#include "util/string_utils.h"
#include "viewers/viewer_records.h"

namespace {

constexpr UINT32 kWhite = 0xFFFFFF;
constexpr UINT16 kCreatedWidth = 200;
constexpr UINT16 kCreatedHeight = 150;

UINT8 EFIAPI IconViewerHandler (WINDOW_HEADER *Window, MESSAGE *Message) {
  switch (Message->Type) {
    case MSG_SYSCOMMAND:
      return (Message->Word2 == SYSCMD_RESTORE || Message->Word2 == SYSCMD_CLOSE) ? 1 : 0;
    case MSG_ACTIVATE:
      return 1;
    default:
      return 0;
  }
}

VOID EFIAPI IconViewerPaint (WINDOW_HEADER *Window, MESSAGE *Message, VOID *Extra) {
  ICON_VIEWER *Viewer = reinterpret_cast<ICON_VIEWER *> (Window);
  PAINT_CONTEXT Context = gWindowBase->BeginPaint (Window);
  if (Context == nullptr) {
    return;
  }
  gWindowBase->DefaultPaint (Window, Message, Extra);
  UINT16 Rect[4] = {0, 0, 0, 0};
  gWindowBase->GetClientRect (Window, Rect);
  UINT16 OriginX = 0;
  UINT16 OriginY = 0;
  gWindowBase->GetWindowOrigin (&OriginX, &OriginY, Window);
  // The client rectangle is moved by the window's screen position; a window
  // base that reports it in screen positions already (it then starts at or
  // after the origin on x) has it filled where it is.
  BOOLEAN Relative = Rect[0] < OriginX;
  UINT16 FillX = Relative ? (UINT16)(Rect[0] + OriginX) : Rect[0];
  UINT16 FillY = Relative ? (UINT16)(Rect[1] + OriginY) : Rect[1];
  gWindowBase->FillRect (Context, FillX, FillY, Rect[2], Rect[3], kWhite);

  INT32 CaptionHeight = gWindowBase->CaptionHeight;
  if (Viewer->IconCount == 0) {
    gGuiDriver->DrawText (Context, (UINT16)(OriginX + CaptionHeight + 10), (UINT16)(OriginY + CaptionHeight),
                          "No Icon Loaded"_a, 65535);
    return;
  }

  INT32 HalfChar = gGuiDriver->GetCharWidth () / 2;
  INT32 Left = OriginX + 10;
  INT32 Top = OriginY + CaptionHeight + 6;
  INT32 Right = OriginX + Window->Width - 10;
  INT32 Bottom = OriginY + Window->Height - 10;
  INT32 X = Left;
  INT32 Y = Top;
  INT32 RowHeight = 0;
  UINT8 Count = Viewer->IconCount <= ICON_VIEWER_SLOTS ? Viewer->IconCount : ICON_VIEWER_SLOTS;
  for (UINT8 I = 0; I < Count; I++) {
    const ICON_SLOT &Slot = Viewer->Icons[I];
    if (!(X + Slot.Width < Right && Y + Slot.Height < Bottom)) {
      // Next row; an image that does not fit at the start of a row ends the drawing.
      Y += RowHeight;
      RowHeight = 0;
      X = Left;
      if (X + Slot.Width >= Right || Y + Slot.Height >= Bottom) {
        break;
      }
    }
    gWindowBase->DrawIcon (Context, (UINT16)X, (UINT16)Y, Slot.IconId);
    X += Slot.Width + HalfChar;
    if (Slot.Height > RowHeight) {
      RowHeight = Slot.Height;
    }
  }
}

VOID EFIAPI IconViewerDestroy (WINDOW_HEADER *Window) {
  ICON_VIEWER *Viewer = reinterpret_cast<ICON_VIEWER *> (Window);
  for (UINT8 I = 0; I < Viewer->IconCount && I < ICON_VIEWER_SLOTS; I++) {
    gWindowBase->FreeIcon (Viewer->Icons[I].IconId);
  }
  Viewer->IconCount = 0;
}

}  // namespace

WINDOW_HEADER *OpenIconViewer (UINT16 X, UINT16 Y, UINT8 VolumeIndex, const CHAR8 *Path) {
  if (Path == nullptr || VolumeIndex >= VOLUME_COUNT) {
    return nullptr;
  }
  ICON_VIEWER *Viewer = reinterpret_cast<ICON_VIEWER *> (
      gWindowBase->CreateWindow (ICON_VIEWER_SIZE, gWindowBase->Desktop, IconViewerHandler, IconViewerPaint,
                                 IconViewerDestroy, X, Y, kCreatedWidth, kCreatedHeight));
  if (Viewer == nullptr) {
    return nullptr;
  }

  // Images in file order until one is missing or its size cannot be read.
  for (UINT8 Index = 0; Index < ICON_VIEWER_SLOTS; Index++) {
    ICON_SLOT *Slot = &Viewer->Icons[Index];
    UINT8 Id = gWindowBase->LoadIconFromFile (VolumeIndex, Path, ICON_VIEWER_SIZE_PX, Index);
    Slot->IconId = Id;
    if (Id >= ICON_NONE) {
      break;
    }
    if (!gWindowBase->GetIconSize (Id, &Slot->Width, &Slot->Height)) {
      gWindowBase->FreeIcon (Id);
      break;
    }
    Viewer->IconCount++;
  }

  INT32 RowWidth = 10;
  INT32 Tallest = 0;
  for (UINT8 I = 0; I < Viewer->IconCount; I++) {
    RowWidth += Viewer->Icons[I].Width + 10;
    if (Viewer->Icons[I].Height > Tallest) {
      Tallest = Viewer->Icons[I].Height;
    }
  }

  INT32 ScreenWidth = gGuiDriver->ScreenWidth;
  INT32 ScreenHeight = gGuiDriver->ScreenHeight;
  INT32 Left = X;
  INT32 Top = Y;
  INT32 Width = kCreatedWidth;
  if (RowWidth + 20 > ScreenWidth) {
    Width = 750;
  } else if (RowWidth + 20 < 400) {
    Width = 400;
  }
  if (Left + Width >= ScreenWidth) {
    Left = 0;
  }
  INT32 Height = Width * 3 / 4;
  INT32 Needed = Tallest + gWindowBase->CaptionHeight + (gGuiDriver->GetCharWidth () / 2) * 3 + 10;
  if (Height < Needed) {
    Height = Needed < ScreenHeight ? Needed : ScreenHeight;
  }
  // Like x, y is checked whatever the height came from: a window that would
  // reach the bottom of the screen starts at its top.
  if (Top + Height >= ScreenHeight) {
    Top = 0;
  }
  Viewer->Header.X = (UINT16)Left;
  Viewer->Header.Y = (UINT16)Top;
  Viewer->Header.Width = (UINT16)Width;
  Viewer->Header.Height = (UINT16)Height;

  SetViewerTitle (&Viewer->Header, VolumeIndex, Path);
  gWindowBase->SetWindowIcon (&Viewer->Header, gFileIcons.Picture, FALSE);
  return &Viewer->Header;
}
