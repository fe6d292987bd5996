// The desktop module: the SDL desktop as a library of its own, loaded by
// `surveyor browse` alone, so that no other command loads SDL and the many
// libraries behind it. The environment it shows lives in the program.
#include "env/host/sdl_desktop.h"
#include "tools/surveyor/desktop_loader.h"

extern "C" bool SurveyorRunDesktop (env::Siblings &Env, const env::DesktopOptions &Options) {
  return env::RunDesktop (Env, Options);
}
