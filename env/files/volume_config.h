// The small text file on the boot volume that says which volumes are the
// comparison volumes ("\efi\kivora\surveyor.cfg"), so that a backup stick
// can be checked against a disk before an operating system boots:
//
//   # the disk to check, shown as drive C:, and its backups, by volume label
//   source = DATA
//   compare1 = BACKUP
//   compare2 = OLD BACKUP
//   # the time of each frame on the serial port (for measurements)
//   timing = on
//
// Keys as in the resource file (resource_file.h); labels compare without
// ASCII case. The volume labelled source is labelled "C:" (the file manager
// compares only a drive C: with its backups), compare1 gets flags 0x81 and
// compare2 0x82.
#pragma once

#include <cstdint>
#include <string>

#include "env/files/volume_fs.h"

namespace env {

constexpr const char *kVolumeConfigPath = "\\efi\\kivora\\surveyor.cfg";

struct VolumeConfig {
  std::string Source, Compare1, Compare2;
  bool Timing = false;
  // The label a volume of this label is shown with.
  std::string LabelOf (const std::string &Label) const;
  // The flags of a volume of this label (0 for an ordinary one).
  uint8_t FlagsOf (const std::string &Label) const;
};

// Reads the file from a volume; no file (or a broken one) names no volume.
VolumeConfig ReadVolumeConfig (VolumeFs &Volume);
VolumeConfig ParseVolumeConfig (const std::string &Text);

}  // namespace env
