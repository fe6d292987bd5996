// The difference lines of a comparison job, as the backup check prints them:
// the job's fixed (GBK) text recognised at the end of a line, what kind of
// finding it is, and the line told again with an English description of that
// text or with the job's own words.
#pragma once

#include <string>

namespace surveyor {

enum class Language { English, Chinese };

// What a difference line says about the entry it names.
enum class Finding {
  Heading,       // a folder whose entries follow (not a difference of its own)
  New,           // only in the source
  Deleted,       // only in the backup
  Changed,       // in both, but not the same
  KindDiffers,   // a folder on one side, a file on the other
  Unreadable,    // could not be opened or read on one side
  SourceMissing, // the compared path itself is missing or unusable in the source
  Failed,        // the job's closing word on a start that failed
};

struct JobText;

// One difference line taken apart: the entry or path it names (Subject, with
// the two spaces of an entry under a heading removed) and the fixed text.
struct DifferenceLine {
  std::string Subject;
  bool Indented = false;     // an entry filed under the heading before it
  const JobText *Text = nullptr;
  std::string Number;        // the number in the text, for the texts that hold one
  std::string TextBytes;     // of a text after " - ": as the line has it (GBK), number included
};

// False when the line ends in none of the job's fixed texts.
bool ParseDifferenceLine (const std::string &Line, DifferenceLine &Out);

Finding FindingOf (const DifferenceLine &Line);
// True for the "could not open the file" text, which a path too long also gives.
bool IsOpenFailure (const DifferenceLine &Line);

// A path of the job as it reads best: paths under the root "\" carry a
// doubled separator ("\\a"), which is made one.
std::string ReadablePath (std::string Path);

// The line again in the given language, naming Subject (raw bytes of the
// host's names) instead of the job's shortened form when it is not empty.
std::string TellDifference (const DifferenceLine &Line, Language In, const std::string &Subject = "");

}  // namespace surveyor
