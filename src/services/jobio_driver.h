// The jobio driver: the file clipboard and the jobs that copy and delete files.
#pragma once

#include "platform/uefi.h"

typedef struct JOBIO_DRIVER_PROTOCOL {
  UINT32 Version;                          // 0  5
  UINT32 Reserved;
  // Starts a new clipboard of names in Directory on Volume; 0 on failure.
  UINT32 (EFIAPI *BeginClipboard) (UINT8 Volume, const CHAR8 *Directory);
  BOOLEAN (EFIAPI *AddToClipboard) (UINT32 Id, const CHAR8 *Name);
  BOOLEAN (EFIAPI *HasClipboard) (VOID);
  // Copies the clipboard's files into Directory; 1 on success.
  UINT32 (EFIAPI *PasteClipboard) (UINT8 Volume, const CHAR8 *Directory);
  // Deletes the clipboard's files; 1 on success, 0 on failure.
  UINT32 (EFIAPI *DeleteClipboardFiles) (VOID);
  BOOLEAN (EFIAPI *DeleteFile) (UINT8 Volume, const CHAR8 *Path);
} JOBIO_DRIVER_PROTOCOL;

static_assert (offsetof (JOBIO_DRIVER_PROTOCOL, Version) == 0);
