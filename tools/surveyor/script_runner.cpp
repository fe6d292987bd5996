#include "tools/surveyor/script_runner.h"

#include <cstdlib>

#include "compare/file_comparison.h"
#include "env/controls/control_driver.h"
#include "env/desktop/desktop_input.h"
#include "env/render/renderer.h"
#include "env/gui/gbk.h"
#include "env/windows/window_base.h"
#include "tools/surveyor/command_line.h"
#include "tools/surveyor/key_names.h"
#include "tools/surveyor/screen_output.h"

namespace surveyor {

namespace {

const CHAR8 *C8 (const std::string &S) { return reinterpret_cast<const CHAR8 *> (S.c_str ()); }

std::string Text (const CHAR8 *T) { return T != nullptr ? reinterpret_cast<const char *> (T) : ""; }

bool ParseUnsigned (const std::string &Word, unsigned long Limit, unsigned long &Out) {
  if (Word.empty ()) return false;
  char *End = nullptr;
  Out = std::strtoul (Word.c_str (), &End, 0);
  return *End == 0 && Out <= Limit;
}

}  // namespace

ScriptRunner::ScriptRunner (Session &S, std::ostream &Out)
    : Session_ (S), Out_ (Out), Dump_ (S.Env ()), Mouse_ (new env::DesktopInput (S.Env ())) {
  Mouse_->SetVolumeOpener ([&S] (int Volume) {
    return S.Surveyor () != nullptr &&
           S.Surveyor ()->OpenVolumeWindow (0, 0, static_cast<UINT8> (Volume), nullptr, nullptr) != nullptr;
  });
  S.Env ().windows ().SetMessageBoxAnswerer ([this] (const env::MessageBoxRecord &) { return AnswerMessageBox (); });
}

ScriptRunner::~ScriptRunner () { Session_.Env ().windows ().SetMessageBoxAnswerer (nullptr); }

bool ScriptRunner::Run (const Script &S) {
  Script_ = &S, Next_ = 0, Failed_ = false;
  while (!Failed_ && Next_ < S.Lines.size ()) {
    if (!RunLine (S.Lines[Next_++])) return false;
    Session_.Env ().windows ().PumpMessages ();
  }
  return !Failed_;
}

bool ScriptRunner::RunLine (const ScriptLine &Line) {
  std::string Error;
  if (Execute (Line.Words, Error)) return true;
  if (!Failed_) Out_ << Script_->Name << ":" << Line.Number << ": " << Error << "\n" << Dump_.Peek ();
  Failed_ = true;
  return false;
}

UINTN ScriptRunner::AnswerMessageBox () {
  env::WindowBase &Wb = Session_.Env ().windows ();
  while (!Failed_ && Script_ != nullptr && Next_ < Script_->Lines.size ()) {
    const ScriptLine &Line = Script_->Lines[Next_];
    const std::string &Command = Line.Words[0];
    if (Command == "answer") {
      Next_++;
      break;
    }
    if (Command != "shot" && Command != "dump" && Command != "expect" && Command != "hover" && Command != "click")
      break;
    Next_++;
    if (!RunLine (Line)) break;
    if (Wb.OpenMessageBox () == nullptr || Wb.OpenMessageBox ()->Dismissed) break;
  }
  return 1;
}

bool ScriptRunner::Settle () {
  env::WindowBase &Wb = Session_.Env ().windows ();
  // A job of 10,000 folders takes some hundred thousand ticks; the bound only
  // stops a timer that never ends.
  for (unsigned long Round = 0; Round < 50000000ul; Round++) {
    size_t Delivered = Wb.PumpMessages ();
    if (Wb.TimerCount () == 0) {
      if (Delivered == 0) return true;
      continue;
    }
    Wb.RunTimerTick ();
  }
  return false;
}

// The window the user is working in: the active one, or the topmost.
static WINDOW_HEADER *ActiveWindow (env::WindowBase &Wb) {
  if (WINDOW_HEADER *W = Wb.ActiveWindow ()) return W;
  std::vector<WINDOW_HEADER *> All = Wb.TopLevelWindows ();
  return All.empty () ? nullptr : All.back ();
}

// Every control of a window and of its child windows, in creation order.
static void CollectControls (env::WindowBase &Wb, WINDOW_HEADER *W, std::vector<CONTROL *> &Out) {
  for (CONTROL *C : Wb.Controls (W)) Out.push_back (C);
  for (WINDOW_HEADER *Child : Wb.ChildWindows (W)) CollectControls (Wb, Child, Out);
}

template <typename T>
static T *FirstOfKind (env::WindowBase &Wb, WINDOW_HEADER *W, uint8_t Kind) {
  std::vector<CONTROL *> All;
  if (W != nullptr) CollectControls (Wb, W, All);
  for (CONTROL *C : All)
    if (C->Kind == Kind) return reinterpret_cast<T *> (C);
  return nullptr;
}

// A click in a list gives it the keyboard focus, as the window base does for the mouse.
static void FocusList (env::WindowBase &Wb, WINDOW_HEADER *Window, LIST_CONTROL *List) {
  if (Window != nullptr && Window->FocusControl != List) Wb.Table ()->SetFocus (Window, List, 1);
}

static bool RowOf (env::ControlDriver &Cd, LIST_CONTROL *List, const std::string &Word, uint16_t &Row) {
  unsigned long N = 0;
  if (ParseUnsigned (Word, 0xFFFE, N) && N < List->RowCount) {
    Row = static_cast<uint16_t> (N);
    return true;
  }
  for (uint16_t R = 0; R < List->RowCount; R++)
    if (env::GbkToUtf8 (Cd.CellText (List, 0, R)) == Word) {
      Row = R;
      return true;
    }
  return false;
}

static bool TreeItemOf (env::ControlDriver &Cd, FILE_LIST *Tree, const std::string &Word, uint16_t &Index) {
  std::vector<FILE_LIST_ITEM> Items = Cd.TreeItems (Tree);
  unsigned long N = 0;
  if (ParseUnsigned (Word, 0xFFFE, N) && N < Items.size ()) {
    Index = static_cast<uint16_t> (N);
    return true;
  }
  for (size_t I = 0; I < Items.size (); I++)
    if (env::GbkToUtf8 (Text (Items[I].Name)) == Word || env::GbkToUtf8 (Text (Items[I].Path)) == Word) {
      Index = static_cast<uint16_t> (I);
      return true;
    }
  return false;
}

bool ScriptRunner::Execute (const std::vector<std::string> &Words, std::string &Error) {
  env::Environment &Env = Session_.Env ();
  env::WindowBase &Wb = Env.windows ();
  env::ControlDriver &Cd = Env.controls ();
  SURVEYOR_PROTOCOL *Surveyor = Session_.Surveyor ();
  const std::string &Command = Words[0];
  size_t Count = Words.size ();
  unsigned long N = 0, M = 0;
  WINDOW_HEADER *Active = ActiveWindow (Wb);

  if (Command == "volume" && Count >= 2) {
    std::string Spec = Words[1];
    for (size_t I = 2; I < Count; I++) Spec += "," + Words[I];
    env::VolumeSpec Volume;
    return ParseVolumeSpec (Spec, Volume, Error) && Session_.Mount (Volume, Error) >= 0;
  }
  if (Command == "open" && (Count == 2 || Count == 3) && ParseUnsigned (Words[1], 23, N)) {
    if (Surveyor->OpenVolumeWindow (0, 0, static_cast<UINT8> (N), nullptr, Count == 3 ? C8 (Words[2]) : nullptr) ==
        nullptr)
      Error = "no window opened for volume " + Words[1];
    return Error.empty ();
  }
  if (Command == "dialog" && Count >= 2 && ParseUnsigned (Words[1], 23, N)) {
    bool Dirs = Count >= 3 && Words[2] == "dirs";
    std::string Title = Count > (Dirs ? 3u : 2u) ? Words[Dirs ? 3 : 2] : "Open";
    if (Surveyor->OpenFileDialog (100, 100, C8 (Title), static_cast<UINT8> (N), Dirs ? 1 : 0) == nullptr)
      Error = "the file dialog did not open";
    return Error.empty ();
  }
  if (Command == "help" && Count == 2) {
    std::string Body = Words[1];
    if (Surveyor->ShowHelpWindow (0, C8 (Body), static_cast<UINT16> (Body.size () + 1), C8 (std::string ("Help"))) ==
        nullptr)
      Error = "the help window did not open";
    return Error.empty ();
  }
  if (Command == "helpfile" && Count == 3 && ParseUnsigned (Words[1], 23, N)) {
    if (Surveyor->ShowHelpWindow (static_cast<UINT8> (N), C8 (Words[2]), 0, C8 (std::string ("Help"))) == nullptr)
      Error = "the help window did not open";
    return Error.empty ();
  }
  if (Command == "compare" && Count == 4 && ParseUnsigned (Words[1], 23, N) && ParseUnsigned (Words[2], 23, M)) {
    // The comparison window has no service operation of its own; users reach
    // it from the listing's context menu, scripts open it directly.
    if (OpenFileComparison (static_cast<UINT8> (N), static_cast<UINT8> (M), C8 (Words[3])) == nullptr)
      Error = "the comparison window did not open";
    return Error.empty ();
  }
  if (Command == "select" && Count >= 2) {
    LIST_CONTROL *List = FirstOfKind<LIST_CONTROL> (Wb, Active, CONTROL_KIND_LIST);
    if (List == nullptr) {
      Error = "the active window has no list";
      return false;
    }
    std::vector<uint16_t> Rows;
    for (size_t I = 1; I < Count; I++) {
      uint16_t Row = 0;
      if (!RowOf (Cd, List, Words[I], Row)) {
        Error = "no row " + Words[I];
        return false;
      }
      Rows.push_back (Row);
    }
    FocusList (Wb, Active, List);
    Cd.SelectRows (List, Rows);
    return true;
  }
  if ((Command == "activate" || Command == "rclick") && Count == 2) {
    bool Context = Command == "rclick";
    if (LIST_CONTROL *List = FirstOfKind<LIST_CONTROL> (Wb, Active, CONTROL_KIND_LIST)) {
      FocusList (Wb, Active, List);
      uint16_t Row = 0;
      if (Context && Words[1] == "none") {
        Cd.SelectRows (List, {});
        Cd.ContextClick (List, 20, static_cast<uint16_t> (List->Control.Height > 4 ? List->Control.Height - 4 : 0));
        return true;
      }
      if (!RowOf (Cd, List, Words[1], Row)) {
        Error = "no row " + Words[1];
        return false;
      }
      if (!Context) {
        Cd.ActivateRow (List, Row);
        return true;
      }
      std::vector<uint16_t> Selected = Cd.SelectedRows (List);
      bool Already = false;
      for (uint16_t S : Selected) Already |= S == Row;
      if (!Already) Cd.SelectRows (List, {Row});
      uint16_t Top = static_cast<uint16_t> (List->TopRow);
      uint16_t Y = static_cast<uint16_t> (Cd.HeaderHeight () + (Row >= Top ? Row - Top : 0) * Cd.RowHeight () + 4);
      Cd.ContextClick (List, 20, Y);
      return true;
    }
    if (FILE_LIST *Tree = FirstOfKind<FILE_LIST> (Wb, Active, CONTROL_KIND_FILE_LIST)) {
      uint16_t Index = 0;
      if (!TreeItemOf (Cd, Tree, Words[1], Index)) {
        Error = "no tree item " + Words[1];
        return false;
      }
      if (Context) {
        int32_t X = 0, Y = 0;
        Wb.ScreenOrigin (Tree, X, Y);
        Cd.TreeContextClick (Tree, Index, static_cast<uint16_t> (X + 40), static_cast<uint16_t> (Y + 20));
      } else {
        Cd.ActivateTreeItem (Tree, Index);
      }
      return true;
    }
    if (LOG_VIEW *Log = FirstOfKind<LOG_VIEW> (Wb, Active, CONTROL_KIND_LOG_VIEW)) {
      if (!ParseUnsigned (Words[1], 0xFFFE, N) || N >= Log->LineCount) {
        Error = "no log line " + Words[1];
        return false;
      }
      Cd.SelectLogLine (Log, static_cast<uint16_t> (N));
      if (Context) {
        int32_t X = 0, Y = 0;
        Wb.ScreenOrigin (Log, X, Y);
        Cd.LogContextClick (Log, static_cast<uint16_t> (X + 40), static_cast<uint16_t> (Y + 20));
      }
      return true;
    }
    Error = "the active window has no list, tree or log";
    return false;
  }
  if (Command == "expand" && Count == 2) {
    FILE_LIST *Tree = FirstOfKind<FILE_LIST> (Wb, Active, CONTROL_KIND_FILE_LIST);
    uint16_t Index = 0;
    if (Tree == nullptr || !TreeItemOf (Cd, Tree, Words[1], Index)) {
      Error = "no tree item " + Words[1];
      return false;
    }
    Cd.ExpandTreeItem (Tree, Index);
    return true;
  }
  if (Command == "choose" && Count == 2) {
    COMBO_BOX *Combo = FirstOfKind<COMBO_BOX> (Wb, Active, CONTROL_KIND_COMBO);
    if (Combo == nullptr) {
      Error = "the active window has no combo box";
      return false;
    }
    std::vector<std::string> Items = Cd.ComboItems (Combo);
    for (size_t I = 0; I < Items.size (); I++)
      if (env::GbkToUtf8 (Items[I]) == Words[1] || Words[1] == std::to_string (I)) {
        Cd.ChooseComboRow (Combo, static_cast<uint16_t> (I));
        return true;
      }
    Error = "no combo item " + Words[1];
    return false;
  }
  if (Command == "menu" && Count == 2) {
    if (WINDOW_HEADER *Popup = Wb.ShownPopup ()) {
      for (const env::PopupItemInfo &Item : Wb.PopupItems (Popup))
        if (!Item.Separator && env::GbkToUtf8 (Item.Text) == Words[1]) {
          if (!Item.Enabled) {
            Error = "the menu item \"" + Words[1] + "\" is disabled";
            return false;
          }
          return Wb.ChoosePopupItem (Popup, Item.Text);
        }
      Error = "no item \"" + Words[1] + "\" in the open popup";
      return false;
    }
    std::vector<CONTROL *> All;
    if (Active != nullptr) CollectControls (Wb, Active, All);
    for (CONTROL *C : All)
      if (C->Kind == CONTROL_KIND_MENU_ITEM && env::GbkToUtf8 (Text (C->Text)) == Words[1])
        return Wb.ClickMenuItem (reinterpret_cast<MENU_ITEM *> (C));
    Error = "no menu \"" + Words[1] + "\"";
    return false;
  }
  if (Command == "button" && Count == 2) {
    std::vector<CONTROL *> All;
    if (Active != nullptr) CollectControls (Wb, Active, All);
    for (CONTROL *C : All) {
      bool Named = env::GbkToUtf8 (Text (C->Text)) == Words[1];
      if (C->Kind == CONTROL_KIND_MENU_ITEM) {
        MENU_ITEM *Item = reinterpret_cast<MENU_ITEM *> (C);
        if (Named || env::GbkToUtf8 (Text (Item->Tooltip)) == Words[1]) {
          if (!(C->Flags & WINDOW_FLAG_ENABLED)) {
            Error = "the button \"" + Words[1] + "\" is disabled";
            return false;
          }
          return Wb.ClickMenuItem (Item);
        }
      } else if (C->Kind == CONTROL_KIND_BUTTON && Named) {
        return Wb.ClickButton (C);
      }
    }
    Error = "no button \"" + Words[1] + "\"";
    return false;
  }
  if (Command == "type" && Count == 2) {
    PendingText_ = Words[1];
    HasPendingText_ = true;
    LIST_CONTROL *List = FirstOfKind<LIST_CONTROL> (Wb, Active, CONTROL_KIND_LIST);
    FILE_LIST *Tree = FirstOfKind<FILE_LIST> (Wb, Active, CONTROL_KIND_FILE_LIST);
    if ((List != nullptr && Cd.Editing (List)) || (Tree != nullptr && Cd.TreeEditing (Tree))) return true;
    // Otherwise the text goes into the focused text field, or the window's last one.
    CONTROL *Field = nullptr;
    if (Active != nullptr && Wb.IsControl (Active->FocusControl) &&
        static_cast<CONTROL *> (Active->FocusControl)->Kind == CONTROL_KIND_TEXT_FIELD)
      Field = static_cast<CONTROL *> (Active->FocusControl);
    if (Field == nullptr) {
      std::vector<CONTROL *> All;
      if (Active != nullptr) CollectControls (Wb, Active, All);
      for (CONTROL *C : All)
        if (C->Kind == CONTROL_KIND_TEXT_FIELD) Field = C;
    }
    if (Field == nullptr) {
      Error = "nothing to type into";
      return false;
    }
    Wb.Table ()->SetWindowText (Field, C8 (Words[1]));
    HasPendingText_ = false;
    return true;
  }
  if (Command == "key" && Count == 2) {
    KeyStroke Key;
    if (!ParseKeyName (Words[1], Key)) {
      Error = "unknown key " + Words[1];
      return false;
    }
    LIST_CONTROL *List = FirstOfKind<LIST_CONTROL> (Wb, Active, CONTROL_KIND_LIST);
    FILE_LIST *Tree = FirstOfKind<FILE_LIST> (Wb, Active, CONTROL_KIND_FILE_LIST);
    bool Finish = Key.Char == '\r' || Key.Scan == SCAN_CODE_ESCAPE;
    // Text given by "type" ends an edit as typed; keys alone edit as the desktop's do.
    if (Finish && HasPendingText_ && List != nullptr && Cd.Editing (List)) {
      HasPendingText_ = false;
      Cd.FinishEdit (List, PendingText_, Key.Char == '\r');
      return true;
    }
    if (Finish && Tree != nullptr && Cd.TreeEditing (Tree)) {
      std::string Typed = HasPendingText_ ? PendingText_ : "";
      HasPendingText_ = false;
      Cd.FinishTreeEdit (Tree, Typed, Key.Char == '\r');
      return true;
    }
    if (Active == nullptr && Wb.ShownPopup () == nullptr) {
      Error = "no window to send the key to";
      return false;
    }
    // The same keyboard as the desktop's (and the firmware's).
    Mouse_->Key (Key.Char, Key.Scan, Key.Shift);
    return true;
  }
  if ((Command == "click" || Command == "rightclick" || Command == "doubleclick") && Count == 3 &&
      ParseUnsigned (Words[1], 65535, N) && ParseUnsigned (Words[2], 65535, M)) {
    // The mouse finds windows and controls where the screen shows them.
    env::RenderDesktop (Env);
    int X = static_cast<int> (N), Y = static_cast<int> (M);
    bool Right = Command == "rightclick";
    Mouse_->MouseDown (X, Y, Right ? env::MouseButton::Right : env::MouseButton::Left,
                       Command == "doubleclick" ? 2 : 1);
    Mouse_->MouseUp (X, Y);
    return true;
  }
  if (Command == "tick" && Count <= 2) {
    unsigned long Ticks = 1;
    if (Count == 2 && !ParseUnsigned (Words[1], 100000000ul, Ticks)) {
      Error = "bad tick count " + Words[1];
      return false;
    }
    for (unsigned long I = 0; I < Ticks; I++) {
      Wb.RunTimerTick ();
      Wb.PumpMessages ();
    }
    return true;
  }
  if (Command == "settle" && Count == 1) {
    if (!Settle ()) Error = "the session did not settle";
    return Error.empty ();
  }
  if (Command == "resize" && Count == 3 && ParseUnsigned (Words[1], 65535, N) && ParseUnsigned (Words[2], 65535, M)) {
    if (Active == nullptr) {
      Error = "no window to resize";
      return false;
    }
    Wb.ResizeWindow (Active, static_cast<uint16_t> (N), static_cast<uint16_t> (M));
    return true;
  }
  if (Command == "close" && Count == 1) {
    if (Active == nullptr) {
      Error = "no window to close";
      return false;
    }
    Wb.SendSysCommand (Active, SYSCMD_CLOSE);
    return true;
  }
  if (Command == "answer" && Count == 1) {
    Error = "no message box to answer";
    return false;
  }
  if (Command == "hover" && Count == 3 && ParseUnsigned (Words[1], 65535, N) && ParseUnsigned (Words[2], 65535, M)) {
    Mouse_->MouseMove (static_cast<int> (N), static_cast<int> (M));
    return true;
  }
  if (Command == "dump" && Count == 1) {
    Out_ << Dump_.Take ();
    return true;
  }
  if (Command == "shot" && Count == 2) {
    return SaveScreenshot (Env, Words[1], Error);
  }
  if (Command == "expect" && Count == 2) {
    if (Dump_.Peek ().find (Words[1]) == std::string::npos) Error = "expected \"" + Words[1] + "\" on the screen";
    return Error.empty ();
  }
  Error = "cannot understand: " + Command + (Count > 1 ? " ..." : "");
  return false;
}

}  // namespace surveyor
