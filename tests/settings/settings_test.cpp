// The settings service: values by section and key, kept in a file that is
// replaced atomically on Commit, and malformed files that never crash.
#include <filesystem>

#include "env/host/settings_file.h"
#include "env/settings/settings_service.h"
#include "support/driver_fixture.h"

namespace fs = std::filesystem;

namespace {

// The value found, or "<none>".
std::string Get (SETTINGS_SERVICE_PROTOCOL *T, env::Firmware &Fw, const char *Section, const char *Key) {
  CHAR8 *Value = nullptr;
  if (!T->GetValue ((const CHAR8 *) Section, (const CHAR8 *) Key, &Value)) return "<none>";
  EXPECT_NE (Value, nullptr);
  EXPECT_GT (Fw.BlockSize (Value), 0u) << "the value is a pool block the caller frees";
  std::string Out ((const char *) Value);
  Fw.FreePool (Value);
  return Out;
}

void Set (SETTINGS_SERVICE_PROTOCOL *T, const char *Section, const char *Key, const char *Value) {
  T->SetValue ((const CHAR8 *) Section, (const CHAR8 *) Key, (const CHAR8 *) Value);
}

std::vector<std::string> FolderNames (const fs::path &Folder) {
  std::vector<std::string> Names;
  for (auto &E : fs::directory_iterator (Folder)) Names.push_back (E.path ().filename ().string ());
  std::sort (Names.begin (), Names.end ());
  return Names;
}

TEST (SettingsService, ValuesPersistAcrossAReload) {
  TempFolder Dir;
  fs::path File = Dir.Path () / "settings.ini";
  env::Firmware Fw;
  {
    env::SettingsService S (env::OpenSettingsFile (File.string ()), 1);
    SETTINGS_SERVICE_PROTOCOL *T = S.Table ();
    EXPECT_EQ (T->Version, 1u);
    EXPECT_EQ (Get (T, Fw, "Surveyor", "Position"), "<none>");
    Set (T, "Surveyor", "Position", "100,100,400,300");
    Set (T, "FileCmp", "Position", "5,6,700,500");
    Set (T, "Surveyor", "Position", "120,80,640,480");   // replaces the first value
    Set (T, "Paths", "Last", "\\efi\\boot\\x.efi");
    Set (T, "Paths", "Empty", "");
    EXPECT_FALSE (fs::exists (File)) << "SetValue alone does not write";
    // Sections and keys are found without regard to ASCII case.
    EXPECT_EQ (Get (T, Fw, "surveyor", "POSITION"), "120,80,640,480");
    T->Commit ();
    EXPECT_EQ (Fw.LiveAllocations (), 0u);
  }
  env::SettingsService Reloaded (env::OpenSettingsFile (File.string ()), 1);
  SETTINGS_SERVICE_PROTOCOL *T = Reloaded.Table ();
  EXPECT_EQ (Get (T, Fw, "Surveyor", "Position") + "|" + Get (T, Fw, "FileCmp", "Position") + "|" +
                 Get (T, Fw, "Paths", "Last") + "|" + Get (T, Fw, "Paths", "Empty") + "|" + Get (T, Fw, "Paths", "Position"),
             "120,80,640,480|5,6,700,500|\\efi\\boot\\x.efi||<none>");
  EXPECT_EQ (Fw.LiveAllocations (), 0u);
  // Bad arguments are refused, never dereferenced.
  CHAR8 *Value = nullptr;
  EXPECT_FALSE (T->GetValue ((const CHAR8 *) "Surveyor", nullptr, nullptr) ||
                T->GetValue ((const CHAR8 *) "Surveyor", nullptr, &Value));
  T->SetValue (nullptr, nullptr, nullptr);
}

TEST (SettingsService, CommitReplacesTheFileAtomically) {
  TempFolder Dir;
  fs::path File = Dir.Path () / "s.ini";
  WriteHostFile (File, "[A]\nKey=old\n");
  env::Firmware Fw;
  env::SettingsService S (env::OpenSettingsFile (File.string ()), 1);
  SETTINGS_SERVICE_PROTOCOL *T = S.Table ();
  fs::create_hard_link (File, Dir.Path () / "old-link");
  Set (T, "A", "Key", "new");
  Set (T, "B", "Other", "two");
  EXPECT_EQ (ReadHostFile (File), "[A]\nKey=old\n");
  T->Commit ();
  // A new file took the old one's place (rename), so a second link to the old
  // file still shows the old content and no temporary file is left behind.
  EXPECT_EQ (ReadHostFile (Dir.Path () / "old-link"), "[A]\nKey=old\n");
  EXPECT_EQ (ReadHostFile (File), "[A]\nKey=new\n\n[B]\nOther=two\n");
  EXPECT_EQ ((FolderNames (Dir.Path ())), (std::vector<std::string> {"old-link", "s.ini"}));

  // A line break in a value cannot split it into two lines of the file.
  Set (T, "A", "Key", "first\nInjected=1");
  Set (T, "A", "Bad=Key", "x");
  Set (T, "A", "", "x");
  T->Commit ();
  EXPECT_EQ (ReadHostFile (File), "[A]\nKey=first\n\n[B]\nOther=two\n");

  // Without a file, or with one that cannot be written, the values stay in
  // memory and commits are counted; nothing crashes.
  for (bool WithFile : {false, true}) {
    env::SettingsService Kept (
        WithFile ? env::OpenSettingsFile ((Dir.Path () / "no-such-folder" / "s.ini").string ()) : nullptr, 1);
    Set (Kept.Table (), "A", "K", "v");
    Kept.Table ()->Commit ();
    Kept.Table ()->Commit ();
    EXPECT_EQ (Kept.CommitCount (), 2u) << WithFile;
    EXPECT_EQ (Get (Kept.Table (), Fw, "A", "K"), "v") << WithFile;
  }
  EXPECT_FALSE (fs::exists (Dir.Path () / "no-such-folder"));
}

TEST (SettingsService, WritesKeepEveryLineTheyDoNotChange) {
  TempFolder Dir;
  fs::path File = Dir.Path () / "s.ini";
  WriteHostFile (File, "; written by hand\r\ntop=1\n[Surveyor]\n# the main window\nPosition=1,2,3,4\r\n"
                       "odd line without equals\n\n[Other]\nKey = spaced \n");
  env::SettingsService S (env::OpenSettingsFile (File.string ()), 1);
  Set (S.Table (), "Surveyor", "Position", "5,6,7,8");
  Set (S.Table (), "Surveyor", "Added", "yes");
  Set (S.Table (), "", "second", "2");
  S.Table ()->Commit ();
  EXPECT_EQ (ReadHostFile (File), "; written by hand\r\ntop=1\nsecond=2\n[Surveyor]\n# the main window\n"
                                  "Position=5,6,7,8\r\nAdded=yes\nodd line without equals\n\n[Other]\nKey = spaced \n");
}

TEST (SettingsService, AStoreThatCannotBeReadIsNeverOverwritten) {
  TempFolder Dir;
  fs::path File = Dir.Path () / "big.ini";
  // One byte over the limit: not read, and kept as it is.
  std::string Big = "[Keep]\nEverything=here\n";
  Big.resize (env::kMaxSettingsText + 1, '#');
  WriteHostFile (File, Big);
  env::Firmware Fw;
  env::SettingsService S (env::OpenSettingsFile (File.string ()), 1);
  EXPECT_FALSE (S.Writable ());
  EXPECT_EQ (Get (S.Table (), Fw, "Keep", "Everything"), "<none>");
  Set (S.Table (), "Surveyor", "Position", "1,2,3,4");
  S.Table ()->Commit ();
  S.Table ()->Commit ();
  EXPECT_EQ (Get (S.Table (), Fw, "Surveyor", "Position"), "1,2,3,4") << "kept in memory";
  EXPECT_EQ (ReadHostFile (File), Big);
  EXPECT_EQ ((FolderNames (Dir.Path ())), (std::vector<std::string> {"big.ini"}));
  // The console says so, once.
  const std::string &Console = Fw.ConsoleText ();
  EXPECT_NE (Console.find ("could not be read"), std::string::npos) << Console;
  EXPECT_EQ (Console.find ("could not be read"), Console.rfind ("could not be read"));
}

TEST (SettingsService, MalformedFilesAreReadAsFarAsTheyMakeSense) {
  TempFolder Dir;
  fs::path File = Dir.Path () / "bad.ini";
  std::string Text = "\xEF\xBB\xBFtop=level\r\n; comment=1\n# other=2\n[Unclosed\nno equals sign here\n=no key\n"
                     "  [ Spaced ]  \n  key one  = value with = sign  \r\n";
  Text += std::string ("nul\0byte=hidden\n", 16);
  Text += "[Dup]\nk=1\nK=2\n[\xFF\xFE]\n\x80=\x81\nlast=no newline";
  WriteHostFile (File, Text);
  env::Firmware Fw;
  env::SettingsService S (env::OpenSettingsFile (File.string ()), 1);
  SETTINGS_SERVICE_PROTOCOL *T = S.Table ();
  std::string Got;
  for (auto [Section, Key] : {std::pair<const char *, const char *> {nullptr, "top"}, {"", "comment"}, {"Spaced", "key one"},
                              {"Spaced", "nul"}, {"Dup", "k"}, {"\xFF\xFE", "\x80"}, {"\xFF\xFE", "last"}})
    Got += Get (T, Fw, Section, Key) + "|";
  EXPECT_EQ (Got, "level|<none>| value with = sign  |<none>|2|\x81|no newline|");

  // Random bytes: any result, no crash.
  std::string Noise;
  uint32_t Seed = 12345;
  for (int I = 0; I < 100000; I++) {
    Seed = Seed * 1103515245u + 12345u;
    Noise += (char) (Seed >> 24);
  }
  for (const std::string &Text : {Noise, std::string (), std::string ("["), std::string ("=")}) S.Parse (Text);
  EXPECT_EQ (Get (T, Fw, nullptr, "top"), "<none>");
  EXPECT_EQ (Fw.LiveAllocations (), 0u);
}

}  // namespace
