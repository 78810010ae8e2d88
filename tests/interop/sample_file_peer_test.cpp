// WAVE and AIFF files against sox and ffmpeg, both ways.

#include <random>

#include "interop/peer_test.h"
#include "media/samples/audio_file.h"

namespace kelvane {
namespace {

class SampleFilePeer : public PeerTest {
protected:
    SampleFilePeer() : fSamples(48000)
    {
        std::mt19937 random(3);
        for (uint8_t& byte : fSamples)
            byte = static_cast<uint8_t>(random());
    }
    Bytes fSamples;
};

TEST_F(SampleFilePeer, SoxAndFfmpegReadOurs)
{
    const struct {
        const char* name;
        int32_t type;
        RawAudioFormat format;
        const char *sox, *ffmpeg;  // how they put raw samples down
    } rows[] = {
        {"a.wav", kWAVFileType, {kSamplePCM, 2, 16, 48000}, "signed -b 16", "s16le"},
        {"a.aif", kAIFFFileType, {kSamplePCM, 2, 16, 48000}, "signed -b 16", "s16le"},
        {"b.wav", kWAVFileType, {kSamplePCM, 2, 24, 48000}, "signed -b 24", "s24le"},
        {"c.wav", kWAVFileType, {kSampleFloat, 2, 32, 48000}, "float -b 32", "f32le"},
    };
    for (const auto& [name, type, format, sox, ffmpeg] : rows) {
        SCOPED_TRACE(name);
        if (format.format == kSampleFloat) fSamples.assign(48000, 0);
        const auto frames = static_cast<int32_t>(fSamples.size() / SampleFrameSize(format));
        {
            AudioFile file(Path(name).c_str(), kCreate, type);
            EXPECT_EQ(0, file.SetFormat(format));
            EXPECT_EQ(0, file.Write(fSamples.data(), frames));
        }
        Run(std::string("sox ") + name + " -t raw -L -e " + sox + " heard.raw");
        EXPECT_EQ(fSamples, Read("heard.raw"));
        EXPECT_EQ(fSamples, FromFfmpeg(name, std::string("-f ") + ffmpeg));
        for (const auto& [option, told] : {std::pair("-r", 48000), {"-c", 2}, {"-s", frames}})
            EXPECT_EQ(std::to_string(told), Printed(std::string("soxi ") + option + " " + name));
    }
}

TEST_F(SampleFilePeer, WeReadTheirs)
{
    Write("in.raw", fSamples);
    const std::string sox = "sox -t raw -r 48000 -c 2 -L -e ";
    const std::string ffmpeg = "ffmpeg -y -f s16le -ar 48000 -ac 2 -i in.raw ";
    const struct {
        std::string command;
        const char* name;
        int32_t type;
        uint16_t bits;
    } rows[] = {
        {sox + "signed -b 16 in.raw s.wav", "s.wav", kWAVFileType, 16},
        {sox + "signed -b 16 in.raw s.aiff", "s.aiff", kAIFFFileType, 16},
        {sox + "signed -b 24 in.raw -t wavpcm s24.wav", "s24.wav", kWAVFileType, 24},
        {sox + "unsigned -b 8 in.raw s8.wav", "s8.wav", kWAVFileType, 8},
        {ffmpeg + "f.wav", "f.wav", kWAVFileType, 16},
        {ffmpeg + "f.aif", "f.aif", kAIFFFileType, 16},
        {sox + "signed -b 16 in.raw s.aifc", "s.aifc", kAIFFFileType, 16},
        {ffmpeg + "-c:a pcm_s16le sowt.aif", "sowt.aif", kAIFFFileType, 16},
        // Broadcast WAVE, with its "bext" chunk, and one whose sizes were never filled in.
        {ffmpeg + "-write_bext 1 -metadata description=Take bext.wav", "bext.wav", kWAVFileType,
         16},
        {ffmpeg + "-f wav - | cat > pipe.wav", "pipe.wav", kWAVFileType, 16},
    };
    for (const auto& [command, name, type, bits] : rows) {
        SCOPED_TRACE(command);
        Run(command);
        const std::string path = Path(name);
        EXPECT_EQ(type, AudioFileTypeOf(path.c_str()));
        AudioFile file(path.c_str(), kRead, type);
        ASSERT_EQ(0, file.InitCheck());
        EXPECT_EQ(2, file.Format()->ch);
        EXPECT_EQ(bits, file.Format()->bitspersample);
        EXPECT_EQ(48000, file.Format()->srate);
        auto count = static_cast<int32_t>(file.CountFrames());
        Bytes samples(static_cast<size_t>(count) * bits / 4);
        EXPECT_EQ(0, file.Read(samples.data(), count));
        EXPECT_EQ(fSamples, samples);
    }
}

}  // namespace
}  // namespace kelvane
