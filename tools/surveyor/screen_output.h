// The screen as pixels: screenshots of the painted desktop.
#pragma once

#include <string>

#include "env/host/environment.h"

namespace surveyor {

// Paints the whole screen and writes it as a PNG file (making its folder).
bool SaveScreenshot (env::Environment &Env, const std::string &Path, std::string &Error);

}  // namespace surveyor
