#include "env/host/sdl_desktop.h"

#include <SDL.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "env/desktop/desktop_loop.h"
#include "env/siblings.h"
#include "env/gui/gui_driver.h"
#include "env/host/screenshot.h"
#include "env/windows/window_base.h"

#include <vector>

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
      if (Key >= SDLK_F1 && Key <= SDLK_F12) return static_cast<UINT16> (0x0B + (Key - SDLK_F1));
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

// One SDL window showing the framebuffer, as a backend of the desktop loop.
class SdlBackend : public DesktopBackend {
 public:
  SdlBackend (GuiDriver &Gui, const DesktopOptions &Options)
      : Gui_ (Gui), Options_ (Options), Scale_ (std::max (1, Options.Scale)) {}
  ~SdlBackend () override { Close (); }

  bool Open () {
    Window_ = SDL_CreateWindow (Options_.Title.c_str (), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
                                Gui_.Width () * Scale_, Gui_.Height () * Scale_, 0);
    Renderer_ = Window_ ? SDL_CreateRenderer (Window_, -1, 0) : nullptr;
    Texture_ = Renderer_ ? SDL_CreateTexture (Renderer_, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING,
                                              Gui_.Width (), Gui_.Height ())
                         : nullptr;
    if (!Texture_) {
      std::fprintf (stderr, "desktop: %s\n", SDL_GetError ());
      return false;
    }
    SDL_SetTextureBlendMode (Texture_, SDL_BLENDMODE_NONE);
    SDL_StartTextInput ();
    return true;
  }

  void Close () {
    if (Texture_) SDL_StopTextInput ();
    if (Texture_) SDL_DestroyTexture (Texture_);
    if (Renderer_) SDL_DestroyRenderer (Renderer_);
    if (Window_) SDL_DestroyWindow (Window_);
    Texture_ = nullptr, Renderer_ = nullptr, Window_ = nullptr;
  }

  bool Wait (unsigned TimeoutMs, InputEvent &Event) override {
    while (Pending_.empty ()) {
      SDL_Event E;
      if (!SDL_WaitEventTimeout (&E, static_cast<int> (TimeoutMs))) return false;
      Translate (E);
      TimeoutMs = 0;
    }
    Event = Pending_.front ();
    Pending_.erase (Pending_.begin ());
    return true;
  }

  uint64_t NowMs () override { return SDL_GetTicks64 (); }

  void Flush (int X, int Y, int Width, int Height, const uint32_t *Pixels, int Stride) override {
    SDL_Rect Area {X, Y, Width, Height};
    SDL_UpdateTexture (Texture_, &Area, Pixels, Stride * 4);
  }

  void FrameDone () override {
    SDL_RenderClear (Renderer_);
    SDL_RenderCopy (Renderer_, Texture_, nullptr, nullptr);
    SDL_RenderPresent (Renderer_);
  }

 private:
  void Push (InputEvent E) { Pending_.push_back (E); }

  void Key (CHAR16 Ch, UINT16 Scan, UINT32 Shift) {
    InputEvent E;
    E.Type = InputEvent::Kind::Key;
    E.Char = Ch, E.Scan = Scan, E.Shift = Shift;
    Push (E);
  }

  void Translate (const SDL_Event &E) {
    const int Scale = Scale_;
    InputEvent Out;
    switch (E.type) {
      case SDL_QUIT:
        Out.Type = InputEvent::Kind::Quit;
        Push (Out);
        break;
      case SDL_MOUSEBUTTONDOWN:
        if (E.button.button == SDL_BUTTON_LEFT || E.button.button == SDL_BUTTON_RIGHT) {
          Out.Type = InputEvent::Kind::PointerDown;
          Out.X = E.button.x / Scale, Out.Y = E.button.y / Scale;
          Out.Button = E.button.button == SDL_BUTTON_LEFT ? MouseButton::Left : MouseButton::Right;
          Out.Clicks = E.button.clicks;
          Out.Shift = ShiftState (SDL_GetModState ());
          Push (Out);
        }
        break;
      case SDL_MOUSEBUTTONUP:
        Out.Type = InputEvent::Kind::PointerUp;
        Out.X = E.button.x / Scale, Out.Y = E.button.y / Scale;
        Push (Out);
        break;
      case SDL_MOUSEMOTION:
        Out.Type = InputEvent::Kind::PointerMove;
        Out.X = E.motion.x / Scale, Out.Y = E.motion.y / Scale;
        Push (Out);
        break;
      case SDL_MOUSEWHEEL: {
        int Mx = 0, My = 0;
        SDL_GetMouseState (&Mx, &My);
        Out.Type = InputEvent::Kind::Wheel;
        Out.X = Mx / Scale, Out.Y = My / Scale, Out.Lines = E.wheel.y;
        Push (Out);
        break;
      }
      case SDL_TEXTINPUT:
        // Characters typed (ASCII only: the driver's texts are 8-bit).
        for (const char *P = E.text.text; *P; P++)
          if (static_cast<unsigned char> (*P) < 0x80) Key (static_cast<CHAR16> (*P), 0, ShiftState (SDL_GetModState ()));
        break;
      case SDL_KEYDOWN: {
        SDL_Keycode K = E.key.keysym.sym;
        UINT32 Shift = ShiftState (E.key.keysym.mod);
        if (UINT16 Scan = ScanOf (K)) {
          Key (0, Scan, Shift);
        } else if (K == SDLK_RETURN || K == SDLK_KP_ENTER) {
          Key (0x0D, 0, Shift);
        } else if (K == SDLK_BACKSPACE) {
          Key (0x08, 0, Shift);
        } else if (K == SDLK_TAB) {
          Key (0x09, 0, Shift);
        } else if ((E.key.keysym.mod & (KMOD_ALT | KMOD_CTRL)) && K >= 0x20 && K < 0x7F) {
          // With Alt or Ctrl no text event comes: send the letter here.
          Key (static_cast<CHAR16> (K), 0, Shift);
        } else if (K == SDLK_MENU || K == SDLK_APPLICATION) {
          Key (0, kScanContextMenu, Shift);
        }
        break;
      }
      case SDL_WINDOWEVENT:
        // Shown again or uncovered: everything is shown anew.
        if (E.window.event == SDL_WINDOWEVENT_EXPOSED) FrameDone ();
        break;
      default:
        break;
    }
  }

  GuiDriver &Gui_;
  const DesktopOptions &Options_;
  const int Scale_;
  SDL_Window *Window_ = nullptr;
  SDL_Renderer *Renderer_ = nullptr;
  SDL_Texture *Texture_ = nullptr;
  std::vector<InputEvent> Pending_;
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
    SdlBackend Backend (Env.gui (), Options);
    if (!Backend.Open ()) {
      Backend.Close ();
      SDL_Quit ();
      return false;
    }
    DesktopLoopOptions Loop;
    Loop.TickMilliseconds = Options.TickMilliseconds;
    Loop.QuitWhenNoWindows = Options.QuitWhenNoWindows;
    Loop.MaxFrames = Options.MaxFrames;
    Loop.OpenVolume = Options.OpenVolume;
    RunDesktopLoop (Env, Backend, Loop);
    if (!Options.ScreenshotAtExit.empty ()) SaveScreenshot (Env.gui (), Options.ScreenshotAtExit);
  }
  SDL_Quit ();
  return true;
}

}  // namespace env
