// Loading the desktop module (tools/desktop_module), which holds the SDL
// desktop window, and running the desktop through it.
#pragma once

#include <string>

#include "env/host/sdl_desktop.h"
#include "env/siblings.h"

// The module's one entry point, looked up by its name.
extern "C" bool SurveyorRunDesktop (env::Siblings &Env, const env::DesktopOptions &Options);

namespace surveyor {

enum class DesktopResult { Ran, NoDisplay, NoModule };

// Loads the module from the program's folder and runs the desktop; with
// NoModule, Error says why the module could not be loaded.
DesktopResult RunDesktopModule (env::Siblings &Env, const env::DesktopOptions &Options, std::string &Error);

}  // namespace surveyor
