// Painting of the whole desktop into the GUI driver's framebuffer: the
// desktop background, then every top-level window from the bottom of the
// z-order to the top, then the popup menu that is open, the tooltip, and
// last the message box being shown (modal, over everything).
//
// A window is painted as a small window system would: its frame, title bar
// (icon, title, close box) and background are drawn by the window base's
// DefaultPaint (the renderer installs itself as the base's paint hook while it
// paints), which the window's own paint callback runs first; after the
// callback the renderer draws the window's controls in chain order, its
// status line and its child windows (each again by its own paint callback,
// then its controls).
//
// A text that does not fit its place shows as many whole characters as leave
// room for "…" after them; a button's label wider than the button is drawn
// condensed (each letter's ink, a pixel apart) when that fits. A label (an
// unframed text field) made 0 wide is as wide as its text. List views are
// drawn by the control driver's geometry (ControlDriver::Geometry).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "services/window_records.h"

namespace env {

class Siblings;

// Colours of the look.
namespace colours {
constexpr uint32_t Face = 0xD4D0C8;        // window and button face
constexpr uint32_t Light = 0xFFFFFF;
constexpr uint32_t Shadow = 0x808080;
constexpr uint32_t DarkShadow = 0x404040;
constexpr uint32_t Window = 0xFFFFFF;      // background of lists and fields
constexpr uint32_t Text = 0x000000;
constexpr uint32_t GreyText = 0x808080;
constexpr uint32_t Selection = 0x0A246A;
constexpr uint32_t SelectionText = 0xFFFFFF;
constexpr uint32_t ActiveCaption = 0x0A246A;
constexpr uint32_t InactiveCaption = 0x808080;
constexpr uint32_t CaptionText = 0xFFFFFF;
}  // namespace colours

// Paints everything; returns the number of windows painted.
size_t RenderDesktop (Siblings &Env);

// Layout of a top-level window's decoration (screen coordinates).
struct WindowLayout {
  int X = 0, Y = 0, Width = 0, Height = 0;
  int CaptionHeight = 0;
  int CloseX = 0, CloseY = 0, CloseWidth = 0, CloseHeight = 0;
  int StatusY = 0, StatusHeight = 0;   // StatusHeight 0: no status line
};
WindowLayout LayoutOf (Siblings &Env, WINDOW_HEADER *Window);

// Layout of a message box: centred on the screen, its text wrapped into
// lines, one "OK" button centred below them (screen coordinates).
struct MessageBoxLayout {
  int X = 0, Y = 0, Width = 0, Height = 0;
  int CaptionHeight = 0;
  int TextX = 0, TextY = 0;
  std::vector<std::string> Lines;     // GBK bytes, as the box was given them
  int ButtonX = 0, ButtonY = 0, ButtonWidth = 0, ButtonHeight = 0;
};
MessageBoxLayout LayoutOfMessageBox (Siblings &Env, const std::string &Text, const std::string &Caption);

}  // namespace env
