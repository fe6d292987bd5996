// The help window: one window at a time, its text from memory or a help file
// (16-bit length), the fallback text, its geometry and its resize handling.
#include "env/controls/control_driver.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"

namespace {

class HelpWindowTest : public DriverTest {
 protected:
  WINDOW_HEADER *Show (int Volume, const char *Source, UINT16 Length, const char *Title) {
    return Surveyor ()->ShowHelpWindow ((UINT8) Volume, (const CHAR8 *) Source, Length, (const CHAR8 *) Title);
  }
  CONTROL *View (WINDOW_HEADER *W) { return Wb ()->GetControl (W, 3); }
  std::string ViewText (WINDOW_HEADER *W) { return Env ().controls ().TextViewText (View (W)); }
  void Close (WINDOW_HEADER *W) {
    Env ().windows ().SendSysCommand (W, SYSCMD_CLOSE);
    Env ().windows ().PumpMessages ();
  }
};

TEST_F (HelpWindowTest, OnlyOneHelpWindowAtATime) {
  WINDOW_HEADER *First = Show (0, "first text here", 10, "Title A");
  ASSERT_NE (First, nullptr);
  EXPECT_EQ (First->ObjectSize, 272u);
  EXPECT_EQ (ViewText (First), "first text");
  EXPECT_EQ (Env ().windows ().WindowText (First), "Title A");

  WINDOW_HEADER *Second = Show (0, "second text", 11, "Title B");
  EXPECT_EQ (Second, First) << "the open help window is returned unchanged";
  EXPECT_EQ (ViewText (First), "first text");
  EXPECT_EQ (Env ().windows ().WindowText (First), "Title A");
  EXPECT_EQ (Env ().windows ().TopLevelWindows ().size (), 1u);

  // Closing needs no clean-up; afterwards a new window is made.
  Close (First);
  EXPECT_FALSE (Env ().windows ().IsWindow (First));
  WINDOW_HEADER *Third = Show (0, "third", 5, nullptr);
  ASSERT_NE (Third, nullptr);
  EXPECT_EQ (ViewText (Third), "third");
  EXPECT_EQ (Env ().windows ().WindowText (Third), "") << "a null title gives an empty title";
}

TEST_F (HelpWindowTest, TextLengthRules) {
  // Only Length bytes of the caller's text are shown.
  WINDOW_HEADER *W = Show (0, "0123456789abcdefghij", 5, "t");
  EXPECT_EQ (ViewText (W), "01234");
  Close (W);

  // A help file's length is the low 16 bits of its size.
  int Vol = MakeVolume ("help");
  std::string Big (70000, 'x');
  for (size_t I = 0; I < Big.size (); I++) Big[I] = (char) ('a' + I % 26);
  WriteFile (Vol, "big.txt", Big);
  W = Show (Vol, "\\big.txt", 0, "Big");
  ASSERT_NE (W, nullptr);
  EXPECT_EQ (ViewText (W).size (), 4464u);
  EXPECT_EQ (ViewText (W), Big.substr (0, 4464));
  Close (W);

  WriteFile (Vol, "docs/short.hlp", "Press F1.");
  W = Show (Vol, "\\docs\\short.hlp", 0, "Short");
  EXPECT_EQ (ViewText (W), "Press F1.");
  Close (W);

  // An empty file is read fine: its text is empty.
  WriteFile (Vol, "empty.txt", "");
  W = Show (Vol, "\\empty.txt", 0, "Empty");
  EXPECT_EQ (ViewText (W), "");
  Close (W);
}

TEST_F (HelpWindowTest, UnreadableFileShowsTheFallbackText) {
  int Vol = MakeVolume ("help");
  // The resource's text (it fits the 32-byte buffer); the length counts the
  // terminator.
  const std::string Expected ("No help is available.\0", 22);
  for (const char *Path : {"\\missing.txt", "\\..\\..\\etc\\passwd", "\\"}) {
    WINDOW_HEADER *W = Show (Vol, Path, 0, "Help");
    ASSERT_NE (W, nullptr) << Path;
    EXPECT_EQ (ViewText (W), Expected) << Path;
    EXPECT_TRUE (Env ().windows ().MessageBoxes ().empty ());
    Close (W);
  }
  WINDOW_HEADER *W = Show (23, "\\x.txt", 0, "No volume");
  EXPECT_EQ (ViewText (W), Expected);
}

TEST_F (HelpWindowTest, LayoutIconAndFocus) {
  WINDOW_HEADER *W = Show (0, "text", 4, "Help");
  ASSERT_NE (W, nullptr);
  EXPECT_EQ (W->X, 100);
  EXPECT_EQ (W->Y, 100);
  EXPECT_EQ (W->Width, 400);
  EXPECT_EQ (W->Height, 300);
  UINT16 Caption = Wb ()->CaptionHeight;
  CONTROL *V = View (W);
  ASSERT_NE (V, nullptr);
  EXPECT_EQ (V->Kind, CONTROL_KIND_TEXT_VIEW);
  EXPECT_EQ (V->X, 3);
  EXPECT_EQ (V->Y, Caption);
  EXPECT_EQ (V->Width, 394);
  EXPECT_EQ (V->Height, 300 - Caption - 3);
  EXPECT_EQ (W->FocusControl, V);
  EXPECT_TRUE (W->Flags & WINDOW_FLAG_HAS_ICON);
  // No main window or dialog has loaded the icon set yet: the help icon id is 0.
  EXPECT_EQ (W->IconId, 0);

  // Resizing to any size is accepted; the view follows.
  Env ().windows ().ResizeWindow (W, 50, 40);
  EXPECT_EQ (W->Width, 50);
  EXPECT_EQ (W->Height, 40);
  EXPECT_EQ (V->Width, 44);
  EXPECT_EQ (V->Height, 37 - Caption);
  Env ().windows ().ResizeWindow (W, 640, 480);
  EXPECT_EQ (V->Width, 634);
  EXPECT_EQ (V->Height, 477 - Caption);

  // System commands 2 and 4 are accepted, others not; activation is accepted.
  MESSAGE M {};
  M.Type = MSG_SYSCOMMAND;
  M.Word2 = 7;
  EXPECT_EQ (W->Handler (W, &M), 0);
  M.Type = MSG_ACTIVATE;
  EXPECT_EQ (W->Handler (W, &M), 1);
  M.Type = 30;
  EXPECT_EQ (W->Handler (W, &M), 0);
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
  EXPECT_EQ (W->X, 10);
  EXPECT_EQ (W->Y, 10);
  EXPECT_EQ (W->Width, 500);
  EXPECT_EQ (W->Height, 375);
  EXPECT_EQ (View (W)->Width, 494);
}

}  // namespace
