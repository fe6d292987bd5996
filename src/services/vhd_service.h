// The VHD service: bound when present; the driver calls none of its operations.
#pragma once

#include "platform/uefi.h"

typedef struct VHD_SERVICE_PROTOCOL {
  UINT32 Version;                          // 0  4
  UINT32 Reserved;
} VHD_SERVICE_PROTOCOL;

static_assert (offsetof (VHD_SERVICE_PROTOCOL, Version) == 0);
