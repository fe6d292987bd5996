// Carries out the commands of a script against a loaded driver, as a user
// and an application would: service operations and user input only.
#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "tools/surveyor/screen_dump.h"
#include "tools/surveyor/script.h"
#include "tools/surveyor/session.h"

namespace env {
class DesktopInput;
}

namespace surveyor {

class ScriptRunner {
 public:
  ScriptRunner (Session &S, std::ostream &Out);
  ~ScriptRunner ();
  // Runs every line; false (with a message on Out) at the first failure.
  bool Run (const Script &S);

 private:
  bool Execute (const std::vector<std::string> &Words, std::string &Error);
  bool Settle ();
  // While a message box is shown: runs the lines that look at the screen
  // (shot, dump, expect, hover, click) up to "answer". Any other line
  // dismisses the box and is left for the main loop.
  UINTN AnswerMessageBox ();
  bool RunLine (const ScriptLine &Line);

  Session &Session_;
  std::ostream &Out_;
  ScreenDump Dump_;
  std::string PendingText_;     // typed into an in-place edit, applied by enter
  bool HasPendingText_ = false;
  std::unique_ptr<env::DesktopInput> Mouse_;   // clicks at screen positions
  const Script *Script_ = nullptr;              // the script being run
  size_t Next_ = 0;                             // its next line
  bool Failed_ = false;                         // a line failed (perhaps inside a message box)
};

}  // namespace surveyor
