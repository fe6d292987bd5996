// The user's mouse and keyboard on the desktop, turned into the window
// base's and control driver's user actions: activating and moving windows,
// the close box, resizing by the right and bottom borders, menu buttons,
// buttons, list rows (select, open, context click, scroll), list columns
// (dragging a title's right border sizes the column, double-clicking it fits
// the column to its widest text; the sideways scroll bar), tree items, combo
// boxes, log lines, popup items, keys to the active window (Tab that the
// window leaves moves the focus), tooltips of menu buttons and of list cells
// that do not show whole under the pointer, and the button of a message box
// being shown (which then takes all input). It knows the layout the renderer draws; it has no display of its
// own (the SDL desktop feeds it, and tests can too).
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "env/windows/window_base.h"
#include "services/window_records.h"

namespace env {

class Siblings;

enum class MouseButton { Left, Right };

// The key that opens a context menu (Menu or Application key); backends give
// it as this scan code, which never reaches the driver.
constexpr UINT16 kScanContextMenu = 0xFFF0;

class DesktopInput {
 public:
  explicit DesktopInput (Siblings &Env);

  // Clicks is 2 for a double click. Returns true when something reacted.
  bool MouseDown (int X, int Y, MouseButton Button, int Clicks, bool Ctrl = false, bool Shift = false);
  // Drags a window by its title bar or a list column's border; over an open
  // popup, highlights the item; over a menu button or a cut list cell, shows
  // its tooltip. Returns true when the screen changed.
  bool MouseMove (int X, int Y);
  void MouseUp (int X, int Y);
  // Wheel over a list, tree or log: positive Lines scroll up.
  bool Wheel (int X, int Y, int Lines);
  // A key: the desktop's own commands, the open popup, or the active window
  // (desktop_keys.cpp).
  bool Key (CHAR16 Ch, UINT16 Scan, UINT32 Shift);
  // How the volume chooser (Ctrl+O) opens the file manager of a volume.
  void SetVolumeOpener (std::function<bool (int Volume)> Opener);

  // The top-level window under a point, or nullptr.
  WINDOW_HEADER *WindowAt (int X, int Y) const;
  // The control under a point within a window (its child windows first), or nullptr.
  CONTROL *ControlAt (WINDOW_HEADER *Window, int X, int Y) const;
  // Row of a list under a screen point (0xFFFF when none).
  uint16_t ListRowAt (LIST_CONTROL *List, int X, int Y) const;
  // Column of a list under a screen x, in its view (-1 when none).
  int ListColumnAt (LIST_CONTROL *List, int X) const;
  // Column whose title's right border is under a screen point (-1 when none).
  int ListBorderAt (LIST_CONTROL *List, int X, int Y) const;

 private:
  bool ClickControl (WINDOW_HEADER *Window, CONTROL *Control, int X, int Y, MouseButton Button, int Clicks, bool Ctrl,
                     bool Shift);
  bool ClickPopup (WINDOW_HEADER *Popup, int X, int Y);
  int PopupItemAt (WINDOW_HEADER *Popup, const std::vector<PopupItemInfo> &Items, int X, int Y) const;
  bool PointAt (int X, int Y);
  bool ShownTooltip (TooltipInfo &Out) const;
  bool ResizeTo (int X, int Y);
  bool MoveFocus (WINDOW_HEADER *Window, bool Backwards);
  bool DesktopKey (CHAR16 Ch, UINT16 Scan, UINT32 Shift);
  bool PopupKey (WINDOW_HEADER *Popup, CHAR16 Ch, UINT16 Scan, UINT32 Shift);
  bool MenuTitleKey (WINDOW_HEADER *Window, CHAR16 Ch, UINT16 Scan);
  bool ControlKey (WINDOW_HEADER *Window, CHAR16 Ch, UINT16 Scan, UINT32 Shift);
  bool ChooseVolume ();
  static VOID EFIAPI VolumeChosen (VOID *Item, WINDOW_HEADER *Context);
  bool MessageBoxClick (int X, int Y);
  Siblings &Env_;
  WINDOW_HEADER *Dragging_ = nullptr;
  WINDOW_HEADER *Resizing_ = nullptr;
  LIST_CONTROL *Sizing_ = nullptr;     // the list whose column is being sized
  uint8_t SizingColumn_ = 0;
  int SizingFrom_ = 0;                 // pointer x less the column's width
  bool ResizeRight_ = false, ResizeBottom_ = false;
  int SentWidth_ = 0, SentHeight_ = 0;
  int DragDx_ = 0, DragDy_ = 0;
  uint16_t Anchor_ = 0;
  std::function<bool (int Volume)> OpenVolume_;
  WINDOW_HEADER *Chooser_ = nullptr;
  std::vector<int> ChooserVolumes_;
};

}  // namespace env
