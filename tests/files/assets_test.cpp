// The drawn icon files and the sample volume that the build writes.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "env/host/environment.h"
#include "support/driver_fixture.h"

namespace fs = std::filesystem;

namespace {

uint32_t U16 (const std::string &B, size_t At) { return uint8_t (B[At]) | uint8_t (B[At + 1]) << 8; }
uint32_t U32 (const std::string &B, size_t At) { return U16 (B, At) | U16 (B, At + 2) << 16; }

// Checks the ICO directory and each image's BITMAPINFOHEADER; returns the sizes.
std::vector<uint32_t> IcoSizes (const fs::path &Path) {
  std::string B = ReadHostFile (Path);
  std::vector<uint32_t> Sizes;
  EXPECT_GE (B.size (), 6u) << Path;
  if (B.size () < 6 || U16 (B, 0) != 0 || U16 (B, 2) != 1) return {};
  for (uint32_t I = 0; I < U16 (B, 4); I++) {
    size_t Entry = 6 + 16 * I;
    uint32_t N = uint8_t (B[Entry]), Length = U32 (B, Entry + 8), Offset = U32 (B, Entry + 12);
    EXPECT_EQ (U16 (B, Entry + 6), 32u) << Path;
    EXPECT_LE (size_t (Offset) + Length, B.size ()) << Path;
    EXPECT_EQ (U32 (B, Offset), 40u) << Path;                       // BITMAPINFOHEADER
    EXPECT_EQ (U32 (B, Offset + 4), N) << Path;
    EXPECT_EQ (U32 (B, Offset + 8), 2 * N) << Path;                 // colour rows + mask rows
    uint32_t MaskStride = (N + 31) / 32 * 4;
    EXPECT_EQ (Length, 40 + N * N * 4 + MaskStride * N) << Path;
    Sizes.push_back (N);
  }
  return Sizes;
}

}  // namespace

TEST (BuiltAssets, EveryIconHasA16And32PixelImage) {
  fs::path Icons = fs::path (env::DefaultSystemDir ()) / "efi" / "kivora" / "icon" / "surveyor";
  for (const char *Name : {"fileexe", "filedll", "filerar", "filedoc", "filefont", "fileini", "fileie", "filemp3",
                           "fileavi", "dir", "filebmp", "filehex", "fileunkn", "filetxt", "help", "icon"})
    EXPECT_EQ (IcoSizes (Icons / "files" / (std::string (Name) + ".ico")), (std::vector<uint32_t> {16, 32})) << Name;
  for (const char *Name : {"goback", "copyfile", "paste", "delete"})
    EXPECT_EQ (IcoSizes (Icons / (std::string (Name) + ".ico")), (std::vector<uint32_t> {16, 32})) << Name;
}

TEST (BuiltAssets, SampleVolumeHoldsEveryKindOfFile) {
  fs::path Sample = fs::path (env::DefaultSystemDir ()).parent_path () / "sample";
  ASSERT_TRUE (fs::is_directory (Sample));
  EXPECT_TRUE (fs::is_directory (Sample / "empty") && fs::is_empty (Sample / "empty"));
  EXPECT_TRUE (fs::is_regular_file (Sample / "readme.txt"));
  EXPECT_TRUE (fs::is_regular_file (Sample / "docs" / "guide" / "chapter1.txt"));
  EXPECT_GT (fs::file_size (Sample / "data" / "blob.bin"), 4096u);   // more than one hex page
  for (auto [Name, Bits] : {std::pair {"gradient24.bmp", 24u}, std::pair {"sunset32.bmp", 32u}}) {
    std::string Bmp = ReadHostFile (Sample / "pictures" / Name);
    ASSERT_GT (Bmp.size (), 54u) << Name;
    EXPECT_EQ (Bmp.substr (0, 2), "BM");
    EXPECT_EQ (U32 (Bmp, 2), Bmp.size ());
    EXPECT_EQ (U16 (Bmp, 28), Bits) << Name;
  }
  std::string Jpeg = ReadHostFile (Sample / "pictures" / "lake.jpg");
  ASSERT_GT (Jpeg.size (), 4u);
  EXPECT_EQ (Jpeg.substr (0, 2), "\xFF\xD8");
  EXPECT_EQ (Jpeg.substr (Jpeg.size () - 2), "\xFF\xD9");
  EXPECT_EQ (IcoSizes (Sample / "pictures" / "app.ico"), (std::vector<uint32_t> {16, 32, 48}));
}
