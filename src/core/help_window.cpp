// The help window: one plain, resizable window holding a read-only text view
// (control id 3). The text comes from the caller's memory or from a help file
// on a volume; when the file cannot be read, a short localized "no help" text
// is shown instead. Only one help window exists at a time: asking again while
// it is open returns the open window unchanged.
#include "core/help_window.h"

#include "core/bindings.h"
#include "core/paint_forwarder.h"
#include "core/strings.h"
#include "filemanager/file_types.h"
#include "platform/library.h"
#include "util/string_utils.h"

namespace {

constexpr UINT8 kTextViewId = 3;
// The fallback text lives in a buffer of this size: 31 characters and the terminator.
constexpr UINT16 kFallbackSize = 32;

constexpr UINT16 kPreferredX = 100;
constexpr UINT16 kPreferredY = 100;
constexpr UINT16 kPreferredWidth = 400;
constexpr UINT16 kPreferredHeight = 300;
constexpr UINT16 kSmallestSide = 100;
constexpr UINT16 kFallbackX = 10;
constexpr UINT16 kFallbackY = 10;
constexpr UINT16 kFallbackWidth = 500;
constexpr UINT16 kFallbackHeight = 375;

// The text view fills the window below the title bar, 3 pixels in from the
// left, right and bottom edges. A window too small for that gives a view of
// size 0 rather than a wrapped-around size.
UINT16 ViewWidth (UINT16 WindowWidth) { return WindowWidth > 6 ? static_cast<UINT16> (WindowWidth - 6) : 0; }

UINT16 ViewHeight (UINT16 WindowHeight) {
  UINT32 Taken = static_cast<UINT32> (gWindowBase->CaptionHeight) + 3;
  return WindowHeight > Taken ? static_cast<UINT16> (WindowHeight - Taken) : 0;
}

UINT8 EFIAPI HelpWindowHandler (WINDOW_HEADER *Window, MESSAGE *Message) {
  CONTROL *View = gWindowBase->GetControl (Window, kTextViewId);
  switch (Message->Type) {
    case MSG_ACTIVATE:
      return 1;
    case MSG_SET_FOCUS:
    case MSG_KILL_FOCUS:
      if (View != nullptr) {
        gWindowBase->SendMessage (View, Message);
      }
      return 0;
    case MSG_RESIZE:
      if (View != nullptr) {
        UINT16 NewWidth = Message->Word2;
        UINT16 NewHeight = Message->Word4;
        Window->Width = NewWidth;
        Window->Height = NewHeight;
        MESSAGE Resize;
        ZeroMem (&Resize, sizeof (Resize));
        Resize.Type = MSG_RESIZE;
        Resize.Code = 1;
        Resize.Byte7 = 0;
        Resize.Word2 = ViewWidth (NewWidth);
        Resize.Word4 = ViewHeight (NewHeight);
        gWindowBase->SendMessage (View, &Resize);
      }
      return 0;
    case MSG_SYSCOMMAND:
      return (Message->Word2 == SYSCMD_RESTORE || Message->Word2 == SYSCMD_CLOSE) ? 1 : 0;
    default:
      return 0;
  }
}

// Closing the help window leaves nothing to clean up: the text view keeps its
// own copy of the text and goes with the window.
VOID EFIAPI HelpWindowDestroy (WINDOW_HEADER *Window) {}

// Copies the localized "no help" text into Buffer (kFallbackSize bytes,
// zero-filled). A longer text is cut to 31 bytes, never in the middle of a
// two-byte character.
VOID LoadFallbackText (CHAR8 *Buffer) {
  ZeroMem (Buffer, kFallbackSize);
  const CHAR8 *Text = GetString ("HelpWin"_a, "Tip_NoHelp"_a);
  UINT16 Length = 0;
  while (Text[Length] != 0 && Length < kFallbackSize - 1) {
    if (Text[Length] >= 0x81) {
      if (Text[Length + 1] == 0 || Length + 2 > kFallbackSize - 1) {
        break;
      }
      Buffer[Length] = Text[Length];
      Buffer[Length + 1] = Text[Length + 1];
      Length = static_cast<UINT16> (Length + 2);
    } else {
      Buffer[Length] = Text[Length];
      Length++;
    }
  }
}

// The preferred rectangle is used when it lies fully on the screen; otherwise
// a fixed larger one at the top left.
VOID ChooseGeometry (UINT16 *X, UINT16 *Y, UINT16 *Width, UINT16 *Height) {
  UINT32 ScreenWidth = gGuiDriver->ScreenWidth;
  UINT32 ScreenHeight = gGuiDriver->ScreenHeight;
  UINT32 PX = kPreferredX, PY = kPreferredY, PW = kPreferredWidth, PH = kPreferredHeight;
  BOOLEAN Fits = PX + PW < ScreenWidth && PY + PH < ScreenHeight && PW < ScreenWidth && PH < ScreenHeight &&
                 PX < ScreenWidth && PY < ScreenHeight && PW >= kSmallestSide && PH >= kSmallestSide;
  if (Fits) {
    *X = kPreferredX;
    *Y = kPreferredY;
    *Width = kPreferredWidth;
    *Height = kPreferredHeight;
  } else {
    *X = kFallbackX;
    *Y = kFallbackY;
    *Width = kFallbackWidth;
    *Height = kFallbackHeight;
  }
}

}  // namespace

