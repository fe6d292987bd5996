#include "core/paint_forwarder.h"

#include "core/bindings.h"

VOID EFIAPI PaintForwarder (WINDOW_HEADER *Window, MESSAGE *Message, VOID *Extra) {
  gWindowBase->DefaultPaint (Window, Message, Extra);
}
