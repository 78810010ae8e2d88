// Conversions by the program, looked at with other people's programs.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "base/television.h"
#include "codecs/huffyuv_format.h"
#include "codecs/huffyuv_frame_encoder.h"
#include "support/clip_maker/sample_clip.h"
#include "support/riff.h"
#include "support/run_command.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

const std::string kProgram = KELVANE_CONVERT;

class ConversionPeers : public testing::Test {
protected:
    std::string MakeClip(int64_t frames, const SampleOptions& options) const
    {
        SampleClip clip(LoadCodecDrivers(CodecFolder()), options);
        EXPECT_EQ(0, WriteSampleFile(fFolder.Path("clip.dv"), clip, frames));
        return fFolder.Path("clip.dv");
    }
    std::string MakeClip(int64_t frames, bool pal = true) const
    {
        SampleOptions options;
        options.pal = pal;
        return MakeClip(frames, options);
    }
    std::string Converted(const std::string& source, const std::string& options,
                          const std::string& name) const
    {
        const std::string path = fFolder.Path(name);
        EXPECT_EQ(0, RunCommand(kProgram + " --overwrite always --progress none " + options + " " +
                                source + " -o " + path))
            << options;
        return path;
    }
    // What ffmpeg decodes, one frame after the other.
    Bytes Decoded(const std::string& path, const std::string& options) const
    {
        const std::string raw = fFolder.Path("decoded");
        EXPECT_EQ(0, RunCommand("ffmpeg -y -i " + path + " " + options + " " + raw));
        return ReadWhole(raw);
    }
    Bytes Pictures(const std::string& path, const std::string& pixels = "bgr0") const
    {
        return Decoded(path, "-map 0:v -vsync passthrough -f rawvideo -pix_fmt " + pixels);
    }

    const TempFolder fFolder;
};

const char* To(bool pal)
{
    return pal ? "--to pal " : "--to ntsc ";
}

TEST_F(ConversionPeers, SeeTheRightStreamsInEveryFormat)
{
    const struct {
        const char *format, *codec, *name, *seen, *sound;
    } rows[] = {
        {"dv", "", "o.dv", "dvvideo", "pcm_s16le,48000,2"},
        {"avi1", "", "o.avi", "dvvideo", "pcm_s16le,48000,2"},
        {"avi2-odml", "", "o.avi", "dvvideo", "pcm_s16le,48000,2"},
        {"matrox", "", "o.avi", "dvvideo", nullptr},
        {"canopus2", "", "o.avi", "dvvideo", "pcm_s16le,48000,2"},
        {"mov-audio-64", "", "o.mov", "dvvideo", "pcm_s16be,48000,2"},
        {"mov-audio-64", "animation", "o.mov", "qtrle", "pcm_s16be,48000,2"},
        {"mov-audio", "yuv422", "o.mov", "rawvideo", "pcm_s16be,48000,2"},
        {"avi2-odml", "huffyuv-yuv", "o.avi", "huffyuv", "pcm_s16le,48000,2"},
        {"avi2", "rgb24", "o.avi", "rawvideo", "pcm_s16le,48000,2"},
    };
    constexpr int64_t kFrames = 20;
    for (const bool pal : {true, false}) {
        const std::string clip = MakeClip(kFrames, !pal);
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(row.format) + row.codec + (pal ? " PAL" : " NTSC"));
            const std::string path =
                Converted(clip,
                          To(pal) + std::string("--format ") + row.format +
                              (row.codec[0] ? std::string(" --codec ") + row.codec : std::string()),
                          row.name);
            const auto probed = [&](const std::string& stream, const std::string& entries) {
                return CommandOutput("ffprobe -v error -count_frames -select_streams " + stream +
                                     " -show_entries stream=" + entries + " -of csv=p=0 " + path);
            };
            EXPECT_EQ(row.seen + std::string(pal ? ",720,576" : ",720,480"),
                      probed("v", "codec_name,width,height"));
            const double frames = std::stod("0" + probed("v", "nb_read_frames"));
            EXPECT_NEAR(double(kFrames) * (pal ? 25 / 29.97 : 29.97 / 25), frames, 1);
            const std::string rate = probed("v", "r_frame_rate");
            const size_t slash = rate.find('/');
            ASSERT_NE(std::string::npos, slash);
            EXPECT_NEAR(pal ? 25 : 29.97,
                        std::stod(rate.substr(0, slash)) / std::stod(rate.substr(slash + 1)),
                        0.0005);
            if (row.sound) {
                EXPECT_EQ(row.sound, probed("a:0", "codec_name,sample_rate,channels"));
            }
            EXPECT_EQ(
                std::string(pal ? "720 576 25.000" : "720 480 29.970"),
                CommandOutput("mediainfo '--Inform=Video;%Width% %Height% %FrameRate%' " + path));
            // Of raw DV it always has something to say.
            EXPECT_EQ("", CommandOutput("ffmpeg -v warning -i " + path +
                                        " -f null - 2>&1 | grep -v 'Guessed\\|^.dv @'"));
        }
    }
}

