// The stand-in control driver: list views, text views, combo boxes, file
// trees and log views, each sending the notifications their users read.
//
// Behaviour of this control driver:
// - Notifications go with SendMessage to the control's parent window, and
//   only while that window's NotifyEnabled byte is non-zero.
// - List view: a title row of line height + 6 pixels, rows of line height + 2;
//   VisibleRows = (height - line height - 8) / (line height + 2), less one
//   scroll bar's height while the columns are wider than the list. A scroll
//   bar control exists while RowCount > VisibleRows. Cell texts are cut to the
//   column's capacity less one byte (never inside a double-byte character).
// - List columns: the width AddColumn asks for is the room of the column's
//   texts; every cell gets 4 pixels of padding on each side, and column 0 of
//   a list with icons also the icon's room. Free width (the columns narrower
//   than the list) first widens the last column up to its widest text, then
//   goes to the first column (the name column of a file list). A column the
//   user sized (by dragging its title's right border, or double-clicking it
//   to fit its widest text) keeps that width. Columns wider than the list
//   scroll sideways (scroll bar along the bottom, Left and Right keys). A cell
//   whose text does not show whole gives its whole text as a tooltip while
//   the pointer rests on it (one at a time; it goes with its list or row).
// - List option 1 (set in the record by the hex viewer): a fixed-pitch table
//   of data that must show whole: no icons, no selection bar, 2 pixels of
//   padding, every column at least as wide as its widest text, no free width
//   handed out, and a wider gap after column 0 and after every eighth column
//   following it (the byte columns come in groups of eight).
//   Selection changes by the user send NOTIFY_SELECTION (2 selected, 4 rows,
//   6 current row, 10 id); opening a row NOTIFY_OPEN_ROW; a right click
//   NOTIFY_CONTEXT (x, y relative to the list; the selection is kept).
//   Typing a letter in a focused list moves to the next row whose name starts
//   with the typed prefix and sends NOTIFY_SEARCH (2 = 0, 4 row count,
//   6 = the row found + 1, 0 when none); Up/Down move the current row.
// - In-place edits: BeginRename edits the first selected row (else the
//   current row); BeginNewItem appends a row and edits it. The edit ends with
//   NOTIFY_RENAME_DONE / NOTIFY_NEW_ITEM_DONE (2 row, 4 cancelled, 6 list id,
//   pointer at 8 to the edit control whose Text is the typed text); the
//   edit's row of a new item is removed after the notification.
// - File tree: root item depth 0, each path component one level more; an
//   item whose parent is in the tree is inserted after the parent's existing
//   descendants (so expansion inserts children under their parent). A new-item
//   edit is inserted under the selected item; its notification (code 7)
//   carries the parent's path, a rename (code 8) the item's own path. A
//   cancelled tree edit sends nothing and answers 0. Context clicks report
//   screen positions and select the item. Expanding an item without children
//   does nothing; expanding an expanded item collapses it (its children are
//   dropped, no message). An activation (code 2) that the window does not
//   take (result 0) expands the item when it has children and is collapsed.
// - Combo box: no row chosen (0xFFFF) until one is; a choice sets both row
//   fields and the control text, then sends NOTIFY_SELECTION.
// - Log view: StartLogView clears the lines and keeps the path; AppendLine at
//   0xFFFF appends (else inserts); at most 65535 lines. Context clicks send
//   NOTIFY_LOG_CONTEXT with screen positions.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "env/siblings.h"
#include "env/windows/window_base.h"
#include "services/control_driver.h"

