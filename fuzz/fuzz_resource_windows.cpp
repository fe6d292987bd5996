// Feeds random resource files to every window that formats texts: the input
// is the system folder's surveyor.res while the main window opens, lists,
// shows its selection and search status, steps into a folder; the hex viewer
// shows and turns pages; the file dialog, the help window, the About box and
// a comparison window open. Whatever the texts, nothing may crash, read an
// argument that was not passed, or leak.
#include <stddef.h>
#include <stdint.h>

#include "compare/file_comparison.h"
#include "filemanager/listing.h"
#include "filemanager/main_window.h"
#include "filemanager/main_window_internal.h"
#include "env/controls/control_driver.h"
#include "fuzz_session.h"
#include "services/messages.h"
#include "viewers/viewers.h"

namespace {

fuzz::Session &Driver () {
  static fuzz::Session *S = [] {
    auto *New = new fuzz::Session (true);
    std::string Pages (3 * 4096 + 100, 'p');
    fuzz::WriteBytes (New->Folders[0] / "pages.bin", Pages.data (), Pages.size ());
    fuzz::WriteBytes (New->Folders[0] / "sub/one.txt", "1", 1);
    fuzz::WriteBytes (New->Folders[1] / "sub/two.txt", "22", 2);
    fuzz::WriteBytes (New->Folders[0] / std::string (200, 'L'), "x", 1);   // left out of listings
    return New;
  }();
  return *S;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  fuzz::Session &S = Driver ();
  fuzz::WriteBytes (S.System / "efi/kivora/strings/surveyor.res", Data, Size);
  UINT8 Source = static_cast<UINT8> (S.Volumes[0]), Backup = static_cast<UINT8> (S.Volumes[1]);

  auto *Main = reinterpret_cast<MAIN_WINDOW *> (S.Surveyor->OpenVolumeWindow (0, 0, Source, nullptr, nullptr));
  fuzz::Check (Main != nullptr);
  ShowSelection (Main, 4, 0);
  ShowSelection (Main, 0, 2);
  MESSAGE Search = {};
  Search.Type = MSG_NOTIFY;
  Search.Code = NOTIFY_SEARCH;
  Search.Word4 = 12;
  Search.Word6 = 3;
  S.Env->windows ().Table ()->SendMessage (&Main->Header, &Search);
  for (UINT16 Row = 0; Row < Main->List->RowCount; Row++) {
    LIST_ITEM *Item = S.Env->controls ().Table ()->GetItem (Main->List, Row);
    if (Item != nullptr && Item->Name[0] == 's') {
      OpenItem (Main, Row);
      break;
    }
  }
  AboutCommand (nullptr, &Main->Header);

  WINDOW_HEADER *Hex = OpenHexViewer (50, 50, fuzz::A8 ("\\pages.bin"), Source);
  fuzz::Check (Hex != nullptr);
  S.Env->windows ().SendSysCommand (Hex, 34);
  S.Env->windows ().SendSysCommand (Hex, 36);

  S.Surveyor->OpenFileDialog (10, 10, fuzz::A8 ("Pick"), Source, 0);
  S.Surveyor->ShowHelpWindow (Source, fuzz::A8 ("\\missing.hlp"), 0, fuzz::A8 ("Help"));
  OpenFileComparison (Source, Backup, fuzz::A8 ("\\"));
  S.RunTimers (200);
  S.EndInput ();
  return 0;
}
