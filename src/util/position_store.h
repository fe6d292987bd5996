// Window rectangles remembered in the settings service as "x,y,width,height".
#pragma once

#include "platform/uefi.h"

// On entry *Width and *Height hold the smallest size the caller accepts.
BOOLEAN LoadWindowPosition (const CHAR8 *Name, UINT16 *X, UINT16 *Y, UINT16 *Width, UINT16 *Height);
VOID SaveWindowPosition (const CHAR8 *Name, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height);
