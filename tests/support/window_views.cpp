#include "support/window_views.h"

std::vector<std::string> ShownMessageBoxes (env::WindowBase &Windows) {
  std::vector<std::string> Out;
  for (const env::MessageBoxRecord &Box : Windows.MessageBoxes ())
    Out.push_back (Box.Caption + ": " + Box.Text +
                   (Box.Style == 1 ? "" : " (style " + std::to_string (Box.Style) + ")"));
  return Out;
}

std::vector<std::string> OneMessageBox (const std::string &Caption, const std::string &Text) {
  return {Caption + ": " + Text};
}

MESSAGE MessageOf (UINT8 Type, UINT16 Word2, UINT8 Code) {
  MESSAGE Message{};
  Message.Type = Type;
  Message.Code = Code;
  Message.Word2 = Word2;
  return Message;
}

MESSAGE KeyMessage (CHAR16 Ch, UINT16 Scan, UINT32 Shift, UINT8 Byte1) {
  MESSAGE Key = MessageOf (MSG_KEY, Ch, Byte1);
  Key.Word4 = Scan;
  Key.Dword8 = Shift;
  return Key;
}

std::string HandlerAnswers (WINDOW_HEADER *Window, std::vector<MESSAGE> Messages) {
  std::string Out;
  for (MESSAGE &Message : Messages) Out += std::to_string (Window->Handler (Window, &Message));
  return Out;
}
