// Placeholder until the module lands: a table with its version only.
#include "env/gui/gui_driver.h"

namespace env {

struct GuiDriver::State {
  GUI_DRIVER_PROTOCOL Table {};
};

GuiDriver::GuiDriver (Firmware &Fw, uint16_t ScreenWidth, uint16_t ScreenHeight, uint32_t Version) : State_ (new State) { State_->Table.Version = Version; }
GuiDriver::~GuiDriver () = default;
GUI_DRIVER_PROTOCOL *GuiDriver::Table () { return &State_->Table; }

}  // namespace env
namespace env {
void GuiDriver::SetScreenSize (uint16_t Width, uint16_t Height) {
  State_->Table.ScreenWidth = Width;
  State_->Table.ScreenHeight = Height;
}
}  // namespace env
