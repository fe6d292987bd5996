// Screenshots: the GUI driver's framebuffer written as a PNG file (libpng).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace env {

class Siblings;
class GuiDriver;

// Writes the framebuffer of the GUI driver alive now; false when there is
// none or the file cannot be written.
bool SaveScreenshot (const std::string &Path);
bool SaveScreenshot (const GuiDriver &Gui, const std::string &Path);
// Paints the desktop (RenderDesktop) and then writes it.
bool RenderScreenshot (Siblings &Env, const std::string &Path);
// Writes 0x00RRGGBB pixels, rows top-down, as an RGB PNG.
bool WritePng (const std::string &Path, const uint32_t *Pixels, int Width, int Height);

}  // namespace env
