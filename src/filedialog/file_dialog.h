// The file dialog offered to applications: a volume selector, a tree of
// directories and files, a name field and an Open button. The choice is
// handed back through the window base's CompleteDialog as a 1024-byte buffer:
// byte 0 the volume number, the zero-terminated path from byte 1.
#pragma once

#include "platform/uefi.h"
#include "services/file_driver.h"
#include "services/window_records.h"

#define FILE_DIALOG_OBJECT_SIZE   848
#define FILE_DIALOG_RESULT_SIZE   1024
#define FILE_DIALOG_OPEN_BUTTON   33
#define FILE_DIALOG_TREE_LIMIT    4096

// The dialog window: the window base's header, then the dialog's own fields.
typedef struct {
  WINDOW_HEADER Header;
  CHAR8 CurrentDir[512];            // directory of the current choice; "\" after the tree is (re)loaded
  CONTROL *NameField;               // the file-name field
  COMBO_BOX *VolumeCombo;           // the volume selector
  FILE_LIST *FileTree;              // directories and files
  WINDOW_HEADER *DialogPopup;       // the tree's context menu; null until first used
  UINT8 DirsOnly;                   // non-zero: directories only, and activating one completes the dialog
  UINT8 DialogVolume;               // volume shown in the tree
  UINT8 VolumeCount;                // rows of VolumeCombo
  UINT8 VolumeByRow[VOLUME_COUNT];  // volume number of each row of VolumeCombo
} FILE_DIALOG;

static_assert (sizeof (FILE_DIALOG) <= FILE_DIALOG_OBJECT_SIZE);
static_assert (offsetof (FILE_DIALOG, CurrentDir) == 272);

WINDOW_HEADER *EFIAPI OpenFileDialog (UINT16 X, UINT16 Y, const CHAR8 *Title, UINT8 Volume, UINT8 DirsOnly);

// The entries of a directory that the tree shows: names not starting with
// ".", and only directories when DirsOnly is non-zero. Returns the count and,
// when it is not 0, a pool array of exactly that many records in *Entries
// (the caller frees it). Notes, when given, receive what the file driver's
// listing left out (all zero when the directory could not be opened).
UINT16 ReadFilteredDirectory (UINT8 Volume, const CHAR8 *Path, UINT8 DirsOnly, DIRECTORY_ENTRY **Entries,
                              LISTING_NOTES *Notes = nullptr);
// True when ReadFilteredDirectory finds at least one entry.
BOOLEAN HasSubEntries (UINT8 Volume, const CHAR8 *Path, UINT8 DirsOnly);
