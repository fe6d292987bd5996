// The settings kept in a host file, replaced atomically (a temporary file in
// the same folder, flushed, then renamed over it).
#pragma once

#include <memory>
#include <string>

#include "env/settings/settings_service.h"

namespace env {

std::unique_ptr<SettingsStore> OpenSettingsFile (const std::string &Path);

}  // namespace env
