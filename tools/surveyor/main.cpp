// surveyor: runs the Surveyor driver in the stand-in environment, as firmware
// would load it, and drives it through its service table and user input.
#include <cstdio>

#include "tools/surveyor/browse_command.h"
#include "tools/surveyor/command_line.h"
#include "tools/surveyor/compare_command.h"
#include "tools/surveyor/run_command.h"

int main (int Argc, char **Argv) {
  surveyor::CommandLine Line;
  std::string Error;
  if (!surveyor::ParseCommandLine (Argc, Argv, Line, Error)) {
    std::fprintf (stderr, "surveyor: %s\n\n%s", Error.c_str (), surveyor::UsageText);
    return 2;
  }
  if (Line.Help) {
    std::fputs (surveyor::UsageText, stdout);
    return 0;
  }
  if (Line.Command == "compare") return surveyor::RunCompareCommand (Line);
  if (Line.Command == "run") return surveyor::RunScriptCommand (Line);
  return surveyor::RunBrowseCommand (Line);
}
