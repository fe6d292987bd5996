// The settings service: sections, keys and text values kept in a store (a
// file on the host, a UEFI variable in firmware).
//
// Behaviour chosen for this service:
// - The store is read once, at construction. Its format is the usual INI
//   layout: "[Section]" lines open a section, "Key=Value" lines give a value
//   (spaces around the key and around the section name are ignored; the value
//   is everything after the first "=", with a trailing CR removed). Lines
//   starting with ";" or "#", blank lines and lines that fit no rule are
//   skipped; keys before the first section belong to the unnamed section
//   (reached with a null or empty Section). A UTF-8 byte-order mark is
//   skipped. When a key appears twice in a section, the last value counts.
// - Sections and keys are matched without regard to the case of ASCII
//   letters; the spelling first used is kept.
// - GetValue hands out a pool copy (the caller frees it). SetValue changes
//   the values in memory only; a value is cut at its first CR or LF (one
//   value is one line), and a section or key that the store could not hold
//   (empty key, "=" in a key, "]" in a section, a line break in either) is
//   ignored.
// - Commit writes the text back, all or nothing: every line of the text as
//   it was read (comments, other sections, lines that fit no rule) is kept;
//   a changed key has its line rewritten, a new key is added at the end of
//   its section, a new section at the end of the text.
// - A store that exists but cannot be read (unreadable, or larger than
//   kMaxSettingsText) is never written: the values live in memory until the
//   program ends, and the console says so once.
// - The table operations reach the service constructed last that is still
//   alive (one environment at a time).
#pragma once

#include <memory>
#include <string>

#include "services/settings_service.h"

namespace env {

constexpr size_t kMaxSettingsText = 16u << 20;

// Where the settings text lives.
class SettingsStore {
 public:
  enum class Load { Missing, Read, Unreadable };
  virtual ~SettingsStore () = default;
  // Missing: nothing stored yet. Unreadable: something is stored but could
  // not be read whole (or is over kMaxSettingsText bytes).
  virtual Load Read (std::string &Text) = 0;
  // Replaces the stored text with Text, all or nothing.
  virtual bool Write (const std::string &Text) = 0;
  // How the console names the store ("the settings file /x/y").
  virtual std::string Name () const = 0;
};

class SettingsService {
 public:
  // A null Store keeps the values in memory only.
  SettingsService (std::unique_ptr<SettingsStore> Store, uint32_t Version);
  ~SettingsService ();
  SettingsService (const SettingsService &) = delete;
  SettingsService &operator= (const SettingsService &) = delete;
  SETTINGS_SERVICE_PROTOCOL *Table ();
  unsigned CommitCount () const;
  unsigned SetValueCount () const;
  // False when the store could not be read: nothing will be written to it.
  bool Writable () const;

  // C++ access for tests and tools. Get returns false when the key is absent.
  bool Get (const std::string &Section, const std::string &Key, std::string &Value) const;
  void Set (const std::string &Section, const std::string &Key, const std::string &Value);
  // Writes the store now; false when it could not (or must not) be written.
  bool Save ();
  // Replaces the values with those of Text (used by the loader and the fuzzer).
  void Parse (const std::string &Text);
  // The text Commit would write.
  std::string Serialize () const;

  struct State;

 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
