// Status texts and the message box for what a listing left out.
#include "filemanager/listing_notice.h"

#include "core/bindings.h"
#include "core/resource_format.h"
#include "core/strings.h"
#include "util/string_utils.h"

VOID ReadListingNotes (UINT16 Handle, LISTING_NOTES *Notes) {
  ZeroMem (Notes, sizeof (*Notes));
  if (gFileDriver->GetListingNotes != nullptr) gFileDriver->GetListingNotes (Handle, Notes);
}

VOID DescribeLeftOut (const LISTING_NOTES *Notes, UINT32 Refused, CHAR8 *Buffer, UINT16 Size) {
  struct {
    UINT32 Count;
    const char *Key;
  } const Reasons[] = {
      {Notes->NameTooLong, "left_long_names"},
      {Notes->NameUnusable, "left_backslash_names"},
      {Notes->Unreadable, "left_unreadable"},
      {Notes->OverLimit + Refused, "left_over_limit"},
  };
  ZeroMem (Buffer, Size);
  for (auto &Reason : Reasons) {
    if (Reason.Count == 0) continue;
    if (Buffer[0] != 0) AppendStringN (Buffer, ", "_a, Size);
    CHAR8 Part[64];
    ZeroMem (Part, sizeof (Part));
    FormatResourceText (Part, sizeof (Part), GetString (nullptr, reinterpret_cast<const CHAR8 *> (Reason.Key)),
                        Reason.Count);
    AppendStringN (Buffer, Part, Size);
  }
}

VOID ReportUnreadableFolder (const CHAR8 *Path) {
  gWindowBase->MessageBox (1, GetString (nullptr, "fail_read_folder"_a), Path, 0);
}
