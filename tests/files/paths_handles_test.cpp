// Path rules and confinement, handles, ReadAt, ReadFile and GetFileInfo.
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "files/file_test_support.h"

namespace fs = std::filesystem;

namespace {

// The contents of the file opened at Path, through a handle, or "<none>".
std::string ReadThrough (FILE_DRIVER_PROTOCOL *T, UINT8 Volume, const std::string &Path) {
  UINT16 Handle = T->OpenDirectory (Volume, reinterpret_cast<const CHAR8 *> (Path.c_str ()));
  if (Handle == 0) return "<none>";
  char Buffer[64] = {};
  UINT32 Got = T->ReadAt (Handle, 0, Buffer, sizeof (Buffer) - 1);
  T->CloseHandle (Handle);
  return std::string (Buffer, Got);
}

}  // namespace

TEST_F (FileDriverTest, PathsAreNormalisedAndConfined) {
  MountMain ();
  Write ("a/b/c.txt", "deep");
  Write ("top.txt", "top");
  TempFolder Outside;
  WriteHostFile (Outside.Path () / "secret.txt", "secret");
  UINT8 V = static_cast<UINT8> (Volume_);

  // Doubled separators, "." and ".." inside, no leading separator.
  for (const char *Path : {"\\a\\b\\c.txt", "\\\\a\\\\b\\c.txt", "\\a\\.\\b\\..\\b\\c.txt", "a\\b\\c.txt"})
    EXPECT_EQ (ReadThrough (T, V, Path), "deep") << Path;
  EXPECT_EQ (ReadThrough (T, V, "\\a\\..\\top.txt"), "top");
  EXPECT_NE (T->OpenDirectory (V, A ("\\a\\b\\")), 0);                 // trailing separator
  EXPECT_EQ (Files_->OpenHandleCount (), 1u);
  Files_->Unmount (Volume_);                                           // closes it
  EXPECT_EQ (Files_->OpenHandleCount (), 0u);
  MountMain ();
  V = static_cast<UINT8> (Volume_);

  // Leaving the volume is refused however it is spelled ("/" is no separator).
  const std::string Escape = "\\..\\" + Outside.Path ().filename ().string () + "\\secret.txt";
  for (const std::string &Path :
       std::vector<std::string> {Escape, "\\a\\..\\..\\top.txt", "..", "\\a/b\\c.txt", "\\a\\b/../../top.txt", "\\missing"})
    EXPECT_EQ (ReadThrough (T, V, Path), "<none>") << Path;
  EXPECT_EQ (T->OpenDirectory (V, nullptr) + T->OpenDirectory (24, A ("\\")) + T->OpenDirectory (V + 1, A ("\\")), 0);

  // 511 bytes are accepted, 512 refused.
  std::string Long = "\\top.txt";
  while (Long.size () < 511) Long.insert (0, "\\");
  EXPECT_EQ (ReadThrough (T, V, Long), "top");
  EXPECT_EQ (ReadThrough (T, V, "\\" + Long), "<none>");

  // Symbolic links: followed while they stay inside the volume; one that
  // leads out of it (or nowhere) is a small file holding its target text.
  fs::create_symlink (Outside.Path (), Host ("escape"));
  fs::create_symlink (Outside.Path () / "secret.txt", Host ("secret.txt"));
  fs::create_symlink ("a/b", Host ("inner"));
  fs::create_symlink ("nowhere", Host ("dangling"));
  fs::create_symlink ("../../..", Host ("a/up"));
  EXPECT_EQ (ReadThrough (T, V, "\\escape\\secret.txt") + ReadThrough (T, V, "\\a\\up\\top.txt") + "|" +
                 ReadThrough (T, V, "\\dangling") + "|" + ReadThrough (T, V, "\\inner\\c.txt"),
             "<none><none>|nowhere|deep");
  UINTN Size = 99;
  auto *Link = static_cast<char *> (T->ReadFile (V, A ("\\secret.txt"), &Size));
  ASSERT_NE (Link, nullptr);
  EXPECT_EQ (std::string (Link, Size), (Outside.Path () / "secret.txt").string ());
  Fw_.FreePool (Link);
  EXPECT_EQ (Names (List ("\\")), (std::vector<std::string> {"a", "inner", "dangling", "escape", "secret.txt", "top.txt"}));
}

