#include "codecs/interface/codec_descriptor.h"

#include <algorithm>

namespace kelvane {

FormatList RawPatterns(std::initializer_list<uint32_t> spaces)
{
    FormatList patterns;
    for (const uint32_t space : spaces)
        patterns.emplace_back(RawVideoFormat{space, -1, -1, -1.0f, UINT32_MAX, 0});
    return patterns;
}

FormatList EncodedPattern(uint32_t encoding)
{
    EncodedVideoFormat view{};
    view.w = view.h = -1;
    view.frate = -1.0f;
    view.ilace = UINT32_MAX;
    view.encoding = encoding;
    view.framesize = -1;
    return {MediaFormat(view)};
}

bool Matches(const FormatList& patterns, const MediaFormat& format)
{
    return std::any_of(patterns.begin(), patterns.end(),
                       [&](const MediaFormat& pattern) { return SameKind(pattern, format); });
}

}  // namespace kelvane
