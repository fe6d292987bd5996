// Test support: compact views of windows, controls and message boxes, so that
// one assertion compares what several would.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "env/windows/window_base.h"

// X, Y, width and height of a window or a control.
using Rect = std::array<int, 4>;
template <typename Box> Rect RectOf (const Box *Of) { return {Of->X, Of->Y, Of->Width, Of->Height}; }

// Every message box shown so far as "caption: text", followed by its style
// when that is not 1 (the style of every box the driver shows).
std::vector<std::string> ShownMessageBoxes (env::WindowBase &Windows);
// What ShownMessageBoxes gives after one box of style 1 with Caption and Text.
std::vector<std::string> OneMessageBox (const std::string &Caption, const std::string &Text);

// A message record of Type with the 16-bit field at byte 2 (the command of a
// system command) set to Word2 and byte 1 set to Code.
MESSAGE MessageOf (UINT8 Type, UINT16 Word2 = 0, UINT8 Code = 0);
// A key record: the character, the scan code, the shift state and byte 1.
MESSAGE KeyMessage (CHAR16 Ch, UINT16 Scan, UINT32 Shift, UINT8 Byte1 = 0);
// What Window's handler answers to each of Messages in turn, one digit each
// ("1" when it takes the message).
std::string HandlerAnswers (WINDOW_HEADER *Window, std::vector<MESSAGE> Messages);
