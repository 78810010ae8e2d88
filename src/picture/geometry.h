#pragma once

#include <cstdint>

#include "base/threads/worker_pool.h"
#include "format/media_format.h"

namespace kelvane {

// How a picture of one television standard becomes one of the other.
enum class GeometryMode {
    kScale,
    // From 720 by 480 or 486 to 720 by 576.
    kLetterBox,
    kPanAndScan,
    kLetterBoxPanAndScan,
    // From 720 by 576 to 720 by 480 or 486.
    kCrop,
};

// Rows that kLetterBoxPanAndScan writes below the last one of the destination. A buffer of two PAL
// pictures has room for them.
inline constexpr int32_t kGeometryRowsBelow = 51;

// Makes a picture of the destination's size from one of the source's: 32-bit pixels, top row first,
// rows without gaps. Only width and height of the formats are read. The modes count for their pair
// of sizes above; every other pair is copied, padded, cut or scaled by its sizes alone. Of an
// interlaced source each field is scaled by itself.
//
// kLetterBoxPanAndScan writes up to kGeometryRowsBelow rows below the destination and leaves rows
// 24 to 95 as they were, of an interlaced source every odd row from 97 too. Deliberate, as is the
// place of that picture.
void GeometryConvert(const uint8_t* source, const MediaFormat& source_format,
                     const MediaFormat& destination_format, uint8_t* destination, GeometryMode mode,
                     bool interlaced, WorkerPool* pool = nullptr);

}  // namespace kelvane
