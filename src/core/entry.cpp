// Placeholder: the entry point lands with the foundation work.
#include "core/surveyor_protocol.h"

extern "C" EFI_STATUS EFIAPI SurveyorEntryPoint (EFI_HANDLE, EFI_SYSTEM_TABLE *) { return EFI_LOAD_ERROR; }
