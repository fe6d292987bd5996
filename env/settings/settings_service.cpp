#include "env/settings/settings_service.h"

#include <cstring>
#include <vector>

#include "env/ascii_case.h"
#include "env/console.h"
#include "env/pool.h"

namespace env {

namespace {

constexpr const char *kByteOrderMark = "\xEF\xBB\xBF";

std::string Trim (const std::string &Text) {
  size_t Begin = 0, End = Text.size ();
  while (Begin < End && (Text[Begin] == ' ' || Text[Begin] == '\t')) Begin++;
  while (End > Begin && (Text[End - 1] == ' ' || Text[End - 1] == '\t')) End--;
  return Text.substr (Begin, End - Begin);
}

bool HasLineBreak (const std::string &Text) {
  return Text.find_first_of (std::string ("\r\n\0", 3)) != std::string::npos;
}

// One line of the text, as read or as added; headers and keys also parsed.
struct Line {
  enum Kind { Other, Header, KeyLine } Type = Other;
  std::string Text;      // the line as written, without its line feed
  std::string Section;   // the section it belongs to (headers: the one they open)
  std::string Key, Value;
};

SettingsService *gCurrent = nullptr;

}  // namespace

struct SettingsService::State {
  std::unique_ptr<SettingsStore> Store;
  bool Writable = true;
  SETTINGS_SERVICE_PROTOCOL Table {};
  std::vector<Line> Lines;
  bool ByteOrderMark = false;
  bool FinalLineFeed = true;
  unsigned Commits = 0;
  unsigned SetValues = 0;
  SettingsService *Previous = nullptr;

  // The line that gives Section/Key its value (the last one), or -1.
  long Find (const std::string &Section, const std::string &Key) const {
    for (size_t I = Lines.size (); I-- > 0;) {
      const Line &L = Lines[I];
      if (L.Type == Line::KeyLine && EqualIgnoringAsciiCase (L.Section, Section) && EqualIgnoringAsciiCase (L.Key, Key))
        return static_cast<long> (I);
    }
    return -1;
  }

