#include "codecs/raw/raw_codec.h"

#include "base/status.h"

namespace kelvane {

Status RawCodec::SetFormats(const MediaFormat& input, const MediaFormat& output)
{
    if (!TakesInput(input) || !TakesOutput(output)) return kError;
    fInput = input;
    fOutput = output;
    return kOK;
}

Status RawCodec::SetInputFormat(const MediaFormat& format)
{
    if (!TakesInput(format)) return kError;
    fInput = format;
    return kOK;
}

Status RawCodec::SetOutputFormat(const MediaFormat& format)
{
    if (!TakesOutput(format)) return kError;
    fOutput = format;
    return kOK;
}

}  // namespace kelvane
