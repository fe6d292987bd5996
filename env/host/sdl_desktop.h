// The interactive desktop on the host: an SDL2 window as the backend of the
// desktop loop (desktop/desktop_loop.h), which shows the framebuffer and hands
// the user's mouse and keyboard to the window system. Timers tick every
// TickMilliseconds; a message box is drawn over the desktop and waits for the
// user to press its button (then answers 1).
#pragma once

#include <functional>
#include <string>

namespace env {

class Siblings;

struct DesktopOptions {
  std::string Title = "Surveyor";
  int Scale = 1;                        // window pixels per framebuffer pixel
  unsigned TickMilliseconds = 100;      // timer period
  bool QuitWhenNoWindows = true;        // end when the last window closes
  unsigned MaxFrames = 0;               // 0: until the user closes the window
  std::string ScreenshotAtExit;         // PNG written when the loop ends
  std::function<bool (int Volume)> OpenVolume;   // for the volume chooser (Ctrl+O)
};

// Runs until the window is closed (or the options end it). Returns false
// when no display can be opened (for example without X); nothing is changed then.
bool RunDesktop (Siblings &Env, const DesktopOptions &Options = DesktopOptions ());

}  // namespace env
