// UEFI types for the driver and its environment, taken from gnu-efi's headers.
// GNU_EFI_USE_MS_ABI (set by the build) makes EFIAPI the Microsoft x64 calling
// convention on every target, so tables can be called across images.
#pragma once

#ifndef GNU_EFI_USE_MS_ABI
#define GNU_EFI_USE_MS_ABI 1
#endif

extern "C" {
#include <efi.h>
}

#include <stddef.h>
#include <stdint.h>

// Text literals as 8-bit CHAR8 strings: "File Menu"_a.
inline const CHAR8 *operator""_a (const char *Text, size_t) {
  return reinterpret_cast<const CHAR8 *> (Text);
}
