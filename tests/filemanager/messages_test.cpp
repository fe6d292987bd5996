// The main window's message handler: keys with and without list focus,
// notifications, clipboard state, volume notices and system commands.

#include <filesystem>

#include "env/jobio/jobio_driver.h"
#include "support/main_window_fixture.h"

namespace {

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
  // Delivers a key (byte 1 set) and tells the answer, then byte 1, the
  // character and the scan code the handler left in the record.
  std::string Press (CHAR16 Ch, UINT16 Scan, UINT32 Shift) {
    MESSAGE M{};
    M.Type = MSG_KEY;
    M.Code = 1;
    M.Word2 = Ch;
    M.Word4 = Scan;
    M.Dword8 = Shift;
    UINTN Answer = SendRecord (M);
    std::string Character = M.Word2 > 32 && M.Word2 < 127 ? std::string (1, char (M.Word2)) : std::to_string (M.Word2);
    return std::to_string (Answer) + " " + std::to_string (M.Code) + " " + Character + " " + std::to_string (M.Word4);
  }
  int V = -1;
  MAIN_WINDOW *W = nullptr;
};

TEST_F (MessagesTest, KeysActOnlyWhileListHasFocus) {
  auto Exists = [&] (const char *Name) { return std::filesystem::exists (VolumePath (V) / Name); };
  Select (W, {"gone.txt"});
  W->Header.FocusControl = nullptr;
  // Without the list's focus a key is neither acted on nor cleared.
  EXPECT_EQ (Press ('c', 0, KEY_STATE_LEFT_CONTROL), "0 1 c 0");
  EXPECT_FALSE (Clipboard ());
  Press (0, SCAN_CODE_DELETE, 0);
  EXPECT_TRUE (Exists ("gone.txt"));

  // With it every key is cleared, also Ctrl+Delete and Ctrl+X, which do nothing.
  Wb ()->SetFocus (&W->Header, W->List, 1);
  ASSERT_EQ (W->Header.FocusControl, W->List);
  EXPECT_EQ (Press (0, SCAN_CODE_DELETE, KEY_STATE_RIGHT_CONTROL), "0 0 0 0");
  EXPECT_TRUE (Exists ("gone.txt"));
  EXPECT_EQ (Press ('x', 0, KEY_STATE_LEFT_CONTROL), "0 0 0 0");
  EXPECT_FALSE (Clipboard ());
  EXPECT_EQ (Press ('C', 0, KEY_STATE_RIGHT_CONTROL), "0 0 0 0");
  EXPECT_TRUE (Clipboard ());
  EXPECT_EQ (Press (0, SCAN_CODE_DELETE, 0), "0 0 0 0");
  EXPECT_FALSE (Exists ("gone.txt"));
  EXPECT_TRUE (Exists ("keep.txt"));
  EXPECT_EQ (Names (W), std::vector<std::string> ({"keep.txt"}));

  // Ctrl+V pastes the copied file into another folder.
  MakeDir (V, "dest");
  Select (W, {"keep.txt"});
  Press ('c', 0, KEY_STATE_LEFT_CONTROL);
  Open (V, "\\dest");
  Wb ()->SetFocus (&W->Header, W->List, 1);
  Press ('v', 0, KEY_STATE_LEFT_CONTROL);
  EXPECT_TRUE (Exists ("dest/keep.txt"));
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
