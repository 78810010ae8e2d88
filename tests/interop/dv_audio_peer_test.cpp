// Sound in DV frames against the decoders and encoders of libdv and ffmpeg.

#include <gtest/gtest.h>
#include <libdv/dv.h>

#include <memory>
#include <random>

#include "dv/dif_frame.h"
#include "support/run_command.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

using Bytes = std::vector<uint8_t>;

struct Case {
    bool pal;
    uint32_t rate;
    size_t samples;  // a channel
    std::string Name() const { return std::to_string(rate) + (pal ? " PAL" : " NTSC"); }
};
constexpr Case kCases[] = {{true, 48000, 1920},  {true, 44100, 1764},  {true, 32000, 1280},
                           {false, 48000, 1602}, {false, 44100, 1472}, {false, 32000, 1068}};

// Samples of -32768 and close to it are kept out: peers take them for errors of the tape.
Bytes Sound(size_t samples, uint32_t seed)
{
    std::mt19937 random(seed);
    Bytes sound;
    for (size_t i = 0; i < samples; i++) {
        const auto sample = static_cast<int16_t>(random() % 60000) % 30000;
        sound.push_back(static_cast<uint8_t>(sample));
        sound.push_back(static_cast<uint8_t>(sample >> 8));
    }
    return sound;
}

int16_t SampleAt(const Bytes& sound, size_t i)
{
    return static_cast<int16_t>(sound[2 * i] | sound[2 * i + 1] << 8);
}

class DVAudioPeer : public testing::Test {
protected:
    size_t FrameSize(bool pal) const { return pal ? 144000 : 120000; }
    // Frames with a picture and with sound at 48 kHz, as ffmpeg makes them.
    Bytes Clip(bool pal, const std::string& seconds = "0.2")
    {
        const std::string path = fFolder.Path("clip.dv");
        EXPECT_EQ(
            0, RunCommand("ffmpeg -y -f lavfi -i testsrc2=s=" +
                          std::string(pal ? "720x576:r=25" : "720x480:r=30000/1001") +
                          " -f lavfi -i aevalsrc='0.7*sin(3000*t)|0.5*sin(5000*t)':s=48000" +
                          " -t " + seconds + " -target " + (pal ? "pal" : "ntsc") + "-dv " + path));
        Bytes frames = ReadWhole(path);
        // ffmpeg marks every 4:1:1 frame as DVCPRO by the application ids, NTSC DV too.
        for (size_t sequence = 0; sequence < frames.size(); sequence += kDIFSequenceSize)
            for (size_t i = 4; i < 8; i++)
                frames[sequence + i] &= 0xF8;
        return frames;
    }
    Bytes OneFrame(bool pal)
    {
        Bytes frame = Clip(pal, "0.04");
        frame.resize(FrameSize(pal));
        return frame;
    }
    // What ffmpeg hears in the frames' pair of channels.
    Bytes Decoded(const Bytes& frames, const std::string& pair = "0:1")
    {
        const std::string dv = fFolder.Write("in.dv", frames), raw = fFolder.Path("out.raw");
        EXPECT_EQ(0, RunCommand("ffmpeg -y -i " + dv + " -map " + pair + " -f s16le " + raw));
        return ReadWhole(raw);
    }
    TempFolder fFolder;
};

Bytes Extract(Bytes& frames, size_t frameSize, uint32_t mask = 3)
{
    Bytes sound;
    for (size_t at = 0; at + frameSize <= frames.size(); at += frameSize) {
        Bytes one(10400);
        DIFFrame frame(frames.data() + at, static_cast<uint32_t>(frameSize));
        one.resize(frame.ExtractAudio(one, mask));
        sound.insert(sound.end(), one.begin(), one.end());
    }
    return sound;
}

