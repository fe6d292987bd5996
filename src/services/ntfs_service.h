// The NTFS service: the file-attributes window of NTFS volumes.
#pragma once

#include "platform/uefi.h"
#include "services/window_records.h"

typedef struct NTFS_SERVICE_PROTOCOL {
  UINT32 Version;                          // 0
  UINT32 Reserved;
  BOOLEAN (EFIAPI *Prepare) (VOID);
  WINDOW_HEADER *(EFIAPI *OpenAttributesWindow) (UINT8 Volume, UINT32 EntryNumber, const CHAR8 *PathOrName,
                                                 UINTN Reserved);
} NTFS_SERVICE_PROTOCOL;

static_assert (offsetof (NTFS_SERVICE_PROTOCOL, Version) == 0);
