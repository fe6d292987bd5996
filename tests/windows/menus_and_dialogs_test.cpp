// Window base: popup menus, menu buttons, buttons, text fields, message
// boxes, dialogs and icons.
#include <cstring>
#include <string>
#include <vector>

#include "support/image_builders.h"
#include "support/driver_fixture.h"
#include "windows/window_test_support.h"

namespace {

struct CommandCall {
  std::string Name;
  VOID *Item;
  WINDOW_HEADER *Context;
};
std::vector<CommandCall> gCalls;
VOID EFIAPI CopyCommand (VOID *Item, WINDOW_HEADER *Context) { gCalls.push_back ({"copy", Item, Context}); }
VOID EFIAPI PasteCommand (VOID *Item, WINDOW_HEADER *Context) { gCalls.push_back ({"paste", Item, Context}); }

TEST_F (WindowTest, PopupsOpenRunTheirCommandsAndCloseWithMessagesToTheOwner) {
  gCalls.clear ();
  WINDOW_HEADER *Owner = NewWindow ();
  WINDOW_HEADER *Other = NewWindow ();
  WINDOW_HEADER *Popup = Wb ()->CreatePopupMenu (Owner, 0, 0, 0);
  ASSERT_NE (Popup, nullptr);
  EXPECT_EQ (Popup->Owner, Owner);
  Wb ()->AppendMenuItem (Popup, Ascii ("Copy"), CopyCommand, Owner, 0);
  Wb ()->AppendMenuSeparator (Popup);
  Wb ()->AppendMenuItem (Popup, Ascii ("paste"), PasteCommand, Owner, 126);
  Wb ()->EnableMenuItem (Popup, PasteCommand, FALSE);
  Wb ()->SetMenuItemContext (Popup, CopyCommand, Other);

  // Each item as "text icon enabled separator", and whose context it carries.
  auto Items = Windows ().PopupItems (Popup);
  std::vector<std::string> Shown;
  for (auto &I : Items)
    Shown.push_back (I.Text + " " + std::to_string (I.Icon) + " " + std::to_string (I.Enabled) + " " +
                     std::to_string (I.Separator) + (I.Context == Other ? " other" : I.Context == Owner ? " owner" : ""));
  EXPECT_EQ (Shown, (std::vector<std::string> {"Copy 0 1 0 other", " 126 0 1", "paste 126 0 0 owner"}));

  Wb ()->ShowPopupMenu (Popup);
  auto Opened = Received (Owner, MSG_POPUP_OPENED);
  EXPECT_TRUE (Windows ().ShownPopup () == Popup && Opened.size () == 1 && Opened[0].Pointer8 == Popup);

  EXPECT_FALSE (Windows ().ChoosePopupItem (Popup, "paste")) << "disabled";
  EXPECT_EQ (Windows ().ShownPopup (), Popup);
  EXPECT_TRUE (Windows ().ChoosePopupItem (Popup, "Copy"));
  ASSERT_EQ (gCalls.size (), 1u);
  EXPECT_TRUE (gCalls[0].Name == "copy" && gCalls[0].Context == Other && gCalls[0].Item == Items[0].Item);
  EXPECT_TRUE (Windows ().ShownPopup () == nullptr && Received (Owner, MSG_POPUP_CLOSED).size () == 1);

  // Escape sent to an open popup closes it.
  Wb ()->EnableMenuItem (Popup, PasteCommand, TRUE);
  Wb ()->ShowPopupMenu (Popup);
  MESSAGE Key {};
  Key.Type = MSG_KEY;
  Key.Word4 = SCAN_CODE_ESCAPE;
  Wb ()->SendMessage (Popup, &Key);
  EXPECT_TRUE (Windows ().ShownPopup () == nullptr && Received (Owner, MSG_POPUP_CLOSED).size () == 2);

  // Keys typed while a popup is open go to it: Down twice skips the separator, Enter runs.
  Wb ()->ShowPopupMenu (Popup);
  Windows ().SendKey (Owner, 0, SCAN_CODE_DOWN, 0);
  Windows ().SendKey (Owner, 0, SCAN_CODE_DOWN, 0);
  Windows ().SendKey (Owner, 0x0D, 0, 0);
  EXPECT_TRUE (gCalls.size () == 2 && gCalls[1].Name == "paste" && Windows ().ShownPopup () == nullptr);

  // A popup outlives its owner (without one) until it is destroyed itself.
  Wb ()->DestroyWindow (Owner);
  EXPECT_TRUE (Windows ().IsWindow (Popup) && Popup->Owner == nullptr);
  Wb ()->DestroyWindow (Popup);
  EXPECT_FALSE (Windows ().IsWindow (Popup));
}

TEST_F (WindowTest, MenuButtonsBelongToTheirHeaderAndOpenTheirPopups) {
  gCalls.clear ();
  WINDOW_HEADER *Owner = NewWindow ();
  WINDOW_HEADER *Header = NewWindow (296, Owner);
  WINDOW_HEADER *OtherHeader = NewWindow (296, Owner);
  WINDOW_HEADER *Popup = Wb ()->CreatePopupMenu (Owner, 0, 0, 0);
  Wb ()->AppendMenuItem (Popup, Ascii ("exit"), CopyCommand, Owner, 0);
  Popup->Owner = Header;   // as the menu header records itself

  MENU_ITEM *Title = Wb ()->CreateMenuButton (Header, 4, 4, nullptr, Popup, Owner, ICON_NONE, Ascii ("File(F)"));
  MENU_ITEM *Tool = Wb ()->CreateMenuButton (Header, 4, 36, CopyCommand, nullptr, Owner, 3, nullptr);
  MENU_ITEM *Foreign = Wb ()->CreateMenuButton (OtherHeader, 4, 4, nullptr, nullptr, Owner, ICON_NONE, Ascii ("Help"));
  ASSERT_TRUE (Title != nullptr && Tool != nullptr);
  EXPECT_TRUE (Header->FirstChild == &Title->Control && Title->Control.NextSibling == &Tool->Control);
  EXPECT_EQ ((std::vector<UINT32> {Title->Control.Flags & 0x03u, Tool->Control.Flags & 0x01u, Tool->Control.Width}),
             (std::vector<UINT32> {3, 1, 36}));
  EXPECT_GT (Title->Control.Width, Wb ()->GuiDriver->GetTextWidth (Ascii ("File(F)")));
  EXPECT_TRUE (Title->ItemGroup != 0 && Title->ItemGroup == Tool->ItemGroup && Title->ItemGroup != Foreign->ItemGroup);

  // A command item runs its command; a title opens its popup (23 to the header).
  EXPECT_TRUE (Windows ().ClickMenuItem (Tool));
  EXPECT_TRUE (gCalls.size () == 1 && gCalls[0].Item == Tool);
  EXPECT_TRUE (Windows ().ClickMenuItem (Title));
  auto Opened = Received (Header, MSG_POPUP_OPENED);
  EXPECT_TRUE (Windows ().ShownPopup () == Popup && Opened.size () == 1 && Opened[0].Pointer8 == Popup);
  Windows ().ClosePopup ();
  EXPECT_EQ (Received (Header, MSG_POPUP_CLOSED).size (), 1u);

  // Message type 1 with byte 1 = 2 posted to a title opens its popup.
  MESSAGE Open {};
  Open.Type = MSG_COMMAND;
  Open.Code = 2;
  Wb ()->PostMessage (Title, &Open);
  EXPECT_EQ (Windows ().ShownPopup (), nullptr);
  Windows ().PumpMessages ();
  EXPECT_EQ (Windows ().ShownPopup (), Popup);
  Windows ().SendKey (Owner, 0, SCAN_CODE_ESCAPE, 0);
  EXPECT_EQ (Windows ().ShownPopup (), nullptr);

  // A greyed item does nothing, clicked or sent the open message.
  Tool->Control.Flags &= ~0x01u;
  Title->Control.Flags &= ~0x01u;
  EXPECT_FALSE (Windows ().ClickMenuItem (Tool));
  EXPECT_EQ (gCalls.size (), 1u);
  Wb ()->PostMessage (Title, &Open);
  Windows ().PumpMessages ();
  EXPECT_EQ (Windows ().ShownPopup (), nullptr);
  Wb ()->DestroyWindow (Popup);
}

TEST_F (WindowTest, ButtonsFieldsMessageBoxesAndDialogResults) {
  WINDOW_HEADER *Dialog = NewWindow (848);
  CONTROL *Button = Wb ()->CreateButton (Dialog, 33, Ascii ("Open"), 300, 250, 60, 26, 0);
  CONTROL *Name = Wb ()->CreateTextField (Dialog, 10, 250, 200, 26, 0, TRUE, Ascii (""));
  CONTROL *Label = Wb ()->CreateTextField (Dialog, 10, 10, 80, 26, 0, FALSE, Ascii ("Partition"));
  ASSERT_NE (Button, nullptr);
  EXPECT_TRUE (Wb ()->GetControl (Dialog, 33) == Button && Wb ()->GetControl (Dialog, 34) == nullptr && Name->Id != Label->Id);

  // Typing into a focused framed field edits its text.
  Wb ()->SetFocus (Dialog, Name, 1);
  Windows ().SendKey (Dialog, 'a', 0, 0);
  Windows ().SendKey (Dialog, 'b', 0, 0);
  Windows ().SendKey (Dialog, 0x08, 0, 0);
  EXPECT_EQ (std::string (reinterpret_cast<char *> (Name->Text)), "a");

  EXPECT_EQ (Wb ()->MessageBox (1, Ascii ("fail"), Ascii ("Rename"), 0), 1u);
  Windows ().SetMessageBoxAnswerer ([] (const env::MessageBoxRecord &) -> UINTN { return 7; });
  EXPECT_EQ (Wb ()->MessageBox (1, Ascii ("second"), Ascii ("Cap"), 0), 7u);
  EXPECT_EQ (Windows ().MessageBoxes ().size (), 2u);

  // CompleteDialog keeps a copy and closes the dialog with a posted close command.
  std::vector<uint8_t> Result (1024, 0);
  Result[0] = 3;
  std::memcpy (&Result[1], "\\docs\\a.txt", 11);
  gReaction = [] (WINDOW_HEADER *, MESSAGE *M) -> UINT8 { return M->Type == MSG_SYSCOMMAND ? 1 : 0; };
  const std::vector<uint8_t> Sent = Result;
  Wb ()->CompleteDialog (Dialog, Result.data (), 1024, 0);
  Result[0] = 9;   // the record keeps its own copy
  ASSERT_EQ (Windows ().DialogResults ().size (), 1u);
  EXPECT_TRUE (Windows ().DialogResults ()[0].Dialog == Dialog && Windows ().DialogResults ()[0].Data == Sent);
  EXPECT_TRUE (Windows ().IsWindow (Dialog));
  Windows ().PumpMessages ();
  EXPECT_FALSE (Windows ().IsWindow (Dialog));
}

// ------------------------------------------------------------------- icons

class IconTest : public WindowTest {
 protected:
  env::Options EnvironmentOptions () override {
    env::Options O;
    O.SystemDir = System.Path ().string ();
    return O;
  }
  TempFolder System;
  TempFolder Volume;
};

TEST_F (IconTest, IconIdsAreSharedPerPathAndSizeAndFileIconsAreFreed) {
  WriteHostFile (System.Path () / "efi/kivora/icon/surveyor/goback.ico", test_images::AsString (test_images::Ico ({{16, 16}})));
  WriteHostFile (System.Path () / "efi/kivora/icon/surveyor/broken.ico", "not an icon");
  WriteHostFile (Volume.Path () / "pics/big.ico", test_images::AsString (test_images::Ico ({{32, 32}})));
  env::VolumeSpec Spec;
  Spec.Folder = Volume.Path ().string ();
  int Vol = Env ().Mount (Spec);
  ASSERT_GE (Vol, 0);

  UINT8 Back = Wb ()->LoadIcon (Ascii ("\\efi\\kivora\\icon\\surveyor\\goback.ico"), 16, 255);
  ASSERT_LT (Back, 126);
  EXPECT_EQ (Wb ()->LoadIcon (Ascii ("\\EFI\\kivora\\icon\\surveyor\\goback.ico"), 16, 255), Back);
  UINT16 W = 0, H = 0;
  EXPECT_TRUE (Wb ()->GetIconSize (Back, &W, &H));
  EXPECT_EQ (W * 1000 + H, 16 * 1000 + 16);
  EXPECT_EQ (Windows ().IconPath (Back), "\\efi\\kivora\\icon\\surveyor\\goback.ico");

  for (const char *Bad : {"\\efi\\kivora\\icon\\surveyor\\missing.ico", "\\efi\\kivora\\icon\\surveyor\\broken.ico",
                          "\\..\\..\\etc\\passwd", static_cast<const char *> (nullptr)})
    EXPECT_GE (Wb ()->LoadIcon (Ascii (Bad), 16, 255), 126) << (Bad ? Bad : "null");
  EXPECT_FALSE (Wb ()->GetIconSize (126, &W, &H));

  UINT8 Big = Wb ()->LoadIconFromFile (static_cast<UINT8> (Vol), Ascii ("\\pics\\big.ico"), 32, 0);
  ASSERT_LT (Big, 126);
  EXPECT_TRUE (Big != Back && Wb ()->GetIconSize (Big, &W, &H) && W == 32);
  // No image 1; no such file.
  EXPECT_GE (std::min (Wb ()->LoadIconFromFile (static_cast<UINT8> (Vol), Ascii ("\\pics\\big.ico"), 32, 1),
                       Wb ()->LoadIconFromFile (static_cast<UINT8> (Vol), Ascii ("\\pics\\none.ico"), 32, 0)), 126);
  EXPECT_EQ (Windows ().LiveIconCount (), 2u);
  Wb ()->FreeIcon (Big);
  Wb ()->FreeIcon (Back);   // session icons stay
  EXPECT_TRUE (Windows ().LiveIconCount () == 1 && !Wb ()->GetIconSize (Big, &W, &H) && Wb ()->GetIconSize (Back, &W, &H));
}

}  // namespace
