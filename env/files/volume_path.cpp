#include "env/files/volume_path.h"

namespace env {

bool SplitVolumePath (const char *Path, std::vector<std::string> &Components) {
  Components.clear ();
  if (Path == nullptr) return false;
  size_t Length = 0;
  while (Length <= kVolumePathMax && Path[Length] != '\0') Length++;
  if (Length > kVolumePathMax) return false;
  Components.reserve (8);
  size_t Pos = 0;
  while (Pos <= Length) {
    size_t End = Pos;
    while (End < Length && Path[End] != '\\') End++;
    const char *Part = Path + Pos;
    size_t Size = End - Pos;
    Pos = End + 1;
    if (Size == 0 || (Size == 1 && Part[0] == '.')) continue;
    if (Size == 2 && Part[0] == '.' && Part[1] == '.') {
      if (Components.empty ()) return false;
      Components.pop_back ();
      continue;
    }
    for (size_t I = 0; I < Size; I++)
      if (Part[I] == '/') return false;
    Components.emplace_back (Part, Size);
  }
  return true;
}

}  // namespace env
