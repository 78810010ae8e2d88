// Every way from every kind of source to every format that can be written, measured on what the
// files hold then.

#include <array>

#include "base/four_cc.h"
#include "base/television.h"
#include "dv/dif_frame.h"
#include "engine/conversion_case.h"
#include "engine/output_formats.h"
#include "picture/geometry.h"

namespace kelvane {
namespace {

constexpr int64_t kFrames = 12;

bool Exists(const OutputFormat& format)
{
    return format.type != kDestinationES3 && format.type != kDestinationDU1 &&
           format.type != kDestinationOMF;
}

class ConversionMatrix : public ConversionCase {
protected:
    // Sound of a film must be that of the clip maker, up to a frame's length less or silence more.
    static void ExpectSound(Film& film)
    {
        const Bytes heard = film.track.empty() ? film.SoundOfFrames() : film.track;
        const Bytes truth = SampleSound(48000).Samples(0, heard.size() / 4);
        const size_t whole = film.frames.size() * (film.pal ? 1920 : 1601) * 4;
        const size_t frame = 1620 * 4;
        EXPECT_NEAR(double(whole), double(heard.size()), double(frame));
        const size_t compared = std::min(heard.size(), whole - frame);
        EXPECT_TRUE(std::equal(heard.begin(), heard.begin() + ptrdiff_t(compared), truth.begin()));
    }
};

TEST_F(ConversionMatrix, EveryContainerGoesIntoEveryOtherBitForBit)
{
    for (const bool pal : {true, false}) {
        const std::string clip = MakeClip(kFrames, pal);
        const Bytes pictures = Film(clip).Pictures();
        for (const char* from : {"dv", "avi1", "avi2-odml", "mov-audio-64", "mov"}) {
            Choose(from);
            const std::string source = Converted(clip, "from");
            for (const OutputFormat& to : OutputFormats()) {
                if (!Exists(to)) continue;
                SCOPED_TRACE(std::string(from) + " to " + to.name + (pal ? " PAL" : " NTSC"));
                Choose(to.name);
                Film film(Converted(source, "to"));
                EXPECT_EQ(pal, film.pal);
                EXPECT_EQ(uint64_t{kFrames}, film.told_frames);
                EXPECT_TRUE(pictures == film.Pictures());
                ExpectSound(film);
            }
        }
    }
}

std::vector<std::pair<uint32_t, uint64_t>> gProgress;

int NoteProgress(uint32_t framesRead, uint64_t total, uintptr_t)
{
    gProgress.emplace_back(framesRead, total);
    return 0;
}

TEST_F(ConversionMatrix, ACopyTellsItsTimecodesAndItsProgress)
{
    fAdjust = [](ConversionSettings& settings) { settings.progress = NoteProgress; };
    for (const bool pal : {true, false}) {
        SampleOptions options;
        options.pal = pal;
        options.wide = true;
        const std::string source = MakeClip("wide.dv", 40, options);
        EXPECT_TRUE(Film(source).Pictures() == Film(Converted(source, "copy.dv")).Pictures());
        EXPECT_EQ(pal, fResult.destination_is_pal);
        EXPECT_EQ(0, fResult.first_timecode[3]);
        EXPECT_EQ(1, fResult.last_timecode[2]);
        EXPECT_EQ(pal ? 14 : 9, fResult.last_timecode[3]);
        EXPECT_EQ(40u, gProgress.size());
        EXPECT_EQ(40u, gProgress.back().second);
        gProgress.clear();
    }
}

TEST_F(ConversionMatrix, SoundGoesFromTrackToTrackUnchanged)
{
    for (const bool pal : {true, false}) {
        Choose("avi2");
        const std::string first = Converted(MakeClip(30, pal), "first.avi");
        Choose("mov-audio");
        const std::string movie = Converted(first, "movie.mov");
        Choose("avi2");
        const Film before(first), between(movie), after(Converted(movie, "after.avi"));
        EXPECT_FALSE(before.track.empty());
        EXPECT_TRUE(before.track == between.track);
        EXPECT_TRUE(before.track == after.track);
        EXPECT_TRUE(before.Pictures() == after.Pictures());
    }
}

struct PictureCodec {
    const char *format, *codec;
    bool lossless = true;
};
constexpr PictureCodec kPictureCodecs[] = {
    {"avi2-odml", "rgb24"},       {"avi2-odml", "rgb32"},
    {"avi1", "yuy2", false},      {"avi2", "uyvy", false},
    {"avi1-odml", "huffyuv-rgb"}, {"avi2-odml", "huffyuv-yuv", false},
    {"mov-audio", "animation"},   {"mov", "rgb24"},
    {"mov-64", "rgb32"},          {"mov-audio-64", "yuv422", false},
};
// Decibels to the drawn picture. DV's thin colour keeps it near 30; upside down or with colours
// exchanged it is below 15.
constexpr double kLeastNoise = 27;

// The drawn picture of a frame as it looks in another system.
Bytes DrawnIn(bool from_pal, bool to_pal, int64_t number)
{
    const TelevisionSystem& from = SystemFor(from_pal);
    const TelevisionSystem& to = SystemFor(to_pal);
    Bytes drawn(2 * 720 * 576 * 4);
    MovingPicture(from.width, from.height)
        .DrawFrame(drawn.data(), number, double(from.rate), FieldOrder::kLowerFirst);
    Bytes scaled(drawn.size());
    GeometryConvert(drawn.data(), DVFormat(from_pal), DVFormat(to_pal), scaled.data(),
                    to_pal ? kOperationToPAL : kOperationToNTSC, 0, 2);
    const Bytes& result = from_pal == to_pal ? drawn : scaled;
    return Bytes(result.begin(), result.begin() + ptrdiff_t{to.width} * to.height * 4);
}

TEST_F(ConversionMatrix, EveryPictureCodecShowsThePictureBothWaysRound)
{
    fOptions.blendmode = 0;  // the first output frame is the first source frame then
    for (const bool from : {true, false}) {
        const std::string clip = MakeClip(4, from);
        for (const bool to : {true, false}) {
            const Bytes truth = DrawnIn(from, to, 0);
            Bytes first;
            for (const PictureCodec& row : kPictureCodecs) {
                SCOPED_TRACE(std::string(row.codec) + (from ? " PAL to " : " NTSC to ") +
                             (to ? "PAL" : "NTSC"));
                fOptions.opselection = from == to ? kOperationConvert
                                       : to       ? kOperationToPAL
                                                  : kOperationToNTSC;
                Choose(row.format, row.codec);
                const std::string coded = Converted(clip, "coded");
                const Bytes picture = DecodedFrame(coded, 0, fState);
                if (&row == kPictureCodecs) first = picture;
                EXPECT_LT(kLeastNoise, PictureNoise(truth, picture));
                EXPECT_LT(row.lossless ? 98 : 33, PictureNoise(first, picture));
                // And as a source.
                fOptions.opselection = kOperationConvert;
                Choose("dv");
                const std::string back = Converted(coded, "back.dv");
                EXPECT_EQ(Film(coded).frames.size(), Film(back).frames.size());
                EXPECT_LT(kLeastNoise, PictureNoise(truth, DecodedFrame(back, 0, fState)));
            }
        }
    }
}

TEST_F(ConversionMatrix, DVBecomesDVCPROAndBack)
{
    for (const bool pal : {true, false}) {
        const Bytes truth = DrawnIn(pal, pal, 1);
        std::string last = MakeClip(4, pal);
        for (const int32_t data : {2, 1}) {
            fOptions.dataconv = data;
            last = Converted(last, data == 2 ? "pro.dv" : "plain.dv");
            Film film(last);
            EXPECT_EQ(4u, film.frames.size());
            for (Bytes& frame : film.frames)
                EXPECT_EQ(data == 2, DIFFrame(frame.data(), uint32_t(frame.size())).IsDVCPRO());
            ExpectSound(film);
            EXPECT_LT(kLeastNoise, PictureNoise(truth, DecodedFrame(last, 1, fState)));
        }
    }
}

TEST_F(ConversionMatrix, NTSCPicturesThatAreNotDVHave486LinesWhenAsked)
{
    const std::string clip = MakeClip(3, false);
    fOptions.wr486 = 1;
    Choose("avi2-odml", "rgb24");
    const std::string tall = Converted(clip, "tall.avi");
    EXPECT_EQ(486, Film(tall).format.Height());
    const Bytes picture = DecodedFrame(tall, 0, fState);
    // The picture stands whole among the lines, wherever black was added.
    double best = 0;
    for (ptrdiff_t line = 0; line <= 6; line++) {
        const auto at = picture.begin() + line * 720 * 4;
        best =
            std::max(best, PictureNoise(DrawnIn(false, false, 0), Bytes(at, at + 480 * 720 * 4)));
    }
    EXPECT_LT(kLeastNoise, best);
    const std::string again = Converted(tall, "again.avi");
    EXPECT_TRUE(Film(tall).Pictures() == Film(again).Pictures());
    fOptions.wr486 = 0;
    EXPECT_EQ(480, Film(Converted(tall, "short.avi")).format.Height());
    fOptions.wr486 = 1;
    Choose("avi2-odml");
    EXPECT_EQ(480, Film(Converted(tall, "dv.avi")).format.Height()) << "DV never has them";
    fOptions.opselection = kOperationToPAL;
    Choose("avi2-odml", "rgb24");
    EXPECT_EQ(576, Film(Converted(clip, "pal.avi")).format.Height());
}

TEST_F(ConversionMatrix, CopiedFramesKeepTheCodingThatTheyHave)
{
    // What a copy is declared as follows the source, whatever row was chosen.
    const struct {
        const char *format, *from, *to;
        bool copied;
    } rows[] = {
        {"avi2-odml", "huffyuv-yuv", "huffyuv-rgb", true},
        {"avi2-odml", "huffyuv-rgb", "huffyuv-yuv", true},
        {"avi2-odml", "rgb24", "rgb24", true},
        {"avi2-odml", "rgb32", "rgb24", false},
        {"mov-audio", "animation", "animation", true},
        {"mov-audio", "yuv422", "rgb32", false},
    };
    const std::string clip = MakeClip(3);
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.from) + " to " + row.to);
        Choose(row.format, row.from);
        const std::string coded = Converted(clip, "coded");
        Choose(row.format, row.to);
        const std::string copy = Converted(coded, "copy");
        EXPECT_EQ(row.copied, Film(coded).Pictures() == Film(copy).Pictures());
        EXPECT_LT(33, PictureNoise(DecodedFrame(coded, 2, fState), DecodedFrame(copy, 2, fState)));
    }
}

