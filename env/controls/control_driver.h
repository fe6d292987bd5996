// The stand-in control driver: list views, text views, combo boxes, file
// trees and log views, each sending the notifications their users read.
#pragma once

#include <memory>

#include "env/environment.h"
#include "services/control_driver.h"

namespace env {

class ControlDriver {
 public:
  ControlDriver (Firmware &Fw, WindowBase &Windows, GuiDriver &Gui, uint32_t Version);
  ~ControlDriver ();
  CONTROL_DRIVER_PROTOCOL *Table ();

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
