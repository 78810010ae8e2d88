#pragma once

#include <memory>
#include <vector>

#include "codecs/interface/codec.h"
#include "codecs/interface/codec_descriptor.h"

namespace kelvane {

using CodecList = std::vector<std::unique_ptr<Codec>>;

// The list of built-in codecs, searched in the order of registration. Filled at start-up; after
// that it is only read, by any number of threads.
class CodecRegistry {
public:
    // Null, a codec that is not to be had on this system, is passed over. The descriptor is not
    // owned.
    void RegisterCodec(const CodecDescriptor* descriptor);
    // Adds to `codecs` one new instance of each class that reads one of `inputs` and writes one of
    // `outputs`. A null list asks for nothing, an empty one for what no codec can give.
    void EnumerateCodecs(CodecList& codecs, const FormatList* inputs,
                         const FormatList* outputs) const;
    // A codec whose SetFormats accepted the pair, or null.
    std::unique_ptr<Codec> FindCodec(const MediaFormat& input, const MediaFormat& output) const;
    // Of each codec in turn `a` is asked for before `b`.
    std::unique_ptr<Codec> FindCodecEither(const MediaFormat& input, const MediaFormat& a,
                                           const MediaFormat& b) const;

    const std::vector<const CodecDescriptor*>& Descriptors() const { return fDescriptors; }

private:
    std::unique_ptr<Codec> FindFirst(const MediaFormat& input, const FormatList& outputs) const;

    std::vector<const CodecDescriptor*> fDescriptors;
};

}  // namespace kelvane
