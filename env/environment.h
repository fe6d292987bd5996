// The whole stand-in environment: firmware plus every sibling driver, wired
// together as the driver expects to find them. Tests and tools build one
// Environment, mount folders as volumes, and load the driver into it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "env/firmware/firmware.h"
#include "platform/uefi.h"

namespace env {

class FileDriver;
class GuiDriver;
class WindowBase;
class ControlDriver;
class JobioDriver;
class JpgDriver;
class SettingsService;
class VhdService;
class NtfsService;

struct VolumeSpec {
  std::string Folder;          // host folder behind the volume
  std::string Label;           // empty: the folder's last component
  uint8_t Flags = 0;           // bit 7 write-protected; 0x81 / 0x82 comparison volumes
  uint8_t Kind = 0;
  uint8_t FileSystemType = 1;  // 1 FAT32
};

struct Options {
  uint16_t ScreenWidth = 1024;
  uint16_t ScreenHeight = 768;
  std::string SystemDir;       // folder holding efi/kivora/...; empty: the built assets
  std::string SettingsFile;    // empty: settings kept in memory only
  bool WithSettings = true;
  bool WithVhd = true;
  bool WithNtfs = true;
  // Siblings a test can leave out or give another version.
  bool WithWindowBase = true;
  bool WithControlDriver = true;
  bool WithJobio = true;
  bool WithJpg = true;
  unsigned FileDriverHandles = 1;   // 0: not installed; 2 or more: the same table on several handles
  uint32_t FileDriverVersion = 9;
  uint32_t WindowBaseVersion = 15;
  uint32_t GuiVersion = 5;
  uint32_t ControlVersion = 6;
  uint32_t JobioVersion = 5;
  uint32_t JpgVersion = 1;
  uint32_t SettingsVersion = 1;
  uint32_t VhdVersion = 4;
};

// Folder of the built assets (efi/kivora/...), set by the build.
std::string DefaultSystemDir ();

class Environment {
 public:
  explicit Environment (const Options &Opts = Options ());
  ~Environment ();
  Environment (const Environment &) = delete;
  Environment &operator= (const Environment &) = delete;

  Firmware &firmware ();
  FileDriver &files ();
  GuiDriver &gui ();
  WindowBase &windows ();
  ControlDriver &controls ();
  JobioDriver &jobio ();
  JpgDriver &jpg ();
  SettingsService *settings ();   // null when left out
  NtfsService *ntfs ();           // null when left out
  VhdService *vhd ();             // null when left out
  const Options &options () const;

  // Mounts the next free volume slot; returns its number or -1.
  int Mount (const VolumeSpec &Spec);

  // Loads a driver image by its entry point; the status is the entry's.
  EFI_STATUS LoadDriver (EFI_IMAGE_ENTRY_POINT EntryPoint);
  // Unloads the image loaded last.
  EFI_STATUS UnloadDriver ();
  // The interface installed under Guid, or nullptr (for the driver's own table).
  VOID *Locate (const EFI_GUID &Guid);

 private:
  struct Parts;
  std::unique_ptr<Parts> Parts_;
};

}  // namespace env
