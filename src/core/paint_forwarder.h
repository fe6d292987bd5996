// The paint callback of windows that draw nothing of their own: it hands the
// call unchanged to the window base's default painting.
#pragma once

#include "services/window_records.h"

VOID EFIAPI PaintForwarder (WINDOW_HEADER *Window, MESSAGE *Message, VOID *Extra);
