#include "env/files/host_path.h"

#include <sys/stat.h>

#include <cstring>
#include <filesystem>

namespace env {

bool StaysInside (const std::string &Root, const std::string &HostPath) {
  std::error_code Error;
  std::filesystem::path Real = std::filesystem::canonical (HostPath, Error);
  if (Error) return false;
  const std::string &Text = Real.native ();
  if (Text == Root) return true;
  return Text.size () > Root.size () && Text.compare (0, Root.size (), Root) == 0 &&
         (Root.back () == '/' || Text[Root.size ()] == '/');
}

bool ResolveVolumePath (const std::string &Root, const char *Path, ResolvedPath &Out) {
  if (Path == nullptr) return false;
  size_t Length = 0;
  while (Length <= kVolumePathMax && Path[Length] != '\0') Length++;
  if (Length > kVolumePathMax) return false;

  Out.Components.clear ();
  size_t Pos = 0;
  while (Pos <= Length) {
    size_t End = Pos;
    while (End < Length && Path[End] != '\\') End++;
    std::string Part (Path + Pos, End - Pos);
    Pos = End + 1;
    if (Part.empty () || Part == ".") continue;
    if (Part == "..") {
      if (Out.Components.empty ()) return false;
      Out.Components.pop_back ();
      continue;
    }
    if (Part.find ('/') != std::string::npos) return false;
    Out.Components.push_back (std::move (Part));
  }

  // Build the host path component by component; every symbolic link met on
  // the way must resolve inside the root. The first missing component ends
  // the checks (nothing below it can exist).
  Out.Host = Root;
  bool Exists = true;
  for (const std::string &Part : Out.Components) {
    if (Out.Host.back () != '/') Out.Host += '/';
    Out.Host += Part;
    if (!Exists) continue;
    struct stat Info;
    if (lstat (Out.Host.c_str (), &Info) != 0) {
      Exists = false;
      continue;
    }
    if (S_ISLNK (Info.st_mode) && !StaysInside (Root, Out.Host)) return false;
  }
  return true;
}

}  // namespace env
