#include "tools/surveyor/screen_dump.h"

#include <sstream>

#include "env/controls/control_driver.h"
#include "env/gui/gbk.h"
#include "env/windows/window_base.h"

namespace surveyor {

namespace {

std::string Utf8 (const std::string &Gbk) { return env::GbkToUtf8 (Gbk); }

std::string Quoted (const std::string &Gbk) { return "\"" + Utf8 (Gbk) + "\""; }

std::string Text (const CHAR8 *T) { return T != nullptr ? reinterpret_cast<const char *> (T) : ""; }

bool Enabled (const CONTROL *C) { return (C->Flags & WINDOW_FLAG_ENABLED) != 0; }

class Writer {
 public:
  Writer (env::Environment &Env, std::ostringstream &Out) : Env_ (Env), Out_ (Out) {}

  void Window (WINDOW_HEADER *W, int Depth) {
    env::WindowBase &Wb = Env_.windows ();
    Indent (Depth);
    Out_ << (Depth == 0 ? "window " : "child window ") << Quoted (Wb.WindowText (W)) << " at " << W->X << ","
         << W->Y << " size " << W->Width << "x" << W->Height;
    if (Depth == 0 && W == Wb.ActiveWindow ()) Out_ << " [active]";
    Out_ << "\n";
    for (CONTROL *C : Wb.Controls (W)) Control (C, Depth + 1);
    for (WINDOW_HEADER *Child : Wb.ChildWindows (W)) Window (Child, Depth + 1);
    uint8_t Fields = Wb.StatusFieldCount (W);
    if (Fields > 0) {
      Indent (Depth + 1);
      Out_ << "status:";
      for (uint8_t F = 0; F < Fields; F++) Out_ << (F ? " | " : " ") << Quoted (Wb.StatusText (W, F));
      Out_ << "\n";
    }
  }

  void Popup (WINDOW_HEADER *P) {
    Out_ << "popup at " << P->X << "," << P->Y << "\n";
    for (const env::PopupItemInfo &Item : Env_.windows ().PopupItems (P)) {
      Indent (1);
      if (Item.Separator) {
        Out_ << "----\n";
        continue;
      }
      Out_ << "item " << Quoted (Item.Text) << (Item.Enabled ? "" : " disabled") << "\n";
    }
  }

 private:
  void Indent (int Depth) { Out_ << std::string (Depth * 2, ' '); }

