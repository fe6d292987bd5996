#include "tools/surveyor/browse_command.h"
#include "tools/surveyor/session.h"

namespace surveyor {

bool MountVolumes (Session &S, const CommandLine &Line, std::string &Error) {
  std::vector<env::VolumeSpec> Specs = Line.Volumes;
  for (const std::string &Folder : Line.Arguments) {
    env::VolumeSpec Spec;
    if (!ParseVolumeSpec (Folder, Spec, Error)) return false;
    Specs.push_back (Spec);
  }
  if (Specs.empty ()) {
    env::VolumeSpec Sample;
    Sample.Folder = SampleVolumeDir ();
    Sample.Label = "Sample";
    Specs.push_back (Sample);
  }
  for (const env::VolumeSpec &Spec : Specs)
    if (S.Mount (Spec, Error) < 0) return false;
  return true;
}

}  // namespace surveyor
