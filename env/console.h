// A line on the firmware's console, for the environment's own notices (the
// host's stand-in records it and also shows it on standard error).
#pragma once

#include <string>

namespace env {

void ConsoleLine (const std::string &Text);

}  // namespace env
