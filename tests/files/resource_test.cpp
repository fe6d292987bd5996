// The resource-string file: the parser's edge cases through ReadResourceString,
// and the shipped file's keys and format strings.
#include <cstring>
#include <fstream>
#include <regex>
#include <sstream>

#include "env/files/resource_file.h"
#include "env/files/volume_config.h"
#include "files/file_test_support.h"

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

const char *kResourcePath = "\\efi\\kivora\\strings\\surveyor.res";

}  // namespace

class ResourceTest : public FileDriverTest {
 protected:
  void WriteResource (const std::string &Bytes) {
    WriteHostFile (System_.Path () / "efi" / "kivora" / "strings" / "surveyor.res", Bytes);
  }
  // The text found, or "<false>" when ReadResourceString failed (and then the
  // buffer must still hold the marks it had).
  std::string Get (const char *Section, const char *Key, const char *File = kResourcePath) {
    std::memset (Buffer_, '!', sizeof (Buffer_));
    BOOLEAN Found = T->ReadResourceString (reinterpret_cast<const CHAR8 *> (File),
                                           reinterpret_cast<const CHAR8 *> (Section),
                                           reinterpret_cast<const CHAR8 *> (Key), Buffer_);
    if (!Found) {
      for (size_t I = 0; I < sizeof (Buffer_); I++)
        if (Buffer_[I] != '!') return "<buffer changed>";
      return "<false>";
    }
    EXPECT_LT (std::strlen (reinterpret_cast<char *> (Buffer_)), 256u);
    return reinterpret_cast<char *> (Buffer_);
  }

  CHAR8 Buffer_[300];
};

TEST_F (ResourceTest, SectionsKeysAndTheNullSection) {
  WriteResource (
      "; a comment\n"
      "TopKey=top value\n"
      "  Spaced Key  =   spaced value   \n"
      "# another=comment\n"
      "\n"
      "[File Menu]\n"
      "File=File(F)\n"
      "Help = Help(H)\n"
      "\t[ toolbar ]\t\n"
      "back=Up\n"
      "same=toolbar's\n"
      "[FileMenu]\n"
      "same=filemenu's\n"
      "equation = a=b=c\n"
      "empty =\n"
      "quoted = \"  padded  \"\n"
      "noequals line\n");
  // Comments are no keys; the null section and the named ones do not mix;
  // ASCII case does not matter; a section name is matched whole.
  const std::pair<const char *, const char *> Queries[] = {
      {nullptr, "TopKey"},    {nullptr, "Spaced Key"}, {nullptr, "# another"},    {nullptr, "File"},
      {"File Menu", "TopKey"}, {"File Menu", "File"},  {"File Menu", "Help"},     {"FileMenu", "File"},
      {"toolbar", "back"},    {"TOOLBAR", "BACK"},     {"toolbar", "same"},       {"FileMenu", "same"},
      {"FileMenu", "equation"}, {"FileMenu", "empty"}, {"FileMenu", "quoted"},    {"FileMenu", "noequals line"},
      {"Missing", "back"},    {"toolbar", "missing"},  {"toolbar", nullptr},      {"File", "File"}};
  std::string Got;
  for (auto [Section, Key] : Queries) Got += Get (Section, Key) + "|";
  EXPECT_EQ (Got, "top value|spaced value|<false>|<false>|<false>|File(F)|Help(H)|<false>|Up|Up|toolbar's|filemenu's|"
                  "a=b=c||  padded  |<false>|<false>|<false>|<false>|<false>|");
}

