// `surveyor run SCRIPT...`: a headless scripted session.
#pragma once

#include "tools/surveyor/command_line.h"

namespace surveyor {

// Exit status: 0 when every script ran to its end, 1 when an expectation or a
// command failed, 2 when a script could not be read or the driver not loaded.
int RunScriptCommand (const CommandLine &Line);

}  // namespace surveyor
