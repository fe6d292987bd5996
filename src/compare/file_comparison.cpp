// The file comparison window: opens at the remembered rectangle, starts one
// comparison job for its path, shows the job's progress in two text fields and
// its difference lines in a log view, and sums up the totals when it ends.
#include "compare/file_comparison.h"

#include "compare/compare_job.h"
#include "compare/file_comparison_texts.h"
#include "compare/file_comparison_window.h"
#include "core/bindings.h"
#include "core/driver_state.h"
#include "core/paint_forwarder.h"
#include "core/strings.h"
#include "filemanager/file_types.h"
#include "platform/library.h"
#include "util/position_store.h"
#include "util/string_utils.h"

#define FILE_COMPARISON_NAME "FileCmp"_a

// Rectangle of the next comparison window.
static UINT16 gFileCmpX;
static UINT16 gFileCmpY;
static UINT16 gFileCmpWidth;
static UINT16 gFileCmpHeight;

void ResetFileComparisonState () {
  gFileCmpX = 0;
  gFileCmpY = 0;
  gFileCmpWidth = 0;
  gFileCmpHeight = 0;
  ResetResultMenuState ();
}

static UINT16 MinimumWidth () { return (UINT16)(gGuiDriver->GetCharWidth () * 25); }

static UINT16 MinimumHeight () {
  return (UINT16)(gWindowBase->CaptionHeight + (gGuiDriver->GetLineHeight () + 16) * 6 + 10);
}

static UINT8 EFIAPI FileComparisonHandler (WINDOW_HEADER *Header, MESSAGE *Message);
static VOID EFIAPI FileComparisonDestroyed (WINDOW_HEADER *Header);

static VOID AppendLogLine (FILE_COMPARISON_WINDOW *Window, const CHAR8 *Text) {
  if (Window->LogView == nullptr || Text == nullptr) return;
  if (Window->LogView->LineCount >= FILE_COMPARISON_MAX_LINES) return;   // further lines are dropped
  gControlDriver->AppendLine (Window->LogView, 0xFFFF, Text);
  gControlDriver->ShowLine (Window->LogView, 65535);
}

static VOID ChooseRectangle () {
  UINT16 MinWidth = MinimumWidth ();
  UINT16 MinHeight = MinimumHeight ();
  UINT32 Right = (UINT32)gFileCmpX + gFileCmpWidth;
  UINT32 Bottom = (UINT32)gFileCmpY + gFileCmpHeight;
  if (gFileCmpWidth != 0 && gFileCmpHeight != 0 && Right <= gGuiDriver->ScreenWidth &&
      Bottom <= gGuiDriver->ScreenHeight && gFileCmpWidth >= MinWidth && gFileCmpHeight >= MinHeight) {
    return;
  }
  gFileCmpWidth = MinWidth;
  gFileCmpHeight = MinHeight;
  gFileCmpX = 100;
  gFileCmpY = 100;
  if (!LoadWindowPosition (FILE_COMPARISON_NAME, &gFileCmpX, &gFileCmpY, &gFileCmpWidth, &gFileCmpHeight)) {
    gFileCmpWidth = 400;
    gFileCmpHeight = 320;
  }
}

static const CHAR8 *VolumeLabel (UINT8 Volume) {
  if (Volume >= VOLUME_COUNT) return ""_a;
  return gFileDriver->Volumes[Volume].Label;
}

