// Inside of the window base, shared with the control driver: the host objects
// behind windows and controls, and the dispatch machinery (delivery, deferred
// release) that both use.
#pragma once

#include <array>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "env/gui/paint_context.h"
#include "env/images/bmp_decoder.h"
#include "env/windows/window_base.h"

namespace env {

// Control flag of the window base's own: a text field drawn with a frame.
constexpr UINT32 kControlFramed = 0x100;
constexpr uint16_t kFirstAutoId = 0x100;   // ids the base gives controls created without one
constexpr size_t kMaxTimers = 64;
constexpr size_t kMaxPumpDeliveries = 1000000;
constexpr uint8_t kIconTableFull = 127;

// Host object behind every control record; the record's BaseState points here.
struct ControlObject {
  virtual ~ControlObject () = default;
  CONTROL *Rec = nullptr;
  std::string TextStore;
  uint64_t Serial = 0;
  bool InChain = true;              // linked in the parent's FirstChild chain

  void SetText (const char *Text) {
    TextStore = Text != nullptr ? Text : "";
    Rec->Text = reinterpret_cast<CHAR8 *> (TextStore.data ());
  }
  // A message sent to the control; the default applies resize records.
  virtual UINTN OnMessage (MESSAGE &Message);
  // A key while the control has the focus; true when the key was used.
  virtual bool OnKey (MESSAGE &Message) { return false; }
  // The control goes away: release the sub-controls it owns.
  virtual void OnDestroy () {}
  // Which kind of object this is (ObjectAs checks it; there is no RTTI in firmware).
  virtual int TypeId () const { return 0; }
  // Position or size changed by a resize record.
  virtual void OnResized () {}
  // Its owner asked for it to be drawn again (after changing its record).
  virtual void OnRedraw () {}
};

template <class Record>
struct RecordControl : ControlObject {
  Record Data {};
  RecordControl () {
    Rec = reinterpret_cast<CONTROL *> (&Data);
    Rec->BaseState = this;
  }
};

// Menu items of popups and menu headers.
struct MenuItemObject : RecordControl<MENU_ITEM> {
  static constexpr int Type = 1;
  int TypeId () const override { return Type; }
  std::string TooltipStore;
  bool Separator = false;
  // MSG_COMMAND with byte 1 = 2 opens the item's popup (byte 8 = 1: first item highlighted).
  UINTN OnMessage (MESSAGE &Message) override;
};

// Text fields: framed ones take typed text when focused.
struct TextFieldObject : RecordControl<CONTROL> {
  static constexpr int Type = 2;
  int TypeId () const override { return Type; }
  bool OnKey (MESSAGE &Message) override;
};

// The object as its own type, or null when it is another kind.
template <class Object>
Object *ObjectAs (ControlObject *Any) {
  return Any != nullptr && Any->TypeId () == Object::Type ? static_cast<Object *> (Any) : nullptr;
}

struct WindowInfo {
  WINDOW_HEADER *Header = nullptr;
  uint64_t Serial = 0;
  bool Popup = false;
  bool Dying = false;
  WINDOW_HEADER *FirstChildWindow = nullptr;
  uint16_t NextAutoId = kFirstAutoId;
  uint8_t StatusCount = 0;
  std::map<uint8_t, std::string> Status;
  PaintContext Paint;
  // Popups.
  std::vector<std::unique_ptr<MenuItemObject>> Items;
  int Highlight = -1;
};

struct IconSlot {
  bool Used = false;
  bool Session = false;     // LoadIcon: kept for the session
  std::string Path;
  DecodedImage Image;
};

struct WindowBase::State {
  State (FileDriver &Files, GuiDriver &Gui);
  ~State ();

  FileDriver &Files;
  GuiDriver &Gui;
  WINDOW_BASE_PROTOCOL Table {};
  WINDOW_HEADER DesktopHeader {};

  std::map<const void *, std::unique_ptr<WindowInfo>> Windows;          // live windows and popups
  std::vector<WINDOW_HEADER *> Creation;                                 // windows in creation order
  std::vector<WINDOW_HEADER *> ZOrder;                                   // top-level, bottom to top
  WINDOW_HEADER *Active = nullptr;
  std::unordered_map<const void *, std::unique_ptr<ControlObject>> ControlMap;
  uint64_t NextSerial = 1;

  struct Posted {
    const void *Target;
    uint64_t Serial;
    MESSAGE Message;
  };
  std::deque<Posted> Queue;

  struct Timer {
    TIMER_CALLBACK Callback;
    VOID *Context;
    uint64_t Serial;
  };
  std::vector<Timer> Timers;

