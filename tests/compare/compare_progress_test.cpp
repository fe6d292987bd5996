// Progress messages of a job to a window: the message record, and line
// widths that follow the window's width with a floor of 33 characters.
#include <cstring>
#include <string>

#include "compare_support.h"

namespace {

struct Received {
  int Code, Kind;
  uint32_t ItemCount;
  bool HasLine;
  std::string Line;
};
std::vector<Received> gMessages;

UINT8 EFIAPI RecordingHandler (WINDOW_HEADER *, MESSAGE *Message) {
  if (Message->Type != MSG_NOTIFY) return 0;
  Received R {Message->Code, Message->Word2, 0, Message->Pointer8 != nullptr, ""};
  std::memcpy (&R.ItemCount, reinterpret_cast<const uint8_t *> (Message) + 4, 4);
  if (R.HasLine) R.Line = static_cast<const char *> (Message->Pointer8);
  gMessages.push_back (R);
  return 0;
}

class CompareProgressTest : public CompareTest {
 protected:
  WINDOW_HEADER *Listener (uint16_t Width) {
    gMessages.clear ();
    return Wb ()->CreateWindow (sizeof (WINDOW_HEADER), Wb ()->Desktop, RecordingHandler, nullptr, nullptr, 10, 10,
                                Width, 200);
  }
  COMPARE_JOB *StartTo (WINDOW_HEADER *Window, const std::string &Path) {
    return Surveyor ()->StartCompareJob (static_cast<UINT8> (Src), static_cast<UINT8> (Bak),
                                         reinterpret_cast<const CHAR8 *> (Path.c_str ()), Window);
  }
  void RunJob () {
    for (int I = 0; I < 1000 && !(gMessages.size () && gMessages.back ().Kind == 0xFFFF); I++)
      Env ().windows ().RunTimerTick ();
    ASSERT_EQ (gMessages.back ().Kind, 0xFFFF);
  }
};

TEST_F (CompareProgressTest, MessagesCarryKindCountAndLine) {
  Both ("dir1/sub/x", "1");
  Put (Src, "dir1/new.txt", "1");
  WINDOW_HEADER *Window = Listener (1000);   // (1000 - 10) / 4 = 247 characters
  ASSERT_NE (StartTo (Window, "\\dir1"), nullptr);
  RunJob ();
  // Notices of code 14 whose kinds follow the walk: root level, entry "sub",
  // its level through its states, back to the root, entry "new.txt", then the
  // differences; only the final one (kind 0xFFFF) has no line.
  std::vector<int> Kinds;
  for (const Received &R : gMessages) {
    Kinds.push_back (R.Kind);
    EXPECT_EQ (R.Code, 14);
    EXPECT_EQ (R.HasLine, R.Kind != 0xFFFF);
  }
  EXPECT_EQ (Kinds, (std::vector<int> {1, 2, 1, 1, 1, 1, 1, 2, 2, 1, 2, 3, 3, 0xFFFF}));
  EXPECT_EQ (gMessages[0].Line, "\\dir1" + TextWith ("file count", {"2"}));
  EXPECT_EQ (gMessages[1].Line, "sub" + Text ("folder mark"));
  EXPECT_EQ (gMessages[11].Line, "\\dir1" + Text ("heading suffix"));
  EXPECT_EQ (gMessages[12].Line, "  new.txt - " + Text ("file new"));
  EXPECT_EQ (gMessages.back ().ItemCount, 3u);
}

TEST_F (CompareProgressTest, LineWidthHasAFloorOf33Characters) {
  std::string Folder = "f123456789012345678901234567890";   // 31 characters
  std::string File = "a234567890123456789012345678901234567890.txt";
  Both (Folder + "/" + File, "1");
  Both (Folder + "/" + Folder + "/x", "1");
  WINDOW_HEADER *Narrow = Listener (100);   // (100 - 10) / 4 = 22, raised to 33
  ASSERT_NE (StartTo (Narrow, "\\" + Folder), nullptr);
  RunJob ();
  // Fitted to 20 bytes, a path or a folder's name keeps 19 (8 on each side of
  // "..."); fitted to 33, a file's name keeps 32. A file is reported twice.
  EXPECT_EQ (gMessages[0].Line, "\\f123456...34567890" + TextWith ("file count", {"2"}));
  std::vector<std::string> Entries;
  for (const Received &R : gMessages)
    if (R.Kind == 2) Entries.push_back (R.Line);
  std::string Fitted = "a2345678901234...01234567890.txt";
  EXPECT_EQ (Entries,
             (std::vector<std::string> {"f1234567...34567890" + Text ("folder mark"), "x", "x", Fitted, Fitted}));

  // A wide window is held to 255 characters: 241 bytes of the path.
  WINDOW_HEADER *Wide = Listener (1100);
  ASSERT_GE (Wide->Width, 1030);   // (1030 - 10) / 4 = 255
  std::string L (150, 'L'), M (150, 'M');
  Both (L + "/" + M + "/f", "1");
  ASSERT_NE (StartTo (Wide, "\\" + L + "\\" + M), nullptr);
  EXPECT_EQ (gMessages[0].Line, "\\" + L.substr (0, 118) + "..." + M.substr (0, 119) + TextWith ("file count", {"1"}));
  RunJob ();
}

}  // namespace
