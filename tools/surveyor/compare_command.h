// `surveyor compare SOURCE BACKUP [PATH] [--contents] [--lang en|zh]`: one
// backup check, its difference lines, what it could not check, and totals
// that match the lines.
#pragma once

#include "tools/surveyor/command_line.h"

namespace surveyor {

// Exit status: 0 everything was checked and is the same; 1 differences were
// found; 3 part of the tree could not be checked (whatever else was found);
// 2 the check could not start.
int RunCompareCommand (const CommandLine &Line);

}  // namespace surveyor