TEST_F (FileDriverTest, HandlesAreLimitedAndReusedOnlyAfterClosing) {
  MountMain ();
  Dir ("d");
  UINT8 V = static_cast<UINT8> (Volume_);
  std::vector<UINT16> Open;
  for (size_t I = 0; I < env::kMaxOpenHandles; I++) {
    UINT16 Handle = T->OpenDirectory (V, A ("\\d"));
    ASSERT_TRUE (Handle != 0 && Handle <= 0x7FFF && std::count (Open.begin (), Open.end (), Handle) == 0) << I;
    Open.push_back (Handle);
  }
  EXPECT_EQ (T->OpenDirectory (V, A ("\\d")), 0);   // table full
  T->CloseHandle (Open[10]);
  UINT16 Again = T->OpenDirectory (V, A ("\\d"));
  EXPECT_TRUE (Again != 0 && Again != Open[10]);    // a closed number is not handed out at once
  Open[10] = Again;
  for (UINT16 Handle : Open) T->CloseHandle (Handle);
  EXPECT_EQ (Files_->OpenHandleCount (), 0u);
  for (UINT16 Harmless : {Open[0], UINT16 (0), UINT16 (0xFFFF)}) T->CloseHandle (Harmless);   // twice, and bad numbers

  // Handle numbers wrap within 1..0x7FFF.
  for (int I = 0; I < 0x8000 + 5; I++) {
    UINT16 Handle = T->OpenDirectory (V, A ("\\d"));
    ASSERT_TRUE (Handle >= 1 && Handle <= 0x7FFF) << Handle;
    T->CloseHandle (Handle);
  }
}

TEST_F (FileDriverTest, ReadAtAndReadFileStopAtTheEndAndReachBeyondFourGigabytes) {
  MountMain ();
  Write ("small.bin", "0123456789");
  UINT8 V = static_cast<UINT8> (Volume_);
  UINT16 Handle = T->OpenDirectory (V, A ("\\small.bin")), Folder = T->OpenDirectory (V, A ("\\"));
  char Buffer[32];
  std::memset (Buffer, '#', sizeof (Buffer));
  EXPECT_EQ (T->ReadAt (Handle, 4, Buffer, 32), 6u);
  EXPECT_EQ (std::string (Buffer, 7), "456789#");
  // Past the end, no buffer, no room, a directory (no bytes), a closed handle.
  for (UINT64 Offset : {10ull, 1ull << 40, ~0ull}) EXPECT_EQ (T->ReadAt (Handle, Offset, Buffer, 4), 0u) << Offset;
  EXPECT_EQ (T->ReadAt (Handle, 0, nullptr, 4) + T->ReadAt (Handle, 0, Buffer, 0) + T->ReadAt (Folder, 0, Buffer, 4), 0u);
  T->CloseHandle (Handle);
  T->CloseHandle (Folder);
  EXPECT_EQ (T->ReadAt (Handle, 0, Buffer, 4), 0u);

  // A sparse file of 4 GiB + 16 bytes with marks past the 32-bit boundary.
  const uint64_t Big = (4ull << 30) + 16;
  int Fd = ::open (Host ("big.img").c_str (), O_CREAT | O_WRONLY, 0644);
  ASSERT_GE (Fd, 0);
  ASSERT_EQ (::ftruncate (Fd, static_cast<off_t> (Big)), 0);
  ASSERT_EQ (::pwrite (Fd, "HIGH", 4, static_cast<off_t> ((4ull << 30) + 8)), 4);
  ASSERT_EQ (::pwrite (Fd, "LOW", 3, 8), 3);
  ::close (Fd);
  Handle = T->OpenDirectory (V, A ("\\big.img"));
  ASSERT_NE (Handle, 0);
  EXPECT_EQ (T->ReadAt (Handle, (4ull << 30) + 8, Buffer, 32), 8u);
  EXPECT_EQ (std::string (Buffer, 8), std::string ("HIGH\0\0\0\0", 8));
  EXPECT_EQ (T->ReadAt (Handle, 8, Buffer, 3), 3u);   // offset taken as 64 bits, not wrapped
  EXPECT_EQ (std::string (Buffer, 3), "LOW");
  FILE_INFO Info;
  ASSERT_TRUE (T->GetFileInfo (Handle, &Info));
  EXPECT_EQ (Info.Size, Big);
  T->CloseHandle (Handle);

  // ReadFile refuses such a file (over 256 MiB) without reading it.
  UINTN Size = 5;
  EXPECT_EQ (T->ReadFile (V, A ("\\big.img"), &Size), nullptr);
  EXPECT_EQ (Size, 0u);

  // Smaller files come whole in a pool block.
  std::string Bytes;
  for (int I = 0; I < 3000; I++) Bytes.push_back (static_cast<char> (I * 7));
  Write ("data.bin", Bytes);
  Write ("empty.txt", "");
  Dir ("folder");
  for (auto [Name, Want] : {std::pair {"\\data.bin", Bytes}, {"\\empty.txt", ""}}) {
    UINTN Size = 9;
    auto *Data = static_cast<char *> (T->ReadFile (V, A (Name), &Size));
    ASSERT_NE (Data, nullptr) << Name;
    EXPECT_EQ (std::string (Data, Size), Want);
    EXPECT_GE (Fw_.BlockSize (Data), Size);
    Fw_.FreePool (Data);
  }
  for (const char *NoFile : {"\\folder", "\\missing"}) EXPECT_EQ (T->ReadFile (V, A (NoFile), &Size), nullptr);
  EXPECT_EQ (T->ReadFile (V, A ("\\data.bin"), nullptr), nullptr);
}

