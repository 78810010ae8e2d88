#include "codecs/built_in_codecs.h"

#include "base/four_cc.h"
#include "codecs/animation/qtrle_decoder.h"
#include "codecs/animation/qtrle_encoder.h"
#include "codecs/huffyuv/huffyuv_decoder.h"
#include "codecs/huffyuv/huffyuv_encoder.h"
#include "codecs/raw/raw_rgb_codec.h"
#include "codecs/raw/yuv_decoder.h"
#include "codecs/raw/yuv_encoder.h"

namespace kelvane {

void RegisterBuiltInCodecs(CodecRegistry& registry, const HandlerProbe& canOpen)
{
    registry.RegisterCodec(&RawRGBCodec::Descriptor());
    registry.RegisterCodec(&YUVEncoder::Descriptor());
    registry.RegisterCodec(&YUVDecoder::Descriptor());
    registry.RegisterCodec(&QTRLEEncoder::Descriptor());
    registry.RegisterCodec(&QTRLEDecoder::Descriptor());
    const bool huffYUV = canOpen && canOpen("HFYU"_4cc);
    registry.RegisterCodec(huffYUV ? &HuffYUVEncoder::Descriptor() : nullptr);
    registry.RegisterCodec(huffYUV ? &HuffYUVDecoder::Descriptor() : nullptr);
}

}  // namespace kelvane
