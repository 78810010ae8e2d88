#include "codecs/interface/codec_registry.h"

#include <algorithm>

#include "base/status.h"

namespace kelvane {

namespace {

bool Wanted(const FormatList* wanted, const FormatList& patterns)
{
    return !wanted || std::any_of(wanted->begin(), wanted->end(), [&](const MediaFormat& format) {
        return Matches(patterns, format);
    });
}

}  // namespace

void CodecRegistry::RegisterCodec(const CodecDescriptor* descriptor)
{
    if (descriptor) fDescriptors.push_back(descriptor);
}

void CodecRegistry::EnumerateCodecs(CodecList& codecs, const FormatList* inputs,
                                    const FormatList* outputs) const
{
    for (const CodecDescriptor* descriptor : fDescriptors) {
        if (!Wanted(inputs, descriptor->inputs) || !Wanted(outputs, descriptor->outputs)) continue;
        if (auto codec = descriptor->factory()) codecs.push_back(std::move(codec));
    }
}

std::unique_ptr<Codec> CodecRegistry::FindFirst(const MediaFormat& input,
                                                const FormatList& outputs) const
{
    const FormatList inputs = {input};
    CodecList codecs;
    EnumerateCodecs(codecs, &inputs, &outputs);
    for (std::unique_ptr<Codec>& codec : codecs)
        for (const MediaFormat& output : outputs)
            if (codec->SetFormats(input, output) == kOK) return std::move(codec);
    return nullptr;
}

std::unique_ptr<Codec> CodecRegistry::FindCodec(const MediaFormat& input,
                                                const MediaFormat& output) const
{
    return FindFirst(input, {output});
}

std::unique_ptr<Codec> CodecRegistry::FindCodecEither(const MediaFormat& input,
                                                      const MediaFormat& a,
                                                      const MediaFormat& b) const
{
    return FindFirst(input, {a, b});
}

}  // namespace kelvane
