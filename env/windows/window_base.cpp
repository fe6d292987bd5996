// Placeholder until the module lands: a table with its version only.
#include "env/windows/window_base.h"

namespace env {

struct WindowBase::State {
  WINDOW_BASE_PROTOCOL Table {};
};

WindowBase::WindowBase (Firmware &Fw, FileDriver &Files, GuiDriver &Gui, uint32_t Version) : State_ (new State) { State_->Table.Version = Version; }
WindowBase::~WindowBase () = default;
WINDOW_BASE_PROTOCOL *WindowBase::Table () { return &State_->Table; }

}  // namespace env
namespace env {
size_t WindowBase::PumpMessages () { return 0; }
size_t WindowBase::RunTimerTick () { return 0; }
size_t WindowBase::TimerCount () const { return 0; }
std::vector<WINDOW_HEADER *> WindowBase::TopLevelWindows () const { return {}; }
WINDOW_HEADER *WindowBase::ActiveWindow () const { return nullptr; }
void WindowBase::DestroyAllWindows () {}
}  // namespace env
