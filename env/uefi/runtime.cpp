// The C++ runtime the environment needs in firmware, in one place.
//
// The images are linked with --no-undefined and without a C library; the
// portable code uses libstdc++'s containers (compiled without exceptions and
// RTTI, with gcc's libstdc++.a for the out-of-line tree and hash helpers).
// What those and the compiler still ask for is here:
// - the memory and string functions the compiler and the containers call
//   (and gcc's libgcc.a for its own helpers);
// - operator new and delete over the boot services' pool. The containers
//   cannot report a refused allocation without exceptions, so one is fatal:
//   a console line, then the machine waits for a reset (the driver's own
//   allocations go through the pool directly and fail softly);
// - the errors libstdc++ raises (length, bad function call, ...): fatal the
//   same way, as they mean a defect;
// - __cxa_atexit and __dso_handle: destructors of static objects are never
//   run (boot services end with the firmware); the gnu-efi start code runs
//   no static constructors either, and the build checks that the images
//   have none (no .init_array section).
#include <stddef.h>
#include <stdint.h>

#include <new>

#include "env/uefi/uefi_globals.h"

namespace {

void Say (const char16_t *Text) {
  gEnvSystemTable->ConOut->OutputString (gEnvSystemTable->ConOut,
                                         reinterpret_cast<CHAR16 *> (const_cast<char16_t *> (Text)));
}

[[noreturn]] void Fatal (const char16_t *What) {
  if (gEnvSystemTable != nullptr && gEnvSystemTable->ConOut != nullptr) {
    Say (u"Surveyor: ");
    Say (What);
    Say (u"\r\n");
  }
  for (;;) __asm__ volatile ("hlt");
}

void *Allocate (size_t Size) {
  VOID *Block = nullptr;
  if (gEnvBootServices == nullptr ||
      EFI_ERROR (gEnvBootServices->AllocatePool (EfiBootServicesData, Size == 0 ? 1 : Size, &Block)))
    Fatal (u"out of memory");
  return Block;
}

void Release (void *Block) {
  if (Block != nullptr && gEnvBootServices != nullptr) gEnvBootServices->FreePool (Block);
}

}  // namespace

extern "C" {

void *memcpy (void *Destination, const void *Source, size_t Length) {
  auto *D = static_cast<unsigned char *> (Destination);
  auto *S = static_cast<const unsigned char *> (Source);
  while (Length >= 8) {
    uint64_t Word;
    __builtin_memcpy (&Word, S, 8);
    __builtin_memcpy (D, &Word, 8);
    D += 8, S += 8, Length -= 8;
  }
  while (Length--) *D++ = *S++;
  return Destination;
}

void *memmove (void *Destination, const void *Source, size_t Length) {
  auto *D = static_cast<unsigned char *> (Destination);
  auto *S = static_cast<const unsigned char *> (Source);
  if (D == S || Length == 0) return Destination;
  if (D < S || D >= S + Length) return memcpy (Destination, Source, Length);
  while (Length--) D[Length] = S[Length];
  return Destination;
}

void *memset (void *Buffer, int Value, size_t Length) {
  auto *B = static_cast<unsigned char *> (Buffer);
  uint64_t Word = 0x0101010101010101ull * static_cast<unsigned char> (Value);
  while (Length >= 8) {
    __builtin_memcpy (B, &Word, 8);
    B += 8, Length -= 8;
  }
  while (Length--) *B++ = static_cast<unsigned char> (Value);
  return Buffer;
}

int memcmp (const void *A, const void *B, size_t Length) {
  auto *X = static_cast<const unsigned char *> (A);
  auto *Y = static_cast<const unsigned char *> (B);
  for (size_t I = 0; I < Length; I++)
    if (X[I] != Y[I]) return X[I] < Y[I] ? -1 : 1;
  return 0;
}

void *memchr (const void *Buffer, int Value, size_t Length) {
  auto *B = static_cast<const unsigned char *> (Buffer);
  for (size_t I = 0; I < Length; I++)
    if (B[I] == static_cast<unsigned char> (Value)) return const_cast<unsigned char *> (B + I);
  return nullptr;
}

size_t strlen (const char *Text) {
  size_t N = 0;
  while (Text[N] != 0) N++;
  return N;
}

size_t strnlen (const char *Text, size_t Max) {
  size_t N = 0;
  while (N < Max && Text[N] != 0) N++;
  return N;
}

int strcmp (const char *A, const char *B) {
  while (*A != 0 && *A == *B) A++, B++;
  return static_cast<unsigned char> (*A) - static_cast<unsigned char> (*B);
}

int strncmp (const char *A, const char *B, size_t N) {
  for (; N > 0; N--, A++, B++) {
    if (*A != *B) return static_cast<unsigned char> (*A) - static_cast<unsigned char> (*B);
    if (*A == 0) return 0;
  }
  return 0;
}

char *strchr (const char *Text, int Ch) {
  for (;; Text++) {
    if (*Text == static_cast<char> (Ch)) return const_cast<char *> (Text);
    if (*Text == 0) return nullptr;
  }
}

int abs (int Value) { return Value < 0 ? -Value : Value; }

// Firmware runs one thread: shared pointers count without atomic operations.
char __libc_single_threaded = 1;

void *__dso_handle = &__dso_handle;

int __cxa_atexit (void (*)(void *), void *, void *) { return 0; }

void __cxa_pure_virtual () { Fatal (u"pure virtual call"); }

void abort () { Fatal (u"abort"); }

}  // extern "C"

void *operator new (size_t Size) { return Allocate (Size); }
void *operator new[] (size_t Size) { return Allocate (Size); }
void *operator new (size_t Size, const std::nothrow_t &) noexcept { return Allocate (Size); }
void operator delete (void *Block) noexcept { Release (Block); }
void operator delete[] (void *Block) noexcept { Release (Block); }
void operator delete (void *Block, size_t) noexcept { Release (Block); }
void operator delete[] (void *Block, size_t) noexcept { Release (Block); }

namespace std {
void __throw_bad_alloc () { Fatal (u"out of memory"); }
void __throw_bad_array_new_length () { Fatal (u"bad array length"); }
void __throw_length_error (const char *) { Fatal (u"length error"); }
void __throw_logic_error (const char *) { Fatal (u"logic error"); }
void __throw_out_of_range (const char *) { Fatal (u"out of range"); }
void __throw_out_of_range_fmt (const char *, ...) { Fatal (u"out of range"); }
void __throw_invalid_argument (const char *) { Fatal (u"invalid argument"); }
void __throw_bad_function_call () { Fatal (u"bad function call"); }
}  // namespace std
