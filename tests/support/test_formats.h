#pragma once

#include "format/media_format.h"

namespace kelvane {

inline MediaFormat Raw(uint32_t cspace, int32_t width, int32_t height)
{
    return MediaFormat(RawVideoFormat{cspace, width, height, 25.0f, 1, 0});
}

inline MediaFormat Encoded(uint32_t encoding, uint32_t cspace, int32_t width, int32_t height)
{
    EncodedVideoFormat view{};
    view.encoding = encoding;
    view.cspace = cspace;
    view.w = width;
    view.h = height;
    return MediaFormat(view);
}

}  // namespace kelvane
