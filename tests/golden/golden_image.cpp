#include "golden/golden_image.h"

#include <png.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "env/host/screenshot.h"

namespace {

const std::filesystem::path kReferences = std::filesystem::path (__FILE__).parent_path () / "reference";

int Channel (uint32_t Pixel, int Shift) { return static_cast<int> ((Pixel >> Shift) & 0xFF); }

int PixelDifference (uint32_t A, uint32_t B) {
  int Largest = 0;
  for (int Shift : {16, 8, 0}) Largest = std::max (Largest, std::abs (Channel (A, Shift) - Channel (B, Shift)));
  return Largest;
}

}  // namespace

bool ReadPngImage (const std::string &Path, Image &Out, std::string &Error) {
  png_image Png {};
  Png.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file (&Png, Path.c_str ())) {
    Error = Path + ": " + Png.message;
    return false;
  }
  Png.format = PNG_FORMAT_RGB;
  std::vector<uint8_t> Bytes (PNG_IMAGE_SIZE (Png));
  if (!png_image_finish_read (&Png, nullptr, Bytes.data (), 0, nullptr)) {
    Error = Path + ": " + Png.message;
    png_image_free (&Png);
    return false;
  }
  Out.Width = static_cast<int> (Png.width), Out.Height = static_cast<int> (Png.height);
  Out.Pixels.resize (size_t (Out.Width) * Out.Height);
  for (size_t I = 0; I < Out.Pixels.size (); I++)
    Out.Pixels[I] = uint32_t (Bytes[3 * I]) << 16 | uint32_t (Bytes[3 * I + 1]) << 8 | Bytes[3 * I + 2];
  return true;
}

Comparison CompareImages (const Image &Expected, const Image &Actual, int ChannelTolerance) {
  Comparison C;
  C.SameSize = Expected.Width == Actual.Width && Expected.Height == Actual.Height &&
               Expected.Pixels.size () == Actual.Pixels.size ();
  if (!C.SameSize) return C;
  for (size_t I = 0; I < Actual.Pixels.size (); I++) {
    int D = PixelDifference (Expected.Pixels[I], Actual.Pixels[I]);
    C.Largest = std::max (C.Largest, D);
    if (D <= ChannelTolerance) continue;
    if (C.Differing++ == 0) C.FirstX = int (I % Actual.Width), C.FirstY = int (I / Actual.Width);
  }
  return C;
}

Image DifferenceImage (const Image &Expected, const Image &Actual, int ChannelTolerance) {
  Image D = Actual;
  if (Expected.Pixels.size () != Actual.Pixels.size ()) return D;
  for (size_t I = 0; I < D.Pixels.size (); I++) {
    if (PixelDifference (Expected.Pixels[I], Actual.Pixels[I]) > ChannelTolerance) {
      D.Pixels[I] = 0xFF0000;
      continue;
    }
    // Faded towards white, so that the red stands out.
    uint32_t P = Expected.Pixels[I], Faded = 0;
    for (int Shift : {16, 8, 0}) Faded |= uint32_t (255 - (255 - Channel (P, Shift)) / 4) << Shift;
    D.Pixels[I] = Faded;
  }
  return D;
}

std::string MatchGolden (const std::string &Name, const Image &Actual, const Tolerance &Allowed) {
  const std::filesystem::path Reference = kReferences / (Name + ".png");
  const char *Update = std::getenv ("SURVEYOR_UPDATE_GOLDEN");
  if (Update != nullptr && std::string (Update) == "1") {
    std::filesystem::create_directories (kReferences);
    if (!env::WritePng (Reference.string (), Actual.Pixels.data (), Actual.Width, Actual.Height))
      return "cannot write " + Reference.string ();
    return {};
  }
  Image Expected;
  std::string Error;
  if (!ReadPngImage (Reference.string (), Expected, Error))
    return Error + " (SURVEYOR_UPDATE_GOLDEN=1 writes the references)";
  Comparison C = CompareImages (Expected, Actual, Allowed.Channel);
  if (C.SameSize && C.Differing <= Allowed.Pixels) return {};

  // Written where the test runs (the build tree), for a person to look at.
  const std::filesystem::path Out = std::filesystem::current_path () / "golden-failures";
  std::filesystem::create_directories (Out);
  std::string ActualPath = (Out / (Name + ".actual.png")).string ();
  std::string DiffPath = (Out / (Name + ".difference.png")).string ();
  env::WritePng (ActualPath, Actual.Pixels.data (), Actual.Width, Actual.Height);
  std::ostringstream Message;
  if (!C.SameSize) {
    Message << Name << ": the screen is " << Actual.Width << "x" << Actual.Height << ", the reference "
            << Expected.Width << "x" << Expected.Height;
  } else {
    Image D = DifferenceImage (Expected, Actual, Allowed.Channel);
    env::WritePng (DiffPath, D.Pixels.data (), D.Width, D.Height);
    Message << Name << ": " << C.Differing << " pixels differ (allowed " << Allowed.Pixels << "), the first at "
            << C.FirstX << "," << C.FirstY << ", by up to " << C.Largest << "; difference in " << DiffPath;
  }
  Message << "; actual image in " << ActualPath;
  return Message.str ();
}
