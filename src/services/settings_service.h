// The settings service: text values by section and key, kept lastingly.
#pragma once

#include "platform/uefi.h"

typedef struct SETTINGS_SERVICE_PROTOCOL {
  UINT32 Version;                          // 0  1
  UINT32 Reserved;
  // On success *Value is a pool text the caller frees.
  BOOLEAN (EFIAPI *GetValue) (const CHAR8 *Section, const CHAR8 *Key, CHAR8 **Value);
  VOID (EFIAPI *SetValue) (const CHAR8 *Section, const CHAR8 *Key, const CHAR8 *Value);
  VOID (EFIAPI *Commit) (VOID);
} SETTINGS_SERVICE_PROTOCOL;

static_assert (offsetof (SETTINGS_SERVICE_PROTOCOL, Version) == 0);