TEST_F(ConversionMatrix, OneThreadAndTwoGiveTheSameBytes)
{
    const std::string clip = MakeClip(6);
    const auto with = [&](int threads, int32_t method, const char* format, const char* codec) {
        ConversionState state(fRegistry, threads);
        ConversionSettings settings;
        Choose(format, codec);
        fOptions.blendmode = method;
        fOptions.opselection = kOperationToNTSC;
        FillConversionSettings(fOptions, fCodecs, settings);
        EXPECT_EQ(0, ConvertFile(clip, fFolder.Path("out"), TypeOfDestination(fOptions.selection),
                                 settings, nullptr, state));
        return ReadWhole(fFolder.Path("out"));
    };
    for (const int32_t method : {0, 1, 2, 3})
        EXPECT_TRUE(with(1, method, "dv", "") == with(2, method, "dv", "")) << method;
    fOptions.dstint = 3;
    EXPECT_TRUE(with(1, 1, "avi1", "huffyuv-yuv") == with(2, 1, "avi1", "huffyuv-yuv"));
}

TEST_F(ConversionMatrix, OnlyWhatHasToChangeIsCodedAnew)
{
    struct Row {
        const char* what;
        bool copied;
        std::function<void(ConversionSettings&)> adjust;
        bool dvcpro = false;
    };
    using Settings = ConversionSettings;
    const auto interlace = [](int32_t from, int32_t to) {
        return [=](Settings& s) { s.src_interlace = from, s.dst_interlace = to; };
    };
    const auto aspect = [](int32_t from, int32_t to) {
        return [=](Settings& s) { s.src_aspect = from, s.dst_aspect = to; };
    };
    const auto data = [](int32_t kind) {
        return [=](Settings& s) { s.dv_data_conversion = kind; };
    };
    const Row rows[] = {
        {"upper to same", true, interlace(1, 0)},
        {"upper to upper", true, interlace(1, 1)},
        {"upper to lower", false, interlace(1, 2)},
        {"upper to adaptive", false, interlace(1, 3)},
        {"lower to upper", false, interlace(2, 1)},
        {"lower to lower", true, interlace(2, 2)},
        {"lower to blur", false, interlace(2, 4)},
        {"progressive to upper", true, interlace(0, 1)},
        {"progressive to adaptive", true, interlace(0, 3)},
        {"aspect unknown to 16:9", false, aspect(0, 2)},
        {"aspect kept", true, aspect(2, 2)},
        {"aspect to same", true, aspect(2, 0)},
        {"4:3 to 16:9", false, aspect(1, 2)},
        {"DV to DV", true, data(1)},
        {"DV to DVCPRO", false, data(2)},
        {"DVCPRO to DVCPRO", true, data(2), true},
        {"DVCPRO to DV", false, data(1), true},
        {"motion", true, [](Settings& s) { s.timeresampling = 2; }},
        {"to PAL from PAL", true, [](Settings& s) { s.op = kOperationToPAL; }},
        {"mode", true, [](Settings& s) { s.mode = 1; }},
    };
    SampleOptions options;
    const std::string dv = MakeClip("a", 5, options);
    options.dvcpro = true;
    const std::string dvcpro = MakeClip("b", 5, options);
    for (const Row& row : rows) {
        fAdjust = row.adjust;
        const std::string& source = row.dvcpro ? dvcpro : dv;
        Film before(source), after(Converted(source, "out"));
        before.frames.resize(after.frames.size());
        EXPECT_EQ(row.copied, before.Pictures() == after.Pictures()) << row.what;
    }
    // The step of reverse pulldown holds for PAL too, and frames are left out.
    fAdjust = [](Settings& s) { s.op = kOperationToPAL, s.timeresampling = 3; };
    EXPECT_EQ(10u, Film(Converted(MakeClip(12), "out")).frames.size());
}

TEST_F(ConversionMatrix, CodecsStayOpenFromFileToFile)
{
    const std::string pal = MakeClip("pal", 3, {}), ntsc = [&] {
        SampleOptions options;
        options.pal = false;
        return MakeClip("ntsc", 3, options);
    }();
    Converted(pal, "out");
    // The same name on a codec that cannot be opened: it is not, as long as the height is the same.
    for (DVCodecEntry& entry : fCodecs.encoders)
        entry.driver.index = 99;
    fOptions.dataconv = 2, fOptions.DVencoder = "None";
    Converted(pal, "out");
    EXPECT_EQ(-1, Convert(ntsc, fFolder.Path("out")));
    EXPECT_EQ("DVCPRO25 Encoder initialization error #1.", fResult.message);
}

}  // namespace
}  // namespace kelvane
