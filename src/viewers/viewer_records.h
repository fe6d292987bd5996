// Private records of the viewer windows (each follows the window base's
// 272-byte header) and the viewers' inner operations, shared with tests.
#pragma once

#include "platform/uefi.h"
#include "services/window_records.h"

// Title of the image and icon viewers: the volume label, two spaces and the
// path, cut so that it keeps within 127 characters.
#define VIEWER_TITLE_SIZE 128
VOID SetViewerTitle (WINDOW_HEADER *Window, UINT8 VolumeIndex, const CHAR8 *Path);

// ------------------------------------------------------------ hex viewer
#define HEX_VIEWER_SIZE    840
#define HEX_PATH_SIZE      512
#define HEX_PAGE_SIZE      4096
#define HEX_BYTES_PER_LINE 16

// Button ids; a button reports its id as the system command code.
#define HEX_BUTTON_PAGE_UP          33
#define HEX_BUTTON_PAGE_DOWN        34
#define HEX_BUTTON_BACK_NON_ZERO    35   // "!0<<"
#define HEX_BUTTON_FORWARD_NON_ZERO 36   // ">>!0"

typedef struct {
  WINDOW_HEADER Header;          // 0
  UINT8 VolumeIndex;             // 272
  CHAR8 Path[HEX_PATH_SIZE];     // 273
  LIST_CONTROL *List;            // 792
  UINT16 FileHandle;             // 800  0 when none
  UINT8 *PageBuffer;             // 808  HEX_PAGE_SIZE bytes of the current page
  UINT64 FileSize;               // 816
  CONTROL *PageField;            // 824
  UINT32 PageCount;              // 832  (FileSize + 4095) / 4096
  UINT32 CurrentPage;            // 836  counted from 0
} HEX_VIEWER;

static_assert (sizeof (HEX_VIEWER) <= HEX_VIEWER_SIZE);
static_assert (offsetof (HEX_VIEWER, Path) == 273 && offsetof (HEX_VIEWER, List) == 792);
static_assert (offsetof (HEX_VIEWER, CurrentPage) == 836);

// Reads the current page and rewrites the page field and every cell of the
// 256 lines. False (and nothing changed on screen) when the read comes up short.
BOOLEAN ShowHexPage (HEX_VIEWER *Viewer);

// ---------------------------------------------------------- image viewer
#define IMAGE_VIEWER_SIZE 296
#define IMAGE_NAME_LIMIT  128   // names of this length or more are refused

typedef struct {
  WINDOW_HEADER Header;          // 0
  UINT16 ImageWidth;             // 272
  UINT16 ImageHeight;            // 274
  UINT32 *Pixels;                // 280  pool, owned by the window
  UINT16 BitsPerPixel;           // 288  32 selects drawing with alpha
} IMAGE_VIEWER;

static_assert (sizeof (IMAGE_VIEWER) <= IMAGE_VIEWER_SIZE);

UINT32 *LoadBmpImage (UINT8 Volume, const CHAR8 *Path, UINT16 *Width, UINT16 *Height, UINT16 *BitsPerPixel);
// Pictures wider or taller than 65535 pixels are refused.
UINT32 *LoadJpegImage (UINT8 Volume, const CHAR8 *Path, UINT16 *Width, UINT16 *Height);
VOID DrawImage (IMAGE_VIEWER *Viewer);

// ----------------------------------------------------------- icon viewer
#define ICON_VIEWER_SIZE   328
#define ICON_VIEWER_SLOTS  8
#define ICON_VIEWER_SIZE_PX 32

typedef struct {
  UINT16 Width;
  UINT16 Height;
  UINT8 IconId;
} ICON_SLOT;

typedef struct {
  WINDOW_HEADER Header;                  // 0
  ICON_SLOT Icons[ICON_VIEWER_SLOTS];    // 272
  UINT8 IconCount;                       // 320
} ICON_VIEWER;

static_assert (sizeof (ICON_SLOT) == 6);
static_assert (sizeof (ICON_VIEWER) <= ICON_VIEWER_SIZE);
