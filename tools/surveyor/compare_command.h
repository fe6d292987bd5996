// `surveyor compare SOURCE BACKUP [PATH] [--contents]`: one comparison job
// run to its end with timer ticks back to back, its difference lines and
// totals printed in UTF-8.
#pragma once

#include "tools/surveyor/command_line.h"

namespace surveyor {

// Exit status: 0 nothing differs, 1 something differs, 2 the job could not start.
int RunCompareCommand (const CommandLine &Line);

}  // namespace surveyor
