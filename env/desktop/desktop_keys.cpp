// The keyboard of the desktop: every command can be reached without a
// pointer (many firmware setups have none). Keys go, in this order, to a
// message box being shown, to the desktop's own commands, to the open popup,
// then to the active window (the window base routes them on to the focused
// control and the window's handler). The table of keys is in the README.
#include <algorithm>

#include "env/controls/control_driver.h"
#include "env/desktop/desktop_input.h"
#include "env/files/file_driver.h"
#include "env/gui/gui_driver.h"
#include "env/siblings.h"
#include "env/windows/window_base.h"
#include "env/windows/window_internal.h"
#include "services/control_driver.h"

namespace env {

namespace {

constexpr UINT32 kShiftKeys = KEY_STATE_LEFT_SHIFT | KEY_STATE_RIGHT_SHIFT;
constexpr UINT32 kControlKeys = KEY_STATE_LEFT_CONTROL | KEY_STATE_RIGHT_CONTROL;
constexpr UINT32 kAltKeys = KEY_STATE_LEFT_ALT | KEY_STATE_RIGHT_ALT;
constexpr UINT16 kScanHome = 0x05, kScanEnd = 0x06, kScanPageUp = 0x09, kScanPageDown = 0x0A;
constexpr UINT16 kScanF2 = 0x0C, kScanF4 = 0x0E, kScanF10 = 0x14;
constexpr int kWindowStep = 16;      // pixels a window moves or grows by one key

DesktopInput *gVolumeChooser = nullptr;   // whose volume popup is open

bool Held (UINT32 Shift, UINT32 Keys) { return (Shift & Keys) != 0; }

bool TakesKeys (const CONTROL *C) {
  bool Kind = C->Kind == CONTROL_KIND_LIST || C->Kind == CONTROL_KIND_FILE_LIST || C->Kind == CONTROL_KIND_LOG_VIEW ||
              C->Kind == CONTROL_KIND_COMBO || C->Kind == CONTROL_KIND_TEXT_VIEW || C->Kind == CONTROL_KIND_BUTTON;
  return Kind && (C->Flags & WINDOW_FLAG_ENABLED) && C->Width > 0 && C->Height > 0;
}

}  // namespace

bool DesktopInput::Key (CHAR16 Ch, UINT16 Scan, UINT32 Shift) {
  WindowBase &Wb = Env_.windows ();
  if (Wb.OpenMessageBox ()) {
    // Enter, space and Escape press the box's one button.
    if (Ch == 0x0D || Ch == ' ' || Scan == SCAN_CODE_ESCAPE) {
      Wb.DismissMessageBox ();
      return true;
    }
    return false;
  }
  Wb.HideTooltip ();
  Env_.controls ().HideCellTip ();
  if (DesktopKey (Ch, Scan, Shift)) {
    Wb.PumpMessages ();
    return true;
  }
  WINDOW_HEADER *W = Wb.ActiveWindow ();
  if (!W) return false;
  if (WINDOW_HEADER *Popup = Wb.ShownPopup ()) {
    bool Taken = PopupKey (Popup, Ch, Scan, Shift);
    Wb.PumpMessages ();
    return Taken;
  }
  if (MenuTitleKey (W, Ch, Scan)) {
    Wb.PumpMessages ();
    return true;
  }
  // F10 highlights the first menu title, as the menu key does.
  if (Scan == kScanF10 && !Held (Shift, kShiftKeys | kControlKeys | kAltKeys)) Scan = SCAN_CODE_HOTKEY;
  bool Menu = Scan == SCAN_CODE_HOTKEY || Held (Shift, kAltKeys);
  // A window whose controls have no focus yet gives the keys to the first of them.
  if (!Menu && Ch != 0x09 && !Wb.IsControl (W->FocusControl)) MoveFocus (W, false);
  if (ControlKey (W, Ch, Scan, Shift)) {
    Wb.PumpMessages ();
    return true;
  }
  UINTN Taken = Wb.SendKey (W, Ch, Scan, Shift);
  Wb.PumpMessages ();
  if (Taken == 0 && Ch == 0x09 && Wb.IsWindow (W)) return MoveFocus (W, Held (Shift, kShiftKeys));
  return Taken != 0;
}

// Keys of the desktop itself: windows in turn, closing, moving and resizing
// the active window, and the volume chooser.
bool DesktopInput::DesktopKey (CHAR16 Ch, UINT16 Scan, UINT32 Shift) {
  WindowBase &Wb = Env_.windows ();
  if (Wb.ShownPopup () != nullptr) return false;
  std::vector<WINDOW_HEADER *> Windows = Wb.TopLevelWindows ();
  WINDOW_HEADER *W = Wb.ActiveWindow ();
  bool Control = Held (Shift, kControlKeys), Alt = Held (Shift, kAltKeys);
  // Ctrl+Tab or Alt+Tab: the window at the bottom comes to the top.
  if (Ch == 0x09 && (Control || Alt)) {
    if (Windows.size () < 2) return true;
    WINDOW_HEADER *Next = Held (Shift, kShiftKeys) ? Windows[Windows.size () - 2] : Windows.front ();
    Wb.Table ()->ActivateWindow (Next);
    return true;
  }
  // Ctrl+W or Alt+F4 close the active window.
  if (W != nullptr && ((Control && (Ch == 'w' || Ch == 'W')) || (Alt && Scan == kScanF4))) {
    Wb.SendSysCommand (W, SYSCMD_CLOSE);
    return true;
  }
  if (Control && (Ch == 'o' || Ch == 'O')) return ChooseVolume ();
  // Alt+F10 fills the screen with the active window, or gives it its size back.
  if (W != nullptr && Alt && Scan == kScanF10) {
    Wb.SendSysCommand (W, SYSCMD_RESTORE);
    return true;
  }
  // Alt with an arrow moves the active window; Alt and Shift with an arrow resize it.
  if (W != nullptr && Alt && Scan >= SCAN_CODE_UP && Scan <= SCAN_CODE_LEFT) {
    int Dx = Scan == SCAN_CODE_RIGHT ? kWindowStep : Scan == SCAN_CODE_LEFT ? -kWindowStep : 0;
    int Dy = Scan == SCAN_CODE_DOWN ? kWindowStep : Scan == SCAN_CODE_UP ? -kWindowStep : 0;
    GuiDriver &Gui = Env_.gui ();
    if (Held (Shift, kShiftKeys)) {
      Wb.ResizeWindow (W, static_cast<uint16_t> (std::clamp (W->Width + Dx, 40, 0xFFFF)),
                       static_cast<uint16_t> (std::clamp (W->Height + Dy, 40, 0xFFFF)));
    } else {
      W->X = static_cast<UINT16> (std::clamp (W->X + Dx, 0, std::max (0, Gui.Width () - 40)));
      W->Y = static_cast<UINT16> (std::clamp (W->Y + Dy, 0, std::max (0, Gui.Height () - 20)));
    }
    return true;
  }
  return false;
}

// In an open popup: Left and Right go to the menu title next to the one
// whose popup is open; the rest is the popup's (Up, Down, Enter, Escape).
bool DesktopInput::PopupKey (WINDOW_HEADER *Popup, CHAR16 Ch, UINT16 Scan, UINT32 Shift) {
  WindowBase &Wb = Env_.windows ();
  MESSAGE Message {};
  Message.Type = MSG_KEY;
  Message.Code = 1;
  Message.Word2 = Ch;
  Message.Word4 = Scan;
  Message.Dword8 = Shift;
  auto *Owner = static_cast<WINDOW_HEADER *> (Popup->Owner);
  if ((Scan == SCAN_CODE_LEFT || Scan == SCAN_CODE_RIGHT) && Wb.IsWindow (Owner) &&
      Owner->Parent != Wb.Table ()->Desktop)
    return Wb.Table ()->SendMessage (Owner, &Message) != 0 || Wb.ShownPopup () != Popup;
  return Wb.Table ()->SendMessage (Popup, &Message) != 0;
}

// A menu title highlighted by F10 (its popup not open yet): Enter, space or
// Down open it, Escape gives the keyboard back to the window's controls.
bool DesktopInput::MenuTitleKey (WINDOW_HEADER *Window, CHAR16 Ch, UINT16 Scan) {
  WindowBase &Wb = Env_.windows ();
  auto *Header = static_cast<WINDOW_HEADER *> (Window->FocusControl);
  if (!Wb.IsWindow (Header) || Header == Window) return false;
  auto *Title = static_cast<MENU_ITEM *> (Header->FocusControl);
  if (!Wb.IsControl (Title) || Title->Control.Kind != CONTROL_KIND_MENU_ITEM || Title->Control.State != 2) return false;
  if (Ch == 0x0D || Ch == ' ' || Scan == SCAN_CODE_DOWN) {
    MESSAGE Open {};
    Open.Type = MSG_COMMAND;
    Open.Code = 2;
    Open.Value8 = 1;   // the popup opens with its first item highlighted
    Wb.Table ()->SendMessage (Title, &Open);
    return true;
  }
  if (Scan == SCAN_CODE_ESCAPE) {
    Title->Control.State = 0;
    Wb.Table ()->SetFocus (Header, nullptr, 1);
    MoveFocus (Window, false);
    return true;
  }
  return false;
}

// Keys the focused control takes on the user's behalf, beyond what the
// control itself handles.
bool DesktopInput::ControlKey (WINDOW_HEADER *Window, CHAR16 Ch, UINT16 Scan, UINT32 Shift) {
  WindowBase &Wb = Env_.windows ();
  ControlDriver &Cd = Env_.controls ();
  auto *C = static_cast<CONTROL *> (Window->FocusControl);
  if (!Wb.IsControl (C)) return false;
  bool Context = Scan == kScanContextMenu || (Scan == kScanF10 && Held (Shift, kShiftKeys));
  bool Plain = !Held (Shift, kControlKeys | kAltKeys);
  switch (C->Kind) {
    case CONTROL_KIND_LIST: {
      auto *List = reinterpret_cast<LIST_CONTROL *> (C);
      if (Cd.Editing (List)) return false;
      uint16_t Row = List->CurrentRow < List->RowCount ? List->CurrentRow : 0;
      if (Context && List->RowCount > 0) {
        std::vector<uint16_t> Sel = Cd.SelectedRows (List);
        if (std::find (Sel.begin (), Sel.end (), Row) == Sel.end ()) Cd.SelectRows (List, {Row});
        int Y = 1 + Cd.HeaderHeight () + (Row - std::min<int> (Row, List->TopRow)) * Cd.RowHeight () + Cd.RowHeight () / 2;
        Cd.ContextClick (List, 24, static_cast<uint16_t> (std::min (Y, C->Height - 1)));
        return true;
      }
      if (Scan == kScanF2 && Plain && List->RowCount > 0) {
        Cd.Table ()->BeginRename (List, Window);
        return true;
      }
      // Backspace opens "..", the way up.
      if (Ch == 0x08 && Plain) {
        for (uint16_t R = 0; R < List->RowCount; R++)
          if (Cd.CellText (List, 0, R) == "..") {
            Cd.ActivateRow (List, R);
            return true;
          }
        return false;
      }
      return false;
    }
    case CONTROL_KIND_FILE_LIST: {
      auto *Tree = reinterpret_cast<FILE_LIST *> (C);
      std::vector<FILE_LIST_ITEM> Items = Cd.TreeItems (Tree);
      if (Items.empty () || Cd.TreeEditing (Tree)) return false;
      int Count = static_cast<int> (Items.size ());
      int At = Tree->SelectedItem < Items.size () ? Tree->SelectedItem : 0;
      int Page = std::max (1, C->Height / (Env_.gui ().Table ()->GetLineHeight () + 2) - 1);
      int To = Scan == SCAN_CODE_UP ? At - 1 : Scan == SCAN_CODE_DOWN ? At + 1 : Scan == kScanPageUp ? At - Page
               : Scan == kScanPageDown ? At + Page : Scan == kScanHome ? 0 : Scan == kScanEnd ? Count - 1 : -2;
      if (To != -2) {
        To = std::clamp (To, 0, Count - 1);
        Cd.SelectTreeItem (Tree, static_cast<uint16_t> (To));
        int Visible = std::max (1, Page);
        if (To < Tree->TopItem) Tree->TopItem = static_cast<UINT16> (To);
        if (To >= Tree->TopItem + Visible) Tree->TopItem = static_cast<UINT16> (To - Visible + 1);
        return true;
      }
      const FILE_LIST_ITEM &Item = Items[At];
      if ((Scan == SCAN_CODE_RIGHT && Item.HasChildren && !Item.Expanded) ||
          (Scan == SCAN_CODE_LEFT && Item.Expanded)) {
        Cd.ExpandTreeItem (Tree, static_cast<uint16_t> (At));
        return true;
      }
      if (Ch == 0x0D) {
        Cd.ActivateTreeItem (Tree, static_cast<uint16_t> (At));
        return true;
      }
      if (Context) {
        int32_t X = 0, Y = 0;
        Wb.ScreenOrigin (C, X, Y);
        int Row = At - Tree->TopItem;
        Cd.TreeContextClick (Tree, static_cast<uint16_t> (At), static_cast<uint16_t> (X + 24),
                             static_cast<uint16_t> (Y + 2 + Row * (Env_.gui ().Table ()->GetLineHeight () + 2) + 8));
        return true;
      }
      return false;
    }
    case CONTROL_KIND_LOG_VIEW: {
      auto *Log = reinterpret_cast<LOG_VIEW *> (C);
      if (Log->LineCount == 0) return false;
      int Count = Log->LineCount;
      int At = Log->SelectedLine < Log->LineCount ? Log->SelectedLine : 0;
      int Page = std::max (1, C->Height / (Env_.gui ().Table ()->GetLineHeight () + 2) - 1);
      int To = Scan == SCAN_CODE_UP ? At - 1 : Scan == SCAN_CODE_DOWN ? At + 1 : Scan == kScanPageUp ? At - Page
               : Scan == kScanPageDown ? At + Page : Scan == kScanHome ? 0 : Scan == kScanEnd ? Count - 1 : -2;
      if (To != -2) {
        To = std::clamp (To, 0, Count - 1);
        Cd.SelectLogLine (Log, static_cast<uint16_t> (To));
        if (To < Log->TopLine) Log->TopLine = static_cast<UINT16> (To);
        if (To >= Log->TopLine + Page) Log->TopLine = static_cast<UINT16> (To - Page + 1);
        return true;
      }
      if (Context) {
        int32_t X = 0, Y = 0;
        Wb.ScreenOrigin (C, X, Y);
        int Row = At - Log->TopLine;
        Cd.LogContextClick (Log, static_cast<uint16_t> (X + 24),
                            static_cast<uint16_t> (Y + 2 + Row * (Env_.gui ().Table ()->GetLineHeight () + 2) + 8));
        return true;
      }
      return false;
    }
    case CONTROL_KIND_COMBO: {
      auto *Combo = reinterpret_cast<COMBO_BOX *> (C);
      int Count = static_cast<int> (Cd.ComboItems (Combo).size ());
      if (Count == 0) return false;
      int At = Combo->CurrentRow < Count ? Combo->CurrentRow : -1;
      if (Scan == SCAN_CODE_UP || Scan == SCAN_CODE_DOWN) {
        int To = std::clamp (At + (Scan == SCAN_CODE_DOWN ? 1 : -1), 0, Count - 1);
        if (To != At) Cd.ChooseComboRow (Combo, static_cast<uint16_t> (To));
        return true;
      }
      return false;
    }
    case CONTROL_KIND_BUTTON:
      if (Ch == 0x0D || Ch == ' ') return Wb.ClickButton (C);
      return false;
    default:
      return false;
  }
}

// Tab: the keyboard focus goes to the next control that takes keys
// (Shift+Tab: the previous), round the window's controls.
bool DesktopInput::MoveFocus (WINDOW_HEADER *Window, bool Backwards) {
  WindowBase &Wb = Env_.windows ();
  std::vector<CONTROL *> Stops;
  for (CONTROL *C : Wb.Controls (Window))
    if (TakesKeys (C)) Stops.push_back (C);
  if (Stops.empty ()) return false;
  auto Current = std::find (Stops.begin (), Stops.end (), Window->FocusControl);
  size_t Next;
  if (Current == Stops.end ()) {
    Next = Backwards ? Stops.size () - 1 : 0;
  } else {
    size_t At = static_cast<size_t> (Current - Stops.begin ());
    Next = Backwards ? (At + Stops.size () - 1) % Stops.size () : (At + 1) % Stops.size ();
  }
  Wb.Table ()->SetFocus (Window, Stops[Next], 1);
  Wb.PumpMessages ();
  return true;
}

// ---------------------------------------------------------- volume chooser

void DesktopInput::SetVolumeOpener (std::function<bool (int Volume)> Opener) { OpenVolume_ = std::move (Opener); }

VOID EFIAPI DesktopInput::VolumeChosen (VOID *Item, WINDOW_HEADER *) {
  DesktopInput *Self = gVolumeChooser;
  if (Self == nullptr || !Self->OpenVolume_) return;
  std::vector<PopupItemInfo> Items = Self->Env_.windows ().PopupItems (Self->Chooser_);
  for (size_t I = 0; I < Items.size () && I < Self->ChooserVolumes_.size (); I++)
    if (Items[I].Item == Item) Self->OpenVolume_ (Self->ChooserVolumes_[I]);
}

// A popup of every volume: the chosen one's file manager opens (or comes to
// the front when it is open already).
bool DesktopInput::ChooseVolume () {
  WindowBase &Wb = Env_.windows ();
  WINDOW_HEADER *W = Wb.ActiveWindow ();
  if (!OpenVolume_ || W == nullptr) return false;
  WINDOW_BASE_PROTOCOL *T = Wb.Table ();
  if (Wb.IsWindow (Chooser_)) T->DestroyWindow (Chooser_);
  Chooser_ = T->CreatePopupMenu (W, 0, 0, 0);
  if (Chooser_ == nullptr) return false;
  ChooserVolumes_.clear ();
  const FILE_DRIVER_PROTOCOL *Files = Env_.files ().Table ();
  for (int V = 0; V < VOLUME_COUNT; V++) {
    const VOLUME_RECORD &R = Files->Volumes[V];
    if (R.InUse == 0 || R.Offered == 0) continue;
    std::string Text = std::to_string (V) + ": " + reinterpret_cast<const char *> (R.Label);
    if (R.Flags & VOLUME_FLAG_WRITE_PROTECTED) Text += "  (read-only)";
    T->AppendMenuItem (Chooser_, reinterpret_cast<const CHAR8 *> (Text.c_str ()), VolumeChosen, W, ICON_NONE);
    ChooserVolumes_.push_back (V);
  }
  Chooser_->X = static_cast<UINT16> (W->X + 24);
  Chooser_->Y = static_cast<UINT16> (W->Y + 24);
  gVolumeChooser = this;
  T->ShowPopupMenu (Chooser_);
  MESSAGE First {};
  First.Type = MSG_KEY;
  First.Code = 1;
  First.Word4 = SCAN_CODE_DOWN;
  T->SendMessage (Chooser_, &First);   // the first volume highlighted
  return true;
}

}  // namespace env
