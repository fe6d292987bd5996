// What the environment image offers the launcher (uefi/launcher): the
// desktop's main loop, the volume number of a device, and flushing every
// volume before the firmware takes over again. Also the vendor GUID under
// which the environment keeps its UEFI variables.
#pragma once

#include "platform/uefi.h"

#define SURVEYOR_DESKTOP_PROTOCOL_GUID \
  { 0x5355524B, 0x4445, 0x534B, { 0x8E, 0x71, 0x2A, 0x5C, 0x3B, 0x9D, 0x4E, 0x01 } }
#define SURVEYOR_VENDOR_GUID \
  { 0x5355524B, 0x5641, 0x5253, { 0x8E, 0x71, 0x2A, 0x5C, 0x3B, 0x9D, 0x4E, 0x02 } }
#define SURVEYOR_DESKTOP_PROTOCOL_VERSION 1

typedef VOID (EFIAPI *DESKTOP_READY_CALLBACK) (VOID);

typedef struct {
  UINT32 Version;
  UINT32 Reserved;
  // Runs input, timers and painting until the last window is closed; Ready
  // is called once, after the first frame is on the screen.
  EFI_STATUS (EFIAPI *Run) (DESKTOP_READY_CALLBACK Ready);
  // The file driver's volume number of the file system on Device, or -1.
  INTN (EFIAPI *VolumeOfDevice) (EFI_HANDLE Device);
  // Writes every volume's pending changes.
  VOID (EFIAPI *FlushVolumes) (VOID);
} SURVEYOR_DESKTOP_PROTOCOL;
