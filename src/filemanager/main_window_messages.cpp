// The main window's message handler: keys, list notifications, resizing,
// clipboard state, volume notices and system commands.
//
// Keys reach the file commands only while the list has the keyboard: Ctrl+C
// copies, Ctrl+V pastes, Delete (without Control) deletes. A key the list had
// is then cleared from the record so that nothing else acts on it.

#include "core/bindings.h"
#include "core/resource_format.h"
#include "core/strings.h"
#include "filemanager/listing.h"
#include "filemanager/main_window.h"
#include "filemanager/main_window_internal.h"
#include "fileops/context_menu.h"
#include "fileops/file_ops.h"
#include "menu_header/menu_header.h"

namespace {

constexpr UINT32 ControlKeys = KEY_STATE_RIGHT_CONTROL | KEY_STATE_LEFT_CONTROL;

VOID HandleKey (MAIN_WINDOW *Window, MESSAGE *Message) {
  if (Window->List == nullptr || Window->Header.FocusControl != Window->List) return;
  WINDOW_HEADER *Self = &Window->Header;
  if (Message->Dword8 & ControlKeys) {
    UINT16 Character = Message->Word2;
    if (Character == 'C' || Character == 'c') {
      CopyCommand (nullptr, Self);
    } else if (Character == 'V' || Character == 'v') {
      PasteCommand (nullptr, Self);
    }
  } else if (Message->Word4 == SCAN_CODE_DELETE) {
    DeleteCommand (nullptr, Self);
  }
  Message->Code = 0;
  Message->Word2 = 0;
  Message->Word4 = 0;
}

VOID HandleNotification (MAIN_WINDOW *Window, MESSAGE *Message) {
  if (Window->Header.NotifyEnabled == 0 || Window->List == nullptr) return;
  UINT16 ListId = Window->List->Control.Id;
  switch (Message->Code) {
    case NOTIFY_SELECTION:
      if (Message->Word10 != ListId) return;
      ShowSelection (Window, Message->Word2 != 0 ? Message->Word6 : Message->Word4, Message->Word2);
      return;
    case NOTIFY_OPEN_ROW:
      if (Message->Word10 != ListId) return;
      OpenItem (Window, Message->Word6);
      return;
    case NOTIFY_CONTEXT:
      if (Message->Word10 != ListId) return;
      ShowContextMenu (Window, Message->Word12, Message->Word14, Message->Word2);
      return;
    case NOTIFY_RENAME_DONE:
      if (Message->Word6 != ListId) return;
      RenameFinished (Window, Message);
      return;
    case NOTIFY_NEW_ITEM_DONE:
      if (Message->Word6 != ListId) return;
      NewDirFinished (Window, Message);
      return;
    case NOTIFY_SEARCH: {
      if (Message->Word2 != 0) return;
      CHAR8 Text[64];
      ZeroMem (Text, sizeof (Text));
      FormatResourceText (Text, sizeof (Text), GetString (nullptr, "SearchStatus"_a), (UINT32) Message->Word6,
                          (UINT32) Message->Word4);
      gWindowBase->SetStatusText (&Window->Header, 0, Text);
      return;
    }
    default:
      return;
  }
}

VOID HandleClipboardState (MAIN_WINDOW *Window, UINT8 HasContent) {
  if (HasContent != 0) {
    if (Window->ReadOnly) return;
    if (Window->FilePopup != nullptr) gWindowBase->EnableMenuItem (Window->FilePopup, PasteCommand, TRUE);
    EnableHeaderItem (Window->MenuBar, PasteCommand, TRUE, TRUE);
    return;
  }
  if (Window->FilePopup != nullptr) gWindowBase->EnableMenuItem (Window->FilePopup, PasteCommand, FALSE);
  EnableHeaderItem (Window->MenuBar, PasteCommand, FALSE, FALSE);
}

}  // namespace

UINT8 EFIAPI MainWindowHandler (WINDOW_HEADER *Self, MESSAGE *Message) {
  if (Self == nullptr || Message == nullptr) return 0;
  MAIN_WINDOW *Window = reinterpret_cast<MAIN_WINDOW *> (Self);
  switch (Message->Type) {
    case MSG_KEY:
      HandleKey (Window, Message);
      return 0;
    case MSG_NOTIFY:
      HandleNotification (Window, Message);
      return 0;
    case MSG_ACTIVATE:
      return 1;
    case MSG_SET_FOCUS:
      if (Window->MenuBar != nullptr) gWindowBase->Redraw (Window->MenuBar);
      return 0;
    case MSG_RESIZE:
      ResizeMainWindow (Window, Message->Word2, Message->Word4);
      return 0;
    case MSG_CLIPBOARD:
      HandleClipboardState (Window, Message->Code);
      return 0;
    case MSG_SYSCOMMAND:
      return (Message->Word2 == SYSCMD_RESTORE || Message->Word2 == SYSCMD_CLOSE) ? 1 : 0;
    case MSG_VOLUME_NOTICE:
      if (Message->Code != Window->VolumeIndex) return 0;
      Window->DirHandle = 0;
      return 1;
    case MSG_POPUP_CLOSED:
      if (Window->List != nullptr) gWindowBase->SetFocus (Self, Window->List, 1);
      return 0;
    default:
      return 0;
  }
}
