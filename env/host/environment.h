// The whole environment on the host: the stand-in firmware plus every
// sibling driver, with host folders as volumes. Tests and tools build one
// Environment, mount folders as volumes, and load the driver into it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "env/host/firmware.h"
#include "env/siblings.h"
#include "platform/uefi.h"

namespace env {

class NtfsService;

struct VolumeSpec {
  std::string Folder;          // host folder behind the volume
  std::string Label;           // empty: the folder's last component
  uint8_t Flags = 0;           // bit 7 write-protected; 0x81 / 0x82 comparison volumes
  uint8_t Kind = 0;
  uint8_t FileSystemType = 1;  // 1 FAT32
};

struct Options : SiblingOptions {
  std::string SystemDir;       // folder holding efi/kivora/...; empty: the built assets
  std::string SettingsFile;    // empty: settings kept in memory only
  bool WithNtfs = true;
  unsigned FileDriverHandles = 1;   // 0: not installed; 2 or more: the same table on several handles
};

// Folder of the built assets (efi/kivora/...), set by the build.
std::string DefaultSystemDir ();

// The firmware comes first: every sibling allocates from its pool.
struct FirmwareHolder {
  Firmware Fw;
};

class Environment : private FirmwareHolder, public Siblings {
 public:
  explicit Environment (const Options &Opts = Options ());
  ~Environment ();

  Firmware &firmware ();
  NtfsService *ntfs ();           // null when left out
  const Options &options () const;

  // Mounts a host folder in the next free volume slot; returns its number or -1.
  int Mount (const VolumeSpec &Spec);
  // The folder behind a mounted volume, empty when none.
  std::string HostFolder (int Volume) const;

  // Loads a driver image by its entry point; the status is the entry's.
  EFI_STATUS LoadDriver (EFI_IMAGE_ENTRY_POINT EntryPoint);
  // Unloads the image loaded last.
  EFI_STATUS UnloadDriver ();
  // The interface installed under Guid, or nullptr (for the driver's own table).
  VOID *Locate (const EFI_GUID &Guid);

 private:
  struct Host;
  std::unique_ptr<Host> Host_;
};

// Mounts a host folder on a file driver (tests that use the file driver alone).
int MountFolder (FileDriver &Files, const VolumeSpec &Spec);

}  // namespace env
