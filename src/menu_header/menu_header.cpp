// The menu header component.
//
// The header is a child window of 296 bytes placed at the top of its owner,
// below the title bar. Its items are menu buttons made by the window base
// (CreateMenuButton); the header tells them apart from its other children (the
// path label and the path field) by the item-group value that the window base
// gives to every button of one header. Text items (icon id 126 or more) form
// the menu row, icon items the toolbar row; each row is packed from x = 4 in
// the order in which items are added.
//
// A menu title is an item without a command: it only opens its popup. The
// keyboard moves between titles with Left and Right while one is current, and
// Alt with a letter opens the title whose text holds that letter as "(X)".
//
// Behaviour for a window base that cannot create the header window: the
// operation returns null and leaves the owner unchanged (the font pushed for
// measuring is popped again).

#include "menu_header/menu_header.h"

#include "core/bindings.h"
#include "core/strings.h"
#include "platform/library.h"
#include "util/string_utils.h"

namespace {

constexpr UINT32 NavigableFlags = WINDOW_FLAG_ENABLED | WINDOW_FLAG_FOCUSABLE | WINDOW_FLAG_VISIBLE;
constexpr UINT16 PathLineSize = 128;

MENU_HEADER *AsHeader (WINDOW_HEADER *Header) { return reinterpret_cast<MENU_HEADER *> (Header); }

WINDOW_HEADER *OwnerOf (WINDOW_HEADER *Header) { return Header->Parent; }

// The item of the header's group that Control stands for, or null when the
// child is something else (a text field, another header's button).
MENU_ITEM *GroupItem (MENU_HEADER *Header, CONTROL *Control) {
  if (Control == nullptr || Control->Kind != CONTROL_KIND_MENU_ITEM || Header->ItemGroup == 0) return nullptr;
  MENU_ITEM *Item = reinterpret_cast<MENU_ITEM *> (Control);
  return Item->ItemGroup == Header->ItemGroup ? Item : nullptr;
}

BOOLEAN IsNavigableTitle (const MENU_ITEM *Item) {
  return Item->Command == nullptr && (Item->Control.Flags & NavigableFlags) != 0;
}

// Measures with the owner's font, as the header's rows are laid out for it.
UINTN PushOwnerFont (WINDOW_HEADER *Owner) {
  if (Owner == nullptr) return gGuiDriver->PushFont (0, 0, 0);
  return gGuiDriver->PushFont (Owner->FontFace, Owner->FontSize, Owner->FontColor);
}

UINT16 HeaderHeight (UINT16 LineHeight, BOOLEAN PathRow, BOOLEAN Toolbar) {
  if (PathRow && Toolbar) return (UINT16) ((LineHeight + 10) * 3 + 20);
  if (PathRow || Toolbar) return (UINT16) (2 * LineHeight + 34);
  return (UINT16) (LineHeight + 18);
}

UINT16 RowItemsWidth (WINDOW_HEADER *Header, BOOLEAN IconRow) {
  MENU_HEADER *Menu = AsHeader (Header);
  UINT32 Width = 4;
  for (CONTROL *Child = Header->FirstChild; Child != nullptr; Child = Child->NextSibling) {
    MENU_ITEM *Item = GroupItem (Menu, Child);
    if (Item == nullptr) continue;
    BOOLEAN IsIcon = Item->IconId < ICON_NONE;
    if (IsIcon == IconRow) Width += Item->Control.Width;
  }
  return (UINT16) Width;
}

VOID EFIAPI HeaderDestroyed (WINDOW_HEADER *) {}

VOID SendEscape (WINDOW_HEADER *Popup) {
  MESSAGE Key;
  ZeroMem (&Key, sizeof (Key));
  Key.Type = MSG_KEY;
  Key.Word4 = SCAN_CODE_ESCAPE;
  gWindowBase->SendMessage (Popup, &Key);
}

// A type-1 record with byte 1 = 2 opens the item's popup; byte 8 = 1 also
// selects its first entry.
VOID PostOpenPopup (MENU_ITEM *Item, BOOLEAN SelectFirst) {
  MESSAGE Open;
  ZeroMem (&Open, sizeof (Open));
  Open.Type = MSG_COMMAND;
  Open.Code = 2;
  if (SelectFirst) Open.Value8 = 1;
  gWindowBase->PostMessage (Item, &Open);
}

CHAR8 UpperLetter (UINT32 Character) {
  if (Character >= 'a' && Character <= 'z') Character -= 'a' - 'A';
  return (Character >= 'A' && Character <= 'Z') ? (CHAR8) Character : 0;
}

}  // namespace

