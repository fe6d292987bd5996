#include "env/host/screenshot.h"

#include <png.h>

#include "env/gui/gui_driver.h"
#include "env/render/renderer.h"

namespace env {

bool WritePng (const std::string &Path, const uint32_t *Pixels, int Width, int Height) {
  if (!Pixels || Width <= 0 || Height <= 0) return false;
  std::vector<uint8_t> Rgb (static_cast<size_t> (Width) * Height * 3);
  for (size_t I = 0; I < static_cast<size_t> (Width) * Height; I++) {
    Rgb[I * 3] = (Pixels[I] >> 16) & 0xFF;
    Rgb[I * 3 + 1] = (Pixels[I] >> 8) & 0xFF;
    Rgb[I * 3 + 2] = Pixels[I] & 0xFF;
  }
  png_image Image {};
  Image.version = PNG_IMAGE_VERSION;
  Image.width = Width;
  Image.height = Height;
  Image.format = PNG_FORMAT_RGB;
  bool Ok = png_image_write_to_file (&Image, Path.c_str (), 0, Rgb.data (), 0, nullptr) != 0;
  png_image_free (&Image);
  return Ok;
}

bool SaveScreenshot (const GuiDriver &Gui, const std::string &Path) {
  return WritePng (Path, Gui.Framebuffer (), Gui.Width (), Gui.Height ());
}

bool SaveScreenshot (const std::string &Path) {
  GuiDriver *Gui = CurrentGuiDriver ();
  return Gui && SaveScreenshot (*Gui, Path);
}

bool RenderScreenshot (Siblings &Env, const std::string &Path) {
  RenderDesktop (Env);
  return SaveScreenshot (Path);
}

}  // namespace env
