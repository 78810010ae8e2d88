#pragma once

#include "codecs/interface/codec.h"
#include "codecs/interface/codec_descriptor.h"

namespace kelvane {

// A codec between raw pictures and encoded frames of the same size: the formats that it takes are
// the patterns of its descriptor. Derived classes build what depends on the formats on the first
// Convert and keep it until a format changes.
class FrameCodec : public Codec {
public:
    explicit FrameCodec(const CodecDescriptor& descriptor) : fDescriptor(descriptor) {}

    Status SetFormats(const MediaFormat& input, const MediaFormat& output) override;
    // Does not compare sizes: the output format may follow.
    Status SetInputFormat(const MediaFormat& format) override;
    // Refuses another size than that of the input format, once there is one.
    Status SetOutputFormat(const MediaFormat& format) override;

protected:
    bool fChanged = true;  // a format was set since the last preparation

private:
    const CodecDescriptor& fDescriptor;
};

}  // namespace kelvane
