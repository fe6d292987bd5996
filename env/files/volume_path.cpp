#include "env/files/volume_path.h"

namespace env {

bool SplitVolumePath (const char *Path, std::vector<std::string> &Components) {
  Components.clear ();
  if (Path == nullptr) return false;
  size_t Length = 0;
  while (Length <= kVolumePathMax && Path[Length] != '\0') Length++;
  if (Length > kVolumePathMax) return false;
  size_t Pos = 0;
  while (Pos <= Length) {
    size_t End = Pos;
    while (End < Length && Path[End] != '\\') End++;
    std::string Part (Path + Pos, End - Pos);
    Pos = End + 1;
    if (Part.empty () || Part == ".") continue;
    if (Part == "..") {
      if (Components.empty ()) return false;
      Components.pop_back ();
      continue;
    }
    if (Part.find ('/') != std::string::npos) return false;
    Components.push_back (std::move (Part));
  }
  return true;
}

}  // namespace env
