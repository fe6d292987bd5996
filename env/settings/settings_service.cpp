#include "env/settings/settings_service.h"
#include "env/ascii_case.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <vector>

namespace env {

namespace {

struct Entry {
  std::string Key;
  std::string Value;
};

struct Section {
  std::string Name;
  std::vector<Entry> Entries;
};

std::string Trim (const std::string &Text) {
  size_t Begin = 0, End = Text.size ();
  while (Begin < End && (Text[Begin] == ' ' || Text[Begin] == '\t')) Begin++;
  while (End > Begin && (Text[End - 1] == ' ' || Text[End - 1] == '\t')) End--;
  return Text.substr (Begin, End - Begin);
}

bool HasLineBreak (const std::string &Text) {
  return Text.find_first_of (std::string ("\r\n\0", 3)) != std::string::npos;
}

SettingsService *gCurrent = nullptr;
Firmware *gCurrentFirmware = nullptr;

}  // namespace

struct SettingsService::State {
  Firmware &Fw;
  std::string File;
  SETTINGS_SERVICE_PROTOCOL Table {};
  std::vector<Section> Sections;
  unsigned Commits = 0;
  unsigned SetValues = 0;
  SettingsService *Previous = nullptr;
  Firmware *PreviousFirmware = nullptr;

  explicit State (Firmware &F) : Fw (F) {}

