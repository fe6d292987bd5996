// The stand-in settings service: sections, keys and text values kept in a
// file, written atomically on Commit.
//
// Behaviour chosen for this service:
// - The file is read once, at construction. Its format is the usual INI
//   layout: "[Section]" lines open a section, "Key=Value" lines give a value
//   (spaces around the key and around the section name are ignored; the value
//   is everything after the first "=", with a trailing CR removed). Lines
//   starting with ";" or "#", blank lines and lines that fit no rule are
//   skipped; keys before the first section belong to the unnamed section
//   (reached with a null or empty Section). A UTF-8 byte-order mark is
//   skipped. When a key appears twice in a section, the last value counts.
//   A file that cannot be read starts an empty store; nothing crashes on
//   malformed text (files over kMaxSettingsFile bytes are not read).
// - Sections and keys are matched without regard to the case of ASCII
//   letters; the spelling first used is kept.
// - GetValue hands out a pool copy (the caller frees it). SetValue changes
//   the store in memory only; a value is cut at its first CR or LF (one value
//   is one line), and a section or key that the file could not hold (empty
//   key, "=" in a key, "]" in a section, a line break in either) is ignored.
// - Commit writes every section and key (in the order they were first seen)
//   to a temporary file in the same folder and renames it over the file, so
//   that the file always holds either the old or the new values. Comments and
//   skipped lines of the original file are not kept. With an empty file name
//   the values live in memory only and Commit only counts.
// - The table operations reach the service constructed last that is still
//   alive (one environment at a time).
#pragma once

#include <memory>
#include <string>

#include "env/environment.h"
#include "services/settings_service.h"

namespace env {

constexpr size_t kMaxSettingsFile = 16u << 20;

class SettingsService {
 public:
  // An empty File keeps the values in memory only.
  SettingsService (Firmware &Fw, const std::string &File, uint32_t Version);
  ~SettingsService ();
  SettingsService (const SettingsService &) = delete;
  SettingsService &operator= (const SettingsService &) = delete;
  SETTINGS_SERVICE_PROTOCOL *Table ();
  unsigned CommitCount () const;
  unsigned SetValueCount () const;

  // C++ access for tests and tools. Get returns false when the key is absent.
  bool Get (const std::string &Section, const std::string &Key, std::string &Value) const;
  void Set (const std::string &Section, const std::string &Key, const std::string &Value);
  // Writes the store now; false when the file could not be written.
  bool Save ();
  // Replaces the store with the values parsed from Text (used by the loader and the fuzzer).
  void Parse (const std::string &Text);
  // The text Commit would write.
  std::string Serialize () const;

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
