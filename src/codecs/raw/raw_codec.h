#pragma once

#include "codecs/interface/codec.h"

namespace kelvane {

// A codec between raw pictures. Each side's format is checked by itself; sizes are not compared.
class RawCodec : public Codec {
public:
    Status SetFormats(const MediaFormat& input, const MediaFormat& output) override;
    Status SetInputFormat(const MediaFormat& format) override;
    Status SetOutputFormat(const MediaFormat& format) override;

protected:
    virtual bool TakesInput(const MediaFormat& format) const = 0;
    virtual bool TakesOutput(const MediaFormat& format) const = 0;
};

}  // namespace kelvane
