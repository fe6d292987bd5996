// Fuzz target: the settings service's parser and its writer. Whatever the
// bytes, parsing must not crash, what Commit would write must read back to
// the same text, and a value set reads back from what is written.
#include <cstddef>
#include <cstdint>
#include <string>

#include "env/host/firmware.h"
#include "env/settings/settings_service.h"

extern "C" int LLVMFuzzerTestOneInput (const uint8_t *Data, size_t Size) {
  static env::Firmware Fw;
  env::SettingsService First (nullptr, 1);
  First.Parse (std::string ((const char *) Data, Size));
  std::string Written = First.Serialize ();
  env::SettingsService Second (nullptr, 1);
  Second.Parse (Written);
  if (Second.Serialize () != Written) __builtin_trap ();
  First.Set ("Surveyor", "Position", "1,2,3,4");
  env::SettingsService Third (nullptr, 1);
  Third.Parse (First.Serialize ());
  std::string Value;
  if (!Third.Get ("Surveyor", "Position", Value) || Value != "1,2,3,4") __builtin_trap ();
  // A value read through the table is a pool copy the caller frees.
  CHAR8 *Copy = nullptr;
  if (Size > 2 && First.Table ()->GetValue (nullptr, (const CHAR8 *) "k", &Copy)) Fw.FreePool (Copy);
  return 0;
}
