// The small EDK II-style library the driver uses on every target: the
// firmware tables kept at entry, pool memory through the boot services,
// memory helpers, console printing and 8-bit formatting.
#pragma once

#include <stdarg.h>

#include "platform/uefi.h"

// Firmware tables, set by the driver entry point.
extern EFI_HANDLE gImageHandle;
extern EFI_SYSTEM_TABLE *gST;
extern EFI_BOOT_SERVICES *gBS;
extern EFI_RUNTIME_SERVICES *gRT;

// Pool memory (boot-services data). A refused allocation returns nullptr.
VOID *AllocatePool (UINTN Size);
VOID *AllocateZeroPool (UINTN Size);
VOID FreePool (VOID *Buffer);

VOID *CopyMem (VOID *Destination, const VOID *Source, UINTN Length);
VOID *SetMem (VOID *Buffer, UINTN Length, UINT8 Value);
VOID *ZeroMem (VOID *Buffer, UINTN Length);
INTN CompareMem (const VOID *A, const VOID *B, UINTN Length);

// Formats into an 8-bit buffer of BufferSize bytes (terminator included) and
// returns the characters written without the terminator. Conversions, as in
// EDK II: %d %ld %u %lu %x %lx %X %a %s (UTF-16) %c %r %%, with an optional '0'
// flag, width and 'l' prefix; %x prints upper-case digits. Integer arguments of
// %d/%u/%x are UINT32-sized unless prefixed with 'l' (64-bit).
UINTN AsciiSPrint (CHAR8 *Buffer, UINTN BufferSize, const CHAR8 *Format, ...);
UINTN AsciiVSPrint (CHAR8 *Buffer, UINTN BufferSize, const CHAR8 *Format, va_list Marker);

// Formats a UTF-16 line (at most 320 characters) and writes it to the console.
UINTN Print (const char16_t *Format, ...);
