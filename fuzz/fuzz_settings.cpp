// Fuzz target: the settings service's file parser and its writer. Whatever
// the bytes, parsing must not crash, and what Commit would write must read
// back to the same values.
#include <cstddef>
#include <cstdint>
#include <string>

#include "env/host/firmware.h"
#include "env/settings/settings_service.h"

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  static env::Firmware Fw;
  env::SettingsService First (Fw, "", 1);
  First.Parse (std::string ((const char *) Data, Size));
  std::string Written = First.Serialize ();
  env::SettingsService Second (Fw, "", 1);
  Second.Parse (Written);
  if (Second.Serialize () != Written) __builtin_trap ();
  // A value read through the table is a pool copy the caller frees.
  CHAR8 *Value = nullptr;
  if (Size > 2 && First.Table ()->GetValue (nullptr, (const CHAR8 *) "k", &Value)) Fw.FreePool (Value);
  return 0;
}
