// Window rectangles remembered in the settings service as "x,y,width,height".
#pragma once

#include "platform/uefi.h"

// On entry *Width and *Height hold the smallest size the caller accepts.
BOOLEAN LoadWindowPosition (const CHAR8 *Name, UINT16 *X, UINT16 *Y, UINT16 *Width, UINT16 *Height);
VOID SaveWindowPosition (const CHAR8 *Name, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height);

// The parser LoadWindowPosition applies to a stored text, with the screen
// size given: true when the text holds a rectangle that lies on the screen
// and is at least MinWidth x MinHeight. Outputs are written only on success.
BOOLEAN ParseWindowPosition (const CHAR8 *Text, UINT16 ScreenWidth, UINT16 ScreenHeight, UINT16 MinWidth,
                             UINT16 MinHeight, UINT16 *X, UINT16 *Y, UINT16 *Width, UINT16 *Height);
