// One run of the driver inside the stand-in environment: the environment
// built from the command line, its volumes mounted and the driver loaded
// exactly as firmware loads it.
#pragma once

#include <memory>
#include <string>

#include "core/surveyor_protocol.h"
#include "env/host/environment.h"
#include "tools/surveyor/command_line.h"

namespace surveyor {

// Folder of the bundled sample volume, made by the build.
std::string SampleVolumeDir ();
// The per-user settings file (~/.config/surveyor/settings.ini).
std::string DefaultSettingsFile ();

class Session {
 public:
  explicit Session (const CommandLine &Line);
  ~Session ();

  // Mounts a volume; returns its number, or -1 with a message in Error.
  int Mount (const env::VolumeSpec &Spec, std::string &Error);
  // Loads the driver; false with a message (the console lines) in Error.
  bool LoadDriver (std::string &Error);

  env::Environment &Env () { return *Env_; }
  SURVEYOR_PROTOCOL *Surveyor () { return Surveyor_; }

 private:
  std::unique_ptr<env::Environment> Env_;
  SURVEYOR_PROTOCOL *Surveyor_ = nullptr;
};

}  // namespace surveyor
