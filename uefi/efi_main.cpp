// The image entry of surveyor.efi. gnu-efi's start code relocates the image
// and calls efi_main with the host calling convention; the driver's own entry
// point takes it from there. The compiler may emit calls to the four memory
// functions below for copies and fills of records; nothing else of a C
// library is linked.
#include <stddef.h>

#include "core/surveyor_protocol.h"

extern "C" EFI_STATUS efi_main (EFI_HANDLE ImageHandle, EFI_SYSTEM_TABLE *SystemTable) {
  return SurveyorEntryPoint (ImageHandle, SystemTable);
}

extern "C" void *memcpy (void *Destination, const void *Source, size_t Length) {
  unsigned char *D = static_cast<unsigned char *> (Destination);
  const unsigned char *S = static_cast<const unsigned char *> (Source);
  for (size_t I = 0; I < Length; I++) D[I] = S[I];
  return Destination;
}

extern "C" void *memmove (void *Destination, const void *Source, size_t Length) {
  unsigned char *D = static_cast<unsigned char *> (Destination);
  const unsigned char *S = static_cast<const unsigned char *> (Source);
  if (D < S) {
    for (size_t I = 0; I < Length; I++) D[I] = S[I];
  } else {
    for (size_t I = Length; I > 0; I--) D[I - 1] = S[I - 1];
  }
  return Destination;
}

extern "C" void *memset (void *Buffer, int Value, size_t Length) {
  unsigned char *B = static_cast<unsigned char *> (Buffer);
  for (size_t I = 0; I < Length; I++) B[I] = static_cast<unsigned char> (Value);
  return Buffer;
}

extern "C" int memcmp (const void *A, const void *B, size_t Length) {
  const unsigned char *X = static_cast<const unsigned char *> (A);
  const unsigned char *Y = static_cast<const unsigned char *> (B);
  for (size_t I = 0; I < Length; I++)
    if (X[I] != Y[I]) return X[I] < Y[I] ? -1 : 1;
  return 0;
}
