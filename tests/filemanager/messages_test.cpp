// The main window's message handler: keys with and without list focus,
// notifications, clipboard state, volume notices and system commands.

#include <filesystem>

#include "env/jobio/jobio_driver.h"
#include "filemanager/listing.h"
#include "support/main_window_fixture.h"
#include "fileops/file_ops.h"

namespace {

MESSAGE Key (CHAR16 Ch, UINT16 Scan, UINT32 Shift) {
  MESSAGE M{};
  M.Type = MSG_KEY;
  M.Code = 1;
  M.Word2 = Ch;
  M.Word4 = Scan;
  M.Dword8 = Shift;
  return M;
}

MESSAGE Notify (UINT8 Code) {
  MESSAGE M{};
  M.Type = MSG_NOTIFY;
  M.Code = Code;
  return M;
}

class MessagesTest : public MainWindowTest {
 protected:
  void SetUp () override {
    MainWindowTest::SetUp ();
    V = MakeVolume ("a");
    WriteFile (V, "keep.txt", "k");
    WriteFile (V, "gone.txt", "g");
    W = Open (V);
    ASSERT_NE (W, nullptr);
  }
  bool Clipboard () { return Env ().jobio ().Table ()->HasClipboard () != 0; }
  UINTN SendRecord (MESSAGE &M) { return Wb ()->SendMessage (&W->Header, &M); }
  int V = -1;
  MAIN_WINDOW *W = nullptr;
};

TEST_F (MessagesTest, KeysActOnlyWhileListHasFocus) {
  Select (W, {"gone.txt"});
  W->Header.FocusControl = nullptr;
  MESSAGE CtrlC = Key ('c', 0, KEY_STATE_LEFT_CONTROL);
  EXPECT_EQ (SendRecord (CtrlC), 0u);
  EXPECT_FALSE (Clipboard ());
  EXPECT_EQ (CtrlC.Word2, 'c');   // not cleared
  EXPECT_EQ (CtrlC.Code, 1);
  MESSAGE Delete = Key (0, SCAN_CODE_DELETE, 0);
  SendRecord (Delete);
  EXPECT_TRUE (std::filesystem::exists (VolumePath (V) / "gone.txt"));

  Wb ()->SetFocus (&W->Header, W->List, 1);
  ASSERT_EQ (W->Header.FocusControl, W->List);
  MESSAGE CtrlDelete = Key (0, SCAN_CODE_DELETE, KEY_STATE_RIGHT_CONTROL);
  EXPECT_EQ (SendRecord (CtrlDelete), 0u);
  EXPECT_TRUE (std::filesystem::exists (VolumePath (V) / "gone.txt"));
  EXPECT_EQ (CtrlDelete.Word4, 0);   // the list had it: cleared anyway
  EXPECT_EQ (CtrlDelete.Code, 0);

  MESSAGE CtrlX = Key ('x', 0, KEY_STATE_LEFT_CONTROL);
  SendRecord (CtrlX);
  EXPECT_FALSE (Clipboard ());
  EXPECT_EQ (CtrlX.Word2, 0);

  CtrlC = Key ('C', 0, KEY_STATE_RIGHT_CONTROL);
  SendRecord (CtrlC);
  EXPECT_TRUE (Clipboard ());
  EXPECT_EQ (CtrlC.Word2, 0);

  Delete = Key (0, SCAN_CODE_DELETE, 0);
  SendRecord (Delete);
  EXPECT_FALSE (std::filesystem::exists (VolumePath (V) / "gone.txt"));
  EXPECT_TRUE (std::filesystem::exists (VolumePath (V) / "keep.txt"));
  EXPECT_EQ (Names (W), std::vector<std::string> ({"keep.txt"}));

  // Ctrl+V pastes the copied file into another folder.
  MakeDir (V, "dest");
  Select (W, {"keep.txt"});
  MESSAGE Copy = Key ('c', 0, KEY_STATE_LEFT_CONTROL);
  SendRecord (Copy);
  Open (V, "\\dest");
  Wb ()->SetFocus (&W->Header, W->List, 1);
  MESSAGE Paste = Key ('v', 0, KEY_STATE_LEFT_CONTROL);
  SendRecord (Paste);
  EXPECT_TRUE (std::filesystem::exists (VolumePath (V) / "dest" / "keep.txt"));
}

TEST_F (MessagesTest, NotificationsNeedTheListAndNotifyEnabled) {
  UINT16 ListId = W->List->Control.Id;
  MESSAGE Select = Notify (NOTIFY_SELECTION);
  Select.Word2 = 0;
  Select.Word4 = 42;
  Select.Word10 = static_cast<UINT16> (ListId + 1);   // another control
  SendRecord (Select);
  EXPECT_EQ (Status (W), "");
  Select.Word10 = ListId;
  W->Header.NotifyEnabled = 0;
  SendRecord (Select);
  EXPECT_EQ (Status (W), "");
  W->Header.NotifyEnabled = 1;
  EXPECT_EQ (SendRecord (Select), 0u);
  EXPECT_EQ (Status (W), Format (Res (nullptr, "files_total"), 42));

  // Search progress: only with 0 at byte 2; the numbers at 6 and 4 in that order.
  MESSAGE Search = Notify (NOTIFY_SEARCH);
  Search.Word2 = 1;
  Search.Word4 = 9;
  Search.Word6 = 3;
  SendRecord (Search);
  EXPECT_EQ (Status (W), Format (Res (nullptr, "files_total"), 42));
  Search.Word2 = 0;
  SendRecord (Search);
  EXPECT_EQ (Status (W), Format (Res (nullptr, "SearchStatus"), 3, 9));

  // Opening a row of another control does nothing.
  MakeDir (V, "sub");
  Open (V, "\\");
  MESSAGE OpenRow = Notify (NOTIFY_OPEN_ROW);
  OpenRow.Word6 = Row (W, "sub");
  OpenRow.Word10 = static_cast<UINT16> (ListId + 1);
  SendRecord (OpenRow);
  EXPECT_EQ (Path (W), "\\");
  OpenRow.Word10 = ListId;
  SendRecord (OpenRow);
  EXPECT_EQ (Path (W), "\\sub");
}

TEST_F (MessagesTest, ClipboardStateTogglesPaste) {
  MENU_ITEM *Paste = Button (W, PasteCommand);
  ASSERT_FALSE (Enabled (Paste));
  MESSAGE Clip{};
  Clip.Type = MSG_CLIPBOARD;
  Clip.Code = 1;
  unsigned Redraws = Base ().RedrawCount (Paste);
  EXPECT_EQ (SendRecord (Clip), 0u);
  EXPECT_TRUE (Enabled (Paste));
  EXPECT_TRUE (FileItem (W, "paste file").Enabled);
  EXPECT_GT (Base ().RedrawCount (Paste), Redraws);
  Redraws = Base ().RedrawCount (Paste);
  Clip.Code = 0;
  SendRecord (Clip);
  EXPECT_FALSE (Enabled (Paste));
  EXPECT_FALSE (FileItem (W, "paste file").Enabled);
  EXPECT_EQ (Base ().RedrawCount (Paste), Redraws);
}

TEST_F (MessagesTest, AcceptedMessagesAndVolumeNotice) {
  EXPECT_EQ (HandlerAnswers (&W->Header, {MessageOf (MSG_ACTIVATE), MessageOf (MSG_SYSCOMMAND, 3), MessageOf (30, 3)}),
             "100");

  UINT16 Handle = W->DirHandle;
  ASSERT_NE (Handle, 0);
  MESSAGE M{};
  M.Type = MSG_VOLUME_NOTICE;
  M.Code = static_cast<UINT8> (V + 1);
  EXPECT_EQ (SendRecord (M), 0u);
  EXPECT_EQ (W->DirHandle, Handle);
  M.Code = static_cast<UINT8> (V);
  EXPECT_EQ (SendRecord (M), 1u);
  EXPECT_EQ (W->DirHandle, 0);
  Env ().files ().Table ()->CloseHandle (Handle);   // the notice forgets it without closing

  // A closed popup hands the keyboard back to the list.
  W->Header.FocusControl = nullptr;
  M = {};
  M.Type = MSG_POPUP_CLOSED;
  EXPECT_EQ (SendRecord (M), 0u);
  EXPECT_EQ (W->Header.FocusControl, W->List);
}

}  // namespace
