#include "tools/surveyor/browse_command.h"

#include <cstdio>

#include "tools/surveyor/desktop_loader.h"
#include "tools/surveyor/session.h"

namespace surveyor {

int RunBrowseCommand (const CommandLine &Line) {
  Session S (Line);
  std::string Error;
  if (!MountVolumes (S, Line, Error) || !S.LoadDriver (Error)) {
    std::fprintf (stderr, "surveyor: %s\n", Error.c_str ());
    return 2;
  }
  if (S.Surveyor ()->OpenVolumeWindow (0, 0, 0, nullptr, nullptr) == nullptr) {
    std::fprintf (stderr, "surveyor: the file manager did not open\n");
    return 2;
  }
  env::DesktopOptions Options;
  Options.Scale = Line.Scale;
  Options.MaxFrames = Line.Frames;
  Options.ScreenshotAtExit = Line.ShotAtExit;
  Options.OpenVolume = [&S] (int Volume) {
    return S.Surveyor ()->OpenVolumeWindow (0, 0, static_cast<UINT8> (Volume), nullptr, nullptr) != nullptr;
  };
  std::string Why;
  switch (RunDesktopModule (S.Env (), Options, Why)) {
    case DesktopResult::Ran:
      return 0;
    case DesktopResult::NoDisplay:
      std::fprintf (stderr,
                    "surveyor: no display to open the desktop window on (is DISPLAY set?); "
                    "\"surveyor run\" works without one\n");
      return 2;
    case DesktopResult::NoModule:
      std::fprintf (stderr, "surveyor: the desktop module could not be loaded: %s\n", Why.c_str ());
      return 2;
  }
  return 2;
}

}  // namespace surveyor
