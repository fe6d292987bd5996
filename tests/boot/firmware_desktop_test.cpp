// The file manager on real firmware: the disk image booted under QEMU and
// OVMF, driven by keys over QMP, its screen compared with golden images and
// its disks read with mtools afterwards.
#include "boot/boot_support.h"

namespace fs = std::filesystem;

TEST_F (FirmwareBoot, ShowsTheFileManagerOfTheBootVolume) {
  std::string Output;
  fs::path Shot = Scratch ("main.png");
  ASSERT_EQ (Boot ({"--shot", Shot.string ()}, Output), 0) << Output;
  EXPECT_NE (Output.find ("boot: ready after"), std::string::npos) << Output;
  EXPECT_EQ (MatchScreen ("firmware_main_window", Shot), "");
}
