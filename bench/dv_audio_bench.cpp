// Sound in and out of a PAL frame, against libdv's functions for the same work.

#include <benchmark/benchmark.h>
#include <libdv/dv.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

#include "dv/dif_frame.h"

namespace kelvane {
namespace {

constexpr size_t kSamples = 1920;

struct Fixture {
    std::vector<uint8_t> frame = std::vector<uint8_t>(144000, 0xFF);
    std::vector<uint8_t> sound = std::vector<uint8_t>(kSamples * 4);
    DIFFrame view;
    int16_t channels[4][1944] = {};
    int16_t* outputs[4] = {channels[0], channels[1], channels[2], channels[3]};

    Fixture()
    {
        std::iota(sound.begin(), sound.end(), uint8_t{0});
        for (size_t at = 0; at < frame.size(); at += 12000) {
            const uint8_t header[] = {
                0x1F, static_cast<uint8_t>(at / 12000 << 4 | 7), 0, 0xBF, 0xF8, 0x78, 0x78, 0x78};
            std::ranges::copy(header, frame.begin() + static_cast<ptrdiff_t>(at));
        }
        view.AttachFrame(frame.data(), 144000);
        view.EmbedAudio(sound, 48000, 2);
    }
};

void ExtractOurs(benchmark::State& state)
{
    Fixture f;
    for (auto _ : state)
        benchmark::DoNotOptimize(f.view.ExtractAudio(f.sound, 3));
}

void ExtractLibdv(benchmark::State& state)
{
    Fixture f;
    const std::unique_ptr<dv_decoder_t, decltype(&dv_decoder_free)> decoder(dv_decoder_new(0, 0, 0),
                                                                            dv_decoder_free);
    decoder->audio->arg_audio_emphasis = 2;  // no filter: copying only
    if (dv_parse_header(decoder.get(), f.frame.data()) < 0) state.SkipWithError("no header");
    for (auto _ : state)
        benchmark::DoNotOptimize(dv_decode_full_audio(decoder.get(), f.frame.data(), f.outputs));
}

void EmbedOurs(benchmark::State& state)
{
    Fixture f;
    for (auto _ : state)
        benchmark::DoNotOptimize(f.view.EmbedAudio(f.sound, 48000, 2));
}

void EmbedLibdv(benchmark::State& state)
{
    Fixture f;
    const std::unique_ptr<dv_encoder_t, decltype(&dv_encoder_free)> encoder(dv_encoder_new(0, 0, 0),
                                                                            dv_encoder_free);
    encoder->isPAL = 1;
    encoder->samples_this_frame = kSamples;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            dv_encode_full_audio(encoder.get(), f.outputs, 2, 48000, f.frame.data()));
}

BENCHMARK(ExtractOurs);
BENCHMARK(ExtractLibdv);
BENCHMARK(EmbedOurs);
BENCHMARK(EmbedLibdv);

}  // namespace
}  // namespace kelvane
