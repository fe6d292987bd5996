#include "env/desktop/desktop_loop.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "env/gui/gui_driver.h"
#include "env/render/renderer.h"
#include "env/siblings.h"
#include "env/windows/window_base.h"

namespace env {

void ChangedRectangles (const uint32_t *Before, const uint32_t *Now, int Width, int Height,
                        std::vector<DirtyRect> &Out) {
  Out.clear ();
  int BandTop = -1, Left = Width, Right = -1;
  auto Close = [&] (int End) {
    if (BandTop >= 0) Out.push_back (DirtyRect {Left, BandTop, Right - Left + 1, End - BandTop});
    BandTop = -1, Left = Width, Right = -1;
  };
  for (int Y = 0; Y < Height; Y++) {
    const uint32_t *A = Before + static_cast<size_t> (Y) * Width, *B = Now + static_cast<size_t> (Y) * Width;
    if (std::memcmp (A, B, static_cast<size_t> (Width) * 4) == 0) {
      Close (Y);
      continue;
    }
    int First = 0, Last = Width - 1;
    while (A[First] == B[First]) First++;
    while (A[Last] == B[Last]) Last--;
    if (BandTop < 0) BandTop = Y;
    Left = std::min (Left, First), Right = std::max (Right, Last);
  }
  Close (Height);
}

namespace {

class Loop {
 public:
  Loop (Siblings &Env, DesktopBackend &Backend, const DesktopLoopOptions &Options)
      : Env_ (Env), Backend_ (Backend), Options_ (Options), Input_ (Env) {
    Input_.SetVolumeOpener (Options.OpenVolume);
  }

  DesktopLoopStats Run () {
    WindowBase &Wb = Env_.windows ();
    Wb.SetMessageBoxAnswerer ([this] (const MessageBoxRecord &) -> UINTN { return RunMessageBox (); });
    NextTick_ = Backend_.NowMs () + Options_.TickMilliseconds;
    while (!Quit_) {
      Step ();
      if (Options_.QuitWhenNoWindows && Wb.TopLevelWindows ().empty ()) Quit_ = true;
    }
    Wb.SetMessageBoxAnswerer (nullptr);
    return Stats_;
  }

 private:
  // The box's own loop: the window system waits (no timers, no messages)
  // until the button is pressed or the desktop is closed.
  UINTN RunMessageBox () {
    WindowBase &Wb = Env_.windows ();
    Dirty_ = true;
    while (!Quit_ && Wb.OpenMessageBox () && !Wb.OpenMessageBox ()->Dismissed) Step ();
    Dirty_ = true;
    return 1;
  }

  void Step () {
    WindowBase &Wb = Env_.windows ();
    uint64_t Now = Backend_.NowMs ();
    unsigned Wait = NextTick_ > Now ? static_cast<unsigned> (std::min<uint64_t> (NextTick_ - Now, 50)) : 0;
    InputEvent Event;
    if (Backend_.Wait (Wait, Event)) {
      uint64_t Start = Backend_.NowMicroseconds ();
      bool Changed = Handle (Event);
      while (!Quit_ && Backend_.Wait (0, Event)) Changed = Handle (Event) || Changed;
      if (Changed) Urgent_ = Dirty_ = true;
      InputTime_ += Backend_.NowMicroseconds () - Start;
    }
    Now = Backend_.NowMs ();
    if (Now >= NextTick_) {
      NextTick_ = Now + Options_.TickMilliseconds;
      if (Wb.RunTimerTick () > 0) Dirty_ = true;
      if (Wb.PumpMessages () > 0) Dirty_ = true;
    }
    // What input changed is shown at once; what only timers changed at most
    // every FrameMilliseconds. An unattended run (MaxFrames) presents on every
    // step, so that it ends even when nothing changes.
    bool Due = Urgent_ || Now >= LastFrame_ + Options_.FrameMilliseconds;
    if (((Dirty_ && Due) || Options_.MaxFrames) && !Quit_) Present ();
  }