// The numbers of all fields as they are shown, one after the other.
std::vector<int64_t> FieldNumbers(const Bytes& pictures, int32_t height, bool upper_first)
{
    std::vector<int64_t> numbers;
    const size_t size = size_t(720) * size_t(height) * 4;
    for (size_t at = 0; at + size <= pictures.size(); at += size)
        for (const int parity : {upper_first ? 0 : 1, upper_first ? 1 : 0})
            numbers.push_back(MovingPicture::ReadFieldNumber(&pictures[at], 720, height, parity));
    return numbers;
}

// The nearest field of the right parity is never further away than the time between two fields. One
// frame in six has its two fields from the far sides of their times; fields in the wrong order
// would show so in every frame.
void ExpectInOrder(const std::vector<int64_t>& numbers, double step)
{
    const size_t count = numbers.size() - 4;  // the ring runs dry behind
    double early = 1e9, late = -1e9;
    int backwards = 0;
    for (size_t i = 0; i < count; i++) {
        ASSERT_LE(0, numbers[i]);
        early = std::min(early, double(numbers[i]) - double(i) * step);
        late = std::max(late, double(numbers[i]) - double(i) * step);
        if (i > 0 && numbers[i] < numbers[i - 1]) backwards++;
    }
    EXPECT_LE(late - early, 2.1);
    EXPECT_LE(backwards, int(count / 12 + 1));
}

TEST_F(ConversionPeers, ShowTheFieldsInTheOrderOfTime)
{
    const char* const names[] = {"progressive", "upper", "lower"};
    constexpr int64_t kFrames = 18;
    for (const bool from : {true, false}) {
        for (const uint32_t source : {1u, 2u}) {
            SampleOptions options;
            options.pal = from;
            options.order = FieldOrder{source};
            const std::string clip = MakeClip(kFrames, options);
            for (const bool to : {true, false}) {
                for (const uint32_t target : {1u, 2u}) {
                    const std::string order = std::string("--source-interlace ") + names[source] +
                                              " --target-interlace " + names[target];
                    SCOPED_TRACE(order + (from ? " PAL " : " NTSC ") + To(to));
                    const std::string out =
                        Converted(clip, To(to) + ("--resample nearest " + order), "out.dv");
                    const auto numbers =
                        FieldNumbers(Pictures(out), SystemFor(to).height, target == 1);
                    std::string all;
                    for (const int64_t n : numbers)
                        all += std::to_string(n) + " ";
                    SCOPED_TRACE(all);
                    ASSERT_LE(20u, numbers.size());
                    ExpectInOrder(numbers, (from ? 25.0 : 29.97) / (to ? 25.0 : 29.97));
                }
            }
        }
    }
}

// Which of two scenes each field shows, in the order of time: the last bar is dark in one and
// bright in the other, and nothing between.
std::vector<bool> Scenes(const Bytes& pictures, int32_t height, bool upper_first)
{
    std::vector<bool> scenes;
    const size_t size = size_t(720) * size_t(height) * 4;
    for (size_t at = 0; at + size <= pictures.size(); at += size)
        for (const size_t parity : {upper_first ? 0 : 1, upper_first ? 1 : 0}) {
            scenes.push_back(pictures[at + ((4 + parity) * 720 + 675) * 4 + 1] > 128);
            for (size_t y = 4 + parity; y < 40; y += 2) {
                const int level = pictures[at + (y * 720 + 675) * 4 + 1];
                EXPECT_TRUE(scenes.back() ? level > 195 : level < 45) << scenes.size() / 2;
            }
        }
    return scenes;
}

