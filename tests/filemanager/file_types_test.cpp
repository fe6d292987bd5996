// File-type icons, the extension table and the viewer a file opens in.

#include "filemanager/file_types.h"
#include "support/main_window_fixture.h"

namespace {

TEST_F (MainWindowTest, IconSetLoadsOnceInOrder) {
  EXPECT_EQ (gIconsLoaded, 0);
  Open (MakeVolume ("a"));
  EXPECT_EQ (gIconsLoaded, 1);
  const std::pair<UINT8 FILE_ICON_SET::*, const char *> Files[] = {
      {&FILE_ICON_SET::Executable, "fileexe.ico"}, {&FILE_ICON_SET::Library, "filedll.ico"},
      {&FILE_ICON_SET::Archive, "filerar.ico"},    {&FILE_ICON_SET::Document, "filedoc.ico"},
      {&FILE_ICON_SET::Font, "filefont.ico"},      {&FILE_ICON_SET::Settings, "fileini.ico"},
      {&FILE_ICON_SET::WebPage, "fileie.ico"},     {&FILE_ICON_SET::Audio, "filemp3.ico"},
      {&FILE_ICON_SET::Video, "fileavi.ico"},      {&FILE_ICON_SET::Directory, "dir.ico"},
      {&FILE_ICON_SET::Picture, "filebmp.ico"},    {&FILE_ICON_SET::Hex, "filehex.ico"},
      {&FILE_ICON_SET::Unknown, "fileunkn.ico"},   {&FILE_ICON_SET::Text, "filetxt.ico"},
      {&FILE_ICON_SET::Help, "help.ico"},          {&FILE_ICON_SET::Icon, "icon.ico"}};
  int Previous = -1;
  for (const auto &[Slot, File] : Files) {
    UINT8 Id = gFileIcons.*Slot;
    ASSERT_LT (Id, ICON_NONE) << File;
    std::string Path = Base ().IconPath (Id);
    EXPECT_NE (Path.find (std::string ("\\files\\") + File), std::string::npos) << Path;
    EXPECT_GT (Id, Previous) << File << " loaded out of order";
    Previous = Id;
  }
  FILE_ICON_SET Before = gFileIcons;
  Open (MakeVolume ("b"));
  EXPECT_EQ (0, memcmp (&Before, &gFileIcons, sizeof (Before)));
}

TEST_F (MainWindowTest, IconForNameUsesTheLastExtension) {
  Open (MakeVolume ("a"));
  const FILE_ICON_SET &I = gFileIcons;
  const std::pair<const char *, UINT8> Cases[] = {
      {"PHOTO.JPG", I.Picture}, {"x.gif", I.Picture},     {"a.bmp", I.Picture},  {"readme.TXT", I.Text},
      {"a.ini", I.Settings},    {".ini", I.Unknown},      {"name.", I.Unknown},  {"abc", I.Unknown},
      {"noext", I.Unknown},     {"a.7z", I.Archive},      {"a.tar.zip", I.Archive}, {"b.rar", I.Archive},
      {"p.htm", I.WebPage},     {"p.html", I.WebPage},    {"s.mp3", I.Audio},    {"s.WAV", I.Audio},
      {"s.wma", I.Audio},       {"v.rm", I.Video},        {"v.rmvb", I.Video},   {"v.avi", I.Video},
      {"i.ico", I.Icon},        {"f.fon", I.Font},        {"d.doc", I.Document}, {"e.exe", I.Executable},
      {"l.dll", I.Library},     {"a.zip.bak", I.Unknown}, {"x.jpeg", I.Unknown}};
  for (const auto &[Name, Icon] : Cases) EXPECT_EQ (IconForName (A8 (Name)), Icon) << Name;
}

TEST_F (MainWindowTest, OpenedFilesGoToTheirViewers) {
  int V = MakeVolume ("a");
  WriteFile (V, "notes.txt", "hello");
  WriteFile (V, "fake.gif", "GIF89a");
  MAIN_WINDOW *W = Open (V);
  size_t Windows = Base ().TopLevelWindows ().size ();

  Activate (W, "notes.txt");
  ASSERT_EQ (Base ().TopLevelWindows ().size (), Windows + 1);
  WINDOW_HEADER *Hex = Base ().ActiveWindow ();
  EXPECT_NE (Hex, &W->Header);
  EXPECT_EQ (Hex->X, 50);
  EXPECT_EQ (Hex->Y, 50);

  // The image viewer refuses a GIF: no window, nothing else happens.
  Activate (W, "fake.gif");
  EXPECT_EQ (Base ().TopLevelWindows ().size (), Windows + 1);
  EXPECT_EQ (Path (W), "\\");
}

}  // namespace
