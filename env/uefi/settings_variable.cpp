#include "env/uefi/settings_variable.h"

#include <string>

#include "env/uefi/desktop_protocol.h"
#include "env/uefi/uefi_globals.h"

namespace env {

namespace {

CHAR16 *VariableName () { return reinterpret_cast<CHAR16 *> (const_cast<char16_t *> (u"SurveyorSettings")); }

class SettingsVariable : public SettingsStore {
 public:
  Load Read (std::string &Text) override {
    EFI_GUID Vendor = SURVEYOR_VENDOR_GUID;
    UINTN Size = 0;
    EFI_STATUS Status = gEnvRuntimeServices->GetVariable (VariableName (), &Vendor, nullptr, &Size, nullptr);
    if (Status == EFI_NOT_FOUND) return Load::Missing;
    if (Status != EFI_BUFFER_TOO_SMALL || Size > kMaxSettingsText) return Load::Unreadable;
    Text.assign (Size, '\0');
    UINT32 Attributes = 0;
    if (EFI_ERROR (gEnvRuntimeServices->GetVariable (VariableName (), &Vendor, &Attributes, &Size, Text.data ())))
      return Load::Unreadable;
    Text.resize (Size);
    return Load::Read;
  }

  // The firmware replaces a variable's value as a whole.
  bool Write (const std::string &Text) override {
    EFI_GUID Vendor = SURVEYOR_VENDOR_GUID;
    UINT32 Attributes = EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS;
    return !EFI_ERROR (gEnvRuntimeServices->SetVariable (VariableName (), &Vendor, Attributes, Text.size (),
                                                         const_cast<char *> (Text.data ())));
  }

  std::string Name () const override { return "the UEFI variable SurveyorSettings"; }
};

}  // namespace

std::unique_ptr<SettingsStore> OpenSettingsVariable () { return std::make_unique<SettingsVariable> (); }

}  // namespace env
