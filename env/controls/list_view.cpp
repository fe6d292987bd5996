// List views: columns, rows, selection, scrolling, type-ahead and in-place
// edits for rename and new item.
#include <algorithm>
#include "env/ascii_case.h"
#include <cstring>

#include "env/controls/control_internal.h"
#include "env/gui/gui_driver.h"

namespace env {

namespace {

constexpr UINT16 kScanHome = 0x05, kScanEnd = 0x06, kScanPageUp = 0x09, kScanPageDown = 0x0A;

WindowBase::State &B () { return CurrentControls ()->Base; }

}  // namespace

ListObject *FindList (const void *Target) { return ObjectAs<ListObject> (B ().FindControl (Target)); }

// ------------------------------------------------------------- list object

uint16_t ListObject::RowOf (const ListRow *Row) const {
  for (size_t I = 0; I < Rows.size (); I++)
    if (Rows[I].get () == Row) return static_cast<uint16_t> (I);
  return kNoRow;
}

uint16_t ListObject::SelectedCount () const {
  size_t Count = 0;
  for (auto &Row : Rows) Count += Row->Item.Selected != 0;
  return static_cast<uint16_t> (Count);
}

bool ListObject::SetCell (size_t Row, size_t Column, const char *Text) {
  auto &Cells = Rows[Row]->Cells;
  if (Cells.size () <= Column) Cells.resize (Column + 1);
  size_t Capacity = Column < Columns.size () ? Columns[Column].Info.Capacity : 192;
  Cells[Column] = CutText (Text, Capacity > 0 ? Capacity - 1 : 0);
  // Only the columns whose width follows their texts keep their widest text
  // up to date (the widest since the rows were last cleared).
  bool Followed = Column + 1 == Columns.size () || (Column < Columns.size () && Data.Option == kFixedPitchOption);
  if (!Followed || Columns[Column].Widest < 0) return false;
  int Width = GuiDriver::TextWidth (Cells[Column]);   // as the renderer measures
  if (Width <= Columns[Column].Widest) return false;
  Columns[Column].Widest = Width;
  return true;
}

void ListObject::ForgetWidestTexts () {
  for (ListColumn &Column : Columns) Column.Widest = -1;
}

void ListObject::UpdateLayout () {
  LIST_CONTROL &L = Data;
  ListGeometry G = Geometry ();
  ScrollX = G.ScrollX;
  L.RowCount = static_cast<UINT16> (Rows.size ());
  L.VisibleRows = static_cast<UINT16> (G.RowsHeight / G.RowHeight);
  uint16_t MaxTop = L.RowCount > L.VisibleRows ? static_cast<uint16_t> (L.RowCount - L.VisibleRows) : 0;
  if (L.TopRow > MaxTop) L.TopRow = MaxTop;
  if (G.VerticalBar && L.ScrollBar == nullptr) {
    auto Bar = std::make_unique<ScrollBarObject> ();
    Bar->List = this;
    Bar->Data.Kind = CONTROL_KIND_SCROLL_BAR;
    Bar->Data.Flags = WINDOW_FLAG_ENABLED;
    L.ScrollBar = B ().AddControl (L.Control.Parent, std::move (Bar), false, true);
  } else if (!G.VerticalBar && L.ScrollBar != nullptr) {
    CONTROL *Bar = L.ScrollBar;
    L.ScrollBar = nullptr;
    B ().RemoveControl (Bar);
  }
  if (L.ScrollBar != nullptr) {
    CONTROL &Bar = *L.ScrollBar;
    Bar.X = static_cast<UINT16> (L.Control.X + G.ViewX + G.ViewWidth);
    Bar.Y = static_cast<UINT16> (L.Control.Y + G.HeaderY);
    Bar.Width = kListScrollBarWidth;
    Bar.Height = static_cast<UINT16> (G.HeaderHeight + G.RowsHeight);
  }
}

void ListObject::DropEdit () {
  if (Edit == nullptr) return;
  CONTROL *Field = Edit;
  Edit = nullptr;
  WINDOW_HEADER *Parent = Field->Parent;
  if (B ().FindAnyWindow (Parent) != nullptr && Parent->FocusControl == Field) Parent->FocusControl = Rec;
  B ().RemoveControl (Field);
  if (EditNew) {
    uint16_t Row = RowOf (EditRow);
    if (Row != kNoRow && Rows[Row]->NewItem) {
      Rows.erase (Rows.begin () + Row);
      ForgetWidestTexts ();
    }
  }
  EditRow = nullptr;
  EditNew = false;
  UpdateLayout ();
}

void ListObject::OnDestroy () {
  DropEdit ();
  if (Data.ScrollBar != nullptr) {
    CONTROL *Bar = Data.ScrollBar;
    Data.ScrollBar = nullptr;
    B ().RemoveControl (Bar);
  }
}

void ListObject::NotifySelection () {
  MESSAGE Message {};
  Message.Type = MSG_NOTIFY;
  Message.Code = NOTIFY_SELECTION;
  Message.Word2 = SelectedCount ();
  Message.Word4 = Data.RowCount;
  Message.Word6 = Data.CurrentRow;
  Message.Word10 = Data.Control.Id;
  Notify (Message);
}

// The owner placed the current row past the first (a folder shown again at
// the row the user left it by): with nothing selected, that row becomes the
// selection, as if the user had moved there.
void ListObject::OnRedraw () {
  uint16_t Row = Data.CurrentRow;
  if (Row == Placed) return;
  Placed = Row;
  if (Row == 0 || Row >= Data.RowCount || SelectedCount () != 0 || Edit != nullptr) return;
  Rows[Row]->Item.Selected = 1;
  Anchor = Row;
  NotifySelection ();
}

bool ListObject::OnKey (MESSAGE &Message) {
  CHAR16 Ch = Message.Word2;
  UINT16 Scan = Message.Word4;
  UINT32 Shift = Message.Dword8;
  bool Control = (Shift & 0x0C) != 0, Extend = (Shift & 0x03) != 0;
  WindowBase::State::Scope Guard (B ());
  uint16_t Count = Data.RowCount;
  uint16_t Current = Data.CurrentRow < Count ? Data.CurrentRow : 0;
  auto Show = [&] (uint16_t Row) {
    Data.CurrentRow = Row;
    if (Row < Data.TopRow) Data.TopRow = Row;
    if (Data.VisibleRows > 0 && Row >= Data.TopRow + Data.VisibleRows)
      Data.TopRow = static_cast<UINT16> (Row - Data.VisibleRows + 1);
  };
  auto MoveTo = [&] (uint16_t Row) {
    for (auto &R : Rows) R->Item.Selected = 0;
    Rows[Row]->Item.Selected = 1;
    Anchor = Row;
    Show (Row);
  };
  // Ctrl+Space adds the current row to the selection or takes it out.
  if (Ch == ' ' && Control && (Shift & 0x30) == 0) {
    if (Count == 0) return true;
    Rows[Current]->Item.Selected ^= 1;
    Anchor = Current;
    Show (Current);
    NotifySelection ();
    return true;
  }
  // Up and Down a row, Page Up and Page Down a page, Home and End to the
  // ends. Alone they select the new row; with Shift the selection reaches
  // from the anchor to it; with Control only the current row moves (Space
  // then adds it to the selection).
  int Page = std::max<int> (1, Data.VisibleRows > 1 ? Data.VisibleRows - 1 : 1);
  int To = Scan == SCAN_CODE_UP ? Current - 1 : Scan == SCAN_CODE_DOWN ? Current + 1
           : Scan == kScanPageUp ? Current - Page : Scan == kScanPageDown ? Current + Page
           : Scan == kScanHome ? 0 : Scan == kScanEnd ? Count - 1 : -2;
  if (To != -2 && Control && (Shift & 0x30) == 0) {
    if (Count > 0) Show (static_cast<uint16_t> (std::clamp (To, 0, Count - 1)));
    return true;
  }
  if ((Shift & 0x3C) != 0) return false;   // Control or Alt held: the window's shortcuts
  if (Scan == SCAN_CODE_LEFT || Scan == SCAN_CODE_RIGHT) {
    // Sideways through columns wider than the list; otherwise the window's.
    if (!Geometry ().HorizontalBar) return false;
    ScrollSideways ((Scan == SCAN_CODE_RIGHT ? 3 : -3) * B ().CharWidth ());
    return true;
  }
  if (To != -2) {
    if (Count == 0) return true;
    uint16_t Row = static_cast<uint16_t> (std::clamp (To, 0, Count - 1));
    Search.clear ();
    if (Extend) {
      uint16_t From = Anchor < Count ? Anchor : Current;
      for (uint16_t R = 0; R < Count; R++) Rows[R]->Item.Selected = R >= std::min (From, Row) && R <= std::max (From, Row);
      Anchor = From;
      Show (Row);
    } else {
      MoveTo (Row);
    }
    NotifySelection ();
    return true;
  }
  if (Ch == 0x0D) {
    if (Data.CurrentRow >= Count) return true;
    MESSAGE Open {};
    Open.Type = MSG_NOTIFY;
    Open.Code = NOTIFY_OPEN_ROW;
    Open.Word6 = Data.CurrentRow;
    Open.Word10 = Data.Control.Id;
    Notify (Open);
    return true;
  }
  if (Ch > 0x20 && Ch < 0x7F) {
    // Type-ahead: the typed prefix, or the new letter alone when the prefix finds nothing.
    std::string Wanted = Search + static_cast<char> (Ch);
    uint16_t Found = kNoRow;
    for (int Pass = 0; Pass < 2 && Found == kNoRow; Pass++) {
      if (Pass == 1) Wanted = std::string (1, static_cast<char> (Ch));
      uint16_t Start = Data.CurrentRow < Count ? Data.CurrentRow : 0;
      // A new search starts after the current row so that repeating a letter cycles.
      if (Wanted.size () == 1 && Count > 0) Start = static_cast<uint16_t> ((Start + 1) % Count);
      for (uint16_t I = 0; I < Count; I++) {
        uint16_t Row = static_cast<uint16_t> ((Start + I) % Count);
        const char *Name = reinterpret_cast<const char *> (Rows[Row]->Item.Name);
        size_t N = 0;
        while (N < Wanted.size () && Name[N] != 0 && AsciiUpper (Name[N]) == AsciiUpper (Wanted[N])) N++;
        if (N == Wanted.size ()) {
          Found = Row;
          break;
        }
      }
    }
    Search = Found != kNoRow ? Wanted : std::string ();
    if (Found != kNoRow) {
      MoveTo (Found);
      NotifySelection ();
    }
    if (B ().FindControl (Rec) == nullptr) return true;
    MESSAGE Progress {};
    Progress.Type = MSG_NOTIFY;
    Progress.Code = NOTIFY_SEARCH;
    Progress.Word2 = 0;
    Progress.Word4 = Data.RowCount;
    Progress.Word6 = Found != kNoRow ? static_cast<UINT16> (Found + 1) : 0;
    Notify (Progress);
    return true;
  }
  return false;
}

// ------------------------------------------------------------- edits

bool EditObject::OnKey (MESSAGE &Message) {
  CHAR16 Ch = Message.Word2;
  UINT16 Scan = Message.Word4;
  if (Scan == SCAN_CODE_ESCAPE || Ch == 0x0D) {
    auto Done = Finish;   // the edit object goes away while finishing
    std::string Text = TextStore;
    if (Done) Done (Text, Ch == 0x0D);
    return true;
  }
  if (Ch == 0x08) {
    std::string Text = TextStore;
    if (!Text.empty ()) Text.pop_back ();
    SetText (Text.c_str ());
    return true;
  }
  if (Ch >= 0x20 && Ch < 0x7F && (Message.Dword8 & 0x3C) == 0) {
    std::string Text = TextStore;
    if (Text.size () < kMaxEditText) Text.push_back (static_cast<char> (Ch));
    SetText (Text.c_str ());
    return true;
  }
  return false;
}

namespace {

void FinishListEdit (ListObject *List, const std::string &Text, bool Apply) {
  if (List->Edit == nullptr) return;
  WindowBase::State::Scope Guard (B ());
  CONTROL *Field = List->Edit;
  static_cast<ControlObject *> (Field->BaseState)->SetText (CutText (Text.c_str (), kMaxEditText).c_str ());
  uint16_t Row = List->RowOf (List->EditRow);
  MESSAGE Message {};
  Message.Type = MSG_NOTIFY;
  Message.Code = List->EditNew ? NOTIFY_NEW_ITEM_DONE : NOTIFY_RENAME_DONE;
  Message.Word2 = Row;
  Message.Word4 = Apply ? 0 : 1;
  Message.Word6 = List->Data.Control.Id;
  Message.Pointer8 = Field;
  List->Notify (Message);
  // The handler may have cleared or rebuilt the list, or closed its window.
  if (B ().FindControl (List->Rec) != List) return;
  if (List->Edit == Field) List->DropEdit ();
}

void StartListEdit (ListObject *List, ListRow *Row, bool New) {
  LIST_CONTROL &L = List->Data;
  uint16_t Index = List->RowOf (Row);
  auto Field = std::make_unique<EditObject> ();
  Field->Data.Kind = CONTROL_KIND_EDIT;
  Field->Data.Flags = WINDOW_FLAG_ENABLED | WINDOW_FLAG_FOCUSABLE;
  // Over the row's name: column 0's text room, less the edit's own margin.
  ListGeometry G = List->Geometry ();
  int TextX = G.Columns.empty () ? 0 : G.Columns[0].TextX - G.ScrollX;
  int TextWidth = G.Columns.empty () ? G.ViewWidth : G.Columns[0].TextWidth;
  Field->Data.X = static_cast<UINT16> (std::max (0, L.Control.X + G.ViewX + TextX - kEditTextMargin));
  int Visible = Index >= L.TopRow ? Index - L.TopRow : 0;
  Field->Data.Y = static_cast<UINT16> (L.Control.Y + G.RowsY + Visible * G.RowHeight);
  Field->Data.Width = static_cast<UINT16> (TextWidth + 2 * kEditTextMargin);
  Field->Data.Height = static_cast<UINT16> (G.RowHeight);
  Field->SetText (reinterpret_cast<const char *> (Row->Item.Name));
  Field->Finish = [List] (const std::string &Text, bool Apply) { FinishListEdit (List, Text, Apply); };
  CONTROL *Edit = B ().AddControl (L.Control.Parent, std::move (Field), false, true);
  if (Edit == nullptr) return;
  List->Edit = Edit;
  List->EditRow = Row;
  List->EditNew = New;
  L.Control.Parent->FocusControl = Edit;
}

// ------------------------------------------------------------ table ops

LIST_CONTROL *EFIAPI OpCreateListView (WINDOW_HEADER *Parent, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height,
                                       UINT8 Style) {
  WindowInfo *Info = B ().FindWindow (Parent);
  if (Info == nullptr || Info->Popup) return nullptr;
  auto List = std::make_unique<ListObject> ();
  ListObject *Object = List.get ();
  LIST_CONTROL &L = List->Data;
  L.Control.Kind = CONTROL_KIND_LIST;
  L.Control.Flags = WINDOW_FLAG_ENABLED | WINDOW_FLAG_FOCUSABLE;
  L.Control.X = X;
  L.Control.Y = Y;
  L.Control.Width = Width;
  L.Control.Height = Height;
  // The style argument does not change the list; the fixed-pitch option is
  // switched on by its user (the hex viewer) in the record itself.
  L.CurrentRow = 0;
  CONTROL *Control = B ().AddControl (Parent, std::move (List), true, true);
  if (Control == nullptr) return nullptr;
  Object->UpdateLayout ();
  return &Object->Data;
}

VOID EFIAPI OpAddColumn (LIST_CONTROL *Target, const CHAR8 *Title, UINT16 Capacity, UINT16 Width, BOOLEAN Sortable,
                         BOOLEAN RightAligned) {
  ListObject *List = FindList (Target);
  if (List == nullptr || List->Columns.size () >= 255) return;
  ListColumn Column;
  Column.Info.Title = Title != nullptr ? CutText (reinterpret_cast<const char *> (Title), 255) : "";
  Column.Info.Capacity = Capacity;
  Column.Info.Width = Width;
  Column.Info.Sortable = Sortable != 0;
  Column.Info.RightAligned = RightAligned != 0;
  List->Columns.push_back (Column);
  List->Data.ColumnCount = static_cast<UINT16> (List->Columns.size ());
  List->UpdateLayout ();
}

UINT16 EFIAPI OpAddListItem (LIST_CONTROL *Target, UINT8 Icon, BOOLEAN IsDirectory, UINT32 EntryWord, UINT64 Size,
                             const VOID *Entry) {
  ListObject *List = FindList (Target);
  if (List == nullptr || List->Rows.size () >= kMaxRows) return kNoRow;
  auto Row = std::make_unique<ListRow> ();
  Row->Item.Icon = Icon;
  Row->Item.IsDirectory = IsDirectory ? 1 : 0;
  Row->Item.EntryWord = EntryWord;
  Row->Item.Size = Size;
  std::string Name = EntryName (Entry);
  std::memcpy (Row->Item.Name, Name.data (), Name.size ());
  List->Rows.push_back (std::move (Row));
  List->SetCell (List->Rows.size () - 1, 0, Name.c_str ());
  List->UpdateLayout ();
  return static_cast<UINT16> (List->Rows.size () - 1);
}

VOID EFIAPI OpSetItemText (LIST_CONTROL *Target, UINT8 Column, UINT16 Row, const CHAR8 *Text) {
  ListObject *List = FindList (Target);
  if (List == nullptr || Row >= List->Rows.size ()) return;
  if (!List->Columns.empty () && Column >= List->Columns.size ()) return;
  bool Wider = List->SetCell (Row, Column, Text != nullptr ? reinterpret_cast<const char *> (Text) : "");
  // A fixed-pitch column grows with its widest text.
  if (Wider && List->Data.Option == kFixedPitchOption) List->UpdateLayout ();
}

LIST_ITEM *EFIAPI OpGetItem (LIST_CONTROL *Target, UINT16 Row) {
  ListObject *List = FindList (Target);
  if (List == nullptr || Row >= List->Rows.size ()) return nullptr;
  return &List->Rows[Row]->Item;
}

LIST_ITEM *EFIAPI OpGetNextSelected (LIST_CONTROL *Target, UINT16 *Cursor) {
  ListObject *List = FindList (Target);
  if (List == nullptr || Cursor == nullptr) return nullptr;
  for (size_t Row = *Cursor; Row < List->Rows.size (); Row++) {
    if (List->Rows[Row]->Item.Selected == 0) continue;
    *Cursor = static_cast<UINT16> (Row + 1);
    return &List->Rows[Row]->Item;
  }
  *Cursor = static_cast<UINT16> (std::min<size_t> (List->Rows.size (), kNoRow));
  return nullptr;
}

VOID EFIAPI OpClearList (LIST_CONTROL *Target) {
  ListObject *List = FindList (Target);
  if (List == nullptr) return;
  List->DropEdit ();
  List->HideTip ();
  List->Rows.clear ();
  List->ForgetWidestTexts ();
  List->Search.clear ();
  List->Placed = kNoRow;
  List->Data.CurrentRow = 0;
  List->Data.TopRow = 0;
  List->UpdateLayout ();
}

VOID EFIAPI OpSetScrollPosition (CONTROL *ScrollBar, UINT16 Row) {
  auto *Bar = ObjectAs<ScrollBarObject> (B ().FindControl (ScrollBar));
  if (Bar == nullptr || Bar->List == nullptr) return;
  LIST_CONTROL &L = Bar->List->Data;
  uint16_t MaxTop = L.RowCount > L.VisibleRows ? static_cast<uint16_t> (L.RowCount - L.VisibleRows) : 0;
  L.TopRow = std::min<UINT16> (Row, MaxTop);
}

VOID EFIAPI OpBeginNewItem (LIST_CONTROL *Target, UINT8 Icon, BOOLEAN IsDirectory, const CHAR8 *DefaultName) {
  ListObject *List = FindList (Target);
  if (List == nullptr || List->Rows.size () >= kMaxRows) return;
  if (List->Edit != nullptr) FinishListEdit (List, List->Edit->Text ? reinterpret_cast<char *> (List->Edit->Text) : "", false);
  if (FindList (Target) != List) return;
  auto Row = std::make_unique<ListRow> ();
  Row->Item.Icon = Icon;
  Row->Item.IsDirectory = IsDirectory ? 1 : 0;
  Row->NewItem = true;
  std::string Name = DefaultName != nullptr ? CutText (reinterpret_cast<const char *> (DefaultName), kMaxEditText) : "";
  std::memcpy (Row->Item.Name, Name.data (), Name.size ());
  ListRow *Added = Row.get ();
  for (auto &R : List->Rows) R->Item.Selected = 0;
  Added->Item.Selected = 1;
  List->Rows.push_back (std::move (Row));
  List->SetCell (List->Rows.size () - 1, 0, Name.c_str ());
  List->Data.CurrentRow = static_cast<UINT16> (List->Rows.size () - 1);
  List->UpdateLayout ();
  uint16_t Last = List->Data.CurrentRow;
  if (List->Data.VisibleRows > 0 && Last >= List->Data.TopRow + List->Data.VisibleRows)
    List->Data.TopRow = static_cast<UINT16> (Last - List->Data.VisibleRows + 1);
  StartListEdit (List, Added, true);
}

VOID EFIAPI OpBeginRename (LIST_CONTROL *Target, WINDOW_HEADER *) {
  ListObject *List = FindList (Target);
  if (List == nullptr) return;
  if (List->Edit != nullptr) FinishListEdit (List, reinterpret_cast<char *> (List->Edit->Text), false);
  if (FindList (Target) != List) return;
  uint16_t Row = List->Data.CurrentRow;
  if (Row >= List->Rows.size ()) {
    Row = kNoRow;
    for (size_t I = 0; I < List->Rows.size (); I++)
      if (List->Rows[I]->Item.Selected != 0) {
        Row = static_cast<uint16_t> (I);
        break;
      }
  }
  if (Row == kNoRow) return;
  StartListEdit (List, List->Rows[Row].get (), false);
}

}  // namespace

void FillListOperations (CONTROL_DRIVER_PROTOCOL &T) {
  T.CreateListView = OpCreateListView;
  T.AddColumn = OpAddColumn;
  T.AddListItem = OpAddListItem;
  T.SetItemText = OpSetItemText;
  T.GetItem = OpGetItem;
  T.GetNextSelected = OpGetNextSelected;
  T.ClearList = OpClearList;
  T.SetScrollPosition = OpSetScrollPosition;
  T.BeginNewItem = OpBeginNewItem;
  T.BeginRename = OpBeginRename;
}

// ------------------------------------------------------ user actions

void ControlDriver::SelectRows (LIST_CONTROL *Target, std::vector<uint16_t> Rows) {
  ListObject *List = FindList (Target);
  if (List == nullptr) return;
  WindowBase::State::Scope Guard (B ());
  for (auto &Row : List->Rows) Row->Item.Selected = 0;
  uint16_t Last = kNoRow;
  for (uint16_t Row : Rows)
    if (Row < List->Rows.size ()) {
      List->Rows[Row]->Item.Selected = 1;
      Last = Row;
    }
  if (Last != kNoRow) List->Data.CurrentRow = Last;
  List->Search.clear ();
  List->NotifySelection ();
}

std::vector<uint16_t> ControlDriver::SelectedRows (LIST_CONTROL *Target) const {
  std::vector<uint16_t> Out;
  if (ListObject *List = FindList (Target))
    for (size_t I = 0; I < List->Rows.size (); I++)
      if (List->Rows[I]->Item.Selected != 0) Out.push_back (static_cast<uint16_t> (I));
  return Out;
}

void ControlDriver::ActivateRow (LIST_CONTROL *Target, uint16_t Row) {
  ListObject *List = FindList (Target);
  if (List == nullptr || Row >= List->Rows.size ()) return;
  WindowBase::State::Scope Guard (B ());
  for (auto &R : List->Rows) R->Item.Selected = 0;
  List->Rows[Row]->Item.Selected = 1;
  List->Data.CurrentRow = Row;
  MESSAGE Message {};
  Message.Type = MSG_NOTIFY;
  Message.Code = NOTIFY_OPEN_ROW;
  Message.Word6 = Row;
  Message.Word10 = List->Data.Control.Id;
  List->Notify (Message);
}

void ControlDriver::ContextClick (LIST_CONTROL *Target, uint16_t X, uint16_t Y) {
  ListObject *List = FindList (Target);
  if (List == nullptr) return;
  WindowBase::State::Scope Guard (B ());
  MESSAGE Message {};
  Message.Type = MSG_NOTIFY;
  Message.Code = NOTIFY_CONTEXT;
  Message.Word2 = List->SelectedCount ();
  Message.Word10 = List->Data.Control.Id;
  Message.Word12 = X;
  Message.Word14 = Y;
  List->Notify (Message);
}

std::string ControlDriver::CellText (LIST_CONTROL *Target, uint8_t Column, uint16_t Row) const {
  ListObject *List = FindList (Target);
  if (List == nullptr || Row >= List->Rows.size ()) return {};
  auto &Cells = List->Rows[Row]->Cells;
  return Column < Cells.size () ? Cells[Column] : std::string ();
}

std::vector<ListColumnInfo> ControlDriver::Columns (LIST_CONTROL *Target) const {
  std::vector<ListColumnInfo> Out;
  if (ListObject *List = FindList (Target))
    for (const ListColumn &Column : List->Columns) Out.push_back (Column.Info);
  return Out;
}

bool ControlDriver::Editing (LIST_CONTROL *Target) const {
  ListObject *List = FindList (Target);
  return List != nullptr && List->Edit != nullptr;
}

uint16_t ControlDriver::EditRow (LIST_CONTROL *Target) const {
  ListObject *List = FindList (Target);
  return List != nullptr && List->Edit != nullptr ? List->RowOf (List->EditRow) : kNoRow;
}

void ControlDriver::FinishEdit (LIST_CONTROL *Target, const std::string &Text, bool Apply) {
  if (ListObject *List = FindList (Target)) FinishListEdit (List, Text, Apply);
}

uint16_t ControlDriver::RowHeight () const { return State_->RowHeight (); }
uint16_t ControlDriver::HeaderHeight () const { return State_->HeaderHeight (); }

}  // namespace env
