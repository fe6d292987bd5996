// Test support: an environment with the driver loaded, temporary volumes and
// a pool-balance check at the end of every test.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/surveyor_protocol.h"
#include "env/host/environment.h"
#include "services/control_driver.h"
#include "services/gui_driver.h"
#include "services/window_base.h"

// A fresh temporary folder, removed with everything in it when destroyed.
class TempFolder {
 public:
  TempFolder ();
  ~TempFolder ();
  TempFolder (const TempFolder &) = delete;
  TempFolder &operator= (const TempFolder &) = delete;
  const std::filesystem::path &Path () const { return Path_; }

 private:
  std::filesystem::path Path_;
};

// Writes Bytes to the host file Path, creating its parent folders.
void WriteHostFile (const std::filesystem::path &Path, const std::string &Bytes);
std::string ReadHostFile (const std::filesystem::path &Path);
// A run-time text as the driver's 8-bit string type.
inline const CHAR8 *A8 (const char *Text) { return reinterpret_cast<const CHAR8 *> (Text); }

class DriverTest : public ::testing::Test {
 protected:
  // Options of the environment built for each test; override to change them.
  virtual env::Options EnvironmentOptions () { return env::Options (); }

  // Enabled state of every item of a popup, by its text (separators left out).
  std::map<std::string, bool> PopupItemStates (WINDOW_HEADER *Popup);
  // False: SetUp does not load the driver (the test calls LoadDriver itself).
  virtual bool AutoLoad () { return true; }

  void SetUp () override;
  void TearDown () override;

  // Loads the driver into the environment and takes the pool baseline.
  // Returns the entry point's status (also kept in LoadStatus()).
  EFI_STATUS LoadDriver ();
  EFI_STATUS LoadStatus () const { return LoadStatus_; }
  // Takes the pool baseline again (after process-wide icons or popups that
  // live as long as the driver were created by a first use).
  void RebaseAfterFirstUse ();
  size_t PoolBaseline () const { return Baseline_; }

  // Creates an empty temporary folder, mounts it and returns the volume number.
  int MakeVolume (const std::string &Name, uint8_t Flags = 0, uint8_t Kind = 0, uint8_t Fs = 1,
                  std::string Label = "");
  std::filesystem::path VolumePath (int Volume);
  void WriteFile (int Volume, const std::string &Relative, const std::string &Bytes);
  void MakeDir (int Volume, const std::string &Relative);
  // Every folder ("name/") and file ("name=contents") below Relative on a
  // volume, sorted, separated by spaces.
  std::string VolumeTree (int Volume, const std::string &Relative = "");

  env::Environment &Env () { return *Env_; }
  env::Firmware &Fw () { return Env_->firmware (); }
  SURVEYOR_PROTOCOL *Surveyor ();
  WINDOW_BASE_PROTOCOL *Wb ();
  CONTROL_DRIVER_PROTOCOL *Cd ();
  GUI_DRIVER_PROTOCOL *Gui ();
  std::string Console () { return Fw ().ConsoleText (); }

  // Skips the pool-balance check of this test (a test that leaves the driver
  // in a state where it cannot clean up on purpose).
  void SkipPoolCheck () { CheckPool_ = false; }

 private:
  std::unique_ptr<TempFolder> Root_;
  std::unique_ptr<env::Environment> Env_;
  std::vector<std::pair<int, std::filesystem::path>> Volumes_;
  EFI_STATUS LoadStatus_ = EFI_NOT_STARTED;
  size_t Baseline_ = 0;
  bool Loaded_ = false;
  bool CheckPool_ = true;
};
