// The listing's right-button menu: its items, the enable rules by selection,
// write protection and clipboard, the comparison volumes, placement at the
// screen edges, and the comparison and attributes commands.
#include "env/host/ntfs_service.h"
#include "env/jobio/jobio_driver.h"
#include "support/main_window_fixture.h"

namespace {

const std::string kCompare1 = "Compare with backup 1", kCompare2 = "Compare with backup 2";

// Each call of the attributes window as "volume entry path-or-name".
std::vector<std::string> gAttributesCalls;

WINDOW_HEADER *EFIAPI RecordAttributes (UINT8 Volume, UINT32 Entry, const CHAR8 *PathOrName, UINTN) {
  gAttributesCalls.push_back (std::to_string (Volume) + " " + std::to_string (Entry) + " " +
                              reinterpret_cast<const char *> (PathOrName));
  return nullptr;
}

class ContextMenuTest : public MainWindowTest {
 protected:
  // Right click with the rows of Names selected; the popup shown.
  WINDOW_HEADER *RightClick (MAIN_WINDOW *W, const std::vector<std::string> &Names, uint16_t X = 5, uint16_t Y = 5) {
    Base ().ClosePopup ();
    Select (W, Names);
    Controls ().ContextClick (W->List, X, Y);
    return Base ().ShownPopup ();
  }
  std::vector<std::string> Texts (WINDOW_HEADER *Popup) {
    std::vector<std::string> Out;
    for (const env::PopupItemInfo &Item : Base ().PopupItems (Popup)) Out.push_back (Item.Separator ? "-" : Item.Text);
    return Out;
  }
  // The items' enabled states in menu order (separators left out), one digit
  // each; where Mask holds '.', the state is not told.
  std::string States (WINDOW_HEADER *Popup, const std::string &Mask) {
    std::string Out;
    for (const env::PopupItemInfo &Item : Base ().PopupItems (Popup))
      if (!Item.Separator)
        Out += Out.size () < Mask.size () && Mask[Out.size ()] == '.' ? '.' : Item.Enabled ? '1' : '0';
    return Out;
  }
  // The popup lives as long as the driver: build it once, then count pool
  // blocks from there.
  void BuildMenuFirst (int Volume) {
    MAIN_WINDOW *W = Open (Volume);
    ASSERT_NE (RightClick (W, {}), nullptr);
    Base ().ClosePopup ();
    Close (W);
    RebaseAfterFirstUse ();
  }
  void Choose (const std::string &Text) {
    ASSERT_TRUE (Base ().ChoosePopupItem (Base ().ShownPopup (), Text)) << Text;
    Base ().PumpMessages ();
  }
};

TEST_F (ContextMenuTest, ItemsAndTheirEnableRules) {
  int Sys = MakeVolume ("sys", 0, 0, 1, "C:");
  MakeVolume ("plain");
  int T1 = MakeVolume ("backup1", 0x81);
  int T2 = MakeVolume ("backup2", 0x82);
  int D = MakeVolume ("d", 0, 0, 1, "D:");
  int Gbk = MakeVolume ("gbk", 0, 0, 1, std::string ("\x43\xC5\xCC"));   // drive C in GBK
  int Ro = MakeVolume ("ro", 0x80, 0, 1, "C:");
  for (int V : {Sys, D, Gbk, Ro}) WriteFile (V, "a.txt", "1");
  WriteFile (Sys, "b.txt", "1");
  BuildMenuFirst (Sys);
  MAIN_WINDOW *W = Open (Sys);
  WINDOW_HEADER *Popup = RightClick (W, {});
  ASSERT_NE (Popup, nullptr);
  for (const env::PopupItemInfo &Item : Base ().PopupItems (Popup))
    if (!Item.Separator) EXPECT_EQ (Item.Context, &W->Header) << Item.Text;
  EXPECT_EQ (Texts (Popup), (std::vector<std::string> {"Copy", "Delete", "Rename", "Paste", "-", "Attributes", "-",
                                                         kCompare1, kCompare2}));

  // Copy, Delete, Rename, Paste, Attributes and the two comparisons; a
  // write-protected volume leaves Copy as the popup's last showing set it.
  struct Case {
    int Volume;
    std::vector<std::string> Selected;
    std::string States, Why;
  } Cases[] = {
      {Sys, {}, "0000000", "nothing selected, nothing in the clipboard"},
      {Sys, {}, "0001000", "nothing selected, something in the clipboard"},
      {Sys, {"a.txt"}, "1110111", "one file"},
      {Sys, {"a.txt", "b.txt"}, "1100000", "two files"},
      {D, {"a.txt"}, "1110100", "drive D: no comparisons"},
      {Gbk, {"a.txt"}, "1110111", "drive C in GBK"},
      {Ro, {"a.txt"}, ".000100", "write-protected"},
      {Ro, {}, ".000000", "write-protected, nothing selected"},
  };
  for (const Case &C : Cases) {
    if (&C == &Cases[1]) {
      JOBIO_DRIVER_PROTOCOL *Jobio = Env ().jobio ().Table ();
      UINT32 Id = Jobio->BeginClipboard (static_cast<UINT8> (Sys), A8 ("\\"));
      ASSERT_TRUE (Id != 0 && Jobio->AddToClipboard (Id, A8 ("a.txt")));
    }
    MAIN_WINDOW *Window = Open (C.Volume);
    EXPECT_EQ (States (RightClick (Window, C.Selected), C.States), C.States) << C.Why;
    if (C.Volume == D) EXPECT_EQ (Window->CompareTarget1, 255);
  }
  EXPECT_EQ (W->CompareTarget1, T1);
  EXPECT_EQ (W->CompareTarget2, T2);
  Base ().ClosePopup ();
}

TEST_F (ContextMenuTest, ComparisonVolumesAreTheLastOfferedWithTheirFlags) {
  int Sys = MakeVolume ("sys", 0, 0, 1, "C:");
  int T1 = MakeVolume ("backup1", 0x81);
  int T2 = MakeVolume ("backup2", 0x82);
  WriteFile (Sys, "a.txt", "1");
  BuildMenuFirst (Sys);
  MAIN_WINDOW *W = Open (Sys);
  // A later volume with flags 0x81 wins; without a 0x82 volume the second item stays grey.
  int Later = MakeVolume ("backup1b", 0x81);
  Env ().files ().Table ()->Volumes[T2].Flags = 0;
  EXPECT_EQ (States (RightClick (W, {"a.txt"}), ""), "1110110");
  EXPECT_EQ ((std::pair<int, int> {W->CompareTarget1, W->CompareTarget2}), (std::pair<int, int> {Later, 255}));
  // A volume that is not offered does not count.
  Env ().files ().Table ()->Volumes[Later].Offered = 0;
  RightClick (W, {"a.txt"});
  EXPECT_EQ (W->CompareTarget1, T1);
  Base ().ClosePopup ();
}

TEST_F (ContextMenuTest, PopupOpensLeftAndAboveNearTheScreenEdges) {
  int C = MakeVolume ("sys", 0, 0, 1, "C:");
  WriteFile (C, "a.txt", "1");
  BuildMenuFirst (C);
  MAIN_WINDOW *W = Open (C);
  UINT16 Ox = 0, Oy = 0;
  Wb ()->GetControlOrigin (&Ox, &Oy, W->List);
  WINDOW_HEADER *Popup = RightClick (W, {}, 20, 30);
  ASSERT_NE (Popup, nullptr);
  EXPECT_EQ ((std::pair<int, int> {Popup->X - Ox, Popup->Y - Oy}), (std::pair<int, int> {20, 30}));

  W->Header.X = static_cast<UINT16> (Gui ()->ScreenWidth - W->Header.Width);
  W->Header.Y = static_cast<UINT16> (Gui ()->ScreenHeight - W->Header.Height);
  Wb ()->GetControlOrigin (&Ox, &Oy, W->List);
  uint16_t X = static_cast<uint16_t> (W->List->Control.Width - 3), Y = static_cast<uint16_t> (W->List->Control.Height - 3);
  Popup = RightClick (W, {}, X, Y);
  ASSERT_NE (Popup, nullptr);
  ASSERT_GT (Ox + X + Popup->Width, Gui ()->ScreenWidth - 2);
  EXPECT_EQ ((std::pair<int, int> {Popup->X, Popup->Y}),
            (std::pair<int, int> {Ox + X - Popup->Width, Oy + Y - Popup->Height}));
  Base ().ClosePopup ();
}

TEST_F (ContextMenuTest, CompareItemOpensTheComparisonOfTheSelectedPath) {
  int C = MakeVolume ("sys", 0, 0, 1, "C:");
  int T2 = MakeVolume ("backup2", 0x82);
  WriteFile (C, "docs/a.txt", "1");
  WriteFile (T2, "docs/a.txt", "1");
  BuildMenuFirst (C);
  MAIN_WINDOW *W = Open (C);
  RightClick (W, {"docs"});
  Choose (kCompare2);
  WINDOW_HEADER *Active = Base ().ActiveWindow ();
  ASSERT_TRUE (Active != nullptr && Active != &W->Header);
  EXPECT_EQ (Active->ObjectSize, 848u);
  // The comparison window's record: the path, then the two volumes at 512.
  const UINT8 *Private = reinterpret_cast<const UINT8 *> (Active) + sizeof (WINDOW_HEADER);
  EXPECT_EQ (reinterpret_cast<const char *> (Private) + std::string (" ") + std::to_string (Private[512]) + " " +
                 std::to_string (Private[513]),
             "\\docs " + std::to_string (C) + " " + std::to_string (T2));
  EXPECT_EQ (Base ().TimerCount (), 1u) << "its job runs";

  // The comparison volume went away after the menu was shown: the item does nothing.
  std::vector<env::PopupItemInfo> Items = Base ().PopupItems (RightClick (W, {"docs"}));
  Base ().ClosePopup ();
  Env ().files ().Table ()->Volumes[T2].InUse = 0;
  size_t Before = Base ().TopLevelWindows ().size ();
  for (const env::PopupItemInfo &Item : Items)
    if (Item.Text == kCompare2) Item.Command (Item.Item, &W->Header);
  EXPECT_EQ (Base ().TopLevelWindows ().size (), Before);
  Env ().files ().Table ()->Volumes[T2].InUse = 1;
}

TEST_F (ContextMenuTest, AttributesOfDirectoriesByPathAndOfFilesByName) {
  int C = MakeVolume ("ntfs", 0, 2, 2, "C:");
  int Plain = MakeVolume ("fat", 0, 0, 1);
  WriteFile (C, "docs/a.txt", "1");
  WriteFile (C, "f.txt", "1");
  WriteFile (Plain, "f.txt", "1");
  ASSERT_NE (Env ().ntfs (), nullptr);
  Env ().ntfs ()->Table ()->OpenAttributesWindow = RecordAttributes;
  gAttributesCalls.clear ();
  BuildMenuFirst (C);
  MAIN_WINDOW *W = Open (C);

  auto Entry = [&] (const char *Name) { return std::to_string (Cd ()->GetItem (W->List, Row (W, Name))->EntryWord); };
  RightClick (W, {"docs"});
  Choose ("Attributes");
  RightClick (W, {"f.txt"});
  Choose ("Attributes");
  // Not ready, or a volume of another kind: nothing.
  Env ().ntfs ()->SetReady (false);
  RightClick (W, {"f.txt"});
  Choose ("Attributes");
  Env ().ntfs ()->SetReady (true);
  RightClick (Open (Plain), {"f.txt"});
  Choose ("Attributes");
  std::string Volume = std::to_string (C);
  EXPECT_EQ (gAttributesCalls, (std::vector<std::string> {Volume + " " + Entry ("docs") + " \\docs",
                                                          Volume + " " + Entry ("f.txt") + " f.txt"}));
}

TEST_F (ContextMenuTest, AttributesItemOnlyWithExtendedMenus) {
  Base ().SetExtendedMenus (false);
  int C = MakeVolume ("sys", 0, 0, 1, "C:");
  BuildMenuFirst (C);
  MAIN_WINDOW *W = Open (C);
  std::vector<std::string> Want = {"Copy", "Delete", "Rename", "Paste", "-", kCompare1, kCompare2};
  EXPECT_EQ (Texts (RightClick (W, {})), Want);
  // Asked once, when the popup is built.
  Base ().SetExtendedMenus (true);
  EXPECT_EQ (Base ().PopupItems (RightClick (W, {})).size (), Want.size ());
  Base ().ClosePopup ();
}

}  // namespace
