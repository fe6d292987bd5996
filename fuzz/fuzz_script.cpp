// The script language of the surveyor program: any bytes as a script file.
// Reading must not crash; the words of every line, quoted again and joined,
// must split back into the same words; line numbers must rise; every word is
// also tried as a key name.
#include <stddef.h>
#include <stdint.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "tools/surveyor/key_names.h"
#include "tools/surveyor/script.h"

namespace {

void Check (bool Condition) {
  if (!Condition) std::abort ();
}

std::string Quoted (const std::string &Word) {
  std::string Out = "\"";
  for (char C : Word) Out += C == '"' ? std::string ("\"\"") : std::string (1, C);
  return Out + "\"";
}

const std::string &ScriptFile () {
  static const std::string Name = "/tmp/surveyor-fuzz-script-" + std::to_string (::getpid ());
  return Name;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  {
    std::ofstream Out (ScriptFile (), std::ios::binary | std::ios::trunc);
    Out.write (reinterpret_cast<const char *> (Data), static_cast<std::streamsize> (Size));
  }
  surveyor::Script Script;
  std::string Error;
  if (!surveyor::ReadScript (ScriptFile (), Script, Error)) {
    Check (!Error.empty ());
    return 0;
  }
  unsigned Previous = 0;
  for (const surveyor::ScriptLine &Line : Script.Lines) {
    Check (Line.Number > Previous && !Line.Words.empty ());
    Previous = Line.Number;
    std::string Joined;
    for (const std::string &Word : Line.Words) {
      Check (Word.find ('\n') == std::string::npos);
      Joined += Quoted (Word) + " ";
      surveyor::KeyStroke Key;
      surveyor::ParseKeyName (Word, Key);
    }
    std::vector<std::string> Again;
    Check (surveyor::SplitScriptLine (Joined, Again, Error));
    Check (Again == Line.Words);
  }
  return 0;
}
