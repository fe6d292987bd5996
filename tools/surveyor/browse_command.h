// `surveyor browse [DIR...]`: the desktop window with the file manager.
#pragma once

#include "tools/surveyor/command_line.h"

namespace surveyor {

int RunBrowseCommand (const CommandLine &Line);

// Mounts the --volume options and the folders given as arguments, or the
// bundled sample volume when there is none; false with a message in Error.
class Session;
bool MountVolumes (Session &S, const CommandLine &Line, std::string &Error);

}  // namespace surveyor