TEST_F(ConversionPeers, SeeNoPictureOfTwoScenes)
{
    for (const bool from : {true, false}) {
        SampleOptions options;
        options.pal = from;
        options.scene.cut_seconds = 0.395;  // between two frames of either system
        const std::string clip = MakeClip(36, options);
        for (const char* way :
             {"--resample blend", "--resample blend --target-interlace upper",
              "--resample blend --allow-field-order-change --target-interlace upper",
              "--resample motion", "--resample motion --target-interlace upper",
              "--resample nearest", "--resample pulldown",
              "--resample blend --target-interlace adaptive"}) {
            SCOPED_TRACE(std::string(To(!from)) + way);
            const bool upper = std::string(way).ends_with("upper");
            const Bytes all = Pictures(Converted(clip, To(!from) + std::string(way), "out.dv"));
            const auto scenes = Scenes(all, SystemFor(!from).height, upper);
            int cuts = 0;
            for (size_t i = 1; i < scenes.size(); i++)
                if (scenes[i] != scenes[i - 1]) cuts++;
            EXPECT_EQ(from ? 3 : 2, cuts) << testing::PrintToString(scenes);
        }
    }
}

TEST_F(ConversionPeers, PlayTheWholeRoadInStep)
{
    const std::string tape = Converted(MakeClip(80), "--format avi1", "tape.avi");
    const std::string movie = Converted(tape, "--to ntsc --resample nearest", "clip.mov");
    EXPECT_EQ(0, RunCommand("strings -n 4 " + movie + " | grep -q co64")) << "64-bit offsets";
    const Bytes sound = Decoded(movie, "-map 0:a -f s16le -c:a pcm_s16le");
    const auto clicks = FindClicks(sound, 2);
    const auto numbers = FieldNumbers(Pictures(movie), 480, false);
    EXPECT_NEAR(80 * 1920, double(sound.size()) / 4, 1620);
    ASSERT_EQ(4u, clicks.size());
    for (size_t second = 0; second < clicks.size(); second++) {
        EXPECT_EQ(second * 48000, clicks[second]) << "not a sample is lost or made";
        const auto frame = size_t(double(clicks[second]) / 48000 * 29.97);
        ASSERT_LT(2 * frame, numbers.size());
        EXPECT_NEAR(double(second) * 50, double(numbers[2 * frame]), 2) << "within a frame";
    }
}

double Noise(const Bytes& a, const Bytes& b)
{
    if (a.size() != b.size() || a.empty()) return 0;
    double squares = 0;
    for (size_t i = 0; i < a.size(); i++)
        squares += (a[i] - b[i]) * (a[i] - b[i]);
    return squares == 0 ? 99 : 10 * std::log10(255.0 * 255.0 * double(a.size()) / squares);
}

// Ours as we decode it, put down as plain pictures, and as ffmpeg decodes it.
TEST_F(ConversionPeers, DecodeOurPictureCodecsToTheSamePixels)
{
    const struct {
        const char *options, *name;
        double noise;
    } rows[] = {
        {"--format avi2-odml --codec huffyuv-rgb", "coded.avi", 98},
        {"--format avi2-odml --codec huffyuv-yuv", "coded.avi", 32},
        {"--format avi1 --codec rgb32", "coded.avi", 98},
        {"--format avi1 --codec yuy2", "coded.avi", 32},
        {"--format avi1 --codec uyvy", "coded.avi", 32},
        {"--format mov --codec animation", "coded.mov", 98},
        {"--format mov --codec rgb24", "coded.mov", 98},
        {"--format mov --codec rgb32", "coded.mov", 98},
        {"--format mov --codec yuv422", "coded.mov", 32},
    };
    for (const bool to : {true, false}) {
        const std::string clip = MakeClip(3, to);
        const Bytes truth = Pictures(clip, "bgr24");
        for (const auto& row : rows) {
            if (to != ((&row - rows) % 2 == 0)) continue;  // each in one system
            SCOPED_TRACE(row.options + std::string(to ? " PAL" : " NTSC"));
            const std::string coded = Converted(clip, row.options, row.name);
            const std::string plain = Converted(coded, "--format avi1 --codec rgb24", "plain.avi");
            const Bytes theirs = Pictures(coded, "bgr24");
            EXPECT_LT(row.noise, Noise(theirs, Pictures(plain, "bgr24")));
            EXPECT_LT(27, Noise(theirs, truth)) << "upright, in its colours";
        }
    }
}

