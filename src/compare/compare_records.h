// Layouts of a comparison job and its result, read and written in place by
// applications; every offset is fixed.
#pragma once

#include "platform/uefi.h"
#include "services/file_driver.h"
#include "services/window_records.h"

#define COMPARE_JOB_SLOTS      4
#define COMPARE_MAX_LEVELS     32
#define COMPARE_NO_LEVEL       32
#define COMPARE_MAX_ENTRIES    1024
#define COMPARE_TEXT_SIZE      0x40000
#define COMPARE_CHUNK_SIZE     65536
#define COMPARE_MAX_ROOT_PATH  480
#define COMPARE_MAX_PATH       511   // longest path of a level; deeper folders are passed over

// Progress kinds.
#define PROGRESS_LEVEL    1
#define PROGRESS_ENTRY    2
#define PROGRESS_LINE     3
#define PROGRESS_FINISHED 0xFFFF

// Difference codes.
#define DIFF_OPEN_FAILED         1
#define DIFF_BACKUP_OPEN_FAILED  2
#define DIFF_INFO_FAILED         3
#define DIFF_BACKUP_INFO_FAILED  4
#define DIFF_TYPE_DIFFERS        5
#define DIFF_SOURCE_EMPTY        6
#define DIFF_BACKUP_EMPTY        7
#define DIFF_READ_ERROR          8
#define DIFF_DELETED             9
#define DIFF_NEW                 10
#define DIFF_CHANGED             11

// Level states.
#define LEVEL_STATE_PROCESSING 5
#define LEVEL_STATE_FAILED     255

#pragma pack(push, 1)
typedef struct {
  CHAR8 Path[512];             // 0
  UINT16 Cursor;               // 512
  UINT8 ListingChecked;        // 514 the current file was found equal by its listed size and time
  UINT8 Reserved1[5];          // 515
  DIRECTORY_ENTRY *SourceEntries;  // 520
  DIRECTORY_ENTRY *BackupEntries;  // 528
  UINT16 SourceCount;          // 536
  UINT16 BackupCount;          // 538
  UINT16 SourceHandle;         // 540
  UINT16 BackupHandle;         // 542
  UINT64 FileSize;             // 544
  UINT64 FileOffset;           // 552
  UINT8 State;                 // 560
  UINT8 HeadingAdded;          // 561
  UINT16 HeadingIndex;         // 562
  UINT8 Reserved2[4];          // 564
} COMPARE_LEVEL;

typedef struct {
  CHAR8 *Name;                 // 0
  UINT8 IsDirectory;           // 8
  UINT8 Code;                  // 9
  UINT8 IsHeading;             // 10
  UINT8 Reserved1;             // 11
  UINT16 Link;                 // 12
  UINT16 Reserved2;            // 14
} RESULT_ENTRY;

typedef struct {
  UINT32 TotalCount;           // 0
  UINT32 DeletedCount;         // 4
  UINT32 AddedCount;           // 8
  UINT32 ChangedCount;         // 12
  CHAR8 *Text;                 // 16
  UINT32 TextUsed;             // 24
  UINT16 EntryCount;           // 28
  UINT8 Reserved[482];         // 30
  RESULT_ENTRY Entries[COMPARE_MAX_ENTRIES];  // 512
} COMPARE_RESULT;

struct COMPARE_JOB;
typedef VOID (EFIAPI *COMPARE_PROGRESS_CALLBACK) (COMPARE_JOB *Job, CHAR8 *Line, UINT32 ItemCount, BOOLEAN Finished);

typedef struct COMPARE_JOB {
  CHAR8 RootPath[512];         // 0
  UINT8 SourceVolume;          // 512
  UINT8 BackupVolume;          // 513
  UINT8 Done;                  // 514
  UINT8 CompareContents;       // 515
  UINT8 Reserved1[4];          // 516
  COMPARE_LEVEL Levels[COMPARE_MAX_LEVELS];   // 520
  UINT16 Depth;                // 18696
  UINT8 Reserved2[2];          // 18698
  UINT32 ItemCount;            // 18700
  WINDOW_HEADER *NotifyWindow; // 18704
  COMPARE_PROGRESS_CALLBACK NotifyCallback;   // 18712
  UINT8 *SourceBuffer;         // 18720
  UINT8 *BackupBuffer;         // 18728
  COMPARE_RESULT *Result;      // 18736
} COMPARE_JOB;
#pragma pack(pop)

static_assert (sizeof (COMPARE_LEVEL) == 568);
static_assert (offsetof (COMPARE_LEVEL, Cursor) == 512 && offsetof (COMPARE_LEVEL, SourceEntries) == 520);
static_assert (offsetof (COMPARE_LEVEL, ListingChecked) == 514);
static_assert (offsetof (COMPARE_LEVEL, BackupEntries) == 528 && offsetof (COMPARE_LEVEL, SourceCount) == 536);
static_assert (offsetof (COMPARE_LEVEL, BackupCount) == 538 && offsetof (COMPARE_LEVEL, SourceHandle) == 540);
static_assert (offsetof (COMPARE_LEVEL, BackupHandle) == 542 && offsetof (COMPARE_LEVEL, FileSize) == 544);
static_assert (offsetof (COMPARE_LEVEL, FileOffset) == 552 && offsetof (COMPARE_LEVEL, State) == 560);
static_assert (offsetof (COMPARE_LEVEL, HeadingAdded) == 561 && offsetof (COMPARE_LEVEL, HeadingIndex) == 562);
static_assert (sizeof (RESULT_ENTRY) == 16);
static_assert (offsetof (RESULT_ENTRY, IsDirectory) == 8 && offsetof (RESULT_ENTRY, Code) == 9);
static_assert (offsetof (RESULT_ENTRY, IsHeading) == 10 && offsetof (RESULT_ENTRY, Link) == 12);
static_assert (sizeof (COMPARE_RESULT) == 16896);
static_assert (offsetof (COMPARE_RESULT, DeletedCount) == 4 && offsetof (COMPARE_RESULT, AddedCount) == 8);
static_assert (offsetof (COMPARE_RESULT, ChangedCount) == 12 && offsetof (COMPARE_RESULT, Text) == 16);
static_assert (offsetof (COMPARE_RESULT, TextUsed) == 24 && offsetof (COMPARE_RESULT, EntryCount) == 28);
static_assert (offsetof (COMPARE_RESULT, Entries) == 512);
static_assert (sizeof (COMPARE_JOB) == 18744);
static_assert (offsetof (COMPARE_JOB, SourceVolume) == 512 && offsetof (COMPARE_JOB, BackupVolume) == 513);
static_assert (offsetof (COMPARE_JOB, Done) == 514 && offsetof (COMPARE_JOB, CompareContents) == 515);
static_assert (offsetof (COMPARE_JOB, Levels) == 520 && offsetof (COMPARE_JOB, Depth) == 18696);
static_assert (offsetof (COMPARE_JOB, ItemCount) == 18700 && offsetof (COMPARE_JOB, NotifyWindow) == 18704);
static_assert (offsetof (COMPARE_JOB, NotifyCallback) == 18712 && offsetof (COMPARE_JOB, SourceBuffer) == 18720);
static_assert (offsetof (COMPARE_JOB, BackupBuffer) == 18728 && offsetof (COMPARE_JOB, Result) == 18736);
