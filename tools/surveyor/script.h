// The script language of scripted sessions: one command a line, "#" starts a
// comment, arguments holding spaces in double quotes.
#pragma once

#include <string>
#include <vector>

namespace surveyor {

struct ScriptLine {
  unsigned Number = 0;                 // 1-based line number in its file
  std::vector<std::string> Words;      // command first
};

struct Script {
  std::string Name;                    // file name, or "-" for standard input
  std::vector<ScriptLine> Lines;
};

// Splits one line into words; false with a message for an unterminated quote.
bool SplitScriptLine (const std::string &Text, std::vector<std::string> &Words, std::string &Error);
// Reads a script file ("-" reads standard input); false with a message.
bool ReadScript (const std::string &Name, Script &Out, std::string &Error);

}  // namespace surveyor
