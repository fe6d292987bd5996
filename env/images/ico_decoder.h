// ICO (and CUR) decoding: the directory of images, each a DIB with its AND
// mask or a PNG image (decoded by the backend: images/codecs.h).
#pragma once

#include "env/images/bmp_decoder.h"

namespace env {

// Number of images listed in the file's directory (0 when it is no ICO file
// or the directory does not fit in the buffer).
size_t IcoImageCount (const uint8_t *Data, size_t Size);

// Decodes image Index of the file.
bool DecodeIcoImage (const uint8_t *Data, size_t Size, size_t Index, DecodedImage &Out);

// Decodes the image that best fits Size pixels: the image of exactly that
// width (the one of most colours among them), else the smallest larger one,
// else the largest smaller one; when that image cannot be decoded the next
// best is tried.
bool DecodeIcoBestSize (const uint8_t *Data, size_t Size, unsigned Pixels, DecodedImage &Out);

}  // namespace env