  void Present () {
    GuiDriver &Gui = Env_.gui ();
    FrameTiming Timing;
    uint64_t Start = Backend_.NowMicroseconds ();
    RenderDesktop (Env_);
    uint64_t Painted = Backend_.NowMicroseconds ();
    int W = Gui.Width (), H = Gui.Height ();
    const uint32_t *Pixels = Gui.Framebuffer ();
    size_t Size = static_cast<size_t> (W) * H;
    if (Shown_.size () != Size) {
      Rects_.assign (1, DirtyRect {0, 0, W, H});
      Shown_.assign (Pixels, Pixels + Size);
    } else {
      ChangedRectangles (Shown_.data (), Pixels, W, H, Rects_);
    }
    for (const DirtyRect &R : Rects_) {
      Backend_.Flush (R.X, R.Y, R.Width, R.Height, Pixels + static_cast<size_t> (R.Y) * W + R.X, W);
      for (int Y = R.Y; Y < R.Y + R.Height; Y++)
        std::memcpy (Shown_.data () + static_cast<size_t> (Y) * W + R.X, Pixels + static_cast<size_t> (Y) * W + R.X,
                     static_cast<size_t> (R.Width) * 4);
      Stats_.PixelsFlushed += static_cast<uint64_t> (R.Width) * R.Height;
    }
    Stats_.Rectangles += static_cast<unsigned> (Rects_.size ());
    Backend_.FrameDone ();
    if (Options_.FrameTimed) {
      Timing.Input = InputTime_, Timing.Paint = Painted - Start, Timing.Flush = Backend_.NowMicroseconds () - Painted;
      Timing.Rectangles = static_cast<unsigned> (Rects_.size ());
      for (const DirtyRect &R : Rects_) Timing.Pixels += static_cast<uint64_t> (R.Width) * R.Height;
      Options_.FrameTimed (Timing);
    }
    InputTime_ = 0;
    Dirty_ = Urgent_ = false;
    LastFrame_ = Backend_.NowMs ();
    if (++Stats_.Frames == 1 && Options_.FirstFrame) Options_.FirstFrame ();
    if (Options_.MaxFrames && Stats_.Frames >= Options_.MaxFrames) Quit_ = true;
  }

  bool Handle (const InputEvent &E) {
    switch (E.Type) {
      case InputEvent::Kind::Quit:
        Quit_ = true;
        return false;
      case InputEvent::Kind::Key:
        Input_.Key (E.Char, E.Scan, E.Shift);
        return true;
      case InputEvent::Kind::PointerDown:
        Input_.MouseDown (E.X, E.Y, E.Button, E.Clicks, (E.Shift & (KEY_STATE_LEFT_CONTROL | KEY_STATE_RIGHT_CONTROL)) != 0,
                          (E.Shift & (KEY_STATE_LEFT_SHIFT | KEY_STATE_RIGHT_SHIFT)) != 0);
        return true;
      case InputEvent::Kind::PointerUp:
        Input_.MouseUp (E.X, E.Y);
        return true;
      case InputEvent::Kind::PointerMove:
        return Input_.MouseMove (E.X, E.Y);
      case InputEvent::Kind::Wheel:
        Input_.Wheel (E.X, E.Y, E.Lines);
        return true;
    }
    return false;
  }

  Siblings &Env_;
  DesktopBackend &Backend_;
  const DesktopLoopOptions &Options_;
  DesktopInput Input_;
  std::vector<uint32_t> Shown_;
  std::vector<DirtyRect> Rects_;
  DesktopLoopStats Stats_;
  uint64_t NextTick_ = 0, LastFrame_ = 0;
  uint64_t InputTime_ = 0;   // microseconds spent on input since the last frame
  bool Quit_ = false, Dirty_ = true, Urgent_ = true;
};

}  // namespace

DesktopLoopStats RunDesktopLoop (Siblings &Env, DesktopBackend &Backend, const DesktopLoopOptions &Options) {
  return Loop (Env, Backend, Options).Run ();
}

}  // namespace env
