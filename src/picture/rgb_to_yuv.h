#pragma once

#include <cstdint>

#include "base/threads/worker_pool.h"
#include "format/media_format.h"

namespace kelvane {

// From 32-bit (kBGRX32) or 24-bit (kBGR24) pixels to 8-bit studio range YUV (ITU-R BT.601), without
// a rounding term:
//     Y = (( 8432 R + 16425 G +  3176 B) >> 15) + 16
//     U = ((-4818 R -  9527 G + 14345 B) >> 15) + 128
//     V = ((14345 R - 12045 G -  2300 B) >> 15) + 128
// The picture is one run of width * height pixels that are taken two at a time; the chroma of a
// pair is the mean of both, (a + b) >> 1. With an odd width pairs run across the ends of rows; an
// odd last pixel is taken together with a black one and writes its half of the pair only.
//
// Bytes of a pair, first to last:
//     RgbToYuy2       Y0 U Y1 V
//     RgbToUyvy       U Y0 V Y1
//     RgbToYuvSigned  Y0 (U - 128) Y1 (V - 128), the chroma signed
//     RgbToVyu        V0 Y0 U0 V Y1 U: three bytes a pixel, the first pixel with chroma of its own
// The destination holds two bytes a pixel, three for RgbToVyu.
void RgbToYuy2(const uint8_t* source, ColourSpace from, uint8_t* destination, int32_t width,
               int32_t height, WorkerPool* pool = nullptr);
void RgbToUyvy(const uint8_t* source, ColourSpace from, uint8_t* destination, int32_t width,
               int32_t height, WorkerPool* pool = nullptr);
void RgbToYuvSigned(const uint8_t* source, ColourSpace from, uint8_t* destination, int32_t width,
                    int32_t height, WorkerPool* pool = nullptr);
void RgbToVyu(const uint8_t* source, ColourSpace from, uint8_t* destination, int32_t width,
              int32_t height, WorkerPool* pool = nullptr);

namespace plain {
// All four by the colour space of the destination: the form to check by eye.
void RgbToYuv(const uint8_t* source, ColourSpace from, uint8_t* destination, ColourSpace to,
              int32_t width, int32_t height);
}  // namespace plain

}  // namespace kelvane
