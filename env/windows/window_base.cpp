// The window base: windows, links, z-order and activation, message delivery
// and the pump, default actions, destruction with deferred release, timers.
// Popups, menu items, text fields, buttons and icons are in window_menus.cpp
// and window_icons.cpp.
#include "env/windows/window_base.h"

#include <algorithm>
#include <cstring>

#include "env/files/file_driver.h"
#include "env/gui/gui_driver.h"
#include "env/pool.h"
#include "env/windows/window_internal.h"

namespace env {

namespace {
WindowBase::State *Current = nullptr;
}

WindowBase::State *CurrentWindowBase () { return Current; }

std::string CutText (const char *Text, size_t MaxBytes) {
  if (Text == nullptr) return {};
  size_t Length = 0;
  while (Text[Length] != 0) {
    size_t Step = static_cast<uint8_t> (Text[Length]) >= 0x81 && Text[Length + 1] != 0 ? 2 : 1;
    if (Length + Step > MaxBytes) break;
    Length += Step;
  }
  return std::string (Text, Length);
}

UINTN ControlObject::OnMessage (MESSAGE &Message) {
  if (Message.Type == MSG_RESIZE && Message.Code == 1) {
    Rec->Width = Message.Word2;
    Rec->Height = Message.Word4;
    if (Message.Byte7 == 1) {
      Rec->X = Message.Word8;
      Rec->Y = Message.Word10;
    }
    OnResized ();
    return 1;
  }
  return 0;
}

// ------------------------------------------------------------------ state

WindowBase::State::State (FileDriver &Fd, GuiDriver &G) : Files (Fd), Gui (G) {
  DesktopHeader.Kind = WINDOW_KIND_DESKTOP;
  DesktopHeader.Width = ScreenWidth ();
  DesktopHeader.Height = ScreenHeight ();
  DesktopHeader.NotifyEnabled = 1;
  DesktopHeader.IconId = ICON_NONE;
  DesktopHeader.ObjectSize = sizeof (WINDOW_HEADER);
}

WindowBase::State::~State () {
  // Whatever is left (popups kept for the driver's life, windows of a test
  // that did not clean up) goes back to the pool without callbacks.
  for (auto &Entry : Windows) PoolFree (Entry.second->Header);
  Windows.clear ();
  ControlMap.clear ();
  for (void *Block : PoolGraveyard) PoolFree (Block);
  PoolGraveyard.clear ();
}

void WindowBase::State::Flush () {
  std::vector<void *> Blocks;
  Blocks.swap (PoolGraveyard);
  for (void *Block : Blocks) PoolFree (Block);
  ControlGraveyard.clear ();
  InfoGraveyard.clear ();
}

void WindowBase::State::ReleaseBlock (void *Block) {
  if (Depth == 0)
    PoolFree (Block);
  else
    PoolGraveyard.push_back (Block);
}

WindowInfo *WindowBase::State::FindAnyWindow (const void *Target) const {
  auto It = Windows.find (Target);
  return It == Windows.end () ? nullptr : It->second.get ();
}

WindowInfo *WindowBase::State::FindWindow (const void *Target) const {
  WindowInfo *Info = FindAnyWindow (Target);
  return Info != nullptr && !Info->Dying ? Info : nullptr;
}

ControlObject *WindowBase::State::FindControl (const void *Target) const {
  auto It = ControlMap.find (Target);
  return It == ControlMap.end () ? nullptr : It->second.get ();
}

uint16_t WindowBase::State::LineHeight () const {
  GUI_DRIVER_PROTOCOL *T = Gui.Table ();
  uint16_t H = T->GetLineHeight != nullptr ? T->GetLineHeight () : 0;
  return H != 0 ? H : 16;
}

uint16_t WindowBase::State::CharWidth () const {
  GUI_DRIVER_PROTOCOL *T = Gui.Table ();
  uint16_t W = T->GetCharWidth != nullptr ? T->GetCharWidth () : 0;
  return W != 0 ? W : 8;
}

uint16_t WindowBase::State::TextWidth (const char *Text) const {
  if (Text == nullptr) return 0;
  GUI_DRIVER_PROTOCOL *T = Gui.Table ();
  if (T->GetTextWidth != nullptr) return T->GetTextWidth (reinterpret_cast<const CHAR8 *> (Text));
  size_t Width = 0;
  for (const char *P = Text; *P != 0; P++) {
    if (static_cast<uint8_t> (*P) >= 0x81 && P[1] != 0) {
      Width += 16;
      P++;
    } else {
      Width += 8;
    }
  }
  return static_cast<uint16_t> (std::min<size_t> (Width, 0xFFFF));
}

uint16_t WindowBase::State::ScreenWidth () const {
  uint16_t W = Gui.Table ()->ScreenWidth;
  return W != 0 ? W : 1024;
}

uint16_t WindowBase::State::ScreenHeight () const {
  uint16_t H = Gui.Table ()->ScreenHeight;
  return H != 0 ? H : 768;
}

void WindowBase::State::CountRedraw (void *Target) {
  Redraws[Target]++;
  if (RedrawHook) RedrawHook (Target);
}

// ---------------------------------------------------------------- windows

WINDOW_HEADER *WindowBase::State::Create (UINTN Size, WINDOW_HEADER *Parent, MESSAGE_HANDLER Handler,
                                          PAINT_CALLBACK Paint, DESTROY_CALLBACK DestroyCb, UINT16 X, UINT16 Y,
                                          UINT16 Width, UINT16 Height) {
  if (Parent != nullptr && !IsDesktop (Parent)) {
    WindowInfo *ParentInfo = FindWindow (Parent);
    if (ParentInfo == nullptr || ParentInfo->Popup) return nullptr;
  }
  if (Size < sizeof (WINDOW_HEADER)) Size = sizeof (WINDOW_HEADER);
  if (Size > (16u << 20)) return nullptr;
  auto *Header = static_cast<WINDOW_HEADER *> (PoolAllocate (Size));
  if (Header == nullptr) return nullptr;
  std::memset (Header, 0, Size);
  Header->X = X;
  Header->Y = Y;
  Header->Width = Width;
  Header->Height = Height;
  Header->NotifyEnabled = 1;
  Header->Kind = WINDOW_KIND_WINDOW;
  Header->Parent = Parent != nullptr ? Parent : &DesktopHeader;
  Header->Handler = Handler;
  Header->Paint = Paint;
  Header->Destroy = DestroyCb;
  Header->ObjectSize = Size;
  Header->IconId = ICON_NONE;

  auto Info = std::make_unique<WindowInfo> ();
  Info->Header = Header;
  Info->Serial = NextSerial++;
  Header->BaseState = Info.get ();
  if (IsDesktop (Header->Parent)) {
    ZOrder.push_back (Header);
    Active = Header;
  } else {
    WindowInfo *ParentInfo = FindWindow (Header->Parent);
    WINDOW_HEADER **Link = &ParentInfo->FirstChildWindow;
    while (*Link != nullptr) Link = &(*Link)->NextWindow;
    *Link = Header;
  }
  Creation.push_back (Header);
  Windows.emplace (Header, std::move (Info));
  return Header;
}

WINDOW_HEADER *WindowBase::State::TopLevelOf (WINDOW_HEADER *Window) const {
  while (Window != nullptr && Window->Parent != nullptr && !IsDesktop (Window->Parent)) Window = Window->Parent;
  return Window;
}

void WindowBase::State::Raise (WINDOW_HEADER *Window) {
  WINDOW_HEADER *Top = TopLevelOf (Window);
  auto It = std::find (ZOrder.begin (), ZOrder.end (), Top);
  if (It == ZOrder.end ()) return;
  ZOrder.erase (It);
  ZOrder.push_back (Top);
}

void WindowBase::State::Activate (WINDOW_HEADER *Window) {
  WindowInfo *Info = FindWindow (Window);
  if (Info == nullptr || Info->Popup) return;
  Scope Guard (*this);
  WINDOW_HEADER *Top = TopLevelOf (Window);
  WINDOW_HEADER *Old = Active;
  MESSAGE Message {};
  if (Old != Top && FindWindow (Old) != nullptr) {
    Message.Type = MSG_KILL_FOCUS;
    Send (Old, &Message);
  }
  if (FindWindow (Top) == nullptr) return;
  Active = Top;
  Message = MESSAGE {};
  Message.Type = MSG_ACTIVATE;
  Send (Top, &Message);
  if (FindWindow (Top) == nullptr) return;
  Message = MESSAGE {};
  Message.Type = MSG_SET_FOCUS;
  Send (Top, &Message);
}

void WindowBase::State::SetFocus (WINDOW_HEADER *Window, VOID *Control) {
  WindowInfo *Info = FindWindow (Window);
  if (Info == nullptr) return;
  Scope Guard (*this);
  VOID *Old = Window->FocusControl;
  Window->FocusControl = Control;
  if (Old == Control) return;
  MESSAGE Message {};
  if (Old != nullptr && Old != Window && FindWindow (Old) != nullptr) {
    Message.Type = MSG_KILL_FOCUS;
    Send (Old, &Message);
  }
  if (Control != nullptr && Control != Window && FindWindow (Control) != nullptr) {
    Message = MESSAGE {};
    Message.Type = MSG_SET_FOCUS;
    Send (Control, &Message);
  }
}

void WindowBase::State::Origin (const void *Target, int32_t &X, int32_t &Y) const {
  X = Y = 0;
  if (Target == nullptr || IsDesktop (Target)) return;
  if (ControlObject *Object = FindControl (Target)) {
    Origin (Object->Rec->Parent, X, Y);
    X += Object->Rec->X;
    Y += Object->Rec->Y;
    return;
  }
  // Walk windows by their parent links (a dying window still answers).
  const WINDOW_HEADER *Window = static_cast<const WINDOW_HEADER *> (Target);
  int Guard = 0;
  while (Window != nullptr && !IsDesktop (Window) && FindAnyWindow (Window) != nullptr && Guard++ < 64) {
    X += Window->X;
    Y += Window->Y;
    if (Window->Kind == WINDOW_KIND_POPUP) break;
    Window = Window->Parent;
  }
}

void WindowBase::State::VisibleRect (const WINDOW_HEADER *Window, int32_t &X, int32_t &Y, int32_t &W,
                                     int32_t &H) const {
  Origin (Window, X, Y);
  W = Window->Width, H = Window->Height;
  // Child windows show only inside their parents.
  int Guard = 0;
  for (const WINDOW_HEADER *P = Window->Parent;
       P != nullptr && !IsDesktop (P) && Window->Kind != WINDOW_KIND_POPUP && FindAnyWindow (P) != nullptr &&
       Guard++ < 64;
       P = P->Parent) {
    int32_t Px = 0, Py = 0;
    Origin (P, Px, Py);
    int32_t X1 = std::min (X + W, Px + int32_t (P->Width)), Y1 = std::min (Y + H, Py + int32_t (P->Height));
    X = std::max (X, Px), Y = std::max (Y, Py);
    W = std::max (X1 - X, 0), H = std::max (Y1 - Y, 0);
  }
}

void WindowBase::State::Destroy (void *Target) {
  WindowInfo *Info = FindWindow (Target);
  if (Info == nullptr) return;
  Scope Guard (*this);
  WINDOW_HEADER *Window = Info->Header;
  Info->Dying = true;

  if (Info->Popup) {
    if (Shown == Window) {
      Shown = nullptr;
      if (FindWindow (Window->Owner) != nullptr) {
        MESSAGE Message {};
        Message.Type = MSG_POPUP_CLOSED;
        Message.Pointer8 = Window;
        Send (Window->Owner, &Message);
      }
    }
  } else {
    bool WasActive = Active == Window;
    if (WasActive) Active = nullptr;
    // The destroy callback sees the window whole, still listed among the windows.
    if (Window->Destroy != nullptr) Window->Destroy (Window);
    // Child windows.
    std::vector<WINDOW_HEADER *> Children;
    for (WINDOW_HEADER *Child = Info->FirstChildWindow; Child != nullptr; Child = Child->NextWindow)
      Children.push_back (Child);
    for (WINDOW_HEADER *Child : Children) Destroy (Child);
    // Controls: the chain, then any other control of this window (owned ones).
    std::vector<CONTROL *> Chain;
    for (CONTROL *Control = Window->FirstChild; Control != nullptr; Control = Control->NextSibling)
      Chain.push_back (Control);
    for (CONTROL *Control : Chain) RemoveControl (Control);
    std::vector<CONTROL *> Rest;
    for (auto &Entry : ControlMap)
      if (Entry.second->Rec->Parent == Window) Rest.push_back (Entry.second->Rec);
    for (CONTROL *Control : Rest) RemoveControl (Control);
    // Popups owned by this window stay, without owner.
    for (auto &Entry : Windows) {
      WINDOW_HEADER *Popup = Entry.second->Header;
      if (!Entry.second->Popup || Popup->Owner != Window) continue;
      if (Shown == Popup) Shown = nullptr;
      Popup->Owner = nullptr;
    }
    // Unlink.
    ZOrder.erase (std::remove (ZOrder.begin (), ZOrder.end (), Window), ZOrder.end ());
    Creation.erase (std::remove (Creation.begin (), Creation.end (), Window), Creation.end ());
    if (WindowInfo *ParentInfo = FindAnyWindow (Window->Parent)) {
      WINDOW_HEADER **Link = &ParentInfo->FirstChildWindow;
      while (*Link != nullptr && *Link != Window) Link = &(*Link)->NextWindow;
      if (*Link == Window) *Link = Window->NextWindow;
    }
    for (auto &Entry : Windows)
      if (Entry.second->Header->FocusControl == Window) Entry.second->Header->FocusControl = nullptr;
    if (Active == Window || (WasActive && Active == nullptr)) Active = ZOrder.empty () ? nullptr : ZOrder.back ();
  }

  Redraws.erase (Window);
  Updates.erase (Window);
  auto It = Windows.find (Window);
  InfoGraveyard.push_back (std::move (It->second));
  Windows.erase (It);
  ReleaseBlock (Window);
}

// ------------------------------------------------------------- controls

CONTROL *WindowBase::State::AddControl (WINDOW_HEADER *Parent, std::unique_ptr<ControlObject> Object, bool InChain,
                                        bool AutoId) {
  WindowInfo *Info = FindWindow (Parent);
  if (Info == nullptr) return nullptr;
  CONTROL *Control = Object->Rec;
  Control->Parent = Parent;
  Control->BaseState = Object.get ();
  if (AutoId) Control->Id = Info->NextAutoId++;
  Object->Serial = NextSerial++;
  Object->InChain = InChain;
  if (Control->Text == nullptr) Object->SetText ("");
  if (InChain) {
    CONTROL **Link = &Parent->FirstChild;
    while (*Link != nullptr) Link = &(*Link)->NextSibling;
    *Link = Control;
  }
  ControlMap.emplace (Control, std::move (Object));
  return Control;
}

void WindowBase::State::RemoveControl (CONTROL *Control) {
  auto It = ControlMap.find (Control);
  if (It == ControlMap.end ()) return;
  std::unique_ptr<ControlObject> Object = std::move (It->second);
  ControlMap.erase (It);
  Object->OnDestroy ();
  WINDOW_HEADER *Parent = Control->Parent;
  if (Object->InChain && FindAnyWindow (Parent) != nullptr) {
    CONTROL **Link = &Parent->FirstChild;
    while (*Link != nullptr && *Link != Control) Link = &(*Link)->NextSibling;
    if (*Link == Control) *Link = Control->NextSibling;
  }
  if (FindAnyWindow (Parent) != nullptr && Parent->FocusControl == Control) Parent->FocusControl = nullptr;
  Redraws.erase (Control);
  Updates.erase (Control);
  if (Depth == 0)
    Object.reset ();
  else
    ControlGraveyard.push_back (std::move (Object));
}

// ------------------------------------------------------------- delivery

UINTN WindowBase::State::Send (void *Target, MESSAGE *Message) {
  if (Target == nullptr || Message == nullptr) return 0;
  Scope Guard (*this);
  if (WindowInfo *Info = FindWindow (Target)) {
    if (Info->Popup) return PopupMessage (*Info, *Message);
    WINDOW_HEADER *Window = Info->Header;
    if (Window->Handler == nullptr) return 0;
    UINTN Result = Window->Handler (Window, Message);
    if (Result == 1 && FindWindow (Window) != nullptr) DefaultAction (Window, *Message);
    return Result;
  }
  if (ControlObject *Object = FindControl (Target)) return Object->OnMessage (*Message);
  return 0;
}

void WindowBase::State::DefaultAction (WINDOW_HEADER *Window, const MESSAGE &Message) {
  switch (Message.Type) {
    case MSG_SYSCOMMAND:
      if (Message.Word2 == SYSCMD_CLOSE) {
        Destroy (Window);
      } else if (Message.Word2 == SYSCMD_RESTORE && IsDesktop (Window->Parent)) {
        MESSAGE Resize {};
        Resize.Type = MSG_RESIZE;
        if ((Window->Flags & WINDOW_FLAG_MAXIMIZED) != 0) {
          Window->Flags &= ~WINDOW_FLAG_MAXIMIZED;
          Window->X = Window->RestoreX;
          Window->Y = Window->RestoreY;
          Resize.Word2 = Window->RestoreWidth;
          Resize.Word4 = Window->RestoreHeight;
        } else {
          Window->Flags |= WINDOW_FLAG_MAXIMIZED;
          Window->RestoreX = Window->X;
          Window->RestoreY = Window->Y;
          Window->RestoreWidth = Window->Width;
          Window->RestoreHeight = Window->Height;
          Window->X = 0;
          Window->Y = 0;
          Resize.Word2 = ScreenWidth ();
          Resize.Word4 = ScreenHeight ();
        }
        Send (Window, &Resize);
      }
      break;
    case MSG_ACTIVATE:
      Raise (Window);
      break;
    default:
      break;
  }
}

UINTN WindowBase::State::Notify (CONTROL *Control, MESSAGE &Message) {
  if (Control == nullptr) return 0;
  WindowInfo *Info = FindWindow (Control->Parent);
  if (Info == nullptr || Info->Header->NotifyEnabled == 0) return 0;
  return Send (Info->Header, &Message);
}

bool WindowBase::State::Post (void *Target, const MESSAGE &Message) {
  uint64_t Serial = 0;
  if (WindowInfo *Info = FindWindow (Target))
    Serial = Info->Serial;
  else if (ControlObject *Object = FindControl (Target))
    Serial = Object->Serial;
  else
    return false;
  Queue.push_back (Posted {Target, Serial, Message});
  return true;
}

size_t WindowBase::State::Pump () {
  Scope Guard (*this);
  size_t Delivered = 0;
  while (!Queue.empty () && Delivered < kMaxPumpDeliveries) {
    Posted Item = Queue.front ();
    Queue.pop_front ();
    bool Alive = false;
    if (WindowInfo *Info = FindWindow (Item.Target))
      Alive = Info->Serial == Item.Serial;
    else if (ControlObject *Object = FindControl (Item.Target))
      Alive = Object->Serial == Item.Serial;
    if (!Alive) continue;
    Send (const_cast<void *> (Item.Target), &Item.Message);
    Delivered++;
  }
  return Delivered;
}

// ------------------------------------------------------------ table ops

namespace {

WindowBase::State &S () { return *Current; }

WINDOW_HEADER *EFIAPI OpCreateWindow (UINTN Size, WINDOW_HEADER *Parent, MESSAGE_HANDLER Handler, PAINT_CALLBACK Paint,
                                      DESTROY_CALLBACK Destroy, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height) {
  return S ().Create (Size, Parent, Handler, Paint, Destroy, X, Y, Width, Height);
}

VOID EFIAPI OpDestroyWindow (VOID *Target) { S ().Destroy (Target); }

WINDOW_HEADER *EFIAPI OpFindNextWindow (WINDOW_HEADER *Previous, MESSAGE_HANDLER Handler) {
  auto &Order = S ().Creation;
  size_t Start = 0;
  if (Previous != nullptr) {
    auto It = std::find (Order.begin (), Order.end (), Previous);
    if (It == Order.end ()) return nullptr;
    Start = static_cast<size_t> (It - Order.begin ()) + 1;
  }
  for (size_t I = Start; I < Order.size (); I++)
    if (Order[I]->Handler == Handler) return Order[I];
  return nullptr;
}

VOID EFIAPI OpActivateWindow (WINDOW_HEADER *Window) { S ().Activate (Window); }

VOID EFIAPI OpSetFocus (WINDOW_HEADER *Window, VOID *Control, UINT8 Redraw) {
  S ().SetFocus (Window, Control);
  if (Redraw != 0 && S ().FindWindow (Window) != nullptr) S ().CountRedraw (Window);
}

VOID EFIAPI OpRedraw (VOID *Target) {
  if (Target == nullptr) return;
  ControlObject *Control = S ().FindControl (Target);
  if (S ().FindWindow (Target) == nullptr && Control == nullptr) return;
  if (Control != nullptr) {
    WindowBase::State::Scope Guard (S ());
    Control->OnRedraw ();
  }
  S ().CountRedraw (Target);
}

VOID EFIAPI OpUpdateItem (VOID *Item) {
  if (Item == nullptr || S ().FindControl (Item) == nullptr) return;
  S ().Updates[Item]++;
  if (S ().RedrawHook) S ().RedrawHook (Item);
}

VOID EFIAPI OpSetWindowText (VOID *Target, const CHAR8 *Text) {
  const char *Value = Text != nullptr ? reinterpret_cast<const char *> (Text) : "";
  if (WindowInfo *Info = S ().FindWindow (Target)) {
    std::string Cut = CutText (Value, sizeof (Info->Header->Title) - 1);
    std::memset (Info->Header->Title, 0, sizeof (Info->Header->Title));
    std::memcpy (Info->Header->Title, Cut.data (), Cut.size ());
  } else if (ControlObject *Object = S ().FindControl (Target)) {
    Object->SetText (Value);
  }
}

VOID EFIAPI OpSetWindowIcon (WINDOW_HEADER *Window, UINT8 IconId, BOOLEAN Redraw) {
  if (S ().FindWindow (Window) == nullptr) return;
  Window->IconId = IconId;
  if (Redraw) S ().CountRedraw (Window);
}

VOID EFIAPI OpSetStatusLayout (WINDOW_HEADER *Window, UINT8 Count) {
  if (WindowInfo *Info = S ().FindWindow (Window)) Info->StatusCount = Count;
}

VOID EFIAPI OpSetStatusText (WINDOW_HEADER *Window, UINT8 Field, const CHAR8 *Text) {
  if (WindowInfo *Info = S ().FindWindow (Window))
    Info->Status[Field] = Text != nullptr ? CutText (reinterpret_cast<const char *> (Text), 1023) : "";
}

UINTN EFIAPI OpMessageBox (UINT8 Style, const CHAR8 *Text, const CHAR8 *Caption, UINTN) {
  MessageBoxRecord Record;
  Record.Style = Style;
  if (Text != nullptr) Record.Text = reinterpret_cast<const char *> (Text);
  if (Caption != nullptr) Record.Caption = reinterpret_cast<const char *> (Caption);
  S ().Boxes.push_back (Record);
  if (!S ().Answerer) return 1;
  WindowBase::State::Scope Guard (S ());
  S ().OpenBoxes.push_back (Record);
  // A copy for the answerer: the open list may grow while it runs.
  UINTN Answer = S ().Answerer (MessageBoxRecord (Record));
  S ().OpenBoxes.pop_back ();
  return Answer;
}

UINTN EFIAPI OpSendMessage (VOID *Target, MESSAGE *Message) { return S ().Send (Target, Message); }

BOOLEAN EFIAPI OpPostMessage (VOID *Target, MESSAGE *Message) {
  if (Message == nullptr) return FALSE;
  return S ().Post (Target, *Message) ? TRUE : FALSE;
}

CONTROL *EFIAPI OpGetControl (WINDOW_HEADER *Window, UINT8 Id) {
  if (S ().FindAnyWindow (Window) == nullptr) return nullptr;
  for (CONTROL *Control = Window->FirstChild; Control != nullptr; Control = Control->NextSibling)
    if (Control->Id == Id) return Control;
  return nullptr;
}

BOOLEAN EFIAPI OpSetTimer (TIMER_CALLBACK Callback, VOID *Context) {
  if (Callback == nullptr) return FALSE;
  auto &Timers = S ().Timers;
  for (auto &T : Timers)
    if (T.Callback == Callback && T.Context == Context) return TRUE;
  if (Timers.size () >= kMaxTimers) return FALSE;
  Timers.push_back ({Callback, Context, S ().NextSerial++});
  return TRUE;
}

VOID EFIAPI OpKillTimer (TIMER_CALLBACK Callback, VOID *Context) {
  auto &Timers = S ().Timers;
  Timers.erase (std::remove_if (Timers.begin (), Timers.end (),
                                [&] (const WindowBase::State::Timer &T) {
                                  return T.Callback == Callback && T.Context == Context;
                                }),
                Timers.end ());
}

VOID EFIAPI OpCompleteDialog (WINDOW_HEADER *Dialog, VOID *Result, UINTN Size, UINTN) {
  if (S ().FindWindow (Dialog) == nullptr) return;
  DialogResult Record;
  Record.Dialog = Dialog;
  if (Result != nullptr && Size <= (1u << 20)) {
    const uint8_t *Bytes = static_cast<const uint8_t *> (Result);
    Record.Data.assign (Bytes, Bytes + Size);
  }
  S ().Results.push_back (Record);
  if (S ().DialogListener) {
    WindowBase::State::Scope Guard (S ());
    S ().DialogListener (S ().Results.back ());
  }
  MESSAGE Close {};
  Close.Type = MSG_SYSCOMMAND;
  Close.Word2 = SYSCMD_CLOSE;
  S ().Post (Dialog, Close);
}

BOOLEAN EFIAPI OpQueryExtendedMenus () { return S ().Extended ? TRUE : FALSE; }

PAINT_CONTEXT EFIAPI OpBeginPaint (WINDOW_HEADER *Window) {
  WindowInfo *Info = S ().FindWindow (Window);
  if (Info == nullptr) return nullptr;
  int32_t X = 0, Y = 0, W = 0, H = 0;
  S ().Origin (Window, X, Y);
  Info->Paint.OriginX = X;
  Info->Paint.OriginY = Y;
  S ().VisibleRect (Window, X, Y, W, H);
  Info->Paint.ClipX = X;
  Info->Paint.ClipY = Y;
  Info->Paint.ClipWidth = W;
  Info->Paint.ClipHeight = H;
  return &Info->Paint;
}

VOID EFIAPI OpFillRect (PAINT_CONTEXT Context, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height, UINT32 Colour) {
  GUI_DRIVER_PROTOCOL *Gui = S ().Gui.Table ();
  if (Context == nullptr || Width == 0 || Height == 0 || Gui->DrawLine == nullptr) return;
  UINT16 Right = static_cast<UINT16> (std::min<int> (X + Width - 1, 0xFFFF));
  for (int Row = Y; Row < Y + Height && Row <= 0xFFFF; Row++)
    Gui->DrawLine (Context, X, static_cast<UINT16> (Row), Right, static_cast<UINT16> (Row), Colour);
}

VOID EFIAPI OpDefaultPaint (WINDOW_HEADER *Window, MESSAGE *, VOID *) {
  auto *Context = static_cast<PaintContext *> (OpBeginPaint (Window));
  if (Context == nullptr) return;
  if (S ().PaintHook) {
    WindowBase::State::Scope Guard (S ());
    S ().PaintHook (Window, *Context);
    return;
  }
  OpFillRect (Context, static_cast<UINT16> (Context->OriginX), static_cast<UINT16> (Context->OriginY), Window->Width,
              Window->Height, 0xD4D0C8);
}

VOID EFIAPI OpGetClientRect (WINDOW_HEADER *Window, UINT16 *Rect) {
  if (Rect == nullptr) return;
  Rect[0] = Rect[1] = Rect[2] = Rect[3] = 0;
  if (S ().FindWindow (Window) == nullptr) return;
  int32_t X = 0, Y = 0;
  S ().Origin (Window, X, Y);
  UINT16 Caption = S ().IsDesktop (Window->Parent) ? S ().Table.CaptionHeight : 0;
  Rect[0] = static_cast<UINT16> (X);
  Rect[1] = static_cast<UINT16> (Y + Caption);
  Rect[2] = Window->Width;
  Rect[3] = Window->Height > Caption ? static_cast<UINT16> (Window->Height - Caption) : 0;
}

VOID EFIAPI OpGetOrigin (UINT16 *X, UINT16 *Y, VOID *Target) {
  int32_t Ox = 0, Oy = 0;
  S ().Origin (Target, Ox, Oy);
  if (X != nullptr) *X = static_cast<UINT16> (std::clamp (Ox, 0, 0xFFFF));
  if (Y != nullptr) *Y = static_cast<UINT16> (std::clamp (Oy, 0, 0xFFFF));
}

VOID EFIAPI OpGetWindowOrigin (UINT16 *X, UINT16 *Y, WINDOW_HEADER *Window) { OpGetOrigin (X, Y, Window); }
VOID EFIAPI OpGetControlOrigin (UINT16 *X, UINT16 *Y, VOID *Control) { OpGetOrigin (X, Y, Control); }

}  // namespace

// Operations defined with the menus and icons.
void FillMenuOperations (WINDOW_BASE_PROTOCOL &Table);
void FillIconOperations (WINDOW_BASE_PROTOCOL &Table);

// ------------------------------------------------------------ the class

WindowBase::WindowBase (FileDriver &Files, GuiDriver &Gui, uint32_t Version) : State_ (new State (Files, Gui)) {
  Current = State_.get ();
  WINDOW_BASE_PROTOCOL &T = State_->Table;
  T.Version = Version;
  T.CaptionHeight = static_cast<UINT16> (State_->LineHeight () + 8);
  T.Desktop = &State_->DesktopHeader;
  T.GuiDriver = Gui.Table ();
  T.CreateWindow = OpCreateWindow;
  T.DestroyWindow = OpDestroyWindow;
  T.FindNextWindow = OpFindNextWindow;
  T.ActivateWindow = OpActivateWindow;
  T.SetFocus = OpSetFocus;
  T.Redraw = OpRedraw;
  T.UpdateItem = OpUpdateItem;
  T.SetWindowText = OpSetWindowText;
  T.SetWindowIcon = OpSetWindowIcon;
  T.SetStatusLayout = OpSetStatusLayout;
  T.SetStatusText = OpSetStatusText;
  T.MessageBox = OpMessageBox;
  T.SendMessage = OpSendMessage;
  T.PostMessage = OpPostMessage;
  T.GetControl = OpGetControl;
  T.SetTimer = OpSetTimer;
  T.KillTimer = OpKillTimer;
  T.CompleteDialog = OpCompleteDialog;
  T.QueryExtendedMenus = OpQueryExtendedMenus;
  T.BeginPaint = OpBeginPaint;
  T.DefaultPaint = OpDefaultPaint;
  T.GetClientRect = OpGetClientRect;
  T.FillRect = OpFillRect;
  T.GetWindowOrigin = OpGetWindowOrigin;
  T.GetControlOrigin = OpGetControlOrigin;
  FillMenuOperations (T);
  FillIconOperations (T);
}

WindowBase::~WindowBase () {
  if (Current == State_.get ()) Current = nullptr;
}

WINDOW_BASE_PROTOCOL *WindowBase::Table () { return &State_->Table; }
WindowBase::State &WindowBase::Internal () { return *State_; }

size_t WindowBase::PumpMessages () { return State_->OpenBoxes.empty () ? State_->Pump () : 0; }

size_t WindowBase::RunTimerTick () {
  State &St = *State_;
  if (!St.OpenBoxes.empty ()) return 0;
  State::Scope Guard (St);
  std::vector<State::Timer> Snapshot = St.Timers;
  size_t Ran = 0;
  for (const State::Timer &T : Snapshot) {
    // A timer killed by an earlier callback of this tick does not run.
    bool Alive = std::any_of (St.Timers.begin (), St.Timers.end (),
                              [&] (const State::Timer &Live) { return Live.Serial == T.Serial; });
    if (!Alive) continue;
    T.Callback (T.Context);
    Ran++;
  }
  return Ran;
}

size_t WindowBase::TimerCount () const { return State_->Timers.size (); }

std::vector<WINDOW_HEADER *> WindowBase::TopLevelWindows () const { return State_->ZOrder; }
WINDOW_HEADER *WindowBase::ActiveWindow () const { return State_->Active; }

void WindowBase::DestroyAllWindows () {
  State &St = *State_;
  State::Scope Guard (St);
  St.ClosePopup (true);
  // Top-most first, as a user closing everything would.
  int Rounds = 0;
  while (!St.ZOrder.empty () && Rounds++ < 100000) St.Destroy (St.ZOrder.back ());
}

bool WindowBase::IsWindow (const void *Target) const { return State_->FindWindow (Target) != nullptr; }
bool WindowBase::IsControl (const void *Target) const { return State_->FindControl (Target) != nullptr; }

std::vector<WINDOW_HEADER *> WindowBase::ChildWindows (WINDOW_HEADER *Window) const {
  std::vector<WINDOW_HEADER *> Out;
  if (WindowInfo *Info = State_->FindWindow (Window))
    for (WINDOW_HEADER *Child = Info->FirstChildWindow; Child != nullptr; Child = Child->NextWindow)
      Out.push_back (Child);
  return Out;
}

std::vector<CONTROL *> WindowBase::Controls (WINDOW_HEADER *Window) const {
  std::vector<CONTROL *> Out;
  if (State_->FindWindow (Window) != nullptr)
    for (CONTROL *Control = Window->FirstChild; Control != nullptr; Control = Control->NextSibling)
      Out.push_back (Control);
  return Out;
}

std::string WindowBase::WindowText (const void *Target) const {
  if (WindowInfo *Info = State_->FindWindow (Target))
    return std::string (reinterpret_cast<const char *> (Info->Header->Title));
  if (ControlObject *Object = State_->FindControl (Target)) return Object->TextStore;
  return {};
}

size_t WindowBase::LiveWindowCount () const { return State_->Windows.size (); }

UINTN WindowBase::SendSysCommand (WINDOW_HEADER *Window, uint16_t Code) {
  MESSAGE Message {};
  Message.Type = MSG_SYSCOMMAND;
  Message.Word2 = Code;
  return State_->Send (Window, &Message);
}

UINTN WindowBase::ResizeWindow (WINDOW_HEADER *Window, uint16_t Width, uint16_t Height) {
  MESSAGE Message {};
  Message.Type = MSG_RESIZE;
  Message.Word2 = Width;
  Message.Word4 = Height;
  return State_->Send (Window, &Message);
}

UINTN WindowBase::SendKey (WINDOW_HEADER *Window, CHAR16 Ch, UINT16 Scan, UINT32 Shift) {
  State &St = *State_;
  if (St.FindWindow (Window) == nullptr) return 0;
  State::Scope Guard (St);
  MESSAGE Message {};
  Message.Type = MSG_KEY;
  Message.Code = 1;
  Message.Word2 = Ch;
  Message.Word4 = Scan;
  Message.Dword8 = Shift;
  // An open popup takes the keys.
  if (St.Shown != nullptr) return St.Send (St.Shown, &Message);
  bool Menu = (Shift & (KEY_STATE_LEFT_ALT | KEY_STATE_RIGHT_ALT)) != 0 || Scan == SCAN_CODE_HOTKEY;
  if (Menu) {
    for (WINDOW_HEADER *Child : ChildWindows (Window))
      if (St.FindWindow (Child) != nullptr && St.Send (Child, &Message) == 1) return 1;
    if (St.FindWindow (Window) == nullptr) return 1;
  }
  void *Focus = Window->FocusControl;
  if (ControlObject *Object = St.FindControl (Focus)) {
    if (Object->OnKey (Message)) return 1;
  } else if (!Menu && Focus != Window && St.FindWindow (Focus) != nullptr) {
    if (St.Send (Focus, &Message) == 1) return 1;
  }
  if (St.FindWindow (Window) == nullptr) return 1;
  return St.Send (Window, &Message);
}

const std::vector<MessageBoxRecord> &WindowBase::MessageBoxes () const { return State_->Boxes; }
void WindowBase::ClearMessageBoxes () { State_->Boxes.clear (); }
void WindowBase::SetMessageBoxAnswerer (std::function<UINTN (const MessageBoxRecord &)> Answerer) {
  State_->Answerer = std::move (Answerer);
}
const MessageBoxRecord *WindowBase::OpenMessageBox () const {
  return State_->OpenBoxes.empty () ? nullptr : &State_->OpenBoxes.back ();
}
void WindowBase::DismissMessageBox () {
  if (!State_->OpenBoxes.empty ()) State_->OpenBoxes.back ().Dismissed = true;
}

void WindowBase::ShowTooltip (const MENU_ITEM *Item, int X, int Y) {
  if (Item == nullptr || Item->Tooltip == nullptr || Item->Tooltip[0] == 0) {
    HideTooltip ();
    return;
  }
  if (State_->TooltipItem == Item) return;   // stays where it appeared
  State_->TooltipItem = Item, State_->TooltipX = X, State_->TooltipY = Y;
}
void WindowBase::HideTooltip () { State_->TooltipItem = nullptr; }
bool WindowBase::ShownTooltip (TooltipInfo &Out) const {
  const MENU_ITEM *Item = State_->TooltipItem;
  if (Item == nullptr || !IsControl (Item) || Item->Tooltip == nullptr) return false;
  Out.Text = reinterpret_cast<const char *> (Item->Tooltip);
  Out.X = State_->TooltipX, Out.Y = State_->TooltipY;
  return !Out.Text.empty ();
}

std::string WindowBase::StatusText (WINDOW_HEADER *Window, uint8_t Field) const {
  WindowInfo *Info = State_->FindWindow (Window);
  if (Info == nullptr) return {};
  auto It = Info->Status.find (Field);
  return It == Info->Status.end () ? std::string () : It->second;
}

uint8_t WindowBase::StatusLayout (WINDOW_HEADER *Window) const {
  WindowInfo *Info = State_->FindWindow (Window);
  return Info == nullptr ? 0 : Info->StatusCount;
}

uint8_t WindowBase::StatusFieldCount (WINDOW_HEADER *Window) const {
  WindowInfo *Info = State_->FindWindow (Window);
  if (Info == nullptr || Info->StatusCount == 0) return 0;
  // A layout names its last field too: fields written beyond the count (the
  // file manager writes field 2 of layout 2) are shown as well.
  uint8_t Count = Info->StatusCount;
  if (!Info->Status.empty () && Info->Status.rbegin ()->first >= Count)
    Count = static_cast<uint8_t> (Info->Status.rbegin ()->first == 255 ? 255 : Info->Status.rbegin ()->first + 1);
  return Count;
}

const std::vector<DialogResult> &WindowBase::DialogResults () const { return State_->Results; }
void WindowBase::SetDialogListener (std::function<void (const DialogResult &)> Listener) {
  State_->DialogListener = std::move (Listener);
}
void WindowBase::SetExtendedMenus (bool Extended) { State_->Extended = Extended; }

unsigned WindowBase::RedrawCount (const void *Target) const {
  auto It = State_->Redraws.find (Target);
  return It == State_->Redraws.end () ? 0 : It->second;
}

unsigned WindowBase::UpdateCount (const void *Target) const {
  auto It = State_->Updates.find (Target);
  return It == State_->Updates.end () ? 0 : It->second;
}

void WindowBase::SetRedrawHook (std::function<void (void *)> Hook) { State_->RedrawHook = std::move (Hook); }
void WindowBase::SetPaintHook (std::function<void (WINDOW_HEADER *, PaintContext &)> Hook) {
  State_->PaintHook = std::move (Hook);
}
void WindowBase::ScreenOrigin (const void *Target, int32_t &X, int32_t &Y) const { State_->Origin (Target, X, Y); }

}  // namespace env
