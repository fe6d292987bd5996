// The main window's message handler: keys with and without list focus,
// notifications, clipboard state, volume notices and system commands.

#include <filesystem>

#include "env/jobio/jobio_driver.h"
#include "support/main_window_fixture.h"

namespace {

// A notice with its 16-bit fields at bytes 2, 4, 6 and 10 (the control's id).
MESSAGE Notify (UINT8 Code, UINT16 Word2, UINT16 Word4, UINT16 Word6, UINT16 Control) {
  MESSAGE M = MessageOf (MSG_NOTIFY, Word2, Code);
  M.Word4 = Word4;
  M.Word6 = Word6;
  M.Word10 = Control;
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
    MESSAGE M = KeyMessage (Ch, Scan, Shift, 1);
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
  UINT16 List = W->List->Control.Id, Other = static_cast<UINT16> (List + 1);
  // A selection count from another control, or while notices are off: ignored.
  Send (W, Notify (NOTIFY_SELECTION, 0, 42, 0, Other));
  W->Header.NotifyEnabled = 0;
  Send (W, Notify (NOTIFY_SELECTION, 0, 42, 0, List));
  EXPECT_EQ (Status (W), "");
  W->Header.NotifyEnabled = 1;
  EXPECT_EQ (Send (W, Notify (NOTIFY_SELECTION, 0, 42, 0, List)), 0u);
  EXPECT_EQ (Status (W), Format (Res (nullptr, "files_total"), 42));

  // Search progress: only with 0 at byte 2; the numbers at 6 and 4 in that order.
  Send (W, Notify (NOTIFY_SEARCH, 1, 9, 3, 0));
  EXPECT_EQ (Status (W), Format (Res (nullptr, "files_total"), 42));
  Send (W, Notify (NOTIFY_SEARCH, 0, 9, 3, 0));
  EXPECT_EQ (Status (W), Format (Res (nullptr, "SearchStatus"), 3, 9));

  // Opening a row of another control does nothing.
  MakeDir (V, "sub");
  Open (V, "\\");
  Send (W, Notify (NOTIFY_OPEN_ROW, 0, 0, Row (W, "sub"), Other));
  EXPECT_EQ (Path (W), "\\");
  Send (W, Notify (NOTIFY_OPEN_ROW, 0, 0, Row (W, "sub"), List));
  EXPECT_EQ (Path (W), "\\sub");
}

TEST_F (MessagesTest, ClipboardStateTogglesPaste) {
  MENU_ITEM *Paste = Button (W, PasteCommand);
  MESSAGE Clip = MessageOf (MSG_CLIPBOARD, 0, 1);
  unsigned Redraws = Base ().RedrawCount (Paste);
  EXPECT_EQ (SendRecord (Clip), 0u);
  EXPECT_EQ (CommandStates (W), "gouplayer:00 copy file:11 paste file:11 delete:11 newdir:1");
  EXPECT_GT (Base ().RedrawCount (Paste), Redraws);
  Redraws = Base ().RedrawCount (Paste);
  Clip.Code = 0;
  SendRecord (Clip);
  EXPECT_EQ (CommandStates (W), "gouplayer:00 copy file:11 paste file:00 delete:11 newdir:1");
  EXPECT_EQ (Base ().RedrawCount (Paste), Redraws);
}

TEST_F (MessagesTest, AcceptedMessagesAndVolumeNotice) {
  EXPECT_EQ (HandlerAnswers (&W->Header, {MessageOf (MSG_ACTIVATE), MessageOf (MSG_SYSCOMMAND, 3), MessageOf (30, 3)}),
             "100");

  UINT16 Handle = W->DirHandle;
  ASSERT_NE (Handle, 0);
  MESSAGE M = MessageOf (MSG_VOLUME_NOTICE, 0, static_cast<UINT8> (V + 1));
  EXPECT_EQ (SendRecord (M), 0u);
  EXPECT_EQ (W->DirHandle, Handle);
  M.Code = static_cast<UINT8> (V);
  EXPECT_EQ (SendRecord (M), 1u);
  EXPECT_EQ (W->DirHandle, 0);
  Env ().files ().Table ()->CloseHandle (Handle);   // the notice forgets it without closing

  // A closed popup hands the keyboard back to the list.
  W->Header.FocusControl = nullptr;
  M = MessageOf (MSG_POPUP_CLOSED);
  EXPECT_EQ (SendRecord (M), 0u);
  EXPECT_EQ (W->Header.FocusControl, W->List);
}

}  // namespace
