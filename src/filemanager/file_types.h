// The file-type icon set, the extension table and opening a file in a viewer.
#pragma once

#include "filemanager/main_window.h"

typedef struct {
  UINT8 Executable;
  UINT8 Library;
  UINT8 Archive;
  UINT8 Document;
  UINT8 Font;
  UINT8 Settings;
  UINT8 WebPage;
  UINT8 Audio;
  UINT8 Video;
  UINT8 Directory;
  UINT8 Picture;
  UINT8 Hex;
  UINT8 Unknown;
  UINT8 Text;
  UINT8 Help;
  UINT8 Icon;
} FILE_ICON_SET;

extern FILE_ICON_SET gFileIcons;   // all 0 until loaded
extern UINT8 gIconsLoaded;

VOID LoadFileIcons ();
// Loads the set unless it is loaded already.
VOID EnsureFileIcons ();
UINT8 IconForName (const CHAR8 *Name);
VOID OpenFile (MAIN_WINDOW *Window, const CHAR8 *Name);
