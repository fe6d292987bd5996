// The sibling drivers of one windowing environment, wired together as the
// driver expects to find them: the file driver (through whose LocateService
// the others are found), the GUI driver, window base, control driver, jobio
// and JPG drivers, and the optional settings and VHD services. The same
// assembly runs on the host (env/host/environment.h adds the stand-in
// firmware) and in firmware (env/uefi), each giving it the system volume
// (where \efi\kivora\... lives) and the settings store.
#pragma once

#include <cstdint>
#include <memory>

namespace env {

class FileDriver;
class GuiDriver;
class WindowBase;
class ControlDriver;
class JobioDriver;
class JpgDriver;
class SettingsService;
class SettingsStore;
class VhdService;
class VolumeFs;

struct SiblingOptions {
  uint16_t ScreenWidth = 1024;
  uint16_t ScreenHeight = 768;
  bool WithSettings = true;
  bool WithVhd = true;
  // Siblings a test can leave out or give another version.
  bool WithWindowBase = true;
  bool WithControlDriver = true;
  bool WithJobio = true;
  bool WithJpg = true;
  uint32_t FileDriverVersion = 9;
  uint32_t WindowBaseVersion = 15;
  uint32_t GuiVersion = 5;
  uint32_t ControlVersion = 6;
  uint32_t JobioVersion = 5;
  uint32_t JpgVersion = 1;
  uint32_t SettingsVersion = 1;
  uint32_t VhdVersion = 4;
};

class Siblings {
 public:
  // A null Store keeps settings in memory only.
  Siblings (const SiblingOptions &Opts, std::unique_ptr<VolumeFs> System, std::unique_ptr<SettingsStore> Store);
  ~Siblings ();
  Siblings (const Siblings &) = delete;
  Siblings &operator= (const Siblings &) = delete;

  FileDriver &files ();
  GuiDriver &gui ();
  WindowBase &windows ();
  ControlDriver &controls ();
  JobioDriver &jobio ();
  JpgDriver &jpg ();
  SettingsService *settings ();   // null when left out
  VhdService *vhd ();             // null when left out

 private:
  struct Parts;
  std::unique_ptr<Parts> Parts_;
};

}  // namespace env
