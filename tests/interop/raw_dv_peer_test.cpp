// Raw DV and the sound in its frames against ffmpeg and libdv.

#include <gmock/gmock.h>
#include <libdv/dv.h>

#include <memory>
#include <random>

#include "dv/dif_frame.h"
#include "interop/peer_test.h"

namespace kelvane {
namespace {

const std::string kProgram = KELVANE_CONVERT;

class RawDVPeers : public PeerTest {
protected:
    std::string Described() const { return Printed(kProgram + " --describe clip.dv"); }
};

TEST_F(RawDVPeers, ClipsAreDescribedByTheirBytesAndCopiedAsTheyAre)
{
    const auto sample = [](const char* system, const char* aspect) {
        return kProgram + " --make-sample clip.dv --sample-seconds 2 --sample-system " + system +
               " --sample-aspect " + aspect;
    };
    const auto drawn = [](const std::string& options) {
        return "ffmpeg -f lavfi -i testsrc2 -f lavfi -i sine -t 0.2 " + options + " clip.dv";
    };
    const std::string odd = "-s 720x576 -r 25 -pix_fmt yuv411p -ar 48000 -ac 2 -f dv -aspect ";
    // ffmpeg marks every 4:1:1 frame as DVCPRO; the description says what the bytes say. Of the
    // wide ones it knows only those with another mark than ours.
    const struct {
        std::string command, described, probed;
    } rows[] = {
        {sample("pal", "4:3"), "DV PAL 4:2:0 (4:3", "576,4:3,25/1,50"},
        {sample("pal", "16:9"), "DV PAL 4:2:0 (16:9", "576,16:9,25/1,50"},
        {sample("ntsc", "4:3"), "DV NTSC 4:1:1 (4:3", "480,4:3,30000/1001,60"},
        {sample("ntsc", "16:9"), "DV NTSC 4:1:1 (16:9", "480,16:9,30000/1001,60"},
        {drawn("-target pal-dv -aspect 4:3"), "DV PAL 4:2:0 (4:3", "576,4:3,25/1,"},
        {drawn("-target pal-dv -aspect 16:9"), "DV PAL 4:2:0 (16:9", "576,16:9,25/1,"},
        {drawn("-target ntsc-dv -aspect 4:3"), "DVCPRO NTSC 4:1:1 (4:3", "480,4:3,30000/1001,"},
        {drawn("-target ntsc-dv -aspect 16:9"), "DVCPRO NTSC 4:1:1 (16:9", "480,"},
        {drawn(odd + "4:3"), "DVCPRO PAL 4:1:1 (4:3", "576,4:3,25/1,"},
        {drawn(odd + "16:9"), "DVCPRO PAL 4:1:1 (16:9", "576,"},
    };
    for (const auto& [command, described, probed] : rows) {
        SCOPED_TRACE(command);
        Run("rm -f clip.dv copy.dv; " + command + " && " + kProgram + " clip.dv -o copy.dv");
        EXPECT_EQ("clip.dv: DIF/" + described + " format)", Described());
        EXPECT_THAT(Probed("copy.dv", "v",
                           "codec_name,width,height,display_aspect_ratio,r_frame_rate,"
                           "nb_read_frames"),
                    testing::StartsWith("dvvideo,720," + probed));
        EXPECT_TRUE(FromFfmpeg("clip.dv", "-map 0:v -f md5") ==
                    FromFfmpeg("copy.dv", "-map 0:v -f md5"));
    }
}

TEST_F(RawDVPeers, ClipsOfLibdvAreDescribedByTheirBytes)
{
    for (const bool pal : {true, false})
        for (const bool wide : {true, false}) {
            const TelevisionSystem& system = SystemFor(pal);
            dv_encoder_t* encoder = dv_encoder_new(0, 0, 0);
            encoder->isPAL = pal;
            encoder->is16x9 = wide;
            Bytes grey(size_t(system.width) * size_t(system.height) * 2, 128);
            uint8_t* planes[] = {grey.data(), nullptr, nullptr};
            Bytes frame(DVFrameSize(pal));
            dv_encode_full_frame(encoder, planes, e_dv_color_yuv, frame.data());
            time_t now = 0;
            dv_encode_metadata(frame.data(), pal, wide, &now, 0);
            dv_encoder_free(encoder);
            Write("clip.dv", frame);
            EXPECT_EQ(std::string("clip.dv: DIF/DV ") + (pal ? "PAL 4:2:0" : "NTSC 4:1:1") +
                          (wide ? " (16:9 format)" : " (4:3 format)"),
                      Described());
        }
}

constexpr struct {
    bool pal;
    uint32_t rate;
    size_t samples;  // a channel
} kCases[] = {{true, 48000, 1920},  {true, 44100, 1764},  {true, 32000, 1280},
              {false, 48000, 1602}, {false, 44100, 1472}, {false, 32000, 1068}};

void Append(Bytes& sound, int16_t sample)
{
    sound.push_back(static_cast<uint8_t>(sample));
    sound.push_back(static_cast<uint8_t>(sample >> 8));
}

// Samples of -32768 and close to it are kept out: peers take them for errors of the tape.
Bytes Sound(size_t samples, size_t seed)
{
    std::mt19937 random(static_cast<uint32_t>(seed));
    Bytes sound;
    for (size_t i = 0; i < samples; i++)
        Append(sound, static_cast<int16_t>(random() % 60000) % 30000);
    return sound;
}

class DVAudioPeer : public PeerTest {
protected:
    // Frames with a picture and with sound at 48 kHz, as ffmpeg makes them.
    Bytes Clip(bool pal, const std::string& seconds = "0.2") const
    {
        Bytes frames = MakeDV(pal, seconds);
        // ffmpeg marks every 4:1:1 frame as DVCPRO by the application ids, NTSC DV too.
        for (size_t sequence = 0; sequence < frames.size(); sequence += kDIFSequenceSize)
            for (size_t i = 4; i < 8; i++)
                frames[sequence + i] &= 0xF8;
        return frames;
    }
    // What ffmpeg hears in the frames' pair of channels.
    Bytes Heard(const Bytes& frames, const std::string& pair = "0:1") const
    {
        Write("in.dv", frames);
        return PeerSound("in.dv", pair);
    }
};

template <class Use>
void ForEachFrame(Bytes& frames, bool pal, Use use)
{
    const size_t size = DVFrameSize(pal);
    for (size_t i = 0; i < frames.size() / size; i++) {
        DIFFrame frame(frames.data() + i * size, static_cast<uint32_t>(size));
        use(i, frame);
    }
}

Bytes Extract(Bytes& frames, bool pal, uint32_t mask = 3)
{
    Bytes sound;
    ForEachFrame(frames, pal, [&](size_t, DIFFrame& frame) {
        Bytes one(10400);
        one.resize(frame.ExtractAudio(one, mask));
        sound.insert(sound.end(), one.begin(), one.end());
    });
    return sound;
}

TEST_F(DVAudioPeer, LibdvReadsWhatWeWriteAndWeReadWhatItWrites)
{
    for (const auto& c : kCases) {
        SCOPED_TRACE(std::to_string(c.rate) + (c.pal ? " PAL" : " NTSC"));
        const Bytes sound = Sound(2 * c.samples, 7);
        std::vector<int16_t> buffers(4 * 1944);
        int16_t* channels[] = {&buffers[0], &buffers[1944], &buffers[2 * 1944], &buffers[3 * 1944]};
        Bytes theirs = Clip(c.pal, "0.04");
        theirs.resize(DVFrameSize(c.pal));
        Bytes ours = theirs;

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
        Bytes heard;
        for (size_t i = 0; i < 2 * c.samples; i++)
            Append(heard, channels[i % 2][i / 2]);
        EXPECT_EQ(sound, heard);

        const std::unique_ptr<dv_encoder_t, decltype(&dv_encoder_free)> encoder(
            dv_encoder_new(0, 0, 0), dv_encoder_free);
        encoder->isPAL = c.pal;
        encoder->samples_this_frame = static_cast<int>(c.samples);
        dv_encode_full_audio(encoder.get(), channels, 2, static_cast<int>(c.rate), theirs.data());
        EXPECT_EQ(sound, Extract(theirs, c.pal));
    }
}

TEST_F(DVAudioPeer, FfmpegReadsWhatWeWrite)
{
    for (const auto& c : kCases) {
        SCOPED_TRACE(std::to_string(c.rate) + (c.pal ? " PAL" : " NTSC"));
        Bytes frames = Clip(c.pal), all;
        ASSERT_GE(frames.size(), 5 * DVFrameSize(c.pal));
        ForEachFrame(frames, c.pal, [&](size_t i, DIFFrame& frame) {
            const Bytes sound = Sound(2 * (c.samples + i % 3), i);
            EXPECT_EQ(sound.size(), frame.EmbedAudio(sound, c.rate, 2));
            all.insert(all.end(), sound.begin(), sound.end());
        });
        EXPECT_EQ(all, Heard(frames));
    }
}

TEST_F(DVAudioPeer, WeReadWhatFfmpegWrites)
{
    for (const bool pal : {true, false}) {
        Bytes frames = Clip(pal, "2");
        const Bytes ours = Extract(frames, pal);
        EXPECT_EQ(Heard(frames), ours);
        EXPECT_GT(ours.size(), 48000u * 4 * 19 / 10);
    }
}

TEST_F(DVAudioPeer, FfmpegReadsFourChannelsOfTwelveBits)
{
    for (const bool pal : {true, false}) {
        Bytes frames = Clip(pal);
        ForEachFrame(frames, pal, [&](size_t i, DIFFrame& frame) {
            frame.EmbedAudio(Sound(4 * (pal ? 1280 : 1068), i), 32000, 4);
        });
        // In NTSC the second pair stands in the place of the first, and the place of the second
        // keeps what it held: both decoders must see it alike.
        EXPECT_EQ(Heard(frames, "0:1"), Extract(frames, pal, 3)) << pal;
        if (pal) {
            EXPECT_EQ(Heard(frames, "0:2"), Extract(frames, pal, 12));
        }
    }
}

}  // namespace
}  // namespace kelvane
