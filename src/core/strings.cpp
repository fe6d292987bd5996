// Localized texts: every lookup reads the resource file afresh through the
// file driver into the next of three rotating buffers.
#include "core/strings.h"

#include "core/bindings.h"
#include "core/driver_state.h"
#include "util/string_utils.h"

namespace {

constexpr UINT16 STRING_BUFFER_COUNT = 3;
constexpr UINTN STRING_BUFFER_SIZE = 256;

CHAR8 gStringBuffers[STRING_BUFFER_COUNT][STRING_BUFFER_SIZE];
UINT16 gStringIndex;

}  // namespace

void ResetStringsState () {
  gStringIndex = 0;
  for (UINT16 I = 0; I < STRING_BUFFER_COUNT; I++) gStringBuffers[I][0] = 0;
}

CHAR8 *GetString (const CHAR8 *Section, const CHAR8 *Key) {
  CHAR8 *Buffer = gStringBuffers[gStringIndex];
  gStringIndex = static_cast<UINT16> (gStringIndex + 1);
  if (gStringIndex >= STRING_BUFFER_COUNT) gStringIndex = 0;

  BOOLEAN Found = FALSE;
  if (gFileDriver != nullptr && gFileDriver->ReadResourceString != nullptr)
    Found = gFileDriver->ReadResourceString (reinterpret_cast<const CHAR8 *> (RESOURCE_FILE_PATH), Section, Key, Buffer);
  if (!Found) CopyString (Buffer, "***"_a);
  // The file driver writes at most 256 bytes; make sure the text ends inside the buffer.
  Buffer[STRING_BUFFER_SIZE - 1] = 0;
  return Buffer;
}
