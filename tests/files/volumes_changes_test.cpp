// Volume records, the service registry, and the operations that change files:
// CreateDirectory, RenamePath, FlushVolume, with write protection.
#include <cstring>

#include "files/file_test_support.h"

namespace fs = std::filesystem;

TEST_F (FileDriverTest, MountFillsTheVolumeRecordsAndServicesAreFoundByGuid) {
  EXPECT_EQ (T->Version, 9u);
  env::VolumeSpec Spec;
  Spec.Folder = Main_.Path ().string ();
  Spec.Flags = VOLUME_FLAG_COMPARE_1;
  Spec.Kind = VOLUME_KIND_REOPEN;
  Spec.FileSystemType = 2;
  Spec.Label = "C:";
  int First = env::MountFolder (*Files_, Spec);
  ASSERT_EQ (First, 0);
  const VOLUME_RECORD &R = T->Volumes[0];
  EXPECT_EQ (std::vector<int> ({R.InUse != 0, R.Offered != 0, R.Kind, R.Flags, R.FileSystemType}),
             std::vector<int> ({1, 1, 3, 0x81, 2}));
  EXPECT_STREQ (reinterpret_cast<const char *> (R.Label), "C:");

  // Without a label the folder's last component names the volume.
  TempFolder Other;
  fs::create_directories (Other.Path () / "Backup Disk");
  int Second = Mount (Other.Path () / "Backup Disk" / "");
  ASSERT_EQ (Second, 1);
  EXPECT_STREQ (reinterpret_cast<const char *> (T->Volumes[1].Label), "Backup Disk");

  EXPECT_EQ (Mount (Main_.Path () / "no such folder"), -1);
  WriteHostFile (Main_.Path () / "plain.txt", "x");
  EXPECT_EQ (Mount (Main_.Path () / "plain.txt"), -1);

  // 24 slots; a freed slot is taken again first.
  for (int I = 2; I < VOLUME_COUNT; I++) ASSERT_EQ (Mount (Main_.Path ()), I);
  EXPECT_EQ (Mount (Main_.Path ()), -1);
  EXPECT_TRUE (Files_->Unmount (5));
  EXPECT_EQ (std::vector<int> ({T->Volumes[5].InUse != 0, T->Volumes[5].Offered != 0, T->Volumes[5].Label[0],
                                Files_->Mounted (5), Files_->Unmount (5), Files_->Unmount (24)}),
             std::vector<int> (6, 0));
  EXPECT_EQ (Mount (Main_.Path ()), 5);

  // FlushVolume flushes and counts; an unknown volume is ignored.
  T->FlushVolume (static_cast<UINT8> (First));
  T->FlushVolume (200);
  EXPECT_EQ (Files_->FlushCount (First), 1u);
  EXPECT_EQ (Files_->FlushCount (Second), 0u);

  EFI_GUID Guid = {0x11111111, 0x2222, 0x3333, {1, 2, 3, 4, 5, 6, 7, 8}};
  EFI_GUID Next = Guid;
  Next.Data4[7] = 9;
  int TableA = 1, TableB = 2;
  EXPECT_EQ (T->LocateService (&Guid), nullptr);
  Files_->RegisterService (Guid, &TableA);
  Files_->RegisterService (Next, &TableB);
  EXPECT_EQ (T->LocateService (&Guid), &TableA);
  Files_->RegisterService (Guid, &TableB);   // replaces
  EXPECT_EQ (T->LocateService (&Guid), &TableB);
  Files_->UnregisterService (Guid);
  EXPECT_EQ (std::vector<void *> ({T->LocateService (&Guid), T->LocateService (&Next), T->LocateService (nullptr)}),
             std::vector<void *> ({nullptr, &TableB, nullptr}));
}