TEST_F (ResourceTest, LineEndsAndOddBytes) {
  WriteResource ("[A]\r\nk1=one\r\nk2 = two \r\n[B]\rk3=three\r[C]\nlast=no newline");
  EXPECT_EQ (Get ("A", "k1") + Get ("A", "k2") + Get ("B", "k3") + Get ("C", "last"), "onetwothreeno newline");

  std::string Binary = "[Bin]\nhigh=\xC4\xE3\xBA\xC3 \x01\x7F\xFF\nafter=ok\n";
  Binary += "nul=a\0b\n"s;
  Binary += "\0\0garbage\xFE\n[Next]\nkey=fine\n"s;
  WriteResource (Binary);
  // A NUL ends the text as the caller sees it.
  EXPECT_EQ (Get ("Bin", "high") + "|" + Get ("Bin", "after") + "|" + Get ("Bin", "nul") + "|" + Get ("Next", "key"),
             "\xC4\xE3\xBA\xC3 \x01\x7F\xFF|ok|a|fine");

  WriteResource ("");
  EXPECT_EQ (Get (nullptr, "key"), "<false>");
  WriteResource ("[unclosed\nkey=value\n");
  EXPECT_EQ (Get ("unclosed", "key"), "value");
}

TEST_F (ResourceTest, LongValuesAreCutTo255Bytes) {
  std::string Long (400, 'v');
  Long[254] = 'E';
  Long[255] = 'X';
  WriteResource ("[S]\nlong=" + Long + "\nexact=" + std::string (255, 'e') + "\n");
  std::string Got = Get ("S", "long");
  EXPECT_EQ (Got.size (), 255u);
  EXPECT_EQ (Got.back (), 'E');
  EXPECT_EQ (Buffer_[256], '!');                           // nothing written beyond 256 bytes
  EXPECT_EQ (Get ("S", "exact"), std::string (255, 'e'));
}

TEST_F (ResourceTest, TheFileIsReadFromTheSystemFolderOnly) {
  WriteResource ("[S]\nk=v\n");
  EXPECT_EQ (Get ("S", "k"), "v");
  EXPECT_EQ (Get ("S", "k", "\\EFI\\kivora\\strings\\missing.res"), "<false>");
  EXPECT_EQ (Get ("S", "k", "\\efi\\kivora\\strings"), "<false>");   // a folder
  EXPECT_EQ (Get ("S", "k", nullptr), "<false>");
  WriteHostFile (Main_.Path () / "outside.res", "[S]\nk=outside\n");
  std::string Escape = "\\..\\" + Main_.Path ().filename ().string () + "\\outside.res";
  EXPECT_EQ (Get ("S", "k", Escape.c_str ()), "<false>");
  EXPECT_EQ (Get ("S", "k", "efi\\\\kivora\\.\\strings\\surveyor.res"), "v");
  EXPECT_FALSE (T->ReadResourceString (reinterpret_cast<const CHAR8 *> (kResourcePath), nullptr,
                                       reinterpret_cast<const CHAR8 *> ("k"), nullptr));
  fs::remove_all (System_.Path () / "efi");
  EXPECT_EQ (Get ("S", "k"), "<false>");
}

// The file the build ships: every key the program looks up is there, and the
// format strings carry exactly the conversions their callers supply.
// surveyor.cfg is read with the same parser: labels with spaces, any ASCII
// case, comments, CRLF lines; what is not named changes nothing.
TEST (VolumeConfigFile, NamesTheSourceAndBackupVolumesByLabel) {
  env::VolumeConfig Config = env::ParseVolumeConfig (
      "# comment\r\nsource = Data\r\ncompare1=BACKUP\r\n  compare2 =  OLD BACKUP\r\ntiming = ON\r\n");
  struct Case {
    const char *Label, *Shown;
    uint8_t Flags;
  } Cases[] = {{"DATA", "C:", 0}, {"data", "C:", 0},         {"backup", "backup", 0x81},
               {"OLD BACKUP", "OLD BACKUP", 0x82}, {"OLD", "OLD", 0}, {"", "", 0}};
  for (const Case &C : Cases) {
    EXPECT_EQ (Config.LabelOf (C.Label), C.Shown) << C.Label;
    EXPECT_EQ (Config.FlagsOf (C.Label), C.Flags) << C.Label;
  }
  EXPECT_TRUE (Config.Timing);
  // A commented-out or empty file names nothing: no volume becomes C:.
  for (const char *Text : {"", "# source = DATA\n", "\xFF\xFE\x00garbage", "source =\n"}) {
    env::VolumeConfig None = env::ParseVolumeConfig (Text);
    EXPECT_EQ (None.LabelOf ("DATA"), "DATA");
    EXPECT_EQ (None.LabelOf (""), "");
    EXPECT_EQ (None.FlagsOf ("BACKUP"), 0);
    EXPECT_FALSE (None.Timing);
  }
}

