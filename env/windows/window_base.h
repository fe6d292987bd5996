// The stand-in window base: windows, controls shared by all windows,
// messages with a pump, timers, popup menus, message boxes and icons.
//
// Behaviour of this window base (the driver relies only on the table's
// documented results; the rest is decided here):
// - Windows are pool blocks of the size asked for (at least the 272-byte
//   header), zero-filled, NotifyEnabled 1. Top-level windows have the desktop
//   as parent and keep a z-order; a new one goes on top and becomes the active
//   window without messages. Child windows chain through NextWindow (the
//   parent's first child window is kept by the base); controls chain through
//   FirstChild / NextSibling in creation order.
// - SendMessage delivers at once; a handler result of 1 lets the base apply
//   its default action: MSG_SYSCOMMAND 4 destroys the window, 2 toggles
//   maximised (RestoreRect and flag 0x200), MSG_ACTIVATE raises the window.
//   PostMessage queues; PumpMessages delivers in order, dropping messages
//   whose target was destroyed in between.
// - DestroyWindow: the destroy callback runs first, then the child windows
//   are destroyed, then the controls; popups owned by the window lose their
//   owner. Memory is released when the outermost dispatch returns, so a
//   handler may destroy its own window.
// - ActivateWindow: MSG_KILL_FOCUS to the window that was active, then
//   MSG_ACTIVATE (accepted: raised to the top), then MSG_SET_FOCUS.
// - SetFocus sends MSG_KILL_FOCUS / MSG_SET_FOCUS to child windows that lose
//   or gain the focus (controls are only recorded).
// - Keys (SendKey): a key with Alt or the menu key (scan 0xFFFE) is offered to
//   the child windows first (the menu header); then the focused control sees
//   it (type-ahead in lists, in-place edits); then the window's handler.
// - Popups: one shown at a time. Showing sends MSG_POPUP_OPENED (popup at
//   byte 8) to the owner, closing sends MSG_POPUP_CLOSED. Choosing an item
//   closes the popup first, then runs the command with (item, context).
//   Escape sent to a popup closes it; Up/Down move the highlight, Enter runs
//   the highlighted item. Item height is line height + 6, separators 8;
//   popup width is the widest text + 56 (icon column and margins), at least 96.
// - Menu buttons: text items get Flags 0x03 and width = text width + 16 at
//   y 3 with height line height + 12; icon items Flags 0x01, the width given,
//   at y line height + 20. ItemGroup is the header window's address.
// - Icons: LoadIcon ids live for the session (same path and size give the same
//   id); LoadIconFromFile ids are freed by FreeIcon. Failure: ICON_NONE (126)
//   for a missing or undecodable file, 127 when all 126 ids are in use.
// - Message boxes are recorded, then shown (OpenMessageBox) while the answerer
//   runs; no answerer answers 1 at once. Timers and posted messages wait
//   while a box is shown: the driver's code that asked is still on the stack.
// - Tooltips: one at a time, shown for a menu item by the mouse side; it goes
//   when its item goes.
// - CompleteDialog records a copy of the result, hands it to the dialog
//   listener, then posts MSG_SYSCOMMAND 4 to the dialog.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "env/siblings.h"
#include "services/window_base.h"

namespace env {

struct PaintContext;

struct MessageBoxRecord {
  uint8_t Style = 0;
  std::string Text, Caption;
  bool Dismissed = false;          // the user pressed its button (while shown)
};

struct TooltipInfo {
  std::string Text;
  int X = 0, Y = 0;                // screen position of its top-left corner
};

struct PopupItemInfo {
  std::string Text;
  COMMAND_CALLBACK Command = nullptr;
  WINDOW_HEADER *Context = nullptr;
  uint8_t Icon = ICON_NONE;
  bool Enabled = true;
  bool Separator = false;
  MENU_ITEM *Item = nullptr;       // the record handed to the command
};

struct DialogResult {
  WINDOW_HEADER *Dialog = nullptr;
  std::vector<uint8_t> Data;
};

class WindowBase {
 public:
  WindowBase (FileDriver &Files, GuiDriver &Gui, uint32_t Version);
  ~WindowBase ();
  WindowBase (const WindowBase &) = delete;
  WindowBase &operator= (const WindowBase &) = delete;
  WINDOW_BASE_PROTOCOL *Table ();

