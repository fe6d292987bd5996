// The NTFS service: the ready flag and the attributes window it opens for a
// path or for a bare name with its entry number.
#include <sys/stat.h>

#include "env/host/ntfs_service.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"

namespace {

class NtfsServiceTest : public DriverTest {
 protected:
  bool AutoLoad () override { return false; }
  std::vector<std::string> Lines (WINDOW_HEADER *W) {
    std::vector<std::string> Out;
    for (CONTROL *C : Env ().windows ().Controls (W)) Out.push_back (Env ().windows ().WindowText (C));
    return Out;
  }
};

TEST_F (NtfsServiceTest, ReadyFlagAndAttributesWindow) {
  ASSERT_NE (Env ().ntfs (), nullptr);
  NTFS_SERVICE_PROTOCOL *T = Env ().ntfs ()->Table ();
  EXPECT_EQ (T->Prepare (), TRUE);
  Env ().ntfs ()->SetReady (false);
  EXPECT_EQ (T->Prepare (), FALSE);
  Env ().ntfs ()->SetReady (true);

  int Vol = MakeVolume ("n", 0, 2, 3, "NTFS");
  WriteFile (Vol, "dir/file.bin", std::string (1234, 'x'));
  struct stat St;
  ASSERT_EQ (stat ((VolumePath (Vol) / "dir/file.bin").c_str (), &St), 0);

  // A path: found directly.
  WINDOW_HEADER *W = T->OpenAttributesWindow ((UINT8) Vol, 77, (const CHAR8 *) "\\dir\\file.bin", 0);
  ASSERT_NE (W, nullptr);
  EXPECT_EQ (W->ObjectSize, 272u);
  EXPECT_EQ (Env ().windows ().WindowText (W), "Attributes - file.bin");
  auto L = Lines (W);
  ASSERT_EQ (L.size (), 5u);
  EXPECT_EQ (L[4].rfind ("Modified: ", 0), 0u);
  L.pop_back ();
  EXPECT_EQ (L, (std::vector<std::string> {"Name: file.bin", "Entry: 77", "Volume: " + std::to_string (Vol) + " NTFS",
                                           "Size: 1234 bytes"}));

  // A bare name is looked for by name and entry number.
  WINDOW_HEADER *ByName = T->OpenAttributesWindow ((UINT8) Vol, (UINT32) St.st_ino, (const CHAR8 *) "FILE.BIN", 0);
  ASSERT_NE (ByName, nullptr);
  EXPECT_EQ (Lines (ByName)[3], "Size: 1234 bytes");
  WINDOW_HEADER *Wrong = T->OpenAttributesWindow ((UINT8) Vol, (UINT32) St.st_ino + 1, (const CHAR8 *) "file.bin", 0);
  ASSERT_NE (Wrong, nullptr);
  EXPECT_EQ (Lines (Wrong).back (), "Not found on the volume");

  // No volume, no text: no window.
  EXPECT_TRUE (T->OpenAttributesWindow (20, 1, (const CHAR8 *) "\\x", 0) == nullptr &&
               T->OpenAttributesWindow ((UINT8) Vol, 1, nullptr, 0) == nullptr);
  EXPECT_EQ (Env ().ntfs ()->WindowsOpened (), 3u);

  Env ().windows ().SendSysCommand (W, SYSCMD_CLOSE);
  Env ().windows ().PumpMessages ();
  EXPECT_FALSE (Env ().windows ().IsWindow (W));
}

}  // namespace
