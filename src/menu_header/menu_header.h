// The menu header: a child window with a menu-title row, an optional toolbar
// row and an optional path row.
#pragma once

#include "platform/uefi.h"
#include "services/window_records.h"

WINDOW_HEADER *EFIAPI CreateMenuHeader (WINDOW_HEADER *Owner, BOOLEAN PathRow, BOOLEAN Toolbar);
MENU_ITEM *EFIAPI AddHeaderItem (WINDOW_HEADER *Header, UINT16 IconId, const CHAR8 *Text, COMMAND_CALLBACK Command,
                                 WINDOW_HEADER *Popup, VOID *Context);
VOID EFIAPI EnableHeaderItem (WINDOW_HEADER *Header, COMMAND_CALLBACK Command, BOOLEAN Enable, BOOLEAN Redraw);
// Shows a path in the header's path field.
VOID SetHeaderPath (WINDOW_HEADER *Header, const CHAR8 *Path, BOOLEAN Redraw);
