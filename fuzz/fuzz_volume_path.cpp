// Fuzz target: volume paths. Whatever the bytes, an accepted path names a
// place inside the volume's folder: no "..", ".", empty or "/"-holding
// component survives, the host path starts with the folder, and a symbolic
// link leading out of the folder is never passed through.
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "env/files/host_path.h"

namespace {

// A volume folder holding "a/b" and a link "out" to the file system's root.
const std::string &Root () {
  static const std::string Folder = [] {
    char Pattern[] = "/tmp/surveyor-fuzz-XXXXXX";
    std::string Made = mkdtemp (Pattern) ? Pattern : "/tmp";
    std::string Real;
    if (char *R = realpath (Made.c_str (), nullptr)) {
      Real = R;
      free (R);
    }
    std::string A = Real + "/a", B = A + "/b";
    mkdir (A.c_str (), 0755);
    mkdir (B.c_str (), 0755);
    symlink ("/", (Real + "/out").c_str ());
    symlink ("a", (Real + "/inner").c_str ());
    return Real;
  }();
  return Folder;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  std::string Path (reinterpret_cast<const char *> (Data), Size);   // stops at the first NUL when used
  env::ResolvedPath Out;
  if (!env::ResolveVolumePath (Root (), Path.c_str (), Out)) return 0;
  if (Out.Host.compare (0, Root ().size (), Root ()) != 0) __builtin_trap ();
  if (Out.Host.size () > Root ().size () && Out.Host[Root ().size ()] != '/') __builtin_trap ();
  for (const std::string &Part : Out.Components) {
    if (Part.empty () || Part == "." || Part == ".." || Part.find ('/') != std::string::npos) __builtin_trap ();
  }
  if (!Out.Components.empty () && Out.Components.front () == "out") __builtin_trap ();
  return 0;
}
