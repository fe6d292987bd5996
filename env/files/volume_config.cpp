#include "env/files/volume_config.h"

#include <vector>

#include "env/ascii_case.h"
#include "env/files/file_driver.h"
#include "env/files/resource_file.h"
#include "env/files/volume_path.h"
#include "services/file_driver.h"

namespace env {

namespace {

constexpr size_t kMaxConfigFile = 64 * 1024;

}  // namespace

uint8_t VolumeConfig::FlagsOf (const std::string &Label) const {
  if (Label.empty ()) return 0;
  if (EqualIgnoringAsciiCase (Label, Compare1)) return VOLUME_FLAG_COMPARE_1;
  if (EqualIgnoringAsciiCase (Label, Compare2)) return VOLUME_FLAG_COMPARE_2;
  return 0;
}

std::string VolumeConfig::LabelOf (const std::string &Label) const {
  return !Label.empty () && EqualIgnoringAsciiCase (Label, Source) ? std::string ("C:") : Label;
}

VolumeConfig ParseVolumeConfig (const std::string &Text) {
  VolumeConfig Config;
  LookupResourceString (Text, nullptr, "source", Config.Source);
  LookupResourceString (Text, nullptr, "compare1", Config.Compare1);
  LookupResourceString (Text, nullptr, "compare2", Config.Compare2);
  std::string Timing;
  LookupResourceString (Text, nullptr, "timing", Timing);
  Config.Timing = EqualIgnoringAsciiCase (Timing, "on") || Timing == "1";
  return Config;
}

VolumeConfig ReadVolumeConfig (VolumeFs &Volume) {
  std::vector<std::string> Path;
  SplitVolumePath (kVolumeConfigPath, Path);
  std::unique_ptr<FsNode> Node = Volume.OpenRoot ();
  for (const std::string &Part : Path)
    if (Node) Node = Node->Open (Part);
  std::vector<uint8_t> Bytes;
  if (!Node || !ReadWhole (*Node, Bytes, kMaxConfigFile)) return {};
  return ParseVolumeConfig (std::string (Bytes.begin (), Bytes.end ()));
}

}  // namespace env
