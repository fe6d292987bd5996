// The stand-in file driver: volumes backed by host folders, directory
// listings, file handles, the resource-string file and the service registry.
#pragma once

#include <memory>
#include <string>

#include "env/environment.h"
#include "services/file_driver.h"

namespace env {

class FileDriver {
 public:
  FileDriver (Firmware &Fw, const std::string &SystemDir, uint32_t Version);
  ~FileDriver ();
  FILE_DRIVER_PROTOCOL *Table ();

  int Mount (const VolumeSpec &Spec);       // next free slot, or -1
  bool Unmount (int Volume);
  std::string HostPath (int Volume) const;  // the folder behind a volume, empty when none
  const std::string &SystemDir () const;

  // Siblings found through LocateService.
  void RegisterService (const EFI_GUID &Guid, VOID *Table);
  void UnregisterService (const EFI_GUID &Guid);

  struct State;
 private:
  std::unique_ptr<State> State_;
};

}  // namespace env
