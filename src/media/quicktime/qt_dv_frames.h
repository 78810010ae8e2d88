#pragma once

#include <cstdint>
#include <optional>

#include "base/byte_cursor.h"
#include "media/quicktime/qt_file.h"

namespace kelvane {

// The first whole DV frame of a video stream, looked for among its first pictures, or one close
// behind it that is not blank; empty when there is none. Where the stream stands next is open.
Bytes FirstDVFrame(QTFile& file, int32_t stream);

// Plain DV by its data format; where that only makes it possible, by its first frame.
bool IsQTDVStream(QTFile& file, int32_t stream);

// The television system of a stream by its first DV frame; nothing when it has none.
std::optional<bool> IsPALStream(QTFile& file, int32_t stream);

}  // namespace kelvane