  void Control (CONTROL *C, int Depth) {
    env::ControlDriver &Cd = Env_.controls ();
    switch (C->Kind) {
      case CONTROL_KIND_TEXT_FIELD:
        Indent (Depth);
        Out_ << "text " << Quoted (Text (C->Text)) << "\n";
        break;
      case CONTROL_KIND_BUTTON:
        Indent (Depth);
        Out_ << "button " << Quoted (Text (C->Text)) << (Enabled (C) ? "" : " disabled") << "\n";
        break;
      case CONTROL_KIND_MENU_ITEM: {
        MENU_ITEM *Item = reinterpret_cast<MENU_ITEM *> (C);
        Indent (Depth);
        if (Item->IconId < ICON_NONE)
          Out_ << "tool " << Quoted (Text (Item->Tooltip != nullptr ? Item->Tooltip : C->Text));
        else
          Out_ << (Item->Command == nullptr ? "menu " : "item ") << Quoted (Text (C->Text));
        Out_ << (Enabled (C) ? "" : " disabled") << (C->State == 2 ? " highlighted" : "") << "\n";
        break;
      }
      case CONTROL_KIND_LIST: {
        LIST_CONTROL *List = reinterpret_cast<LIST_CONTROL *> (C);
        std::vector<env::ListColumnInfo> Columns = Cd.Columns (List);
        std::vector<uint16_t> Selected = Cd.SelectedRows (List);
        Indent (Depth);
        Out_ << "list, " << List->RowCount << " rows, current row " << List->CurrentRow << "\n";
        Indent (Depth + 1);
        for (size_t I = 0; I < Columns.size (); I++) Out_ << (I ? " | " : "") << Utf8 (Columns[I].Title);
        Out_ << "\n";
        for (uint16_t Row = 0; Row < List->RowCount; Row++) {
          bool IsSelected = false;
          for (uint16_t S : Selected) IsSelected |= S == Row;
          Indent (Depth + 1);
          Out_ << (IsSelected ? "* " : "  ");
          for (size_t Col = 0; Col < Columns.size (); Col++)
            Out_ << (Col ? " | " : "") << Utf8 (Cd.CellText (List, static_cast<uint8_t> (Col), Row));
          Out_ << "\n";
        }
        if (Cd.Editing (List)) {
          Indent (Depth + 1);
          Out_ << "editing row " << Cd.EditRow (List) << "\n";
        }
        break;
      }
      case CONTROL_KIND_TEXT_VIEW: {
        Indent (Depth);
        Out_ << "text view:\n";
        std::istringstream Lines (Utf8 (Cd.TextViewText (C)));
        std::string Line;
        while (std::getline (Lines, Line)) {
          Indent (Depth + 1);
          Out_ << Line << "\n";
        }
        break;
      }
      case CONTROL_KIND_COMBO: {
        COMBO_BOX *Combo = reinterpret_cast<COMBO_BOX *> (C);
        std::vector<std::string> Items = Cd.ComboItems (Combo);
        Indent (Depth);
        Out_ << "combo";
        for (size_t I = 0; I < Items.size (); I++)
          Out_ << (I ? ", " : " ") << (I == Combo->CurrentRow ? "*" : "") << Quoted (Items[I]);
        Out_ << "\n";
        break;
      }
      case CONTROL_KIND_FILE_LIST: {
        FILE_LIST *Tree = reinterpret_cast<FILE_LIST *> (C);
        Indent (Depth);
        Out_ << "tree, " << Tree->ItemCount << " items\n";
        std::vector<FILE_LIST_ITEM> Items = Cd.TreeItems (Tree);
        for (size_t I = 0; I < Items.size (); I++) {
          const FILE_LIST_ITEM &Item = Items[I];
          Indent (Depth + 1 + Item.Depth);
          Out_ << (I == Tree->SelectedItem ? "* " : "  ")
               << (Item.HasChildren ? (Item.Expanded ? "[-] " : "[+] ") : "    ") << Utf8 (Text (Item.Name))
               << "\n";
        }
        break;
      }
      case CONTROL_KIND_LOG_VIEW: {
        LOG_VIEW *View = reinterpret_cast<LOG_VIEW *> (C);
        Indent (Depth);
        Out_ << "log, " << View->LineCount << " lines\n";
        for (const std::string &Line : Cd.LogLines (View)) {
          Indent (Depth + 1);
          Out_ << Utf8 (Line) << "\n";
        }
        break;
      }
      case CONTROL_KIND_EDIT:
        Indent (Depth);
        Out_ << "edit " << Quoted (Text (C->Text)) << "\n";
        break;
      default:
        break;
    }
  }

  env::Environment &Env_;
  std::ostringstream &Out_;
};

}  // namespace

std::string ScreenDump::Build (bool Consume) {
  std::ostringstream Out;
  Writer W (Env_, Out);
  env::WindowBase &Wb = Env_.windows ();
  for (WINDOW_HEADER *Window : Wb.TopLevelWindows ()) W.Window (Window, 0);
  if (WINDOW_HEADER *Popup = Wb.ShownPopup ()) W.Popup (Popup);
  const std::vector<env::MessageBoxRecord> &Boxes = Wb.MessageBoxes ();
  for (size_t I = BoxesShown_; I < Boxes.size (); I++)
    Out << "message box " << Quoted (Boxes[I].Caption) << ": " << Quoted (Boxes[I].Text) << "\n";
  std::vector<std::string> Lines = Env_.firmware ().ConsoleLines ();
  for (size_t I = ConsoleShown_; I < Lines.size (); I++)
    if (!Lines[I].empty ()) Out << "console: " << Lines[I] << "\n";
  if (Consume) {
    BoxesShown_ = Boxes.size ();
    ConsoleShown_ = Lines.size ();
  }
  return Out.str ();
}

std::string ScreenDump::Take () { return Build (true); }
std::string ScreenDump::Peek () { return Build (false); }

}  // namespace surveyor
