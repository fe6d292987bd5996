// The file driver: volumes, directories, files, the resource-string file and
// the registry through which the other siblings are found.
#pragma once

#include "platform/uefi.h"

#define VOLUME_COUNT 24
#define VOLUME_FLAG_WRITE_PROTECTED 0x80
#define VOLUME_FLAG_COMPARE_1       0x81
#define VOLUME_FLAG_COMPARE_2       0x82
#define VOLUME_KIND_NTFS_ATTRIBUTES 2
#define VOLUME_KIND_REOPEN          3
#define FILE_HANDLE_INFO_BIT        0x8000   // handle + 0x8000: information about the open directory itself

typedef struct {
  UINT64 InUse;                // 0   non-zero when the entry holds a volume
  UINT8 Kind;                  // 8
  UINT8 Reserved1;             // 9
  UINT8 Flags;                 // 10  bit 7: write-protected
  UINT8 Reserved2[5];          // 11
  UINT8 FileSystemType;        // 16
  UINT8 Reserved3[7];          // 17
  UINT32 Offered;              // 24  non-zero, with InUse, for a volume that is offered
  CHAR8 Label[124];            // 28
} VOLUME_RECORD;

typedef struct {
  CHAR8 Name[192];             // 0
  UINT64 Size;                 // 192
  UINT16 Year;                 // 200
  UINT8 Month;                 // 202
  UINT8 Day;                   // 203
  UINT8 Hour;                  // 204
  UINT8 Minute;                // 205
  UINT8 Second;                // 206
  UINT8 IsDirectory;           // 207
  UINT16 Matched;              // 208 free for the caller (the comparison marks matched entries here)
  UINT16 Partner;              // 210 free for the caller (the comparison keeps the matched entry's index here)
  UINT32 EntryWord;            // 212
} DIRECTORY_ENTRY;

typedef struct {
  UINT64 Size;                 // 0
  UINT64 Reserved1;            // 8
  UINT64 TimeStamp;            // 16
  UINT32 EntryWord;            // 24
  UINT32 Reserved2;            // 28
  UINT8 Reserved3;             // 32
  UINT8 IsDirectory;           // 33
  UINT8 Reserved4[14];         // 34
} FILE_INFO;

// What the last ReadDirectory of a handle could not put in its array, by
// reason, so that a window can say so instead of showing less in silence.
typedef struct {
  UINT32 Listed;               // 0  records handed out ("." and ".." included)
  UINT32 NameTooLong;          // 4  names longer than the 191 bytes a record holds
  UINT32 NameUnusable;         // 8  names no volume path can reach (holding "\\")
  UINT32 Unreadable;           // 12 entries whose kind or details could not be read: links leading
                               //    nowhere or out of the volume, devices, pipes, I/O errors
  UINT32 OverLimit;            // 16 entries beyond the 65535 records of one listing
  UINT8 FolderUnreadable;      // 20 the folder itself could not be read (ReadDirectory gave null)
  UINT8 Reserved[3];           // 21
} LISTING_NOTES;

typedef struct FILE_DRIVER_PROTOCOL {
  UINT32 Version;                          // 0  9
  UINT32 Reserved;                         // 4
  VOLUME_RECORD Volumes[VOLUME_COUNT];     // 8

  VOID *(EFIAPI *LocateService) (const EFI_GUID *Identifier);
  // Looks up Key in Section (outside any section when Section is null) of the
  // resource file; writes at most 256 bytes with the terminator.
  BOOLEAN (EFIAPI *ReadResourceString) (const CHAR8 *File, const CHAR8 *Section, const CHAR8 *Key, CHAR8 *Buffer);
  // Opens a directory or a file; 0 when it cannot be opened.
  UINT16 (EFIAPI *OpenDirectory) (UINT8 Volume, const CHAR8 *Path);
  VOID (EFIAPI *CloseHandle) (UINT16 Handle);
  // Pool array of entries of an open directory (the caller frees it), or null.
  DIRECTORY_ENTRY *(EFIAPI *ReadDirectory) (UINT16 Handle, UINT16 *Count);
  // Pool buffer holding the whole file (the caller frees it), or null.
  VOID *(EFIAPI *ReadFile) (UINT8 Volume, const CHAR8 *Path, UINTN *Size);
  UINT32 (EFIAPI *ReadAt) (UINT16 Handle, UINT64 Offset, VOID *Buffer, UINT32 Length);
  BOOLEAN (EFIAPI *GetFileInfo) (UINT16 Handle, FILE_INFO *Info);
  BOOLEAN (EFIAPI *CreateDirectory) (UINT8 Volume, const CHAR8 *Path, UINT8 Mode);
  BOOLEAN (EFIAPI *RenamePath) (UINT8 Volume, const CHAR8 *Path, const CHAR8 *NewName);
  VOID (EFIAPI *FlushVolume) (UINT8 Volume);
  // Fills Notes for the handle's last ReadDirectory; FALSE for a handle that
  // is not an open directory or was never read.
  BOOLEAN (EFIAPI *GetListingNotes) (UINT16 Handle, LISTING_NOTES *Notes);
} FILE_DRIVER_PROTOCOL;

static_assert (sizeof (VOLUME_RECORD) == 152);
static_assert (offsetof (VOLUME_RECORD, Kind) == 8 && offsetof (VOLUME_RECORD, Flags) == 10);
static_assert (offsetof (VOLUME_RECORD, FileSystemType) == 16 && offsetof (VOLUME_RECORD, Offered) == 24);
static_assert (offsetof (VOLUME_RECORD, Label) == 28);
static_assert (sizeof (DIRECTORY_ENTRY) == 216);
static_assert (offsetof (DIRECTORY_ENTRY, Size) == 192 && offsetof (DIRECTORY_ENTRY, Year) == 200);
static_assert (offsetof (DIRECTORY_ENTRY, Second) == 206 && offsetof (DIRECTORY_ENTRY, IsDirectory) == 207);
static_assert (offsetof (DIRECTORY_ENTRY, Matched) == 208 && offsetof (DIRECTORY_ENTRY, EntryWord) == 212);
static_assert (sizeof (FILE_INFO) == 48);
static_assert (offsetof (FILE_INFO, TimeStamp) == 16 && offsetof (FILE_INFO, EntryWord) == 24);
static_assert (offsetof (FILE_INFO, IsDirectory) == 33);
static_assert (sizeof (LISTING_NOTES) == 24);
static_assert (offsetof (FILE_DRIVER_PROTOCOL, Version) == 0 && offsetof (FILE_DRIVER_PROTOCOL, Volumes) == 8);