WINDOW_HEADER *EFIAPI CreateMenuHeader (WINDOW_HEADER *Owner, BOOLEAN PathRow, BOOLEAN Toolbar) {
  if (Owner == nullptr) return nullptr;
  UINTN Font = PushOwnerFont (Owner);
  UINT16 LineHeight = gGuiDriver->GetLineHeight ();
  UINT16 Width = (UINT16) (Owner->Width - 5);
  UINT16 Height = HeaderHeight (LineHeight, PathRow, Toolbar);

  WINDOW_HEADER *Header = gWindowBase->CreateWindow (MENU_HEADER_SIZE, Owner, HeaderHandler, PaintHeader,
                                                     HeaderDestroyed, 2, gWindowBase->CaptionHeight, Width, Height);
  if (Header == nullptr) {
    gGuiDriver->PopFont (Font);
    return nullptr;
  }
  MENU_HEADER *Menu = AsHeader (Header);
  gWindowBase->SetWindowText (Header, "MENU_HDR"_a);
  Menu->HasPathRow = PathRow ? 1 : 0;
  Menu->HasToolbar = Toolbar ? 1 : 0;

  if (PathRow) {
    const CHAR8 *Label = GetString (nullptr, "fullPathStr"_a);
    UINT16 LabelWidth = gGuiDriver->GetTextWidth (Label);
    UINT16 Y = (UINT16) (2 * LineHeight + 36);
    UINT16 RowHeight = (UINT16) (LineHeight + 10);
    gWindowBase->CreateTextField (Header, 4, Y, (UINT16) (LabelWidth + 4), RowHeight, 0, FALSE, Label);
    Menu->PathField = gWindowBase->CreateTextField (Header, (UINT16) (LabelWidth + 10), Y,
                                                    (UINT16) (Width - (LabelWidth + 10) - 2), RowHeight, 0, TRUE,
                                                    "\\"_a);
  }
  Header->Flags |= WINDOW_FLAG_HAS_ICON;
  gGuiDriver->PopFont (Font);
  return Header;
}

MENU_ITEM *EFIAPI AddHeaderItem (WINDOW_HEADER *Header, UINT16 IconId, const CHAR8 *Text, COMMAND_CALLBACK Command,
                                 WINDOW_HEADER *Popup, VOID *Context) {
  if (Header == nullptr) return nullptr;
  BOOLEAN IsIcon = IconId < ICON_NONE;
  if (!IsIcon && Text == nullptr) return nullptr;

  UINT16 X;
  UINT16 Width;
  if (IsIcon) {
    UINTN Font = PushOwnerFont (OwnerOf (Header));
    Width = (UINT16) (gGuiDriver->GetLineHeight () + 20);
    gGuiDriver->PopFont (Font);
    X = IconItemsWidth (Header);
  } else {
    Width = 4;
    X = TextItemsWidth (Header);
  }
  MENU_ITEM *Item = gWindowBase->CreateMenuButton (Header, X, Width, Command, Popup, Context,
                                                   (UINT8) (IconId > 0xFF ? 0xFF : IconId), Text);
  if (Item == nullptr) return nullptr;
  MENU_HEADER *Menu = AsHeader (Header);
  if (Menu->ItemGroup == 0) Menu->ItemGroup = Item->ItemGroup;
  if (Popup != nullptr) Popup->Owner = Header;
  return Item;
}

VOID EFIAPI EnableHeaderItem (WINDOW_HEADER *Header, COMMAND_CALLBACK Command, BOOLEAN Enable, BOOLEAN Redraw) {
  if (Header == nullptr) return;
  MENU_HEADER *Menu = AsHeader (Header);
  if (Menu->ItemGroup == 0) return;
  for (CONTROL *Child = Header->FirstChild; Child != nullptr; Child = Child->NextSibling) {
    MENU_ITEM *Item = GroupItem (Menu, Child);
    if (Item == nullptr || Item->Command != Command) continue;
    BOOLEAN Enabled = (Item->Control.Flags & WINDOW_FLAG_ENABLED) != 0;
    if ((Enable != 0) == Enabled) return;
    if (Enable) {
      Item->Control.Flags |= WINDOW_FLAG_ENABLED;
    } else {
      Item->Control.Flags &= ~WINDOW_FLAG_ENABLED;
    }
    if (Redraw) {
      gWindowBase->Redraw (Item);
      gWindowBase->UpdateItem (Item);
    }
    return;
  }
}

VOID SetHeaderPath (WINDOW_HEADER *Header, const CHAR8 *Path, BOOLEAN Redraw) {
  if (Header == nullptr) return;
  MENU_HEADER *Menu = AsHeader (Header);
  if (Menu->PathField == nullptr) return;
  CHAR8 Line[PathLineSize];
  Line[0] = 0;
  if (Path != nullptr) AppendFitted (Line, Path, 126);
  UINT16 Length = StringLength (Line);
  if (Length == 0 || Line[Length - 1] != '\\') {
    Line[Length] = '\\';
    Line[Length + 1] = 0;
  }
  gWindowBase->SetWindowText (Menu->PathField, Line);
  if (Redraw) gWindowBase->Redraw (Menu->PathField);
}

