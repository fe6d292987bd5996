// SURVEYOR_PROTOCOL: the service table the driver installs for applications.
#pragma once

#include "compare/compare_records.h"
#include "platform/uefi.h"
#include "services/file_driver.h"
#include "services/service_ids.h"
#include "services/window_records.h"

#define SURVEYOR_PROTOCOL_VERSION 1

typedef struct SURVEYOR_PROTOCOL {
  UINT32 Version;                          // 0   1
  UINT32 Reserved0;                        // 4
  UINT64 Reserved;                         // 8   never written
  WINDOW_HEADER *(EFIAPI *OpenVolumeWindow) (UINT16 Width, UINT16 Height, UINT8 VolumeIndex, VOLUME_RECORD *Volume,
                                             const CHAR8 *InitialPath);
  WINDOW_HEADER *(EFIAPI *CreateMenuHeader) (WINDOW_HEADER *Owner, BOOLEAN PathRow, BOOLEAN Toolbar);
  MENU_ITEM *(EFIAPI *AddHeaderItem) (WINDOW_HEADER *Header, UINT16 IconId, const CHAR8 *Text,
                                      COMMAND_CALLBACK Command, WINDOW_HEADER *Popup, VOID *Context);
  VOID (EFIAPI *EnableHeaderItem) (WINDOW_HEADER *Header, COMMAND_CALLBACK Command, BOOLEAN Enable, BOOLEAN Redraw);
  WINDOW_HEADER *(EFIAPI *OpenFileDialog) (UINT16 X, UINT16 Y, const CHAR8 *Title, UINT8 Volume, UINT8 DirsOnly);
  WINDOW_HEADER *(EFIAPI *ShowHelpWindow) (UINT8 Volume, const CHAR8 *Source, UINT16 Length, const CHAR8 *Title);
  COMPARE_JOB *(EFIAPI *StartCompareJob) (UINT8 SourceVolume, UINT8 BackupVolume, const CHAR8 *Path,
                                          WINDOW_HEADER *Window);
  COMPARE_JOB *(EFIAPI *StartCompareJobWithCallback) (UINT8 SourceVolume, UINT8 BackupVolume, const CHAR8 *Path,
                                                      COMPARE_PROGRESS_CALLBACK Callback);
  VOID (EFIAPI *CancelCompareJob) (COMPARE_JOB *Job);
  COMPARE_RESULT *(EFIAPI *SnapshotCompareResult) (COMPARE_JOB *Job);
  VOID (EFIAPI *FreeCompareSnapshot) (COMPARE_RESULT *Snapshot);
} SURVEYOR_PROTOCOL;

static_assert (sizeof (SURVEYOR_PROTOCOL) == 104);
static_assert (offsetof (SURVEYOR_PROTOCOL, Reserved) == 8);
static_assert (offsetof (SURVEYOR_PROTOCOL, OpenVolumeWindow) == 16);
static_assert (offsetof (SURVEYOR_PROTOCOL, CreateMenuHeader) == 24);
static_assert (offsetof (SURVEYOR_PROTOCOL, AddHeaderItem) == 32);
static_assert (offsetof (SURVEYOR_PROTOCOL, EnableHeaderItem) == 40);
static_assert (offsetof (SURVEYOR_PROTOCOL, OpenFileDialog) == 48);
static_assert (offsetof (SURVEYOR_PROTOCOL, ShowHelpWindow) == 56);
static_assert (offsetof (SURVEYOR_PROTOCOL, StartCompareJob) == 64);
static_assert (offsetof (SURVEYOR_PROTOCOL, StartCompareJobWithCallback) == 72);
static_assert (offsetof (SURVEYOR_PROTOCOL, CancelCompareJob) == 80);
static_assert (offsetof (SURVEYOR_PROTOCOL, SnapshotCompareResult) == 88);
static_assert (offsetof (SURVEYOR_PROTOCOL, FreeCompareSnapshot) == 96);

// The driver image's entry point, as the firmware calls it.
extern "C" EFI_STATUS EFIAPI SurveyorEntryPoint (EFI_HANDLE ImageHandle, EFI_SYSTEM_TABLE *SystemTable);
