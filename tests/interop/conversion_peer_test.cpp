// Conversions by the program, looked at with other people's programs.

#include <algorithm>
#include <iostream>

#include "codecs/huffyuv/huffyuv_format.h"
#include "codecs/huffyuv/huffyuv_frame_encoder.h"
#include "interop/conversion_peer.h"
#include "support/riff.h"

namespace kelvane {
namespace {

class ConversionPeers : public ConversionPeerTest {
protected:
    // That we decode a film as ffmpeg does, and that a film coded once more is still understood.
    Bytes ExpectDecodedAlike(const std::string& film, const std::string& again, double noise) const
    {
        const Bytes theirs = Pictures(film);
        Converted(film, "--format avi1 --codec rgb24", "plain.avi");
        EXPECT_LT(noise, PictureNoise(theirs, Pictures("plain.avi")));
        Converted(film, again, "again" + film.substr(film.size() - 4));
        EXPECT_LT(noise, PictureNoise(theirs, Pictures("again" + film.substr(film.size() - 4))));
        return theirs;
    }
};

// Calls use(picture, parity) for all fields in the order of time.
template <class Use>
void ForEachField(const Bytes& pictures, bool pal, bool upper_first, Use use)
{
    const size_t size = size_t(720) * size_t(SystemFor(pal).height) * 4;
    for (size_t at = 0; at + size <= pictures.size(); at += size)
        for (const int parity : {upper_first ? 0 : 1, upper_first ? 1 : 0})
            use(&pictures[at], parity);
}

// The numbers of all fields as they are shown, one after the other.
std::vector<int64_t> FieldNumbers(const Bytes& pictures, bool pal, bool upper_first)
{
    std::vector<int64_t> numbers;
    ForEachField(pictures, pal, upper_first, [&](const uint8_t* picture, int parity) {
        numbers.push_back(
            MovingPicture::ReadFieldNumber(picture, 720, SystemFor(pal).height, parity));
    });
    return numbers;
}

// The nearest field of the right parity is never further away than the time between two fields. One
// frame in six has its two fields from the far sides of their times; fields in the wrong order
// would show so in every frame.
void ExpectInOrder(const std::vector<int64_t>& numbers, double step)
{
    SCOPED_TRACE(testing::PrintToString(numbers));
    ASSERT_LE(20u, numbers.size());
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
    const std::string names[] = {"progressive", "upper", "lower"};
    for (const bool from : {true, false})
        for (const uint32_t source : {1u, 2u}) {
            MakeClip(18, {.pal = from, .order = FieldOrder{source}});
            for (const bool to : {true, false})
                for (const uint32_t target : {1u, 2u}) {
                    const std::string options = To(to) + "--resample nearest --source-interlace " +
                                                names[source] + " --target-interlace " +
                                                names[target];
                    SCOPED_TRACE((from ? "PAL " : "NTSC ") + options);
                    Converted("clip.dv", options, "out.dv");
                    ExpectInOrder(FieldNumbers(Pictures("out.dv"), to, target == 1),
                                  (from ? 25.0 : 29.97) / (to ? 25.0 : 29.97));
                }
        }
}

// Which of two scenes each field shows, in the order of time: the last bar is dark in one and
// bright in the other, and nothing between.
std::vector<bool> Scenes(const Bytes& pictures, bool pal, bool upper_first)
{
    std::vector<bool> scenes;
    ForEachField(pictures, pal, upper_first, [&](const uint8_t* picture, int parity) {
        const auto level = [&](int y) { return picture[((y + parity) * 720 + 675) * 4 + 1]; };
        scenes.push_back(level(4) > 128);
        for (int y = 4; y + parity < 40; y += 2)
            EXPECT_TRUE(scenes.back() ? level(y) > 195 : level(y) < 45) << scenes.size() / 2;
    });
    return scenes;
}

TEST_F(ConversionPeers, SeeNoPictureOfTwoScenes)
{
    for (const bool from : {true, false}) {
        // The cuts are between two frames of either system.
        MakeClip(36, {.pal = from, .scene = {.cut_seconds = 0.395}});
        for (const std::string way : {"blend", "blend --target-interlace upper",
                                      "blend --allow-field-order-change --target-interlace upper",
                                      "motion", "motion --target-interlace upper", "nearest",
                                      "pulldown", "blend --target-interlace adaptive"}) {
            SCOPED_TRACE(To(!from) + way);
            Converted("clip.dv", To(!from) + "--resample " + way, "out.dv");
            const auto scenes = Scenes(Pictures("out.dv"), !from, way.ends_with("upper"));
            int cuts = 0;
            for (size_t i = 1; i < scenes.size(); i++)
                if (scenes[i] != scenes[i - 1]) cuts++;
            EXPECT_EQ(from ? 3 : 2, cuts) << testing::PrintToString(scenes);
        }
    }
}

TEST_F(ConversionPeers, PlayTheWholeRoadInStep)
{
    MakeClip(80, {});
    Converted("clip.dv", "--format avi1", "tape.avi");
    Converted("tape.avi", "--to ntsc --resample nearest", "clip.mov");
    Run("strings -n 4 clip.mov | grep -q co64");  // 64-bit offsets
    const Bytes sound = PeerSound("clip.mov");
    const auto clicks = FindClicks(sound, 2);
    const auto numbers = FieldNumbers(Pictures("clip.mov"), false, false);
    EXPECT_NEAR(80 * 1920, double(sound.size()) / 4, 1620);
    ASSERT_EQ(4u, clicks.size());
    for (size_t second = 0; second < clicks.size(); second++) {
        EXPECT_EQ(second * 48000, clicks[second]) << "not a sample is lost or made";
        const auto frame = size_t(double(clicks[second]) / 48000 * 29.97);
        ASSERT_LT(2 * frame, numbers.size());
        EXPECT_NEAR(double(second) * 50, double(numbers[2 * frame]), 2) << "within a frame";
    }
}

TEST_F(ConversionPeers, AgreeOnPictureFilesOfOursAndTheirs)
{
    const std::string avi = "--format avi1 --codec ", odml = "--format avi2-odml --codec ";
    const std::string mov = "--format mov --codec ";
    // Lossless RGB must come out the same; YUV as far as the ways to RGB agree.
    constexpr double kSame = 98, kNear = 32;
    const struct {
        std::string options;  // ours, or those of ffmpeg
        const char* name;
        double noise;
    } rows[] = {
        {odml + "huffyuv-rgb", "coded.avi", kSame},
        {odml + "huffyuv-yuv", "coded.avi", kNear},
        {avi + "rgb32", "coded.avi", kSame},
        {avi + "yuy2", "coded.avi", kNear},
        {avi + "uyvy", "coded.avi", kNear},
        {mov + "animation", "coded.mov", kSame},
        {mov + "rgb24", "coded.mov", kSame},
        {mov + "rgb32", "coded.mov", kSame},
        {mov + "yuv422", "coded.mov", kNear},
        {"-c:v huffyuv -pix_fmt bgra", "coded.avi", kSame},
        {"-c:v huffyuv -pix_fmt rgb24", "coded.avi", kSame},
        {"-c:v huffyuv -pix_fmt yuv422p -pred left", "coded.avi", kNear},
        {"-c:v huffyuv -pix_fmt rgb24 -pred left", "coded.avi", kSame},
        {"-c:v huffyuv -pix_fmt yuv422p -pred median", "coded.avi", kNear},
        {"-c:v huffyuv -pix_fmt yuv422p -pred plane", "coded.avi", kNear},
        {"-c:v rawvideo -pix_fmt bgra", "coded.avi", kSame},
        {"-c:v rawvideo -pix_fmt bgr24", "coded.avi", kSame},
        {"-c:v rawvideo -pix_fmt uyvy422", "coded.avi", kNear},
        {"-c:v rawvideo -pix_fmt yuyv422", "coded.avi", kNear},
        {"-c:v qtrle -pix_fmt argb", "coded.mov", kSame},
        {"-c:v qtrle -pix_fmt rgb24", "coded.mov", kSame},
        {"-c:v rawvideo -pix_fmt argb", "coded.mov", kSame},
        {"-c:v rawvideo -pix_fmt rgb24", "coded.mov", kSame},
        {"-c:v rawvideo -pix_fmt uyvy422", "coded.mov", kNear},
    };
    for (const bool pal : {true, false}) {
        MakeClip(3, {.pal = pal});
        const Bytes truth = Pictures("clip.dv");
        for (const auto& row : rows) {
            if (pal != ((&row - rows) % 2 == 0)) continue;  // each in one system
            const auto& [options, name, noise] = row;
            SCOPED_TRACE(options + (pal ? " PAL" : " NTSC"));
            if (options.starts_with("--"))
                Converted("clip.dv", options, name);
            else
                Run("ffmpeg -y -i clip.dv -an " + options + " " + name);
            const bool movie = std::string(name).ends_with("mov");
            const Bytes theirs =
                ExpectDecodedAlike(name, movie ? mov + "animation" : avi + "huffyuv-rgb", noise);
            EXPECT_LT(27, PictureNoise(theirs, truth)) << "upright, in its colours";
            Converted(name, "", "back.dv");
            EXPECT_LT(27, PictureNoise(Pictures("back.dv"), truth));
        }
    }
}

// Our codec module beside ffmpeg's own way from picture to DV and back.
TEST_F(ConversionPeers, FindAsMuchOfAPictureLeftAsByFfmpegAtItsBest)
{
    const std::string scale =
        "-vf scale=interl=1:flags=bicubic+accurate_rnd+full_chroma_inp+full_chroma_int,format=";
    for (const bool pal : {true, false})
        for (const bool dvcpro : {false, true}) {
            const SampleOptions options = {.pal = pal, .dvcpro = dvcpro};
            MakeClip(8, options);
            Converted("clip.dv", "--format avi1 --codec rgb32", "ours.avi");
            SampleClip clip(LoadCodecDrivers(CodecFolder()), options);
            Bytes truth;
            for (int64_t number = 0; number < 8; number++) {
                ASSERT_FALSE(clip.Frame(number).empty());
                truth.insert(truth.end(), clip.Picture().begin(), clip.Picture().end());
            }
            Write("truth.bgr0", truth);
            Run("ffmpeg -y -f rawvideo -pix_fmt bgr0 -s 720x" + std::string(pal ? "576" : "480") +
                " -r " + (pal ? "25" : "30000/1001") + " -i truth.bgr0 " + scale +
                (pal && !dvcpro ? "yuv420p" : "yuv411p") +
                " -c:v dvvideo -flags +ildct+ilme -f rawvideo theirs.dv");
            const double byUs = PictureNoise(truth, Pictures("ours.avi"));
            const double byThem = PictureNoise(
                truth, FromFfmpeg("theirs.dv", "-map 0:v " + scale + "bgr0 -f rawvideo"));
            EXPECT_LT(20, byThem);
            EXPECT_GT(byUs, byThem - 0.3);
            std::cout << "PSNR, PAL " << pal << ", DVCPRO " << dvcpro << ": " << byUs
                      << " dB, ffmpeg " << byThem << " dB\n";
        }
}

// Streams without tables of their own, from the time before 2.0; nobody writes them any more.
TEST_F(ConversionPeers, AgreeOnClassicHuffYUVFiles)
{
    MakeClip(3, {});
    for (const uint16_t bits : {17, 19, 20, 25, 27}) {
        SCOPED_TRACE(bits);
        const bool yuv = bits < 24;
        const std::string pixels = yuv ? "yuyv422" : "bgr24 -vf vflip";  // as they are coded
        const Bytes pictures = Pictures("clip.dv", pixels);
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
        for (size_t at = 0; at < pictures.size(); at += 576 * format.RowBytes()) {
            const std::optional<size_t> size = encoder.Encode(&pictures[at], frame);
            ASSERT_TRUE(size);
            film.frames.emplace_back(frame.begin(), frame.begin() + ptrdiff_t(*size));
        }
        const std::string file = film.Build();
        Write("classic.avi", Bytes(file.begin(), file.end()));
        EXPECT_TRUE(pictures == Pictures("classic.avi", pixels)) << "the peer is a judge of it";
        ExpectDecodedAlike("classic.avi",
                           std::string("--format avi1 --codec huffyuv-") + (yuv ? "yuv" : "rgb"),
                           yuv ? 32 : 98);
        EXPECT_TRUE(pictures == Pictures("again.avi", pixels));
    }
}

}  // namespace
}  // namespace kelvane