VOID EFIAPI PaintHeader (WINDOW_HEADER *Header, MESSAGE *, VOID *) {
  PAINT_CONTEXT Context = gWindowBase->BeginPaint (Header);
  if (Context == nullptr) return;
  MENU_HEADER *Menu = AsHeader (Header);
  UINT16 X0 = 0;
  UINT16 Y0 = 0;
  gWindowBase->GetWindowOrigin (&X0, &Y0, Header);
  UINT16 W = Header->Width;
  UINT16 H = Header->Height;
  // The rows were laid out for the owner's font: the separators follow them.
  UINTN Font = PushOwnerFont (OwnerOf (Header));
  UINT16 LineHeight = gGuiDriver->GetLineHeight ();
  gGuiDriver->PopFont (Font);

  gGuiDriver->DrawRect (Context, X0, Y0, (UINT16) (X0 + W - 1), (UINT16) (Y0 + H - 1), 0x808080);
  gGuiDriver->DrawLine (Context, (UINT16) (X0 + 1), (UINT16) (Y0 + 1), (UINT16) (X0 + W - 2), (UINT16) (Y0 + 1),
                        0xFFFFFF);
  gGuiDriver->DrawLine (Context, (UINT16) (X0 + 1), (UINT16) (Y0 + 1), (UINT16) (X0 + 1), (UINT16) (Y0 + H - 2),
                        0xFFFFFF);
  if (!Menu->HasToolbar) return;
  UINT16 S = (UINT16) (Y0 + LineHeight + 16);
  gGuiDriver->DrawLine (Context, (UINT16) (X0 + 3), S, (UINT16) (X0 + W - 4), S, 0x808080);
  gGuiDriver->DrawLine (Context, (UINT16) (X0 + 3), (UINT16) (S + 1), (UINT16) (X0 + W - 4), (UINT16) (S + 1),
                        0xFFFFFF);
  if (!Menu->HasPathRow) return;
  S = (UINT16) (Y0 + 2 * LineHeight + 32);
  gGuiDriver->DrawLine (Context, (UINT16) (X0 + 3), S, (UINT16) (X0 + W - 4), S, 0x808080);
  gGuiDriver->DrawLine (Context, (UINT16) (X0 + 3), (UINT16) (S + 1), (UINT16) (X0 + W - 4), (UINT16) (S + 1),
                        0xFFFFFF);
}

UINT8 EFIAPI HeaderHandler (WINDOW_HEADER *Header, MESSAGE *Message) {
  MENU_HEADER *Menu = AsHeader (Header);
  switch (Message->Type) {
    case MSG_KEY:
      if (HeaderKey (Header, Message)) {
        if (OwnerOf (Header) != nullptr) gWindowBase->SetFocus (OwnerOf (Header), Header, 1);
        return 1;
      }
      return 0;
    case MSG_SET_FOCUS:
      if (Header->FocusControl == nullptr) gWindowBase->SetFocus (Header, Menu->PathField, 1);
      return 0;
    case MSG_KILL_FOCUS:
      gWindowBase->SetFocus (Header, nullptr, 1);
      return 0;
    case MSG_RESIZE:
      ResizeHeader (Header);
      return 0;
    case MSG_POPUP_CLOSED:
      gWindowBase->SetFocus (Header, nullptr, 1);
      if (Menu->SkipForward == 0) {
        if (OwnerOf (Header) != nullptr) gWindowBase->PostMessage (OwnerOf (Header), Message);
      } else {
        Menu->SkipForward = 0;
      }
      return 0;
    case MSG_POPUP_OPENED:
      MarkOpenMenu (Header, static_cast<WINDOW_HEADER *> (Message->Pointer8));
      return 0;
    default:
      return 0;
  }
}

VOID ResizeHeader (WINDOW_HEADER *Header) {
  WINDOW_HEADER *Owner = OwnerOf (Header);
  if (Owner == nullptr) return;
  MENU_HEADER *Menu = AsHeader (Header);
  Header->Width = (UINT16) (Owner->Width - 5);
  if (Menu->PathField == nullptr) return;
  UINTN Font = PushOwnerFont (Owner);
  UINT16 LabelWidth = gGuiDriver->GetTextWidth (GetString (nullptr, "fullPathStr"_a));
  gGuiDriver->PopFont (Font);
  Menu->PathField->Width = (UINT16) (Header->Width - (LabelWidth + 10) - 2);
}

