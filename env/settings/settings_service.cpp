// Placeholder until the module lands: a table with its version only.
#include "env/settings/settings_service.h"

namespace env {

struct SettingsService::State {
  SETTINGS_SERVICE_PROTOCOL Table {};
};

SettingsService::SettingsService (Firmware &Fw, const std::string &File, uint32_t Version) : State_ (new State) { State_->Table.Version = Version; }
SettingsService::~SettingsService () = default;
SETTINGS_SERVICE_PROTOCOL *SettingsService::Table () { return &State_->Table; }

}  // namespace env
namespace env {
unsigned SettingsService::CommitCount () const { return 0; }
unsigned SettingsService::SetValueCount () const { return 0; }
}  // namespace env
