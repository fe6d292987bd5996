// Placeholder until the module lands: a table with its version only.
#include "env/jobio/jobio_driver.h"

namespace env {

struct JobioDriver::State {
  JOBIO_DRIVER_PROTOCOL Table {};
};

JobioDriver::JobioDriver (Firmware &Fw, FileDriver &Files, WindowBase *Windows, uint32_t Version) : State_ (new State) { State_->Table.Version = Version; }
JobioDriver::~JobioDriver () = default;
JOBIO_DRIVER_PROTOCOL *JobioDriver::Table () { return &State_->Table; }

}  // namespace env