  // Where a new key of Section goes: after the section's last line that is
  // a key or its header; -1 when the section does not exist.
  long InsertionPoint (const std::string &Section) const {
    long At = -1;
    for (size_t I = 0; I < Lines.size (); I++) {
      const Line &L = Lines[I];
      if (L.Type != Line::Other && EqualIgnoringAsciiCase (L.Section, Section)) At = static_cast<long> (I) + 1;
    }
    if (At < 0 && Section.empty ()) At = 0;   // the unnamed section starts the text
    return At;
  }
};

namespace {

BOOLEAN EFIAPI GetValueOp (const CHAR8 *Section, const CHAR8 *Key, CHAR8 **Value) {
  if (!gCurrent || !Key || !Value) return FALSE;
  std::string Text;
  if (!gCurrent->Get (Section ? (const char *) Section : "", (const char *) Key, Text)) return FALSE;
  auto *Copy = static_cast<CHAR8 *> (PoolAllocate (Text.size () + 1));
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

SettingsService::SettingsService (std::unique_ptr<SettingsStore> Store, uint32_t Version) : State_ (new State) {
  State_->Store = std::move (Store);
  State_->Table.Version = Version;
  State_->Table.GetValue = GetValueOp;
  State_->Table.SetValue = SetValueOp;
  State_->Table.Commit = CommitOp;
  State_->Previous = gCurrent;
  gCurrent = this;
  if (!State_->Store) return;
  std::string Text;
  switch (State_->Store->Read (Text)) {
    case SettingsStore::Load::Read:
      Parse (Text);
      break;
    case SettingsStore::Load::Missing:
      break;
    case SettingsStore::Load::Unreadable:
      // Whatever is there stays as it is: settings changed now live in memory.
      State_->Writable = false;
      ConsoleLine ("Surveyor: " + State_->Store->Name () +
                   " could not be read; it is left as it is and settings are not saved this time.");
      break;
  }
}

SettingsService::~SettingsService () {
  if (gCurrent == this) gCurrent = State_->Previous;
}

SETTINGS_SERVICE_PROTOCOL *SettingsService::Table () { return &State_->Table; }
unsigned SettingsService::CommitCount () const { return State_->Commits; }
unsigned SettingsService::SetValueCount () const { return State_->SetValues; }
bool SettingsService::Writable () const { return State_->Writable; }

bool SettingsService::Get (const std::string &Section, const std::string &Key, std::string &Value) const {
  long At = State_->Find (Section, Key);
  if (At < 0) return false;
  Value = State_->Lines[static_cast<size_t> (At)].Value;
  return true;
}

void SettingsService::Set (const std::string &SectionName, const std::string &Key, const std::string &Value) {
  State_->SetValues++;
  std::string SectionText = Trim (SectionName), KeyText = Trim (Key);
  if (KeyText.empty () || KeyText.find ('=') != std::string::npos || HasLineBreak (KeyText) ||
      KeyText[0] == '[' || KeyText[0] == ';' || KeyText[0] == '#')
    return;
  if (SectionText.find (']') != std::string::npos || HasLineBreak (SectionText)) return;
  std::string OneLine = Value.substr (0, Value.find_first_of (std::string ("\r\n\0", 3)));
  std::vector<Line> &Lines = State_->Lines;

  long At = State_->Find (SectionText, KeyText);
  if (At >= 0) {
    Line &L = Lines[static_cast<size_t> (At)];
    bool CarriageReturn = !L.Text.empty () && L.Text.back () == '\r';
    L.Value = OneLine;
    L.Text = L.Key + "=" + OneLine + (CarriageReturn ? "\r" : "");
    return;
  }
  Line Added;
  Added.Type = Line::KeyLine;
  Added.Section = SectionText;
  Added.Key = KeyText;
  Added.Value = OneLine;
  Added.Text = KeyText + "=" + OneLine;
  long Insert = State_->InsertionPoint (SectionText);
  if (Insert >= 0) {
    Lines.insert (Lines.begin () + Insert, Added);
    if (static_cast<size_t> (Insert) + 1 == Lines.size ()) State_->FinalLineFeed = true;
    return;
  }
  // A new section at the end, a blank line before it.
  if (!Lines.empty () && !Trim (Lines.back ().Text).empty ()) Lines.push_back (Line {});
  Line Header;
  Header.Type = Line::Header;
  Header.Section = SectionText;
  Header.Text = "[" + SectionText + "]";
  Lines.push_back (Header);
  Lines.push_back (Added);
  State_->FinalLineFeed = true;
}

void SettingsService::Parse (const std::string &Text) {
  std::vector<Line> Lines;
  std::string Current;
  size_t Pos = 0;
  State_->ByteOrderMark = Text.compare (0, 3, kByteOrderMark) == 0;
  if (State_->ByteOrderMark) Pos = 3;
  State_->FinalLineFeed = Text.empty () || Text.back () == '\n';
  while (Pos < Text.size ()) {
    size_t End = Text.find ('\n', Pos);
    if (End == std::string::npos) End = Text.size ();
    Line L;
    L.Text = Text.substr (Pos, End - Pos);
    L.Section = Current;
    Pos = End + 1;
    std::string Parsed = L.Text;
    if (!Parsed.empty () && Parsed.back () == '\r') Parsed.pop_back ();
    if (Parsed.find ('\0') != std::string::npos) Parsed.resize (Parsed.find ('\0'));
    std::string Trimmed = Trim (Parsed);
    size_t Equals = Parsed.find ('=');
    if (Trimmed.empty () || Trimmed[0] == ';' || Trimmed[0] == '#') {
      // a comment or a blank line
    } else if (Trimmed[0] == '[') {
      size_t Close = Trimmed.find (']');
      if (Close != std::string::npos) {
        Current = Trim (Trimmed.substr (1, Close - 1));
        L.Type = Line::Header;
        L.Section = Current;
      }
    } else if (Equals != std::string::npos && !Trim (Parsed.substr (0, Equals)).empty ()) {
      L.Type = Line::KeyLine;
      L.Key = Trim (Parsed.substr (0, Equals));
      L.Value = Parsed.substr (Equals + 1);
      if (L.Value.find ('\r') != std::string::npos) L.Value.resize (L.Value.find ('\r'));
    }
    Lines.push_back (std::move (L));
  }
  State_->Lines = std::move (Lines);
}

std::string SettingsService::Serialize () const {
  std::string Out;
  for (size_t I = 0; I < State_->Lines.size (); I++) {
    if (I > 0) Out += '\n';
    Out += State_->Lines[I].Text;
  }
  if (!State_->Lines.empty () && State_->FinalLineFeed) Out += '\n';
  // A first key that starts like a byte-order mark keeps it behind a real one.
  if (State_->ByteOrderMark || Out.compare (0, 3, kByteOrderMark) == 0) Out = kByteOrderMark + Out;
  return Out;
}

bool SettingsService::Save () {
  State_->Commits++;
  if (!State_->Store) return true;
  if (!State_->Writable) return false;
  return State_->Store->Write (Serialize ());
}

}  // namespace env
