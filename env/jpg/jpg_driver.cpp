#include "env/jpg/jpg_driver.h"

#include "env/images/codecs.h"

namespace env {

struct JpgDriver::State {
  JPG_DRIVER_PROTOCOL Table {};
  State *Previous = nullptr;
};

namespace {

JpgDriver::State *gCurrent = nullptr;

BOOLEAN EFIAPI DecodeJpegOp (UINT32 *Width, UINT32 *Height, UINT32 **Pixels, const VOID *FileData, UINT32 FileSize) {
  if (!gCurrent || !Width || !Height || !Pixels) return FALSE;
  uint32_t W = 0, H = 0;
  uint32_t *Out = nullptr;
  bool Ok = DecodeJpegInto (static_cast<const uint8_t *> (FileData), FileSize, W, H, Out);
  if (Out) *Pixels = Out;
  if (W || H) {
    *Width = W;
    *Height = H;
  }
  return Ok ? TRUE : FALSE;
}

}  // namespace

JpgDriver::JpgDriver (uint32_t Version) : State_ (new State) {
  State_->Table.Version = Version;
  State_->Table.DecodeJpeg = DecodeJpegOp;
  State_->Previous = gCurrent;
  gCurrent = State_.get ();
}

JpgDriver::~JpgDriver () {
  if (gCurrent == State_.get ()) gCurrent = State_->Previous;
}

JPG_DRIVER_PROTOCOL *JpgDriver::Table () { return &State_->Table; }

}  // namespace env
