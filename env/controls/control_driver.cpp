// The control driver's table, text views, combo boxes and log views; list
// views are in list_view.cpp and file trees in file_tree.cpp.
#include "env/controls/control_driver.h"
#include "env/ascii_case.h"

#include <algorithm>
#include <cstring>

#include "env/controls/control_internal.h"

namespace env {

namespace {

ControlDriver::State *Current = nullptr;

WindowBase::State &B () { return Current->Base; }

template <class Object>
Object *As (const void *Target) {
  return ObjectAs<Object> (B ().FindControl (Target));
}

}  // namespace

ControlDriver::State *CurrentControls () { return Current; }

ControlDriver::State::State (WindowBase &Windows, GuiDriver &G)
    : Base (Windows.Internal ()), Gui (G) {}

std::string EntryName (const void *Entry) {
  if (Entry == nullptr) return {};
  const char *Text = static_cast<const char *> (Entry);
  size_t Length = 0;
  while (Length < kMaxEditText && Text[Length] != 0) Length++;
  return CutText (std::string (Text, Length).c_str (), kMaxEditText);
}

std::string JoinPath (const std::string &Directory, const std::string &Name) {
  std::string Path = Directory.empty () ? std::string ("\\") : Directory;
  if (Path.back () != '\\') Path.push_back ('\\');
  return Path + Name;
}

namespace {

// ------------------------------------------------------------ text view

CONTROL *EFIAPI OpCreateTextView (WINDOW_HEADER *Parent, UINT8 Id, const CHAR8 *Text, UINT16 Length,
                                  const CONTROL_RECT *Rect) {
  WindowInfo *Info = B ().FindWindow (Parent);
  if (Info == nullptr || Info->Popup) return nullptr;
  auto View = std::make_unique<TextViewObject> ();
  CONTROL &R = View->Data;
  R.Id = Id;
  R.Kind = CONTROL_KIND_TEXT_VIEW;
  R.Flags = WINDOW_FLAG_ENABLED | WINDOW_FLAG_FOCUSABLE;
  if (Rect != nullptr) {
    R.X = Rect->X;
    R.Y = Rect->Y;
    R.Width = Rect->Width;
    R.Height = Rect->Height;
  }
  // The view keeps its own copy of exactly Length bytes.
  View->TextStore.assign (Text != nullptr ? reinterpret_cast<const char *> (Text) : "", Text != nullptr ? Length : 0);
  R.Text = reinterpret_cast<CHAR8 *> (View->TextStore.data ());
  return B ().AddControl (Parent, std::move (View), true, false);
}

// ------------------------------------------------------------ combo box

COMBO_BOX *EFIAPI OpCreateComboBox (UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height, UINTN, WINDOW_HEADER *Parent) {
  WindowInfo *Info = B ().FindWindow (Parent);
  if (Info == nullptr || Info->Popup) return nullptr;
  auto Combo = std::make_unique<ComboObject> ();
  ComboObject *Object = Combo.get ();
  COMBO_BOX &R = Combo->Data;
  R.Control.Kind = CONTROL_KIND_COMBO;
  R.Control.Flags = WINDOW_FLAG_ENABLED | WINDOW_FLAG_FOCUSABLE;
  R.Control.X = X;
  R.Control.Y = Y;
  R.Control.Width = Width;
  R.Control.Height = Height;
  R.CurrentRow = kNoRow;
  R.ChosenRow = kNoRow;
  if (B ().AddControl (Parent, std::move (Combo), true, true) == nullptr) return nullptr;
  return &Object->Data;
}

VOID EFIAPI OpAddComboItem (COMBO_BOX *Target, const CHAR8 *Text, UINTN) {
  ComboObject *Combo = As<ComboObject> (Target);
  if (Combo == nullptr || Combo->Items.size () >= kMaxRows) return;
  Combo->Items.push_back (Text != nullptr ? CutText (reinterpret_cast<const char *> (Text), 255) : "");
  Combo->Data.ItemCount = static_cast<UINT16> (Combo->Items.size ());
}

// ------------------------------------------------------------- log view

LOG_VIEW *EFIAPI OpCreateLogView (WINDOW_HEADER *Parent, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height, UINTN) {
  WindowInfo *Info = B ().FindWindow (Parent);
  if (Info == nullptr || Info->Popup) return nullptr;
  auto Log = std::make_unique<LogObject> ();
  LogObject *Object = Log.get ();
  LOG_VIEW &R = Log->Data;
  R.Control.Kind = CONTROL_KIND_LOG_VIEW;
  R.Control.Flags = WINDOW_FLAG_ENABLED | WINDOW_FLAG_FOCUSABLE;
  R.Control.X = X;
  R.Control.Y = Y;
  R.Control.Width = Width;
  R.Control.Height = Height;
  R.SelectedLine = kNoRow;
  if (B ().AddControl (Parent, std::move (Log), true, true) == nullptr) return nullptr;
  return &Object->Data;
}

VOID EFIAPI OpStartLogView (LOG_VIEW *Target, const CHAR8 *Path) {
  LogObject *Log = As<LogObject> (Target);
  if (Log == nullptr) return;
  Log->Lines.clear ();
  Log->Path = Path != nullptr ? CutText (reinterpret_cast<const char *> (Path), 511) : "";
  Log->Data.LineCount = 0;
  Log->Data.SelectedLine = kNoRow;
  Log->Data.TopLine = 0;
}

VOID EFIAPI OpAppendLine (LOG_VIEW *Target, UINT16 Position, const CHAR8 *Text) {
  LogObject *Log = As<LogObject> (Target);
  if (Log == nullptr || Log->Lines.size () >= kMaxRows) return;
  std::string Line = Text != nullptr ? CutText (reinterpret_cast<const char *> (Text), 1023) : "";
  if (Position >= Log->Lines.size ()) {
    Log->Lines.push_back (Line);
  } else {
    Log->Lines.insert (Log->Lines.begin () + Position, Line);
    if (Log->Data.SelectedLine != kNoRow && Log->Data.SelectedLine >= Position) Log->Data.SelectedLine++;
  }
  Log->Data.LineCount = static_cast<UINT16> (Log->Lines.size ());
}

VOID EFIAPI OpShowLine (LOG_VIEW *Target, UINT16 Line) {
  LogObject *Log = As<LogObject> (Target);
  if (Log == nullptr || Log->Lines.empty ()) return;
  size_t Count = Log->Lines.size ();
  size_t Wanted = Line >= Count ? Count - 1 : Line;
  uint16_t RowHeight = Current->RowHeight ();
  size_t Visible = std::max<size_t> (1, Log->Data.Control.Height > 4 ? (Log->Data.Control.Height - 4) / RowHeight : 1);
  LOG_VIEW &R = Log->Data;
  if (Wanted < R.TopLine) R.TopLine = static_cast<UINT16> (Wanted);
  if (Wanted >= R.TopLine + Visible) R.TopLine = static_cast<UINT16> (Wanted - Visible + 1);
}

}  // namespace

// ------------------------------------------------------------ the class

ControlDriver::ControlDriver (WindowBase &Windows, GuiDriver &Gui, uint32_t Version)
    : State_ (new State (Windows, Gui)) {
  Current = State_.get ();
  CONTROL_DRIVER_PROTOCOL &T = State_->Table;
  T.Version = Version;
  FillListOperations (T);
  FillTreeOperations (T);
  T.CreateTextView = OpCreateTextView;
  T.CreateComboBox = OpCreateComboBox;
  T.AddComboItem = OpAddComboItem;
  T.CreateLogView = OpCreateLogView;
  T.StartLogView = OpStartLogView;
  T.AppendLine = OpAppendLine;
  T.ShowLine = OpShowLine;
}

ControlDriver::~ControlDriver () {
  if (Current == State_.get ()) Current = nullptr;
}

CONTROL_DRIVER_PROTOCOL *ControlDriver::Table () { return &State_->Table; }

void ControlDriver::ChooseComboRow (COMBO_BOX *Target, uint16_t Row) {
  ComboObject *Combo = As<ComboObject> (Target);
  if (Combo == nullptr || Row >= Combo->Items.size ()) return;
  WindowBase::State::Scope Guard (B ());
  Combo->Data.CurrentRow = Row;
  Combo->Data.ChosenRow = Row;
  Combo->Data.Open = 0;
  Combo->SetText (Combo->Items[Row].c_str ());
  MESSAGE Message {};
  Message.Type = MSG_NOTIFY;
  Message.Code = NOTIFY_SELECTION;
  Message.Word2 = 1;
  Message.Word4 = Combo->Data.ItemCount;
  Message.Word6 = Row;
  Message.Word10 = Combo->Data.Control.Id;
  B ().Notify (Combo->Rec, Message);
}

std::vector<std::string> ControlDriver::ComboItems (COMBO_BOX *Target) const {
  ComboObject *Combo = As<ComboObject> (Target);
  return Combo != nullptr ? Combo->Items : std::vector<std::string> ();
}

std::vector<std::string> ControlDriver::LogLines (LOG_VIEW *Target) const {
  LogObject *Log = As<LogObject> (Target);
  return Log != nullptr ? Log->Lines : std::vector<std::string> ();
}

std::string ControlDriver::LogPath (LOG_VIEW *Target) const {
  LogObject *Log = As<LogObject> (Target);
  return Log != nullptr ? Log->Path : std::string ();
}

void ControlDriver::SelectLogLine (LOG_VIEW *Target, uint16_t Line) {
  LogObject *Log = As<LogObject> (Target);
  if (Log == nullptr) return;
  Log->Data.SelectedLine = Line < Log->Lines.size () ? Line : kNoRow;
}

void ControlDriver::LogContextClick (LOG_VIEW *Target, uint16_t X, uint16_t Y) {
  LogObject *Log = As<LogObject> (Target);
  if (Log == nullptr) return;
  WindowBase::State::Scope Guard (B ());
  int32_t Ox = 0, Oy = 0;
  B ().Origin (Log->Rec, Ox, Oy);
  MESSAGE Message {};
  Message.Type = MSG_NOTIFY;
  Message.Code = NOTIFY_LOG_CONTEXT;
  Message.Word2 = 7;
  Message.Word4 = static_cast<UINT16> (std::clamp (Ox + X, 0, 0xFFFF));
  Message.Word6 = static_cast<UINT16> (std::clamp (Oy + Y, 0, 0xFFFF));
  Message.Pointer8 = &Log->Data;
  B ().Notify (Log->Rec, Message);
}

std::string ControlDriver::TextViewText (CONTROL *Target) const {
  TextViewObject *View = As<TextViewObject> (Target);
  return View != nullptr ? View->TextStore : std::string ();
}

}  // namespace env
