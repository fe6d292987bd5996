// The menu header: a child window with a menu-title row, an optional toolbar
// row and an optional path row.
#pragma once

#include "platform/uefi.h"
#include "services/window_records.h"

#define MENU_HEADER_SIZE 296

// The header window: the window base's header, then these fields.
typedef struct {
  WINDOW_HEADER Header;        // 0
  CONTROL *PathField;          // 272 framed text field of the path row, null without one
  UINT64 ItemGroup;            // 280 group value of the first item added, 0 until then
  UINT8 HasPathRow;            // 288
  UINT8 HasToolbar;            // 289
  UINT8 SkipForward;           // 290 the next popup-closed notice is not forwarded to the owner
} MENU_HEADER;

static_assert (sizeof (MENU_HEADER) <= MENU_HEADER_SIZE);
static_assert (offsetof (MENU_HEADER, PathField) == 272 && offsetof (MENU_HEADER, ItemGroup) == 280);
static_assert (offsetof (MENU_HEADER, HasPathRow) == 288 && offsetof (MENU_HEADER, SkipForward) == 290);

WINDOW_HEADER *EFIAPI CreateMenuHeader (WINDOW_HEADER *Owner, BOOLEAN PathRow, BOOLEAN Toolbar);
MENU_ITEM *EFIAPI AddHeaderItem (WINDOW_HEADER *Header, UINT16 IconId, const CHAR8 *Text, COMMAND_CALLBACK Command,
                                 WINDOW_HEADER *Popup, VOID *Context);
VOID EFIAPI EnableHeaderItem (WINDOW_HEADER *Header, COMMAND_CALLBACK Command, BOOLEAN Enable, BOOLEAN Redraw);
// Shows a path in the header's path field.
VOID SetHeaderPath (WINDOW_HEADER *Header, const CHAR8 *Path, BOOLEAN Redraw);

// The header window's callbacks and the steps they are made of.
UINT8 EFIAPI HeaderHandler (WINDOW_HEADER *Header, MESSAGE *Message);
VOID EFIAPI PaintHeader (WINDOW_HEADER *Header, MESSAGE *Message, VOID *Extra);
VOID ResizeHeader (WINDOW_HEADER *Header);
BOOLEAN HeaderKey (WINDOW_HEADER *Header, MESSAGE *Message);
// Key 0 highlights the first menu title; a letter A to Z opens the title with that hotkey.
BOOLEAN ActivateByHotkey (WINDOW_HEADER *Header, CHAR8 Key);
// The letter written as "(X)" in the item's text, upper-cased; 0 when there is none.
CHAR8 ItemHotkey (const MENU_ITEM *Item);
VOID NextMenu (WINDOW_HEADER *Header);
VOID PreviousMenu (WINDOW_HEADER *Header);
VOID SwitchMenu (WINDOW_HEADER *Header, MENU_ITEM *From, MENU_ITEM *To);
VOID MarkOpenMenu (WINDOW_HEADER *Header, WINDOW_HEADER *Popup);
// Left edge for the next icon item (toolbar row) or text item (menu row).
UINT16 IconItemsWidth (WINDOW_HEADER *Header);
UINT16 TextItemsWidth (WINDOW_HEADER *Header);
