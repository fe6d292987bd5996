#include "tools/surveyor/desktop_loader.h"

#include <dlfcn.h>

#include <filesystem>

#ifndef SURVEYOR_DESKTOP_MODULE
#define SURVEYOR_DESKTOP_MODULE "libsurveyor_desktop.so"
#endif

namespace surveyor {

DesktopResult RunDesktopModule (env::Siblings &Env, const env::DesktopOptions &Options, std::string &Error) {
  std::error_code Code;
  std::filesystem::path Program = std::filesystem::read_symlink ("/proc/self/exe", Code);
  if (Code) {
    Error = "the program's own folder is unknown: " + Code.message ();
    return DesktopResult::NoModule;
  }
  std::string Module = (Program.parent_path () / SURVEYOR_DESKTOP_MODULE).string ();
  // Kept loaded until the program ends: SDL may leave handlers behind.
  void *Library = ::dlopen (Module.c_str (), RTLD_NOW | RTLD_LOCAL);
  if (Library == nullptr) {
    Error = ::dlerror ();
    return DesktopResult::NoModule;
  }
  auto *Run = reinterpret_cast<decltype (&SurveyorRunDesktop)> (::dlsym (Library, "SurveyorRunDesktop"));
  if (Run == nullptr) {
    Error = Module + " has no SurveyorRunDesktop";
    return DesktopResult::NoModule;
  }
  return Run (Env, Options) ? DesktopResult::Ran : DesktopResult::NoDisplay;
}

}  // namespace surveyor
