// List columns: their widths (padding, free width, the user's sizing), the
// scroll bars they need, sideways scrolling, and the tooltip of a cell whose
// text does not show whole.
#include <algorithm>

#include "env/controls/control_internal.h"
#include "env/gui/gui_driver.h"

namespace env {

namespace {

constexpr int kCellPadding = 4;          // on each side of a cell
constexpr int kFixedCellPadding = 2;     // the same in a fixed-pitch table
constexpr int kGroupGap = 4;             // added between groups of a fixed-pitch table
constexpr size_t kGroupSize = 8;

WindowBase::State &B () { return CurrentControls ()->Base; }

// In the metric the renderer draws with.
int TextWidth (const std::string &Text) { return GuiDriver::TextWidth (Text); }

bool FixedPitch (const ListObject &List) { return List.Data.Option == kFixedPitchOption; }

// In a fixed-pitch table, column 0 and every eighth column after it end a group.
bool GroupEnd (const ListObject &List, size_t Column) {
  return FixedPitch (List) && Column % kGroupSize == 0 && Column + 1 < List.Columns.size ();
}

// A column's room besides its text: padding, the icon in column 0, and the
// wider gap after a group.
int ExtraRoom (const ListObject &List, size_t Column) {
  bool Fixed = FixedPitch (List);
  int Room = 2 * (Fixed ? kFixedCellPadding : kCellPadding);
  if (Column == 0 && !Fixed) Room += kListIconRoom;
  if (GroupEnd (List, Column)) Room += kGroupGap;
  return Room;
}

}  // namespace

int ListObject::WidestText (size_t Column) const {
  const ListColumn &C = Columns[Column];
  if (C.Widest < 0) {
    int Widest = TextWidth (C.Info.Title);
    for (auto &Row : Rows)
      if (Column < Row->Cells.size ()) Widest = std::max (Widest, TextWidth (Row->Cells[Column]));
    C.Widest = Widest;
  }
  return C.Widest;
}

ListGeometry ListObject::Geometry () const {
  const LIST_CONTROL &L = Data;
  ListGeometry G;
  G.FixedPitch = FixedPitch (*this);
  G.Icons = !G.FixedPitch;
  G.HeaderHeight = CurrentControls ()->HeaderHeight ();
  G.RowHeight = CurrentControls ()->RowHeight ();
  G.RowsY = G.HeaderY + G.HeaderHeight;
  const int InnerWidth = std::max (0, L.Control.Width - 2), InnerHeight = std::max (0, L.Control.Height - 2);

  // Every column's own width: the user's, or its text room and the rest.
  std::vector<int> Widths (Columns.size (), 0);
  int Sum = 0;
  for (size_t I = 0; I < Columns.size (); I++) {
    int Text = Columns[I].Info.Width;
    if (G.FixedPitch) Text = std::max (Text, WidestText (I));
    Widths[I] = Columns[I].UserWidth > 0 ? Columns[I].UserWidth : Text + ExtraRoom (*this, I);
    Sum += Widths[I];
  }

  // The scroll bars depend on each other (a horizontal one takes rows, a
  // vertical one takes width); each can only bring the other in.
  for (;;) {
    G.ViewWidth = std::max (0, InnerWidth - (G.VerticalBar ? kListScrollBarWidth : 0));
    G.HorizontalBar = Sum > G.ViewWidth;
    G.RowsHeight = std::max (0, InnerHeight - G.HeaderHeight - (G.HorizontalBar ? kListScrollBarWidth : 0));
    bool Vertical = Rows.size () > static_cast<size_t> (G.RowsHeight / G.RowHeight);
    if (Vertical == G.VerticalBar) break;
    G.VerticalBar = Vertical;
  }

  // Free width: the last column up to its widest text, then the first column.
  int Free = G.ViewWidth - Sum;
  if (Free > 0 && !Columns.empty () && !G.FixedPitch) {
    size_t Last = Columns.size () - 1;
    if (Columns[Last].UserWidth == 0) {
      int Grow = std::clamp (WidestText (Last) + ExtraRoom (*this, Last) - Widths[Last], 0, Free);
      Widths[Last] += Grow;
      Free -= Grow;
    }
    if (Columns[0].UserWidth == 0) Widths[0] += Free;
  }

  int X = 0;
  for (size_t I = 0; I < Columns.size (); I++) {
    ListColumnSpan Span;
    Span.X = X;
    Span.Width = Widths[I];
    Span.TextX = X + (G.FixedPitch ? kFixedCellPadding : kCellPadding) + (I == 0 && G.Icons ? kListIconRoom : 0);
    Span.TextWidth = std::max (0, Widths[I] - ExtraRoom (*this, I));
    Span.GroupEnd = GroupEnd (*this, I);
    G.Columns.push_back (Span);
    X += Widths[I];
  }
  G.ContentWidth = X;
  G.ScrollX = std::clamp (ScrollX, 0, std::max (0, G.ContentWidth - G.ViewWidth));
  return G;
}

void ListObject::ScrollSideways (int Pixels) {
  ScrollX = std::max (0, Geometry ().ScrollX + Pixels);
  UpdateLayout ();
  HideTip ();   // the cell under the pointer has moved away
}

void ListObject::HideTip () {
  CellTip &Tip = CurrentControls ()->Tip;
  if (Tip.List == &Data) Tip = CellTip ();
}

// ------------------------------------------------------------ user actions

ListGeometry ControlDriver::Geometry (LIST_CONTROL *Target) const {
  ListObject *List = FindList (Target);
  return List != nullptr ? List->Geometry () : ListGeometry ();
}

void ControlDriver::SetColumnWidth (LIST_CONTROL *Target, uint8_t Column, int Width) {
  ListObject *List = FindList (Target);
  if (List == nullptr || Column >= List->Columns.size ()) return;
  List->Columns[Column].UserWidth = std::clamp (Width, B ().CharWidth () + ExtraRoom (*List, Column), 0x7FFF);
  List->UpdateLayout ();
}

void ControlDriver::FitColumn (LIST_CONTROL *Target, uint8_t Column) {
  ListObject *List = FindList (Target);
  if (List == nullptr || Column >= List->Columns.size ()) return;
  List->Columns[Column].Widest = -1;   // the texts now, not the widest seen
  SetColumnWidth (Target, Column, List->WidestText (Column) + ExtraRoom (*List, Column));
}

void ControlDriver::ScrollSideways (LIST_CONTROL *Target, int Pixels) {
  if (ListObject *List = FindList (Target)) List->ScrollSideways (Pixels);
}

bool ControlDriver::ShowCellTip (LIST_CONTROL *Target, uint8_t Column, uint16_t Row, int X, int Y) {
  ListObject *List = FindList (Target);
  if (List == nullptr || Column >= List->Columns.size () || Row >= List->Rows.size ()) return false;
  auto &Cells = List->Rows[Row]->Cells;
  if (Column >= Cells.size () || Cells[Column].empty ()) return false;
  // Whole when the text fits its column and the view shows all of it.
  ListGeometry G = List->Geometry ();
  const ListColumnSpan &Span = G.Columns[Column];
  int Width = TextWidth (Cells[Column]);
  if (Width <= Span.TextWidth) {
    int Start = Span.TextX - G.ScrollX;
    if (List->Columns[Column].Info.RightAligned) Start += Span.TextWidth - Width;
    if (Start >= 0 && Start + Width <= G.ViewWidth) return false;
  }
  // It stays where it appeared while the pointer moves within its cell.
  CellTip &Tip = State_->Tip;
  if (Tip.List != Target || Tip.Column != Column || Tip.Row != Row) Tip = CellTip {Target, Column, Row, X, Y};
  return true;
}

void ControlDriver::HideCellTip () { State_->Tip = CellTip (); }

bool ControlDriver::ShownCellTip (TooltipInfo &Out) const {
  const CellTip &Tip = State_->Tip;
  ListObject *List = Tip.List != nullptr ? FindList (Tip.List) : nullptr;
  if (List == nullptr || Tip.Row >= List->Rows.size ()) return false;
  auto &Cells = List->Rows[Tip.Row]->Cells;
  if (Tip.Column >= Cells.size ()) return false;
  Out.Text = Cells[Tip.Column];
  Out.X = Tip.X, Out.Y = Tip.Y;
  return true;
}

}  // namespace env
