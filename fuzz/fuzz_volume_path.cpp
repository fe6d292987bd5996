// Fuzz target: volume paths, opened on a volume folder that holds "a/b" and
// links leading out of it. Whatever the bytes, an accepted path splits into
// plain components (no "..", ".", empty or "/"-holding one), and whatever it
// names through the file driver lies inside the folder: no link leading out
// is ever passed through.
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "env/files/file_driver.h"
#include "env/files/volume_path.h"
#include "env/host/environment.h"
#include "env/host/folder_fs.h"

namespace {

struct Volume {
  env::Firmware Fw;
  std::unique_ptr<env::FileDriver> Files;
  int Number = -1;
  std::string Outside;
};

// A volume folder holding "a/b/inside.txt", links "out" (to a folder outside
// holding "secret.txt") and "up" (relative, above the folder), and "inner" (to "a").
Volume &TheVolume () {
  static Volume *V = [] {
    auto *Made = new Volume;
    char Pattern[] = "/tmp/surveyor-fuzz-XXXXXX";
    std::string Root = mkdtemp (Pattern) ? Pattern : "/tmp";
    char OutsidePattern[] = "/tmp/surveyor-fuzz-out-XXXXXX";
    Made->Outside = mkdtemp (OutsidePattern) ? OutsidePattern : "/tmp";
    mkdir ((Root + "/a").c_str (), 0755);
    mkdir ((Root + "/a/b").c_str (), 0755);
    if (FILE *F = fopen ((Root + "/a/b/inside.txt").c_str (), "w")) fclose (F);
    if (FILE *F = fopen ((Made->Outside + "/secret.txt").c_str (), "w")) fclose (F);
    symlink (Made->Outside.c_str (), (Root + "/out").c_str ());
    symlink ("../../..", (Root + "/a/up").c_str ());
    symlink ("a", (Root + "/inner").c_str ());
    Made->Files = std::make_unique<env::FileDriver> (nullptr, 9);
    env::VolumeSpec Spec;
    Spec.Folder = Root;
    Made->Number = env::MountFolder (*Made->Files, Spec);
    return Made;
  }();
  return *V;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  std::string Path (reinterpret_cast<const char *> (Data), Size);   // stops at the first NUL when used
  std::vector<std::string> Components;
  if (env::SplitVolumePath (Path.c_str (), Components)) {
    for (const std::string &Part : Components)
      if (Part.empty () || Part == "." || Part == ".." || Part.find ('/') != std::string::npos) __builtin_trap ();
  }
  Volume &V = TheVolume ();
  env::NodeInfo Info;
  std::shared_ptr<env::FsNode> Node = V.Files->OpenPath (V.Number, Path.c_str (), &Info);
  if (!Node) return 0;
  // The only thing outside is the secret file: reaching it would be an escape.
  struct stat Secret;
  if (stat ((V.Outside + "/secret.txt").c_str (), &Secret) == 0 && !Info.Link &&
      Info.EntryWord == static_cast<uint32_t> (Secret.st_ino) && Info.Kind == env::NodeKind::File)
    __builtin_trap ();
  std::vector<env::ListedEntry> Entries;
  env::ListGaps Gaps;
  if (Info.Kind == env::NodeKind::Directory && Node->List (Entries, Gaps))
    for (const env::ListedEntry &E : Entries)
      if (E.Name == "secret.txt") __builtin_trap ();
  return 0;
}
