// The help window: one window at a time, its text from memory or a help file
// (16-bit length), the fallback text, its geometry and its resize handling.
#include "env/controls/control_driver.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"
#include "support/window_views.h"

namespace {

class HelpWindowTest : public DriverTest {
 protected:
  WINDOW_HEADER *Show (int Volume, const char *Source, UINT16 Length, const char *Title) {
    return Surveyor ()->ShowHelpWindow ((UINT8) Volume, (const CHAR8 *) Source, Length, (const CHAR8 *) Title);
  }
  CONTROL *View (WINDOW_HEADER *W) { return Wb ()->GetControl (W, 3); }
  std::string ViewText (WINDOW_HEADER *W) { return Env ().controls ().TextViewText (View (W)); }
  // The title, then the text shown.
  std::string Shown (WINDOW_HEADER *W) { return Env ().windows ().WindowText (W) + "|" + ViewText (W); }
  void Close (WINDOW_HEADER *W) {
    Env ().windows ().SendSysCommand (W, SYSCMD_CLOSE);
    Env ().windows ().PumpMessages ();
  }
};

TEST_F (HelpWindowTest, OnlyOneHelpWindowAtATime) {
  WINDOW_HEADER *First = Show (0, "first text here", 10, "Title A");
  ASSERT_NE (First, nullptr);
  EXPECT_EQ (First->ObjectSize, 272u);
  EXPECT_EQ (Shown (First), "Title A|first text");
  EXPECT_EQ (Show (0, "second text", 11, "Title B"), First) << "the open help window is returned unchanged";
  EXPECT_EQ (Shown (First), "Title A|first text");
  EXPECT_EQ (Env ().windows ().TopLevelWindows ().size (), 1u);

  // Closing needs no clean-up; afterwards a new window is made.
  Close (First);
  WINDOW_HEADER *Third = Show (0, "third", 5, nullptr);
  ASSERT_NE (Third, nullptr);
  EXPECT_EQ (Shown (Third), "|third") << "a null title gives an empty title";
}

TEST_F (HelpWindowTest, TextComesFromTheCallerOrAFileOrTheFallback) {
  int Vol = MakeVolume ("help");
  std::string Big (70000, 'x');
  for (size_t I = 0; I < Big.size (); I++) Big[I] = (char) ('a' + I % 26);
  WriteFile (Vol, "big.txt", Big);
  WriteFile (Vol, "docs/short.hlp", "Press F1.");
  WriteFile (Vol, "empty.txt", "");
  // The resource's text (it fits the 32-byte buffer); the length counts the
  // terminator.
  const std::string Fallback ("No help is available.\0", 22);
  struct Case {
    int Volume;
    const char *Source;
    UINT16 Length;
    std::string Text;
  } Cases[] = {
      {0, "0123456789abcdefghij", 5, "01234"},        // only Length bytes of the caller's text
      {Vol, "\\big.txt", 0, Big.substr (0, 4464)},    // a file's length is the low 16 bits of its size
      {Vol, "\\docs\\short.hlp", 0, "Press F1."},
      {Vol, "\\empty.txt", 0, ""},
      {Vol, "\\missing.txt", 0, Fallback},
      {Vol, "\\..\\..\\etc\\passwd", 0, Fallback},
      {Vol, "\\", 0, Fallback},
      {23, "\\x.txt", 0, Fallback},                   // no such volume
  };
  for (const Case &C : Cases) {
    WINDOW_HEADER *W = Show (C.Volume, C.Source, C.Length, "Help");
    ASSERT_NE (W, nullptr) << C.Source;
    EXPECT_EQ (ViewText (W), C.Text) << C.Source;
    Close (W);
  }
  EXPECT_TRUE (Env ().windows ().MessageBoxes ().empty ());
}

TEST_F (HelpWindowTest, LayoutIconAndFocus) {
  WINDOW_HEADER *W = Show (0, "text", 4, "Help");
  ASSERT_NE (W, nullptr);
  const int Caption = Wb ()->CaptionHeight;
  EXPECT_EQ (RectOf (W), (Rect {100, 100, 400, 300}));
  CONTROL *V = View (W);
  ASSERT_NE (V, nullptr);
  EXPECT_EQ (V->Kind, CONTROL_KIND_TEXT_VIEW);
  EXPECT_EQ (RectOf (V), (Rect {3, Caption, 394, 300 - Caption - 3}));
  EXPECT_EQ (W->FocusControl, V);
  EXPECT_TRUE (W->Flags & WINDOW_FLAG_HAS_ICON);
  // No main window or dialog has loaded the icon set yet: the help icon id is 0.
  EXPECT_EQ (W->IconId, 0);

  // Resizing to any size is accepted; the view follows.
  Env ().windows ().ResizeWindow (W, 50, 40);
  EXPECT_EQ (RectOf (W), (Rect {100, 100, 50, 40}));
  EXPECT_EQ (RectOf (V), (Rect {3, Caption, 44, 37 - Caption}));
  Env ().windows ().ResizeWindow (W, 640, 480);
  EXPECT_EQ (RectOf (V), (Rect {3, Caption, 634, 477 - Caption}));

  // System commands 2 and 4 are accepted, others not; activation is accepted.
  EXPECT_EQ (HandlerAnswers (W, {MessageOf (MSG_SYSCOMMAND, 7), MessageOf (MSG_ACTIVATE, 7), MessageOf (30, 7)}),
             "010");
  EXPECT_EQ (Env ().windows ().SendSysCommand (W, SYSCMD_CLOSE), 1u);
  Env ().windows ().PumpMessages ();
  EXPECT_FALSE (Env ().windows ().IsWindow (W));
}

class SmallScreenHelpTest : public HelpWindowTest {
 protected:
  env::Options EnvironmentOptions () override {
    env::Options O;
    O.ScreenWidth = 480;
    O.ScreenHeight = 400;
    return O;
  }
};

TEST_F (SmallScreenHelpTest, TooSmallForTheUsualPlaceUsesTheFixedOne) {
  WINDOW_HEADER *W = Show (0, "text", 4, "Help");
  ASSERT_NE (W, nullptr);
  EXPECT_EQ (RectOf (W), (Rect {10, 10, 500, 375}));
  EXPECT_EQ (View (W)->Width, 494);
}

}  // namespace
