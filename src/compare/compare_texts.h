// Built-in texts of the comparison jobs, in the GBK code page, kept byte for
// byte. "%a" takes a path and "%d" a number when the text is formatted with
// AsciiSPrint; the texts without placeholders are used as they are.
#pragma once

#include "platform/uefi.h"

// space, hyphen, space, then: folder contents changed!
inline constexpr CHAR8 CmpTextHeadingSuffix[] = " - \xCE\xC4\xBC\xFE\xBC\xD0\xC4\xDA\xC8\xDD\xB1\xE4\xBB\xAF!";
// file read error!
inline constexpr CHAR8 CmpTextReadError[] = "\xCE\xC4\xBC\xFE\xB6\xC1\xC8\xA1\xB4\xED\xCE\xF3!";
// file contents differ!
inline constexpr CHAR8 CmpTextContentsDiffer[] = "\xCE\xC4\xBC\xFE\xC4\xDA\xC8\xDD\xB2\xBB\xCD\xAC!";
// opening the file failed
inline constexpr CHAR8 CmpTextOpenFailed[] = "\xB4\xF2\xBF\xAA\xCE\xC4\xBC\xFE\xCA\xA7\xB0\xDC";
// reading the file information failed
inline constexpr CHAR8 CmpTextInfoFailed[] = "\xBB\xF1\xC8\xA1\xCE\xC4\xBC\xFE\xD0\xC5\xCF\xA2\xCA\xA7\xB0\xDC";
// opening the backup file failed
inline constexpr CHAR8 CmpTextBackupOpenFailed[] = "\xB4\xF2\xBF\xAA\xB1\xB8\xB7\xDD\xCE\xC4\xBC\xFE\xCA\xA7\xB0\xDC";
// reading the backup file information failed
inline constexpr CHAR8 CmpTextBackupInfoFailed[] = "\xBB\xF1\xC8\xA1\xB1\xB8\xB7\xDD\xCE\xC4\xBC\xFE\xD0\xC5\xCF\xA2\xCA\xA7\xB0\xDC";
// the file is a directory
inline constexpr CHAR8 CmpTextIsADirectory[] = "\xCE\xC4\xBC\xFE\xCA\xC7\xD2\xBB\xB8\xF6\xC4\xBF\xC2\xBC";
// the file has changed
inline constexpr CHAR8 CmpTextFileChanged[] = "\xCE\xC4\xBC\xFE\xB7\xA2\xC9\xFA\xB1\xE4\xBB\xAF";
// file (path) does not exist!
inline constexpr CHAR8 CmpTextRootMissing[] = "\xCE\xC4\xBC\xFE(%a)\xB2\xBB\xB4\xE6\xD4\xDA!";
// file (path) cannot be operated on!
inline constexpr CHAR8 CmpTextRootUnusable[] = "\xCE\xC4\xBC\xFE(%a)\xB2\xBB\xBF\xC9\xB2\xD9\xD7\xF7!";
// file (path) does not exist in the backup!
inline constexpr CHAR8 CmpTextRootMissingInBackup[] = "\xCE\xC4\xBC\xFE(%a)\xD4\xDA\xB1\xB8\xB7\xDD\xD6\xD0\xB2\xBB\xB4\xE6\xD4\xDA!";
// file backup (path) cannot be operated on!
inline constexpr CHAR8 CmpTextRootBackupUnusable[] = "\xCE\xC4\xBC\xFE\xB1\xB8\xB7\xDD(%a)\xB2\xBB\xBF\xC9\xB2\xD9\xD7\xF7!";
// file backup (path) has a different directory attribute!
inline constexpr CHAR8 CmpTextRootTypeDiffers[] = "\xCE\xC4\xBC\xFE\xB1\xB8\xB7\xDD(%a)\xD3\xD0\xB2\xBB\xCD\xAC\xB5\xC4\xC4\xBF\xC2\xBC\xCA\xF4\xD0\xD4!";
// file (path) differs in size!
inline constexpr CHAR8 CmpTextRootSizeDiffers[] = "\xCE\xC4\xBC\xFE(%a)\xB4\xF3\xD0\xA1\xB2\xBB\xD2\xBB\xD1\xF9!";
// opening the folder failed!
inline constexpr CHAR8 CmpTextFolderOpenFailed[] = "\xCE\xC4\xBC\xFE\xBC\xD0\xB4\xF2\xBF\xAA\xCA\xA7\xB0\xDC!";
// opening the backup folder failed!
inline constexpr CHAR8 CmpTextBackupFolderOpenFailed[] = "\xB1\xB8\xB7\xDD\xCE\xC4\xBC\xFE\xBC\xD0\xB4\xF2\xBF\xAA\xCA\xA7\xB0\xDC!";
// the folder cannot be operated on!
inline constexpr CHAR8 CmpTextFolderUnusable[] = "\xCE\xC4\xBC\xFE\xBC\xD0\xCE\xDE\xB7\xA8\xB2\xD9\xD7\xF7!";
// the backup folder cannot be operated on!
inline constexpr CHAR8 CmpTextBackupFolderUnusable[] = "\xB1\xB8\xB7\xDD\xCE\xC4\xBC\xFE\xBC\xD0\xCE\xDE\xB7\xA8\xB2\xD9\xD7\xF7!";
// file type differs from the backup!
inline constexpr CHAR8 CmpTextTypeDiffers[] = "\xBA\xCD\xB1\xB8\xB7\xDD\xB2\xBB\xCD\xAC\xB5\xC4\xCE\xC4\xBC\xFE\xC0\xE0\xD0\xCD!";
// folder is empty, the backup has (number) files
inline constexpr CHAR8 CmpTextSourceEmpty[] = "\xCE\xC4\xBC\xFE\xBC\xD0\xCE\xAA\xBF\xD5\xA3\xAC\xB1\xB8\xB7\xDD\xD3\xD0%d\xB8\xF6\xCE\xC4\xBC\xFE";
// folder has (number) new files, the backup folder is empty
inline constexpr CHAR8 CmpTextBackupEmpty[] = "\xCE\xC4\xBC\xFE\xBC\xD0\xD0\xC2\xD4\xF6%d\xB8\xF6\xCE\xC4\xBC\xFE\xA3\xAC\xB1\xB8\xB7\xDD\xCE\xC4\xBC\xFE\xBC\xD0\xCE\xAA\xBF\xD5";
// file comparison failed!
inline constexpr CHAR8 CmpTextCompareFailed[] = "\xCE\xC4\xBC\xFE\xB1\xC8\xBD\xCF\xCA\xA7\xB0\xDC!";
// folder deleted!
inline constexpr CHAR8 CmpTextFolderDeleted[] = "\xCE\xC4\xBC\xFE\xBC\xD0\xB1\xBB\xC9\xBE\xB3\xFD!";
// file deleted!
inline constexpr CHAR8 CmpTextFileDeleted[] = "\xCE\xC4\xBC\xFE\xB1\xBB\xC9\xBE\xB3\xFD!";
// new folder!
inline constexpr CHAR8 CmpTextFolderNew[] = "\xD0\xC2\xD4\xF6\xCE\xC4\xBC\xFE\xBC\xD0!";
// new file!
inline constexpr CHAR8 CmpTextFileNew[] = "\xD0\xC2\xD4\xF6\xCE\xC4\xBC\xFE!";
// cannot compare files
inline constexpr CHAR8 CmpTextCannotCompare[] = "\xCE\xDE\xB7\xA8\xB1\xC8\xBD\xCF\xCE\xC4\xBC\xFE";
// space, opening parenthesis, the number, the word files, closing parenthesis
inline constexpr CHAR8 CmpTextFileCount[] = " (%d\xB8\xF6\xCE\xC4\xBC\xFE)";
// preparing
inline constexpr CHAR8 CmpTextPreparing[] = "\xD7\xBC\xB1\xB8";
// space, then the word folder in parentheses
inline constexpr CHAR8 CmpTextFolderMark[] = " (\xCE\xC4\xBC\xFE\xBC\xD0)";
// Pieces used to assemble lines.
inline constexpr CHAR8 CmpTextSeparator[] = " - ";
inline constexpr CHAR8 CmpTextIndent[] = "  ";
