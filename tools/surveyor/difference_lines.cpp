#include "tools/surveyor/difference_lines.h"

#include <cstring>

#include "compare/compare_texts.h"
#include "env/gui/gbk.h"

namespace surveyor {

// Where a fixed text stands in a line:
//   Message  [two spaces] subject " - " text    (a number may stand for %d)
//   Suffix   subject text                        (the text begins with " - ")
//   Root     text, with the subject for %a
//   Whole    the text alone
enum class Shape { Message, Suffix, Root, Whole };

struct JobText {
  const CHAR8 *Bytes;
  Shape Form;
  Finding What;
  const char *English;   // %d: the number; %a: the subject
};

namespace {

constexpr char kSeparator[] = " - ";

const JobText kTexts[] = {
    {CmpTextHeadingSuffix, Shape::Suffix, Finding::Heading, " - folder contents changed"},
    {CmpTextReadError, Shape::Message, Finding::Unreadable, "file read error"},
    {CmpTextContentsDiffer, Shape::Message, Finding::Changed, "file contents differ"},
    {CmpTextOpenFailed, Shape::Message, Finding::Unreadable, "could not open the file"},
    {CmpTextInfoFailed, Shape::Message, Finding::Unreadable, "could not read the file's information"},
    {CmpTextBackupOpenFailed, Shape::Message, Finding::Unreadable, "could not open the backup file"},
    {CmpTextBackupInfoFailed, Shape::Message, Finding::Unreadable, "could not read the backup file's information"},
    {CmpTextIsADirectory, Shape::Message, Finding::KindDiffers, "a file on one side, a folder on the other"},
    {CmpTextFileChanged, Shape::Message, Finding::Changed, "file changed (size or time)"},
    {CmpTextFolderOpenFailed, Shape::Message, Finding::Unreadable, "could not open the folder"},
    {CmpTextBackupFolderOpenFailed, Shape::Message, Finding::Unreadable, "could not open the backup folder"},
    {CmpTextFolderUnusable, Shape::Message, Finding::Unreadable, "the folder cannot be read"},
    {CmpTextBackupFolderUnusable, Shape::Message, Finding::Unreadable, "the backup folder cannot be read"},
    {CmpTextTypeDiffers, Shape::Message, Finding::KindDiffers, "not of the same kind as in the backup"},
    {CmpTextSourceEmpty, Shape::Message, Finding::Deleted, "folder is empty, the backup has %d files"},
    {CmpTextBackupEmpty, Shape::Message, Finding::New, "folder has %d new files, the backup folder is empty"},
    {CmpTextFolderDeleted, Shape::Message, Finding::Deleted, "folder deleted"},
    {CmpTextFileDeleted, Shape::Message, Finding::Deleted, "file deleted"},
    {CmpTextFolderNew, Shape::Message, Finding::New, "new folder"},
    {CmpTextFileNew, Shape::Message, Finding::New, "new file"},
    {CmpTextRootMissing, Shape::Root, Finding::SourceMissing, "%a does not exist"},
    {CmpTextRootUnusable, Shape::Root, Finding::SourceMissing, "%a cannot be read"},
    {CmpTextRootMissingInBackup, Shape::Root, Finding::New, "%a does not exist in the backup"},
    {CmpTextRootBackupUnusable, Shape::Root, Finding::Unreadable, "the backup of %a cannot be read"},
    {CmpTextRootTypeDiffers, Shape::Root, Finding::KindDiffers, "%a is a file on one side, a folder on the other"},
    {CmpTextRootSizeDiffers, Shape::Root, Finding::Changed, "%a differs in size"},
    {CmpTextCompareFailed, Shape::Whole, Finding::Failed, "the comparison failed"},
};

// A text split at its placeholder (%a or %d); After is empty without one.
struct Pieces {
  std::string Before, After;
  bool HasPlaceholder = false;
};

Pieces Split (const char *Text) {
  Pieces Out;
  std::string Whole = Text;
  size_t At = Whole.find ('%');
  Out.Before = Whole.substr (0, At);
  if (At != std::string::npos) {
    Out.After = Whole.substr (At + 2);
    Out.HasPlaceholder = true;
  }
  return Out;
}

Pieces Split (const JobText &Text) { return Split (reinterpret_cast<const char *> (Text.Bytes)); }

bool EndsWith (const std::string &Text, size_t End, const std::string &Tail) {
  return End >= Tail.size () && Text.compare (End - Tail.size (), Tail.size (), Tail) == 0;
}

bool IsDigit (char C) { return C >= '0' && C <= '9'; }

// The subject of a Message or Suffix line that ends at SubjectEnd.
void TakeSubject (const std::string &Line, size_t SubjectEnd, DifferenceLine &Out) {
  Out.Indented = Line.compare (0, 2, "  ") == 0 && SubjectEnd >= 2;
  size_t Start = Out.Indented ? 2 : 0;
  Out.Subject = Line.substr (Start, SubjectEnd - Start);
}

bool Match (const std::string &Line, const JobText &Text, DifferenceLine &Out) {
  Pieces P = Split (Text);
  switch (Text.Form) {
    case Shape::Whole:
      return Line == P.Before;
    case Shape::Root:
      if (Line.size () < P.Before.size () + P.After.size () || Line.compare (0, P.Before.size (), P.Before) != 0 ||
          !EndsWith (Line, Line.size (), P.After))
        return false;
      Out.Subject = Line.substr (P.Before.size (), Line.size () - P.Before.size () - P.After.size ());
      return true;
    case Shape::Suffix:
      if (!EndsWith (Line, Line.size (), P.Before)) return false;
      TakeSubject (Line, Line.size () - P.Before.size (), Out);
      return true;
    case Shape::Message:
      break;
  }
  size_t End = Line.size ();
  if (P.HasPlaceholder) {
    if (!EndsWith (Line, End, P.After)) return false;
    size_t Digits = End - P.After.size ();
    while (Digits > 0 && IsDigit (Line[Digits - 1])) Digits--;
    size_t NumberEnd = End - P.After.size ();
    if (Digits == NumberEnd) return false;
    Out.Number = Line.substr (Digits, NumberEnd - Digits);
    End = Digits;
  }
  std::string Head = kSeparator + P.Before;
  if (!EndsWith (Line, End, Head)) return false;
  size_t SubjectEnd = End - Head.size ();
  Out.TextBytes = Line.substr (SubjectEnd + std::strlen (kSeparator));
  TakeSubject (Line, SubjectEnd, Out);
  return true;
}

std::string Replace (std::string Text, const char *Placeholder, const std::string &By) {
  size_t At = Text.find (Placeholder);
  if (At != std::string::npos) Text.replace (At, 2, By);
  return Text;
}

}  // namespace

std::string ReadablePath (std::string Path) {
  if (Path.compare (0, 2, "\\\\") == 0) Path.erase (0, 1);
  return Path;
}

bool ParseDifferenceLine (const std::string &Line, DifferenceLine &Out) {
  for (const JobText &Text : kTexts) {
    DifferenceLine Found;
    if (!Match (Line, Text, Found)) continue;
    Found.Text = &Text;
    Out = Found;
    return true;
  }
  return false;
}

Finding FindingOf (const DifferenceLine &Line) { return Line.Text->What; }

bool IsOpenFailure (const DifferenceLine &Line) { return Line.Text->Bytes == CmpTextOpenFailed; }

std::string TellDifference (const DifferenceLine &Line, Language In, const std::string &Subject) {
  std::string Who = ReadablePath (Subject.empty () ? Line.Subject : Subject);
  const JobText &Text = *Line.Text;
  if (In == Language::English) {
    std::string Said = Replace (Replace (Text.English, "%d", Line.Number), "%a", Who);
    switch (Text.Form) {
      case Shape::Message:
        return (Line.Indented ? "  " : "") + Who + kSeparator + Said;
      case Shape::Suffix:
        return (Line.Indented ? "  " : "") + Who + Said;
      case Shape::Root:
      case Shape::Whole:
        return Said;
    }
  }
  // The job's own words, as UTF-8; the names stay the host's bytes.
  Pieces P = Split (Text);
  switch (Text.Form) {
    case Shape::Message:
      return (Line.Indented ? "  " : "") + Who + kSeparator + env::GbkToUtf8 (Line.TextBytes);
    case Shape::Suffix:
      return (Line.Indented ? "  " : "") + Who + env::GbkToUtf8 (P.Before);
    case Shape::Root:
      return env::GbkToUtf8 (P.Before) + Who + env::GbkToUtf8 (P.After);
    case Shape::Whole:
      break;
  }
  return env::GbkToUtf8 (P.Before);
}

}  // namespace surveyor