WINDOW_HEADER *EFIAPI ShowHelpWindow (UINT8 Volume, const CHAR8 *Source, UINT16 Length, const CHAR8 *Title) {
  WINDOW_HEADER *Existing = gWindowBase->FindNextWindow (nullptr, HelpWindowHandler);
  if (Existing != nullptr) {
    return Existing;
  }

  // The text: the caller's bytes, the help file, or the fallback.
  CHAR8 Fallback[kFallbackSize];
  const CHAR8 *Text = nullptr;
  UINT16 TextLength = 0;
  VOID *FileBuffer = nullptr;
  if (Length != 0 && Source != nullptr) {
    Text = Source;
    TextLength = Length;
  } else if (Length == 0 && Source != nullptr) {
    UINTN Size = 0;
    FileBuffer = gFileDriver->ReadFile (Volume, Source, &Size);
    if (FileBuffer != nullptr) {
      Text = static_cast<const CHAR8 *> (FileBuffer);
      // The text view takes a 16-bit length: only the low 16 bits of the size count.
      TextLength = static_cast<UINT16> (Size & 0xFFFF);
    }
  }
  if (Text == nullptr) {
    LoadFallbackText (Fallback);
    Text = Fallback;
    TextLength = static_cast<UINT16> (StringLength (Fallback) + 1);
  }

  UINT16 X, Y, Width, Height;
  ChooseGeometry (&X, &Y, &Width, &Height);
  WINDOW_HEADER *Window = gWindowBase->CreateWindow (sizeof (WINDOW_HEADER), gWindowBase->Desktop, HelpWindowHandler,
                                                     PaintForwarder, HelpWindowDestroy, X, Y, Width, Height);
  if (Window == nullptr) {
    if (FileBuffer != nullptr) {
      FreePool (FileBuffer);
    }
    return nullptr;
  }
  gWindowBase->SetWindowText (Window, Title != nullptr ? Title : ""_a);

  CONTROL_RECT Rect;
  Rect.X = 3;
  Rect.Y = gWindowBase->CaptionHeight;
  Rect.Width = ViewWidth (Width);
  Rect.Height = ViewHeight (Height);
  CONTROL *View = gControlDriver->CreateTextView (Window, kTextViewId, Text, TextLength, &Rect);
  if (FileBuffer != nullptr) {
    FreePool (FileBuffer);
  }

  Window->Flags |= WINDOW_FLAG_HAS_ICON;
  gWindowBase->SetWindowIcon (Window, gFileIcons.Help, TRUE);
  if (View != nullptr) {
    Window->FocusControl = View;
  }
  return Window;
}
