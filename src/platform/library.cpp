#include "platform/library.h"

EFI_HANDLE gImageHandle;
EFI_SYSTEM_TABLE *gST;
EFI_BOOT_SERVICES *gBS;
EFI_RUNTIME_SERVICES *gRT;

VOID *AllocatePool (UINTN Size) {
  VOID *Buffer = nullptr;
  if (gBS == nullptr || EFI_ERROR (gBS->AllocatePool (EfiBootServicesData, Size, &Buffer))) return nullptr;
  return Buffer;
}

VOID *AllocateZeroPool (UINTN Size) {
  VOID *Buffer = AllocatePool (Size);
  if (Buffer != nullptr) ZeroMem (Buffer, Size);
  return Buffer;
}

VOID FreePool (VOID *Buffer) {
  if (Buffer != nullptr) gBS->FreePool (Buffer);
}

// The compiler's own copies and fills: the C library's on the host, the
// image's memmove and memset in firmware.
VOID *CopyMem (VOID *Destination, const VOID *Source, UINTN Length) {
  return __builtin_memmove (Destination, Source, Length);
}

VOID *SetMem (VOID *Buffer, UINTN Length, UINT8 Value) { return __builtin_memset (Buffer, Value, Length); }

VOID *ZeroMem (VOID *Buffer, UINTN Length) { return SetMem (Buffer, Length, 0); }

// Words are read through this type so that unaligned addresses and any
// stored type are allowed (no alignment or aliasing assumptions).
typedef UINTN __attribute__ ((may_alias, aligned (1))) UNALIGNED_WORD;

INTN CompareMem (const VOID *A, const VOID *B, UINTN Length) {
  const UINT8 *X = static_cast<const UINT8 *> (A);
  const UINT8 *Y = static_cast<const UINT8 *> (B);
  UINTN I = 0;
  // A word at a time up to the first word that differs; its bytes, and the
  // tail shorter than a word, are then compared one by one.
  while (Length - I >= sizeof (UINTN) &&
         *reinterpret_cast<const UNALIGNED_WORD *> (X + I) == *reinterpret_cast<const UNALIGNED_WORD *> (Y + I))
    I += sizeof (UINTN);
  for (; I < Length; I++)
    if (X[I] != Y[I]) return (INTN)X[I] - (INTN)Y[I];
  return 0;
}
