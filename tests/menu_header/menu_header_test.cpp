// The menu header: rows and their placement, item packing, enabling, the path
// field, and keyboard navigation between menu titles.

#include <string>
#include <vector>

#include "core/strings.h"
#include "env/files/file_driver.h"
#include "env/windows/window_base.h"
#include "menu_header/menu_header.h"
#include "support/driver_fixture.h"
#include "support/window_views.h"

namespace {

std::vector<MESSAGE> gOwnerMessages;

UINT8 EFIAPI OwnerHandler (WINDOW_HEADER *, MESSAGE *Message) {
  gOwnerMessages.push_back (*Message);
  return 0;
}
VOID EFIAPI OwnerPaint (WINDOW_HEADER *, MESSAGE *, VOID *) {}
VOID EFIAPI OwnerDestroy (WINDOW_HEADER *) {}
VOID EFIAPI CommandA (VOID *, WINDOW_HEADER *) {}
VOID EFIAPI CommandB (VOID *, WINDOW_HEADER *) {}
VOID EFIAPI CommandC (VOID *, WINDOW_HEADER *) {}

// A GUI whose line height is the pushed font's size (16 with none pushed),
// and the horizontal lines painted with it.
UINT8 gPushedSize = 0;
std::vector<UINT16> gRules;
UINTN EFIAPI SizedPushFont (UINT8, UINT8 Size, UINT32) {
  gPushedSize = Size;
  return 1;
}
VOID EFIAPI SizedPopFont (UINTN) { gPushedSize = 0; }
UINT16 EFIAPI SizedLineHeight (VOID) { return gPushedSize != 0 ? gPushedSize : 16; }
VOID EFIAPI RecordRule (PAINT_CONTEXT, UINT16, UINT16 Y1, UINT16, UINT16 Y2, UINT32 Colour) {
  if (Y1 == Y2 && Colour == 0x808080) gRules.push_back (Y1);
}

class MenuHeaderTest : public DriverTest {
 protected:
  void SetUp () override {
    DriverTest::SetUp ();
    gOwnerMessages.clear ();
    Owner = Wb ()->CreateWindow (400, Wb ()->Desktop, OwnerHandler, OwnerPaint, OwnerDestroy, 10, 10, 500, 400);
    ASSERT_NE (Owner, nullptr);
  }
  // Popups outlive their owner in the window base: the test destroys its own.
  void TearDown () override {
    for (WINDOW_HEADER *P : Popups_) Wb ()->DestroyWindow (P);
    DriverTest::TearDown ();
  }
  WINDOW_HEADER *NewPopup () {
    Popups_.push_back (Wb ()->CreatePopupMenu (Owner, 0, 0, 0));
    return Popups_.back ();
  }
  std::vector<WINDOW_HEADER *> Popups_;
  MENU_HEADER *Header (WINDOW_HEADER *H) { return reinterpret_cast<MENU_HEADER *> (H); }
  UINTN SendKey (WINDOW_HEADER *H, CHAR16 Ch, UINT16 Scan, UINT32 Shift, UINT8 Byte1 = 0) {
    MESSAGE Key = KeyMessage (Ch, Scan, Shift, Byte1);
    return Wb ()->SendMessage (H, &Key);
  }
  env::WindowBase &Base () { return Env ().windows (); }
  std::string Res (const char *Key) {
    CHAR8 Buffer[256] = {};
    Env ().files ().Table ()->ReadResourceString (A8 (RESOURCE_FILE_PATH), nullptr, A8 (Key), Buffer);
    return reinterpret_cast<char *> (Buffer);
  }
  WINDOW_HEADER *Owner = nullptr;
};

TEST_F (MenuHeaderTest, RowsGiveHeightAndPathRowPlacement) {
  int Lh = Gui ()->GetLineHeight ();
  WINDOW_HEADER *Full = Surveyor ()->CreateMenuHeader (Owner, TRUE, TRUE);
  ASSERT_NE (Full, nullptr);
  EXPECT_EQ (Full->ObjectSize, 296u);
  EXPECT_EQ (Base ().WindowText (Full), "MENU_HDR");
  EXPECT_EQ (Full->Parent, Owner);
  EXPECT_EQ (RectOf (Full), (Rect {2, Wb ()->CaptionHeight, 495, (Lh + 10) * 3 + 20}));
  EXPECT_TRUE (Full->Flags & 0x80);

  // The framed field follows the "fullPathStr" label on the path row.
  CONTROL *Field = Header (Full)->PathField;
  ASSERT_NE (Field, nullptr);
  int T = Gui ()->GetTextWidth (A8 (Res ("fullPathStr").c_str ()));
  EXPECT_EQ (RectOf (Field), (Rect {T + 10, 2 * Lh + 36, 495 - 2 - (T + 10), Lh + 10}));
  EXPECT_EQ (Base ().WindowText (Field), "\\");

  WINDOW_HEADER *MenuOnly = Surveyor ()->CreateMenuHeader (Owner, FALSE, FALSE);
  WINDOW_HEADER *PathOnly = Surveyor ()->CreateMenuHeader (Owner, TRUE, FALSE);
  // Heights of a menu row alone, of menu and icon rows, of a path row alone, and that row's field.
  EXPECT_EQ ((std::vector<int> {MenuOnly->Height, Surveyor ()->CreateMenuHeader (Owner, FALSE, TRUE)->Height,
                                PathOnly->Height, Header (PathOnly)->PathField->Y}),
             (std::vector<int> {Lh + 18, 2 * Lh + 34, 2 * Lh + 34, 2 * Lh + 36}));
  EXPECT_EQ (Header (MenuOnly)->PathField, nullptr);

  // After the owner grows, the field keeps its left edge and ends 2 pixels
  // before the header's right edge.
  Owner->Width = 700;
  MESSAGE Resize = MessageOf (MSG_RESIZE);
  Wb ()->SendMessage (Full, &Resize);
  EXPECT_EQ (Full->Width, 695);
  EXPECT_EQ (RectOf (Field), (Rect {T + 10, 2 * Lh + 36, 695 - 2 - (T + 10), Lh + 10}));
}

TEST_F (MenuHeaderTest, RowsAndSeparatorsFollowTheOwnersFont) {
  Gui ()->PushFont = SizedPushFont;
  Gui ()->PopFont = SizedPopFont;
  Gui ()->GetLineHeight = SizedLineHeight;
  Gui ()->DrawLine = RecordRule;
  gRules.clear ();
  Owner->FontSize = 24;
  WINDOW_HEADER *H = Surveyor ()->CreateMenuHeader (Owner, TRUE, TRUE);
  ASSERT_NE (H, nullptr);
  EXPECT_EQ (H->Height, (24 + 10) * 3 + 20);
  EXPECT_EQ (Header (H)->PathField->Y, 2 * 24 + 36);

  MESSAGE Paint = MessageOf (MSG_PAINT);
  H->Paint (H, &Paint, nullptr);
  UINT16 X0 = 0, Y0 = 0;
  Wb ()->GetWindowOrigin (&X0, &Y0, H);
  // Painting runs without a pushed font, as the window base calls it.
  EXPECT_EQ (gPushedSize, 0);
  EXPECT_EQ (gRules, (std::vector<UINT16> {UINT16 (Y0 + 24 + 16), UINT16 (Y0 + 2 * 24 + 32)}));
}

TEST_F (MenuHeaderTest, ItemsPackPerRowAndTextItemsNeedText) {
  UINT16 Lh = Gui ()->GetLineHeight ();
  WINDOW_HEADER *H = Surveyor ()->CreateMenuHeader (Owner, TRUE, TRUE);
  WINDOW_HEADER *Popup = NewPopup ();
  EXPECT_EQ (Surveyor ()->AddHeaderItem (H, ICON_NONE, nullptr, nullptr, Popup, Owner), nullptr);
  EXPECT_EQ (Header (H)->ItemGroup, 0u);

  MENU_ITEM *File = Surveyor ()->AddHeaderItem (H, ICON_NONE, A8 ("File(F)"), nullptr, Popup, Owner);
  ASSERT_NE (File, nullptr);
  EXPECT_EQ (Header (H)->ItemGroup, File->ItemGroup);
  EXPECT_NE (Header (H)->ItemGroup, 0u);
  EXPECT_EQ (Popup->Owner, H);
  MENU_ITEM *Icon1 = Surveyor ()->AddHeaderItem (H, 3, nullptr, CommandA, nullptr, Owner);
  MENU_ITEM *Help = Surveyor ()->AddHeaderItem (H, 200, A8 ("Help(H)"), nullptr, nullptr, Owner);
  MENU_ITEM *Icon2 = Surveyor ()->AddHeaderItem (H, 4, A8 ("Copy"), CommandB, nullptr, Owner);
  ASSERT_TRUE (Icon1 != nullptr && Help != nullptr && Icon2 != nullptr);
  // Text items and icon items each packed from x 4 on their own row.
  EXPECT_EQ ((std::vector<int> {File->Control.X, Help->Control.X, Icon1->Control.X, Icon1->Control.Width,
                                Icon2->Control.X}),
             (std::vector<int> {4, 4 + File->Control.Width, 4, Lh + 20, 4 + Lh + 20}));
  EXPECT_EQ (IconItemsWidth (H), 4 + 2 * (Lh + 20));
  EXPECT_EQ (TextItemsWidth (H), 4 + File->Control.Width + Help->Control.Width);
}

TEST_F (MenuHeaderTest, EnableChangesOnlyTheItemWithThatCommand) {
  WINDOW_HEADER *H = Surveyor ()->CreateMenuHeader (Owner, FALSE, TRUE);
  // Without items nothing is looked at.
  Surveyor ()->EnableHeaderItem (H, CommandA, FALSE, TRUE);
  MENU_ITEM *A = Surveyor ()->AddHeaderItem (H, 1, nullptr, CommandA, nullptr, Owner);
  MENU_ITEM *B = Surveyor ()->AddHeaderItem (H, 2, nullptr, CommandB, nullptr, Owner);
  // Whether A and B are enabled, then A's redraws since the last look.
  unsigned Redraws = Base ().RedrawCount (A);
  auto States = [&] {
    std::string Out = std::to_string (A->Control.Flags & 0x01) + std::to_string (B->Control.Flags & 0x01) + " " +
                      std::to_string (Base ().RedrawCount (A) - Redraws);
    Redraws = Base ().RedrawCount (A);
    return Out;
  };
  EXPECT_EQ (States (), "11 0");
  Surveyor ()->EnableHeaderItem (H, CommandA, FALSE, TRUE);
  EXPECT_EQ (States (), "01 1");
  Surveyor ()->EnableHeaderItem (H, CommandA, FALSE, TRUE);   // already off
  Surveyor ()->EnableHeaderItem (H, CommandC, TRUE, TRUE);
  EXPECT_EQ (States (), "01 0");
  Surveyor ()->EnableHeaderItem (H, CommandA, TRUE, FALSE);
  EXPECT_EQ (States (), "11 0");
}

TEST_F (MenuHeaderTest, PathFieldShowsFittedPathWithSeparator) {
  WINDOW_HEADER *H = Surveyor ()->CreateMenuHeader (Owner, TRUE, TRUE);
  CONTROL *Field = Header (H)->PathField;
  auto Shown = [&] (const std::string &Path) {
    SetHeaderPath (H, A8 (Path.c_str ()), FALSE);
    return Base ().WindowText (Field);
  };
  std::string Short = "\\" + std::string (123, 'a');   // 124 bytes: kept whole
  EXPECT_EQ (Shown ("\\efi") + " " + Shown ("\\efi\\") + " " + Shown ("") + " " + Shown (Short),
             "\\efi\\ \\efi\\ \\ " + Short + "\\");

  std::string Long;
  for (int I = 0; I < 200; I++) Long += static_cast<char> ('a' + I % 26);
  unsigned Redraws = Base ().RedrawCount (Field);
  SetHeaderPath (H, A8 (Long.c_str ()), TRUE);
  EXPECT_EQ (Base ().WindowText (Field), Long.substr (0, 61) + "..." + Long.substr (200 - 61) + "\\");
  EXPECT_GT (Base ().RedrawCount (Field), Redraws);

  // A header without a path row ignores the call.
  WINDOW_HEADER *NoPath = Surveyor ()->CreateMenuHeader (Owner, FALSE, TRUE);
  SetHeaderPath (NoPath, A8 ("\\efi"), TRUE);
  EXPECT_EQ (Header (NoPath)->PathField, nullptr);
}

TEST_F (MenuHeaderTest, HotkeysComeFromParenthesisedLetters) {
  WINDOW_HEADER *H = Surveyor ()->CreateMenuHeader (Owner, FALSE, FALSE);
  // Each title's hotkey, '-' for none: a parenthesised digit is passed over.
  std::string Keys;
  for (const char *Text : {"File(F)", "(e)dit", "Open(1)(O)", "Tools(12)", "Plain", "End(", "(x"}) {
    CHAR8 Key = ItemHotkey (Surveyor ()->AddHeaderItem (H, ICON_NONE, A8 (Text), nullptr, nullptr, Owner));
    Keys += Key != 0 ? static_cast<char> (Key) : '-';
  }
  EXPECT_EQ (Keys, "FEO----");
}

TEST_F (MenuHeaderTest, KeyboardMovesBetweenTitlesWithoutWrapping) {
  WINDOW_HEADER *H = Surveyor ()->CreateMenuHeader (Owner, FALSE, TRUE);
  WINDOW_HEADER *P1 = NewPopup ();
  WINDOW_HEADER *P2 = NewPopup ();
  WINDOW_HEADER *P3 = NewPopup ();
  Surveyor ()->AddHeaderItem (H, 1, nullptr, CommandA, nullptr, Owner);   // a button, not a title
  MENU_ITEM *T1 = Surveyor ()->AddHeaderItem (H, ICON_NONE, A8 ("File(F)"), nullptr, P1, Owner);
  MENU_ITEM *T2 = Surveyor ()->AddHeaderItem (H, ICON_NONE, A8 ("View(1)(V)"), nullptr, P2, Owner);
  MENU_ITEM *T3 = Surveyor ()->AddHeaderItem (H, ICON_NONE, A8 ("Help(H)"), nullptr, P3, Owner);

  // Each key with the handler's answer, then the title that has the focus
  // (0 for none): the menu key alone highlights the first title; Left and
  // Right do not wrap.
  struct Step {
    UINT16 Scan;
    UINT8 Byte1;
    UINTN Answer;
    int Focus;
  } Steps[] = {{SCAN_CODE_RIGHT, 0, 0, 0}, {SCAN_CODE_HOTKEY, 1, 1, 1}, {SCAN_CODE_LEFT, 0, 0, 1},
               {SCAN_CODE_RIGHT, 0, 0, 2}, {SCAN_CODE_RIGHT, 0, 0, 3}, {SCAN_CODE_RIGHT, 0, 0, 3},
               {SCAN_CODE_LEFT, 0, 0, 2}};
  MENU_ITEM *Titles[] = {nullptr, T1, T2, T3};
  for (const Step &S : Steps) {
    EXPECT_EQ (SendKey (H, 0, S.Scan, 0, S.Byte1), S.Answer) << S.Scan;
    EXPECT_EQ (H->FocusControl, Titles[S.Focus]) << S.Scan << " to " << S.Focus;
    if (S.Byte1) EXPECT_EQ (T1->Control.State, 2);
    Base ().PumpMessages ();
  }
  // The highlight moved on; the header has the owner's keyboard; the menus
  // closed by switching were never announced to the owner as closed.
  EXPECT_EQ (T1->Control.State, 0);
  EXPECT_EQ (Owner->FocusControl, H);
  for (const MESSAGE &M : gOwnerMessages) EXPECT_NE (M.Type, MSG_POPUP_CLOSED);
  Base ().ClosePopup ();
  Base ().PumpMessages ();

  // Alt with a letter opens the title holding it; Alt with a digit does nothing.
  Wb ()->SetFocus (H, nullptr, 1);
  EXPECT_EQ (SendKey (H, '1', 0, KEY_STATE_LEFT_ALT), 0u);
  EXPECT_EQ (H->FocusControl, nullptr);
  EXPECT_EQ (SendKey (H, 'v', 0, KEY_STATE_RIGHT_ALT), 1u);
  EXPECT_EQ (H->FocusControl, T2);
  Base ().PumpMessages ();
  EXPECT_EQ (Base ().ShownPopup (), P2);
  EXPECT_EQ (SendKey (H, 'q', 0, KEY_STATE_LEFT_ALT), 0u);
  Base ().ClosePopup ();
  Base ().PumpMessages ();
}

TEST_F (MenuHeaderTest, PopupNoticesMarkTitleAndReachOwnerUnlessSwitching) {
  WINDOW_HEADER *H = Surveyor ()->CreateMenuHeader (Owner, FALSE, FALSE);
  WINDOW_HEADER *P1 = NewPopup ();
  WINDOW_HEADER *P2 = NewPopup ();
  Surveyor ()->AddHeaderItem (H, ICON_NONE, A8 ("A"), nullptr, P1, Owner);
  MENU_ITEM *T2 = Surveyor ()->AddHeaderItem (H, ICON_NONE, A8 ("B"), nullptr, P2, Owner);

  MESSAGE Opened = MessageOf (MSG_POPUP_OPENED);
  Opened.Pointer8 = P2;
  EXPECT_EQ (Wb ()->SendMessage (H, &Opened), 0u);
  EXPECT_EQ (H->FocusControl, T2);

  auto ClosedNotices = [&] {
    size_t N = 0;
    for (const MESSAGE &M : gOwnerMessages) N += M.Type == MSG_POPUP_CLOSED;
    return N;
  };
  MESSAGE Closed = MessageOf (MSG_POPUP_CLOSED);
  Wb ()->SendMessage (H, &Closed);
  Base ().PumpMessages ();
  EXPECT_EQ (H->FocusControl, nullptr);
  EXPECT_EQ (ClosedNotices (), 1u);

  Header (H)->SkipForward = 1;
  Wb ()->SendMessage (H, &Closed);
  Base ().PumpMessages ();
  EXPECT_EQ (ClosedNotices (), 1u);
  EXPECT_EQ (Header (H)->SkipForward, 0);
}

}  // namespace
