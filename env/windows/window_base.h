// The stand-in window base: windows, controls shared by all windows,
// messages with a pump, timers, popup menus, message boxes and icons.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "env/environment.h"
#include "services/window_base.h"

namespace env {

class WindowBase {
 public:
  WindowBase (Firmware &Fw, FileDriver &Files, GuiDriver &Gui, uint32_t Version);
  ~WindowBase ();
  WINDOW_BASE_PROTOCOL *Table ();

  // Delivers posted messages until none is left; returns how many were delivered.
  size_t PumpMessages ();
  // Runs one tick of every timer (in the order they were set); returns how many ran.
  size_t RunTimerTick ();
  size_t TimerCount () const;

  // Top-level windows from the bottom of the z-order to the top.
  std::vector<WINDOW_HEADER *> TopLevelWindows () const;
  WINDOW_HEADER *ActiveWindow () const;
  // Destroys every window (tests end with it).
  void DestroyAllWindows ();

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
