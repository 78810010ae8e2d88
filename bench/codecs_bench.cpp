// The built-in codecs beside libavcodec's of the same name: one thread, 720 by 576, a picture with
// the noise of a camera. Names end in the method or the depth.

#include <benchmark/benchmark.h>

#include <cstring>

#include "base/status.h"
#include "codecs/animation/qtrle_decoder.h"
#include "codecs/animation/qtrle_encoder.h"
#include "codecs/huffyuv/huffyuv_decoder.h"
#include "codecs/huffyuv/huffyuv_encoder.h"
#include "support/drawn_picture.h"
#include "support/libav_peer.h"
#include "support/test_formats.h"

namespace kelvane {
namespace {

constexpr int kWidth = 720;
constexpr int kHeight = 576;
constexpr int kNoise = 5;

size_t PixelBytes(uint32_t space)
{
    return space == kYUY2 ? 2 : space == kBGR24 ? 3 : 4;
}

Bytes Picture(uint32_t space)
{
    return DrawPicture(kWidth, kHeight, PixelBytes(space), kNoise);
}

void RunCodec(benchmark::State& state, Codec& codec, const Bytes& input, size_t room)
{
    Bytes output(room);
    for (auto _ : state) {
        if (!codec.Convert(input, output)) state.SkipWithError("Convert failed");
        benchmark::DoNotOptimize(output.data());
    }
}

// libavcodec's method for the one that we write: its name differs.
const char* PeerMethod(uint32_t space)
{
    return space == kYUY2 ? "median" : "plane";
}

void HuffYUVEncode(benchmark::State& state, uint32_t space)
{
    HuffYUVEncoder encoder;
    if (encoder.SetFormats(Raw(space, kWidth, kHeight),
                           Encoded(kEncodingHuffYUV, space, kWidth, kHeight)) != kOK)
        return;
    RunCodec(state, encoder, Picture(space), 12 * kWidth * kHeight);
}

void HuffYUVEncodeLibav(benchmark::State& state, uint32_t space)
{
    PeerEncoder encoder("huffyuv", space, kWidth, kHeight, {{"pred", PeerMethod(space)}});
    encoder.SetPicture(Picture(space));
    for (auto _ : state)
        benchmark::DoNotOptimize(encoder.Encode());
}

// Both decode the same frames, libavcodec's.
void HuffYUVDecode(benchmark::State& state, uint32_t space, const char* method)
{
    PeerEncoder encoder("huffyuv", space, kWidth, kHeight, {{"pred", method}});
    encoder.SetPicture(Picture(space));
    const auto frame = encoder.Encode();
    const PeerStream stream = encoder.Stream();
    MediaFormat encoded = Encoded(kEncodingHuffYUV, space, kWidth, kHeight);
    encoded.encoded_video.private_data = stream.extension.data();
    encoded.encoded_video.private_size = static_cast<uint32_t>(stream.extension.size());
    HuffYUVDecoder decoder;
    if (decoder.SetFormats(encoded, Raw(space, kWidth, kHeight)) != kOK) return;
    RunCodec(state, decoder, Bytes(frame.begin(), frame.end()), 4 * kWidth * kHeight);
}

void HuffYUVDecodeLibav(benchmark::State& state, uint32_t space, const char* method)
{
    PeerEncoder encoder("huffyuv", space, kWidth, kHeight, {{"pred", method}});
    encoder.SetPicture(Picture(space));
    const auto frame = encoder.Encode();
    PeerDecoder decoder(encoder.Stream());
    for (auto _ : state)
        if (!decoder.Decode(frame)) state.SkipWithError("Decode failed");
}

void RLEEncode(benchmark::State& state, uint32_t from, uint32_t depth)
{
    QTRLEEncoder encoder;
    if (encoder.SetFormats(Raw(from, kWidth, kHeight),
                           Encoded(kEncodingQTRLE, depth, kWidth, kHeight)) != kOK)
        return;
    RunCodec(state, encoder, Picture(from), 5 * kWidth * kHeight);
}

void RLEDecode(benchmark::State& state, uint32_t depth, uint32_t to)
{
    QTRLEEncoder encoder;
    QTRLEDecoder decoder;
    if (encoder.SetFormats(Raw(depth, kWidth, kHeight),
                           Encoded(kEncodingQTRLE, depth, kWidth, kHeight)) != kOK)
        return;
    if (decoder.SetFormats(Encoded(kEncodingQTRLE, depth, kWidth, kHeight),
                           Raw(to, kWidth, kHeight)) != kOK)
        return;
    const Bytes picture = Picture(depth);
    Bytes frame(5 * kWidth * kHeight);
    const std::optional<size_t> size = encoder.Convert(picture, frame);
    if (!size) return;
    frame.resize(*size);
    RunCodec(state, decoder, frame, 4 * kWidth * kHeight);
}

void RLEDecodeLibav(benchmark::State& state, uint32_t space)
{
    PeerEncoder encoder("qtrle", space, kWidth, kHeight);
    encoder.SetPicture(Picture(space));
    const auto frame = encoder.Encode();
    PeerDecoder decoder(encoder.Stream());
    for (auto _ : state)
        if (!decoder.Decode(frame)) state.SkipWithError("Decode failed");
}

// A picture of that many bytes a pixel.
void Memcpy(benchmark::State& state, size_t pixelBytes)
{
    const Bytes from(pixelBytes * kWidth * kHeight, 1);
    Bytes to(from.size());
    for (auto _ : state) {
        memcpy(to.data(), from.data(), from.size());
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK_CAPTURE(HuffYUVEncode, yuv_median, kYUY2);
BENCHMARK_CAPTURE(HuffYUVEncodeLibav, yuv_median, kYUY2);
BENCHMARK_CAPTURE(HuffYUVEncode, rgb24_gradient, kBGR24);
BENCHMARK_CAPTURE(HuffYUVEncodeLibav, rgb24_gradient, kBGR24);
BENCHMARK_CAPTURE(HuffYUVEncode, rgb32_gradient, kBGRA32);
BENCHMARK_CAPTURE(HuffYUVEncodeLibav, rgb32_gradient, kBGRA32);
BENCHMARK_CAPTURE(HuffYUVDecode, yuv_left, kYUY2, "left");
BENCHMARK_CAPTURE(HuffYUVDecodeLibav, yuv_left, kYUY2, "left");
BENCHMARK_CAPTURE(HuffYUVDecode, yuv_median, kYUY2, "median");
BENCHMARK_CAPTURE(HuffYUVDecodeLibav, yuv_median, kYUY2, "median");
BENCHMARK_CAPTURE(HuffYUVDecode, rgb24_gradient, kBGR24, "plane");
BENCHMARK_CAPTURE(HuffYUVDecodeLibav, rgb24_gradient, kBGR24, "plane");
BENCHMARK_CAPTURE(HuffYUVDecode, rgb32_gradient, kBGRA32, "plane");
BENCHMARK_CAPTURE(HuffYUVDecodeLibav, rgb32_gradient, kBGRA32, "plane");
BENCHMARK_CAPTURE(RLEEncode, 24_to_24, kBGR24, kBGR24);
BENCHMARK_CAPTURE(RLEEncode, 32_to_24, kBGRX32, kBGR24);
BENCHMARK_CAPTURE(RLEEncode, 32_to_32, kBGRX32, kBGRX32);
BENCHMARK_CAPTURE(RLEDecode, 24_to_24, kBGR24, kBGR24);
BENCHMARK_CAPTURE(RLEDecode, 24_to_32, kBGR24, kBGRX32);
BENCHMARK_CAPTURE(RLEDecode, 32_to_32, kBGRX32, kBGRX32);
BENCHMARK_CAPTURE(RLEDecodeLibav, 24, kBGR24);
BENCHMARK_CAPTURE(RLEDecodeLibav, 32, kBGRA32);
BENCHMARK_CAPTURE(Memcpy, 24, 3);
BENCHMARK_CAPTURE(Memcpy, 32, 4);

}  // namespace
}  // namespace kelvane
