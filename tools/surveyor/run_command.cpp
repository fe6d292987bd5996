#include "tools/surveyor/run_command.h"

#include <cstdio>
#include <iostream>

#include "tools/surveyor/browse_command.h"
#include "tools/surveyor/script.h"
#include "tools/surveyor/script_runner.h"
#include "tools/surveyor/session.h"

namespace surveyor {

int RunScriptCommand (const CommandLine &Line) {
  std::vector<Script> Scripts;
  std::string Error;
  bool MountsOwnVolumes = !Line.Volumes.empty ();
  for (const std::string &Name : Line.Arguments) {
    Script S;
    if (!ReadScript (Name, S, Error)) {
      std::fprintf (stderr, "surveyor: %s\n", Error.c_str ());
      return 2;
    }
    for (const ScriptLine &L : S.Lines)
      if (L.Words[0] == "volume") MountsOwnVolumes = true;
    Scripts.push_back (S);
  }

  Session Run (Line);
  CommandLine Mounting = Line;
  Mounting.Arguments.clear ();   // the arguments are scripts, not folders
  if (MountsOwnVolumes) {
    for (const env::VolumeSpec &Spec : Line.Volumes)
      if (Run.Mount (Spec, Error) < 0) {
        std::fprintf (stderr, "surveyor: %s\n", Error.c_str ());
        return 2;
      }
  } else if (!MountVolumes (Run, Mounting, Error)) {
    std::fprintf (stderr, "surveyor: %s\n", Error.c_str ());
    return 2;
  }
  if (!Run.LoadDriver (Error)) {
    std::fprintf (stderr, "surveyor: %s\n", Error.c_str ());
    return 2;
  }

  ScriptRunner Runner (Run, std::cout);
  for (const Script &S : Scripts)
    if (!Runner.Run (S)) return 1;
  return 0;
}

}  // namespace surveyor
