// Process-wide bindings of the sibling drivers, made by the entry point.
#pragma once

#include "platform/uefi.h"
#include "services/control_driver.h"
#include "services/file_driver.h"
#include "services/gui_driver.h"
#include "services/jobio_driver.h"
#include "services/jpg_driver.h"
#include "services/ntfs_service.h"
#include "services/settings_service.h"
#include "services/vhd_service.h"
#include "services/window_base.h"

extern FILE_DRIVER_PROTOCOL *gFileDriver;
extern WINDOW_BASE_PROTOCOL *gWindowBase;
extern GUI_DRIVER_PROTOCOL *gGuiDriver;
extern CONTROL_DRIVER_PROTOCOL *gControlDriver;
extern JOBIO_DRIVER_PROTOCOL *gJobioDriver;
extern JPG_DRIVER_PROTOCOL *gJpgDriver;
extern SETTINGS_SERVICE_PROTOCOL *gSettingsService;   // null when absent
extern VHD_SERVICE_PROTOCOL *gVhdService;             // null when absent
extern NTFS_SERVICE_PROTOCOL *gNtfsService;           // bound on first use, null until then

// Finds a service by the single-handle rule: exactly one handle must carry it.
VOID *LocateSingleHandleService (const EFI_GUID *Identifier);

// Binds the NTFS service on first use; returns it or null.
NTFS_SERVICE_PROTOCOL *BindNtfsService ();
