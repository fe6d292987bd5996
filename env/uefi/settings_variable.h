// The settings kept in a non-volatile UEFI variable ("SurveyorSettings"
// under the project's vendor GUID), so that they survive a reboot.
#pragma once

#include <memory>

#include "env/settings/settings_service.h"

namespace env {

std::unique_ptr<SettingsStore> OpenSettingsVariable ();

}  // namespace env
