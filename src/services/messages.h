// Message records the window base delivers to message handlers. Every record
// is 16 bytes; byte 0 is the type, the rest depends on the type.
#pragma once

#include "platform/uefi.h"

// Message types.
#define MSG_COMMAND          1   // to a control or menu item: byte 1 = 2 opens its popup; byte 8 = 1 selects the popup's first item
#define MSG_KEY              2   // UINT16 at 2 character, UINT16 at 4 scan code, UINT32 at 8 shift state
#define MSG_MOUSE            3   // environment only: byte 1 button action, UINT16 at 2 x, at 4 y (window relative)
#define MSG_NOTIFY           4   // control notification: byte 1 code, fields by code
#define MSG_PAINT            5   // paint request, handed to the paint callback
#define MSG_ACTIVATE         6   // the window is being activated; accepting it lets the base bring it to the front
#define MSG_SET_FOCUS        7   // the window received the keyboard focus
#define MSG_KILL_FOCUS       8   // the window lost the keyboard focus
#define MSG_RESIZE           9   // UINT16 at 2 width, at 4 height; for controls also x at 8, y at 10
#define MSG_CLIPBOARD        11  // byte 1 non-zero when there is something to paste
#define MSG_SYSCOMMAND       14  // UINT16 at 2 command code
#define MSG_VOLUME_NOTICE    18  // byte 1 volume index
#define MSG_TREE_NOTIFY      19  // file tree: byte 1 code, UINT16 at 4 item, pointer at 8 to TREE_NOTIFY_DATA
#define MSG_POPUP_CLOSED     22  // a popup menu closed
#define MSG_POPUP_OPENED     23  // a popup menu opened; pointer at 8 to the popup

// System command codes (MSG_SYSCOMMAND).
#define SYSCMD_RESTORE       2   // maximise or restore
#define SYSCMD_CLOSE         4   // close the window
#define SYSCMD_BUTTON_FIRST  33  // buttons report their id as the command code

// List notification codes (MSG_NOTIFY).
#define NOTIFY_SELECTION     3   // 2 rows selected, 4 rows in list, 6 selected row, 10 control id
#define NOTIFY_OPEN_ROW      4   // 6 row, 10 control id
#define NOTIFY_CONTEXT       5   // 2 selected count, 10 control id, 12 x, 14 y (relative to the control)
#define NOTIFY_RENAME_DONE   6   // 2 row, 4 cancelled, 6 control id, pointer at 8 to the edit control
#define NOTIFY_NEW_ITEM_DONE 7   // as NOTIFY_RENAME_DONE
#define NOTIFY_SEARCH        8   // 2 zero, 4 and 6 the two numbers shown
#define NOTIFY_LOG_CONTEXT   13  // log view: 2 = 7, 4 x, 6 y, pointer at 8 the log view
#define NOTIFY_COMPARE       14  // comparison progress: 2 kind, UINT32 at 4 item count, pointer at 8 line

// Tree notification codes (MSG_TREE_NOTIFY).
#define TREE_ACTIVATED       2
#define TREE_CONTEXT         3
#define TREE_EXPANDED        5
#define TREE_SELECTED        6
#define TREE_NEW_ITEM_DONE   7
#define TREE_RENAME_DONE     8
#define TREE_REFUSE_EDIT     0xFFFFFFFEu

// UEFI scan codes used by the driver.
#define SCAN_CODE_UP        0x01
#define SCAN_CODE_DOWN      0x02
#define SCAN_CODE_RIGHT     0x03
#define SCAN_CODE_LEFT      0x04
#define SCAN_CODE_DELETE    0x08
#define SCAN_CODE_ESCAPE    0x17
#define SCAN_CODE_HOTKEY    0xFFFE   // with byte 1 set: the menu key alone (activates the first menu title)

// UEFI key-state encoding of the shift keys.
#define KEY_STATE_VALID         0x80000000u
#define KEY_STATE_RIGHT_SHIFT   0x01u
#define KEY_STATE_LEFT_SHIFT    0x02u
#define KEY_STATE_RIGHT_CONTROL 0x04u
#define KEY_STATE_LEFT_CONTROL  0x08u
#define KEY_STATE_RIGHT_ALT     0x10u
#define KEY_STATE_LEFT_ALT      0x20u

#pragma pack(push, 1)
typedef struct {
  UINT8 Type;
  UINT8 Code;
  UINT16 Word2;
  UINT16 Word4;
  union {
    UINT16 Word6;
    struct {
      UINT8 Byte6;
      UINT8 Byte7;
    };
  };
  union {
    UINT64 Value8;
    VOID *Pointer8;
    UINT32 Dword8;
    struct {
      UINT16 Word8;
      UINT16 Word10;
      UINT16 Word12;
      UINT16 Word14;
    };
  };
} MESSAGE;

// Data record of a tree notification (pointer at byte 8 of MSG_TREE_NOTIFY).
typedef struct {
  UINT32 Reserved;
  UINT32 Answer;        // the dialog writes TREE_REFUSE_EDIT to refuse an edit
  UINT16 X;             // context click, screen position
  UINT16 Y;
  CHAR8 *TypedName;     // text typed in an in-place edit
  CHAR8 *ItemPath;      // full path of the item (at byte 20)
} TREE_NOTIFY_DATA;
#pragma pack(pop)

static_assert (sizeof (MESSAGE) == 16);
static_assert (offsetof (MESSAGE, Word6) == 6 && offsetof (MESSAGE, Value8) == 8);
static_assert (offsetof (TREE_NOTIFY_DATA, Answer) == 4);
static_assert (offsetof (TREE_NOTIFY_DATA, X) == 8 && offsetof (TREE_NOTIFY_DATA, Y) == 10);
static_assert (offsetof (TREE_NOTIFY_DATA, TypedName) == 12);
static_assert (offsetof (TREE_NOTIFY_DATA, ItemPath) == 20 && sizeof (TREE_NOTIFY_DATA) == 28);
