// What firmware hands the desktop, fed on the host: key records of Simple
// Text Input Ex, states of Simple and Absolute Pointers, and the desktop
// loop flushing only the rectangles that changed.
#include <gtest/gtest.h>

#include <deque>

#include "env/controls/control_driver.h"
#include "env/desktop/desktop_loop.h"
#include "env/desktop/firmware_input.h"
#include "env/gui/gui_driver.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"

namespace {

EFI_KEY_DATA KeyRecord (CHAR16 Char, UINT16 Scan, UINT32 ShiftState) {
  EFI_KEY_DATA Key {};
  Key.Key.UnicodeChar = Char;
  Key.Key.ScanCode = Scan;
  Key.KeyState.KeyShiftState = ShiftState;
  return Key;
}

TEST (FirmwareInput, KeyRecordsBecomeTheDesktopsKeys) {
  constexpr UINT32 Valid = EFI_SHIFT_STATE_VALID;
  struct Case {
    EFI_KEY_DATA Record;
    bool Taken;
    CHAR16 Char;
    UINT16 Scan;
    UINT32 Shift;
  } Cases[] = {
      {KeyRecord ('a', 0, 0), true, 'a', 0, 0},
      {KeyRecord (0, 0x02, Valid), true, 0, 0x02, Valid},
      // Ctrl+C arrives as the control character 3, with or without a shift state.
      {KeyRecord (3, 0, Valid | EFI_LEFT_CONTROL_PRESSED), true, 'c', 0, Valid | EFI_LEFT_CONTROL_PRESSED},
      {KeyRecord (3, 0, 0), true, 'c', 0, KEY_STATE_VALID | KEY_STATE_LEFT_CONTROL},
      // Backspace, Tab and Enter stay themselves unless Control is held.
      {KeyRecord (8, 0, 0), true, 8, 0, 0},
      {KeyRecord (9, 0, Valid | EFI_LEFT_SHIFT_PRESSED), true, 9, 0, Valid | EFI_LEFT_SHIFT_PRESSED},
      {KeyRecord (13, 0, 0), true, 13, 0, 0},
      {KeyRecord ('f', 0, Valid | EFI_LEFT_ALT_PRESSED), true, 'f', 0, Valid | EFI_LEFT_ALT_PRESSED},
      // The Menu key alone opens a context menu; a lone Shift is no key.
      {KeyRecord (0, 0, Valid | EFI_MENU_KEY_PRESSED), true, 0, env::kScanContextMenu, Valid},
      {KeyRecord (0, 0, Valid | EFI_LEFT_SHIFT_PRESSED), false, 0, 0, Valid | EFI_LEFT_SHIFT_PRESSED},
  };
  for (const Case &C : Cases) {
    env::InputEvent E;
    SCOPED_TRACE (testing::Message () << C.Record.Key.UnicodeChar << "/" << C.Record.Key.ScanCode);
    EXPECT_EQ (env::KeyFromFirmware (C.Record, E), C.Taken);
    if (C.Taken) EXPECT_EQ ((std::vector<UINT32> {E.Char, E.Scan, E.Shift}), (std::vector<UINT32> {C.Char, C.Scan, C.Shift}));
  }
}

TEST (FirmwareInput, PointerStatesMoveClickAndDoubleClick) {
  env::PointerTracker Pointer (800, 600);
  std::vector<env::InputEvent> Events;
  EFI_SIMPLE_POINTER_MODE Mode {};
  Mode.ResolutionX = Mode.ResolutionY = 3;
  auto Relative = [&] (INT32 Dx, INT32 Dy, bool Left, bool Right, uint64_t Ms, INT32 Wheel = 0) {
    EFI_SIMPLE_POINTER_STATE State {Dx, Dy, Wheel, Left, Right};
    Pointer.Relative (State, Mode, Ms, Events);
  };
  Relative (30, -300, false, false, 0);   // 30 counts at 3 a pixel: 30 px right; far up: stops at the top
  EXPECT_EQ (Pointer.X () * 1000 + Pointer.Y (), 430 * 1000 + 0);
  Relative (0, 60, true, false, 100);
  Relative (0, 0, false, false, 150);
  Relative (0, 0, true, false, 300);      // within 500 ms and 4 px: a double click
  Relative (0, 0, false, false, 350);
  Relative (0, 0, true, false, 2000);     // later: a single click again
  Relative (0, 0, false, true, 2100, -1); // right button, wheel up
  using Kind = env::InputEvent::Kind;
  std::vector<std::pair<Kind, int>> Seen;
  for (const env::InputEvent &E : Events) Seen.push_back ({E.Type, E.Type == Kind::PointerDown ? E.Clicks : E.Lines});
  const std::vector<std::pair<Kind, int>> Expected = {
      {Kind::PointerMove, 0}, {Kind::PointerMove, 0}, {Kind::PointerDown, 1}, {Kind::PointerUp, 0},
      {Kind::PointerDown, 2}, {Kind::PointerUp, 0},   {Kind::PointerDown, 1}, {Kind::Wheel, 1},
      {Kind::PointerUp, 0},   {Kind::PointerDown, 1}};
  EXPECT_EQ (Seen, Expected);
  EXPECT_EQ (Events.back ().Button, env::MouseButton::Right);

  // An absolute pointer (a touch screen or tablet) maps its range onto the screen.
  Events.clear ();
  EFI_ABSOLUTE_POINTER_MODE Abs {};
  Abs.AbsoluteMaxX = Abs.AbsoluteMaxY = 0xFFFF;
  EFI_ABSOLUTE_POINTER_STATE At {0x8000, 0xFFFF, 0, EFI_ABSP_TouchActive};
  Pointer.Absolute (At, Abs, 5000, Events);
  EXPECT_EQ (Pointer.X () * 1000 + Pointer.Y (), 400 * 1000 + 599);
  // The move, the touch pressed, the right button the relative pointer held released.
  ASSERT_EQ (Events.size (), 3u);
  EXPECT_TRUE (Events[1].Type == Kind::PointerDown && Events[1].Button == env::MouseButton::Left);
  EXPECT_TRUE (Events[2].Type == Kind::PointerUp && Events[2].Button == env::MouseButton::Right);
}

// A backend that replays one event a frame and counts what it is asked to show.
class FakeScreen : public env::DesktopBackend {
 public:
  std::deque<env::InputEvent> Input;
  uint64_t Clock = 0;
  bool GaveOne = false;
  std::vector<env::DirtyRect> Flushed;
  bool Wait (unsigned TimeoutMs, env::InputEvent &Event) override {
    Clock += TimeoutMs + 1;
    GaveOne = !GaveOne;
    if (Input.empty () || !GaveOne) return false;
    Event = Input.front ();
    Input.pop_front ();
    return true;
  }
  uint64_t NowMs () override { return Clock; }
  void Flush (int X, int Y, int W, int H, const uint32_t *, int) override { Flushed.push_back ({X, Y, W, H}); }
};

class DesktopLoopTest : public DriverTest {};

TEST_F (DesktopLoopTest, AKeyFlushesOnlyWhatItChanged) {
  int V = MakeVolume ("files");
  for (const char *Name : {"a.txt", "b.txt", "c.txt"}) WriteFile (V, Name, "x");
  ASSERT_NE (Surveyor ()->OpenVolumeWindow (0, 0, static_cast<UINT8> (V), nullptr, nullptr), nullptr);
  FakeScreen Screen;
  env::InputEvent Down;
  Down.Type = env::InputEvent::Kind::Key;
  Down.Scan = SCAN_CODE_DOWN;
  Screen.Input = {Down, Down};
  env::DesktopLoopOptions Options;
  Options.MaxFrames = 3;
  env::DesktopLoopStats Stats = env::RunDesktopLoop (Env (), Screen, Options);
  ASSERT_EQ (Stats.Frames, 3u);
  // The first frame is the whole screen; after a key, a few rows of one list.
  ASSERT_GE (Screen.Flushed.size (), 3u);
  EXPECT_EQ (Screen.Flushed[0].Width * Screen.Flushed[0].Height, 1024 * 768);
  uint64_t Later = 0;
  for (size_t I = 1; I < Screen.Flushed.size (); I++) Later += uint64_t (Screen.Flushed[I].Width) * Screen.Flushed[I].Height;
  EXPECT_GT (Later, 0u);
  EXPECT_LT (Later, 1024u * 768 / 20) << "a moved selection repaints a few rows, not the screen";
  Env ().windows ().DestroyAllWindows ();
}

}  // namespace
