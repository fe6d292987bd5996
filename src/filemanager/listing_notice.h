// What a listing could not show, said instead of left out in silence: a short
// status text naming how many entries are missing and why, and a message box
// for a folder that could not be read at all. The main window and the file
// dialog both use them; the texts are status texts of no section.
#pragma once

#include "services/file_driver.h"

// Notes of the handle's last ReadDirectory; all zero when the file driver has none.
VOID ReadListingNotes (UINT16 Handle, LISTING_NOTES *Notes);

// Writes into Buffer (Size bytes) the status text for what the notes say was
// left out, plus Refused entries that the window's own list had no room
// for: "3 names too long, 1 unreadable" (kept short: it shares the status line
// with other fields). Empty when nothing was left out.
VOID DescribeLeftOut (const LISTING_NOTES *Notes, UINT32 Refused, CHAR8 *Buffer, UINT16 Size);

// Tells the user that the folder Path could not be read (message box, style 1).
VOID ReportUnreadableFolder (const CHAR8 *Path);
