// The window position store: the strict reading of "x,y,width,height" texts
// against the screen and a minimum size, and writing only on change.

#include <string>

#include "env/settings/settings_service.h"
#include "support/driver_fixture.h"
#include "util/position_store.h"

namespace {

const CHAR8 *A8 (const char *Text) { return reinterpret_cast<const CHAR8 *> (Text); }

struct Rect {
  UINT16 X = 0xEEEE, Y = 0xEEEE, Width = 0xEEEE, Height = 0xEEEE;
};

// Parses on a 1024 x 768 screen with the minimum 400 x 300.
bool Parse (const std::string &Text, Rect &Out, UINT16 MinWidth = 400, UINT16 MinHeight = 300) {
  return ParseWindowPosition (A8 (Text.c_str ()), 1024, 768, MinWidth, MinHeight, &Out.X, &Out.Y, &Out.Width,
                              &Out.Height);
}
bool Parses (const std::string &Text, UINT16 MinWidth = 400, UINT16 MinHeight = 300) {
  Rect R;
  return Parse (Text, R, MinWidth, MinHeight);
}

TEST (PositionParse, FieldsSpacesAndTerminators) {
  Rect R;
  ASSERT_TRUE (Parse ("100,100,400,300", R));
  EXPECT_EQ (R.X, 100);
  EXPECT_EQ (R.Y, 100);
  EXPECT_EQ (R.Width, 400);
  EXPECT_EQ (R.Height, 300);

  ASSERT_TRUE (Parse (" 12 , 34,  500 ,  320  ", R));   // spaces around digits are skipped
  EXPECT_EQ (R.X, 12);
  EXPECT_EQ (R.Y, 34);
  EXPECT_EQ (R.Width, 500);
  EXPECT_EQ (R.Height, 320);
  ASSERT_TRUE (Parse ("1,2,400,300xyz,,9", R));   // trailing text after field 4
  EXPECT_EQ (R.Height, 300);
  ASSERT_TRUE (Parse (",,400,300", R));           // empty fields count as 0
  EXPECT_EQ (R.X, 0);
  EXPECT_EQ (R.Y, 0);

  Rect Untouched;
  EXPECT_FALSE (Parse ("100,100,400", Untouched));   // field 3 must end on a comma
  EXPECT_EQ (Untouched.X, 0xEEEE);                   // nothing written on failure
  EXPECT_FALSE (Parses ("100;100,400,300"));
  EXPECT_FALSE (Parses (""));
  EXPECT_FALSE (Parses ("-1,100,400,300"));
  // Spaces count towards a field's 8 characters.
  EXPECT_FALSE (Parses ("      100,100,400,300"));
  EXPECT_TRUE (Parses ("     100,100,400,300"));
}

TEST (PositionParse, DigitLimitsPerField) {
  EXPECT_FALSE (Parses ("000000100,100,400,300"));   // nine digits: the ninth stands where the comma must be
  EXPECT_TRUE (Parses ("00000100,100,400,300"));     // eight digits pass the parse
  EXPECT_FALSE (Parses ("10000000,100,400,300"));    // ... and then fail the screen test
  EXPECT_FALSE (Parses ("1,1,400,00000300"));        // field 4 with 8 digits fails
  EXPECT_TRUE (Parses ("1,1,400,0000300"));          // with 7 it is parsed
  EXPECT_TRUE (Parses ("1,1,400, 0000300"));         // a space and 7 digits fill the 8 characters
  Rect R;
  ASSERT_TRUE (Parse ("1,1,400,  0000300", R, 1, 1)); // only 8 characters are examined
  EXPECT_EQ (R.Height, 30);
}

TEST (PositionParse, ScreenAndMinimumBounds) {
  EXPECT_FALSE (Parses ("994,0,1,300", 1, 1));   // x = 1024 - 30
  EXPECT_TRUE (Parses ("993,0,1,300", 1, 1));
  EXPECT_FALSE (Parses ("0,738,400,1", 1, 1));   // y = 768 - 30
  EXPECT_TRUE (Parses ("0,737,400,1", 1, 1));
  EXPECT_TRUE (Parses ("0,0,1024,768"));         // exactly the screen
  EXPECT_FALSE (Parses ("1,0,1024,768"));
  EXPECT_FALSE (Parses ("0,1,1024,768"));
  EXPECT_FALSE (Parses ("0,0,399,300"));         // below the minimum
  EXPECT_FALSE (Parses ("0,0,400,299"));
  EXPECT_TRUE (Parses ("0,0,399,299", 399, 299));
}

class PositionStoreTest : public DriverTest {
 protected:
  env::SettingsService &Settings () { return *Env ().settings (); }
};

TEST_F (PositionStoreTest, LoadReadsStoredValueAndFreesIt) {
  Settings ().Set ("Surveyor", "Position", "120,80,640,480");
  UINT16 X = 1, Y = 2, Width = 400, Height = 300;
  ASSERT_TRUE (LoadWindowPosition (A8 ("Surveyor"), &X, &Y, &Width, &Height));
  EXPECT_EQ (X, 120);
  EXPECT_EQ (Y, 80);
  EXPECT_EQ (Width, 640);
  EXPECT_EQ (Height, 480);

  // Other sections, missing keys and bad values leave the outputs alone.
  Settings ().Set ("FileCmp", "Position", "120,80,640");
  X = 1, Y = 2, Width = 400, Height = 300;
  EXPECT_FALSE (LoadWindowPosition (A8 ("FileCmp"), &X, &Y, &Width, &Height));
  EXPECT_FALSE (LoadWindowPosition (A8 ("Nothing"), &X, &Y, &Width, &Height));
  Width = 700;   // the stored 640 is below this caller's minimum
  EXPECT_FALSE (LoadWindowPosition (A8 ("Surveyor"), &X, &Y, &Width, &Height));
  EXPECT_EQ (X, 1);
  EXPECT_EQ (Y, 2);
  EXPECT_EQ (Width, 700);
  EXPECT_EQ (Height, 300);
}

TEST_F (PositionStoreTest, SaveWritesOnlyWhenTheRectangleChanges) {
  unsigned Sets = Settings ().SetValueCount ();
  unsigned Commits = Settings ().CommitCount ();
  SaveWindowPosition (A8 ("FileCmp"), 30, 40, 200, 100);
  std::string Value;
  ASSERT_TRUE (Settings ().Get ("FileCmp", "Position", Value));
  EXPECT_EQ (Value, "30,40,200,100");
  EXPECT_EQ (Settings ().SetValueCount (), Sets + 1);
  EXPECT_EQ (Settings ().CommitCount (), Commits + 1);

  // The same rectangle again: nothing written (the minimum size plays no part).
  SaveWindowPosition (A8 ("FileCmp"), 30, 40, 200, 100);
  EXPECT_EQ (Settings ().SetValueCount (), Sets + 1);
  EXPECT_EQ (Settings ().CommitCount (), Commits + 1);

  SaveWindowPosition (A8 ("FileCmp"), 31, 40, 200, 100);
  ASSERT_TRUE (Settings ().Get ("FileCmp", "Position", Value));
  EXPECT_EQ (Value, "31,40,200,100");
  EXPECT_EQ (Settings ().CommitCount (), Commits + 2);

  // A stored value off the screen does not count as the same rectangle.
  Settings ().Set ("FileCmp", "Position", "2000,40,200,100");
  Sets = Settings ().SetValueCount ();
  SaveWindowPosition (A8 ("FileCmp"), 2000, 40, 200, 100);
  EXPECT_EQ (Settings ().SetValueCount (), Sets + 1);
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
