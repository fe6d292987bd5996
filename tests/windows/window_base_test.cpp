// Window base: windows and links, message delivery, default actions,
// destruction, activation, timers.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "windows/window_test_support.h"

namespace {

std::vector<std::string> gEvents;
WINDOW_BASE_PROTOCOL *gWb = nullptr;

UINT8 EFIAPI OtherHandler (WINDOW_HEADER *, MESSAGE *) { return 0; }

VOID EFIAPI RecordParentDestroyed (WINDOW_HEADER *Window) {
  // The callback runs while the window's child windows and controls still exist.
  gEvents.push_back ("parent:" + std::to_string (gWb->GetControl (Window, 33) != nullptr));
}
VOID EFIAPI RecordChildDestroyed (WINDOW_HEADER *) { gEvents.push_back ("child"); }

TEST_F (WindowTest, CreatedWindowsHaveTheirHeaderLinksAndPoolBlocks) {
  WINDOW_HEADER *Main = NewWindow (984);
  ASSERT_NE (Main, nullptr);
  EXPECT_EQ (LivePool (), Baseline () + 1);
  EXPECT_EQ ((std::vector<int> {Main->X, Main->Y, Main->Width, Main->Height}), (std::vector<int> {10, 20, 300, 200}));
  EXPECT_TRUE (Main->NotifyEnabled == 1 && Main->ObjectSize == 984u && Main->Parent == Wb ()->Desktop);
  const uint8_t *Private = reinterpret_cast<const uint8_t *> (Main) + 272;
  EXPECT_TRUE (std::all_of (Private, Private + 984 - 272, [] (uint8_t B) { return B == 0; }));

  WINDOW_HEADER *First = NewWindow (296, Main);
  WINDOW_HEADER *Second = NewWindow (272, Main, OtherHandler);
  ASSERT_NE (Second, nullptr);
  EXPECT_TRUE (First->Parent == Main && First->NextWindow == Second);
  EXPECT_EQ (Windows ().ChildWindows (Main), (std::vector<WINDOW_HEADER *> {First, Second}));
  EXPECT_EQ (Windows ().TopLevelWindows (), (std::vector<WINDOW_HEADER *> {Main}));
  EXPECT_EQ (Windows ().ActiveWindow (), Main);

  // FindNextWindow walks every window with the handler in creation order.
  WINDOW_HEADER *Later = NewWindow ();
  std::vector<WINDOW_HEADER *> Found {Wb ()->FindNextWindow (nullptr, OtherHandler)};
  for (WINDOW_HEADER *W = nullptr; (W = Wb ()->FindNextWindow (W, RecordingHandler)) != nullptr;) Found.push_back (W);
  EXPECT_EQ (Found, (std::vector<WINDOW_HEADER *> {Second, Main, First, Later}));

  // Positions: child windows are relative to their parent; controls to their window.
  UINT16 X = 0, Y = 0;
  First->X = 2;
  First->Y = 24;
  Wb ()->GetWindowOrigin (&X, &Y, First);
  EXPECT_EQ (X * 1000 + Y, 12 * 1000 + 44);
  CONTROL *Field = Wb ()->CreateTextField (First, 4, 5, 50, 26, 0, TRUE, Ascii ("\\"));
  Wb ()->GetControlOrigin (&X, &Y, Field);
  EXPECT_EQ (X * 1000 + Y, 16 * 1000 + 49);
  auto *Paint = static_cast<env::PaintContext *> (Wb ()->BeginPaint (Main));
  ASSERT_NE (Paint, nullptr);
  EXPECT_EQ ((std::vector<int> {Paint->ClipX, Paint->ClipY, Paint->ClipWidth, Paint->ClipHeight}),
             (std::vector<int> {10, 20, 300, 200}));
  EXPECT_EQ (Wb ()->CreateWindow (272, reinterpret_cast<WINDOW_HEADER *> (&X), RecordingHandler, nullptr, nullptr, 0,
                                  0, 10, 10),
             nullptr)
      << "an unknown parent is refused";
}

TEST_F (WindowTest, SendDeliversAtOncePostWaitsForThePump) {
  WINDOW_HEADER *Window = NewWindow ();
  gReaction = [] (WINDOW_HEADER *, MESSAGE *M) -> UINT8 { return M->Type == 11 ? 1 : 0; };
  MESSAGE Message {};
  Message.Type = 11;
  Message.Code = 1;
  EXPECT_EQ (Wb ()->SendMessage (Window, &Message), 1u);
  ASSERT_EQ (Received (Window, 11).size (), 1u);

  for (UINT16 I = 1; I <= 3; I++) {
    MESSAGE Posted {};
    Posted.Type = 12;
    Posted.Word2 = I;
    EXPECT_TRUE (Wb ()->PostMessage (Window, &Posted));
  }
  EXPECT_TRUE (Received (Window, 12).empty ());
  EXPECT_EQ (Windows ().PumpMessages (), 3u);
  std::vector<int> Order;
  for (const MESSAGE &M : Received (Window, 12)) Order.push_back (M.Word2);
  EXPECT_EQ (Order, (std::vector<int> {1, 2, 3}));

  // A message posted to a window destroyed before the pump is dropped.
  EXPECT_TRUE (Wb ()->PostMessage (Window, &Message));
  Wb ()->DestroyWindow (Window);
  gMessages.clear ();
  EXPECT_EQ (Windows ().PumpMessages () + gMessages.size () + Wb ()->PostMessage (Window, &Message) +
                 Wb ()->SendMessage (Window, &Message),
             0u);
}

TEST_F (WindowTest, AcceptedCloseRunsTheDestroyCallbackBeforeChildrenAndControls) {
  gWb = Wb ();
  gEvents.clear ();
  WINDOW_HEADER *Main = NewWindow (984, nullptr, RecordingHandler, RecordParentDestroyed);
  NewWindow (296, Main, OtherHandler, RecordChildDestroyed);
  Wb ()->CreateButton (Main, 33, Ascii ("Open"), 10, 10, 60, 26, 0);
  EXPECT_EQ (LivePool (), Baseline () + 2);

  // Not accepted, or accepted but not the close code: nothing happens.
  EXPECT_EQ (Windows ().SendSysCommand (Main, 4), 0u);
  gReaction = [] (WINDOW_HEADER *, MESSAGE *M) -> UINT8 { return M->Type == MSG_SYSCOMMAND ? 1 : 0; };
  EXPECT_EQ (Windows ().SendSysCommand (Main, 5), 1u);
  EXPECT_TRUE (Windows ().IsWindow (Main) && gEvents.empty ());

  EXPECT_EQ (Windows ().SendSysCommand (Main, 4), 1u);
  EXPECT_EQ (gEvents, (std::vector<std::string> {"parent:1", "child"}));
  EXPECT_TRUE (!Windows ().IsWindow (Main) && Windows ().TopLevelWindows ().empty () && Windows ().ActiveWindow () == nullptr);
  EXPECT_EQ (LivePool (), Baseline ());
}

TEST_F (WindowTest, AWindowMayDestroyItselfInsideItsHandler) {
  gWb = Wb ();
  WINDOW_HEADER *Window = NewWindow (600);
  WINDOW_HEADER *Other = NewWindow ();
  static UINT16 WidthAfter;
  gReaction = [] (WINDOW_HEADER *W, MESSAGE *M) -> UINT8 {
    if (M->Type != 30) return 0;
    MESSAGE Later {};
    Later.Type = 31;
    gWb->PostMessage (W, &Later);
    gWb->DestroyWindow (W);
    gWb->DestroyWindow (W);   // twice is harmless
    WidthAfter = W->Width;    // still readable until the dispatch returns
    return 1;
  };
  MESSAGE Message {};
  Message.Type = 30;
  Wb ()->SendMessage (Window, &Message);
  EXPECT_TRUE (WidthAfter == 300 && !Windows ().IsWindow (Window) && LivePool () == Baseline () + 1);
  EXPECT_EQ (Windows ().PumpMessages () + Received (Window, 31).size (), 0u);

  // The same from a posted message: freed once the pump's dispatch ends.
  Wb ()->PostMessage (Other, &Message);
  Windows ().PumpMessages ();
  EXPECT_FALSE (Windows ().IsWindow (Other));
  EXPECT_EQ (LivePool (), Baseline ());
}

TEST_F (WindowTest, ActivationSendsKillFocusActivateSetFocusAndRaisesWhenAccepted) {
  WINDOW_HEADER *A = NewWindow ();
  WINDOW_HEADER *B = NewWindow ();
  EXPECT_EQ (Windows ().ActiveWindow (), B);
  gMessages.clear ();
  Wb ()->ActivateWindow (A);
  std::vector<std::pair<WINDOW_HEADER *, UINT8>> Seen;
  for (auto &R : gMessages) Seen.push_back ({R.Window, R.Message.Type});
  EXPECT_EQ (Seen, (std::vector<std::pair<WINDOW_HEADER *, UINT8>> {{B, 8}, {A, 6}, {A, 7}}));
  EXPECT_EQ (Windows ().ActiveWindow (), A);
  EXPECT_EQ (Windows ().TopLevelWindows ().back (), B) << "MSG_ACTIVATE not accepted: no raise";

  gReaction = [] (WINDOW_HEADER *, MESSAGE *M) -> UINT8 { return M->Type == MSG_ACTIVATE ? 1 : 0; };
  Wb ()->ActivateWindow (B);
  Wb ()->ActivateWindow (A);
  EXPECT_EQ (Windows ().TopLevelWindows (), (std::vector<WINDOW_HEADER *> {B, A}));

  // Destroying the active window leaves the top one active.
  Wb ()->DestroyWindow (A);
  EXPECT_EQ (Windows ().ActiveWindow (), B);
}

// ------------------------------------------------------------------ timers

std::vector<int> gTicks;
WINDOW_BASE_PROTOCOL *gTimerWb = nullptr;
VOID EFIAPI TickKillsNext (VOID *Context);
VOID EFIAPI Tick (VOID *Context) { gTicks.push_back (static_cast<int> (reinterpret_cast<intptr_t> (Context))); }
VOID EFIAPI TickKillsNext (VOID *Context) {
  gTicks.push_back (100);
  gTimerWb->KillTimer (Tick, reinterpret_cast<VOID *> (2));
  gTimerWb->KillTimer (TickKillsNext, Context);   // and itself
  gTimerWb->SetTimer (Tick, reinterpret_cast<VOID *> (9));   // starts with the next tick
}

TEST_F (WindowTest, TimersRunOncePerTickAndSurviveKillsDuringTheTick) {
  gTimerWb = Wb ();
  gTicks.clear ();
  // The same callback and context twice make one timer.
  EXPECT_TRUE (Wb ()->SetTimer (Tick, reinterpret_cast<VOID *> (1)) && Wb ()->SetTimer (Tick, reinterpret_cast<VOID *> (1)) &&
               Wb ()->SetTimer (TickKillsNext, nullptr) && Wb ()->SetTimer (Tick, reinterpret_cast<VOID *> (2)));
  EXPECT_FALSE (Wb ()->SetTimer (nullptr, nullptr));
  EXPECT_EQ (Windows ().TimerCount (), 3u);

  EXPECT_EQ (Windows ().RunTimerTick (), 2u);
  EXPECT_EQ (gTicks, (std::vector<int> {1, 100}));
  EXPECT_EQ (Windows ().TimerCount (), 2u);
  gTicks.clear ();
  EXPECT_EQ (Windows ().RunTimerTick (), 2u);
  EXPECT_EQ (gTicks, (std::vector<int> {1, 9}));
  Wb ()->KillTimer (Tick, reinterpret_cast<VOID *> (1));
  Wb ()->KillTimer (Tick, reinterpret_cast<VOID *> (9));
  EXPECT_EQ (Windows ().TimerCount () + Windows ().RunTimerTick (), 0u);
}

}  // namespace