TEST (ShippedResources, EveryKeyIsPresentWithItsConversions) {
  std::ifstream In (env::DefaultSystemDir () + "/efi/kivora/strings/surveyor.res", std::ios::binary);
  ASSERT_TRUE (In.good ()) << "resource file not built into " << env::DefaultSystemDir ();
  std::string Text ((std::istreambuf_iterator<char> (In)), std::istreambuf_iterator<char> ());

  // Each section's keys, "|" between them; the conversions a key's callers
  // supply follow its "=".
  const std::pair<const char *, const char *> Sections[] = {
      {"HelpWin", "Tip_NoHelp"},
      {"File Menu", "File|Help"},
      {"FileMenu", "delete|copy file|paste file|gouplayer|newdir|exit|about"},
      {"toolbar", "back|back_ttip|copy|copy_ttip|paste|paste_ttip|delete|delete_ttip"},
      {"ListHeader", "name|size|type|date"},
      {"base", "strAboutCap|strAboutString"},
      {"RightMouseMenu", "Copy|Delete|Rename|paste|fileAttr|FileCompare1|FileCompare2"},
      {"File Dialog", "Tip_Partion|FileNameTip|btOpen|Tip_Dir|menu_createdir|menu_deldir|menu_rename|Tip_FailCreateFile|"
                      "Tip_FailRename"},
      {"HexFile", "tip_failOpen|tip_failGetFileInfo|tip_notsupport|offset|pageup|pagedown|tipFileInfo=%ld%d|"
                  "tipCurrentPage=%d"},
      {"FileComp", "btPause"},
      {nullptr, "TypeDirectory|files_total=%d|files_selected=%d|SearchStatus=%d%d|FailCopyFile|OperationNotDone|"
                "FailDelFile|OperationFail|fail_rename|fail_create_dir|fullPathStr|fail_path_too_long|fail_read_folder|"
                "left_long_names=%d|left_backslash_names=%d|left_unreadable=%d|left_over_limit=%d"},
  };
  std::regex Conversion ("%l?d|%[^%]");
  for (auto [Section, Keys] : Sections) {
    std::stringstream List (Keys);
    for (std::string Key; std::getline (List, Key, '|');) {
      size_t Equals = Key.find ('=');
      std::string Name = Key.substr (0, Equals), Value, Conversions;
      ASSERT_TRUE (env::LookupResourceString (Text, Section, Name.c_str (), Value)) << (Section ? Section : "-") << "/" << Name;
      EXPECT_FALSE (Value.empty ()) << Name;
      for (auto It = std::sregex_iterator (Value.begin (), Value.end (), Conversion); It != std::sregex_iterator (); ++It)
        Conversions += It->str ();
      EXPECT_EQ (Conversions, Equals == std::string::npos ? "" : Key.substr (Equals + 1)) << Name << ": " << Value;
      // The menu titles need their hotkeys.
      if (Name == "File" || Name == "Help") EXPECT_NE (Value.find (Name == "File" ? "(F)" : "(H)"), std::string::npos);
    }
  }
  std::string Value;
  // Status formats are printed into 64-byte buffers with numbers of up to 10 digits.
  for (const char *Format : {"files_total", "files_selected", "SearchStatus"}) {
    ASSERT_TRUE (env::LookupResourceString (Text, nullptr, Format, Value));
    EXPECT_LT (Value.size () + 20, 64u) << Format;
  }
}