TEST_F (FileDriverTest, FileInfoDescribesTheOpenObject) {
  MountMain ();
  Write ("f.txt", std::string (1234, 'z'));
  Dir ("sub");
  SetModified ("f.txt", 1700000000, 500000000);
  UINT8 V = static_cast<UINT8> (Volume_);
  struct stat Host_;
  ASSERT_EQ (stat (Host ("f.txt").c_str (), &Host_), 0);

  UINT16 File = T->OpenDirectory (V, A ("\\f.txt"));
  ASSERT_NE (File, 0);
  FILE_INFO Info;
  std::memset (&Info, 0xEE, sizeof (Info));
  ASSERT_TRUE (T->GetFileInfo (File, &Info));
  // Half a second is 128/256.
  EXPECT_EQ (std::vector<UINT64> ({Info.Size, Info.TimeStamp, Info.EntryWord, Info.IsDirectory}),
             std::vector<UINT64> ({1234u, (1700000000ull << 8) | 128, static_cast<UINT32> (Host_.st_ino), 0}));
  EXPECT_EQ (reinterpret_cast<UINT8 *> (&Info)[40], 0xEE);   // bytes 40..47 untouched

  FILE_INFO Again;
  ASSERT_TRUE (T->GetFileInfo (static_cast<UINT16> (File | FILE_HANDLE_INFO_BIT), &Again));
  EXPECT_EQ (std::memcmp (&Again, &Info, 40), 0);

  // The entry word agrees with the listing's.
  auto Root = List ("\\");
  ASSERT_EQ (Root.size (), 2u);
  EXPECT_EQ (Root[1].EntryWord, Info.EntryWord);
  T->CloseHandle (File);

  UINT16 Folder = T->OpenDirectory (V, A ("\\sub"));
  ASSERT_TRUE (T->GetFileInfo (static_cast<UINT16> (Folder | FILE_HANDLE_INFO_BIT), &Info));
  EXPECT_EQ (std::vector<UINT64> ({Info.Size, Info.EntryWord, Info.IsDirectory}),
             std::vector<UINT64> ({0, Root[0].EntryWord, 1}));
  T->CloseHandle (Folder);

  for (UINT16 Bad : {Folder, UINT16 (0), UINT16 (FILE_HANDLE_INFO_BIT)}) EXPECT_FALSE (T->GetFileInfo (Bad, &Info)) << Bad;
  UINT16 Root_ = T->OpenDirectory (V, A ("\\"));
  EXPECT_FALSE (T->GetFileInfo (Root_, nullptr));
  T->CloseHandle (Root_);
}
