// The stand-in GUI driver: screen size, system font, drawing primitives into
// the framebuffer, BMP decoding and pixel scaling.
#pragma once

#include <memory>

#include "env/environment.h"
#include "services/gui_driver.h"

namespace env {

class GuiDriver {
 public:
  GuiDriver (Firmware &Fw, uint16_t ScreenWidth, uint16_t ScreenHeight, uint32_t Version);
  ~GuiDriver ();
  GUI_DRIVER_PROTOCOL *Table ();
  void SetScreenSize (uint16_t Width, uint16_t Height);

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
