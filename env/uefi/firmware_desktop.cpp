#include "env/uefi/firmware_desktop.h"

#include <algorithm>

#include "env/uefi/uefi_globals.h"

namespace env {

namespace {

constexpr UINT64 kClockPeriod100ns = 100000;   // 10 ms
constexpr uint64_t kClockPeriodMs = 10;
volatile uint64_t gClockTicks = 0;

VOID EFIAPI CountTick (EFI_EVENT, VOID *) { gClockTicks = gClockTicks + 1; }

EFI_GRAPHICS_OUTPUT_PROTOCOL *FindGop () {
  EFI_GUID Guid = EFI_GRAPHICS_OUTPUT_PROTOCOL_GUID;
  EFI_GRAPHICS_OUTPUT_PROTOCOL *Gop = nullptr;
  // The console's own screen first, else any.
  if (gEnvSystemTable->ConsoleOutHandle != nullptr &&
      !EFI_ERROR (gEnvBootServices->HandleProtocol (gEnvSystemTable->ConsoleOutHandle, &Guid,
                                                    reinterpret_cast<VOID **> (&Gop))) &&
      Gop != nullptr)
    return Gop;
  if (EFI_ERROR (gEnvBootServices->LocateProtocol (&Guid, nullptr, reinterpret_cast<VOID **> (&Gop)))) return nullptr;
  return Gop;
}

// Whether a device other than the console's splitter carries Guid (the
// console offers a pointer even when no mouse is there).
bool DeviceCarries (EFI_GUID Guid) {
  UINTN Count = 0;
  EFI_HANDLE *Handles = nullptr;
  if (EFI_ERROR (gEnvBootServices->LocateHandleBuffer (ByProtocol, &Guid, nullptr, &Count, &Handles))) return false;
  bool Found = false;
  for (UINTN I = 0; I < Count; I++)
    if (Handles[I] != gEnvSystemTable->ConsoleInHandle) Found = true;
  gEnvBootServices->FreePool (Handles);
  return Found;
}

// The console's protocol Guid, else the first device's; null when none.
template <typename Protocol>
Protocol *ConsoleProtocol (EFI_GUID Guid) {
  Protocol *Found = nullptr;
  if (gEnvSystemTable->ConsoleInHandle != nullptr &&
      !EFI_ERROR (gEnvBootServices->HandleProtocol (gEnvSystemTable->ConsoleInHandle, &Guid,
                                                    reinterpret_cast<VOID **> (&Found))))
    return Found;
  if (EFI_ERROR (gEnvBootServices->LocateProtocol (&Guid, nullptr, reinterpret_cast<VOID **> (&Found)))) return nullptr;
  return Found;
}

// An arrow, 12 x 19: 'X' black, '.' white, ' ' see-through.
const char *const kCursor[] = {
    "X           ", "XX          ", "X.X         ", "X..X        ", "X...X       ", "X....X      ", "X.....X     ",
    "X......X    ", "X.......X   ", "X........X  ", "X.........X ", "X......XXXXX", "X...X..X    ", "X..XX..X    ",
    "X.X  X..X   ", "XX   X..X   ", "X     X..X  ", "      X..X  ", "       XX   ",
};
constexpr int kCursorWidth = 12, kCursorHeight = 19;

}  // namespace

bool ScreenSize (uint16_t &Width, uint16_t &Height) {
  EFI_GRAPHICS_OUTPUT_PROTOCOL *Gop = FindGop ();
  if (Gop == nullptr || Gop->Mode == nullptr || Gop->Mode->Info == nullptr) return false;
  Width = static_cast<uint16_t> (std::min<UINT32> (Gop->Mode->Info->HorizontalResolution, 0xFFFF));
  Height = static_cast<uint16_t> (std::min<UINT32> (Gop->Mode->Info->VerticalResolution, 0xFFFF));
  return Width > 0 && Height > 0;
}

FirmwareDesktop::FirmwareDesktop (const uint32_t *Frame, int Width, int Height)
    : Frame_ (Frame), Width_ (Width), Height_ (Height), Tracker_ (Width, Height) {
  Gop_ = FindGop ();
  KeysEx_ = ConsoleProtocol<EFI_SIMPLE_TEXT_INPUT_EX_PROTOCOL> (EFI_SIMPLE_TEXT_INPUT_EX_PROTOCOL_GUID);
  if (KeysEx_ == nullptr) Keys_ = gEnvSystemTable->ConIn;
  if (DeviceCarries (EFI_SIMPLE_POINTER_PROTOCOL_GUID))
    Pointer_ = ConsoleProtocol<EFI_SIMPLE_POINTER_PROTOCOL> (EFI_SIMPLE_POINTER_PROTOCOL_GUID);
  if (DeviceCarries (EFI_ABSOLUTE_POINTER_PROTOCOL_GUID))
    Absolute_ = ConsoleProtocol<EFI_ABSOLUTE_POINTER_PROTOCOL> (EFI_ABSOLUTE_POINTER_PROTOCOL_GUID);
  if (EFI_ERROR (gEnvBootServices->CreateEvent (EVT_TIMER | EVT_NOTIFY_SIGNAL, TPL_CALLBACK, CountTick, nullptr,
                                                &Clock_)) ||
      EFI_ERROR (gEnvBootServices->SetTimer (Clock_, TimerPeriodic, kClockPeriod100ns)))
    Clock_ = nullptr;
  if (EFI_ERROR (gEnvBootServices->CreateEvent (EVT_TIMER, 0, nullptr, nullptr, &Timeout_))) Timeout_ = nullptr;
  // The time-stamp counter's rate, over 20 ms of the firmware's Stall.
  TscStart_ = __builtin_ia32_rdtsc ();
  gEnvBootServices->Stall (20000);
  TscPerMicrosecond_ = (__builtin_ia32_rdtsc () - TscStart_) / 20000;
  if (Pointer_ != nullptr) Pointer_->Reset (Pointer_, FALSE);
  if (Absolute_ != nullptr) Absolute_->Reset (Absolute_, FALSE);
}

FirmwareDesktop::~FirmwareDesktop () {
  if (Clock_ != nullptr) gEnvBootServices->CloseEvent (Clock_);
  if (Timeout_ != nullptr) gEnvBootServices->CloseEvent (Timeout_);
}

uint64_t FirmwareDesktop::NowMs () { return gClockTicks * kClockPeriodMs; }

uint64_t FirmwareDesktop::NowMicroseconds () {
  if (TscPerMicrosecond_ == 0) return NowMs () * 1000;
  return (__builtin_ia32_rdtsc () - TscStart_) / TscPerMicrosecond_;
}

void FirmwareDesktop::Poll () {
  if (Hook_ != nullptr) Hook_ ();
  if (KeysEx_ != nullptr) {
    EFI_KEY_DATA Key;
    while (!EFI_ERROR (KeysEx_->ReadKeyStrokeEx (KeysEx_, &Key))) {
      InputEvent E;
      if (KeyFromFirmware (Key, E)) Pending_.push_back (E);
    }
  } else if (Keys_ != nullptr) {
    EFI_KEY_DATA Key {};
    while (!EFI_ERROR (Keys_->ReadKeyStroke (Keys_, &Key.Key))) {
      InputEvent E;
      if (KeyFromFirmware (Key, E)) Pending_.push_back (E);
    }
  }
  size_t Before = Pending_.size ();
  if (Pointer_ != nullptr) {
    EFI_SIMPLE_POINTER_STATE State;
    if (!EFI_ERROR (Pointer_->GetState (Pointer_, &State)))
      Tracker_.Relative (State, *Pointer_->Mode, NowMs (), Pending_);
  }
  if (Absolute_ != nullptr) {
    EFI_ABSOLUTE_POINTER_STATE State;
    if (!EFI_ERROR (Absolute_->GetState (Absolute_, &State)))
      Tracker_.Absolute (State, *Absolute_->Mode, NowMs (), Pending_);
  }
  if (Pending_.size () != Before) {
    HideCursor ();
    ShowCursor ();
  }
}

bool FirmwareDesktop::Wait (unsigned TimeoutMs, InputEvent &Event) {
  if (Pending_.empty ()) Poll ();
  if (Pending_.empty () && TimeoutMs > 0 && Timeout_ != nullptr) {
    EFI_EVENT Events[4];
    UINTN Count = 0;
    if (KeysEx_ != nullptr) Events[Count++] = KeysEx_->WaitForKeyEx;
    else if (Keys_ != nullptr) Events[Count++] = Keys_->WaitForKey;
    if (Pointer_ != nullptr) Events[Count++] = Pointer_->WaitForInput;
    if (Absolute_ != nullptr) Events[Count++] = Absolute_->WaitForInput;
    gEnvBootServices->SetTimer (Timeout_, TimerRelative, static_cast<UINT64> (TimeoutMs) * 10000);
    Events[Count++] = Timeout_;
    UINTN Index = 0;
    gEnvBootServices->WaitForEvent (Count, Events, &Index);
    gEnvBootServices->SetTimer (Timeout_, TimerCancel, 0);
    Poll ();
  }
  if (Pending_.empty ()) return false;
  Event = Pending_.front ();
  Pending_.erase (Pending_.begin ());
  return true;
}

void FirmwareDesktop::Flush (int X, int Y, int Width, int Height, const uint32_t *Pixels, int Stride) {
  if (Gop_ == nullptr || Width <= 0 || Height <= 0) return;
  // The framebuffer's 0x00RRGGBB words are Blt pixels (blue, green, red, reserved) in memory.
  Gop_->Blt (Gop_, reinterpret_cast<EFI_GRAPHICS_OUTPUT_BLT_PIXEL *> (const_cast<uint32_t *> (Pixels)),
             EfiBltBufferToVideo, 0, 0, static_cast<UINTN> (X), static_cast<UINTN> (Y), static_cast<UINTN> (Width),
             static_cast<UINTN> (Height), static_cast<UINTN> (Stride) * 4);
  if (CursorShown_ && X < CursorX_ + kCursorWidth && CursorX_ < X + Width && Y < CursorY_ + kCursorHeight &&
      CursorY_ < Y + Height)
    CursorShown_ = false;   // painted over: shown again when the frame is done
}

void FirmwareDesktop::FrameDone () { ShowCursor (); }

void FirmwareDesktop::FlushAll () {
  bool Shown = CursorShown_;
  Flush (0, 0, Width_, Height_, Frame_, Width_);
  if (Shown) ShowCursor ();
}

// The cursor is drawn only when the firmware has a pointer: keyboard users
// see none.
void FirmwareDesktop::ShowCursor () {
  if (Gop_ == nullptr || (Pointer_ == nullptr && Absolute_ == nullptr) || CursorShown_) return;
  CursorX_ = Tracker_.X (), CursorY_ = Tracker_.Y ();
  int W = std::min (kCursorWidth, Width_ - CursorX_), H = std::min (kCursorHeight, Height_ - CursorY_);
  if (W <= 0 || H <= 0) return;
  uint32_t Image[kCursorWidth * kCursorHeight];
  for (int Row = 0; Row < H; Row++)
    for (int Col = 0; Col < W; Col++) {
      char C = kCursor[Row][Col];
      uint32_t Under = Frame_[static_cast<size_t> (CursorY_ + Row) * Width_ + CursorX_ + Col];
      Image[Row * kCursorWidth + Col] = C == 'X' ? 0x000000 : C == '.' ? 0xFFFFFF : Under;
    }
  Gop_->Blt (Gop_, reinterpret_cast<EFI_GRAPHICS_OUTPUT_BLT_PIXEL *> (Image), EfiBltBufferToVideo, 0, 0,
             static_cast<UINTN> (CursorX_), static_cast<UINTN> (CursorY_), static_cast<UINTN> (W),
             static_cast<UINTN> (H), kCursorWidth * 4);
  CursorShown_ = true;
}

void FirmwareDesktop::HideCursor () {
  if (!CursorShown_) return;
  int W = std::min (kCursorWidth, Width_ - CursorX_), H = std::min (kCursorHeight, Height_ - CursorY_);
  CursorShown_ = false;
  Flush (CursorX_, CursorY_, W, H, Frame_ + static_cast<size_t> (CursorY_) * Width_ + CursorX_, Width_);
}

}  // namespace env