namespace env {

struct ListColumnInfo {
  std::string Title;
  uint16_t Capacity = 0, Width = 0;   // Width: the text room AddColumn asked for
  bool Sortable = false, RightAligned = false;
};

// Where a list column lies, in pixels from the list's left edge before
// scrolling sideways (subtract ListGeometry::ScrollX for the screen).
struct ListColumnSpan {
  int X = 0, Width = 0;               // the whole column, padding included
  int TextX = 0, TextWidth = 0;       // the room of its texts (after the icon in column 0)
  bool GroupEnd = false;              // a fixed-pitch table's wider gap follows it
};

// A list's layout now, relative to the list's top-left corner: the title row
// and the rows lie in a view of ViewWidth pixels starting at x 1; scroll bars
// take kListScrollBarWidth pixels at the right and along the bottom.
struct ListGeometry {
  int HeaderY = 1, HeaderHeight = 0;
  int RowsY = 0, RowsHeight = 0, RowHeight = 0;
  int ViewX = 1, ViewWidth = 0;
  int ContentWidth = 0;               // all columns
  int ScrollX = 0;                    // pixels scrolled sideways
  bool VerticalBar = false, HorizontalBar = false;
  bool Icons = true;                  // column 0 shows the rows' icons
  bool FixedPitch = false;            // option 1
  std::vector<ListColumnSpan> Columns;
};
constexpr int kListScrollBarWidth = 16;
constexpr int kListIconRoom = 16 + 4;    // a row's icon and the gap after it, in column 0
constexpr int kEditTextMargin = 3;      // between an in-place edit's frame and its text

class ControlDriver {
 public:
  ControlDriver (WindowBase &Windows, GuiDriver &Gui, uint32_t Version);
  ~ControlDriver ();
  ControlDriver (const ControlDriver &) = delete;
  ControlDriver &operator= (const ControlDriver &) = delete;
  CONTROL_DRIVER_PROTOCOL *Table ();

  // ---- lists
  void SelectRows (LIST_CONTROL *List, std::vector<uint16_t> Rows);
  void ActivateRow (LIST_CONTROL *List, uint16_t Row);
  void ContextClick (LIST_CONTROL *List, uint16_t X, uint16_t Y);
  std::string CellText (LIST_CONTROL *List, uint8_t Column, uint16_t Row) const;
  std::vector<ListColumnInfo> Columns (LIST_CONTROL *List) const;
  std::vector<uint16_t> SelectedRows (LIST_CONTROL *List) const;
  bool Editing (LIST_CONTROL *List) const;
  uint16_t EditRow (LIST_CONTROL *List) const;         // 0xFFFF when not editing
  void FinishEdit (LIST_CONTROL *List, const std::string &Text, bool Apply);
  uint16_t RowHeight () const;
  uint16_t HeaderHeight () const;
  ListGeometry Geometry (LIST_CONTROL *List) const;
  // The user sizes a column (at least one character and its padding wide);
  // FitColumn makes it as wide as its widest text, its title included.
  void SetColumnWidth (LIST_CONTROL *List, uint8_t Column, int Width);
  void FitColumn (LIST_CONTROL *List, uint8_t Column);
  // Scrolls the columns sideways by Pixels (positive: towards the right end).
  void ScrollSideways (LIST_CONTROL *List, int Pixels);
  // Shows the whole text of a cell as a tooltip at a screen position, when
  // the cell does not show it whole; returns whether it does.
  bool ShowCellTip (LIST_CONTROL *List, uint8_t Column, uint16_t Row, int X, int Y);
  void HideCellTip ();
  // The cell tooltip shown now; false when none (or its list or row is gone).
  bool ShownCellTip (TooltipInfo &Out) const;

  // ---- trees
  std::vector<FILE_LIST_ITEM> TreeItems (FILE_LIST *Tree) const;
  void ExpandTreeItem (FILE_LIST *Tree, uint16_t Index);
  void SelectTreeItem (FILE_LIST *Tree, uint16_t Index);
  void ActivateTreeItem (FILE_LIST *Tree, uint16_t Index);
  void TreeContextClick (FILE_LIST *Tree, uint16_t Index, uint16_t X, uint16_t Y);
  bool TreeEditing (FILE_LIST *Tree) const;
  uint32_t FinishTreeEdit (FILE_LIST *Tree, const std::string &Text, bool Apply);

  // ---- combo boxes
  void ChooseComboRow (COMBO_BOX *Combo, uint16_t Row);
  std::vector<std::string> ComboItems (COMBO_BOX *Combo) const;

  // ---- log views
  std::vector<std::string> LogLines (LOG_VIEW *View) const;
  std::string LogPath (LOG_VIEW *View) const;
  void SelectLogLine (LOG_VIEW *View, uint16_t Line);
  void LogContextClick (LOG_VIEW *View, uint16_t X, uint16_t Y);

  // ---- text views
  std::string TextViewText (CONTROL *View) const;

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
