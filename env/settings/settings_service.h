// The stand-in settings service: sections, keys and text values kept in a
// file, written atomically on Commit.
#pragma once

#include <memory>
#include <string>

#include "env/environment.h"
#include "services/settings_service.h"

namespace env {

class SettingsService {
 public:
  // An empty File keeps the values in memory only.
  SettingsService (Firmware &Fw, const std::string &File, uint32_t Version);
  ~SettingsService ();
  SETTINGS_SERVICE_PROTOCOL *Table ();
  unsigned CommitCount () const;
  unsigned SetValueCount () const;

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
