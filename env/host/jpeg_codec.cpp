// JPEG decoding on the host, with libjpeg.
#include <csetjmp>
#include <cstdio>
#include <memory>
#include <vector>

#include "env/images/codecs.h"
#include "env/pool.h"

// The firmware types already define INT32 (as int); XMD_H keeps libjpeg from
// declaring its own (long) one.
#define XMD_H
#include <jpeglib.h>
#include <jerror.h>

namespace env {

namespace {

// libjpeg reports fatal errors through error_exit, which must not return:
// it jumps back to the decoder, which then cleans up and fails.
struct ErrorManager {
  jpeg_error_mgr Base;
  jmp_buf Jump;
};

[[noreturn]] void OnError (j_common_ptr Info) {
  ErrorManager *Errors = reinterpret_cast<ErrorManager *> (Info->err);
  longjmp (Errors->Jump, 1);
}

// Warnings: a truncated or corrupt stream is a failure; the rest are ignored.
void OnMessage (j_common_ptr Info, int Level) {
  if (Level >= 0) return;   // trace messages
  switch (Info->err->msg_code) {
    case JWRN_JPEG_EOF:
    case JWRN_HIT_MARKER:
    case JWRN_MUST_RESYNC:
    case JWRN_NOT_SEQUENTIAL:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_BOGUS_PROGRESSION:
      OnError (Info);
    default:
      break;
  }
}

void OnOutput (j_common_ptr) {}

void OnProgress (j_common_ptr Info) {
  if (Info->is_decompressor) {
    j_decompress_ptr D = reinterpret_cast<j_decompress_ptr> (Info);
    if (D->input_scan_number > kMaxJpegScans) OnError (Info);
  }
}

uint8_t Clamp (int Value) { return (uint8_t) (Value < 0 ? 0 : Value > 255 ? 255 : Value); }

}  // namespace

bool DecodeJpegInto (const uint8_t *Data, size_t Size, uint32_t &Width, uint32_t &Height,
                     uint32_t *&Pixels) {
  if (!Data || Size < 4 || Size > 0xFFFFFFFFu) return false;
  // The decompressor and everything the jump may skip live here, not on the
  // stack between setjmp and longjmp.
  struct Context {
    jpeg_decompress_struct Info;
    ErrorManager Errors;
    jpeg_progress_mgr Progress;
    std::vector<uint8_t> Row;
  };
  std::unique_ptr<Context> C (new Context ());
  C->Info.err = jpeg_std_error (&C->Errors.Base);
  C->Errors.Base.error_exit = OnError;
  C->Errors.Base.emit_message = OnMessage;
  C->Errors.Base.output_message = OnOutput;
  C->Progress.progress_monitor = OnProgress;

  if (setjmp (C->Errors.Jump)) {
    jpeg_destroy_decompress (&C->Info);
    return false;
  }
  jpeg_create_decompress (&C->Info);
  C->Info.progress = &C->Progress;
  jpeg_mem_src (&C->Info, const_cast<uint8_t *> (Data), (unsigned long) Size);
  if (jpeg_read_header (&C->Info, TRUE) != JPEG_HEADER_OK) {
    jpeg_destroy_decompress (&C->Info);
    return false;
  }
  uint32_t W = C->Info.image_width, H = C->Info.image_height;
  if (W == 0 || H == 0 || W > kMaxJpegSide || H > kMaxJpegSide || (uint64_t) W * H > kMaxJpegPixels) {
    jpeg_destroy_decompress (&C->Info);
    return false;
  }
  Width = W;
  Height = H;
  bool Cmyk = false;
  switch (C->Info.jpeg_color_space) {
    case JCS_GRAYSCALE:
      C->Info.out_color_space = JCS_GRAYSCALE;
      break;
    case JCS_CMYK:
    case JCS_YCCK:
      C->Info.out_color_space = JCS_CMYK;
      Cmyk = true;
      break;
    default:
      C->Info.out_color_space = JCS_RGB;
      break;
  }
  jpeg_start_decompress (&C->Info);
  if (C->Info.output_width != W || C->Info.output_height != H) OnError ((j_common_ptr) &C->Info);
  int Components = C->Info.output_components;
  if ((Cmyk && Components != 4) || (!Cmyk && Components != 1 && Components != 3)) OnError ((j_common_ptr) &C->Info);

  Pixels = (uint32_t *) PoolAllocate ((size_t) W * H * 4);
  if (!Pixels) OnError ((j_common_ptr) &C->Info);
  uint32_t *Out = Pixels;
  bool Inverted = Cmyk && C->Info.saw_Adobe_marker;
  C->Row.resize ((size_t) W * (size_t) Components);
  while (C->Info.output_scanline < H) {
    JSAMPROW RowPointer = C->Row.data ();
    uint32_t Line = C->Info.output_scanline;
    if (jpeg_read_scanlines (&C->Info, &RowPointer, 1) != 1) OnError ((j_common_ptr) &C->Info);
    uint32_t *Target = Out + (size_t) Line * W;
    const uint8_t *P = C->Row.data ();
    for (uint32_t X = 0; X < W; X++) {
      uint8_t R, G, B;
      if (Components == 1) {
        R = G = B = P[X];
      } else if (Components == 3) {
        R = P[3 * X];
        G = P[3 * X + 1];
        B = P[3 * X + 2];
      } else {
        int Cy = P[4 * X], M = P[4 * X + 1], Ye = P[4 * X + 2], K = P[4 * X + 3];
        if (!Inverted) {
          Cy = 255 - Cy;
          M = 255 - M;
          Ye = 255 - Ye;
          K = 255 - K;
        }
        R = Clamp ((Cy * K + 127) / 255);
        G = Clamp ((M * K + 127) / 255);
        B = Clamp ((Ye * K + 127) / 255);
      }
      Target[X] = 0xFF000000u | ((uint32_t) R << 16) | ((uint32_t) G << 8) | B;
    }
  }
  jpeg_finish_decompress (&C->Info);
  jpeg_destroy_decompress (&C->Info);
  return true;
}

}  // namespace env
