// Placeholder until the comparison window lands.
#include "compare/file_comparison.h"

#include "core/driver_state.h"

WINDOW_HEADER *OpenFileComparison (UINT8, UINT8, const CHAR8 *) { return nullptr; }
void ResetFileComparisonState () {}
