// Built-in texts of the file comparison window, in the GBK code page, kept
// byte for byte ("%d" takes a number when formatted with AsciiSPrint).
#pragma once

#include "platform/uefi.h"

// file comparison, then a colon
inline constexpr CHAR8 FcTextTitlePrefix[] = "\xCE\xC4\xBC\xFE\xB1\xC8\xBD\xCF:";
// and, with a space on each side
inline constexpr CHAR8 FcTextTitleJoint[] = " \xBA\xCD ";
// comparison result, then a colon
inline constexpr CHAR8 FcTextResultLabel[] = "\xB1\xC8\xBD\xCF\xBD\xE1\xB9\xFB:";
// file comparison failed!
inline constexpr CHAR8 FcTextStartFailed[] = "\xCE\xC4\xBC\xFE\xB1\xC8\xBD\xCF\xCA\xA7\xB0\xDC!";
// file comparison finished, (number) files compared in all!
inline constexpr CHAR8 FcTextFinished[] = "\xCE\xC4\xBC\xFE\xB1\xC8\xBD\xCF\xBD\xE1\xCA\xF8\xA3\xAC\xD7\xDC\xB9\xB2\xB1\xC8\xBD\xCF\xC1\xCB%d\xB8\xF6\xCE\xC4\xBC\xFE!";
// the file comparison found no differences!
inline constexpr CHAR8 FcTextNoDifferences[] = "\xCE\xC4\xBC\xFE\xB1\xC8\xBD\xCF\xCE\xB4\xB7\xA2\xCF\xD6\xB2\xBB\xCD\xAC!";
// (number) new files (folders)!
inline constexpr CHAR8 FcTextAdded[] = "\xD0\xC2\xD4\xF6%d\xB8\xF6\xCE\xC4\xBC\xFE(\xBC\xD0)!";
// (number) files (folders) deleted!
inline constexpr CHAR8 FcTextDeleted[] = "\xC9\xBE\xB3\xFD\xC1\xCB%d\xB8\xF6\xCE\xC4\xBC\xFE(\xBC\xD0)!";
// (number) files (folders) changed!
inline constexpr CHAR8 FcTextChanged[] = "%d\xB8\xF6\xCE\xC4\xBC\xFE(\xBC\xD0)\xB7\xA2\xC9\xFA\xB1\xE4\xBB\xAF!";
// open the containing folder
inline constexpr CHAR8 FcTextMenuOpenFolder[] = "\xB4\xF2\xBF\xAA\xCB\xF9\xD4\xDA\xCE\xC4\xBC\xFE\xBC\xD0";
// open the backup folder
inline constexpr CHAR8 FcTextMenuOpenBackupFolder[] = "\xB4\xF2\xBF\xAA\xB1\xB8\xB7\xDD\xCE\xC4\xBC\xFE\xBC\xD0";
// delete the current file
inline constexpr CHAR8 FcTextMenuDeleteFile[] = "\xC9\xBE\xB3\xFD\xB5\xB1\xC7\xB0\xCE\xC4\xBC\xFE";
// copy the current file to the clipboard
inline constexpr CHAR8 FcTextMenuCopyFile[] = "\xB8\xB4\xD6\xC6\xB5\xB1\xC7\xB0\xCE\xC4\xBC\xFE\xB5\xBD\xBC\xF4\xCC\xF9\xB0\xE5";
// copy the backup file to the clipboard
inline constexpr CHAR8 FcTextMenuCopyBackupFile[] = "\xB8\xB4\xD6\xC6\xB1\xB8\xB7\xDD\xCE\xC4\xBC\xFE\xB5\xBD\xBC\xF4\xCC\xF9\xB0\xE5";
