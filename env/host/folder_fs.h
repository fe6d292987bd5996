// A host folder as a volume's file system.
//
// The folder is opened once, when the volume is mounted; every later object
// is opened beneath an open directory, one component at a time and never
// following a symbolic link, so that renaming or replacing a folder on the
// way (by a link to somewhere else, say) cannot lead an operation out of the
// volume: what was opened stays what is worked on.
//
// Symbolic links: a relative link whose target, resolved beneath the volume's
// folder, exists is shown as what it leads to (a file or a folder). Every
// other link (absolute, leading above the folder, or nowhere) is shown as a
// file holding its target text. A link is removed as a link and copied as a
// link, never through what it leads to.
//
// Entry words are the low 32 bits of the inode number; identities are the
// device and inode of the entry itself. Dates are in the process's local
// time (TZ).
#pragma once

#include <memory>
#include <string>

#include "env/files/volume_fs.h"

namespace env {

// Null when Folder is not an existing folder.
std::unique_ptr<VolumeFs> OpenFolderVolume (const std::string &Folder);

// Test hook: called with the name of each entry as it is about to be opened
// or removed, or right after it was created (lets a test swap a folder for a
// link, or stop the program, at a chosen moment). Null to remove.
using FolderFsHook = void (*) (const std::string &Name, void *Context);
void SetFolderFsHook (FolderFsHook Hook, void *Context);

}  // namespace env
