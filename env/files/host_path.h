// Turning a volume path ("\dir\file", 8-bit) into a host path confined to
// the volume's folder.
//
// Rules: components are separated by "\"; empty components (a doubled or a
// trailing "\") and "." are ignored; ".." goes up one component and is
// refused when it would leave the volume; a path of 512 bytes or more, a
// component holding "/" and a null path are refused; a path without a
// leading "\" is taken from the volume's root as well. Symbolic links are
// followed only while they stay inside the folder: a link on the way that
// points outside it (or nowhere) makes the whole path refused.
#pragma once

#include <string>
#include <vector>

namespace env {

constexpr size_t kVolumePathMax = 511;   // longest accepted path, in bytes

struct ResolvedPath {
  std::string Host;                      // Root + "/" + components
  std::vector<std::string> Components;   // empty for the root
};

// Root must be a canonical absolute folder path.
bool ResolveVolumePath (const std::string &Root, const char *Path, ResolvedPath &Out);

// True when HostPath (absolute) is Root or lies below it once every symbolic
// link is resolved; false for dangling links.
bool StaysInside (const std::string &Root, const std::string &HostPath);

}  // namespace env
