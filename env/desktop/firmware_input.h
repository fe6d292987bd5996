// The firmware's input records turned into the desktop loop's input events:
// keys from Simple Text Input (Ex), and pointer states from Simple Pointer
// (relative) and Absolute Pointer devices. Kept apart from the firmware
// calls so that the host can feed the same records in tests.
#pragma once

#include <cstdint>
#include <vector>

#include "env/desktop/desktop_loop.h"
#include "platform/uefi.h"

namespace env {

// A key record as the desktop wants it. Firmware gives Ctrl+letter as the
// control character 1 to 26; it comes back as the letter with Ctrl held.
// Without a valid shift state the control characters other than Backspace,
// Tab and Enter are still read as Ctrl+letter. False for records that carry
// no key (a lone shift key, say).
bool KeyFromFirmware (const EFI_KEY_DATA &Key, InputEvent &Out);

// Pointer position, buttons and double clicks, over a screen of a given size.
class PointerTracker {
 public:
  PointerTracker (int ScreenWidth, int ScreenHeight);
  void Relative (const EFI_SIMPLE_POINTER_STATE &State, const EFI_SIMPLE_POINTER_MODE &Mode, uint64_t NowMs,
                 std::vector<InputEvent> &Out);
  void Absolute (const EFI_ABSOLUTE_POINTER_STATE &State, const EFI_ABSOLUTE_POINTER_MODE &Mode, uint64_t NowMs,
                 std::vector<InputEvent> &Out);
  int X () const { return X_; }
  int Y () const { return Y_; }

 private:
  void MoveTo (int X, int Y, std::vector<InputEvent> &Out);
  void Buttons (bool Left, bool Right, uint64_t NowMs, std::vector<InputEvent> &Out);
  int Width_, Height_;
  int X_, Y_;
  bool Left_ = false, Right_ = false;
  uint64_t LastClickMs_ = 0;
  int LastClickX_ = -100, LastClickY_ = -100;
};

constexpr unsigned kDoubleClickMs = 500;

}  // namespace env
