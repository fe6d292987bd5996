#include "env/host/sdl_desktop.h"

#include <SDL.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "env/desktop/desktop_input.h"
#include "env/siblings.h"
#include "env/gui/gui_driver.h"
#include "env/render/renderer.h"
#include "env/host/screenshot.h"
#include "env/windows/window_base.h"

namespace env {

namespace {

// UEFI scan codes of the keys without a character.
UINT16 ScanOf (SDL_Keycode Key) {
  switch (Key) {
    case SDLK_UP: return 0x01;
    case SDLK_DOWN: return 0x02;
    case SDLK_RIGHT: return 0x03;
    case SDLK_LEFT: return 0x04;
    case SDLK_HOME: return 0x05;
    case SDLK_END: return 0x06;
    case SDLK_INSERT: return 0x07;
    case SDLK_DELETE: return 0x08;
    case SDLK_PAGEUP: return 0x09;
    case SDLK_PAGEDOWN: return 0x0A;
    case SDLK_ESCAPE: return 0x17;
    default:
      if (Key >= SDLK_F1 && Key <= SDLK_F10) return static_cast<UINT16> (0x0B + (Key - SDLK_F1));
      return 0;
  }
}

UINT32 ShiftState (Uint16 Mod) {
  UINT32 S = KEY_STATE_VALID;
  if (Mod & KMOD_LSHIFT) S |= KEY_STATE_LEFT_SHIFT;
  if (Mod & KMOD_RSHIFT) S |= KEY_STATE_RIGHT_SHIFT;
  if (Mod & KMOD_LCTRL) S |= KEY_STATE_LEFT_CONTROL;
  if (Mod & KMOD_RCTRL) S |= KEY_STATE_RIGHT_CONTROL;
  if (Mod & KMOD_LALT) S |= KEY_STATE_LEFT_ALT;
  if (Mod & KMOD_RALT) S |= KEY_STATE_RIGHT_ALT;
  return S;
}

// One SDL window showing the framebuffer. Step () waits for input or the
// next timer tick, hands the input on, and presents a new frame when
// something changed; message boxes run Step () in a loop of their own
// until the user presses their button.
class SdlDesktop {
 public:
  SdlDesktop (Siblings &Env, const DesktopOptions &Options)
      : Env_ (Env), Options_ (Options), Scale_ (std::max (1, Options.Scale)), Input_ (Env) {}
  ~SdlDesktop () { Close (); }

  bool Open () {
    GuiDriver &Gui = Env_.gui ();
    Window_ = SDL_CreateWindow (Options_.Title.c_str (), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
                                Gui.Width () * Scale_, Gui.Height () * Scale_, 0);
    Renderer_ = Window_ ? SDL_CreateRenderer (Window_, -1, 0) : nullptr;
    Texture_ = Renderer_ ? SDL_CreateTexture (Renderer_, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING,
                                              Gui.Width (), Gui.Height ())
                         : nullptr;
    if (!Texture_) {
      std::fprintf (stderr, "desktop: %s\n", SDL_GetError ());
      return false;
    }
    SDL_SetTextureBlendMode (Texture_, SDL_BLENDMODE_NONE);
    Env_.windows ().SetMessageBoxAnswerer ([this] (const MessageBoxRecord &) -> UINTN { return RunMessageBox (); });
    SDL_StartTextInput ();
    NextTick_ = SDL_GetTicks () + Options_.TickMilliseconds;
    return true;
  }

  void Close () {
    Env_.windows ().SetMessageBoxAnswerer (nullptr);
    if (Texture_) SDL_StopTextInput ();
    if (Texture_) SDL_DestroyTexture (Texture_);
    if (Renderer_) SDL_DestroyRenderer (Renderer_);
    if (Window_) SDL_DestroyWindow (Window_);
    Texture_ = nullptr, Renderer_ = nullptr, Window_ = nullptr;
  }

  void Run () {
    while (!Quit_) {
      Step ();
      if (Options_.QuitWhenNoWindows && Env_.windows ().TopLevelWindows ().empty ()) Quit_ = true;
    }
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
    SDL_Event E;
    Uint32 Now = SDL_GetTicks ();
    int Wait = NextTick_ > Now ? static_cast<int> (NextTick_ - Now) : 0;
    if (SDL_WaitEventTimeout (&E, std::min (Wait, 50))) {
      do Handle (E);
      while (!Quit_ && SDL_PollEvent (&E));
    }
    Now = SDL_GetTicks ();
    if (static_cast<Sint32> (Now - NextTick_) >= 0) {
      NextTick_ = Now + Options_.TickMilliseconds;
      if (Wb.RunTimerTick () > 0) Dirty_ = true;
      if (Wb.PumpMessages () > 0) Dirty_ = true;
    }
    // An unattended run (MaxFrames) presents on every step, so that it ends
    // even when nothing changes (for example while a message box waits).
    if ((Dirty_ || Options_.MaxFrames) && !Quit_) Present ();
  }

