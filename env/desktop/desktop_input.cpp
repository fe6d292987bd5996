#include "env/desktop/desktop_input.h"

#include <algorithm>

#include "env/controls/control_driver.h"
#include "env/siblings.h"
#include "env/gui/gui_driver.h"
#include "env/render/renderer.h"
#include "env/windows/window_base.h"
#include "env/windows/window_internal.h"

namespace env {

namespace {

bool Inside (int X, int Y, int Rx, int Ry, int Rw, int Rh) { return X >= Rx && Y >= Ry && X < Rx + Rw && Y < Ry + Rh; }

constexpr int kTooltipOffset = 20;   // below the pointer's tip
constexpr int kBorderGrip = 4;       // pixels of a window's edge that resize it
constexpr int kColumnGrip = 3;       // pixels on each side of a column title's border that size the column
constexpr int kSidewaysStep = 24;    // pixels an arrow of a sideways scroll bar moves the columns
constexpr int kSmallestSide = 40;    // no window is dragged smaller than this

}  // namespace

DesktopInput::DesktopInput (Siblings &Env) : Env_ (Env) {}

WINDOW_HEADER *DesktopInput::WindowAt (int X, int Y) const {
  std::vector<WINDOW_HEADER *> Windows = Env_.windows ().TopLevelWindows ();
  for (auto It = Windows.rbegin (); It != Windows.rend (); ++It) {
    WindowLayout L = LayoutOf (Env_, *It);
    if (Inside (X, Y, L.X, L.Y, L.Width, L.Height)) return *It;
  }
  return nullptr;
}

CONTROL *DesktopInput::ControlAt (WINDOW_HEADER *Window, int X, int Y) const {
  WindowBase &Wb = Env_.windows ();
  for (WINDOW_HEADER *Child : Wb.ChildWindows (Window)) {
    int32_t Cx = 0, Cy = 0;
    Wb.ScreenOrigin (Child, Cx, Cy);
    if (!Inside (X, Y, Cx, Cy, Child->Width, Child->Height)) continue;
    if (CONTROL *C = ControlAt (Child, X, Y)) return C;
  }
  std::vector<CONTROL *> Controls = Wb.Controls (Window);
  // Later controls lie on top of earlier ones; scroll bars belong to their list.
  for (auto It = Controls.rbegin (); It != Controls.rend (); ++It) {
    CONTROL *C = *It;
    if (C->Kind == CONTROL_KIND_SCROLL_BAR || C->Kind == CONTROL_KIND_CHILD_WINDOW) continue;
    int32_t Cx = 0, Cy = 0;
    Wb.ScreenOrigin (C, Cx, Cy);
    int H = C->Height;
    if (C->Kind == CONTROL_KIND_COMBO && reinterpret_cast<COMBO_BOX *> (C)->Open) {
      H += static_cast<int> (Env_.controls ().ComboItems (reinterpret_cast<COMBO_BOX *> (C)).size ()) *
           (Env_.gui ().Table ()->GetLineHeight () + 4) + 2;
    }
    if (Inside (X, Y, Cx, Cy, C->Width, H)) return C;
  }
  return nullptr;
}

uint16_t DesktopInput::ListRowAt (LIST_CONTROL *List, int X, int Y) const {
  int32_t Lx = 0, Ly = 0;
  Env_.windows ().ScreenOrigin (List, Lx, Ly);
  ListGeometry G = Env_.controls ().Geometry (List);
  if (!Inside (X, Y, Lx + G.ViewX, Ly + G.RowsY, G.ViewWidth, G.RowsHeight)) return 0xFFFF;
  unsigned Row = List->TopRow + (Y - Ly - G.RowsY) / std::max (1, G.RowHeight);
  return Row < List->RowCount ? static_cast<uint16_t> (Row) : 0xFFFF;
}

int DesktopInput::ListColumnAt (LIST_CONTROL *List, int X) const {
  int32_t Lx = 0, Ly = 0;
  Env_.windows ().ScreenOrigin (List, Lx, Ly);
  ListGeometry G = Env_.controls ().Geometry (List);
  int At = X - Lx - G.ViewX;
  if (At < 0 || At >= G.ViewWidth) return -1;
  At += G.ScrollX;
  for (size_t I = 0; I < G.Columns.size (); I++)
    if (At >= G.Columns[I].X && At < G.Columns[I].X + G.Columns[I].Width) return static_cast<int> (I);
  return -1;
}

int DesktopInput::ListBorderAt (LIST_CONTROL *List, int X, int Y) const {
  int32_t Lx = 0, Ly = 0;
  Env_.windows ().ScreenOrigin (List, Lx, Ly);
  ListGeometry G = Env_.controls ().Geometry (List);
  if (!Inside (X, Y, Lx + G.ViewX - kColumnGrip, Ly + G.HeaderY, G.ViewWidth + 2 * kColumnGrip, G.HeaderHeight))
    return -1;
  // The nearest border within the grip.
  int Found = -1, Distance = kColumnGrip + 1;
  for (size_t I = 0; I < G.Columns.size (); I++) {
    int Edge = Lx + G.ViewX + G.Columns[I].X + G.Columns[I].Width - G.ScrollX;
    int Away = std::max (X - Edge, Edge - X);
    if (Away < Distance) Found = static_cast<int> (I), Distance = Away;
  }
  return Found;
}

bool DesktopInput::ClickPopup (WINDOW_HEADER *Popup, int X, int Y) {
  WindowBase &Wb = Env_.windows ();
  if (!Inside (X, Y, Popup->X, Popup->Y, Popup->Width, Popup->Height)) {
    Wb.ClosePopup ();
    Wb.PumpMessages ();
    return true;
  }
  std::vector<PopupItemInfo> Items = Wb.PopupItems (Popup);
  int At = PopupItemAt (Popup, Items, X, Y);
  if (At < 0 || !Items[At].Enabled) return false;
  Wb.ChoosePopupItem (Popup, Items[At].Text);
  Wb.PumpMessages ();
  return true;
}

// Index of the item (not a separator) under a screen point, or -1.
int DesktopInput::PopupItemAt (WINDOW_HEADER *Popup, const std::vector<PopupItemInfo> &Items, int X, int Y) const {
  for (size_t I = 0; I < Items.size (); I++) {
    if (!Items[I].Item || Items[I].Separator) continue;
    const CONTROL &R = Items[I].Item->Control;
    if (Inside (X, Y, Popup->X + R.X, Popup->Y + R.Y, R.Width, R.Height)) return static_cast<int> (I);
  }
  return -1;
}

bool DesktopInput::MouseDown (int X, int Y, MouseButton Button, int Clicks, bool Ctrl, bool Shift) {
  WindowBase &Wb = Env_.windows ();
  WINDOW_BASE_PROTOCOL *T = Wb.Table ();
  // A message box is modal: only its button takes the mouse.
  if (Wb.OpenMessageBox ()) return Button == MouseButton::Left && MessageBoxClick (X, Y);
  Wb.HideTooltip ();
  Env_.controls ().HideCellTip ();
  if (WINDOW_HEADER *Popup = Wb.ShownPopup ()) return ClickPopup (Popup, X, Y);
  WINDOW_HEADER *W = WindowAt (X, Y);
  if (!W) return false;
  if (Wb.ActiveWindow () != W) {
    T->ActivateWindow (W);
    Wb.PumpMessages ();
    if (!Wb.IsWindow (W)) return true;
  }
  WindowLayout L = LayoutOf (Env_, W);
  if (Button == MouseButton::Left && Clicks == 1) {
    // The right and bottom borders, and their corner, resize the window.
    ResizeRight_ = X >= L.X + L.Width - kBorderGrip;
    ResizeBottom_ = Y >= L.Y + L.Height - kBorderGrip;
    if (ResizeRight_ || ResizeBottom_) {
      Resizing_ = W;
      SentWidth_ = W->Width, SentHeight_ = W->Height;
      DragDx_ = L.X + L.Width - X, DragDy_ = L.Y + L.Height - Y;
      return true;
    }
  }
  if (Inside (X, Y, L.CloseX, L.CloseY, L.CloseWidth, L.CloseHeight)) {
    if (Button == MouseButton::Left) Wb.SendSysCommand (W, SYSCMD_CLOSE);
    Wb.PumpMessages ();
    return true;
  }
  if (Y < L.Y + L.CaptionHeight) {
    if (Button == MouseButton::Left && Clicks == 2) {
      Wb.SendSysCommand (W, SYSCMD_RESTORE);
      Wb.PumpMessages ();
    } else if (Button == MouseButton::Left) {
      Dragging_ = W;
      DragDx_ = X - W->X, DragDy_ = Y - W->Y;
    }
    return true;
  }
  CONTROL *C = ControlAt (W, X, Y);
  bool Done = C && ClickControl (W, C, X, Y, Button, Clicks, Ctrl, Shift);
  Wb.PumpMessages ();
  return Done;
}

bool DesktopInput::ClickControl (WINDOW_HEADER *Window, CONTROL *C, int X, int Y, MouseButton Button, int Clicks,
                                 bool Ctrl, bool Shift) {
  WindowBase &Wb = Env_.windows ();
  ControlDriver &Cd = Env_.controls ();
  bool Left = Button == MouseButton::Left;
  int32_t Cx = 0, Cy = 0;
  Wb.ScreenOrigin (C, Cx, Cy);
  switch (C->Kind) {
    case CONTROL_KIND_MENU_ITEM:
      if (!Left || !(C->Flags & WINDOW_FLAG_ENABLED)) return false;
      return Wb.ClickMenuItem (reinterpret_cast<MENU_ITEM *> (C));
    case CONTROL_KIND_BUTTON:
      if (!Left || !(C->Flags & WINDOW_FLAG_ENABLED)) return false;
      return Wb.ClickButton (C);
    case CONTROL_KIND_TEXT_FIELD:
    case CONTROL_KIND_EDIT:
      Wb.Table ()->SetFocus (C->Parent ? C->Parent : Window, C, 1);
      return true;
    case CONTROL_KIND_LIST: {
      auto *List = reinterpret_cast<LIST_CONTROL *> (C);
      Wb.Table ()->SetFocus (C->Parent ? C->Parent : Window, C, 1);
      ListGeometry G = Cd.Geometry (List);
      int BarsX = Cx + G.ViewX + G.ViewWidth, BarY = Cy + G.RowsY + G.RowsHeight;
      // The vertical scroll bar: upper half scrolls up a page, lower half down.
      if (List->ScrollBar && X >= BarsX && Y < BarY) {
        int Page = std::max<int> (1, List->VisibleRows);
        int Top = List->TopRow + (Y < Cy + C->Height / 2 ? -Page : Page);
        Top = std::clamp (Top, 0, std::max (0, int (List->RowCount) - int (List->VisibleRows)));
        Cd.Table ()->SetScrollPosition (List->ScrollBar, static_cast<UINT16> (Top));
        return true;
      }
      // The sideways bar: its arrows move a step, the rest of its halves a page.
      if (G.HorizontalBar && Y >= BarY) {
        if (X >= BarsX) return false;
        int Start = Cx + G.ViewX, Arrow = std::min (kListScrollBarWidth, G.ViewWidth / 2);
        int Step = X < Start + Arrow ? -kSidewaysStep : X >= BarsX - Arrow ? kSidewaysStep : 0;
        if (Step == 0) Step = X < Start + G.ViewWidth / 2 ? -G.ViewWidth : G.ViewWidth;
        Cd.ScrollSideways (List, Step);
        return true;
      }
      // A column title's right border: dragged, it sizes the column; double-clicked, fits it.
      int Border = Left ? ListBorderAt (List, X, Y) : -1;
      if (Border >= 0) {
        if (Clicks >= 2) {
          Cd.FitColumn (List, static_cast<uint8_t> (Border));
        } else {
          Sizing_ = List, SizingColumn_ = static_cast<uint8_t> (Border);
          SizingFrom_ = X - G.Columns[Border].Width;
        }
        return true;
      }
      uint16_t Row = ListRowAt (List, X, Y);
      if (!Left) {
        if (Row != 0xFFFF) {
          std::vector<uint16_t> Sel = Cd.SelectedRows (List);
          if (std::find (Sel.begin (), Sel.end (), Row) == Sel.end ()) Cd.SelectRows (List, {Row});
        }
        Cd.ContextClick (List, static_cast<uint16_t> (X - Cx), static_cast<uint16_t> (Y - Cy));
        return true;
      }
      if (Row == 0xFFFF) return false;
      if (Clicks >= 2) {
        Cd.ActivateRow (List, Row);
        return true;
      }
      std::vector<uint16_t> Sel = Cd.SelectedRows (List);
      if (Ctrl) {
        auto It = std::find (Sel.begin (), Sel.end (), Row);
        if (It != Sel.end ()) Sel.erase (It); else Sel.push_back (Row);
      } else if (Shift) {
        Sel.clear ();
        for (unsigned R = std::min (Anchor_, Row); R <= std::max (Anchor_, Row); R++) Sel.push_back (uint16_t (R));
      } else {
        Sel = {Row};
      }
      if (!Shift) Anchor_ = Row;
      Cd.SelectRows (List, Sel);
      return true;
    }
    case CONTROL_KIND_FILE_LIST: {
      auto *Tree = reinterpret_cast<FILE_LIST *> (C);
      int RowH = Env_.gui ().Table ()->GetLineHeight () + 2;
      if (Y < Cy + 2) return false;
      unsigned Index = Tree->TopItem + (Y - Cy - 2) / RowH;
      std::vector<FILE_LIST_ITEM> Items = Cd.TreeItems (Tree);
      if (Index >= Items.size ()) return false;
      int BoxX = Cx + 4 + Items[Index].Depth * 16;
      if (!Left) {
        Cd.TreeContextClick (Tree, uint16_t (Index), uint16_t (X), uint16_t (Y));
      } else if (Items[Index].HasChildren && X >= BoxX && X < BoxX + 10) {
        Cd.ExpandTreeItem (Tree, uint16_t (Index));
      } else if (Clicks >= 2) {
        Cd.ActivateTreeItem (Tree, uint16_t (Index));
      } else {
        Cd.SelectTreeItem (Tree, uint16_t (Index));
      }
      return true;
    }
    case CONTROL_KIND_COMBO: {
      auto *Combo = reinterpret_cast<COMBO_BOX *> (C);
      int BoxH = std::min<int> (C->Height, Env_.gui ().Table ()->GetLineHeight () + 8);
      if (Combo->Open && Y >= Cy + BoxH) {
        int Row = (Y - Cy - BoxH - 1) / (Env_.gui ().Table ()->GetLineHeight () + 4);
        Combo->Open = 0;
        if (Row >= 0 && Row < int (Cd.ComboItems (Combo).size ())) Cd.ChooseComboRow (Combo, uint16_t (Row));
        return true;
      }
      Combo->Open = Combo->Open ? 0 : 1;
      return true;
    }
    case CONTROL_KIND_LOG_VIEW: {
      auto *Log = reinterpret_cast<LOG_VIEW *> (C);
      int RowH = Env_.gui ().Table ()->GetLineHeight () + 2;
      unsigned Line = Log->TopLine + std::max (0, Y - Cy - 2) / RowH;
      if (Line < Log->LineCount) Cd.SelectLogLine (Log, uint16_t (Line));
      if (!Left) Cd.LogContextClick (Log, uint16_t (X), uint16_t (Y));
      return true;
    }
    default:
      return false;
  }
}

bool DesktopInput::MouseMove (int X, int Y) {
  WindowBase &Wb = Env_.windows ();
  if (Wb.OpenMessageBox ()) return false;
  if (WINDOW_HEADER *Popup = Wb.ShownPopup ()) {
    // The item under the pointer is highlighted (Enter then runs it).
    WindowInfo *Info = Wb.Internal ().FindWindow (Popup);
    if (!Info) return false;
    int Before = Info->Highlight;
    std::vector<PopupItemInfo> Items = Wb.PopupItems (Popup);
    int At = PopupItemAt (Popup, Items, X, Y);
    Info->Highlight = At >= 0 && Items[At].Enabled ? At : -1;
    return Info->Highlight != Before;
  }
  if (Resizing_ && !Wb.IsWindow (Resizing_)) Resizing_ = nullptr;
  if (Resizing_) return ResizeTo (X, Y);
  if (Sizing_ && !Wb.IsControl (Sizing_)) Sizing_ = nullptr;
  if (Sizing_) {
    Env_.controls ().SetColumnWidth (Sizing_, SizingColumn_, X - SizingFrom_);
    return true;
  }
  if (Dragging_ && !Wb.IsWindow (Dragging_)) Dragging_ = nullptr;
  if (!Dragging_) return PointAt (X, Y);
  GuiDriver &Gui = Env_.gui ();
  int Nx = std::clamp (X - DragDx_, 0, std::max (0, Gui.Width () - 40));
  int Ny = std::clamp (Y - DragDy_, 0, std::max (0, Gui.Height () - 20));
  bool Moved = Dragging_->X != Nx || Dragging_->Y != Ny;
  Dragging_->X = static_cast<UINT16> (Nx);
  Dragging_->Y = static_cast<UINT16> (Ny);
  return Moved;
}

// The tooltip shown now, of a menu button or of a list cell; false when none.
bool DesktopInput::ShownTooltip (TooltipInfo &Out) const {
  return Env_.windows ().ShownTooltip (Out) || Env_.controls ().ShownCellTip (Out);
}

bool DesktopInput::PointAt (int X, int Y) {
  WindowBase &Wb = Env_.windows ();
  ControlDriver &Cd = Env_.controls ();
  TooltipInfo Before;
  bool Had = ShownTooltip (Before);
  WINDOW_HEADER *W = WindowAt (X, Y);
  CONTROL *C = W ? ControlAt (W, X, Y) : nullptr;
  // Below the pointer, as tooltips appear; one at a time.
  bool CellShown = false;
  if (C && C->Kind == CONTROL_KIND_MENU_ITEM) {
    Wb.ShowTooltip (reinterpret_cast<MENU_ITEM *> (C), X, Y + kTooltipOffset);
  } else {
    Wb.HideTooltip ();
    if (C && C->Kind == CONTROL_KIND_LIST) {
      // A cell whose text does not show whole.
      auto *List = reinterpret_cast<LIST_CONTROL *> (C);
      uint16_t Row = ListRowAt (List, X, Y);
      int Column = ListColumnAt (List, X);
      CellShown = Row != 0xFFFF && Column >= 0 &&
                  Cd.ShowCellTip (List, static_cast<uint8_t> (Column), Row, X, Y + kTooltipOffset);
    }
  }
  if (!CellShown) Cd.HideCellTip ();
  TooltipInfo After;
  bool Has = ShownTooltip (After);
  return Had != Has || (Has && (After.X != Before.X || After.Y != Before.Y || After.Text != Before.Text));
}

bool DesktopInput::MessageBoxClick (int X, int Y) {
  WindowBase &Wb = Env_.windows ();
  const MessageBoxRecord *Box = Wb.OpenMessageBox ();
  MessageBoxLayout L = LayoutOfMessageBox (Env_, Box->Text, Box->Caption);
  if (!Inside (X, Y, L.ButtonX, L.ButtonY, L.ButtonWidth, L.ButtonHeight)) return false;
  Wb.DismissMessageBox ();
  return true;
}

void DesktopInput::MouseUp (int, int) {
  Dragging_ = Resizing_ = nullptr;
  Sizing_ = nullptr;
}

// The new size goes to the window as a resize message; its handler decides
// what it accepts (windows keep their own minimum sizes).
bool DesktopInput::ResizeTo (int X, int Y) {
  WindowBase &Wb = Env_.windows ();
  int32_t Wx = 0, Wy = 0;
  Wb.ScreenOrigin (Resizing_, Wx, Wy);
  int Width = ResizeRight_ ? X + DragDx_ - Wx : Resizing_->Width;
  int Height = ResizeBottom_ ? Y + DragDy_ - Wy : Resizing_->Height;
  Width = std::clamp (Width, kSmallestSide, 0xFFFF);
  Height = std::clamp (Height, kSmallestSide, 0xFFFF);
  // Each new size is sent once, whether the window took the last one or not.
  if (Width == SentWidth_ && Height == SentHeight_) return false;
  SentWidth_ = Width, SentHeight_ = Height;
  Wb.ResizeWindow (Resizing_, static_cast<uint16_t> (Width), static_cast<uint16_t> (Height));
  Wb.PumpMessages ();
  return true;
}

bool DesktopInput::Wheel (int X, int Y, int Lines) {
  WINDOW_HEADER *W = WindowAt (X, Y);
  if (!W || Env_.windows ().ShownPopup () || Env_.windows ().OpenMessageBox ()) return false;
  CONTROL *C = ControlAt (W, X, Y);
  if (!C) return false;
  if (C->Kind == CONTROL_KIND_LIST) {
    auto *List = reinterpret_cast<LIST_CONTROL *> (C);
    if (!List->ScrollBar) return false;
    Env_.controls ().HideCellTip ();   // its row moves from under the pointer
    int Top = std::clamp (int (List->TopRow) - Lines * 3, 0, std::max (0, int (List->RowCount) - int (List->VisibleRows)));
    Env_.controls ().Table ()->SetScrollPosition (List->ScrollBar, static_cast<UINT16> (Top));
    return true;
  }
  if (C->Kind == CONTROL_KIND_LOG_VIEW) {
    auto *Log = reinterpret_cast<LOG_VIEW *> (C);
    Log->TopLine = static_cast<UINT16> (std::clamp (int (Log->TopLine) - Lines * 3, 0, std::max (0, int (Log->LineCount) - 1)));
    return true;
  }
  if (C->Kind == CONTROL_KIND_FILE_LIST) {
    auto *Tree = reinterpret_cast<FILE_LIST *> (C);
    Tree->TopItem = static_cast<UINT16> (std::clamp (int (Tree->TopItem) - Lines * 3, 0, std::max (0, int (Tree->ItemCount) - 1)));
    return true;
  }
  return false;
}

}  // namespace env
