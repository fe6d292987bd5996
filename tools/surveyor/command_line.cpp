#include "tools/surveyor/command_line.h"

#include <cstdlib>
#include <cstring>

namespace surveyor {

const char *const UsageText =
    "usage: surveyor [OPTIONS] browse [DIR...]          desktop window; file manager on the first volume\n"
    "       surveyor [OPTIONS] run SCRIPT [SCRIPT...]    headless scripted session (\"-\" reads standard input)\n"
    "       surveyor [OPTIONS] compare SOURCE BACKUP [PATH] [--contents] [--lang en|zh]\n"
    "                                                    checks a backup folder against its source\n"
    "\n"
    "options:\n"
    "  --volume DIR[,label=TEXT][,flags=N][,kind=N][,fs=N]\n"
    "                     mounts DIR as the next volume (0, 1, 2 ...); flags bit 7 = write-protected,\n"
    "                     0x81/0x82 = first/second comparison volume; fs = file-system type (1 FAT32)\n"
    "  --screen WxH       screen size (default 1024x768)\n"
    "  --settings FILE    file of the settings service (default ~/.config/surveyor/settings.ini)\n"
    "  --system DIR       folder holding efi/kivora/... (default: the built assets)\n"
    "  --no-settings      run without the settings service (window positions are not kept)\n"
    "  --no-ntfs          run without the NTFS service\n"
    "  --contents         compare: also compare file contents byte by byte\n"
    "  --lang en|zh       compare: difference lines in English or in the driver's own Chinese texts\n"
    "                     (default: Chinese when the locale is, English otherwise)\n"
    "  --scale N          browse: show every screen pixel as NxN pixels\n"
    "  --frames N         browse: end after N frames (for unattended runs)\n"
    "  --shot FILE        browse: write a PNG screenshot when the desktop ends\n"
    "  --help             this text\n"
    "\n"
    "With no folder at all, browse and run mount the bundled sample volume.\n"
    "compare exits 0 when everything was checked and is the same, 1 when differences were found,\n"
    "3 when part of the tree could not be checked (whatever else was found; the output names what\n"
    "and why), 2 when the check could not start.\n";

// Chinese when the first locale variable that is set names a Chinese locale.
static Language LocaleLanguage () {
  for (const char *Name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char *Value = std::getenv (Name);
    if (Value != nullptr && *Value != 0)
      return std::strncmp (Value, "zh", 2) == 0 ? Language::Chinese : Language::English;
  }
  return Language::English;
}

static bool ParseNumber (const std::string &Text, unsigned Limit, unsigned &Out) {
  if (Text.empty ()) return false;
  char *End = nullptr;
  unsigned long Value = std::strtoul (Text.c_str (), &End, 0);
  if (*End != 0 || Value > Limit) return false;
  Out = static_cast<unsigned> (Value);
  return true;
}

bool ParseVolumeSpec (const std::string &Text, env::VolumeSpec &Out, std::string &Error) {
  Out = env::VolumeSpec ();
  size_t Start = 0;
  bool First = true;
  while (Start <= Text.size ()) {
    size_t Comma = Text.find (',', Start);
    if (Comma == std::string::npos) Comma = Text.size ();
    std::string Part = Text.substr (Start, Comma - Start);
    Start = Comma + 1;
    if (First) {
      if (Part.empty ()) {
        Error = "--volume needs a folder";
        return false;
      }
      Out.Folder = Part;
      First = false;
      continue;
    }
    size_t Equal = Part.find ('=');
    std::string Key = Part.substr (0, Equal), Value = Equal == std::string::npos ? "" : Part.substr (Equal + 1);
    unsigned Number = 0;
    if (Key == "label" && Equal != std::string::npos) {
      Out.Label = Value;
    } else if ((Key == "flags" || Key == "kind" || Key == "fs") && ParseNumber (Value, 255, Number)) {
      (Key == "flags" ? Out.Flags : Key == "kind" ? Out.Kind : Out.FileSystemType) = static_cast<uint8_t> (Number);
    } else {
      Error = "bad volume option \"" + Part + "\" (expected label=TEXT, flags=N, kind=N or fs=N)";
      return false;
    }
  }
  return true;
}

bool ParseCommandLine (int Argc, char **Argv, CommandLine &Out, std::string &Error) {
  Out = CommandLine ();
  Out.Lang = LocaleLanguage ();
  for (int I = 1; I < Argc; I++) {
    std::string Arg = Argv[I];
    auto Next = [&] (std::string &Value) {
      if (I + 1 >= Argc) {
        Error = Arg + " needs a value";
        return false;
      }
      Value = Argv[++I];
      return true;
    };
    std::string Value;
    if (Arg == "--help" || Arg == "-h") {
      Out.Help = true;
    } else if (Arg == "--volume") {
      env::VolumeSpec Spec;
      if (!Next (Value) || !ParseVolumeSpec (Value, Spec, Error)) return false;
      Out.Volumes.push_back (Spec);
    } else if (Arg == "--screen") {
      if (!Next (Value)) return false;
      unsigned W = 0, H = 0;
      size_t X = Value.find ('x');
      if (X == std::string::npos || !ParseNumber (Value.substr (0, X), 65535, W) ||
          !ParseNumber (Value.substr (X + 1), 65535, H) || W < kMinScreenWidth || H < kMinScreenHeight) {
        Error = "--screen wants WxH, at least " + std::to_string (kMinScreenWidth) + "x" +
                std::to_string (kMinScreenHeight);
        return false;
      }
      Out.ScreenWidth = static_cast<uint16_t> (W);
      Out.ScreenHeight = static_cast<uint16_t> (H);
    } else if (Arg == "--settings") {
      if (!Next (Out.SettingsFile)) return false;
    } else if (Arg == "--system") {
      if (!Next (Out.SystemDir)) return false;
    } else if (Arg == "--no-settings") {
      Out.WithSettings = false;
    } else if (Arg == "--no-ntfs") {
      Out.WithNtfs = false;
    } else if (Arg == "--scale" || Arg == "--frames") {
      unsigned Number = 0;
      if (!Next (Value) || !ParseNumber (Value, Arg == "--scale" ? 4 : 1000000, Number) ||
          (Arg == "--scale" && Number == 0)) {
        Error = Arg + " wants a number" + (Arg == "--scale" ? " from 1 to 4" : "");
        return false;
      }
      if (Arg == "--scale")
        Out.Scale = static_cast<int> (Number);
      else
        Out.Frames = Number;
    } else if (Arg == "--shot") {
      if (!Next (Out.ShotAtExit)) return false;
    } else if (Arg == "--contents") {
      Out.CompareContents = true;
    } else if (Arg == "--lang") {
      if (!Next (Value)) return false;
      if (Value != "en" && Value != "zh") {
        Error = "--lang wants en or zh";
        return false;
      }
      Out.Lang = Value == "zh" ? Language::Chinese : Language::English;
    } else if (Arg.size () > 1 && Arg[0] == '-' && Arg != "-") {
      Error = "unknown option " + Arg;
      return false;
    } else if (Out.Command.empty ()) {
      Out.Command = Arg;
    } else {
      Out.Arguments.push_back (Arg);
    }
  }
  if (Out.Help) return true;
  if (Out.Command.empty ()) Out.Command = "browse";
  if (Out.Command != "browse" && Out.Command != "run" && Out.Command != "compare") {
    Error = "unknown command " + Out.Command;
    return false;
  }
  if (Out.Command == "run" && Out.Arguments.empty ()) {
    Error = "run needs at least one script (\"-\" for standard input)";
    return false;
  }
  if (Out.Command == "compare" && (Out.Arguments.size () < 2 || Out.Arguments.size () > 3)) {
    Error = "compare needs SOURCE BACKUP [PATH]";
    return false;
  }
  return true;
}

}  // namespace surveyor
