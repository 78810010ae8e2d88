#include "codecs/interface/frame_codec.h"

#include "base/status.h"

namespace kelvane {

Status FrameCodec::SetFormats(const MediaFormat& input, const MediaFormat& output)
{
    if (!Matches(fDescriptor.inputs, input) || !Matches(fDescriptor.outputs, output) ||
        !SameSize(input, output))
        return kError;
    fInput = input;
    fOutput = output;
    fChanged = true;
    return kOK;
}

Status FrameCodec::SetInputFormat(const MediaFormat& format)
{
    if (!Matches(fDescriptor.inputs, format)) return kError;
    fInput = format;
    fChanged = true;
    return kOK;
}

Status FrameCodec::SetOutputFormat(const MediaFormat& format)
{
    if (!Matches(fDescriptor.outputs, format)) return kError;
    if (fInput.kind != kUnknownFormat && !SameSize(fInput, format)) return kError;
    fOutput = format;
    fChanged = true;
    return kOK;
}

}  // namespace kelvane
