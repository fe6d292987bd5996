// The stand-in NTFS service: Prepare and a small attributes window.
#pragma once

#include <memory>

#include "env/environment.h"
#include "services/ntfs_service.h"

namespace env {

class NtfsService {
 public:
  NtfsService (Firmware &Fw, WindowBase &Windows, FileDriver &Files);
  ~NtfsService ();
  NTFS_SERVICE_PROTOCOL *Table ();
  void SetReady (bool Ready);

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
