// The jobio driver: the file clipboard, recursive paste and delete, over the
// file driver's volumes.
//
// Behaviour chosen for this driver:
// - The clipboard is (volume, directory, names). BeginClipboard checks that
//   the directory exists, empties the clipboard and returns a new non-zero id
//   (0, with the clipboard left as it was, when the volume or directory does
//   not exist). AddToClipboard accepts a bare name (no "\" or "/", not "."
//   or "..") of an existing entry of that directory, for the current id only;
//   a name given twice is kept once. It remembers how the entry looked in
//   the directory's latest listing (what the user saw), else how it looks
//   now. HasClipboard is TRUE while a name is held.
// - PasteClipboard copies every name into the destination directory: files
//   with their data, folders recursively, both with their modification
//   times; symbolic links are copied as links. It never overwrites and never
//   loses data. Everything is checked before the first byte is written. Each
//   name is written under a temporary name (".surveyor-partial-<run>-<n>")
//   and renamed into place once complete and flushed, so an interrupted paste
//   leaves no file under a final name; the next paste into that folder
//   removes what a run that has ended left behind. A copy that fails half-way
//   removes everything this paste created (and nothing else), so a paste is
//   all or nothing. Results:
//     1 kPasteDone          every name copied
//     0 kPasteNothing       the clipboard is empty
//     2 kPasteBadTarget     destination volume or directory missing, or the
//                           volume is write-protected
//     3 kPasteNameClash     a name exists in the destination already (also
//                           when pasting into the source folder itself);
//                           names compare as the destination volume compares
//                           them (without ASCII case on FAT volumes)
//     4 kPasteIntoItself    a folder would be copied into itself or below it
//     5 kPasteSourceGone    a clipboard entry no longer exists
//     6 kPasteFailed        reading or writing failed, or a folder held
//                           entries that could not be read (what was made is
//                           removed)
//   The clipboard is kept after a paste, so it can be pasted again.
// - DeleteClipboardFiles removes every name (folders with everything in
//   them) and empties the clipboard. Each entry is checked at the moment it
//   is removed: one that is no longer the object that was listed (a file
//   replaced by a folder, say) is left alone. Results: 1 when all are gone
//   (an entry already missing counts as gone); 0 when the clipboard was
//   empty or the volume is write-protected (nothing is deleted);
//   kDeleteIncomplete when some entries remain: a message box then names
//   them and why, so the caller need not.
// - DeleteFile (volume, path) removes one file, link or empty folder; never
//   the root, never on a write-protected volume.
// - Whenever HasClipboard changes, every top-level window of the window base
//   gets message 11 (byte 1 = the new HasClipboard) through SendMessage.
// - The table operations reach the driver constructed last that is still
//   alive (one environment at a time).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "services/jobio_driver.h"

namespace env {

class FileDriver;
class WindowBase;

constexpr uint32_t kPasteDone = 1;
constexpr uint32_t kPasteNothing = 0;
constexpr uint32_t kPasteBadTarget = 2;
constexpr uint32_t kPasteNameClash = 3;
constexpr uint32_t kPasteIntoItself = 4;
constexpr uint32_t kPasteSourceGone = 5;
constexpr uint32_t kPasteFailed = 6;
constexpr uint32_t kDeleteIncomplete = 2;

// Names a paste gives its work until it is complete.
constexpr const char *kPartialPrefix = ".surveyor-partial-";

class JobioDriver {
 public:
  // Windows may be null; with it, clipboard changes are announced to every
  // top-level window (message 11) and incomplete deletes are explained.
  JobioDriver (FileDriver &Files, WindowBase *Windows, uint32_t Version);
  ~JobioDriver ();
  JobioDriver (const JobioDriver &) = delete;
  JobioDriver &operator= (const JobioDriver &) = delete;
  JOBIO_DRIVER_PROTOCOL *Table ();

  // For tests and tools.
  int ClipboardVolume () const;                   // -1 when there is no clipboard
  std::string ClipboardDirectory () const;
  std::vector<std::string> ClipboardNames () const;
  unsigned NotificationCount () const;            // HasClipboard changes announced
  // Makes the next file copy fail after Bytes bytes (a test of the clean-up); -1 clears it.
  void FailCopyAfter (long long Bytes);
  // What the last incomplete delete left, one line an entry.
  const std::vector<std::string> &LastRemaining () const;

  struct State;

 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
