#include "env/desktop/firmware_input.h"

#include <algorithm>
#include <cstdlib>

namespace env {

namespace {

constexpr UINT32 kControl = KEY_STATE_LEFT_CONTROL | KEY_STATE_RIGHT_CONTROL;
constexpr int kPixelsPerCount = 3;         // relative pointers: counts (scaled by their resolution) to pixels
constexpr int kDoubleClickDistance = 4;

}  // namespace

bool KeyFromFirmware (const EFI_KEY_DATA &Key, InputEvent &Out) {
  Out = InputEvent {};
  Out.Type = InputEvent::Kind::Key;
  UINT32 State = Key.KeyState.KeyShiftState;
  bool Valid = (State & EFI_SHIFT_STATE_VALID) != 0;
  Out.Shift = Valid ? (State & (KEY_STATE_VALID | 0x3F)) : 0;
  Out.Char = Key.Key.UnicodeChar;
  Out.Scan = Key.Key.ScanCode;
  if (Out.Char >= 1 && Out.Char <= 26) {
    bool Control = Valid ? (State & kControl) != 0 : Out.Char != 0x08 && Out.Char != 0x09 && Out.Char != 0x0D;
    if (Control) {
      Out.Char = static_cast<CHAR16> ('a' + Out.Char - 1);
      if (!Valid) Out.Shift = KEY_STATE_VALID | KEY_STATE_LEFT_CONTROL;
    }
  }
  // The Menu key alone opens a context menu.
  if (Out.Char == 0 && Out.Scan == 0 && Valid && (State & EFI_MENU_KEY_PRESSED) != 0) Out.Scan = kScanContextMenu;
  return Out.Char != 0 || Out.Scan != 0;
}

PointerTracker::PointerTracker (int ScreenWidth, int ScreenHeight)
    : Width_ (std::max (ScreenWidth, 1)), Height_ (std::max (ScreenHeight, 1)), X_ (Width_ / 2), Y_ (Height_ / 2) {}

void PointerTracker::MoveTo (int X, int Y, std::vector<InputEvent> &Out) {
  X = std::clamp (X, 0, Width_ - 1), Y = std::clamp (Y, 0, Height_ - 1);
  if (X == X_ && Y == Y_) return;
  X_ = X, Y_ = Y;
  InputEvent E;
  E.Type = InputEvent::Kind::PointerMove;
  E.X = X, E.Y = Y;
  Out.push_back (E);
}

void PointerTracker::Buttons (bool Left, bool Right, uint64_t NowMs, std::vector<InputEvent> &Out) {
  auto Change = [&] (bool Down, MouseButton Which) {
    InputEvent E;
    E.X = X_, E.Y = Y_, E.Button = Which;
    E.Type = Down ? InputEvent::Kind::PointerDown : InputEvent::Kind::PointerUp;
    if (Down && Which == MouseButton::Left) {
      bool Near = std::abs (X_ - LastClickX_) <= kDoubleClickDistance && std::abs (Y_ - LastClickY_) <= kDoubleClickDistance;
      E.Clicks = Near && NowMs - LastClickMs_ <= kDoubleClickMs ? 2 : 1;
      // A third click starts a new pair.
      LastClickMs_ = E.Clicks == 2 ? 0 : NowMs;
      LastClickX_ = X_, LastClickY_ = Y_;
    }
    Out.push_back (E);
  };
  if (Left != Left_) Change (Left, MouseButton::Left);
  if (Right != Right_) Change (Right, MouseButton::Right);
  Left_ = Left, Right_ = Right;
}

void PointerTracker::Relative (const EFI_SIMPLE_POINTER_STATE &State, const EFI_SIMPLE_POINTER_MODE &Mode,
                               uint64_t NowMs, std::vector<InputEvent> &Out) {
  auto Scale = [] (INT32 Counts, UINT64 Resolution) {
    int64_t PerUnit = Resolution == 0 ? 1 : static_cast<int64_t> (std::min<UINT64> (Resolution, 1u << 20));
    return static_cast<int> (std::clamp<int64_t> (int64_t (Counts) * kPixelsPerCount / PerUnit, -100000, 100000));
  };
  MoveTo (X_ + Scale (State.RelativeMovementX, Mode.ResolutionX), Y_ + Scale (State.RelativeMovementY, Mode.ResolutionY),
          Out);
  if (State.RelativeMovementZ != 0) {
    InputEvent E;
    E.Type = InputEvent::Kind::Wheel;
    E.X = X_, E.Y = Y_;
    E.Lines = State.RelativeMovementZ < 0 ? 1 : -1;
    Out.push_back (E);
  }
  Buttons (State.LeftButton != 0, State.RightButton != 0, NowMs, Out);
}

void PointerTracker::Absolute (const EFI_ABSOLUTE_POINTER_STATE &State, const EFI_ABSOLUTE_POINTER_MODE &Mode,
                               uint64_t NowMs, std::vector<InputEvent> &Out) {
  auto Map = [] (UINT64 Value, UINT64 Min, UINT64 Max, int Size) {
    if (Max <= Min) return 0;
    UINT64 Clamped = std::clamp (Value, Min, Max);
    return static_cast<int> ((Clamped - Min) * static_cast<UINT64> (Size) / (Max - Min + 1));
  };
  MoveTo (Map (State.CurrentX, Mode.AbsoluteMinX, Mode.AbsoluteMaxX, Width_),
          Map (State.CurrentY, Mode.AbsoluteMinY, Mode.AbsoluteMaxY, Height_), Out);
  Buttons ((State.ActiveButtons & EFI_ABSP_TouchActive) != 0, (State.ActiveButtons & EFI_ABS_AltActive) != 0, NowMs,
           Out);
}

}  // namespace env
