// The desktop's main loop, the same on every backend: it reads the user's
// input from the backend and hands it to the window system (DesktopInput),
// runs the timers and the posted messages, paints the desktop into the GUI
// driver's framebuffer when something changed, and gives the backend only
// the rectangles whose pixels differ from the frame it showed before.
// Message boxes run the same loop, nested, until their button is pressed.
//
// A backend is small: one wait for input, a clock, and one Flush of a
// rectangle of pixels (GOP Blt in firmware; an SDL texture on the host).
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "env/desktop/desktop_input.h"

namespace env {

class Siblings;

struct InputEvent {
  enum class Kind { Key, PointerMove, PointerDown, PointerUp, Wheel, Quit } Type = Kind::Key;
  // Keys: a character or a UEFI scan code, with the UEFI shift state.
  CHAR16 Char = 0;
  UINT16 Scan = 0;
  UINT32 Shift = 0;
  // Pointer: position in framebuffer pixels.
  int X = 0, Y = 0;
  MouseButton Button = MouseButton::Left;
  int Clicks = 1;       // 2 for a double click
  int Lines = 0;        // wheel: positive scrolls up
};

class DesktopBackend {
 public:
  virtual ~DesktopBackend () = default;
  // Waits at most TimeoutMs for input; false when none came.
  virtual bool Wait (unsigned TimeoutMs, InputEvent &Event) = 0;
  virtual uint64_t NowMs () = 0;
  // A finer clock for timing frames; the same time base as NowMs.
  virtual uint64_t NowMicroseconds () { return NowMs () * 1000; }
  // Shows a rectangle of the framebuffer (Pixels is its top-left pixel,
  // Stride pixels a row).
  virtual void Flush (int X, int Y, int Width, int Height, const uint32_t *Pixels, int Stride) = 0;
  // Called after the rectangles of a frame were flushed.
  virtual void FrameDone () {}
};

// Where the time of one frame went (microseconds).
struct FrameTiming {
  uint64_t Input = 0;        // handling the input that led to the frame
  uint64_t Paint = 0;        // painting the desktop into the framebuffer
  uint64_t Flush = 0;        // finding and flushing the changed rectangles
  uint64_t Pixels = 0;       // pixels flushed
  unsigned Rectangles = 0;
};

struct DesktopLoopOptions {
  unsigned TickMilliseconds = 100;      // timer period
  unsigned FrameMilliseconds = 0;       // shortest time between frames that only timers caused
  bool QuitWhenNoWindows = true;        // end when the last window closes
  unsigned MaxFrames = 0;               // 0: until Quit
  std::function<void ()> FirstFrame;    // after the first frame was shown
  std::function<bool (int Volume)> OpenVolume;   // the volume chooser's (DesktopInput)
  std::function<void (const FrameTiming &)> FrameTimed;   // after each frame, when set
};

// Figures of a run, for tests and benchmarks.
struct DesktopLoopStats {
  unsigned Frames = 0;
  uint64_t PixelsFlushed = 0;
  unsigned Rectangles = 0;
};

DesktopLoopStats RunDesktopLoop (Siblings &Env, DesktopBackend &Backend, const DesktopLoopOptions &Options);

// The rectangles where Now differs from Before (both Width x Height), as
// bands of changed rows cut to the columns that changed in them.
struct DirtyRect {
  int X, Y, Width, Height;
};
void ChangedRectangles (const uint32_t *Before, const uint32_t *Now, int Width, int Height,
                        std::vector<DirtyRect> &Out);

}  // namespace env
