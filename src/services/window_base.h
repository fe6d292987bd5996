// The window base: windows, controls shared by all windows, messages, timers,
// popup menus, message boxes, icons and painting.
#pragma once

#include "platform/uefi.h"
#include "services/window_records.h"

struct GUI_DRIVER_PROTOCOL;

typedef VOID *PAINT_CONTEXT;   // drawing context from BeginPaint

typedef struct WINDOW_BASE_PROTOCOL {
  UINT32 Version;                          // 0  15
  UINT16 CaptionHeight;                    // 4  title-bar height
  UINT16 Reserved;                         // 6
  WINDOW_HEADER *Desktop;                  // 8  parent of top-level windows
  GUI_DRIVER_PROTOCOL *GuiDriver;          // 16

  // Windows and messages.
  WINDOW_HEADER *(EFIAPI *CreateWindow) (UINTN ObjectSize, WINDOW_HEADER *Parent, MESSAGE_HANDLER Handler,
                                         PAINT_CALLBACK Paint, DESTROY_CALLBACK Destroy,
                                         UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height);
  VOID (EFIAPI *DestroyWindow) (VOID *WindowOrPopup);
  WINDOW_HEADER *(EFIAPI *FindNextWindow) (WINDOW_HEADER *Previous, MESSAGE_HANDLER Handler);
  VOID (EFIAPI *ActivateWindow) (WINDOW_HEADER *Window);
  VOID (EFIAPI *SetFocus) (WINDOW_HEADER *Window, VOID *Control, UINT8 Redraw);
  VOID (EFIAPI *Redraw) (VOID *WindowOrControl);
  VOID (EFIAPI *UpdateItem) (VOID *Item);
  VOID (EFIAPI *SetWindowText) (VOID *WindowOrControl, const CHAR8 *Text);
  VOID (EFIAPI *SetWindowIcon) (WINDOW_HEADER *Window, UINT8 IconId, BOOLEAN Redraw);
  VOID (EFIAPI *SetStatusLayout) (WINDOW_HEADER *Window, UINT8 FieldCount);
  VOID (EFIAPI *SetStatusText) (WINDOW_HEADER *Window, UINT8 Field, const CHAR8 *Text);
  // Modal box with one button; returns when the user (or a test) answers it.
  UINTN (EFIAPI *MessageBox) (UINT8 Style, const CHAR8 *Text, const CHAR8 *Caption, UINTN Reserved);
  UINTN (EFIAPI *SendMessage) (VOID *Target, MESSAGE *Message);
  BOOLEAN (EFIAPI *PostMessage) (VOID *Target, MESSAGE *Message);
  CONTROL *(EFIAPI *GetControl) (WINDOW_HEADER *Window, UINT8 Id);
  BOOLEAN (EFIAPI *SetTimer) (TIMER_CALLBACK Callback, VOID *Context);
  VOID (EFIAPI *KillTimer) (TIMER_CALLBACK Callback, VOID *Context);
  // Ends a dialog with its result; the base hands the result to the application that opened it.
  VOID (EFIAPI *CompleteDialog) (WINDOW_HEADER *Dialog, VOID *Result, UINTN ResultSize, UINTN Reserved);
  BOOLEAN (EFIAPI *QueryExtendedMenus) (VOID);

  // Popup menus. Popups are windows of kind WINDOW_KIND_POPUP: X, Y, Width, Height
  // of their header are their position and size; Owner is the window or menu header.
  WINDOW_HEADER *(EFIAPI *CreatePopupMenu) (VOID *Owner, UINTN Reserved1, UINTN Reserved2, UINTN Reserved3);
  VOID (EFIAPI *AppendMenuItem) (WINDOW_HEADER *Popup, const CHAR8 *Text, COMMAND_CALLBACK Command,
                                 WINDOW_HEADER *Context, UINT8 IconId);
  VOID (EFIAPI *AppendMenuSeparator) (WINDOW_HEADER *Popup);
  VOID (EFIAPI *EnableMenuItem) (WINDOW_HEADER *Popup, COMMAND_CALLBACK Command, BOOLEAN Enable);
  VOID (EFIAPI *SetMenuItemContext) (WINDOW_HEADER *Popup, COMMAND_CALLBACK Command, WINDOW_HEADER *Context);
  VOID (EFIAPI *ShowPopupMenu) (WINDOW_HEADER *Popup);

  // Controls shared by all windows.
  MENU_ITEM *(EFIAPI *CreateMenuButton) (WINDOW_HEADER *Header, UINT16 X, UINT16 Width, COMMAND_CALLBACK Command,
                                         WINDOW_HEADER *Popup, VOID *Context, UINT8 IconId, const CHAR8 *Text);
  VOID (EFIAPI *SetTooltip) (MENU_ITEM *Item, const CHAR8 *Text, UINTN Reserved1, UINTN Reserved2);
  CONTROL *(EFIAPI *CreateTextField) (WINDOW_HEADER *Parent, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height,
                                      UINTN Reserved, BOOLEAN Framed, const CHAR8 *Text);
  CONTROL *(EFIAPI *CreateButton) (WINDOW_HEADER *Parent, UINT8 Id, const CHAR8 *Text, UINT16 X, UINT16 Y,
                                   UINT16 Width, UINT16 Height, UINTN Reserved);

  // Icons: ids 0 to 125; a file that cannot be loaded gives ICON_NONE or more.
  UINT8 (EFIAPI *LoadIcon) (const CHAR8 *Path, UINT8 Size, UINT8 Reserved);
  UINT8 (EFIAPI *LoadIconFromFile) (UINT8 Volume, const CHAR8 *Path, UINT8 Size, UINT8 ImageIndex);
  BOOLEAN (EFIAPI *GetIconSize) (UINT8 IconId, UINT16 *Width, UINT16 *Height);
  VOID (EFIAPI *DrawIcon) (PAINT_CONTEXT Context, UINT16 X, UINT16 Y, UINT8 IconId);
  VOID (EFIAPI *FreeIcon) (UINT8 IconId);

  // Painting. Coordinates given to the drawing operations are screen positions.
  PAINT_CONTEXT (EFIAPI *BeginPaint) (WINDOW_HEADER *Window);
  VOID (EFIAPI *DefaultPaint) (WINDOW_HEADER *Window, MESSAGE *Message, VOID *Extra);
  VOID (EFIAPI *GetClientRect) (WINDOW_HEADER *Window, UINT16 *Rect);   // x, y, width, height (screen)
  VOID (EFIAPI *FillRect) (PAINT_CONTEXT Context, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height, UINT32 Colour);
  VOID (EFIAPI *GetWindowOrigin) (UINT16 *X, UINT16 *Y, WINDOW_HEADER *Window);
  VOID (EFIAPI *GetControlOrigin) (UINT16 *X, UINT16 *Y, VOID *Control);
} WINDOW_BASE_PROTOCOL;

static_assert (offsetof (WINDOW_BASE_PROTOCOL, Version) == 0);
static_assert (offsetof (WINDOW_BASE_PROTOCOL, CaptionHeight) == 4);
static_assert (offsetof (WINDOW_BASE_PROTOCOL, Desktop) == 8);
static_assert (offsetof (WINDOW_BASE_PROTOCOL, GuiDriver) == 16);
