// Records of the window system that the driver reads and writes in place:
// the 272-byte window header at the start of every window object, and the
// records of controls, menu items and list rows. Everything else about them
// belongs to the window base and the control driver.
#pragma once

#include "platform/uefi.h"
#include "services/messages.h"

struct WINDOW_HEADER;
struct CONTROL;

typedef UINT8 (EFIAPI *MESSAGE_HANDLER) (WINDOW_HEADER *Window, MESSAGE *Message);
typedef VOID (EFIAPI *PAINT_CALLBACK) (WINDOW_HEADER *Window, MESSAGE *Message, VOID *Extra);
typedef VOID (EFIAPI *DESTROY_CALLBACK) (WINDOW_HEADER *Window);
// A command callback receives its menu item (or button) and the item's context window.
typedef VOID (EFIAPI *COMMAND_CALLBACK) (VOID *Item, WINDOW_HEADER *Context);
typedef VOID (EFIAPI *TIMER_CALLBACK) (VOID *Context);

// Window flags.
#define WINDOW_FLAG_ENABLED      0x00000001u  // items and controls: enabled (clear = greyed)
#define WINDOW_FLAG_FOCUSABLE    0x00000002u
#define WINDOW_FLAG_VISIBLE      0x00000020u
#define WINDOW_FLAG_HAS_ICON     0x00000080u  // the title bar shows the window icon
#define WINDOW_FLAG_RESIZABLE    0x00000008u
#define WINDOW_FLAG_DIALOG       0x00000800u
#define WINDOW_FLAG_MAXIMIZED    0x00000200u  // RestoreRect holds the rectangle before maximising

#define ICON_NONE 126   // icon ids below 126 are valid

typedef struct WINDOW_HEADER {
  UINT16 X;                    // 0   screen position of the window (child windows: relative to the parent)
  UINT16 Y;                    // 2
  UINT16 Height;               // 4
  UINT16 Width;                // 6
  UINT32 Flags;                // 8
  UINT8 NotifyEnabled;         // 12  control notifications are delivered while non-zero
  UINT8 FontFace;              // 13  font settings handed to PushFont
  UINT8 FontSize;              // 14
  UINT8 Kind;                  // 15  window base's own: WINDOW_KIND_*
  VOID *FocusControl;          // 16  control (or child window) with the keyboard focus
  UINT32 FontColor;            // 24
  UINT16 RestoreWidth;         // 28  RestoreRect: width, height, x, y
  UINT16 RestoreHeight;        // 30
  UINT16 RestoreX;             // 32
  UINT16 RestoreY;             // 34
  UINT32 Reserved0;            // 36
  WINDOW_HEADER *Parent;       // 40  parent window (the desktop for top-level windows)
  CONTROL *FirstChild;         // 48  first control of the window; controls chain through NextSibling
  WINDOW_HEADER *NextWindow;   // 56  next window with the same parent
  MESSAGE_HANDLER Handler;     // 64
  PAINT_CALLBACK Paint;        // 72
  DESTROY_CALLBACK Destroy;    // 80
  VOID *Owner;                 // 88  popups: the owner window or the menu header that opened them
  VOID *BaseState;             // 96  window base bookkeeping
  UINT64 ObjectSize;           // 104 size the window was created with, header included
  UINT8 IconId;                // 112 title-bar icon
  UINT8 Reserved1[7];          // 113
  CHAR8 Title[152];            // 120 window text, zero-terminated
} WINDOW_HEADER;

#define WINDOW_KIND_WINDOW  0
#define WINDOW_KIND_DESKTOP 1
#define WINDOW_KIND_POPUP   2

// Control kinds.
#define CONTROL_KIND_TEXT_FIELD 1
#define CONTROL_KIND_BUTTON     2
#define CONTROL_KIND_MENU_ITEM  3
#define CONTROL_KIND_LIST       4
#define CONTROL_KIND_TEXT_VIEW  5
#define CONTROL_KIND_COMBO      6
#define CONTROL_KIND_FILE_LIST  7
#define CONTROL_KIND_LOG_VIEW   8
#define CONTROL_KIND_EDIT       9   // in-place edit of a list row or tree item
#define CONTROL_KIND_SCROLL_BAR 10
#define CONTROL_KIND_CHILD_WINDOW 11 // stands for a child window in its parent's control chain

