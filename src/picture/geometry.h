#pragma once

#include <cstdint>

#include "base/threads/worker_pool.h"
#include "format/media_format.h"

namespace kelvane {

// Geometry modes of the operation "2PAL" on 720 by 480 to 720 by 576.
enum ToPALMode : int32_t {
    kScaleUp = 0,
    kLetterBox = 1,
    kPanAndScan = 2,
    kLetterBoxPanAndScan = 3,  // and any other number
};

// Geometry modes of the operation "2NTS" on 720 by 576 to 720 by 480.
enum ToNTSCMode : int32_t {
    kScaleDown = 0,
    kCrop = 1,  // and any other number
};

// Rows that kLetterBoxPanAndScan writes below the last one of the destination. A buffer of two PAL
// pictures has room for them.
inline constexpr int32_t kGeometryRowsBelow = 51;

// Makes a picture of the destination's size from one of the source's: 32-bit pixels, top row first,
// rows without gaps. Only width and height of the formats are read. `op` is "2PAL", "2NTS" or any
// other code; the modes count for the two pairs of sizes above, every other pair is copied, padded,
// cut or scaled by its sizes alone. `ilace` is 0 for a progressive source; otherwise each field is
// scaled by itself.
//
// kLetterBoxPanAndScan writes up to kGeometryRowsBelow rows below the destination and leaves rows
// 24 to 95 as they were, of an interlaced source every odd row from 97 too. Deliberate, as is the
// place of that picture.
void GeometryConvert(const uint8_t* source, const MediaFormat& source_format,
                     const MediaFormat& destination_format, uint8_t* destination, uint32_t op,
                     int32_t mode, uint32_t ilace, WorkerPool* pool = nullptr);

}  // namespace kelvane
