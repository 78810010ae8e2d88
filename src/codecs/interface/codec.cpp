#include "codecs/interface/codec.h"

#include "base/status.h"

namespace kelvane {

int Codec::SetFormats(const MediaFormat&, const MediaFormat&)
{
    return kError;
}

int Codec::SetInputFormat(const MediaFormat&)
{
    return kError;
}

int Codec::SetOutputFormat(const MediaFormat&)
{
    return kError;
}

int Codec::Reserved(uint32_t)
{
    return kError;
}

int Codec::Convert(const uint8_t*, uint32_t&, uint8_t*, uint32_t&, uint32_t)
{
    return kError;
}

}  // namespace kelvane
