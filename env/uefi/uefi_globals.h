// The firmware's tables, kept by the environment image's entry point.
#pragma once

#include "platform/uefi.h"

extern EFI_HANDLE gEnvImageHandle;
extern EFI_SYSTEM_TABLE *gEnvSystemTable;
extern EFI_BOOT_SERVICES *gEnvBootServices;
extern EFI_RUNTIME_SERVICES *gEnvRuntimeServices;
