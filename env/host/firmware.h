// The stand-in firmware: a system table with boot services (handle and
// protocol database, pool with live-allocation counting, console that records
// every line) and loading and unloading of driver images by entry point.
// Tests can make any boot service fail.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/uefi.h"

namespace env {

// Boot services a test can make fail.
enum class BootService {
  LocateHandleBuffer,
  OpenProtocol,
  InstallProtocolInterface,
  UninstallProtocolInterface,
  HandleProtocol,
  AllocatePool,
};

class Firmware {
 public:
  Firmware ();
  ~Firmware ();
  Firmware (const Firmware &) = delete;
  Firmware &operator= (const Firmware &) = delete;

  EFI_SYSTEM_TABLE *SystemTable ();
  EFI_BOOT_SERVICES *BootServices ();

  // Handle database. A null *Handle creates a new handle.
  EFI_STATUS InstallProtocol (EFI_HANDLE *Handle, const EFI_GUID &Guid, VOID *Interface);
  EFI_STATUS UninstallProtocol (EFI_HANDLE Handle, const EFI_GUID &Guid, VOID *Interface);
  std::vector<EFI_HANDLE> HandlesWith (const EFI_GUID &Guid) const;
  // The interface of the first handle that carries Guid, or nullptr.
  VOID *FindProtocol (const EFI_GUID &Guid) const;

  // Pool. Every allocation is counted until it is freed; the size of a live
  // block can be asked for (the GUI driver bounds image decoding with it).
  VOID *AllocatePool (UINTN Size);
  VOID FreePool (VOID *Buffer);
  size_t LiveAllocations () const;
  size_t LiveBytes () const;
  // Size of the live pool block that starts at Buffer, or 0 when Buffer is none.
  size_t BlockSize (const VOID *Buffer) const;
  // FreePool calls with a pointer that is not a live block (refused).
  size_t BadFrees () const;

  // Failure injection: the service returns Status for its next Count calls
  // (Count 0: every call until cleared), after letting Skip calls succeed.
  void FailService (BootService Service, EFI_STATUS Status, unsigned Count = 1, unsigned Skip = 0);
  void ClearFailures ();

  // Console: every OutputString text, joined; lines split at "\n".
  const std::string &ConsoleText () const;
  // Adds UTF-8 text to the console (the environment's own notices).
  void AppendConsole (const std::string &Text);
  std::vector<std::string> ConsoleLines () const;
  void ClearConsole ();

  // Driver images: LoadImage creates an image handle with a loaded-image
  // record and calls the entry point; UnloadImage calls the unload handler
  // the image registered and removes the handle when it succeeds.
  EFI_STATUS LoadImage (EFI_IMAGE_ENTRY_POINT EntryPoint, EFI_HANDLE *ImageHandle);
  EFI_STATUS UnloadImage (EFI_HANDLE ImageHandle);

 private:
  friend struct FirmwareAccess;
  struct State;
  std::unique_ptr<State> State_;
};

// The firmware that the environment's own siblings allocate from (the one
// most recently constructed and still alive).
Firmware &CurrentFirmware ();

}  // namespace env