BOOLEAN HeaderKey (WINDOW_HEADER *Header, MESSAGE *Message) {
  if (Message->Code != 0 && Message->Word4 == SCAN_CODE_HOTKEY) return ActivateByHotkey (Header, 0);
  if ((Message->Dword8 & (KEY_STATE_RIGHT_ALT | KEY_STATE_LEFT_ALT)) == 0) {
    MENU_HEADER *Menu = AsHeader (Header);
    if (GroupItem (Menu, static_cast<CONTROL *> (Header->FocusControl)) != nullptr) {
      if (Message->Word4 == SCAN_CODE_RIGHT) NextMenu (Header);
      else if (Message->Word4 == SCAN_CODE_LEFT) PreviousMenu (Header);
    }
    return FALSE;
  }
  CHAR8 Letter = UpperLetter (Message->Word2);
  if (Letter == 0) return FALSE;
  return ActivateByHotkey (Header, Letter);
}

BOOLEAN ActivateByHotkey (WINDOW_HEADER *Header, CHAR8 Key) {
  MENU_HEADER *Menu = AsHeader (Header);
  if (Menu->ItemGroup == 0) return FALSE;
  for (CONTROL *Child = Header->FirstChild; Child != nullptr; Child = Child->NextSibling) {
    MENU_ITEM *Title = GroupItem (Menu, Child);
    if (Title == nullptr || !IsNavigableTitle (Title)) continue;
    if (Key == 0) {
      gWindowBase->SetFocus (Header, Title, 1);
      Title->Control.State = 2;
      gWindowBase->Redraw (Title);
      if (OwnerOf (Header) != nullptr) OwnerOf (Header)->FocusControl = Header;
      return TRUE;
    }
    if (ItemHotkey (Title) == Key) {
      gWindowBase->SetFocus (Header, Title, 1);
      PostOpenPopup (Title, FALSE);
      return TRUE;
    }
  }
  return FALSE;
}

CHAR8 ItemHotkey (const MENU_ITEM *Item) {
  const CHAR8 *Text = Item->Control.Text;
  if (Text == nullptr) return 0;
  for (UINTN I = 0; Text[I] != 0; I++) {
    if (Text[I] != '(' || Text[I + 1] == 0 || Text[I + 2] != ')') continue;
    CHAR8 Letter = UpperLetter (Text[I + 1]);
    if (Letter != 0) return Letter;
  }
  return 0;
}

namespace {

// The navigable title next to the current one (Step +1) or before it (-1).
MENU_ITEM *NeighbourTitle (WINDOW_HEADER *Header, MENU_ITEM *Current, int Step) {
  MENU_HEADER *Menu = AsHeader (Header);
  MENU_ITEM *Previous = nullptr;
  BOOLEAN Found = FALSE;
  for (CONTROL *Child = Header->FirstChild; Child != nullptr; Child = Child->NextSibling) {
    MENU_ITEM *Title = GroupItem (Menu, Child);
    if (Title == nullptr || !IsNavigableTitle (Title)) continue;
    if (Found) return Title;
    if (Title == Current) {
      if (Step < 0) return Previous;
      Found = TRUE;
    }
    Previous = Title;
  }
  return nullptr;
}

VOID MoveMenu (WINDOW_HEADER *Header, int Step) {
  MENU_ITEM *Current = GroupItem (AsHeader (Header), static_cast<CONTROL *> (Header->FocusControl));
  if (Current == nullptr) return;
  MENU_ITEM *Other = NeighbourTitle (Header, Current, Step);
  if (Other != nullptr) SwitchMenu (Header, Current, Other);
}

}  // namespace

VOID NextMenu (WINDOW_HEADER *Header) { MoveMenu (Header, 1); }

VOID PreviousMenu (WINDOW_HEADER *Header) { MoveMenu (Header, -1); }

VOID SwitchMenu (WINDOW_HEADER *Header, MENU_ITEM *From, MENU_ITEM *To) {
  MENU_HEADER *Menu = AsHeader (Header);
  Menu->SkipForward = 1;
  if (From->Popup != nullptr) SendEscape (From->Popup);
  From->Control.State = 0;
  gWindowBase->Redraw (From);
  PostOpenPopup (To, TRUE);
  Header->FocusControl = To;
}

VOID MarkOpenMenu (WINDOW_HEADER *Header, WINDOW_HEADER *Popup) {
  MENU_HEADER *Menu = AsHeader (Header);
  if (Menu->ItemGroup == 0) return;
  for (CONTROL *Child = Header->FirstChild; Child != nullptr; Child = Child->NextSibling) {
    MENU_ITEM *Title = GroupItem (Menu, Child);
    if (Title == nullptr || !IsNavigableTitle (Title) || Title->Popup != Popup) continue;
    Header->FocusControl = Title;
    return;
  }
}

UINT16 IconItemsWidth (WINDOW_HEADER *Header) { return RowItemsWidth (Header, TRUE); }

UINT16 TextItemsWidth (WINDOW_HEADER *Header) { return RowItemsWidth (Header, FALSE); }
