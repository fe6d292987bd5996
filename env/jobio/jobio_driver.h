// The stand-in jobio driver: the file clipboard, recursive paste and delete.
#pragma once

#include <memory>

#include "env/environment.h"
#include "services/jobio_driver.h"

namespace env {

class JobioDriver {
 public:
  // Windows may be null; with it, clipboard changes are announced to every
  // top-level window (message 11).
  JobioDriver (Firmware &Fw, FileDriver &Files, WindowBase *Windows, uint32_t Version);
  ~JobioDriver ();
  JOBIO_DRIVER_PROTOCOL *Table ();

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
