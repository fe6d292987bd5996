// The desktop loop's backend in firmware: the Graphics Output Protocol's
// screen (changed rectangles copied with Blt), keys from Simple Text Input
// Ex (Simple Text Input when the console has no Ex), and the Simple Pointer
// and Absolute Pointer of the console when the firmware offers them, with a
// cursor drawn over the screen. Time comes from a periodic timer event; the
// processor's time-stamp counter, measured against the firmware's Stall,
// times frames.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "env/desktop/desktop_loop.h"
#include "env/desktop/firmware_input.h"
#include "platform/uefi.h"

namespace env {

// The size of the screen, or false when there is no graphics output.
bool ScreenSize (uint16_t &Width, uint16_t &Height);

class FirmwareDesktop : public DesktopBackend {
 public:
  // Frame: the GUI driver's framebuffer (what the screen shows under the cursor).
  FirmwareDesktop (const uint32_t *Frame, int Width, int Height);
  ~FirmwareDesktop () override;
  bool Ready () const { return Gop_ != nullptr && Clock_ != nullptr; }

  bool Wait (unsigned TimeoutMs, InputEvent &Event) override;
  uint64_t NowMs () override;
  uint64_t NowMicroseconds () override;
  void Flush (int X, int Y, int Width, int Height, const uint32_t *Pixels, int Stride) override;
  void FrameDone () override;
  // Copies the whole framebuffer to the screen (after console text covered it).
  void FlushAll ();
  // Work to do whenever input is looked for (between two steps of the loop).
  void OnPoll (void (*Hook) ()) { Hook_ = Hook; }

 private:
  void Poll ();
  void ShowCursor ();
  void HideCursor ();

  const uint32_t *Frame_;
  int Width_, Height_;
  EFI_GRAPHICS_OUTPUT_PROTOCOL *Gop_ = nullptr;
  EFI_SIMPLE_TEXT_INPUT_EX_PROTOCOL *KeysEx_ = nullptr;
  SIMPLE_INPUT_INTERFACE *Keys_ = nullptr;
  EFI_SIMPLE_POINTER_PROTOCOL *Pointer_ = nullptr;
  EFI_ABSOLUTE_POINTER_PROTOCOL *Absolute_ = nullptr;
  EFI_EVENT Clock_ = nullptr, Timeout_ = nullptr;
  uint64_t TscStart_ = 0, TscPerMicrosecond_ = 0;
  PointerTracker Tracker_;
  std::vector<InputEvent> Pending_;
  void (*Hook_) () = nullptr;
  bool CursorShown_ = false;
  int CursorX_ = 0, CursorY_ = 0;
};

}  // namespace env
