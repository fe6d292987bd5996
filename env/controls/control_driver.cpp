// Interim implementation: the table with its version and the user-action API
// answering "nothing yet". Replaced by the full control driver.
#include "env/controls/control_driver.h"

namespace env {

struct ControlDriver::State {
  CONTROL_DRIVER_PROTOCOL Table {};
};

ControlDriver::ControlDriver (Firmware &, WindowBase &, GuiDriver &, uint32_t Version) : State_ (new State) { State_->Table.Version = Version; }
ControlDriver::~ControlDriver () = default;
CONTROL_DRIVER_PROTOCOL *ControlDriver::Table () { return &State_->Table; }
void ControlDriver::SelectRows (LIST_CONTROL *, std::vector<uint16_t>) {}
void ControlDriver::ActivateRow (LIST_CONTROL *, uint16_t) {}
void ControlDriver::ContextClick (LIST_CONTROL *, uint16_t, uint16_t) {}
std::string ControlDriver::CellText (LIST_CONTROL *, uint8_t, uint16_t) const { return {}; }
std::vector<ListColumnInfo> ControlDriver::Columns (LIST_CONTROL *) const { return {}; }
std::vector<uint16_t> ControlDriver::SelectedRows (LIST_CONTROL *) const { return {}; }
bool ControlDriver::Editing (LIST_CONTROL *) const { return false; }
uint16_t ControlDriver::EditRow (LIST_CONTROL *) const { return 0xFFFF; }
void ControlDriver::FinishEdit (LIST_CONTROL *, const std::string &, bool) {}
uint16_t ControlDriver::RowHeight () const { return 18; }
uint16_t ControlDriver::HeaderHeight () const { return 22; }
std::vector<FILE_LIST_ITEM> ControlDriver::TreeItems (FILE_LIST *) const { return {}; }
void ControlDriver::ExpandTreeItem (FILE_LIST *, uint16_t) {}
void ControlDriver::SelectTreeItem (FILE_LIST *, uint16_t) {}
void ControlDriver::ActivateTreeItem (FILE_LIST *, uint16_t) {}
void ControlDriver::TreeContextClick (FILE_LIST *, uint16_t, uint16_t, uint16_t) {}
bool ControlDriver::TreeEditing (FILE_LIST *) const { return false; }
uint32_t ControlDriver::FinishTreeEdit (FILE_LIST *, const std::string &, bool) { return 0; }
void ControlDriver::ChooseComboRow (COMBO_BOX *, uint16_t) {}
std::vector<std::string> ControlDriver::ComboItems (COMBO_BOX *) const { return {}; }
std::vector<std::string> ControlDriver::LogLines (LOG_VIEW *) const { return {}; }
std::string ControlDriver::LogPath (LOG_VIEW *) const { return {}; }
void ControlDriver::SelectLogLine (LOG_VIEW *, uint16_t) {}
void ControlDriver::LogContextClick (LOG_VIEW *, uint16_t, uint16_t) {}
std::string ControlDriver::TextViewText (CONTROL *) const { return {}; }

}  // namespace env
