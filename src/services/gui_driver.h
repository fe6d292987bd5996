// The GUI driver: screen size, system font, drawing and image decoding.
// Pixels are UINT32 values 0xAARRGGBB, rows top-down.
#pragma once

#include "platform/uefi.h"
#include "services/window_base.h"

typedef struct GUI_DRIVER_PROTOCOL {
  UINT32 Version;                          // 0  5
  UINT16 ScreenWidth;                      // 4
  UINT16 ScreenHeight;                     // 6

  UINT16 (EFIAPI *GetCharWidth) (VOID);
  UINT16 (EFIAPI *GetLineHeight) (VOID);
  UINT16 (EFIAPI *GetTextWidth) (const CHAR8 *Text);
  UINTN (EFIAPI *PushFont) (UINT8 Face, UINT8 Size, UINT32 Colour);
  VOID (EFIAPI *PopFont) (UINTN Token);
  VOID (EFIAPI *DrawLine) (PAINT_CONTEXT Context, UINT16 X1, UINT16 Y1, UINT16 X2, UINT16 Y2, UINT32 Colour);
  VOID (EFIAPI *DrawRect) (PAINT_CONTEXT Context, UINT16 X1, UINT16 Y1, UINT16 X2, UINT16 Y2, UINT32 Colour);
  VOID (EFIAPI *DrawText) (PAINT_CONTEXT Context, UINT16 X, UINT16 Y, const CHAR8 *Text, UINT16 MaxLength);
  // Decodes a BMP file held in pool memory; returns pool pixels (the caller frees them) or null.
  UINT32 *(EFIAPI *DecodeImage) (const VOID *FileData, UINT16 *Width, UINT16 *Height, UINT16 *BitsPerPixel);
  VOID (EFIAPI *ScalePixels) (const UINT32 *Source, UINT32 *Destination, UINT16 SourceHeight, UINT16 DestinationHeight,
                              UINT16 SourceWidth, UINT16 DestinationWidth);
  VOID (EFIAPI *DrawPixels) (PAINT_CONTEXT Context, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height,
                             const UINT32 *Pixels, UINT16 RowLength);
  VOID (EFIAPI *DrawPixelsAlpha) (PAINT_CONTEXT Context, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height,
                                  const UINT32 *Pixels, UINT16 RowLength);
} GUI_DRIVER_PROTOCOL;

static_assert (offsetof (GUI_DRIVER_PROTOCOL, Version) == 0);
static_assert (offsetof (GUI_DRIVER_PROTOCOL, ScreenWidth) == 4 && offsetof (GUI_DRIVER_PROTOCOL, ScreenHeight) == 6);
