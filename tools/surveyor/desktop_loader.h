// Loading the desktop module (tools/desktop_module), which holds the SDL
// desktop window, and running the desktop through it.
#pragma once

#include <string>

#include "env/desktop/sdl_desktop.h"

// The module's one entry point, looked up by its name.
extern "C" bool SurveyorRunDesktop (env::Environment &Env, const env::DesktopOptions &Options);

namespace surveyor {

enum class DesktopResult { Ran, NoDisplay, NoModule };

// Loads the module from the program's folder and runs the desktop; with
// NoModule, Error says why the module could not be loaded.
DesktopResult RunDesktopModule (env::Environment &Env, const env::DesktopOptions &Options, std::string &Error);

}  // namespace surveyor
