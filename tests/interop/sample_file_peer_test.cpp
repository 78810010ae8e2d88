// WAVE and AIFF files against sox and ffmpeg, both ways.

#include <gtest/gtest.h>

#include <random>

#include "media/audio_file.h"
#include "support/run_command.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes Noise(size_t bytes)
{
    std::mt19937 random(3);
    Bytes noise(bytes);
    for (uint8_t& byte : noise)
        byte = static_cast<uint8_t>(random());
    return noise;
}

class SampleFilePeer : public testing::Test {
protected:
    // What a command that has %i for the input and %o for raw samples makes of a file of ours.
    Bytes Heard(std::string command, const std::string& input)
    {
        const std::string raw = fFolder.Path("heard.raw");
        command.replace(command.find("%i"), 2, input);
        command.replace(command.find("%o"), 2, raw);
        EXPECT_EQ(0, RunCommand(command)) << command;
        return ReadWhole(raw);
    }
    Bytes ReadAll(const std::string& path, int32_t type, uint16_t bits)
    {
        AudioFile file(path.c_str(), kRead, type);
        EXPECT_EQ(0, file.InitCheck()) << path;
        if (!file.Format()) return {};
        EXPECT_EQ(2, file.Format()->ch);
        EXPECT_EQ(bits, file.Format()->bitspersample);
        EXPECT_EQ(48000, file.Format()->srate);
        int32_t count = static_cast<int32_t>(file.CountFrames());
        Bytes samples(static_cast<size_t>(count) * bits / 4);
        EXPECT_EQ(0, file.Read(samples.data(), count));
        return samples;
    }
    std::string Written(const std::string& name, int32_t type, const RawAudioFormat& format,
                        const Bytes& samples)
    {
        const std::string path = fFolder.Path(name);
        AudioFile file(path.c_str(), kCreate, type);
        EXPECT_EQ(0, file.SetFormat(format));
        const auto frames = static_cast<int32_t>(samples.size() / SampleFrameSize(format));
        EXPECT_EQ(0, file.Write(samples.data(), frames));
        return path;
    }
    TempFolder fFolder;
};

TEST_F(SampleFilePeer, SoxAndFfmpegReadOurs)
{
    const Bytes samples = Noise(48000);
    const RawAudioFormat pcm16 = {kSamplePCM, 2, 16, 48000};
    const std::string wav = Written("a.wav", kWAVFileType, pcm16, samples);
    const std::string aiff = Written("a.aif", kAIFFFileType, pcm16, samples);
    for (const std::string& path : {wav, aiff}) {
        EXPECT_EQ(samples, Heard("sox %i -t raw -e signed -b 16 -L %o", path));
        EXPECT_EQ(samples, Heard("ffmpeg -y -i %i -f s16le %o", path));
        EXPECT_EQ(0, RunCommand("test $(soxi -r " + path + ") = 48000 && test $(soxi -c " + path +
                                ") = 2 && test $(soxi -s " + path + ") = 12000"));
    }
    const std::string wide = Written("b.wav", kWAVFileType, {kSamplePCM, 2, 24, 48000}, samples);
    EXPECT_EQ(samples, Heard("sox %i -t raw -e signed -b 24 -L %o", wide));
    const std::string real =
        Written("c.wav", kWAVFileType, {kSampleFloat, 2, 32, 48000}, Bytes(48000));
    EXPECT_EQ(Bytes(48000), Heard("ffmpeg -y -i %i -f f32le %o", real));
}

TEST_F(SampleFilePeer, WeReadTheirs)
{
    const Bytes samples = Noise(48000);
    const std::string raw = fFolder.Write("in.raw", samples);
    struct Row {
        const char* command;
        const char* name;
        int32_t type;
        uint16_t bits;
    };
    const Row rows[] = {
        {"sox -t raw -r 48000 -c 2 -e signed -b 16 -L %r %o", "s.wav", kWAVFileType, 16},
        {"sox -t raw -r 48000 -c 2 -e signed -b 16 -L %r %o", "s.aiff", kAIFFFileType, 16},
        {"sox -t raw -r 48000 -c 2 -e signed -b 24 -L %r -t wavpcm %o", "s24.wav", kWAVFileType,
         24},
        {"sox -t raw -r 48000 -c 2 -e unsigned -b 8 %r %o", "s8.wav", kWAVFileType, 8},
        {"ffmpeg -y -f s16le -ar 48000 -ac 2 -i %r %o", "f.wav", kWAVFileType, 16},
        {"ffmpeg -y -f s16le -ar 48000 -ac 2 -i %r %o", "f.aif", kAIFFFileType, 16},
        // Broadcast WAVE, with its "bext" chunk, and one whose sizes were never filled in.
        {"ffmpeg -y -f s16le -ar 48000 -ac 2 -i %r -write_bext 1 -metadata description=Take %o",
         "bext.wav", kWAVFileType, 16},
        {"ffmpeg -y -f s16le -ar 48000 -ac 2 -i %r -f wav - | cat > %o", "pipe.wav", kWAVFileType,
         16},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string path = fFolder.Path(row.name);
        std::string command = row.command;
        command.replace(command.find("%r"), 2, raw);
        command.replace(command.find("%o"), 2, path);
        ASSERT_EQ(0, RunCommand(command));
        EXPECT_EQ(row.type, AudioFileTypeOf(path.c_str()));
        EXPECT_EQ(samples, ReadAll(path, row.type, row.bits));
    }
}

TEST_F(SampleFilePeer, AnAIFCFileFromElsewhereIsRefused)
{
    const std::string path = fFolder.Path("x.aifc");
    ASSERT_EQ(0, RunCommand("sox -n -r 48000 -c 2 -b 16 " + path + " trim 0 0.1"));
    EXPECT_EQ(kAIFFFileType, AudioFileTypeOf(path.c_str()));
    EXPECT_EQ(-3, AIFFFile(path.c_str(), kRead).InitCheck());
}

}  // namespace
}  // namespace kelvane
