// The JPG driver: JPEG decoding for the driver's image viewer, through the
// backend's decoder (images/codecs.h, where its limits are given).
#pragma once

#include <memory>

#include "services/jpg_driver.h"

namespace env {

class JpgDriver {
 public:
  explicit JpgDriver (uint32_t Version);
  ~JpgDriver ();
  JpgDriver (const JpgDriver &) = delete;
  JpgDriver &operator= (const JpgDriver &) = delete;
  JPG_DRIVER_PROTOCOL *Table ();

  struct State;

 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
