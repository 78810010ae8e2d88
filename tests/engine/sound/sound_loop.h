#pragma once

#include <functional>

#include "engine/sound/audio_transfer.h"
#include "engine/sound/made_up_sound.h"
#include "engine/timing/frame_planner.h"
#include "sample/sample_sound.h"
#include "sample/unlocked_tape.h"

namespace kelvane {

inline double FramesPerSecond(bool pal)
{
    return pal ? 25.0 : 30 / 1.001;
}

inline void Embed(Bytes& frame, std::span<const uint8_t> sound)
{
    DIFFrame(frame.data(), uint32_t(frame.size())).EmbedAudio(sound, 48000, 2);
}

// The frame loop around the sound: reads source frames into a ring of four, writes output frames
// in their own time, and gathers what is heard.
struct SoundLoop {
    // Of DV frames, with a chunk for five frames in a track.
    SoundLoop(bool from, bool to, bool separate = false)
    {
        setup.source_is_pal = from, setup.destination_is_pal = to;
        setup.source_is_dv = true, setup.separate_track = separate;
        setup.interleave = 5;
        settings.op = from == to ? Operation::kConvert
                      : to       ? Operation::kToPAL
                                 : Operation::kToNTSC;
        settings.src_interlace = FieldOrder::kLowerFirst;
    }

    // `make` gives source frame n its sound; it has none before.
    void Go(uint64_t frames, const std::function<void(Bytes&, uint64_t)>& make = {})
    {
        const bool from = setup.source_is_pal, to = setup.destination_is_pal;
        setup.pace = PaceOf(settings, from, to);
        AudioTransfer transfer(setup);
        if (stream) {
            EXPECT_TRUE(transfer.SetSourceStream(*stream, SampleCoding{}, 48000, channels));
        }
        FramePlanner planner(settings, from, to);
        Bytes frame(from ? 144000 : 120000, 0xFF), output(to ? 144000 : 120000, 0xFF);
        output[3] = to ? 0xBF : 0x3F;
        for (uint64_t read = 0;; planner.Advance(read)) {
            for (int64_t wanted = planner.FramesToRead(read == 0); wanted > 0; wanted--, read++) {
                if (read >= frames) continue;
                frame[3] = from ? 0xBF : 0x3F;
                EraseAudioPacks(frame);
                if (make) make(frame, read);
                ASSERT_TRUE(transfer.FrameRead(frame));
            }
            static_cast<void>(transfer.TurnRead());
            const uint64_t current = read - 3;
            if (current >= frames) break;
            const auto number = uint64_t(planner.Number());
            const ResamplingPlan plan =
                planner.Plan(int64_t(current), [](Neighbour, Neighbour) { return true; });
            if (plan.base == ResamplingPlan::kDrop) continue;
            ASSERT_TRUE(transfer.CheckRate());
            shown.push_back(current);
            const bool upper = planner.Order(int64_t(current)) == FieldOrder::kUpperFirst;
            Show(current, upper ? plan.even : plan.odd);
            Show(current, upper ? plan.odd : plan.even);
            EraseAudioPacks(output);
            transfer.EmbedInto(output, number, {frame, false});
            if (!setup.separate_track) Hear(output);
            ASSERT_EQ(0, transfer.FrameWritten(number, track));
        }
        EXPECT_EQ(0, transfer.Finish(track));
    }

    // The source frame that the next field shows.
    void Show(uint64_t current, Neighbour which)
    {
        const int64_t offset = which == Neighbour::kPrevious ? -1
                               : which == Neighbour::kNext   ? 1
                               : which == Neighbour::kNewest ? 2
                                                             : 0;
        fields.push_back(int64_t(current) + offset);
    }

    void Hear(Bytes& output)
    {
        DIFFrame frame(output.data(), uint32_t(output.size()));
        AudioInfo info;
        rates.push_back(frame.GetAudioInfo(info) ? info.sample_rate : 0);
        Bytes sound(7776);
        sound.resize(frame.ExtractAudio(sound, 3));
        heard.insert(heard.end(), sound.begin(), sound.end());
        first_sample.push_back(heard.size() / 4);
    }

    // All that came out.
    const Bytes& Got() const { return setup.separate_track ? track.samples : heard; }
    std::span<const uint8_t> HeardIn(size_t frame) const
    {
        return std::span(heard).first(first_sample[frame + 1] * 4).subspan(first_sample[frame] * 4);
    }
    // The source frame that is shown when a sample of what came out is heard.
    int64_t ShownAt(uint64_t sample, uint32_t rate) const
    {
        const auto above = std::upper_bound(first_sample.begin(), first_sample.end(), sample);
        const auto frame =
            setup.separate_track
                ? size_t(double(sample) / rate * FramesPerSecond(setup.destination_is_pal))
                : size_t(above - first_sample.begin() - 1);
        return int64_t(shown.at(std::min(frame, shown.size() - 1)));
    }
    // When a sample of what came out is heard.
    double SecondsAt(uint64_t sample) const
    {
        if (setup.separate_track) return double(sample) / 48000;
        const auto above = std::upper_bound(first_sample.begin(), first_sample.end(), sample);
        const auto frame = size_t(above - first_sample.begin() - 1);
        const uint64_t first = first_sample[frame], end = first_sample[frame + 1];
        return (double(frame) + double(sample - first) / double(end - first)) /
               FramesPerSecond(setup.destination_is_pal);
    }
    // That what came out is as long as the pictures, to `most` seconds.
    void ExpectLength(uint32_t rate, double most) const
    {
        EXPECT_NEAR(double(shown.size()) / FramesPerSecond(setup.destination_is_pal),
                    double(Got().size() / 4) / rate, most);
    }
    void ExpectBegin(const Bytes& expected) const
    {
        ASSERT_GE(Got().size(), expected.size());
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), Got().begin()));
    }

    AudioSetup setup;
    ConversionSettings settings;
    AudioStream* stream = nullptr;  // at 48000 hertz; otherwise the frames have the sound
    uint32_t channels = 2;          // of it
    MadeUpTrack track;
    Bytes heard;                               // in all output frames
    std::vector<uint64_t> first_sample = {0};  // of each output frame within it, and the end
    std::vector<uint64_t> shown;               // source frame behind each output frame
    std::vector<int64_t> fields;               // source frame behind each output field, in order
    std::vector<uint32_t> rates;               // in each output frame; 0 without sound
};

}  // namespace kelvane
