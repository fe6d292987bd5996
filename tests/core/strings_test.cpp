// Localized strings: lookups through the file driver's resource reader into
// three rotating buffers, "***" for anything missing.
#include <gtest/gtest.h>

#include <cstring>

#include "core/bindings.h"
#include "core/resource_format.h"
#include "core/strings.h"
#include "env/windows/window_base.h"
#include "filemanager/listing.h"
#include "util/string_utils.h"
#include "viewers/viewer_records.h"
#include "viewers/viewers.h"
#include "support/driver_fixture.h"

namespace {

// A file driver table whose resource reader is ours, to see what it is
// given: each call as "file|section|key", "(null)" for no section.
std::vector<std::string> gCalls;

BOOLEAN EFIAPI FakeReadResource (const CHAR8 *File, const CHAR8 *Section, const CHAR8 *Key, CHAR8 *Buffer) {
  auto Text = [] (const CHAR8 *S) { return std::string (reinterpret_cast<const char *> (S)); };
  gCalls.push_back (Text (File) + "|" + (Section ? Text (Section) : "(null)") + "|" + Text (Key));
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
  EXPECT_EQ (S (First) + "|" + S (Second) + "|" + S (Third), "File Menu/File|File Menu/Help|toolbar/back");
  EXPECT_EQ (GetString ("toolbar"_a, "copy"_a), First);   // the first text is replaced
  EXPECT_EQ (S (First) + "|" + S (Second) + "|" + S (Third), "toolbar/copy|File Menu/Help|toolbar/back");
  EXPECT_EQ (GetString ("a"_a, "b"_a), Second);
}

TEST_F (StringsTest, PassesPathAndNullSectionAndFallsBackToStars) {
  EXPECT_EQ (S (GetString ("HelpWin"_a, "missing"_a)), "***");
  EXPECT_EQ (S (GetString (nullptr, "files_total"_a)), "-/files_total");
  const std::string File = "\\efi\\kivora\\strings\\surveyor.res";
  EXPECT_EQ (gCalls, (std::vector<std::string> {File + "|HelpWin|missing", File + "|(null)|files_total"}));
  // Each call reads afresh: no cache.
  GetString (nullptr, "files_total"_a);
  EXPECT_EQ (gCalls.size (), 3u);
  EXPECT_EQ (StringLength (GetString ("x"_a, "long"_a)), 255);
}

// A resource text is a format only when its conversions are the caller's
// numbers, in count, order and width; anything else reads "***".
TEST (ResourceFormatTest, FormatsOnlyTextsWhoseConversionsMatchTheArguments) {
  // Arguments: "4" a 32-bit 5, "44" 5 and 7, "84" a 64-bit 20 then a 32-bit 7.
  auto Run = [] (const char *Format, std::string Arguments) {
    CHAR8 Buffer[64] = {};
    const CHAR8 *F = reinterpret_cast<const CHAR8 *> (Format);
    if (Arguments == "4") FormatResourceText (Buffer, sizeof (Buffer), F, (UINT32) 5);
    if (Arguments == "44") FormatResourceText (Buffer, sizeof (Buffer), F, (UINT32) 5, (UINT32) 7);
    if (Arguments == "84") FormatResourceText (Buffer, sizeof (Buffer), F, (UINT64) 20, (UINT32) 7);
    return std::string (reinterpret_cast<char *> (Buffer));
  };
  struct {
    const char *Format, *Arguments, *Expected;
  } Cases[] = {
      {"%d items", "4", "5 items"},
      {"Search %d/%d", "44", "Search 5/7"},
      {"Size %ld bytes, %d pages", "84", "Size 20 bytes, 7 pages"},
      {"%05d|%-3u|%x|%X|%,d|%.3i", "4", "***"},        // six conversions for one number
      {"[%05d] 100%%", "4", "[00005] 100%"},
      {"%+d %-4x|", "44", "+5 7   |"},
      {"%lu of %lX", "84", "***"},                     // the second argument is 32 bits wide
      {"Size %s bytes, %s pages", "84", "***"},        // texts where numbers are passed
      {"Page %a", "4", "***"},
      {"%c%p", "44", "***"},
      {"%*d", "44", "***"},                            // '*' takes an argument of its own
      {"%ld", "4", "***"},                             // wider than what is passed
      {"%d", "84", "***"},
      {"%d %d", "4", "***"},                           // more conversions than numbers
      {"items", "4", "***"},                           // fewer
      {"Page %d", "44", "***"},
      {"%", "4", "***"},
      {"50%", "4", "***"},
      {"%q", "4", "***"},
  };
  for (auto &C : Cases) EXPECT_EQ (Run (C.Format, C.Arguments), C.Expected) << C.Format;
}

// A damaged resource file read by the real file driver: the hex viewer and
// the status line show "***" for their numbers instead of reading arguments
// that were never passed.
class DamagedResourceTest : public DriverTest {
 protected:
  env::Options EnvironmentOptions () override {
    WriteHostFile (System.Path () / "efi/kivora/strings/surveyor.res",
                   "files_total = %s items\n[HexFile]\ntipFileInfo = Size %s bytes, %s pages\n"
                   "tipCurrentPage = Page %a %s\n");
    env::Options O;
    O.SystemDir = System.Path ().string ();
    return O;
  }
  TempFolder System;
};

TEST_F (DamagedResourceTest, TextsThatDoNotMatchTheirNumbersAreNotUsedAsFormats) {
  ASSERT_EQ (LoadStatus (), EFI_SUCCESS);
  int Volume = MakeVolume ("data");
  WriteFile (Volume, "a.bin", std::string (5000, 'x'));
  auto *Viewer = reinterpret_cast<HEX_VIEWER *> (OpenHexViewer (50, 50, "\\a.bin"_a, (UINT8) Volume));
  ASSERT_NE (Viewer, nullptr);
  EXPECT_EQ (Env ().windows ().WindowText (Viewer->PageField), "***");
  bool LabelSeen = false;
  for (CONTROL *C : Env ().windows ().Controls (&Viewer->Header))
    if (C->Kind == CONTROL_KIND_TEXT_FIELD && C != Viewer->PageField)
      LabelSeen = Env ().windows ().WindowText (C) == "***";
  EXPECT_TRUE (LabelSeen);

  auto *Main = reinterpret_cast<MAIN_WINDOW *> (Surveyor ()->OpenVolumeWindow (0, 0, (UINT8) Volume, nullptr, nullptr));
  ASSERT_NE (Main, nullptr);
  ShowSelection (Main, 1, 0);
  EXPECT_EQ (Env ().windows ().StatusText (&Main->Header, 0), "***");
}

}  // namespace
