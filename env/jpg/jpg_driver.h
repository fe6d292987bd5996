// The stand-in JPG driver: JPEG decoding with libjpeg.
#pragma once

#include <memory>

#include "env/environment.h"
#include "services/jpg_driver.h"

namespace env {

class JpgDriver {
 public:
  JpgDriver (Firmware &Fw, uint32_t Version);
  ~JpgDriver ();
  JPG_DRIVER_PROTOCOL *Table ();

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
