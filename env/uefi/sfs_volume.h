// A Simple File System volume of the firmware as a volume's file system
// (FAT, in practice): objects are EFI_FILE_PROTOCOL handles, and every later
// operation goes through the handle it opened.
//
// Names: the volume's UTF-16 names are shown as GBK (the driver's 8-bit
// texts); a name with a character GBK cannot write is left out of listings
// (counted as unusable). FAT keeps no links: a copied link becomes a small
// file holding its target. Entry words are a hash of the entry's path
// (FAT has no numbers of its own that stay with a file); identities are
// unknown, so removals check the kind only. FAT compares names without case,
// which the file driver also does for volumes of a FAT type.
#pragma once

#include <memory>
#include <string>

#include "env/files/volume_fs.h"
#include "platform/uefi.h"

namespace env {

struct SfsVolumeInfo {
  std::string Label;        // GBK; empty when the volume has none
  bool ReadOnly = false;    // the medium or the file system says so
};

// Null when the handle carries no Simple File System or it cannot be opened.
// RunTag names this boot (temporary names of pastes).
std::unique_ptr<VolumeFs> OpenSfsVolume (EFI_HANDLE Device, const std::string &RunTag, SfsVolumeInfo *Info);

// UTF-16 and the volume's 8-bit (GBK) names; false when a character has no
// counterpart.
bool Utf16ToGbk (const CHAR16 *Text, std::string &Out);
bool GbkToUtf16 (const std::string &Text, std::u16string &Out);

}  // namespace env
