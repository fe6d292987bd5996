// Placeholder until the module lands: a table with its version only.
#include "env/files/file_driver.h"

namespace env {

struct FileDriver::State {
  FILE_DRIVER_PROTOCOL Table {};
};

FileDriver::FileDriver (Firmware &Fw, const std::string &SystemDir, uint32_t Version) : State_ (new State) { State_->Table.Version = Version; }
FileDriver::~FileDriver () = default;
FILE_DRIVER_PROTOCOL *FileDriver::Table () { return &State_->Table; }

}  // namespace env
namespace env {
int FileDriver::Mount (const VolumeSpec &) { return -1; }
bool FileDriver::Unmount (int) { return false; }
std::string FileDriver::HostPath (int) const { return {}; }
const std::string &FileDriver::SystemDir () const { static std::string S; return S; }
void FileDriver::RegisterService (const EFI_GUID &, VOID *) {}
void FileDriver::UnregisterService (const EFI_GUID &) {}
}  // namespace env