  // Delivers posted messages until none is left; returns how many were delivered.
  size_t PumpMessages ();
  // Runs one tick of every timer (in the order they were set); returns how many ran.
  size_t RunTimerTick ();
  size_t TimerCount () const;

  // Top-level windows from the bottom of the z-order to the top.
  std::vector<WINDOW_HEADER *> TopLevelWindows () const;
  WINDOW_HEADER *ActiveWindow () const;
  // Destroys every window but the popups (tests end with it).
  void DestroyAllWindows ();

  // ---- windows
  bool IsWindow (const void *Target) const;            // a live window or popup
  bool IsControl (const void *Target) const;           // a live control
  std::vector<WINDOW_HEADER *> ChildWindows (WINDOW_HEADER *Window) const;
  std::vector<CONTROL *> Controls (WINDOW_HEADER *Window) const;
  std::string WindowText (const void *WindowOrControl) const;
  size_t LiveWindowCount () const;                     // windows and popups
  // Sends the close box's MSG_SYSCOMMAND (or any code); returns the handler's result.
  UINTN SendSysCommand (WINDOW_HEADER *Window, uint16_t Code);
  // Sends MSG_RESIZE with the new size (the window's handler applies it).
  UINTN ResizeWindow (WINDOW_HEADER *Window, uint16_t Width, uint16_t Height);
  // Type-2 message, routed as described above; returns 1 when someone took it.
  UINTN SendKey (WINDOW_HEADER *Window, CHAR16 Ch, UINT16 Scan, UINT32 Shift);

  // ---- message boxes
  const std::vector<MessageBoxRecord> &MessageBoxes () const;
  void ClearMessageBoxes ();
  void SetMessageBoxAnswerer (std::function<UINTN (const MessageBoxRecord &)> Answerer);
  // The box being shown (its answerer is running), or nullptr.
  const MessageBoxRecord *OpenMessageBox () const;
  // The user's press of the shown box's button; an answerer waiting for the
  // user sees it in OpenMessageBox ()->Dismissed.
  void DismissMessageBox ();

  // ---- tooltips
  // Shows the tooltip of a menu item at a screen position (hidden when the
  // item has no tooltip text).
  void ShowTooltip (const MENU_ITEM *Item, int X, int Y);
  void HideTooltip ();
  // The tooltip shown now; false when none (or its item is gone).
  bool ShownTooltip (TooltipInfo &Out) const;

  // ---- popups and menus
  WINDOW_HEADER *ShownPopup () const;
  std::vector<WINDOW_HEADER *> Popups () const;
  std::vector<PopupItemInfo> PopupItems (WINDOW_HEADER *Popup) const;
  bool ChoosePopupItem (WINDOW_HEADER *Popup, const std::string &Text);
  void ClosePopup ();
  bool ClickMenuItem (MENU_ITEM *Item);
  bool ClickButton (CONTROL *Button);

  // ---- status line, dialogs, options
  std::string StatusText (WINDOW_HEADER *Window, uint8_t Field) const;
  // Fields of the status line: the layout count, or more when a field beyond it was written.
  uint8_t StatusFieldCount (WINDOW_HEADER *Window) const;
  // The value the window gave SetStatusLayout (0 when none).
  uint8_t StatusLayout (WINDOW_HEADER *Window) const;
  const std::vector<DialogResult> &DialogResults () const;
  void SetDialogListener (std::function<void (const DialogResult &)> Listener);
  void SetExtendedMenus (bool Extended);

  // ---- icons
  std::string IconPath (uint8_t Id) const;
  size_t LiveIconCount () const;
  // Decoded pixels of an icon (0xAARRGGBB, rows top-down); false for no icon.
  bool IconImage (uint8_t Id, uint32_t &Width, uint32_t &Height, const uint32_t *&Pixels) const;

  // ---- painting and redraws
  unsigned RedrawCount (const void *Target) const;      // Redraw calls (and redraws asked by other ops)
  unsigned UpdateCount (const void *Target) const;      // UpdateItem calls
  // Called for every Redraw / UpdateItem (the GUI side repaints).
  void SetRedrawHook (std::function<void (void *Target)> Hook);
  // Replaces DefaultPaint's plain fill (the GUI side draws frames and controls).
  void SetPaintHook (std::function<void (WINDOW_HEADER *Window, PaintContext &Context)> Hook);
  // Screen position of a window (sum of the parent chain) or control.
  void ScreenOrigin (const void *WindowOrControl, int32_t &X, int32_t &Y) const;

  struct State;
  State &Internal ();
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