  void Present () {
    GuiDriver &Gui = Env_.gui ();
    RenderDesktop (Env_);
    SDL_UpdateTexture (Texture_, nullptr, Gui.Framebuffer (), Gui.Width () * 4);
    SDL_RenderClear (Renderer_);
    SDL_RenderCopy (Renderer_, Texture_, nullptr, nullptr);
    SDL_RenderPresent (Renderer_);
    Dirty_ = false;
    if (Options_.MaxFrames && ++Frames_ >= Options_.MaxFrames) Quit_ = true;
  }

  void Handle (const SDL_Event &E) {
    const int Scale = Scale_;
    switch (E.type) {
      case SDL_QUIT:
        Quit_ = true;
        return;
      case SDL_MOUSEBUTTONDOWN:
        if (E.button.button == SDL_BUTTON_LEFT || E.button.button == SDL_BUTTON_RIGHT) {
          Uint16 Mod = SDL_GetModState ();
          Input_.MouseDown (E.button.x / Scale, E.button.y / Scale,
                            E.button.button == SDL_BUTTON_LEFT ? MouseButton::Left : MouseButton::Right,
                            E.button.clicks, Mod & KMOD_CTRL, Mod & KMOD_SHIFT);
        }
        break;
      case SDL_MOUSEBUTTONUP:
        Input_.MouseUp (E.button.x / Scale, E.button.y / Scale);
        break;
      case SDL_MOUSEMOTION:
        if (!Input_.MouseMove (E.motion.x / Scale, E.motion.y / Scale)) return;
        break;
      case SDL_MOUSEWHEEL: {
        int Mx = 0, My = 0;
        SDL_GetMouseState (&Mx, &My);
        Input_.Wheel (Mx / Scale, My / Scale, E.wheel.y);
        break;
      }
      case SDL_TEXTINPUT:
        // Characters typed (ASCII only: the driver's texts are 8-bit).
        for (const char *P = E.text.text; *P; P++) {
          if (static_cast<unsigned char> (*P) < 0x80) Input_.Key (static_cast<CHAR16> (*P), 0, ShiftState (SDL_GetModState ()));
        }
        break;
      case SDL_KEYDOWN: {
        SDL_Keycode K = E.key.keysym.sym;
        UINT32 Shift = ShiftState (E.key.keysym.mod);
        if (UINT16 Scan = ScanOf (K)) {
          Input_.Key (0, Scan, Shift);
        } else if (K == SDLK_RETURN || K == SDLK_KP_ENTER) {
          Input_.Key (0x0D, 0, Shift);
        } else if (K == SDLK_BACKSPACE) {
          Input_.Key (0x08, 0, Shift);
        } else if (K == SDLK_TAB) {
          Input_.Key (0x09, 0, Shift);
        } else if ((E.key.keysym.mod & (KMOD_ALT | KMOD_CTRL)) && K >= 0x20 && K < 0x7F) {
          // With Alt or Ctrl no text event comes: send the letter here.
          Input_.Key (static_cast<CHAR16> (K), 0, Shift);
        } else if (K == SDLK_MENU || K == SDLK_APPLICATION) {
          Input_.Key (0, SCAN_CODE_HOTKEY, Shift);
        }
        break;
      }
      default:
        return;
    }
    Dirty_ = true;
  }

  Siblings &Env_;
  const DesktopOptions &Options_;
  const int Scale_;
  DesktopInput Input_;
  SDL_Window *Window_ = nullptr;
  SDL_Renderer *Renderer_ = nullptr;
  SDL_Texture *Texture_ = nullptr;
  Uint32 NextTick_ = 0;
  unsigned Frames_ = 0;
  bool Quit_ = false, Dirty_ = true;
};

}  // namespace

bool RunDesktop (Siblings &Env, const DesktopOptions &Options) {
  if (SDL_Init (SDL_INIT_VIDEO) != 0) {
    std::fprintf (stderr, "desktop: %s\n", SDL_GetError ());
    return false;
  }
  // Without a screen SDL falls back to drivers that show nothing; an
  // unattended run (MaxFrames) may use them, a person's session may not.
  const char *Driver = SDL_GetCurrentVideoDriver ();
  if (Options.MaxFrames == 0 && Driver != nullptr &&
      (std::strcmp (Driver, "offscreen") == 0 || std::strcmp (Driver, "dummy") == 0)) {
    SDL_Quit ();
    return false;
  }
  {
    SdlDesktop Desktop (Env, Options);
    if (!Desktop.Open ()) {
      Desktop.Close ();
      SDL_Quit ();
      return false;
    }
    Desktop.Run ();
    if (!Options.ScreenshotAtExit.empty ()) SaveScreenshot (Env.gui (), Options.ScreenshotAtExit);
  }
  SDL_Quit ();
  return true;
}

}  // namespace env
