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
constexpr uint16_t kScrollBarWidth = 16;
constexpr size_t kMaxEditText = 191;

struct ControlDriver::State {
  State (WindowBase &Windows, GuiDriver &Gui);
  WindowBase::State &Base;
  GuiDriver &Gui;
  CONTROL_DRIVER_PROTOCOL Table {};

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

struct ListObject : RecordControl<LIST_CONTROL> {
  static constexpr int Type = 12;
  int TypeId () const override { return Type; }
  std::vector<ListColumnInfo> Columns;
  std::vector<std::unique_ptr<ListRow>> Rows;
  CONTROL *Edit = nullptr;
  ListRow *EditRow = nullptr;
  bool EditNew = false;
  std::string Search;
  uint16_t Anchor = 0;                                // where a Shift selection by keys starts

  uint16_t RowOf (const ListRow *Row) const;          // kNoRow when gone
  uint16_t SelectedCount () const;
  void UpdateLayout ();
  void DropEdit ();                                   // ends an edit without notification
  void Notify (MESSAGE &Message) { CurrentWindowBase ()->Notify (Rec, Message); }
  void NotifySelection ();
  bool OnKey (MESSAGE &Message) override;
  void OnDestroy () override;
  void OnResized () override { UpdateLayout (); }
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

void FillListOperations (CONTROL_DRIVER_PROTOCOL &Table);
void FillTreeOperations (CONTROL_DRIVER_PROTOCOL &Table);

}  // namespace env
