#include "menu_header/menu_header.h"

WINDOW_HEADER *EFIAPI CreateMenuHeader (WINDOW_HEADER *, BOOLEAN, BOOLEAN) { return nullptr; }
MENU_ITEM *EFIAPI AddHeaderItem (WINDOW_HEADER *, UINT16, const CHAR8 *, COMMAND_CALLBACK, WINDOW_HEADER *, VOID *) {
  return nullptr;
}
VOID EFIAPI EnableHeaderItem (WINDOW_HEADER *, COMMAND_CALLBACK, BOOLEAN, BOOLEAN) {}
VOID SetHeaderPath (WINDOW_HEADER *, const CHAR8 *, BOOLEAN) {}
