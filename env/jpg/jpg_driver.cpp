// Placeholder until the module lands: a table with its version only.
#include "env/jpg/jpg_driver.h"

namespace env {

struct JpgDriver::State {
  JPG_DRIVER_PROTOCOL Table {};
};

JpgDriver::JpgDriver (Firmware &Fw, uint32_t Version) : State_ (new State) { State_->Table.Version = Version; }
JpgDriver::~JpgDriver () = default;
JPG_DRIVER_PROTOCOL *JpgDriver::Table () { return &State_->Table; }

}  // namespace env