TEST_F(ConversionPeers, MakePictureFilesThatWeConvert)
{
    // Lossless RGB must come out as ffmpeg decodes it; YUV as far as the ways to RGB agree.
    const struct {
        const char *options, *name;
        double noise;
    } rows[] = {
        {"-c:v huffyuv -pix_fmt rgb24", "their.avi", 98},
        {"-c:v huffyuv -pix_fmt bgra", "their.avi", 98},
        {"-c:v huffyuv -pix_fmt rgb24 -pred left", "their.avi", 98},
        {"-c:v huffyuv -pix_fmt yuv422p -pred left", "their.avi", 32},
        {"-c:v huffyuv -pix_fmt yuv422p -pred plane", "their.avi", 32},
        {"-c:v huffyuv -pix_fmt yuv422p -pred median", "their.avi", 32},
        {"-c:v rawvideo -pix_fmt bgr24", "their.avi", 98},
        {"-c:v rawvideo -pix_fmt bgra", "their.avi", 98},
        {"-c:v rawvideo -pix_fmt yuyv422", "their.avi", 32},
        {"-c:v rawvideo -pix_fmt uyvy422", "their.avi", 32},
        {"-c:v qtrle -pix_fmt rgb24", "their.mov", 98},
        {"-c:v qtrle -pix_fmt argb", "their.mov", 98},
        {"-c:v rawvideo -pix_fmt rgb24", "their.mov", 98},
        {"-c:v rawvideo -pix_fmt argb", "their.mov", 98},
        {"-c:v rawvideo -pix_fmt uyvy422", "their.mov", 32},
    };
    for (const bool pal : {true, false}) {
        const std::string clip = MakeClip(3, pal);
        const Bytes truth = Pictures(clip, "bgr24");
        for (const auto& row : rows) {
            if (pal != ((&row - rows) % 2 == 0)) continue;  // each in one system
            SCOPED_TRACE(row.options + std::string(pal ? " PAL" : " NTSC"));
            const std::string coded = fFolder.Path(row.name);
            ASSERT_EQ(0, RunCommand("ffmpeg -y -i " + clip + " -an " + row.options + " " + coded));
            const std::string plain = Converted(coded, "--format avi1 --codec rgb24", "plain.avi");
            const Bytes theirs = Pictures(coded, "bgr24");
            EXPECT_LT(row.noise, Noise(theirs, Pictures(plain, "bgr24")));
            // The same coding again is a copy, which ffmpeg must still understand.
            const bool movie = row.name[6] == 'm';
            const std::string same =
                movie ? "--format mov --codec animation" : "--format avi1 --codec huffyuv-rgb";
            const std::string copy = Converted(coded, same, movie ? "copy.mov" : "copy.avi");
            EXPECT_LT(row.noise, Noise(theirs, Pictures(copy, "bgr24")));
            const Bytes dv = Pictures(Converted(coded, "", "back.dv"), "bgr24");
            EXPECT_LT(27, Noise(truth, dv));
        }
    }
}

// Streams without tables of their own, from the time before 2.0; nobody writes them any more.
TEST_F(ConversionPeers, AgreeOnClassicHuffYUVFiles)
{
    const Bytes pictures = Pictures(MakeClip(3), "yuyv422");
    for (const uint16_t bits : {17, 19, 20}) {
        SCOPED_TRACE(bits);
        const BitmapHeader header{.width = 720, .height = 576, .bit_count = bits};
        HuffYUVFormat format;
        ASSERT_EQ(0, ReadHuffYUVFormat(header, {}, format));
        HuffYUVFrameEncoder encoder;
        encoder.Prepare(format);
        TinyAVI film;
        film.handler = "HFYU";
        film.format = Little(40, 4) + Little(720, 4) + Little(576, 4) + Little(1, 2) +
                      Little(bits, 2) + film.handler + std::string(20, '\0');
        film.frames.clear();
        Bytes frame(12 * 720 * 576);
        for (size_t at = 0; at < pictures.size(); at += 720 * 576 * 2) {
            size_t size = 0;
            ASSERT_EQ(0, encoder.Encode(&pictures[at], frame, size));
            film.frames.emplace_back(frame.begin(), frame.begin() + ptrdiff_t(size));
        }
        const std::string file = film.Build();
        const std::string path = fFolder.Write("classic.avi", Bytes(file.begin(), file.end()));
        EXPECT_TRUE(pictures == Pictures(path, "yuyv422")) << "the peer is a judge of it";
        const std::string plain = Converted(path, "--format avi1 --codec rgb24", "plain.avi");
        EXPECT_LT(32, Noise(Pictures(path, "bgr24"), Pictures(plain, "bgr24")));
        const std::string copy = Converted(path, "--format avi1 --codec huffyuv-yuv", "copy.avi");
        EXPECT_TRUE(pictures == Pictures(copy, "yuyv422"));
    }
}

}  // namespace
}  // namespace kelvane