WINDOW_HEADER *OpenFileComparison (UINT8 SourceVolume, UINT8 BackupVolume, const CHAR8 *Path) {
  if (Path == nullptr) Path = ""_a;
  UINT16 CharWidth = gGuiDriver->GetCharWidth ();
  UINT16 LineHeight = gGuiDriver->GetLineHeight ();
  UINT16 Caption = gWindowBase->CaptionHeight;

  ChooseRectangle ();
  UINT16 Width = gFileCmpWidth;
  UINT16 Height = gFileCmpHeight;
  WINDOW_HEADER *Header = gWindowBase->CreateWindow (FILE_COMPARISON_SIZE, gWindowBase->Desktop, FileComparisonHandler,
                                                     PaintForwarder, FileComparisonDestroyed, gFileCmpX, gFileCmpY,
                                                     Width, Height);
  if (Header == nullptr) return nullptr;
  FILE_COMPARISON_WINDOW *Window = (FILE_COMPARISON_WINDOW *)Header;

  UINT16 LineBox = LineHeight + 10;
  UINT16 Y1 = Caption + 6;
  UINT16 Y2 = Caption + 22 + LineHeight;
  UINT16 Y3 = Y2 + 16 + LineHeight;
  UINT16 Y4 = Y3 + 16 + LineHeight;
  Window->LevelField = gWindowBase->CreateTextField (Header, 10, Y1, Width - 20, LineBox, 0, FALSE, Path);
  Window->EntryField = gWindowBase->CreateTextField (Header, 10, Y2, Width - 20, LineBox, 0, TRUE, Path);
  Window->ResultLabel = gWindowBase->CreateTextField (Header, 10, Y3, 0, LineBox, 0, FALSE, FcTextResultLabel);
  gWindowBase->CreateButton (Header, FILE_COMPARISON_PAUSE, GetString ("FileComp"_a, "btPause"_a),
                             (Width - 10) - 5 * CharWidth, Y3, 5 * CharWidth, LineBox, 0);
  Window->LogView = gControlDriver->CreateLogView (Header, 10, Y4, Width - 20, Height - Y4 - 10, 0);

  Header->Flags |= WINDOW_FLAG_HAS_ICON;
  EnsureFileIcons ();
  gWindowBase->SetWindowIcon (Header, gFileIcons.Hex, FALSE);

  CHAR8 Title[512];
  CopyStringN (Title, FcTextTitlePrefix, sizeof (Title));
  AppendStringN (Title, VolumeLabel (SourceVolume), sizeof (Title));
  AppendStringN (Title, FcTextTitleJoint, sizeof (Title));
  AppendStringN (Title, VolumeLabel (BackupVolume), sizeof (Title));
  gWindowBase->SetWindowText (Header, Title);
  CopyStringN (Window->RootPath, Path, sizeof (Window->RootPath));
  Window->SourceVolume = SourceVolume;
  Window->BackupVolume = BackupVolume;
  if (Window->LogView != nullptr) gControlDriver->StartLogView (Window->LogView, Path);
  Window->Snapshot = nullptr;
  Window->Job = StartCompareJob (SourceVolume, BackupVolume, Path, Header);
  if (Window->Job == nullptr) {
    AppendLogLine (Window, FcTextStartFailed);
  } else {
    Window->Job->CompareContents = 0;   // size and time stamp decide, not the bytes
  }
  return Header;
}

static VOID Layout (FILE_COMPARISON_WINDOW *Window, UINT16 NewWidth, UINT16 NewHeight) {
  UINT16 Width = NewWidth > MinimumWidth () ? NewWidth : MinimumWidth ();
  UINT16 Height = NewHeight > MinimumHeight () ? NewHeight : MinimumHeight ();
  Window->Header.Width = Width;
  Window->Header.Height = Height;
  if (Window->LevelField != nullptr) Window->LevelField->Width = Width - 20;
  if (Window->EntryField != nullptr) Window->EntryField->Width = Width - 20;
  CONTROL *Pause = gWindowBase->GetControl (&Window->Header, FILE_COMPARISON_PAUSE);
  if (Pause != nullptr) Pause->X = Width - 10 - Pause->Width;
  if (Window->LogView == nullptr || Window->ResultLabel == nullptr) return;
  MESSAGE Resize;
  ZeroMem (&Resize, sizeof (Resize));
  Resize.Type = MSG_RESIZE;
  Resize.Code = 1;
  Resize.Word2 = Width - 20;
  Resize.Word4 = (Height - 10) - (Window->ResultLabel->Y + Window->ResultLabel->Height + 6);
  Resize.Byte7 = 0;
  gWindowBase->SendMessage (Window->LogView, &Resize);
}

