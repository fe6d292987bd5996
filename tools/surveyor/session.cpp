#include "tools/surveyor/session.h"

#include <cstdlib>
#include <filesystem>

#ifndef SURVEYOR_SAMPLE_DIR
#define SURVEYOR_SAMPLE_DIR ""
#endif

namespace surveyor {

std::string SampleVolumeDir () { return SURVEYOR_SAMPLE_DIR; }

std::string DefaultSettingsFile () {
  const char *Config = std::getenv ("XDG_CONFIG_HOME");
  const char *Home = std::getenv ("HOME");
  std::filesystem::path Base;
  if (Config != nullptr && *Config != 0) {
    Base = Config;
  } else if (Home != nullptr && *Home != 0) {
    Base = std::filesystem::path (Home) / ".config";
  } else {
    return {};
  }
  std::error_code Ignored;
  std::filesystem::create_directories (Base / "surveyor", Ignored);
  return (Base / "surveyor" / "settings.ini").string ();
}

static env::Options OptionsFor (const CommandLine &Line) {
  env::Options Opts;
  Opts.ScreenWidth = Line.ScreenWidth;
  Opts.ScreenHeight = Line.ScreenHeight;
  Opts.SystemDir = Line.SystemDir;
  Opts.WithSettings = Line.WithSettings;
  Opts.WithNtfs = Line.WithNtfs;
  Opts.SettingsFile = Line.SettingsFile.empty () ? DefaultSettingsFile () : Line.SettingsFile;
  return Opts;
}

Session::Session (const CommandLine &Line) : Env_ (new env::Environment (OptionsFor (Line))) {}

Session::~Session () {
  // Windows close before the driver goes, as they would when the firmware shuts down.
  Env_.reset ();
}

int Session::Mount (const env::VolumeSpec &Spec, std::string &Error) {
  std::error_code Code;
  if (!std::filesystem::is_directory (Spec.Folder, Code)) {
    Error = "not a folder: " + Spec.Folder;
    return -1;
  }
  int Volume = Env_->Mount (Spec);
  if (Volume < 0) Error = "no free volume slot for " + Spec.Folder;
  return Volume;
}

bool Session::LoadDriver (std::string &Error) {
  EFI_STATUS Status = Env_->LoadDriver (SurveyorEntryPoint);
  if (EFI_ERROR (Status)) {
    Error = "the driver did not load:\n" + Env_->firmware ().ConsoleText ();
    return false;
  }
  const EFI_GUID Guid = SURVEYOR_PROTOCOL_GUID;
  Surveyor_ = static_cast<SURVEYOR_PROTOCOL *> (Env_->Locate (Guid));
  if (Surveyor_ == nullptr) {
    Error = "the driver loaded but its service is not installed";
    return false;
  }
  return true;
}

}  // namespace surveyor
