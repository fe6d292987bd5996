// The screen as pixels: screenshots and mouse input at screen positions.
#pragma once

#include <string>

#include "env/environment.h"

namespace surveyor {

// Paints the whole screen and writes it as a PNG file.
bool SaveScreenshot (env::Environment &Env, const std::string &Path, std::string &Error);
// "click", "rightclick" or "doubleclick" at a screen position.
bool SendMouse (env::Environment &Env, const std::string &Kind, int X, int Y, std::string &Error);

}  // namespace surveyor
