#include "tools/surveyor/browse_command.h"

#include <cstdio>

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
  std::fprintf (stderr, "surveyor: the desktop window is not available in this build\n");
  return 2;
}

}  // namespace surveyor
