#include "tools/surveyor/script.h"

#include <fstream>
#include <iostream>
#include <sstream>

namespace surveyor {

bool SplitScriptLine (const std::string &Text, std::vector<std::string> &Words, std::string &Error) {
  Words.clear ();
  size_t I = 0;
  while (I < Text.size ()) {
    char C = Text[I];
    if (C == ' ' || C == '\t' || C == '\r') {
      I++;
      continue;
    }
    if (C == '#') break;
    std::string Word;
    if (C == '"') {
      // A quoted word; "" inside it stands for one quote.
      I++;
      bool Closed = false;
      while (I < Text.size ()) {
        if (Text[I] == '"') {
          if (I + 1 < Text.size () && Text[I + 1] == '"') {
            Word += '"';
            I += 2;
            continue;
          }
          Closed = true;
          I++;
          break;
        }
        Word += Text[I++];
      }
      if (!Closed) {
        Error = "unterminated quote";
        return false;
      }
    } else {
      while (I < Text.size () && Text[I] != ' ' && Text[I] != '\t' && Text[I] != '\r') Word += Text[I++];
    }
    Words.push_back (Word);
  }
  return true;
}

bool ReadScript (const std::string &Name, Script &Out, std::string &Error) {
  Out = Script ();
  Out.Name = Name;
  std::ifstream File;
  std::istream *In = &std::cin;
  if (Name != "-") {
    File.open (Name);
    if (!File) {
      Error = "cannot read script " + Name;
      return false;
    }
    In = &File;
  }
  std::string Text;
  unsigned Number = 0;
  while (std::getline (*In, Text)) {
    Number++;
    ScriptLine Line;
    Line.Number = Number;
    if (!SplitScriptLine (Text, Line.Words, Error)) {
      Error = Name + ":" + std::to_string (Number) + ": " + Error;
      return false;
    }
    if (!Line.Words.empty ()) Out.Lines.push_back (Line);
  }
  return true;
}

}  // namespace surveyor
