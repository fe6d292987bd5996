// Inside of the control driver: the host objects behind list views, file
// trees, combo boxes, log views, text views and in-place edits.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "env/controls/control_driver.h"
#include "env/windows/window_internal.h"

namespace env {

constexpr uint16_t kNoRow = 0xFFFF;
constexpr size_t kMaxRows = 0xFFFE;        // row indexes stay below kNoRow
constexpr size_t kMaxEditText = 191;
constexpr UINT8 kFixedPitchOption = 1;     // LIST_CONTROL.Option of a fixed-pitch table

// The cell whose tooltip is shown (one at a time).
struct CellTip {
  const LIST_CONTROL *List = nullptr;
  uint8_t Column = 0;
  uint16_t Row = 0;
  int X = 0, Y = 0;
};

struct ControlDriver::State {
  State (WindowBase &Windows, GuiDriver &Gui);
  WindowBase::State &Base;
  GuiDriver &Gui;
  CONTROL_DRIVER_PROTOCOL Table {};
  CellTip Tip;

  uint16_t RowHeight () const { return static_cast<uint16_t> (Base.LineHeight () + 2); }
  uint16_t HeaderHeight () const { return static_cast<uint16_t> (Base.LineHeight () + 6); }
};

ControlDriver::State *CurrentControls ();

// In-place edit of a list row or a tree item: typed text, Enter applies,
// Escape cancels.
struct EditObject : RecordControl<CONTROL> {
  static constexpr int Type = 10;
  int TypeId () const override { return Type; }
  std::function<void (const std::string &, bool)> Finish;
  bool OnKey (MESSAGE &Message) override;
};

struct ListRow {
  LIST_ITEM Item {};
  std::vector<std::string> Cells;
  bool NewItem = false;
};

struct ListObject;

struct ScrollBarObject : RecordControl<CONTROL> {
  static constexpr int Type = 11;
  int TypeId () const override { return Type; }
  ListObject *List = nullptr;
};

struct ListColumn {
  ListColumnInfo Info;
  int UserWidth = 0;                // set by the user; 0: laid out by the driver
  // Widest text (title and cells) in pixels since the rows were last cleared;
  // -1: to be measured.
  mutable int Widest = -1;
};

struct ListObject : RecordControl<LIST_CONTROL> {
  static constexpr int Type = 12;
  int TypeId () const override { return Type; }
  std::vector<ListColumn> Columns;
  std::vector<std::unique_ptr<ListRow>> Rows;
  CONTROL *Edit = nullptr;
  ListRow *EditRow = nullptr;
  bool EditNew = false;
  std::string Search;
  uint16_t Anchor = 0;              // where a Shift selection by keys starts
  uint16_t Placed = kNoRow;         // CurrentRow as the control last saw it (kNoRow after clearing)
  int ScrollX = 0;                  // pixels scrolled sideways

  uint16_t RowOf (const ListRow *Row) const;          // kNoRow when gone
  uint16_t SelectedCount () const;
  // Sets a cell's text, cut to its column's capacity; true when the widest
  // text of a column whose width follows its texts grew.
  bool SetCell (size_t Row, size_t Column, const char *Text);
  void ForgetWidestTexts ();                          // after rows went
  // The columns' widths, the scroll bars and the view (list_columns.cpp).
  ListGeometry Geometry () const;
  int WidestText (size_t Column) const;
  void ScrollSideways (int Pixels);                   // positive: towards the right end
  void HideTip ();                                    // when the tip is this list's
  void UpdateLayout ();
  void DropEdit ();                                   // ends an edit without notification
  void Notify (MESSAGE &Message) { CurrentWindowBase ()->Notify (Rec, Message); }
  void NotifySelection ();
  bool OnKey (MESSAGE &Message) override;
  void OnDestroy () override;
  void OnResized () override { UpdateLayout (); }
  void OnRedraw () override;
};

struct TreeItem {
  FILE_LIST_ITEM Item {};
};

struct TreeObject : RecordControl<FILE_LIST> {
  static constexpr int Type = 13;
  int TypeId () const override { return Type; }
  std::vector<std::unique_ptr<TreeItem>> Items;
  CONTROL *Edit = nullptr;
  TreeItem *EditItem = nullptr;
  bool EditNew = false;
  std::string EditParentPath;

  uint16_t IndexOf (const TreeItem *Item) const;      // kNoRow when gone
  void Insert (size_t Position, std::unique_ptr<TreeItem> Item);
  void Remove (size_t Index);                         // the item and its descendants
  void DropEdit ();
  // Sends a tree notification; returns the handler's result.
  UINTN Send (UINT8 Code, uint16_t Index, TREE_NOTIFY_DATA &Data);
  void OnDestroy () override { DropEdit (); }
};

struct ComboObject : RecordControl<COMBO_BOX> {
  static constexpr int Type = 14;
  int TypeId () const override { return Type; }
  std::vector<std::string> Items;
};

struct LogObject : RecordControl<LOG_VIEW> {
  static constexpr int Type = 15;
  int TypeId () const override { return Type; }
  std::vector<std::string> Lines;
  std::string Path;
};

struct TextViewObject : RecordControl<CONTROL> {
  static constexpr int Type = 16;
  int TypeId () const override { return Type; }
};

// Case-insensitive (ASCII letters) equality of two paths or names.
// The name at the start of an entry record (or a plain text), at most 191 bytes.
std::string EntryName (const void *Entry);
// Path joined from a directory and a name with one "\" between them.
std::string JoinPath (const std::string &Directory, const std::string &Name);

// The list view behind a list record, or nullptr.
ListObject *FindList (const void *Target);

void FillListOperations (CONTROL_DRIVER_PROTOCOL &Table);
void FillTreeOperations (CONTROL_DRIVER_PROTOCOL &Table);

}  // namespace env
