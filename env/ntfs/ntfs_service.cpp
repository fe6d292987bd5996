// Placeholder until the module lands.
#include "env/ntfs/ntfs_service.h"

namespace env {

struct NtfsService::State {
  NTFS_SERVICE_PROTOCOL Table {};
};

NtfsService::NtfsService (Firmware &, WindowBase &, FileDriver &) : State_ (new State) {}
NtfsService::~NtfsService () = default;
NTFS_SERVICE_PROTOCOL *NtfsService::Table () { return &State_->Table; }
void NtfsService::SetReady (bool) {}

}  // namespace env
