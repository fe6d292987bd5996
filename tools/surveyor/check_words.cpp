#include "tools/surveyor/check_words.h"

#include <cstdio>

#include "compare/compare_records.h"

namespace surveyor {

namespace {

constexpr size_t kProgressColumns = 78;

// 1234567 as "1,234,567".
std::string Grouped (uint64_t Number) {
  std::string Digits = std::to_string (Number), Out;
  for (size_t I = 0; I < Digits.size (); I++) {
    if (I > 0 && (Digits.size () - I) % 3 == 0) Out += ',';
    Out += Digits[I];
  }
  return Out;
}

std::string Count (uint64_t Number, const char *One, const char *Many) {
  return Grouped (Number) + " " + (Number == 1 ? One : Many);
}

std::string Joined (const std::vector<std::string> &Parts, const char *By) {
  std::string Out;
  for (const std::string &Part : Parts) Out += (Out.empty () ? "" : By) + Part;
  return Out;
}

// The nouns of each reason a listing leaves entries out, by LeftOutReason.
struct Nouns {
  const char *One, *Many;
};
const Nouns kLeftOutNouns[kLeftOutReasons] = {
    {"name longer than 191 bytes", "names longer than 191 bytes"},
    {"name holding a backslash", "names holding a backslash"},
    {"entry the file driver could not read (a link leading nowhere or out of the volume, a device, a pipe)",
     "entries the file driver could not read (links leading nowhere or out of the volume, devices, pipes)"},
    {"entry beyond the 65,535 a folder can list", "entries beyond the 65,535 a folder can list"},
    {"folder that could not be listed", "folders that could not be listed"},
};

const char *SideName (int Side) { return Side == 0 ? "source" : "backup"; }

}  // namespace

std::string NotCheckedTooDeep () { return " - not checked: more than 31 levels below the path compared"; }

std::string NotCheckedLongPath () { return " - not checked: its path is longer than 511 bytes"; }

std::string PathTooLongRemark () { return " (its path is longer than 511 bytes)"; }

std::string NotCheckedLeftOut (int Side, const LeftOutCounts &Counts) {
  if (Counts[kUnlistedFolder] != 0)
    return std::string (" - not checked: the ") + SideName (Side) + " folder could not be listed";
  std::vector<std::string> Parts;
  for (size_t Reason = 0; Reason < Counts.size (); Reason++)
    if (Counts[Reason] != 0)
      Parts.push_back (Count (Counts[Reason], kLeftOutNouns[Reason].One, kLeftOutNouns[Reason].Many));
  return std::string (" - not checked in the ") + SideName (Side) + ": " + Joined (Parts, ", ");
}

std::string WalkProgress (const std::string &Folder, uint32_t Items) {
  std::string Count = "  (" + Grouped (Items) + " checked)";
  size_t Room = kProgressColumns > Count.size () ? kProgressColumns - Count.size () : 0;
  std::string Shown = Folder.size () <= Room ? Folder : "..." + Folder.substr (Folder.size () - Room + 3);
  return Shown + Count;
}

std::vector<std::string> Summary (const CheckTally &Tally, double Seconds) {
  std::vector<std::string> Lines;
  if (!Tally.Started && (Tally.SourceMissing || (Tally.Differences () == 0 && Tally.Complete ()))) {
    Lines.push_back (Tally.SourceMissing ? "The check could not start: the path is missing or unreadable in the source."
                                         : "The check could not start.");
    return Lines;
  }
  char Time[32];
  std::snprintf (Time, sizeof (Time), "%.2f", Seconds);
  std::string Found = Count (Tally.Items, "entry", "entries") + " checked in " + Time + " s: ";
  if (Tally.Differences () == 0) {
    Found += "no differences.";
  } else {
    std::vector<std::string> Kinds;
    if (Tally.New) Kinds.push_back (Grouped (Tally.New) + " new");
    if (Tally.Deleted) Kinds.push_back (Grouped (Tally.Deleted) + " deleted");
    if (Tally.Changed) Kinds.push_back (Grouped (Tally.Changed) + " changed");
    if (Tally.KindDiffers) Kinds.push_back (Grouped (Tally.KindDiffers) + " of another kind");
    Found += Count (Tally.Differences (), "difference", "differences") + " (" + Joined (Kinds, ", ") + ").";
  }
  Lines.push_back (Found);
  if (Tally.Complete ()) return Lines;

  std::vector<std::string> Missed;
  if (Tally.Unreadable)
    Missed.push_back (Count (Tally.Unreadable, "entry or folder that could not be read",
                             "entries or folders that could not be read"));
  if (Tally.LongPaths)
    Missed.push_back (Count (Tally.LongPaths, "file or folder whose path is longer than 511 bytes",
                             "files or folders whose paths are longer than 511 bytes"));
  if (Tally.TooDeep)
    Missed.push_back (Count (Tally.TooDeep, "folder more than 31 levels deep", "folders more than 31 levels deep"));
  for (size_t Reason = 0; Reason < kLeftOutReasons; Reason++) {
    uint64_t Source = Tally.LeftOut[0][Reason], Backup = Tally.LeftOut[1][Reason];
    if (Source + Backup == 0) continue;
    Missed.push_back (Count (Source + Backup, kLeftOutNouns[Reason].One, kLeftOutNouns[Reason].Many) + " (source " +
                      Grouped (Source) + ", backup " + Grouped (Backup) + ")");
  }
  if (Tally.Overflowed) {
    std::string Full = "the list of differences filled up (" + Grouped (COMPARE_MAX_ENTRIES) + " entries)";
    if (Tally.Unlisted) Full += ": at least " + Count (Tally.Unlisted, "more difference was", "more differences were") +
                                " found but not listed";
    if (!Tally.StoppedIn.empty ())
      Full += "; the walk stopped in " + Tally.StoppedIn + ", " + Count (Tally.NotReached, "entry", "entries") +
              " of its open folders not reached";
    Missed.push_back (Full);
  }
  Lines.push_back ("Not checked: " + Joined (Missed, "; ") + ".");
  Lines.push_back ("The check is incomplete.");
  return Lines;
}

}  // namespace surveyor