  Section *FindSection (const std::string &Name) {
    for (Section &S : Sections)
      if (EqualIgnoringAsciiCase (S.Name, Name)) return &S;
    return nullptr;
  }
  const Section *FindSection (const std::string &Name) const {
    return const_cast<State *> (this)->FindSection (Name);
  }
};

namespace {

BOOLEAN EFIAPI GetValueOp (const CHAR8 *Section, const CHAR8 *Key, CHAR8 **Value) {
  if (!gCurrent || !Key || !Value) return FALSE;
  std::string Text;
  if (!gCurrent->Get (Section ? (const char *) Section : "", (const char *) Key, Text)) return FALSE;
  CHAR8 *Copy = (CHAR8 *) gCurrentFirmware->AllocatePool (Text.size () + 1);
  if (!Copy) return FALSE;
  std::memcpy (Copy, Text.c_str (), Text.size () + 1);
  *Value = Copy;
  return TRUE;
}

VOID EFIAPI SetValueOp (const CHAR8 *Section, const CHAR8 *Key, const CHAR8 *Value) {
  if (!gCurrent) return;
  gCurrent->Set (Section ? (const char *) Section : "", Key ? (const char *) Key : "",
                 Value ? (const char *) Value : "");
}

VOID EFIAPI CommitOp () {
  if (gCurrent) gCurrent->Save ();
}

}  // namespace

SettingsService::SettingsService (Firmware &Fw, const std::string &File, uint32_t Version) : State_ (new State (Fw)) {
  State_->File = File;
  State_->Table.Version = Version;
  State_->Table.GetValue = GetValueOp;
  State_->Table.SetValue = SetValueOp;
  State_->Table.Commit = CommitOp;
  State_->Previous = gCurrent;
  State_->PreviousFirmware = gCurrentFirmware;
  gCurrent = this;
  gCurrentFirmware = &Fw;
  if (!File.empty ()) {
    std::ifstream In (File, std::ios::binary);
    if (In) {
      In.seekg (0, std::ios::end);
      std::streamoff Size = In.tellg ();
      if (Size >= 0 && (uint64_t) Size <= kMaxSettingsFile) {
        In.seekg (0);
        std::string Text ((size_t) Size, '\0');
        In.read (Text.data (), Size);
        Text.resize ((size_t) In.gcount ());
        Parse (Text);
      }
    }
  }
}

SettingsService::~SettingsService () {
  if (gCurrent == this) {
    gCurrent = State_->Previous;
    gCurrentFirmware = State_->PreviousFirmware;
  }
}

SETTINGS_SERVICE_PROTOCOL *SettingsService::Table () { return &State_->Table; }
unsigned SettingsService::CommitCount () const { return State_->Commits; }
unsigned SettingsService::SetValueCount () const { return State_->SetValues; }

bool SettingsService::Get (const std::string &SectionName, const std::string &Key, std::string &Value) const {
  const Section *S = State_->FindSection (SectionName);
  if (!S) return false;
  for (const Entry &E : S->Entries)
    if (EqualIgnoringAsciiCase (E.Key, Key)) {
      Value = E.Value;
      return true;
    }
  return false;
}

namespace {

// Stores Value under Section/Key of Sections; the caller has checked the names.
void Store (std::vector<Section> &Sections, const std::string &SectionName, const std::string &Key,
            const std::string &Value) {
  Section *Target = nullptr;
  for (Section &S : Sections)
    if (EqualIgnoringAsciiCase (S.Name, SectionName)) {
      Target = &S;
      break;
    }
  if (!Target) {
    Sections.push_back (Section {SectionName, {}});
    Target = &Sections.back ();
  }
  for (Entry &E : Target->Entries)
    if (EqualIgnoringAsciiCase (E.Key, Key)) {
      E.Value = Value;
      return;
    }
  Target->Entries.push_back (Entry {Key, Value});
}

}  // namespace

void SettingsService::Set (const std::string &SectionName, const std::string &Key, const std::string &Value) {
  State_->SetValues++;
  std::string SectionText = Trim (SectionName), KeyText = Trim (Key);
  if (KeyText.empty () || KeyText.find ('=') != std::string::npos || HasLineBreak (KeyText) ||
      KeyText[0] == '[' || KeyText[0] == ';' || KeyText[0] == '#')
    return;
  if (SectionText.find (']') != std::string::npos || HasLineBreak (SectionText)) return;
  std::string Line = Value.substr (0, Value.find_first_of (std::string ("\r\n\0", 3)));
  Store (State_->Sections, SectionText, KeyText, Line);
}

void SettingsService::Parse (const std::string &Text) {
  std::vector<Section> Sections;
  std::string Current;
  size_t Pos = 0;
  if (Text.compare (0, 3, "\xEF\xBB\xBF") == 0) Pos = 3;   // byte-order mark
  while (Pos < Text.size ()) {
    size_t End = Text.find ('\n', Pos);
    if (End == std::string::npos) End = Text.size ();
    std::string Line = Text.substr (Pos, End - Pos);
    Pos = End + 1;
    if (!Line.empty () && Line.back () == '\r') Line.pop_back ();
    if (Line.find ('\0') != std::string::npos) Line.resize (Line.find ('\0'));
    std::string Trimmed = Trim (Line);
    if (Trimmed.empty () || Trimmed[0] == ';' || Trimmed[0] == '#') continue;
    if (Trimmed[0] == '[') {
      size_t Close = Trimmed.find (']');
      if (Close == std::string::npos) continue;
      Current = Trim (Trimmed.substr (1, Close - 1));
      continue;
    }
    size_t Equals = Line.find ('=');
    if (Equals == std::string::npos) continue;
    std::string Key = Trim (Line.substr (0, Equals));
    if (Key.empty ()) continue;
    std::string Value = Line.substr (Equals + 1);
    if (Value.find ('\r') != std::string::npos) Value.resize (Value.find ('\r'));
    Store (Sections, Current, Key, Value);
  }
  State_->Sections = std::move (Sections);
}

std::string SettingsService::Serialize () const {
  std::string Out;
  // The unnamed section has no header line, so it must come first.
  for (int Pass = 0; Pass < 2; Pass++)
    for (const Section &S : State_->Sections) {
      if ((Pass == 0) != S.Name.empty () || S.Entries.empty ()) continue;
      if (Pass == 1) {
        if (!Out.empty ()) Out += "\n";
        Out += "[" + S.Name + "]\n";
      }
      for (const Entry &E : S.Entries) Out += E.Key + "=" + E.Value + "\n";
    }
  // A first key that starts like a byte-order mark keeps it behind a real one.
  if (Out.compare (0, 3, "\xEF\xBB\xBF") == 0) Out = "\xEF\xBB\xBF" + Out;
  return Out;
}

bool SettingsService::Save () {
  State_->Commits++;
  if (State_->File.empty ()) return true;
  std::string Text = Serialize ();
  std::string Temp = State_->File + ".tmp" + std::to_string ((long) getpid ());
  int Fd = open (Temp.c_str (), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (Fd < 0) return false;
  size_t Done = 0;
  bool Ok = true;
  while (Done < Text.size ()) {
    ssize_t N = write (Fd, Text.data () + Done, Text.size () - Done);
    if (N <= 0) {
      Ok = false;
      break;
    }
    Done += (size_t) N;
  }
  if (Ok && fsync (Fd) != 0) Ok = false;
  if (close (Fd) != 0) Ok = false;
  if (Ok && rename (Temp.c_str (), State_->File.c_str ()) != 0) Ok = false;
  if (!Ok) unlink (Temp.c_str ());
  return Ok;
}

}  // namespace env
