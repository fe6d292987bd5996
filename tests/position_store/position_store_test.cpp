// The window position store: the strict reading of "x,y,width,height" texts
// against the screen and a minimum size, and writing only on change.

#include <string>

#include "env/settings/settings_service.h"
#include "support/driver_fixture.h"
#include "support/window_views.h"
#include "util/position_store.h"

namespace {

// A text parsed on a 1024 x 768 screen with a minimum size: the rectangle as
// "x y width height", or "refused" (then nothing may have been written).
std::string Parsed (const std::string &Text, UINT16 MinWidth = 400, UINT16 MinHeight = 300) {
  UINT16 X = 0xEEEE, Y = 0xEEEE, Width = 0xEEEE, Height = 0xEEEE;
  if (!ParseWindowPosition (A8 (Text.c_str ()), 1024, 768, MinWidth, MinHeight, &X, &Y, &Width, &Height))
    return X == 0xEEEE && Y == 0xEEEE && Width == 0xEEEE && Height == 0xEEEE ? "refused" : "refused, but written";
  return std::to_string (X) + " " + std::to_string (Y) + " " + std::to_string (Width) + " " + std::to_string (Height);
}

TEST (PositionParse, FieldsDigitsScreenAndMinimum) {
  struct Case {
    std::string Text;
    UINT16 MinWidth, MinHeight;
    std::string Parsed;
  } Cases[] = {
      {"100,100,400,300", 400, 300, "100 100 400 300"},
      {" 12 , 34,  500 ,  320  ", 400, 300, "12 34 500 320"},   // spaces around digits are skipped
      {"1,2,400,300xyz,,9", 400, 300, "1 2 400 300"},           // trailing text after field 4
      {",,400,300", 400, 300, "0 0 400 300"},                   // empty fields count as 0
      {"100,100,400", 400, 300, "refused"},                     // field 3 must end on a comma
      {"100;100,400,300", 400, 300, "refused"},
      {"", 400, 300, "refused"},
      {"-1,100,400,300", 400, 300, "refused"},
      // Spaces count towards a field's 8 characters.
      {"      100,100,400,300", 400, 300, "refused"},
      {"     100,100,400,300", 400, 300, "100 100 400 300"},
      {"000000100,100,400,300", 400, 300, "refused"},   // nine digits: the ninth stands where the comma must be
      {"00000100,100,400,300", 400, 300, "100 100 400 300"},
      {"10000000,100,400,300", 400, 300, "refused"},    // eight digits pass the parse, then fail the screen test
      {"1,1,400,00000300", 400, 300, "refused"},        // field 4 with 8 digits fails
      {"1,1,400,0000300", 400, 300, "1 1 400 300"},     // with 7 it is parsed
      {"1,1,400, 0000300", 400, 300, "1 1 400 300"},    // a space and 7 digits fill the 8 characters
      {"1,1,400,  0000300", 1, 1, "1 1 400 30"},        // only 8 characters are examined
      // The screen: the window must start 30 pixels inside and fit.
      {"994,0,1,300", 1, 1, "refused"},
      {"993,0,1,300", 1, 1, "993 0 1 300"},
      {"0,738,400,1", 1, 1, "refused"},
      {"0,737,400,1", 1, 1, "0 737 400 1"},
      {"0,0,1024,768", 400, 300, "0 0 1024 768"},
      {"1,0,1024,768", 400, 300, "refused"},
      {"0,1,1024,768", 400, 300, "refused"},
      // The minimum size.
      {"0,0,399,300", 400, 300, "refused"},
      {"0,0,400,299", 400, 300, "refused"},
      {"0,0,399,299", 399, 299, "0 0 399 299"},
  };
  for (const Case &C : Cases) EXPECT_EQ (Parsed (C.Text, C.MinWidth, C.MinHeight), C.Parsed) << '"' << C.Text << '"';
}

class PositionStoreTest : public DriverTest {
 protected:
  env::SettingsService &Settings () { return *Env ().settings (); }
};

TEST_F (PositionStoreTest, LoadReadsStoredValueAndFreesIt) {
  Settings ().Set ("Surveyor", "Position", "120,80,640,480");
  UINT16 X = 1, Y = 2, Width = 400, Height = 300;
  ASSERT_TRUE (LoadWindowPosition (A8 ("Surveyor"), &X, &Y, &Width, &Height));
  EXPECT_EQ ((Rect {X, Y, Width, Height}), (Rect {120, 80, 640, 480}));

  // Missing values and values the parse refuses leave the outputs alone.
  X = 1, Y = 2, Width = 400, Height = 300;
  EXPECT_FALSE (LoadWindowPosition (A8 ("Nothing"), &X, &Y, &Width, &Height));
  Width = 700;   // the stored 640 is below this caller's minimum
  EXPECT_FALSE (LoadWindowPosition (A8 ("Surveyor"), &X, &Y, &Width, &Height));
  EXPECT_EQ ((Rect {X, Y, Width, Height}), (Rect {1, 2, 700, 300}));
}

TEST_F (PositionStoreTest, SaveWritesOnlyWhenTheRectangleChanges) {
  unsigned Sets = Settings ().SetValueCount (), Commits = Settings ().CommitCount ();
  // The value stored, then the writes and commits since the start.
  auto Saved = [&] (UINT16 X) {
    SaveWindowPosition (A8 ("FileCmp"), X, 40, 200, 100);
    std::string Value;
    Settings ().Get ("FileCmp", "Position", Value);
    return Value + " " + std::to_string (Settings ().SetValueCount () - Sets) + " " +
           std::to_string (Settings ().CommitCount () - Commits);
  };
  EXPECT_EQ (Saved (30), "30,40,200,100 1 1");
  EXPECT_EQ (Saved (30), "30,40,200,100 1 1");   // the same rectangle: nothing written
  EXPECT_EQ (Saved (31), "31,40,200,100 2 2");
  // A stored value off the screen does not count as the same rectangle.
  Settings ().Set ("FileCmp", "Position", "2000,40,200,100");
  Sets = Settings ().SetValueCount (), Commits = Settings ().CommitCount ();
  EXPECT_EQ (Saved (2000), "2000,40,200,100 1 1");
}

class NoSettingsTest : public DriverTest {
 protected:
  env::Options EnvironmentOptions () override {
    env::Options O;
    O.WithSettings = false;
    return O;
  }
};

TEST_F (NoSettingsTest, WithoutTheServiceNothingIsRemembered) {
  UINT16 X = 7, Y = 8, Width = 400, Height = 300;
  SaveWindowPosition (A8 ("Surveyor"), 100, 100, 400, 300);
  EXPECT_FALSE (LoadWindowPosition (A8 ("Surveyor"), &X, &Y, &Width, &Height));
  EXPECT_EQ (X, 7);
  EXPECT_EQ (Width, 400);
}

}  // namespace
