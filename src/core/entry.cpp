// The driver image's entry and unload: the entry glue (firmware tables, the
// unload handler on the loaded-image record), the binding of the sibling
// drivers with their exact versions, and the installation of the one
// process-wide SURVEYOR_PROTOCOL.
#include "compare/compare_job.h"
#include "core/bindings.h"
#include "core/driver_state.h"
#include "core/help_window.h"
#include "core/surveyor_protocol.h"
#include "filedialog/file_dialog.h"
#include "filemanager/main_window.h"
#include "menu_header/menu_header.h"
#include "platform/library.h"
#include "services/service_ids.h"

namespace {

SURVEYOR_PROTOCOL gSurveyorProtocol;
// The handle the table is installed on; the firmware creates it.
EFI_HANDLE gSurveyorHandle;

void ResetDriverState () {
  ResetStringsState ();
  ResetFileManagerState ();
  ResetFileTypesState ();
  ResetContextMenuState ();
  ResetCompareJobsState ();
  ResetFileComparisonState ();

  gFileDriver = nullptr;
  gWindowBase = nullptr;
  gGuiDriver = nullptr;
  gControlDriver = nullptr;
  gJobioDriver = nullptr;
  gJpgDriver = nullptr;
  gSettingsService = nullptr;
  gVhdService = nullptr;
  gNtfsService = nullptr;
  gSurveyorHandle = nullptr;
}

VOID *LocateThroughFileDriver (const EFI_GUID &Identifier) {
  if (gFileDriver->LocateService == nullptr) return nullptr;
  return gFileDriver->LocateService (&Identifier);
}

// Binds the window toolkit and the job and image drivers, stopping at the
// first one missing or of another version (its line is printed here).
BOOLEAN BindWindowToolkit () {
  const EFI_GUID WindowGuid = WINDOW_BASE_GUID;
  gWindowBase = static_cast<WINDOW_BASE_PROTOCOL *> (LocateThroughFileDriver (WindowGuid));
  if (gWindowBase == nullptr) {
    Print (u"SURVEYOR:NO winbase found!\r\n");
    return FALSE;
  }
  if (gWindowBase->Version != WINDOW_BASE_VERSION) {
    Print (u"SURVEYOR: Winbase of different version:%x,%x\r\n", gWindowBase->Version, WINDOW_BASE_VERSION);
    return FALSE;
  }

  gGuiDriver = gWindowBase->GuiDriver;
  if (gGuiDriver == nullptr || gGuiDriver->Version != GUI_DRIVER_VERSION) {
    Print (u"SURVEYOR: GUI driver of different version:%x,%x\r\n", gGuiDriver != nullptr ? gGuiDriver->Version : 0,
           GUI_DRIVER_VERSION);
    return FALSE;
  }

  const EFI_GUID ControlGuid = CONTROL_DRIVER_GUID;
  gControlDriver = static_cast<CONTROL_DRIVER_PROTOCOL *> (LocateThroughFileDriver (ControlGuid));
  if (gControlDriver == nullptr) {
    Print (u"SURVEYOR:NO control driver found!\r\n");
    return FALSE;
  }
  if (gControlDriver->Version != CONTROL_DRIVER_VERSION) {
    Print (u"SURVEYOR: control driver of different version:%x,%x\r\n", gControlDriver->Version,
           CONTROL_DRIVER_VERSION);
    return FALSE;
  }

  const EFI_GUID JobioGuid = JOBIO_DRIVER_GUID;
  gJobioDriver = static_cast<JOBIO_DRIVER_PROTOCOL *> (LocateThroughFileDriver (JobioGuid));
  if (gJobioDriver == nullptr) {
    Print (u"SURVEYOR:NO jobio driver found!\r\n");
    return FALSE;
  }
  if (gJobioDriver->Version != JOBIO_DRIVER_VERSION) {
    Print (u"SURVEYOR: jobio driver of different version:%x,%x\r\n", gJobioDriver->Version, JOBIO_DRIVER_VERSION);
    return FALSE;
  }

  const EFI_GUID JpgGuid = JPG_DRIVER_GUID;
  gJpgDriver = static_cast<JPG_DRIVER_PROTOCOL *> (LocateThroughFileDriver (JpgGuid));
  if (gJpgDriver == nullptr || gJpgDriver->Version != JPG_DRIVER_VERSION) {
    Print (u"SURVEYOR:NO JPG driver found or not supported version!\r\n");
    return FALSE;
  }

  // The settings service is optional: absent when missing or of another version.
  const EFI_GUID SettingsGuid = SETTINGS_SERVICE_GUID;
  gSettingsService = static_cast<SETTINGS_SERVICE_PROTOCOL *> (LocateThroughFileDriver (SettingsGuid));
  if (gSettingsService != nullptr && gSettingsService->Version != SETTINGS_SERVICE_VERSION) gSettingsService = nullptr;
  return TRUE;
}

EFI_STATUS SurveyorEntry (EFI_HANDLE ImageHandle, EFI_SYSTEM_TABLE *SystemTable) {
  gImageHandle = ImageHandle;
  gRT = SystemTable->RuntimeServices;
  gBS = SystemTable->BootServices;

  ZeroMem (&gSurveyorProtocol, sizeof (gSurveyorProtocol));

  const EFI_GUID FileGuid = FILE_DRIVER_GUID;
  gFileDriver = static_cast<FILE_DRIVER_PROTOCOL *> (LocateSingleHandleService (&FileGuid));
  if (gFileDriver == nullptr) {
    Print (u"Surveyor: no file driver found!\r\n");
    return EFI_LOAD_ERROR;
  }
  if (gFileDriver->Version != FILE_DRIVER_VERSION) {
    Print (u"Surveyor: file driver is of different version %x VS %x\r\n", gFileDriver->Version, FILE_DRIVER_VERSION);
    return EFI_LOAD_ERROR;
  }

  if (!BindWindowToolkit ()) {
    Print (u"Surveyor:Failed to locate window base!\r\n");
    return EFI_LOAD_ERROR;
  }

  // The VHD service is bound but optional; no message either way.
  const EFI_GUID VhdGuid = VHD_SERVICE_GUID;
  gVhdService = static_cast<VHD_SERVICE_PROTOCOL *> (LocateSingleHandleService (&VhdGuid));
  if (gVhdService != nullptr && gVhdService->Version != VHD_SERVICE_VERSION) gVhdService = nullptr;

  gSurveyorProtocol.Version = SURVEYOR_PROTOCOL_VERSION;
  gSurveyorProtocol.OpenVolumeWindow = OpenVolumeWindow;
  gSurveyorProtocol.CreateMenuHeader = CreateMenuHeader;
  gSurveyorProtocol.AddHeaderItem = AddHeaderItem;
  gSurveyorProtocol.EnableHeaderItem = EnableHeaderItem;
  gSurveyorProtocol.OpenFileDialog = OpenFileDialog;
  gSurveyorProtocol.ShowHelpWindow = ShowHelpWindow;
  gSurveyorProtocol.StartCompareJob = StartCompareJob;
  gSurveyorProtocol.StartCompareJobWithCallback = StartCompareJobWithCallback;
  gSurveyorProtocol.CancelCompareJob = CancelCompareJob;
  gSurveyorProtocol.SnapshotCompareResult = SnapshotCompareResult;
  gSurveyorProtocol.FreeCompareSnapshot = FreeCompareSnapshot;

  EFI_GUID SurveyorGuid = SURVEYOR_PROTOCOL_GUID;
  EFI_STATUS Status =
      gBS->InstallProtocolInterface (&gSurveyorHandle, &SurveyorGuid, EFI_NATIVE_INTERFACE, &gSurveyorProtocol);
  if (EFI_ERROR (Status)) {
    Print (u"Failed to install surveyor driver!\r\n");
    return Status;
  }
  return EFI_SUCCESS;
}

// Withdraws the service. Open windows, menu headers and comparison jobs are
// left as they are: their code stays in memory as long as the firmware keeps
// the image, and a refused uninstallation keeps the image loaded.
EFI_STATUS EFIAPI SurveyorUnload (EFI_HANDLE ImageHandle) {
  EFI_GUID SurveyorGuid = SURVEYOR_PROTOCOL_GUID;
  EFI_STATUS Status = gBS->UninstallProtocolInterface (gSurveyorHandle, &SurveyorGuid, &gSurveyorProtocol);
  if (EFI_ERROR (Status)) {
    Print (u"Surveyor Unload Failed\r\n");
    return Status;
  }
  gSurveyorHandle = nullptr;
  Print (u"Surveyor driver unloaded!\r\n");
  return Status;
}

}  // namespace

extern "C" EFI_STATUS EFIAPI SurveyorEntryPoint (EFI_HANDLE ImageHandle, EFI_SYSTEM_TABLE *SystemTable) {
  // Library constructors: the firmware tables, and every part's process-wide
  // state back to its start so that the image can be loaded again.
  gImageHandle = ImageHandle;
  gST = SystemTable;
  gBS = SystemTable->BootServices;
  gRT = SystemTable->RuntimeServices;
  ResetDriverState ();

  // Register the unload handler on the image's loaded-image record.
  EFI_GUID LoadedImageGuid = EFI_LOADED_IMAGE_PROTOCOL_GUID;
  EFI_LOADED_IMAGE *LoadedImage = nullptr;
  EFI_STATUS Status = gBS->HandleProtocol (ImageHandle, &LoadedImageGuid, reinterpret_cast<VOID **> (&LoadedImage));
  if (!EFI_ERROR (Status) && LoadedImage != nullptr) LoadedImage->Unload = SurveyorUnload;

  return SurveyorEntry (ImageHandle, SystemTable);
}