// The job's final report, handled while the job still exists.
static VOID Finish (FILE_COMPARISON_WINDOW *Window) {
  COMPARE_JOB *Job = Window->Job;
  const COMPARE_RESULT *Result = Job->Result;
  CHAR8 Line[64];
  ZeroMem (Line, sizeof (Line));
  AsciiSPrint (Line, sizeof (Line), FcTextFinished, Job->ItemCount);
  AppendLogLine (Window, Line);
  if (Result->AddedCount == 0 && Result->DeletedCount == 0 && Result->ChangedCount == 0) {
    AppendLogLine (Window, FcTextNoDifferences);
  } else {
    const struct {
      const CHAR8 *Format;
      UINT32 Count;
    } Totals[] = {
      {FcTextAdded, Result->AddedCount},
      {FcTextDeleted, Result->DeletedCount},
      {FcTextChanged, Result->ChangedCount},
    };
    for (const auto &Total : Totals) {
      if (Total.Count == 0) continue;
      ZeroMem (Line, sizeof (Line));
      AsciiSPrint (Line, sizeof (Line), Total.Format, Total.Count);
      AppendLogLine (Window, Line);
    }
  }
  if (Window->Snapshot != nullptr) FreeCompareSnapshot (Window->Snapshot);
  Window->Snapshot = SnapshotCompareResult (Job);
  Window->Job = nullptr;   // the job frees itself once this report returns
}

static VOID Notified (FILE_COMPARISON_WINDOW *Window, MESSAGE *Message) {
  if (Window->LogView != nullptr && Message->Pointer8 == (VOID *)Window->LogView) {
    if (Message->Code == NOTIFY_LOG_CONTEXT && Message->Word2 == 7) {
      if (BuildResultMenu (Window, Message->Word4, Message->Word6)) gWindowBase->ShowPopupMenu (gResultMenu);
    }
    return;
  }
  if (Message->Code != NOTIFY_COMPARE) return;
  const CHAR8 *Line = (const CHAR8 *)Message->Pointer8;
  switch (Message->Word2) {
    case PROGRESS_LEVEL:
      if (Line == nullptr || Window->LevelField == nullptr) break;
      gWindowBase->SetWindowText (Window->LevelField, Line);
      gWindowBase->Redraw (Window->LevelField);
      break;
    case PROGRESS_ENTRY:
      if (Line == nullptr || Window->EntryField == nullptr) break;
      gWindowBase->SetWindowText (Window->EntryField, Line);
      gWindowBase->Redraw (Window->EntryField);
      break;
    case PROGRESS_LINE:
      AppendLogLine (Window, Line);
      break;
    default:
      if (Window->Job != nullptr) Finish (Window);
      break;
  }
}

static UINT8 EFIAPI FileComparisonHandler (WINDOW_HEADER *Header, MESSAGE *Message) {
  FILE_COMPARISON_WINDOW *Window = (FILE_COMPARISON_WINDOW *)Header;
  switch (Message->Type) {
    case MSG_SYSCOMMAND:
      // The pause button (33) is shown but not acted on: a job runs to its end.
      return Message->Word2 == SYSCMD_RESTORE || Message->Word2 == SYSCMD_CLOSE ? 1 : 0;
    case MSG_ACTIVATE:
      return 1;
    case MSG_RESIZE:
      Layout (Window, Message->Word2, Message->Word4);
      return 0;
    case MSG_NOTIFY:
      Notified (Window, Message);
      return 0;
    default:
      return 0;
  }
}

static VOID EFIAPI FileComparisonDestroyed (WINDOW_HEADER *Header) {
  FILE_COMPARISON_WINDOW *Window = (FILE_COMPARISON_WINDOW *)Header;
  if (Window->Snapshot != nullptr) {
    FreeCompareSnapshot (Window->Snapshot);
    Window->Snapshot = nullptr;
  }
  if (Window->Job != nullptr) {
    CancelCompareJob (Window->Job);
    Window->Job = nullptr;
  }
  DetachResultMenu (Window);

  UINTN Count = 0;
  for (WINDOW_HEADER *Other = gWindowBase->FindNextWindow (nullptr, FileComparisonHandler);
       Other != nullptr && Count < 2; Other = gWindowBase->FindNextWindow (Other, FileComparisonHandler)) {
    Count++;
  }
  if (Count < 2) {
    SaveWindowPosition (FILE_COMPARISON_NAME, Header->X, Header->Y, Header->Width, Header->Height);
    gFileCmpX = Header->X;
    gFileCmpY = Header->Y;
    gFileCmpWidth = Header->Width;
    gFileCmpHeight = Header->Height;
  }
}
