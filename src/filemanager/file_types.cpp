// File types: the process-wide set of 16-pixel file-type icons, the table of
// extensions and the choice of viewer for a file.
//
// The set is loaded once, by the first main window or file dialog, and kept
// for the life of the driver. An icon file that cannot be loaded leaves
// whatever id LoadIcon returned (126 or more); the listing shows such ids as
// the unknown-file icon.

#include "filemanager/file_types.h"

#include "core/bindings.h"
#include "core/driver_state.h"
#include "filemanager/listing.h"
#include "platform/library.h"
#include "util/string_utils.h"
#include "viewers/viewers.h"

FILE_ICON_SET gFileIcons;
UINT8 gIconsLoaded;

namespace {

constexpr UINT8 IconSize = 16;
constexpr UINT8 IconLoadOption = 255;

struct ICON_FILE {
  const char *Path;
  UINT8 FILE_ICON_SET::*Slot;
};

// Loading order of the set.
const ICON_FILE IconFiles[] = {
    {"\\efi\\kivora\\icon\\surveyor\\files\\fileexe.ico", &FILE_ICON_SET::Executable},
    {"\\efi\\kivora\\icon\\surveyor\\files\\filedll.ico", &FILE_ICON_SET::Library},
    {"\\efi\\kivora\\icon\\surveyor\\files\\filerar.ico", &FILE_ICON_SET::Archive},
    {"\\efi\\kivora\\icon\\surveyor\\files\\filedoc.ico", &FILE_ICON_SET::Document},
    {"\\efi\\kivora\\icon\\surveyor\\files\\filefont.ico", &FILE_ICON_SET::Font},
    {"\\efi\\kivora\\icon\\surveyor\\files\\fileini.ico", &FILE_ICON_SET::Settings},
    {"\\efi\\kivora\\icon\\surveyor\\files\\fileie.ico", &FILE_ICON_SET::WebPage},
    {"\\efi\\kivora\\icon\\surveyor\\files\\filemp3.ico", &FILE_ICON_SET::Audio},
    {"\\efi\\kivora\\icon\\surveyor\\files\\fileavi.ico", &FILE_ICON_SET::Video},
    {"\\efi\\kivora\\icon\\surveyor\\files\\dir.ico", &FILE_ICON_SET::Directory},
    {"\\efi\\kivora\\icon\\surveyor\\files\\filebmp.ico", &FILE_ICON_SET::Picture},
    {"\\efi\\kivora\\icon\\surveyor\\files\\filehex.ico", &FILE_ICON_SET::Hex},
    {"\\efi\\kivora\\icon\\surveyor\\files\\fileunkn.ico", &FILE_ICON_SET::Unknown},
    {"\\efi\\kivora\\icon\\surveyor\\files\\filetxt.ico", &FILE_ICON_SET::Text},
    {"\\efi\\kivora\\icon\\surveyor\\files\\help.ico", &FILE_ICON_SET::Help},
    {"\\efi\\kivora\\icon\\surveyor\\files\\icon.ico", &FILE_ICON_SET::Icon},
};

struct EXTENSION {
  const char *Text;
  UINT8 FILE_ICON_SET::*Slot;
};

// Extensions in the order they are tried.
const EXTENSION Extensions[] = {
    {"bmp", &FILE_ICON_SET::Picture},   {"gif", &FILE_ICON_SET::Picture},   {"jpg", &FILE_ICON_SET::Picture},
    {"txt", &FILE_ICON_SET::Text},      {"exe", &FILE_ICON_SET::Executable}, {"dll", &FILE_ICON_SET::Library},
    {"doc", &FILE_ICON_SET::Document},  {"ini", &FILE_ICON_SET::Settings},  {"fon", &FILE_ICON_SET::Font},
    {"rar", &FILE_ICON_SET::Archive},   {"zip", &FILE_ICON_SET::Archive},   {"7z", &FILE_ICON_SET::Archive},
    {"htm", &FILE_ICON_SET::WebPage},   {"html", &FILE_ICON_SET::WebPage},  {"mp3", &FILE_ICON_SET::Audio},
    {"wav", &FILE_ICON_SET::Audio},     {"wma", &FILE_ICON_SET::Audio},     {"rm", &FILE_ICON_SET::Video},
    {"rmvb", &FILE_ICON_SET::Video},    {"avi", &FILE_ICON_SET::Video},     {"ico", &FILE_ICON_SET::Icon},
};

}  // namespace

VOID LoadFileIcons () {
  for (const ICON_FILE &File : IconFiles) {
    gFileIcons.*File.Slot = gWindowBase->LoadIcon (reinterpret_cast<const CHAR8 *> (File.Path), IconSize,
                                                   IconLoadOption);
  }
  gIconsLoaded = 1;
}

VOID EnsureFileIcons () {
  if (gIconsLoaded == 0) LoadFileIcons ();
}

namespace {

// The slot of the icon set that a file name belongs to.
UINT8 FILE_ICON_SET::*SlotForName (const CHAR8 *Name) {
  if (Name == nullptr) return &FILE_ICON_SET::Unknown;
  UINT16 Length = StringLength (Name);
  if (Length <= 3) return &FILE_ICON_SET::Unknown;
  UINT16 Dot = 0;
  for (UINT16 I = (UINT16) (Length - 1); I >= 1; I--) {
    if (Name[I] == '.') {
      Dot = I;
      break;
    }
  }
  if (Dot == 0 || Dot == Length - 1) return &FILE_ICON_SET::Unknown;
  const CHAR8 *Extension = Name + Dot + 1;
  for (const EXTENSION &Entry : Extensions) {
    if (NamesEqual (Extension, reinterpret_cast<const CHAR8 *> (Entry.Text))) return Entry.Slot;
  }
  return &FILE_ICON_SET::Unknown;
}

}  // namespace

UINT8 IconForName (const CHAR8 *Name) { return gFileIcons.*SlotForName (Name); }

// The viewer is chosen by the file's type rather than by comparing icon ids,
// so that icon files missing from the system folder (which may all yield the
// same id) do not send every file to the same viewer.
VOID OpenFile (MAIN_WINDOW *Window, const CHAR8 *Name) {
  if (Window == nullptr || Name == nullptr) return;
  CHAR8 Path[MAIN_PATH_SIZE];
  if (!BuildFullPath (Window, Name, Path)) return;
  UINT8 FILE_ICON_SET::*Slot = SlotForName (Name);
  WINDOW_HEADER *Viewer;
  if (Slot == &FILE_ICON_SET::Picture) {
    Viewer = OpenImageViewer (100, 100, Window->VolumeIndex, Path);
  } else if (Slot == &FILE_ICON_SET::Icon) {
    Viewer = OpenIconViewer (20, 20, Window->VolumeIndex, Path);
  } else {
    Viewer = OpenHexViewer (50, 50, Path, Window->VolumeIndex);
  }
  if (Viewer != nullptr) gWindowBase->ActivateWindow (Viewer);
}

void ResetFileTypesState () {
  ZeroMem (&gFileIcons, sizeof (gFileIcons));
  gIconsLoaded = 0;
}
