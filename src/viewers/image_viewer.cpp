// The image viewer: a BMP or JPEG picture in a window of its own, centred on
// the screen and sized to the picture where the screen allows. A picture
// larger than the client area is stretched to it (the aspect ratio is not
// kept). BMP files are decoded by the GUI driver, JPEG files by the JPG driver.
#include "viewers/viewers.h"

#include "core/bindings.h"
#include "filemanager/file_types.h"
#include "platform/library.h"
#include "util/string_utils.h"
#include "viewers/viewer_records.h"

namespace {

constexpr UINT32 kWhite = 0xFFFFFF;

UINT8 EFIAPI ImageViewerHandler (WINDOW_HEADER *Window, MESSAGE *Message) {
  switch (Message->Type) {
    case MSG_SYSCOMMAND:
      return (Message->Word2 == SYSCMD_RESTORE || Message->Word2 == SYSCMD_CLOSE) ? 1 : 0;
    case MSG_ACTIVATE:
      return 1;
    case MSG_RESIZE:
      if (Message->Code != 0) {
        DrawImage (reinterpret_cast<IMAGE_VIEWER *> (Window));
      }
      return 0;
    default:
      return 0;
  }
}

VOID EFIAPI ImageViewerPaint (WINDOW_HEADER *Window, MESSAGE *Message, VOID *Extra) {
  PAINT_CONTEXT Context = gWindowBase->BeginPaint (Window);
  if (Context == nullptr) {
    return;
  }
  gWindowBase->DefaultPaint (Window, Message, Extra);
  UINT16 Rect[4] = {0, 0, 0, 0};
  gWindowBase->GetClientRect (Window, Rect);
  gWindowBase->FillRect (Context, Rect[0], Rect[1], Rect[2], Rect[3], kWhite);
  DrawImage (reinterpret_cast<IMAGE_VIEWER *> (Window));
}

VOID EFIAPI ImageViewerDestroy (WINDOW_HEADER *Window) {
  IMAGE_VIEWER *Viewer = reinterpret_cast<IMAGE_VIEWER *> (Window);
  if (Viewer->Pixels != nullptr) {
    FreePool (Viewer->Pixels);
    Viewer->Pixels = nullptr;
  }
}

VOID DrawPixelsFor (const IMAGE_VIEWER *Viewer, PAINT_CONTEXT Context, UINT16 X, UINT16 Y, UINT16 Width,
                    UINT16 Height, const UINT32 *Pixels) {
  if (Viewer->BitsPerPixel == 32) {
    gGuiDriver->DrawPixelsAlpha (Context, X, Y, Width, Height, Pixels, Width);
  } else {
    gGuiDriver->DrawPixels (Context, X, Y, Width, Height, Pixels, Width);
  }
}

}  // namespace

UINT32 *LoadBmpImage (UINT8 Volume, const CHAR8 *Path, UINT16 *Width, UINT16 *Height, UINT16 *BitsPerPixel) {
  UINTN Size = 0;
  VOID *File = gFileDriver->ReadFile (Volume, Path, &Size);
  if (File == nullptr) {
    return nullptr;
  }
  UINT32 *Pixels = gGuiDriver->DecodeImage (File, Width, Height, BitsPerPixel);
  FreePool (File);
  return Pixels;
}

UINT32 *LoadJpegImage (UINT8 Volume, const CHAR8 *Path, UINT16 *Width, UINT16 *Height) {
  UINTN Size = 0;
  VOID *File = gFileDriver->ReadFile (Volume, Path, &Size);
  if (File == nullptr) {
    return nullptr;
  }
  if (Size > 0xFFFFFFFFu) {
    FreePool (File);
    return nullptr;
  }
  UINT32 JpegWidth = 0;
  UINT32 JpegHeight = 0;
  UINT32 *Pixels = nullptr;
  BOOLEAN Decoded = gJpgDriver->DecodeJpeg (&JpegWidth, &JpegHeight, &Pixels, File, (UINT32)Size);
  FreePool (File);
  if (!Decoded || JpegWidth > 0xFFFF || JpegHeight > 0xFFFF) {
    if (Pixels != nullptr) {
      FreePool (Pixels);
    }
    return nullptr;
  }
  *Width = (UINT16)JpegWidth;
  *Height = (UINT16)JpegHeight;
  return Pixels;
}

VOID DrawImage (IMAGE_VIEWER *Viewer) {
  PAINT_CONTEXT Context = gWindowBase->BeginPaint (&Viewer->Header);
  if (Context == nullptr || Viewer->Pixels == nullptr) {
    return;
  }
  UINT16 Rect[4] = {0, 0, 0, 0};
  gWindowBase->GetClientRect (&Viewer->Header, Rect);
  if (Rect[2] < 2 || Rect[3] < 2) {
    return;
  }
  UINT16 X = (UINT16)(Rect[0] + 1);
  UINT16 Y = (UINT16)(Rect[1] + 1);
  UINT16 Width = (UINT16)(Rect[2] - 2);
  UINT16 Height = (UINT16)(Rect[3] - 2);

  if (Viewer->ImageWidth <= Width && Viewer->ImageHeight <= Height) {
    UINT16 DrawX = (UINT16)(X + (Width - Viewer->ImageWidth) / 2);
    UINT16 DrawY = (UINT16)(Y + (Height - Viewer->ImageHeight) / 2);
    DrawPixelsFor (Viewer, Context, DrawX, DrawY, Viewer->ImageWidth, Viewer->ImageHeight, Viewer->Pixels);
    return;
  }

  // Stretched to the whole rectangle through a buffer of its size.
  UINT32 *Scaled = static_cast<UINT32 *> (AllocatePool ((UINTN)Width * Height * 4));
  if (Scaled == nullptr) {
    return;
  }
  gGuiDriver->ScalePixels (Viewer->Pixels, Scaled, Viewer->ImageHeight, Height, Viewer->ImageWidth, Width);
  DrawPixelsFor (Viewer, Context, X, Y, Width, Height, Scaled);
  FreePool (Scaled);
}

