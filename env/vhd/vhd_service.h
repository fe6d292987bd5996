// The VHD service: present or absent, with a version.
#pragma once

#include <cstdint>
#include "services/vhd_service.h"

namespace env {

class VhdService {
 public:
  explicit VhdService (uint32_t Version);
  VHD_SERVICE_PROTOCOL *Table ();

 private:
  VHD_SERVICE_PROTOCOL Table_;
};

}  // namespace env
