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
  Dir ("docs");
  Dir ("Apps");

  auto Root = List ("\\");
  EXPECT_EQ (Names (Root), (std::vector<std::string> {"Apps", "docs", "Zeta", "Alpha.TXT", "beta.txt", "gamma.bin"}));
  ASSERT_EQ (Root.size (), 6u);
  EXPECT_EQ (Root[0].IsDirectory, 1);
  EXPECT_EQ (Root[0].Size, 0u);
  EXPECT_EQ (Root[3].IsDirectory, 0);
  EXPECT_EQ (Root[4].Size, 5u);
  EXPECT_EQ (Root[5].Size, 70000u);
  struct stat Info;
  ASSERT_EQ (stat (Host ("gamma.bin").c_str (), &Info), 0);
  EXPECT_EQ (Root[5].EntryWord, static_cast<UINT32> (Info.st_ino));
  // The entry word stays the same for the same file across listings.
  EXPECT_EQ (List ("\\")[5].EntryWord, Root[5].EntryWord);
  for (auto &E : Root) EXPECT_EQ (E.Name[191], 0);
}

TEST_F (FileDriverTest, DotEntriesLeadEveryDirectoryButTheRoot) {
  MountMain ();
  Dir ("a/b");
  Write ("a/file", "data");

  auto Sub = List ("\\a");
  EXPECT_EQ (Names (Sub), (std::vector<std::string> {".", "..", "b", "file"}));
  ASSERT_EQ (Sub.size (), 4u);
  EXPECT_EQ (Sub[0].IsDirectory, 1);
  EXPECT_EQ (Sub[1].IsDirectory, 1);
  EXPECT_EQ (Sub[0].Size, 0u);
  struct stat Self, Parent;
  ASSERT_EQ (stat (Host ("a").c_str (), &Self), 0);
  ASSERT_EQ (stat (Host ().c_str (), &Parent), 0);
  EXPECT_EQ (Sub[0].EntryWord, static_cast<UINT32> (Self.st_ino));
  EXPECT_EQ (Sub[1].EntryWord, static_cast<UINT32> (Parent.st_ino));

  // An empty subdirectory still has its two dot entries; an empty root has none.
  EXPECT_EQ (Names (List ("\\a\\b")), (std::vector<std::string> {".", ".."}));
  TempFolder Empty;
  int Volume = Mount (Empty.Path ());
  UINT16 Handle = T->OpenDirectory (static_cast<UINT8> (Volume), A ("\\"));
  ASSERT_NE (Handle, 0);
  UINT16 Count = 7;
  EXPECT_EQ (T->ReadDirectory (Handle, &Count), nullptr);
  EXPECT_EQ (Count, 0);
  T->CloseHandle (Handle);
}

TEST_F (FileDriverTest, DatesAreTheModificationTimeInLocalTime) {
  MountMain ();
  Write ("old.txt", "x");
  Dir ("folder");
  SetModified ("old.txt", 1614834367);   // 2021-03-04 05:06:07 UTC
  SetModified ("folder", 1614834367);
  // The same instant in UTC, nine hours east of it and six hours west (the day before).
  struct Case {
    const char *Zone;
    int Day, Hour;
  } Cases[] = {{"UTC0", 4, 5}, {"XST-9", 4, 14}, {"YST6", 3, 23}};
  for (const Case &C : Cases) {
    SCOPED_TRACE (C.Zone);
    UseTimeZone (C.Zone);
    auto Entries = List ("\\");
    ASSERT_EQ (Entries.size (), 2u);
    for (auto &E : Entries) {
      EXPECT_EQ (E.Year, 2021);
      EXPECT_EQ (E.Month, 3);
      EXPECT_EQ (E.Day, C.Day);
      EXPECT_EQ (E.Hour, C.Hour);
      EXPECT_EQ (E.Minute, 6);
      EXPECT_EQ (E.Second, 7);
    }
  }
}

TEST_F (FileDriverTest, LargeFolderListsEveryEntryInOrder) {
  MountMain ();
  auto Name = [] (int I) {
    char Text[16];
    std::snprintf (Text, sizeof Text, "f%04d.dat", I);
    return std::string (Text);
  };
  for (int I = 1999; I >= 0; I--) std::ofstream (Host (Name (I))).put ('x');
  auto Entries = List ("\\");
  ASSERT_EQ (Entries.size (), 2000u);
  for (int I = 0; I < 2000; I++) {
    ASSERT_EQ (reinterpret_cast<const char *> (Entries[I].Name), Name (I));
    ASSERT_EQ (Entries[I].Size, 1u);
  }
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
