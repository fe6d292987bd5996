// Localized strings: lookups through the file driver's resource reader into
// three rotating buffers, "***" for anything missing.
#include <gtest/gtest.h>

#include <cstring>

#include "core/bindings.h"
#include "core/strings.h"
#include "util/string_utils.h"
#include "support/driver_fixture.h"

namespace {

// A file driver table whose resource reader is ours, to see what it is given.
struct ResourceCall {
  std::string File;
  bool NullSection;
  std::string Section, Key;
};
std::vector<ResourceCall> gCalls;

BOOLEAN EFIAPI FakeReadResource (const CHAR8 *File, const CHAR8 *Section, const CHAR8 *Key, CHAR8 *Buffer) {
  auto Text = [] (const CHAR8 *S) { return std::string (reinterpret_cast<const char *> (S)); };
  gCalls.push_back ({Text (File), Section == nullptr, Section ? Text (Section) : "", Text (Key)});
  std::string K = Text (Key);
  if (K == "missing") return FALSE;
  std::string Value = (Section ? Text (Section) : std::string ("-")) + "/" + K;
  if (K == "long") Value = std::string (300, 'x');  // a reader that overfills must not run past 256
  size_t N = std::min<size_t> (Value.size (), 255);
  std::memcpy (Buffer, Value.data (), N);
  Buffer[N] = 0;
  return TRUE;
}

class StringsTest : public DriverTest {
 protected:
  void SetUp () override {
    DriverTest::SetUp ();
    ASSERT_EQ (LoadStatus (), EFI_SUCCESS);
    Saved = *gFileDriver;
    gFileDriver->ReadResourceString = FakeReadResource;
    gCalls.clear ();
  }
  void TearDown () override {
    *gFileDriver = Saved;
    DriverTest::TearDown ();
  }
  FILE_DRIVER_PROTOCOL Saved;
};

std::string S (const CHAR8 *Text) { return reinterpret_cast<const char *> (Text); }

TEST_F (StringsTest, RotatesThroughThreeBuffers) {
  CHAR8 *First = GetString ("File Menu"_a, "File"_a);
  CHAR8 *Second = GetString ("File Menu"_a, "Help"_a);
  CHAR8 *Third = GetString ("toolbar"_a, "back"_a);
  EXPECT_NE (First, Second);
  EXPECT_NE (Second, Third);
  EXPECT_NE (First, Third);
  EXPECT_EQ (S (First), "File Menu/File");
  EXPECT_EQ (S (Second), "File Menu/Help");
  EXPECT_EQ (S (Third), "toolbar/back");
  CHAR8 *Fourth = GetString ("toolbar"_a, "copy"_a);
  EXPECT_EQ (Fourth, First);
  EXPECT_EQ (S (First), "toolbar/copy");  // the first text is replaced
  EXPECT_EQ (S (Second), "File Menu/Help");
  EXPECT_EQ (GetString ("a"_a, "b"_a), Second);
}

TEST_F (StringsTest, PassesPathAndNullSectionAndFallsBackToStars) {
  CHAR8 *Missing = GetString ("HelpWin"_a, "missing"_a);
  EXPECT_EQ (S (Missing), "***");
  CHAR8 *Present = GetString (nullptr, "files_total"_a);
  EXPECT_EQ (S (Present), "-/files_total");
  ASSERT_EQ (gCalls.size (), 2u);
  EXPECT_EQ (gCalls[0].File, "\\efi\\kivora\\strings\\surveyor.res");
  EXPECT_FALSE (gCalls[0].NullSection);
  EXPECT_EQ (gCalls[0].Section, "HelpWin");
  EXPECT_TRUE (gCalls[1].NullSection);
  EXPECT_EQ (gCalls[1].Key, "files_total");
  // Each call reads afresh: no cache.
  GetString (nullptr, "files_total"_a);
  EXPECT_EQ (gCalls.size (), 3u);
  EXPECT_EQ (StringLength (GetString ("x"_a, "long"_a)), 255);
}

// Through the real file driver and the built resource file.
class ResourceFileTest : public DriverTest {};

TEST_F (ResourceFileTest, ReadsTheBundledResourceFile) {
  ASSERT_EQ (LoadStatus (), EFI_SUCCESS);
  EXPECT_NE (S (GetString ("File Menu"_a, "File"_a)), "***");
  EXPECT_NE (S (GetString ("HelpWin"_a, "Tip_NoHelp"_a)), "***");
  EXPECT_EQ (S (GetString ("File Menu"_a, "no such key"_a)), "***");
  EXPECT_EQ (S (GetString ("no such section"_a, "File"_a)), "***");
}

}  // namespace
