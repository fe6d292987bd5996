// Volume paths ("\dir\file", 8-bit) as components.
//
// Rules: components are separated by "\"; empty components (a doubled or a
// trailing "\") and "." are ignored; ".." goes up one component and is
// refused when it would leave the volume; a path of 512 bytes or more, a
// component holding "/" and a null path are refused; a path without a
// leading "\" is taken from the volume's root as well.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace env {

constexpr size_t kVolumePathMax = 511;   // longest accepted path, in bytes

// The components of Path (none for the root); false when refused.
bool SplitVolumePath (const char *Path, std::vector<std::string> &Components);

}  // namespace env