WINDOW_HEADER *OpenImageViewer (UINT16 X, UINT16 Y, UINT8 VolumeIndex, const CHAR8 *Path) {
  if (Path == nullptr || VolumeIndex >= VOLUME_COUNT) {
    return nullptr;
  }
  CHAR8 Directory[512];
  const CHAR8 *Name = nullptr;
  if (!SplitPath (Path, Directory, &Name) || Name == nullptr) {
    return nullptr;
  }
  UINT16 NameLength = 0;
  while (Name[NameLength] != 0 && NameLength < IMAGE_NAME_LIMIT) {
    NameLength++;
  }
  if (NameLength >= IMAGE_NAME_LIMIT) {
    return nullptr;
  }
  // The extension is everything after the first dot of the name.
  const CHAR8 *Extension = nullptr;
  for (UINT16 I = 0; I < NameLength; I++) {
    if (Name[I] == '.') {
      Extension = Name + I + 1;
      break;
    }
  }
  if (Extension == nullptr) {
    return nullptr;
  }

  UINT16 ImageWidth = 0;
  UINT16 ImageHeight = 0;
  UINT16 BitsPerPixel = 24;
  UINT32 *Pixels = nullptr;
  if (NamesEqual (Extension, "bmp"_a)) {
    Pixels = LoadBmpImage (VolumeIndex, Path, &ImageWidth, &ImageHeight, &BitsPerPixel);
  } else if (NamesEqual (Extension, "jpg"_a)) {
    Pixels = LoadJpegImage (VolumeIndex, Path, &ImageWidth, &ImageHeight);
  }
  if (Pixels == nullptr) {
    return nullptr;
  }

  // Sized to the picture plus a margin where the screen allows, else nearly
  // the whole screen; the x and y asked for are not used.
  INT32 ScreenWidth = gGuiDriver->ScreenWidth;
  INT32 ScreenHeight = gGuiDriver->ScreenHeight;
  INT32 Usable = ScreenHeight - gWindowBase->CaptionHeight - 10;
  INT32 Width, Height, Left, Top;
  if (ImageWidth < ScreenWidth + 6 && ImageHeight < Usable) {
    if (ImageWidth + 20 < ScreenWidth && ImageHeight + 20 < Usable) {
      Width = ImageWidth + 20;
      Height = ImageHeight + 20;
      Left = (ScreenWidth - Width) / 2;
      Top = (ScreenHeight - Height) / 2;
    } else {
      Width = ScreenWidth - 16;
      Height = Usable;
      Left = 3;
      Top = 3;
    }
  } else {
    Width = ScreenWidth - 100;
    Height = ScreenHeight - 160;
    Left = (ScreenWidth - Width) / 2;
    Top = (ScreenHeight - Height) / 2;
  }

  // Screens too small for the margins still get a window of some size.
  if (Width < 1) Width = 1;
  if (Height < 1) Height = 1;
  if (Left < 0) Left = 0;
  if (Top < 0) Top = 0;

  IMAGE_VIEWER *Viewer = reinterpret_cast<IMAGE_VIEWER *> (
      gWindowBase->CreateWindow (IMAGE_VIEWER_SIZE, gWindowBase->Desktop, ImageViewerHandler, ImageViewerPaint,
                                 ImageViewerDestroy, (UINT16)Left, (UINT16)Top, (UINT16)Width, (UINT16)Height));
  if (Viewer == nullptr) {
    FreePool (Pixels);
    return nullptr;
  }
  Viewer->ImageWidth = ImageWidth;
  Viewer->ImageHeight = ImageHeight;
  Viewer->Pixels = Pixels;
  Viewer->BitsPerPixel = BitsPerPixel;

  SetViewerTitle (&Viewer->Header, VolumeIndex, Path);
  gWindowBase->SetWindowIcon (&Viewer->Header, gFileIcons.Picture, FALSE);
  Viewer->Header.Flags |= WINDOW_FLAG_HAS_ICON;
  return &Viewer->Header;
}

// "label  path" within 127 characters: the path is cut to what still fits.
VOID SetViewerTitle (WINDOW_HEADER *Window, UINT8 VolumeIndex, const CHAR8 *Path) {
  CHAR8 Title[VIEWER_TITLE_SIZE];
  ZeroMem (Title, sizeof (Title));
  CopyStringN (Title, gFileDriver->Volumes[VolumeIndex].Label, sizeof (gFileDriver->Volumes[0].Label));
  AppendStringN (Title, "  "_a, sizeof (Title));
  AppendStringN (Title, Path, sizeof (Title));
  gWindowBase->SetWindowText (Window, Title);
}
