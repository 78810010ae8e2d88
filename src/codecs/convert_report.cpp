#include "codecs/convert_report.h"

namespace kelvane {

namespace {

size_t BytesOfRGB(const MediaFormat& format)
{
    return format.Space() == kBGR24 || format.Space() == kRGB24 ? 3 : 4;
}

}  // namespace

ConvertReport ConvertAndReport(RawRGBCodec& codec, std::span<const uint8_t> input,
                               std::span<uint8_t> output)
{
    const size_t made = codec.Convert(input, output).value_or(0);
    const size_t from = BytesOfRGB(codec.InputFormat()), to = BytesOfRGB(codec.OutputFormat());
    // A copy need not end with a pixel.
    return {kError, from == to ? made : made / to * from, made};
}

ConvertReport ConvertAndReport(YUVEncoder& codec, std::span<const uint8_t> input,
                               std::span<uint8_t> output)
{
    if (!Matches(YUVEncoder::Descriptor().outputs, codec.OutputFormat()))
        return {kOK, input.size(), output.size()};
    const bool vyu = codec.OutputFormat().Space() == kVYU24;
    const size_t pixels = codec.Convert(input, output).value_or(0) / (vyu ? 3 : 2);
    return {kOK, pixels * (vyu ? 4 : BytesOfRGB(codec.InputFormat())), pixels * 2};
}

ConvertReport ConvertAndReport(YUVDecoder& codec, std::span<const uint8_t> input,
                               std::span<uint8_t> output)
{
    if (!Matches(YUVDecoder::Descriptor().inputs, codec.InputFormat()))
        return {kOK, input.size(), output.size()};
    const size_t made = codec.Convert(input, output).value_or(0);
    return {kOK, made / BytesOfRGB(codec.OutputFormat()) * 2, made};
}

ConvertReport ConvertAndReport(HuffYUVDecoder& codec, std::span<const uint8_t> input,
                               std::span<uint8_t> output)
{
    const std::optional<size_t> made = codec.Convert(input, output);
    if (!made) return {kError, input.size(), 0};
    return {kOK, input.size(), codec.OutputFormat().Space() == kYUY2 ? 2 * *made : *made};
}

}  // namespace kelvane