TEST_F (FileDriverTest, CreateDirectoryMakesOneNewFolderAndRenameTakesABareName) {
  MountMain ();
  Write ("file.txt", "x");
  UINT8 V = static_cast<UINT8> (Volume_);

  EXPECT_TRUE (T->CreateDirectory (V, A ("\\new dir"), 1));
  EXPECT_TRUE (T->CreateDirectory (V, A ("\\new dir\\inner\\"), 1));
  EXPECT_TRUE (fs::is_directory (Host ("new dir/inner")));
  Write ("a.txt", "A");
  Write ("b.txt", "B");

  // Refused: an existing folder or file, no parent, the root, a way out, a
  // "/" in the name, a name over 191 bytes.
  for (const std::string &Bad : std::vector<std::string> {"\\new dir", "\\file.txt", "\\missing\\child", "\\",
                                                          "\\..\\escape", "\\a/b", "\\" + std::string (192, 'd')})
    EXPECT_FALSE (T->CreateDirectory (V, A (Bad), 1)) << Bad;
  EXPECT_TRUE (T->CreateDirectory (V, A ("\\" + std::string (191, 'd')), 1));
  EXPECT_FALSE (T->CreateDirectory (V, nullptr, 1));
  EXPECT_FALSE (T->CreateDirectory (static_cast<UINT8> (V + 1), A ("\\x"), 1));
  EXPECT_FALSE (fs::exists (Main_.Path ().parent_path () / "escape"));

  EXPECT_TRUE (T->RenamePath (V, A ("\\a.txt"), A ("renamed.txt")));
  EXPECT_EQ (ReadHostFile (Host ("renamed.txt")), "A");
  EXPECT_FALSE (fs::exists (Host ("a.txt")));
  EXPECT_TRUE (T->RenamePath (V, A ("\\new dir\\"), A ("Folder 2")));
  EXPECT_TRUE (fs::is_directory (Host ("Folder 2/inner")));

  // Refused: a name that would overwrite, and names that are not bare or too long.
  for (const std::string &Bad :
       std::vector<std::string> {"b.txt", "", "sub\\x.txt", "..\\x.txt", "x/y", "..", ".", std::string (192, 'r')})
    EXPECT_FALSE (T->RenamePath (V, A ("\\renamed.txt"), A (Bad))) << Bad;
  EXPECT_EQ (ReadHostFile (Host ("b.txt")), "B");
  EXPECT_FALSE (T->RenamePath (V, A ("\\renamed.txt"), nullptr));
  EXPECT_FALSE (T->RenamePath (V, A ("\\missing.txt"), A ("x.txt")));
  EXPECT_FALSE (T->RenamePath (V, A ("\\"), A ("x")));
  EXPECT_FALSE (T->RenamePath (V, A ("\\..\\renamed.txt"), A ("x")));
  EXPECT_EQ (ReadHostFile (Host ("renamed.txt")), "A");
  EXPECT_TRUE (T->RenamePath (V, A ("\\renamed.txt"), A (std::string (191, 'r'))));
  EXPECT_EQ (ReadHostFile (Host (std::string (191, 'r'))), "A");
}

TEST_F (FileDriverTest, FatVolumesCompareNamesWithoutCase) {
  // File-system type, and whether names then compare without ASCII case.
  const std::pair<uint8_t, bool> Types[] = {{1, true}, {5, true}, {2, false}};
  for (auto [Type, Fat] : Types) {
    SCOPED_TRACE (static_cast<int> (Type));
    TempFolder Folder;
    WriteHostFile (Folder.Path () / "OTHER.TXT", "other");
    WriteHostFile (Folder.Path () / "a.txt", "a");
    env::VolumeSpec Spec;
    Spec.Folder = Folder.Path ().string ();
    Spec.FileSystemType = Type;
    UINT8 V = static_cast<UINT8> (env::MountFolder (*Files_, Spec));
    EXPECT_EQ (T->CreateDirectory (V, A ("\\other.txt"), 1), !Fat);
    EXPECT_EQ (T->CreateDirectory (V, A ("\\Other.Txt"), 0), !Fat);
    EXPECT_EQ (T->RenamePath (V, A ("\\a.txt"), A ("oTHER.txt")), !Fat);
    // A change of case of the entry itself is no clash.
    EXPECT_TRUE (T->RenamePath (V, A ("\\OTHER.TXT"), A ("Other.txt")));
    EXPECT_EQ (ReadHostFile (Folder.Path () / "Other.txt"), "other");
    Files_->Unmount (V);
  }
}

TEST_F (FileDriverTest, WriteProtectedVolumesRefuseChangesButRead) {
  Write ("keep.txt", "kept");
  Dir ("folder");
  MountMain (VOLUME_FLAG_WRITE_PROTECTED);
  UINT8 V = static_cast<UINT8> (Volume_);
  EXPECT_TRUE (Files_->WriteProtected (Volume_));
  EXPECT_FALSE (T->CreateDirectory (V, A ("\\new"), 1) || T->CreateDirectory (V, A ("\\new.txt"), 0) ||
                T->RenamePath (V, A ("\\keep.txt"), A ("other.txt")) || T->RenamePath (V, A ("\\folder"), A ("other")));
  EXPECT_EQ (Rows (List ("\\")), (std::vector<std::string> {"folder/ 0", "keep.txt 4"}));

  // The comparison flags 0x81 and 0x82 carry bit 7 as well.
  Files_->Unmount (Volume_);
  MountMain (VOLUME_FLAG_COMPARE_2);
  EXPECT_FALSE (T->CreateDirectory (static_cast<UINT8> (Volume_), A ("\\new"), 1));
  Files_->Unmount (Volume_);
  MountMain (0x01);
  EXPECT_TRUE (T->CreateDirectory (static_cast<UINT8> (Volume_), A ("\\new"), 1));
}
