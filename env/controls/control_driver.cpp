// Placeholder until the module lands: a table with its version only.
#include "env/controls/control_driver.h"

namespace env {

struct ControlDriver::State {
  CONTROL_DRIVER_PROTOCOL Table {};
};

ControlDriver::ControlDriver (Firmware &Fw, WindowBase &Windows, GuiDriver &Gui, uint32_t Version) : State_ (new State) { State_->Table.Version = Version; }
ControlDriver::~ControlDriver () = default;
CONTROL_DRIVER_PROTOCOL *ControlDriver::Table () { return &State_->Table; }

}  // namespace env
