// The file-manager window of a volume.
#pragma once

#include "platform/uefi.h"
#include "services/file_driver.h"
#include "services/window_records.h"

WINDOW_HEADER *EFIAPI OpenVolumeWindow (UINT16 Width, UINT16 Height, UINT8 VolumeIndex, VOLUME_RECORD *Volume,
                                        const CHAR8 *InitialPath);
