// One backup check: a comparison job of the driver, run to its end with timer
// ticks back to back, whose reports arrive at a window of the check's own.
// Difference lines are printed as they come (in the chosen language) and
// tallied; so is everything the job could not check, which the job itself
// passes over in silence: folders too deep or with too long a path, entries
// the file driver left out of its listings, and a list of differences that
// filled up before the walk was over.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include "compare/compare_records.h"
#include "services/file_driver.h"
#include "tools/surveyor/difference_lines.h"
#include "tools/surveyor/session.h"

namespace surveyor {

// What the file driver's listings left out, by reason, summed over folders.
enum LeftOutReason { kNameTooLong, kNameUnusable, kUnreadableEntry, kOverLimit, kUnlistedFolder, kLeftOutReasons };
using LeftOutCounts = std::array<uint64_t, kLeftOutReasons>;
LeftOutCounts CountsOf (const LISTING_NOTES &Notes);

struct CheckTally {
  bool Started = false;          // the job ran; false: its start failed
  bool SourceMissing = false;    // the path compared is missing or unreadable in the source
  uint32_t Items = 0;            // entries examined

  // Difference lines, by what they say.
  unsigned New = 0, Deleted = 0, Changed = 0, KindDiffers = 0;

  // What could not be checked, by reason.
  unsigned Unreadable = 0;       // lines of entries or folders that could not be opened or read
  unsigned LongPaths = 0;        // files and folders whose path is longer than 511 bytes
  unsigned TooDeep = 0;          // folders more than 31 levels below the path compared
  LeftOutCounts LeftOut[2] {};   // what the source and the backup listings left out
  bool Overflowed = false;       // the job's list of differences filled up
  unsigned Unlisted = 0;         // differences the job found but could not list (at least)
  std::string StoppedIn;         // the folder where a walk cut short stopped
  unsigned NotReached = 0;       // entries of the open folders it did not reach then

  unsigned Differences () const { return New + Deleted + Changed + KindDiffers; }
  uint64_t LeftOutCount (int Side) const;
  bool Complete () const;
};

class BackupCheck {
 public:
  // Reports go to Out; the walk's progress to Progress when it is not null.
  BackupCheck (Session &S, Language In, std::FILE *Out, std::FILE *Progress);
  ~BackupCheck ();
  BackupCheck (const BackupCheck &) = delete;
  BackupCheck &operator= (const BackupCheck &) = delete;

  // Compares Path on volume 0 (the source) with volume 1 (the backup).
  CheckTally Run (const std::string &Path, bool Contents);

 private:
  static UINT8 EFIAPI OnMessage (WINDOW_HEADER *Window, MESSAGE *Message);
  void OnReport (UINT16 Kind, UINT32 Items, const CHAR8 *Line);
  void OnLevel ();
  void OnEntry ();
  void OnDifference (const std::string &Line);
  void OnFinished ();
  void Print (const std::string &Line);
  void ShowProgress ();
  void ClearProgress ();
  void NoteLeftOut (const std::string &Folder, int Side, const LeftOutCounts &Counts);

  Session &Session_;
  Language Lang_;
  std::FILE *Out_;
  std::FILE *Progress_;
  WINDOW_HEADER *Window_ = nullptr;
  COMPARE_JOB *Job_ = nullptr;   // null while the job starts
  std::string RootPath_;
  bool Finished_ = false;
  UINT16 StoredEntries_ = 0;     // the result's entries at the last difference line
  size_t ProgressWidth_ = 0;
  uint64_t LastProgress_ = 0;
  CheckTally Tally_;
};

}  // namespace surveyor
