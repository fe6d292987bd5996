#include "tools/surveyor/screen_output.h"

namespace surveyor {

bool SaveScreenshot (env::Environment &, const std::string &, std::string &Error) {
  Error = "screenshots are not available in this build";
  return false;
}

bool SendMouse (env::Environment &, const std::string &, int, int, std::string &Error) {
  Error = "mouse input is not available in this build";
  return false;
}

}  // namespace surveyor
