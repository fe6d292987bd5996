// Popup menus, menu buttons of menu headers, text fields and buttons.
#include <algorithm>

#include "env/pool.h"
#include "env/windows/window_internal.h"

namespace env {

namespace {

constexpr uint16_t kPopupMinWidth = 96;
constexpr uint16_t kPopupTextMargin = 56;   // icon column and margins
constexpr uint16_t kSeparatorHeight = 8;

WindowBase::State &S () { return *CurrentWindowBase (); }

bool Selectable (const MenuItemObject &Item) {
  return !Item.Separator && (Item.Data.Control.Flags & WINDOW_FLAG_ENABLED) != 0;
}

}  // namespace

// --------------------------------------------------------------- popups

WINDOW_HEADER *WindowBase::State::CreatePopup (VOID *Owner) {
  auto *Header = static_cast<WINDOW_HEADER *> (PoolAllocate (sizeof (WINDOW_HEADER)));
  if (Header == nullptr) return nullptr;
  *Header = WINDOW_HEADER {};
  Header->Kind = WINDOW_KIND_POPUP;
  Header->NotifyEnabled = 1;
  Header->Parent = &DesktopHeader;
  Header->Owner = Owner;
  Header->ObjectSize = sizeof (WINDOW_HEADER);
  Header->IconId = ICON_NONE;
  auto Info = std::make_unique<WindowInfo> ();
  Info->Header = Header;
  Info->Serial = NextSerial++;
  Info->Popup = true;
  Header->BaseState = Info.get ();
  LayoutPopup (*Info);
  Windows.emplace (Header, std::move (Info));
  return Header;
}

void WindowBase::State::LayoutPopup (WindowInfo &Popup) {
  uint16_t ItemHeight = static_cast<uint16_t> (LineHeight () + 6);
  size_t TextWidth = 0;
  for (auto &Item : Popup.Items)
    if (!Item->Separator) TextWidth = std::max<size_t> (TextWidth, this->TextWidth (Item->TextStore.c_str ()));
  uint16_t Width = static_cast<uint16_t> (std::clamp<size_t> (TextWidth + kPopupTextMargin, kPopupMinWidth, 0xFFFF));
  uint32_t Y = 2;
  for (auto &Item : Popup.Items) {
    CONTROL &C = Item->Data.Control;
    C.X = 2;
    C.Y = static_cast<UINT16> (std::min<uint32_t> (Y, 0xFFFF));
    C.Width = static_cast<UINT16> (Width - 4);
    C.Height = Item->Separator ? kSeparatorHeight : ItemHeight;
    Y += C.Height;
  }
  Popup.Header->Width = Width;
  Popup.Header->Height = static_cast<UINT16> (std::min<uint32_t> (Y + 2, 0xFFFF));
}

void WindowBase::State::ShowPopup (WINDOW_HEADER *Popup) {
  WindowInfo *Info = FindWindow (Popup);
  if (Info == nullptr || !Info->Popup) return;
  Scope Guard (*this);
  if (Shown == Popup) return;
  if (Shown != nullptr) ClosePopup (true);
  if (FindWindow (Popup) == nullptr) return;
  Shown = Popup;
  Info->Highlight = -1;
  if (FindWindow (Popup->Owner) != nullptr) {
    MESSAGE Message {};
    Message.Type = MSG_POPUP_OPENED;
    Message.Pointer8 = Popup;
    Send (Popup->Owner, &Message);
  }
}

void WindowBase::State::ClosePopup (bool Notify) {
  if (Shown == nullptr) return;
  Scope Guard (*this);
  WINDOW_HEADER *Popup = Shown;
  Shown = nullptr;
  if (Notify && FindWindow (Popup->Owner) != nullptr) {
    MESSAGE Message {};
    Message.Type = MSG_POPUP_CLOSED;
    Message.Pointer8 = Popup;
    Send (Popup->Owner, &Message);
  }
}

bool WindowBase::State::RunPopupItem (WindowInfo &Popup, MenuItemObject &Item) {
  if (!Selectable (Item)) return false;
  Scope Guard (*this);
  // The popup closes before the command runs (a command may open a message
  // box, another popup, or destroy the popup's owner).
  if (Shown == Popup.Header) ClosePopup (true);
  MENU_ITEM &Record = Item.Data;
  if (Record.Command != nullptr) Record.Command (&Record, static_cast<WINDOW_HEADER *> (Record.Context));
  return true;
}

UINTN WindowBase::State::PopupMessage (WindowInfo &Popup, MESSAGE &Message) {
  if (Message.Type != MSG_KEY) return 0;
  UINT16 Scan = Message.Word4;
  CHAR16 Ch = Message.Word2;
  auto &Items = Popup.Items;
  if (Scan == SCAN_CODE_ESCAPE) {
    if (Shown == Popup.Header) ClosePopup (true);
    return 1;
  }
  if (Scan == SCAN_CODE_UP || Scan == SCAN_CODE_DOWN) {
    int Count = static_cast<int> (Items.size ());
    int Step = Scan == SCAN_CODE_DOWN ? 1 : -1;
    int At = Popup.Highlight;
    for (int Tries = 0; Tries < Count; Tries++) {
      At = At < 0 ? (Step > 0 ? 0 : Count - 1) : (At + Step + Count) % Count;
      if (Selectable (*Items[At])) {
        Popup.Highlight = At;
        break;
      }
    }
    return 1;
  }
  if (Ch == 0x0D) {
    if (Popup.Highlight >= 0 && Popup.Highlight < static_cast<int> (Items.size ()))
      RunPopupItem (Popup, *Items[Popup.Highlight]);
    return 1;
  }
  if ((Scan == SCAN_CODE_LEFT || Scan == SCAN_CODE_RIGHT) && FindWindow (Popup.Header->Owner) != nullptr)
    return Send (Popup.Header->Owner, &Message);
  return 0;
}

bool WindowBase::State::OpenItemPopup (MENU_ITEM *Item, bool SelectFirst) {
  WindowInfo *Info = FindWindow (Item->Popup);
  if (Info == nullptr || !Info->Popup) return false;
  int32_t X = 0, Y = 0;
  Origin (Item, X, Y);
  Info->Header->X = static_cast<UINT16> (std::clamp (X, 0, 0xFFFF));
  Info->Header->Y = static_cast<UINT16> (std::clamp (Y + Item->Control.Height, 0, 0xFFFF));
  ShowPopup (Info->Header);
  if (SelectFirst && Shown == Info->Header) {
    for (size_t I = 0; I < Info->Items.size (); I++)
      if (Selectable (*Info->Items[I])) {
        Info->Highlight = static_cast<int> (I);
        break;
      }
  }
  return true;
}

UINTN MenuItemObject::OnMessage (MESSAGE &Message) {
  if (Message.Type == MSG_COMMAND && Message.Code == 2) {
    if ((Data.Control.Flags & WINDOW_FLAG_ENABLED) == 0) return 0;
    return S ().OpenItemPopup (&Data, (Message.Value8 & 0xFF) == 1) ? 1 : 0;
  }
  return ControlObject::OnMessage (Message);
}

bool TextFieldObject::OnKey (MESSAGE &Message) {
  if ((Rec->Flags & kControlFramed) == 0) return false;
  CHAR16 Ch = Message.Word2;
  if (Ch == 0x08) {
    if (!TextStore.empty ()) TextStore.pop_back ();
    SetText (std::string (TextStore).c_str ());
    return true;
  }
  if (Ch >= 0x20 && Ch < 0x7F && (Message.Dword8 & 0x3C) == 0) {
    if (TextStore.size () < 511) TextStore.push_back (static_cast<char> (Ch));
    SetText (std::string (TextStore).c_str ());
    return true;
  }
  return false;
}

// ------------------------------------------------------------ table ops

namespace {

WINDOW_HEADER *EFIAPI OpCreatePopupMenu (VOID *Owner, UINTN, UINTN, UINTN) { return S ().CreatePopup (Owner); }

WindowInfo *PopupInfo (WINDOW_HEADER *Popup) {
  WindowInfo *Info = S ().FindWindow (Popup);
  return Info != nullptr && Info->Popup ? Info : nullptr;
}

void AppendItem (WINDOW_HEADER *Popup, const CHAR8 *Text, COMMAND_CALLBACK Command, WINDOW_HEADER *Context,
                 UINT8 IconId, bool Separator) {
  WindowInfo *Info = PopupInfo (Popup);
  if (Info == nullptr || Info->Items.size () >= 1024) return;
  auto Item = std::make_unique<MenuItemObject> ();
  Item->Separator = Separator;
  Item->Serial = S ().NextSerial++;
  MENU_ITEM &R = Item->Data;
  R.Control.Id = static_cast<UINT16> (Info->Items.size ());
  R.Control.Kind = CONTROL_KIND_MENU_ITEM;
  R.Control.Flags = Separator ? 0 : WINDOW_FLAG_ENABLED;
  R.Control.Parent = Popup;
  R.IconId = IconId;
  R.Command = Command;
  R.Context = Context;
  Item->SetText (Text != nullptr ? reinterpret_cast<const char *> (Text) : "");
  if (!Info->Items.empty ()) Info->Items.back ()->Data.Control.NextSibling = &R.Control;
  Info->Items.push_back (std::move (Item));
  S ().LayoutPopup (*Info);
}

VOID EFIAPI OpAppendMenuItem (WINDOW_HEADER *Popup, const CHAR8 *Text, COMMAND_CALLBACK Command,
                              WINDOW_HEADER *Context, UINT8 IconId) {
  AppendItem (Popup, Text, Command, Context, IconId, false);
}

VOID EFIAPI OpAppendMenuSeparator (WINDOW_HEADER *Popup) { AppendItem (Popup, nullptr, nullptr, nullptr, ICON_NONE, true); }

VOID EFIAPI OpEnableMenuItem (WINDOW_HEADER *Popup, COMMAND_CALLBACK Command, BOOLEAN Enable) {
  WindowInfo *Info = PopupInfo (Popup);
  if (Info == nullptr || Command == nullptr) return;
  for (auto &Item : Info->Items) {
    if (Item->Separator || Item->Data.Command != Command) continue;
    if (Enable)
      Item->Data.Control.Flags |= WINDOW_FLAG_ENABLED;
    else
      Item->Data.Control.Flags &= ~WINDOW_FLAG_ENABLED;
  }
}

VOID EFIAPI OpSetMenuItemContext (WINDOW_HEADER *Popup, COMMAND_CALLBACK Command, WINDOW_HEADER *Context) {
  WindowInfo *Info = PopupInfo (Popup);
  if (Info == nullptr || Command == nullptr) return;
  for (auto &Item : Info->Items)
    if (!Item->Separator && Item->Data.Command == Command) Item->Data.Context = Context;
}

VOID EFIAPI OpShowPopupMenu (WINDOW_HEADER *Popup) { S ().ShowPopup (Popup); }

MENU_ITEM *EFIAPI OpCreateMenuButton (WINDOW_HEADER *Header, UINT16 X, UINT16 Width, COMMAND_CALLBACK Command,
                                      WINDOW_HEADER *Popup, VOID *Context, UINT8 IconId, const CHAR8 *Text) {
  WindowInfo *Info = S ().FindWindow (Header);
  if (Info == nullptr || Info->Popup) return nullptr;
  auto Item = std::make_unique<MenuItemObject> ();
  MENU_ITEM &R = Item->Data;
  uint16_t Line = S ().LineHeight ();
  R.Control.Kind = CONTROL_KIND_MENU_ITEM;
  R.IconId = IconId;
  R.Command = Command;
  R.Popup = Popup;
  R.Context = Context;
  R.ItemGroup = static_cast<UINT64> (reinterpret_cast<uintptr_t> (Header));
  R.Control.X = X;
  R.Control.Height = static_cast<UINT16> (Line + 12);
  const char *Value = Text != nullptr ? reinterpret_cast<const char *> (Text) : "";
  Item->SetText (Value);
  if (IconId >= ICON_NONE) {
    R.Control.Flags = WINDOW_FLAG_ENABLED | WINDOW_FLAG_FOCUSABLE;
    R.Control.Width = static_cast<UINT16> (std::min<int> (S ().TextWidth (Value) + 16, 0xFFFF));
    R.Control.Y = 3;
  } else {
    R.Control.Flags = WINDOW_FLAG_ENABLED;
    R.Control.Width = Width;
    R.Control.Y = static_cast<UINT16> (Line + 20);
  }
  return reinterpret_cast<MENU_ITEM *> (S ().AddControl (Header, std::move (Item), true, true));
}

VOID EFIAPI OpSetTooltip (MENU_ITEM *Item, const CHAR8 *Text, UINTN, UINTN) {
  auto *Object = ObjectAs<MenuItemObject> (S ().FindControl (Item));
  if (Object == nullptr) return;
  Object->TooltipStore = Text != nullptr ? reinterpret_cast<const char *> (Text) : "";
  Object->Data.Tooltip = reinterpret_cast<CHAR8 *> (Object->TooltipStore.data ());
}

CONTROL *EFIAPI OpCreateTextField (WINDOW_HEADER *Parent, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height, UINTN,
                                   BOOLEAN Framed, const CHAR8 *Text) {
  WindowInfo *Info = S ().FindWindow (Parent);
  if (Info == nullptr || Info->Popup) return nullptr;
  auto Field = std::make_unique<TextFieldObject> ();
  CONTROL &R = Field->Data;
  R.Kind = CONTROL_KIND_TEXT_FIELD;
  R.Flags = WINDOW_FLAG_ENABLED | (Framed ? kControlFramed : 0);
  R.X = X;
  R.Y = Y;
  R.Width = Width;
  R.Height = Height;
  Field->SetText (Text != nullptr ? reinterpret_cast<const char *> (Text) : "");
  return S ().AddControl (Parent, std::move (Field), true, true);
}

CONTROL *EFIAPI OpCreateButton (WINDOW_HEADER *Parent, UINT8 Id, const CHAR8 *Text, UINT16 X, UINT16 Y, UINT16 Width,
                                UINT16 Height, UINTN) {
  WindowInfo *Info = S ().FindWindow (Parent);
  if (Info == nullptr || Info->Popup) return nullptr;
  auto Button = std::make_unique<RecordControl<CONTROL>> ();
  CONTROL &R = Button->Data;
  R.Id = Id;
  R.Kind = CONTROL_KIND_BUTTON;
  R.Flags = WINDOW_FLAG_ENABLED | WINDOW_FLAG_FOCUSABLE;
  R.X = X;
  R.Y = Y;
  R.Width = Width;
  R.Height = Height;
  Button->SetText (Text != nullptr ? reinterpret_cast<const char *> (Text) : "");
  return S ().AddControl (Parent, std::move (Button), true, false);
}

}  // namespace

void FillMenuOperations (WINDOW_BASE_PROTOCOL &T) {
  T.CreatePopupMenu = OpCreatePopupMenu;
  T.AppendMenuItem = OpAppendMenuItem;
  T.AppendMenuSeparator = OpAppendMenuSeparator;
  T.EnableMenuItem = OpEnableMenuItem;
  T.SetMenuItemContext = OpSetMenuItemContext;
  T.ShowPopupMenu = OpShowPopupMenu;
  T.CreateMenuButton = OpCreateMenuButton;
  T.SetTooltip = OpSetTooltip;
  T.CreateTextField = OpCreateTextField;
  T.CreateButton = OpCreateButton;
}

// ------------------------------------------------------ user actions

WINDOW_HEADER *WindowBase::ShownPopup () const { return State_->Shown; }

std::vector<WINDOW_HEADER *> WindowBase::Popups () const {
  std::vector<WINDOW_HEADER *> Out;
  for (auto &Entry : State_->Windows)
    if (Entry.second->Popup && !Entry.second->Dying) Out.push_back (Entry.second->Header);
  return Out;
}

std::vector<PopupItemInfo> WindowBase::PopupItems (WINDOW_HEADER *Popup) const {
  std::vector<PopupItemInfo> Out;
  WindowInfo *Info = State_->FindWindow (Popup);
  if (Info == nullptr || !Info->Popup) return Out;
  for (auto &Item : Info->Items) {
    PopupItemInfo I;
    I.Text = Item->TextStore;
    I.Command = Item->Data.Command;
    I.Context = static_cast<WINDOW_HEADER *> (Item->Data.Context);
    I.Icon = Item->Data.IconId;
    I.Enabled = (Item->Data.Control.Flags & WINDOW_FLAG_ENABLED) != 0;
    I.Separator = Item->Separator;
    I.Item = &Item->Data;
    Out.push_back (I);
  }
  return Out;
}

bool WindowBase::ChoosePopupItem (WINDOW_HEADER *Popup, const std::string &Text) {
  WindowInfo *Info = State_->FindWindow (Popup);
  if (Info == nullptr || !Info->Popup) return false;
  for (auto &Item : Info->Items)
    if (!Item->Separator && Item->TextStore == Text) return State_->RunPopupItem (*Info, *Item);
  return false;
}

void WindowBase::ClosePopup () { State_->ClosePopup (true); }

bool WindowBase::ClickMenuItem (MENU_ITEM *Item) {
  auto *Object = ObjectAs<MenuItemObject> (State_->FindControl (Item));
  if (Object == nullptr || (Item->Control.Flags & WINDOW_FLAG_ENABLED) == 0) return false;
  State::Scope Guard (*State_);
  if (Item->Command != nullptr) {
    Item->Command (Item, static_cast<WINDOW_HEADER *> (Item->Context));
    return true;
  }
  return State_->OpenItemPopup (Item, false);
}

bool WindowBase::ClickButton (CONTROL *Button) {
  ControlObject *Object = State_->FindControl (Button);
  if (Object == nullptr || Button->Kind != CONTROL_KIND_BUTTON || (Button->Flags & WINDOW_FLAG_ENABLED) == 0)
    return false;
  MESSAGE Message {};
  Message.Type = MSG_SYSCOMMAND;
  Message.Word2 = Button->Id;
  State_->Send (Button->Parent, &Message);
  return true;
}

}  // namespace env
