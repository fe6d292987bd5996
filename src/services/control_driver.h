// The control driver: list views, text views, combo boxes, file trees and log views.
#pragma once

#include "platform/uefi.h"
#include "services/window_records.h"

typedef struct {
  UINT16 X;
  UINT16 Y;
  UINT16 Width;
  UINT16 Height;
} CONTROL_RECT;

typedef struct CONTROL_DRIVER_PROTOCOL {
  UINT32 Version;                          // 0  6
  UINT32 Reserved;

  // List view. Notifications (MSG_NOTIFY) go to the parent window.
  LIST_CONTROL *(EFIAPI *CreateListView) (WINDOW_HEADER *Parent, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height,
                                          UINT8 Style);
  VOID (EFIAPI *AddColumn) (LIST_CONTROL *List, const CHAR8 *Title, UINT16 Capacity, UINT16 Width,
                            BOOLEAN Sortable, BOOLEAN RightAligned);
  // The entry's first field is the row's name (column 0). Returns the new row, 0xFFFF when refused.
  UINT16 (EFIAPI *AddListItem) (LIST_CONTROL *List, UINT8 Icon, BOOLEAN IsDirectory, UINT32 EntryWord, UINT64 Size,
                                const VOID *Entry);
  VOID (EFIAPI *SetItemText) (LIST_CONTROL *List, UINT8 Column, UINT16 Row, const CHAR8 *Text);
  LIST_ITEM *(EFIAPI *GetItem) (LIST_CONTROL *List, UINT16 Row);
  LIST_ITEM *(EFIAPI *GetNextSelected) (LIST_CONTROL *List, UINT16 *Cursor);
  VOID (EFIAPI *ClearList) (LIST_CONTROL *List);
  VOID (EFIAPI *SetScrollPosition) (CONTROL *ScrollBar, UINT16 Row);
  // In-place edits; they end with NOTIFY_NEW_ITEM_DONE and NOTIFY_RENAME_DONE.
  VOID (EFIAPI *BeginNewItem) (LIST_CONTROL *List, UINT8 Icon, BOOLEAN IsDirectory, const CHAR8 *DefaultName);
  VOID (EFIAPI *BeginRename) (LIST_CONTROL *List, WINDOW_HEADER *Window);

  // Read-only text box that keeps its own copy of the text.
  CONTROL *(EFIAPI *CreateTextView) (WINDOW_HEADER *Parent, UINT8 Id, const CHAR8 *Text, UINT16 Length,
                                     const CONTROL_RECT *Rect);

  // Combo box; a change of choice sends NOTIFY_SELECTION with the combo's id.
  COMBO_BOX *(EFIAPI *CreateComboBox) (UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height, UINTN Reserved,
                                       WINDOW_HEADER *Parent);
  VOID (EFIAPI *AddComboItem) (COMBO_BOX *Combo, const CHAR8 *Text, UINTN Reserved);

  // File tree; notifications are MSG_TREE_NOTIFY.
  FILE_LIST *(EFIAPI *CreateFileList) (WINDOW_HEADER *Parent, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height,
                                       UINTN Reserved);
  // Entry: a directory entry record (name first) or the text "\" for the root item.
  // Returns the number of items the tree holds afterwards.
  UINTN (EFIAPI *AddFileListItem) (FILE_LIST *List, BOOLEAN HasChildren, UINT8 Icon, UINTN Reserved,
                                   const VOID *Entry, const CHAR8 *ParentPath);
  VOID (EFIAPI *ClearFileList) (FILE_LIST *List);
  VOID (EFIAPI *BeginFileListNewItem) (FILE_LIST *List, UINT8 Icon);
  VOID (EFIAPI *BeginFileListRename) (FILE_LIST *List, WINDOW_HEADER *Dialog);
  FILE_LIST_ITEM *(EFIAPI *GetFileListItem) (FILE_LIST *List, UINT16 Index);

  // Log view of the file comparison.
  LOG_VIEW *(EFIAPI *CreateLogView) (WINDOW_HEADER *Parent, UINT16 X, UINT16 Y, UINT16 Width, UINT16 Height,
                                     UINTN Reserved);
  VOID (EFIAPI *StartLogView) (LOG_VIEW *View, const CHAR8 *Path);
  VOID (EFIAPI *AppendLine) (LOG_VIEW *View, UINT16 Position, const CHAR8 *Text);
  VOID (EFIAPI *ShowLine) (LOG_VIEW *View, UINT16 Line);
} CONTROL_DRIVER_PROTOCOL;

static_assert (offsetof (CONTROL_DRIVER_PROTOCOL, Version) == 0);
