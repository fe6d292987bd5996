// The backup check's own words (English whatever the language of the
// difference lines): the notes on what was not checked, the progress line of
// the walk and the closing summary.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/surveyor/backup_check.h"

namespace surveyor {

// Appended to the path of a folder the job passes over.
std::string NotCheckedTooDeep ();
std::string NotCheckedLongPath ();
// Appended to a file's "could not open" line when its path is what failed.
std::string PathTooLongRemark ();
// Appended to a folder's path: what one side's listing of it left out (Side 0 the source, 1 the backup).
std::string NotCheckedLeftOut (int Side, const LeftOutCounts &Counts);

std::string WalkProgress (const std::string &Folder, uint32_t Items);

// The closing lines: what was checked and found, then what was not checked.
std::vector<std::string> Summary (const CheckTally &Tally, double Seconds);

}  // namespace surveyor
