// The stand-in jobio driver: the file clipboard, recursive paste and delete.
//
// Behaviour chosen for this driver:
// - The clipboard is (volume, directory, names). BeginClipboard checks that
//   the directory exists, empties the clipboard and returns a new non-zero id
//   (0, with the clipboard left as it was, when the volume or directory does
//   not exist). AddToClipboard accepts a bare name (no "\" or "/", not "."
//   or "..") of an existing entry of that directory, for the current id only;
//   a name given twice is kept once. HasClipboard is TRUE while a name is held.
// - PasteClipboard copies every name into the destination directory: files
//   with their data, folders recursively, both with their modification times.
//   It never overwrites and never loses data. Everything is checked before
//   the first byte is written; a copy that fails half-way removes everything
//   this paste created, so a paste is all or nothing. Results:
//     1 kPasteDone          every name copied
//     0 kPasteNothing       the clipboard is empty
//     2 kPasteBadTarget     destination volume or directory missing, or the
//                           volume is write-protected
//     3 kPasteNameClash     a name exists in the destination already (also
//                           when pasting into the source folder itself)
//     4 kPasteIntoItself    a folder would be copied into itself or below it
//     5 kPasteSourceGone    a clipboard entry no longer exists
//     6 kPasteFailed        reading or writing failed (what was made is removed)
//   The clipboard is kept after a paste, so it can be pasted again.
// - Symbolic links: the volume shows a link only when it stays inside the
//   volume's folder; a linked file is copied as a file. Links to folders met
//   inside a copied folder are not followed (they could loop) and are left
//   out of the copy, as are links leading out of the volume.
// - DeleteClipboardFiles removes every name recursively and empties the
//   clipboard: 1 when all are gone (an entry already missing counts as gone),
//   0 when the clipboard was empty, the volume is write-protected (nothing is
//   deleted) or some entry could not be removed.
// - DeleteFile (volume, path) removes one file or one empty folder; never the
//   root, never on a write-protected volume.
// - Whenever HasClipboard changes, every top-level window of the window base
//   gets message 11 (byte 1 = the new HasClipboard) through SendMessage.
// - Paths go through the file driver's path rules (FileDriver::ResolvePath).
// - The table operations reach the driver constructed last that is still
//   alive (one environment at a time).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "env/environment.h"
#include "services/jobio_driver.h"

namespace env {

constexpr uint32_t kPasteDone = 1;
constexpr uint32_t kPasteNothing = 0;
constexpr uint32_t kPasteBadTarget = 2;
constexpr uint32_t kPasteNameClash = 3;
constexpr uint32_t kPasteIntoItself = 4;
constexpr uint32_t kPasteSourceGone = 5;
constexpr uint32_t kPasteFailed = 6;

class JobioDriver {
 public:
  // Windows may be null; with it, clipboard changes are announced to every
  // top-level window (message 11).
  JobioDriver (Firmware &Fw, FileDriver &Files, WindowBase *Windows, uint32_t Version);
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

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
