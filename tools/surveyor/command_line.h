// The surveyor program's command line.
#pragma once

#include <string>
#include <vector>

#include "env/host/environment.h"
#include "tools/surveyor/difference_lines.h"

namespace surveyor {

// The smallest screen --screen accepts.
constexpr uint16_t kMinScreenWidth = 320;
constexpr uint16_t kMinScreenHeight = 240;

struct CommandLine {
  std::string Command;                    // browse, run, compare
  std::vector<std::string> Arguments;     // folders, scripts, or SOURCE BACKUP [PATH]
  std::vector<env::VolumeSpec> Volumes;   // --volume options, in order
  uint16_t ScreenWidth = 1024;
  uint16_t ScreenHeight = 768;
  std::string SettingsFile;               // empty: the per-user default
  std::string SystemDir;                  // empty: the built assets
  bool WithSettings = true;
  bool WithNtfs = true;
  bool CompareContents = false;
  Language Lang = Language::English;     // compare: words of the difference lines
  unsigned Frames = 0;                    // browse: stop after this many frames (0: when closed)
  std::string ShotAtExit;                 // browse: screenshot written when the desktop ends
  int Scale = 1;                          // browse: window pixels per screen pixel
  bool Help = false;
};

// Parses argv; on a mistake returns false with a message in Error. Without
// --lang the language follows the locale (LC_ALL, LC_MESSAGES, LANG):
// Chinese for a "zh" locale, English otherwise.
bool ParseCommandLine (int Argc, char **Argv, CommandLine &Out, std::string &Error);

// Parses "DIR[,label=TEXT][,flags=N][,kind=N][,fs=N]" (numbers decimal or 0x hex).
bool ParseVolumeSpec (const std::string &Text, env::VolumeSpec &Out, std::string &Error);

extern const char *const UsageText;

}  // namespace surveyor