  // Deferred release: memory of windows and controls destroyed during a
  // dispatch is freed when the outermost dispatch returns.
  unsigned Depth = 0;
  std::vector<void *> PoolGraveyard;
  std::vector<std::unique_ptr<ControlObject>> ControlGraveyard;
  std::vector<std::unique_ptr<WindowInfo>> InfoGraveyard;

  WINDOW_HEADER *Shown = nullptr;

  std::vector<MessageBoxRecord> Boxes;
  std::function<UINTN (const MessageBoxRecord &)> Answerer;
  std::vector<MessageBoxRecord> OpenBoxes;       // shown now, innermost last
  const MENU_ITEM *TooltipItem = nullptr;
  int TooltipX = 0, TooltipY = 0;
  std::vector<DialogResult> Results;
  std::function<void (const DialogResult &)> DialogListener;
  bool Extended = true;

  std::array<IconSlot, ICON_NONE> Icons;
  std::map<std::pair<std::string, unsigned>, uint8_t> SessionIcons;

  std::unordered_map<const void *, unsigned> Redraws;
  std::unordered_map<const void *, unsigned> Updates;
  std::function<void (void *)> RedrawHook;
  std::function<void (WINDOW_HEADER *, PaintContext &)> PaintHook;

  // RAII guard of one dispatch level.
  struct Scope {
    explicit Scope (State &S) : S_ (S) { ++S_.Depth; }
    ~Scope () {
      if (--S_.Depth == 0) S_.Flush ();
    }
    State &S_;
  };
  void Flush ();
  void ReleaseBlock (void *Block);

  // Lookups (live objects only; dying windows are not found).
  WindowInfo *FindWindow (const void *Target) const;
  WindowInfo *FindAnyWindow (const void *Target) const;   // dying ones too
  ControlObject *FindControl (const void *Target) const;
  bool IsDesktop (const void *Target) const { return Target == &DesktopHeader; }

  // Delivery.
  UINTN Send (void *Target, MESSAGE *Message);
  UINTN Notify (CONTROL *Control, MESSAGE &Message);       // to the parent, while NotifyEnabled
  bool Post (void *Target, const MESSAGE &Message);
  size_t Pump ();
  void DefaultAction (WINDOW_HEADER *Window, const MESSAGE &Message);
  UINTN PopupMessage (WindowInfo &Popup, MESSAGE &Message);

  // Windows.
  WINDOW_HEADER *Create (UINTN Size, WINDOW_HEADER *Parent, MESSAGE_HANDLER Handler, PAINT_CALLBACK Paint,
                         DESTROY_CALLBACK Destroy, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height);
  void Destroy (void *Target);
  void Activate (WINDOW_HEADER *Window);
  void Raise (WINDOW_HEADER *Window);
  void SetFocus (WINDOW_HEADER *Window, VOID *Control);
  WINDOW_HEADER *TopLevelOf (WINDOW_HEADER *Window) const;
  void Origin (const void *Target, int32_t &X, int32_t &Y) const;
  // Screen rectangle of a window that can show: its own, cut by its parents'.
  void VisibleRect (const WINDOW_HEADER *Window, int32_t &X, int32_t &Y, int32_t &W, int32_t &H) const;

  // Controls.
  CONTROL *AddControl (WINDOW_HEADER *Parent, std::unique_ptr<ControlObject> Object, bool InChain, bool AutoId);
  void RemoveControl (CONTROL *Control);

  // Popups.
  WINDOW_HEADER *CreatePopup (VOID *Owner);
  void ShowPopup (WINDOW_HEADER *Popup);
  void ClosePopup (bool Notify);
  void LayoutPopup (WindowInfo &Popup);
  bool RunPopupItem (WindowInfo &Popup, MenuItemObject &Item);
  bool OpenItemPopup (MENU_ITEM *Item, bool SelectFirst);

  // Redraw bookkeeping.
  void CountRedraw (void *Target);

  // GUI metrics (defaults when the GUI driver gives none).
  uint16_t LineHeight () const;
  uint16_t CharWidth () const;
  uint16_t TextWidth (const char *Text) const;
  uint16_t ScreenWidth () const;
  uint16_t ScreenHeight () const;

  // Icons.
  uint8_t StoreIcon (DecodedImage &&Image, const std::string &Path, bool Session);
};

// The window base constructed last that is still alive (the tables' operations use it).
WindowBase::State *CurrentWindowBase ();

// Cuts Text to at most MaxBytes bytes without splitting a double-byte (GBK) character.
std::string CutText (const char *Text, size_t MaxBytes);

}  // namespace env
