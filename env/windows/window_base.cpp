// Interim implementation: the table with its version and the user-action API
// answering "nothing yet". Replaced by the full window base.
#include "env/windows/window_base.h"

namespace env {

struct WindowBase::State {
  WINDOW_BASE_PROTOCOL Table {};
  std::vector<MessageBoxRecord> Boxes;
  std::vector<DialogResult> Results;
};

WindowBase::WindowBase (Firmware &, FileDriver &, GuiDriver &, uint32_t Version) : State_ (new State) { State_->Table.Version = Version; }
WindowBase::~WindowBase () = default;
WINDOW_BASE_PROTOCOL *WindowBase::Table () { return &State_->Table; }
WindowBase::State &WindowBase::Internal () { return *State_; }
size_t WindowBase::PumpMessages () { return 0; }
size_t WindowBase::RunTimerTick () { return 0; }
size_t WindowBase::TimerCount () const { return 0; }
std::vector<WINDOW_HEADER *> WindowBase::TopLevelWindows () const { return {}; }
WINDOW_HEADER *WindowBase::ActiveWindow () const { return nullptr; }
void WindowBase::DestroyAllWindows () {}
bool WindowBase::IsWindow (const void *) const { return false; }
bool WindowBase::IsControl (const void *) const { return false; }
std::vector<WINDOW_HEADER *> WindowBase::ChildWindows (WINDOW_HEADER *) const { return {}; }
std::vector<CONTROL *> WindowBase::Controls (WINDOW_HEADER *) const { return {}; }
std::string WindowBase::WindowText (const void *) const { return {}; }
size_t WindowBase::LiveWindowCount () const { return 0; }
UINTN WindowBase::SendSysCommand (WINDOW_HEADER *, uint16_t) { return 0; }
UINTN WindowBase::ResizeWindow (WINDOW_HEADER *, uint16_t, uint16_t) { return 0; }
UINTN WindowBase::SendKey (WINDOW_HEADER *, CHAR16, UINT16, UINT32) { return 0; }
const std::vector<MessageBoxRecord> &WindowBase::MessageBoxes () const { return State_->Boxes; }
void WindowBase::ClearMessageBoxes () {}
void WindowBase::SetMessageBoxAnswerer (std::function<UINTN (const MessageBoxRecord &)>) {}
WINDOW_HEADER *WindowBase::ShownPopup () const { return nullptr; }
std::vector<WINDOW_HEADER *> WindowBase::Popups () const { return {}; }
std::vector<PopupItemInfo> WindowBase::PopupItems (WINDOW_HEADER *) const { return {}; }
bool WindowBase::ChoosePopupItem (WINDOW_HEADER *, const std::string &) { return false; }
void WindowBase::ClosePopup () {}
bool WindowBase::ClickMenuItem (MENU_ITEM *) { return false; }
bool WindowBase::ClickButton (CONTROL *) { return false; }
std::string WindowBase::StatusText (WINDOW_HEADER *, uint8_t) const { return {}; }
uint8_t WindowBase::StatusFieldCount (WINDOW_HEADER *) const { return 0; }
const std::vector<DialogResult> &WindowBase::DialogResults () const { return State_->Results; }
void WindowBase::SetDialogListener (std::function<void (const DialogResult &)>) {}
void WindowBase::SetExtendedMenus (bool) {}
std::string WindowBase::IconPath (uint8_t) const { return {}; }
size_t WindowBase::LiveIconCount () const { return 0; }
bool WindowBase::IconImage (uint8_t, uint32_t &, uint32_t &, const uint32_t *&) const { return false; }
unsigned WindowBase::RedrawCount (const void *) const { return 0; }
void WindowBase::SetRedrawHook (std::function<void (void *)>) {}
void WindowBase::SetPaintHook (std::function<void (WINDOW_HEADER *, PaintContext &)>) {}
void WindowBase::ScreenOrigin (const void *, int32_t &X, int32_t &Y) const { X = Y = 0; }

}  // namespace env
