// Shared by the fuzz targets that drive whole windows: the environment with
// the driver loaded, built once per process (building it for every input
// would leave no time for the inputs), a system folder of the target's own
// and two volumes on temporary folders. Each input ends with EndInput, which
// closes every window and checks that the pool is back where it started.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/surveyor_protocol.h"
#include "env/host/environment.h"
#include "env/windows/window_base.h"
#include "services/service_ids.h"

namespace fuzz {

inline const CHAR8 *A8 (const char *Text) { return reinterpret_cast<const CHAR8 *> (Text); }

inline void Check (bool Condition) {
  if (!Condition) std::abort ();
}

inline void WriteBytes (const std::filesystem::path &Path, const void *Data, size_t Size) {
  std::filesystem::create_directories (Path.parent_path ());
  std::ofstream Out (Path, std::ios::binary | std::ios::trunc);
  Out.write (static_cast<const char *> (Data), static_cast<std::streamsize> (Size));
}

class Session {
 public:
  // SystemDir empty: the built assets (texts and icons).
  explicit Session (bool OwnSystemDir) {
    char Template[] = "/tmp/surveyor-fuzz-XXXXXX";
    Root_ = ::mkdtemp (Template);
    env::Options Options;
    if (OwnSystemDir) {
      System = Root_ / "system";
      std::filesystem::create_directories (System / "efi/kivora/strings");
      Options.SystemDir = System.string ();
    }
    Options.WithSettings = false;
    Env = new env::Environment (Options);
    for (int I = 0; I < 2; I++) {
      Folders[I] = Root_ / (I == 0 ? "source" : "backup");
      std::filesystem::create_directories (Folders[I]);
      env::VolumeSpec Spec;
      Spec.Folder = Folders[I].string ();
      Spec.Label = I == 0 ? "C:" : "BACKUP";
      Spec.Flags = I == 0 ? 0 : 0x81;
      Volumes[I] = Env->Mount (Spec);
    }
    Check (Env->LoadDriver (SurveyorEntryPoint) == EFI_SUCCESS);
    const EFI_GUID Guid = SURVEYOR_PROTOCOL_GUID;
    Surveyor = static_cast<SURVEYOR_PROTOCOL *> (Env->Locate (Guid));
    Check (Surveyor != nullptr);
  }

  // Takes the pool level after the first input, once the process-wide icons
  // and popups that live as long as the driver exist.
  void EndInput () {
    Env->windows ().DestroyAllWindows ();
    Env->windows ().PumpMessages ();
    Env->windows ().ClearMessageBoxes ();
    size_t Live = Env->firmware ().LiveAllocations ();
    if (Baseline_ == 0) Baseline_ = Live;
    Check (Live == Baseline_);
  }

  // Runs timer ticks until no timer is left or Limit ticks have run.
  void RunTimers (unsigned Limit) {
    for (unsigned I = 0; I < Limit && Env->windows ().RunTimerTick () != 0; I++) {
    }
  }

  env::Environment *Env;
  SURVEYOR_PROTOCOL *Surveyor;
  std::filesystem::path System;
  std::filesystem::path Folders[2];
  int Volumes[2];

 private:
  std::filesystem::path Root_;
  size_t Baseline_ = 0;
};

}  // namespace fuzz