// Common head of every control record.
typedef struct CONTROL {
  UINT16 Id;                   // 0   control id (unique within its window)
  UINT8 Kind;                  // 2   CONTROL_KIND_*
  UINT8 State;                 // 3   menu items: 2 highlighted, 0 normal; buttons: 1 pressed
  UINT32 Flags;                // 4   WINDOW_FLAG_ENABLED and others
  UINT16 X;                    // 8   position and size relative to the parent window
  UINT16 Y;                    // 10
  UINT16 Width;                // 12
  UINT16 Height;               // 14
  CHAR8 *Text;                 // 16  control text (edit controls: the typed text), zero-terminated
  WINDOW_HEADER *Parent;       // 24
  CONTROL *NextSibling;        // 32  next control of the same window
  VOID *BaseState;             // 40  control driver bookkeeping
} CONTROL;

// Menu buttons of a menu header (CreateMenuButton).
typedef struct {
  CONTROL Control;             // 0
  UINT8 IconId;                // 48  ICON_NONE or more: a text item
  UINT8 Reserved[7];
  COMMAND_CALLBACK Command;    // 56  null for a menu title that only opens a popup
  WINDOW_HEADER *Popup;        // 64  popup it opens, or null
  VOID *Context;               // 72  handed to the command
  UINT64 ItemGroup;            // 80  group value of the header the item belongs to
  CHAR8 *Tooltip;              // 88
} MENU_ITEM;

// List view (CreateListView).
typedef struct {
  CONTROL Control;             // 0   Control.Id is the list's control id
  UINT16 RowCount;             // 48
  UINT16 CurrentRow;           // 50  the caller may set it
  UINT16 VisibleRows;          // 52
  UINT8 Option;                // 54  the hex viewer sets 1: fixed-pitch cells, no selection bar
  UINT8 Reserved;
  CONTROL *ScrollBar;          // 56  null when the list has none
  UINT16 TopRow;               // 64  first row shown
  UINT16 ColumnCount;          // 66
  UINT32 Reserved2;
} LIST_CONTROL;

// One row of a list view, as GetItem and GetNextSelected return it.
typedef struct {
  UINT8 Icon;                  // 0
  UINT8 IsDirectory;           // 1
  UINT8 Selected;              // 2
  UINT8 Reserved;
  UINT32 EntryWord;            // 4
  UINT64 Size;                 // 8
  CHAR8 Name[192];             // 16
} LIST_ITEM;

// Combo box (CreateComboBox).
typedef struct {
  CONTROL Control;
  UINT16 CurrentRow;           // 48  row chosen; both row fields hold the choice
  UINT16 ChosenRow;            // 50
  UINT16 ItemCount;            // 52
  UINT8 Open;                  // 54  the drop-down list is shown
  UINT8 Reserved;
} COMBO_BOX;

// Log view (CreateLogView).
typedef struct {
  CONTROL Control;
  UINT16 LineCount;            // 48
  UINT16 SelectedLine;         // 50  0xFFFF when none
  UINT16 TopLine;              // 52
  UINT16 Reserved;
} LOG_VIEW;

// File tree of the file dialog (CreateFileList).
typedef struct {
  CONTROL Control;
  UINT16 ItemCount;            // 48
  UINT16 SelectedItem;         // 50  0xFFFF when none
  UINT16 TopItem;              // 52
  UINT16 Reserved;
} FILE_LIST;

// One item of a file tree (GetFileListItem).
typedef struct {
  UINT8 Icon;
  UINT8 HasChildren;
  UINT8 Expanded;
  UINT8 Reserved;
  UINT16 Depth;                // 0 for the root item
  UINT16 Reserved2;
  CHAR8 Name[192];
  CHAR8 Path[512];             // full path of the item
} FILE_LIST_ITEM;

static_assert (sizeof (WINDOW_HEADER) == 272);
static_assert (offsetof (WINDOW_HEADER, Flags) == 8 && offsetof (WINDOW_HEADER, FocusControl) == 16);
static_assert (offsetof (WINDOW_HEADER, RestoreWidth) == 28 && offsetof (WINDOW_HEADER, Title) == 120);
static_assert (sizeof (CONTROL) == 48 && offsetof (CONTROL, Text) == 16);
static_assert (offsetof (LIST_CONTROL, RowCount) == 48 && offsetof (LIST_CONTROL, ScrollBar) == 56);
static_assert (offsetof (LIST_ITEM, EntryWord) == 4 && offsetof (LIST_ITEM, Size) == 8 && offsetof (LIST_ITEM, Name) == 16);
static_assert (offsetof (MENU_ITEM, Command) == 56 && offsetof (MENU_ITEM, ItemGroup) == 80);
