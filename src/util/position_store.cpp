// The window position store.
//
// A rectangle is kept as the text "x,y,width,height" under the key "Position"
// of a section named after the window. Reading is strict: each field is read
// from at most 8 characters (spaces skipped, digits kept), the first three must
// end on a comma, and the rectangle must lie on the screen and be at least the
// size the caller asks for; anything else counts as nothing remembered. The
// settings service is optional: without it reads fail and writes do nothing.

#include "util/position_store.h"

#include "core/bindings.h"
#include "platform/library.h"

namespace {

constexpr UINTN FieldWindow = 8;   // characters examined per field
constexpr UINTN ValueSize = 32;    // the text of a saved rectangle

const CHAR8 *PositionKey () { return "Position"_a; }

// Reads one field at *Cursor: skips spaces, collects digits, stops at the
// first other character or after FieldWindow characters. Returns the number
// of digits; *Value receives their value.
UINTN ReadField (const CHAR8 *Text, UINTN *Cursor, UINT32 *Value) {
  UINTN Position = *Cursor;
  UINTN Digits = 0;
  UINT32 Number = 0;
  for (UINTN Examined = 0; Examined < FieldWindow; Examined++) {
    CHAR8 C = Text[Position];
    if (C == ' ') {
      Position++;
      continue;
    }
    if (C < '0' || C > '9') break;
    Number = Number * 10 + (UINT32) (C - '0');
    Digits++;
    Position++;
  }
  *Cursor = Position;
  *Value = Number;
  return Digits;
}

// Fields 1 to 3 must be followed by a comma, which is stepped over.
BOOLEAN TakeComma (const CHAR8 *Text, UINTN *Cursor) {
  if (Text[*Cursor] != ',') return FALSE;
  (*Cursor)++;
  return TRUE;
}

}  // namespace

BOOLEAN ParseWindowPosition (const CHAR8 *Text, UINT16 ScreenWidth, UINT16 ScreenHeight, UINT16 MinWidth,
                             UINT16 MinHeight, UINT16 *X, UINT16 *Y, UINT16 *Width, UINT16 *Height) {
  if (Text == nullptr) return FALSE;
  // Unsigned throughout, as the bounds are meant: a screen narrower than 30
  // pixels makes the first two bounds wrap rather than refuse everything.
  UINT32 MaxX = (UINT32) ScreenWidth - 30u;
  UINT32 MaxY = (UINT32) ScreenHeight - 30u;
  UINTN Cursor = 0;
  UINT32 Left, Top, Wide, High;

  ReadField (Text, &Cursor, &Left);
  if (!TakeComma (Text, &Cursor) || !(Left < MaxX)) return FALSE;
  ReadField (Text, &Cursor, &Top);
  if (!TakeComma (Text, &Cursor) || !(Top < MaxY)) return FALSE;
  ReadField (Text, &Cursor, &Wide);
  if (!TakeComma (Text, &Cursor)) return FALSE;
  if (ReadField (Text, &Cursor, &High) >= FieldWindow) return FALSE;

  if (Left + Wide > ScreenWidth || Wide < MinWidth) return FALSE;
  if (Top + High > ScreenHeight || High < MinHeight) return FALSE;
  *X = (UINT16) Left;
  *Y = (UINT16) Top;
  *Width = (UINT16) Wide;
  *Height = (UINT16) High;
  return TRUE;
}

BOOLEAN LoadWindowPosition (const CHAR8 *Name, UINT16 *X, UINT16 *Y, UINT16 *Width, UINT16 *Height) {
  if (gSettingsService == nullptr || Name == nullptr) return FALSE;
  CHAR8 *Value = nullptr;
  if (!gSettingsService->GetValue (Name, PositionKey (), &Value)) return FALSE;
  if (Value == nullptr) return FALSE;
  UINT16 Left, Top, Wide, High;
  BOOLEAN Ok = ParseWindowPosition (Value, gGuiDriver->ScreenWidth, gGuiDriver->ScreenHeight, *Width, *Height, &Left,
                                    &Top, &Wide, &High);
  FreePool (Value);
  if (!Ok) return FALSE;
  *X = Left;
  *Y = Top;
  *Width = Wide;
  *Height = High;
  return TRUE;
}

VOID SaveWindowPosition (const CHAR8 *Name, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height) {
  // The stored rectangle is compared without the minimum-size tests.
  UINT16 OldX = 0, OldY = 0, OldWidth = 0, OldHeight = 0;
  if (LoadWindowPosition (Name, &OldX, &OldY, &OldWidth, &OldHeight) && OldX == X && OldY == Y && OldWidth == Width &&
      OldHeight == Height) {
    return;
  }
  if (gSettingsService == nullptr || Name == nullptr) return;
  CHAR8 Text[ValueSize];
  ZeroMem (Text, sizeof (Text));
  AsciiSPrint (Text, sizeof (Text), "%d,%d,%d,%d"_a, (UINT32) X, (UINT32) Y, (UINT32) Width, (UINT32) Height);
  gSettingsService->SetValue (Name, PositionKey (), Text);
  gSettingsService->Commit ();
}
