#include "tools/surveyor/screen_output.h"

#include "env/render/screenshot.h"

namespace surveyor {

bool SaveScreenshot (env::Environment &Env, const std::string &Path, std::string &Error) {
  if (env::RenderScreenshot (Env, Path)) return true;
  Error = "cannot write the screenshot " + Path;
  return false;
}


}  // namespace surveyor
