// The NTFS service of the host: Prepare and a small attributes window.
//
// Behaviour chosen for this service:
// - Prepare returns the ready flag (TRUE unless a test sets it otherwise).
// - OpenAttributesWindow (volume, entry number, path or name, 0) opens a
//   window of 272 bytes (the window base's header only) titled
//   "Attributes - <name>", with one text line each for the name, the entry
//   number and the volume, and, when the entry is found, its size and its
//   modification date. A text starting with "\" is a path on the volume; any
//   other text is a bare name, looked for in the volume (an entry of that
//   name, ASCII case ignored, whose entry word is the entry number; at most
//   kNtfsSearchLimit entries are looked at). The window closes on the usual
//   system commands and needs no clean-up. Null when the window base refuses
//   the window or the volume does not exist.
#pragma once

#include <memory>

#include "services/ntfs_service.h"

namespace env {

class Environment;

constexpr size_t kNtfsSearchLimit = 20000;

class NtfsService {
 public:
  explicit NtfsService (Environment &Env);
  ~NtfsService ();
  NtfsService (const NtfsService &) = delete;
  NtfsService &operator= (const NtfsService &) = delete;
  NTFS_SERVICE_PROTOCOL *Table ();
  void SetReady (bool Ready);
  unsigned WindowsOpened () const;

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
