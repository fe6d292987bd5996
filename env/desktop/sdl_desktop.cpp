#include "env/desktop/sdl_desktop.h"

#include <SDL.h>

#include <cstdio>
#include <cstring>

#include "env/desktop/desktop_input.h"
#include "env/environment.h"
#include "env/gui/gbk.h"
#include "env/gui/gui_driver.h"
#include "env/render/renderer.h"
#include "env/render/screenshot.h"
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

}  // namespace

bool RunDesktop (Environment &Env, const DesktopOptions &Options) {
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
  GuiDriver &Gui = Env.gui ();
  WindowBase &Wb = Env.windows ();
  int Scale = std::max (1, Options.Scale);
  SDL_Window *Window = SDL_CreateWindow (Options.Title.c_str (), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
                                         Gui.Width () * Scale, Gui.Height () * Scale, 0);
  SDL_Renderer *Renderer = Window ? SDL_CreateRenderer (Window, -1, 0) : nullptr;
  SDL_Texture *Texture = Renderer ? SDL_CreateTexture (Renderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING,
                                                       Gui.Width (), Gui.Height ())
                                  : nullptr;
  if (!Texture) {
    std::fprintf (stderr, "desktop: %s\n", SDL_GetError ());
    if (Renderer) SDL_DestroyRenderer (Renderer);
    if (Window) SDL_DestroyWindow (Window);
    SDL_Quit ();
    return false;
  }
  SDL_SetTextureBlendMode (Texture, SDL_BLENDMODE_NONE);
  Wb.SetMessageBoxAnswerer ([Window] (const MessageBoxRecord &Box) -> UINTN {
    SDL_ShowSimpleMessageBox (SDL_MESSAGEBOX_INFORMATION, GbkToUtf8 (Box.Caption).c_str (),
                              GbkToUtf8 (Box.Text).c_str (), Window);
    return 1;
  });
  SDL_StartTextInput ();

  DesktopInput Input (Env);
  Uint32 NextTick = SDL_GetTicks () + Options.TickMilliseconds;
  unsigned Frames = 0;
  bool Running = true, Dirty = true;
  while (Running) {
    SDL_Event E;
    Uint32 Now = SDL_GetTicks ();
    int Wait = NextTick > Now ? static_cast<int> (NextTick - Now) : 0;
    if (SDL_WaitEventTimeout (&E, std::min (Wait, 50))) {
      do {
        switch (E.type) {
          case SDL_QUIT:
            Running = false;
            break;
          case SDL_MOUSEBUTTONDOWN:
            if (E.button.button == SDL_BUTTON_LEFT || E.button.button == SDL_BUTTON_RIGHT) {
              Uint16 Mod = SDL_GetModState ();
              Input.MouseDown (E.button.x / Scale, E.button.y / Scale,
                               E.button.button == SDL_BUTTON_LEFT ? MouseButton::Left : MouseButton::Right,
                               E.button.clicks, Mod & KMOD_CTRL, Mod & KMOD_SHIFT);
            }
            break;
          case SDL_MOUSEBUTTONUP:
            Input.MouseUp (E.button.x / Scale, E.button.y / Scale);
            break;
          case SDL_MOUSEMOTION:
            Input.MouseMove (E.motion.x / Scale, E.motion.y / Scale);
            if (!(E.motion.state & SDL_BUTTON_LMASK)) continue;
            break;
          case SDL_MOUSEWHEEL: {
            int Mx = 0, My = 0;
            SDL_GetMouseState (&Mx, &My);
            Input.Wheel (Mx / Scale, My / Scale, E.wheel.y);
            break;
          }
          case SDL_TEXTINPUT: {
            // Characters typed (ASCII only: the driver's texts are 8-bit).
            for (const char *P = E.text.text; *P; P++) {
              if (static_cast<unsigned char> (*P) < 0x80) Input.Key (static_cast<CHAR16> (*P), 0, ShiftState (SDL_GetModState ()));
            }
            break;
          }
          case SDL_KEYDOWN: {
            SDL_Keycode K = E.key.keysym.sym;
            UINT32 Shift = ShiftState (E.key.keysym.mod);
            if (UINT16 Scan = ScanOf (K)) {
              Input.Key (0, Scan, Shift);
            } else if (K == SDLK_RETURN || K == SDLK_KP_ENTER) {
              Input.Key (0x0D, 0, Shift);
            } else if (K == SDLK_BACKSPACE) {
              Input.Key (0x08, 0, Shift);
            } else if (K == SDLK_TAB) {
              Input.Key (0x09, 0, Shift);
            } else if ((E.key.keysym.mod & (KMOD_ALT | KMOD_CTRL)) && K >= 0x20 && K < 0x7F) {
              // With Alt or Ctrl no text event comes: send the letter here.
              Input.Key (static_cast<CHAR16> (K), 0, Shift);
            } else if (K == SDLK_MENU || K == SDLK_APPLICATION) {
              Input.Key (0, SCAN_CODE_HOTKEY, Shift);
            }
            break;
          }
          default:
            continue;
        }
        Dirty = true;
      } while (SDL_PollEvent (&E));
    }
    Now = SDL_GetTicks ();
    if (static_cast<Sint32> (Now - NextTick) >= 0) {
      NextTick = Now + Options.TickMilliseconds;
      if (Wb.RunTimerTick () > 0) Dirty = true;
      if (Wb.PumpMessages () > 0) Dirty = true;
    }
    if (Options.QuitWhenNoWindows && Wb.TopLevelWindows ().empty ()) Running = false;
    if (Dirty && Running) {
      RenderDesktop (Env);
      SDL_UpdateTexture (Texture, nullptr, Gui.Framebuffer (), Gui.Width () * 4);
      SDL_RenderClear (Renderer);
      SDL_RenderCopy (Renderer, Texture, nullptr, nullptr);
      SDL_RenderPresent (Renderer);
      Dirty = false;
      if (Options.MaxFrames && ++Frames >= Options.MaxFrames) Running = false;
    }
  }
  if (!Options.ScreenshotAtExit.empty ()) SaveScreenshot (Gui, Options.ScreenshotAtExit);
  Wb.SetMessageBoxAnswerer (nullptr);
  SDL_StopTextInput ();
  SDL_DestroyTexture (Texture);
  SDL_DestroyRenderer (Renderer);
  SDL_DestroyWindow (Window);
  SDL_Quit ();
  return true;
}

}  // namespace env
