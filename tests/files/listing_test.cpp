// Directory listings: order, records, the "." and ".." entries, dates, large
// folders, odd names, and the pool blocks handed to the caller.
#include <fstream>

#include "files/file_test_support.h"

namespace fs = std::filesystem;

TEST_F (FileDriverTest, ListsFoldersFirstThenFilesEachByName) {
  MountMain ();
  Write ("beta.txt", "12345");
  Write ("Alpha.TXT", "");
  Write ("gamma.bin", std::string (70000, 'x'));
  Dir ("Zeta");
  Dir ("docs/b");
  Write ("docs/file", "data");
  Dir ("Apps");

  auto Root = List ("\\");
  ASSERT_EQ (Rows (Root), (std::vector<std::string> {"Apps/ 0", "docs/ 0", "Zeta/ 0", "Alpha.TXT 0", "beta.txt 5",
                                                     "gamma.bin 70000"}));
  struct stat Info;
  ASSERT_EQ (stat (Host ("gamma.bin").c_str (), &Info), 0);
  EXPECT_EQ (Root[5].EntryWord, static_cast<UINT32> (Info.st_ino));
  // The entry word stays the same for the same file across listings.
  EXPECT_EQ (List ("\\")[5].EntryWord, Root[5].EntryWord);
  for (auto &E : Root) EXPECT_EQ (E.Name[191], 0);

  // "." and ".." lead every directory but the root, even an empty one.
  auto Sub = List ("\\docs");
  ASSERT_EQ (Rows (Sub), (std::vector<std::string> {"./ 0", "../ 0", "b/ 0", "file 4"}));
  struct stat Self, Parent;
  ASSERT_TRUE (stat (Host ("docs").c_str (), &Self) == 0 && stat (Host ().c_str (), &Parent) == 0);
  EXPECT_EQ (Sub[0].EntryWord, static_cast<UINT32> (Self.st_ino));
  EXPECT_EQ (Sub[1].EntryWord, static_cast<UINT32> (Parent.st_ino));
  EXPECT_EQ (Names (List ("\\docs\\b")), (std::vector<std::string> {".", ".."}));
  TempFolder Empty;
  Volume_ = Mount (Empty.Path ());
  bool Opened = false;
  EXPECT_TRUE (List ("\\", &Opened).empty ());
  EXPECT_TRUE (Opened);
}

TEST_F (FileDriverTest, DatesAreTheModificationTimeInLocalTime) {
  MountMain ();
  Write ("old.txt", "x");
  Dir ("folder");
  SetModified ("old.txt", 1614834367);   // 2021-03-04 05:06:07 UTC
  SetModified ("folder", 1614834367);
  // The same instant in UTC, nine hours east of it and six hours west (the day before).
  for (auto [Zone, Want] : {std::pair {"UTC0", "2021-3-4 5:6:7"}, {"XST-9", "2021-3-4 14:6:7"}, {"YST6", "2021-3-3 23:6:7"}}) {
    setenv ("TZ", Zone, 1);   // each test runs in its own process
    tzset ();
    std::string Stamps;
    for (auto &E : List ("\\"))
      Stamps += std::to_string (E.Year) + "-" + std::to_string (E.Month) + "-" + std::to_string (E.Day) + " " +
                std::to_string (E.Hour) + ":" + std::to_string (E.Minute) + ":" + std::to_string (E.Second) + ",";
    EXPECT_EQ (Stamps, std::string (Want) + "," + Want + ",") << Zone;
  }
}

TEST_F (FileDriverTest, LargeFolderListsEveryEntryInOrder) {
  MountMain ();
  auto Name = [] (int I) {
    char Text[16];
    std::snprintf (Text, sizeof Text, "f%04d.dat", I);
    return std::string (Text);
  };
  std::vector<std::string> Want;
  for (int I = 1999; I >= 0; I--) std::ofstream (Host (Name (I))).put ('x');
  for (int I = 0; I < 2000; I++) Want.push_back (Name (I) + " 1");
  EXPECT_EQ (Rows (List ("\\")), Want);
}

TEST_F (FileDriverTest, OddNamesPassThroughOrAreLeftOut) {
  MountMain ();
  const std::string Chinese = "\xE4\xB8\xAD\xE6\x96\x87.txt";   // non-ASCII bytes, kept as they are
  const std::string Latin = "caf\xC3\xA9";
  Write (Chinese, "abc");
  Dir (Latin);
  Write (std::string (191, 'n'), "fits");
  Write (std::string (192, 'm'), "too long");
  Write ("back\\slash", "unreachable");

  auto Entries = List ("\\");
  // Bytes above 0x7F sort after ASCII letters.
  EXPECT_EQ (Names (Entries), (std::vector<std::string> {Latin, std::string (191, 'n'), Chinese}));

  // A non-ASCII path opens and reads back.
  UINT16 Handle = T->OpenDirectory (static_cast<UINT8> (Volume_), A ("\\" + Chinese));
  ASSERT_NE (Handle, 0);
  char Buffer[8] = {};
  EXPECT_EQ (T->ReadAt (Handle, 0, Buffer, 8), 3u);
  EXPECT_STREQ (Buffer, "abc");
  T->CloseHandle (Handle);
  EXPECT_FALSE (List ("\\" + Latin).empty ());
}

TEST_F (FileDriverTest, ListingNeedsADirectoryHandle) {
  MountMain ();
  Write ("f.txt", "x");
  Dir ("gone");
  UINT16 File = T->OpenDirectory (static_cast<UINT8> (Volume_), A ("\\f.txt"));
  UINT16 Gone = T->OpenDirectory (static_cast<UINT8> (Volume_), A ("\\gone"));
  UINT16 Root = T->OpenDirectory (static_cast<UINT8> (Volume_), A ("\\"));
  ASSERT_NE (File, 0);
  ASSERT_NE (Gone, 0);
  // A directory removed after it was opened lists nothing either.
  fs::remove (Host ("gone"));
  for (UINT16 Handle : {UINT16 (0), UINT16 (1234), File, Gone}) {
    UINT16 Count = 9;
    EXPECT_EQ (T->ReadDirectory (Handle, &Count), nullptr) << Handle;
    EXPECT_EQ (Count, 0) << Handle;
  }
  EXPECT_EQ (T->ReadDirectory (Root, nullptr), nullptr);
  for (UINT16 Handle : {File, Gone, Root}) T->CloseHandle (Handle);
}