TEST_F(DVAudioPeer, LibdvReadsWhatWeWriteAndWeReadWhatItWrites)
{
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.Name());
        const Bytes sound = Sound(2 * c.samples, 7);
        std::vector<int16_t> left(1944), right(1944), more(1944), evenMore(1944);
        int16_t* channels[] = {left.data(), right.data(), more.data(), evenMore.data()};

        Bytes ours = OneFrame(c.pal);
        DIFFrame(ours.data(), static_cast<uint32_t>(ours.size())).EmbedAudio(sound, c.rate, 2);
        const std::unique_ptr<dv_decoder_t, decltype(&dv_decoder_free)> decoder(
            dv_decoder_new(0, 0, 0), dv_decoder_free);
        // Our source pack has the emphasis flag at 0, which this decoder takes for emphasis and
        // filters. The samples are what is compared.
        constexpr int kEmphasisOff = 2;
        decoder->audio->arg_audio_emphasis = kEmphasisOff;
        ASSERT_GE(dv_parse_header(decoder.get(), ours.data()), 0);
        ASSERT_TRUE(dv_decode_full_audio(decoder.get(), ours.data(), channels));
        EXPECT_EQ(static_cast<int>(c.rate), dv_get_frequency(decoder.get()));
        ASSERT_EQ(static_cast<int>(c.samples), dv_get_num_samples(decoder.get()));
        for (size_t i = 0; i < c.samples; i++) {
            ASSERT_EQ(SampleAt(sound, 2 * i), left[i]) << i;
            ASSERT_EQ(SampleAt(sound, 2 * i + 1), right[i]) << i;
        }

        Bytes theirs = OneFrame(c.pal);
        const std::unique_ptr<dv_encoder_t, decltype(&dv_encoder_free)> encoder(
            dv_encoder_new(0, 0, 0), dv_encoder_free);
        encoder->isPAL = c.pal;
        encoder->samples_this_frame = static_cast<int>(c.samples);
        dv_encode_full_audio(encoder.get(), channels, 2, static_cast<int>(c.rate), theirs.data());
        EXPECT_EQ(sound, Extract(theirs, theirs.size()));
    }
}

TEST_F(DVAudioPeer, FfmpegReadsWhatWeWrite)
{
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.Name());
        Bytes frames = Clip(c.pal), all;
        const size_t size = FrameSize(c.pal);
        ASSERT_GE(frames.size() / size, 5u);
        for (size_t i = 0; i < frames.size() / size; i++) {
            const Bytes sound = Sound(2 * (c.samples + i % 3), static_cast<uint32_t>(i));
            DIFFrame frame(frames.data() + i * size, static_cast<uint32_t>(size));
            EXPECT_EQ(sound.size(), frame.EmbedAudio(sound, c.rate, 2));
            all.insert(all.end(), sound.begin(), sound.end());
        }
        EXPECT_EQ(all, Decoded(frames));
    }
}

TEST_F(DVAudioPeer, WeReadWhatFfmpegWrites)
{
    for (const bool pal : {true, false}) {
        Bytes frames = Clip(pal, "2");
        const Bytes ours = Extract(frames, FrameSize(pal));
        EXPECT_EQ(Decoded(frames), ours);
        EXPECT_GT(ours.size(), 48000u * 4 * 19 / 10);
    }
}

TEST_F(DVAudioPeer, FfmpegReadsFourChannelsOfTwelveBits)
{
    for (const bool pal : {true, false}) {
        SCOPED_TRACE(pal);
        const size_t samples = pal ? 1280 : 1068, size = FrameSize(pal);
        Bytes frames = Clip(pal);
        for (size_t at = 0; at < frames.size(); at += size) {
            DIFFrame frame(frames.data() + at, static_cast<uint32_t>(size));
            frame.EmbedAudio(Sound(4 * samples, static_cast<uint32_t>(at)), 32000, 4);
        }
        // In NTSC the second pair stands in the place of the first, and the place of the second
        // keeps what it held: both decoders must see it alike.
        EXPECT_EQ(Decoded(frames, "0:1"), Extract(frames, size, 3));
        if (pal) {
            EXPECT_EQ(Decoded(frames, "0:2"), Extract(frames, size, 12));
        }
    }
}

}  // namespace
}  // namespace kelvane
