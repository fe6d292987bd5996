#include "tools/surveyor/compare_command.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "compare/compare_records.h"
#include "tools/surveyor/backup_check.h"
#include "tools/surveyor/check_words.h"
#include "tools/surveyor/session.h"

namespace surveyor {

namespace {

enum ExitStatus { kSame = 0, kDiffers = 1, kNotStarted = 2, kIncomplete = 3 };

ExitStatus StatusOf (const CheckTally &Tally) {
  if (Tally.SourceMissing) return kNotStarted;
  if (!Tally.Complete ()) return kIncomplete;
  if (Tally.Differences () > 0) return kDiffers;
  return Tally.Started ? kSame : kNotStarted;
}

// The volume path compared: "/" taken for "\", one leading "\".
std::string VolumePath (const CommandLine &Line) {
  std::string Path = Line.Arguments.size () > 2 ? Line.Arguments[2] : "\\";
  for (char &C : Path)
    if (C == '/') C = '\\';
  if (Path.empty () || Path[0] != '\\') Path = "\\" + Path;
  return Path;
}

}  // namespace

int RunCompareCommand (const CommandLine &Line) {
  // Nothing is drawn: the smallest screen spares filling a frame buffer.
  CommandLine Unseen = Line;
  Unseen.ScreenWidth = kMinScreenWidth;
  Unseen.ScreenHeight = kMinScreenHeight;
  Session S (Unseen);
  std::string Error;
  env::VolumeSpec Source, Backup;
  Source.Folder = Line.Arguments[0];
  Backup.Folder = Line.Arguments[1];
  if (S.Mount (Source, Error) != 0 || S.Mount (Backup, Error) != 1 || !S.LoadDriver (Error)) {
    std::fprintf (stderr, "surveyor: %s\n", Error.c_str ());
    return kNotStarted;
  }
  std::string Path = VolumePath (Line);
  if (Path.size () >= COMPARE_MAX_ROOT_PATH) {
    std::fprintf (stderr, "surveyor: the path compared must be shorter than %d bytes\n", COMPARE_MAX_ROOT_PATH);
    return kNotStarted;
  }
  std::printf ("Checking %s against the backup %s, path %s%s\n", Source.Folder.c_str (), Backup.Folder.c_str (),
               Path.c_str (), Line.CompareContents ? ", contents included" : " (sizes and times)");

  auto Start = std::chrono::steady_clock::now ();
  BackupCheck Check (S, Line.Lang, stdout, isatty (STDERR_FILENO) ? stderr : nullptr);
  CheckTally Tally = Check.Run (Path, Line.CompareContents);
  double Seconds = std::chrono::duration<double> (std::chrono::steady_clock::now () - Start).count ();
  std::printf ("\n");
  for (const std::string &Text : Summary (Tally, Seconds)) std::printf ("%s\n", Text.c_str ());
  return StatusOf (Tally);
}

}  // namespace surveyor
