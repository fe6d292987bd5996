// The JPG driver: JPEG decoding into pixels the GUI driver draws (0xAARRGGBB).
#pragma once

#include "platform/uefi.h"

typedef struct JPG_DRIVER_PROTOCOL {
  UINT32 Version;                          // 0  1
  UINT32 Reserved;
  // The caller frees *Pixels, also after a failure that set it.
  BOOLEAN (EFIAPI *DecodeJpeg) (UINT32 *Width, UINT32 *Height, UINT32 **Pixels, const VOID *FileData, UINT32 FileSize);
} JPG_DRIVER_PROTOCOL;

static_assert (offsetof (JPG_DRIVER_PROTOCOL, Version) == 0);
