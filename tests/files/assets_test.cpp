// The drawn icon files and the sample volume that the build writes.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "env/host/environment.h"
#include "env/images/ico_decoder.h"
#include "support/driver_fixture.h"

namespace fs = std::filesystem;

namespace {

const uint8_t *Bytes (const std::string &File) { return reinterpret_cast<const uint8_t *> (File.data ()); }

// The sizes of an ICO file's images, each decoded as the window base does.
std::vector<unsigned> IcoSizes (const fs::path &Path) {
  std::string File = ReadHostFile (Path);
  std::vector<unsigned> Sizes;
  for (size_t I = 0; I < env::IcoImageCount (Bytes (File), File.size ()); I++) {
    env::DecodedImage Image;
    EXPECT_TRUE (env::DecodeIcoImage (Bytes (File), File.size (), I, Image)) << Path << " " << I;
    EXPECT_EQ (Image.BitsPerPixel, 32) << Path;
    EXPECT_EQ (Image.Width, Image.Height) << Path;
    Sizes.push_back (Image.Width);
  }
  return Sizes;
}

}  // namespace

TEST (BuiltAssets, EveryIconHasA16And32PixelImage) {
  fs::path Icons = fs::path (env::DefaultSystemDir ()) / "efi" / "kivora" / "icon" / "surveyor";
  for (const char *Name : {"fileexe", "filedll", "filerar", "filedoc", "filefont", "fileini", "fileie", "filemp3",
                           "fileavi", "dir", "filebmp", "filehex", "fileunkn", "filetxt", "help", "icon"})
    EXPECT_EQ (IcoSizes (Icons / "files" / (std::string (Name) + ".ico")), (std::vector<unsigned> {16, 32})) << Name;
  for (const char *Name : {"goback", "copyfile", "paste", "delete"})
    EXPECT_EQ (IcoSizes (Icons / (std::string (Name) + ".ico")), (std::vector<unsigned> {16, 32})) << Name;
}

TEST (BuiltAssets, SampleVolumeHoldsEveryKindOfFile) {
  fs::path Sample = fs::path (env::DefaultSystemDir ()).parent_path () / "sample";
  ASSERT_TRUE (fs::is_directory (Sample));
  EXPECT_TRUE (fs::is_directory (Sample / "empty") && fs::is_empty (Sample / "empty"));
  EXPECT_TRUE (fs::is_regular_file (Sample / "readme.txt"));
  EXPECT_TRUE (fs::is_regular_file (Sample / "docs" / "guide" / "chapter1.txt"));
  EXPECT_GT (fs::file_size (Sample / "data" / "blob.bin"), 4096u);   // more than one hex page
  for (auto [Name, Bits] : {std::pair {"gradient24.bmp", 24}, std::pair {"sunset32.bmp", 32}}) {
    std::string Bmp = ReadHostFile (Sample / "pictures" / Name);
    env::DecodedImage Image;
    EXPECT_TRUE (env::DecodeBmp (Bytes (Bmp), Bmp.size (), Image)) << Name;
    EXPECT_EQ (Image.BitsPerPixel, Bits) << Name;
  }
  std::string Jpeg = ReadHostFile (Sample / "pictures" / "lake.jpg");
  ASSERT_GT (Jpeg.size (), 4u);
  EXPECT_EQ (Jpeg.substr (0, 2), "\xFF\xD8");
  EXPECT_EQ (Jpeg.substr (Jpeg.size () - 2), "\xFF\xD9");
  EXPECT_EQ (IcoSizes (Sample / "pictures" / "app.ico"), (std::vector<unsigned> {16, 32, 48}));
}
