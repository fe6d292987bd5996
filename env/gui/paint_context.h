// The drawing context handed out by the window base's BeginPaint (the
// PAINT_CONTEXT of the tables points to one). Everything is in screen
// coordinates: drawing is clipped to the clip rectangle, and the origin is the
// screen position of the window being painted (for reference; drawing
// operations take screen positions and do not add it).
#pragma once

#include <cstdint>

namespace env {

struct PaintContext {
  int32_t ClipX = 0, ClipY = 0, ClipWidth = 0, ClipHeight = 0;
  int32_t OriginX = 0, OriginY = 0;
};

}  // namespace env
