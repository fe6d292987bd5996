// The state of the screen as text: one block per window from the bottom of
// the z-order to the top, its controls indented, then the open popup, the
// message boxes and the console lines since the previous dump. UTF-8.
#pragma once

#include <string>

#include "env/host/environment.h"

namespace surveyor {

class ScreenDump {
 public:
  explicit ScreenDump (env::Environment &Env) : Env_ (Env) {}
  // The whole text; message boxes and console lines are consumed.
  std::string Take ();
  // The same text without consuming anything (for expectations).
  std::string Peek ();

 private:
  std::string Build (bool Consume);
  env::Environment &Env_;
  size_t ConsoleShown_ = 0;
  size_t BoxesShown_ = 0;
};

}  // namespace surveyor
