#include "env/vhd/vhd_service.h"

namespace env {

VhdService::VhdService (uint32_t Version) : Table_ {} { Table_.Version = Version; }
VHD_SERVICE_PROTOCOL *VhdService::Table () { return &Table_; }

}  // namespace env
