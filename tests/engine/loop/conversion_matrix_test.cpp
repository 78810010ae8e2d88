// Every way from every kind of source to every format that can be written, measured on what the
// files hold then.

#include "base/television.h"
#include "engine/loop/conversion_case.h"
#include "engine/options/output_formats.h"
#include "engine/pictures/picture_encoder.h"
#include "picture/geometry.h"

namespace kelvane {
namespace {

constexpr int64_t kFrames = 12;

using ConversionMatrix = ConversionCase;

// Sound of a film must be that of the clip maker, up to a frame's length less or silence more.
void ExpectSound(Film& film)
{
    const Bytes heard = film.track.empty() ? film.SoundOfFrames() : film.track;
    const Bytes truth = SampleSound(48000).Samples(0, heard.size() / 4);
    const size_t whole = film.frames.size() * (film.source->is_pal ? 1920 : 1601) * 4;
    const size_t frame = 1620 * 4;
    EXPECT_NEAR(double(whole), double(heard.size()), double(frame));
    const size_t compared = std::min(heard.size(), whole - frame);
    EXPECT_TRUE(std::equal(heard.begin(), heard.begin() + ptrdiff_t(compared), truth.begin()));
}

TEST_F(ConversionMatrix, EveryContainerGoesIntoEveryOtherBitForBit)
{
    for (const bool pal : {true, false}) {
        const std::string clip = MakeClip(kFrames, pal);
        const Bytes pictures = Film(clip).Pictures();
        for (const char* from : {"dv", "avi1", "avi2", "avi2-odml", "mov-audio-64", "mov"}) {
            const std::string source = Converted(clip, "from", from);
            const Bytes track = Film(source).track;
            for (const OutputFormat& to : OutputFormats()) {
                if (to.type == kDestinationES3 || to.type == kDestinationDU1) continue;
                if (to.type == kDestinationOMF) continue;
                SCOPED_TRACE(std::string(from) + " to " + to.name + (pal ? " PAL" : " NTSC"));
                Film film(Converted(source, "to", to.name));
                EXPECT_EQ(pal, film.source->is_pal);
                EXPECT_EQ(uint64_t{kFrames}, film.source->CountFrames());
                EXPECT_TRUE(pictures == film.Pictures());
                ExpectSound(film);
                EXPECT_TRUE(track.empty() || film.track.empty() || track == film.track);
            }
        }
    }
}

TEST_F(ConversionMatrix, ACopyTellsItsTimecodesAndItsProgress)
{
    for (const bool pal : {true, false}) {
        uint64_t calls = 0;
        fAtProgress = [&](const ConversionProgress& progress) {
            EXPECT_EQ(40u, progress.frames_planned);
            EXPECT_EQ(++calls, progress.frames_written);
            return Wish::kGoOn;
        };
        const std::string source = MakeClip("wide.dv", 40, {.pal = pal, .wide = true});
        EXPECT_TRUE(Film(source).Pictures() == Film(Converted(source, "copy.dv")).Pictures());
        EXPECT_EQ(pal, fResult.destination_is_pal);
        EXPECT_EQ(0, fResult.first_timecode[3]);
        EXPECT_EQ(1, fResult.last_timecode[2]);
        EXPECT_EQ(pal ? 14 : 9, fResult.last_timecode[3]);
        EXPECT_EQ(40u, calls);
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
    Bytes drawn(2 * 720 * 576 * 4), scaled(drawn.size());
    MovingPicture(from.width, from.height)
        .DrawFrame(drawn.data(), number, double(from.rate), FieldOrder::kLowerFirst);
    GeometryConvert(drawn.data(), DVFormat(from_pal), DVFormat(to_pal), scaled.data(),
                    GeometryMode::kScale, true);
    const Bytes& result = from_pal == to_pal ? drawn : scaled;
    return Bytes(result.begin(), result.begin() + ptrdiff_t{to.width} * to.height * 4);
}

TEST_F(ConversionMatrix, EveryPictureCodecShowsThePictureBothWaysRound)
{
    fOptions.blendmode = 0;  // the first output frame is the first source frame then
    for (const int way : {0, 1, 2, 3}) {
        const bool from = way & 1, to = way & 2;
        const std::string clip = MakeClip(4, from);
        const Bytes truth = DrawnIn(from, to, 0);
        Bytes first;
        for (const PictureCodec& row : kPictureCodecs) {
            SCOPED_TRACE(std::string(row.codec) + (from ? " PAL to " : " NTSC to ") +
                         (to ? "PAL" : "NTSC"));
            fOptions.opselection = from == to ? kOperationConvert
                                   : to       ? kOperationToPAL
                                              : kOperationToNTSC;
            const std::string coded = Converted(clip, "coded", row.format, row.codec);
            const Bytes picture = DecodedFrame(coded, 0, fState);
            if (first.empty()) first = picture;
            EXPECT_LT(kLeastNoise, PictureNoise(truth, picture));
            EXPECT_LT(row.lossless ? 98 : 33, PictureNoise(first, picture));
            // And as a source.
            fOptions.opselection = kOperationConvert;
            const std::string back = Converted(coded, "back.dv", "dv");
            EXPECT_EQ(Film(coded).frames.size(), Film(back).frames.size());
            EXPECT_LT(kLeastNoise, PictureNoise(truth, DecodedFrame(back, 0, fState)));
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
                EXPECT_EQ(data == 2, View(frame).IsDVCPRO());
            ExpectSound(film);
            EXPECT_LT(kLeastNoise, PictureNoise(truth, DecodedFrame(last, 1, fState)));
        }
    }
}

TEST_F(ConversionMatrix, NTSCPicturesThatAreNotDVHave486LinesWhenAsked)
{
    const std::string clip = MakeClip(3, false);
    fOptions.wr486 = 1;
    const std::string tall = Converted(clip, "tall.avi", "avi2-odml", "rgb24");
    EXPECT_EQ(486, Film(tall).source->format.Height());
    const Bytes picture = DecodedFrame(tall, 0, fState);
    // The picture stands whole among the lines, wherever black was added.
    double best = 0;
    for (ptrdiff_t line = 0; line <= 6; line++) {
        const auto at = picture.begin() + line * 720 * 4;
        const Bytes part(at, at + 480 * 720 * 4);
        best = std::max(best, PictureNoise(DrawnIn(false, false, 0), part));
    }
    EXPECT_LT(kLeastNoise, best);
    EXPECT_TRUE(Film(tall).Pictures() == Film(Converted(tall, "again.avi")).Pictures());
    fOptions.wr486 = 0;
    EXPECT_EQ(480, Film(Converted(tall, "short.avi")).source->format.Height());
    fOptions.wr486 = 1;
    const Film dv(Converted(tall, "dv.avi", "avi2-odml"));
    EXPECT_EQ(480, dv.source->format.Height()) << "DV never has them";
    fOptions.opselection = kOperationToPAL;
    EXPECT_EQ(576, Film(Converted(clip, "pal.avi", "avi2-odml", "rgb24")).source->format.Height());
}

TEST_F(ConversionMatrix, CopiedFramesKeepTheCodingThatTheyHave)
{
    // What a copy is declared as follows the source, whatever row was chosen.
    const std::tuple<const char*, const char*, const char*, bool> rows[] = {
        {"avi2-odml", "huffyuv-yuv", "huffyuv-rgb", true},
        {"avi2-odml", "huffyuv-rgb", "huffyuv-yuv", true},
        {"avi2-odml", "rgb24", "rgb24", true},
        {"avi2-odml", "rgb32", "rgb24", false},
        {"mov-audio", "animation", "animation", true},
        {"mov-audio", "yuv422", "rgb32", false},
    };
    const std::string clip = MakeClip(3);
    for (const auto& [format, from, to, copied] : rows) {
        SCOPED_TRACE(std::string(from) + " to " + to);
        const std::string coded = Converted(clip, "coded", format, from);
        const std::string copy = Converted(coded, "copy", format, to);
        EXPECT_EQ(copied, Film(coded).Pictures() == Film(copy).Pictures());
        EXPECT_LT(33, PictureNoise(DecodedFrame(coded, 2, fState), DecodedFrame(copy, 2, fState)));
    }
}

// A picture that takes the lines of the one before is not coded again: one in six of a progressive
// source, none of the first of an interlaced one.
TEST_F(ConversionMatrix, OnlyPicturesOfTheSameLinesAreRepeated)
{
    constexpr double kStep = 25 / 29.97;
    const std::string clip = MakeClip(16);
    fOptions.opselection = kOperationToNTSC;
    fOptions.blendmode = 0;
    for (const bool interlaced : {true, false}) {
        fOptions.srcint = interlaced ? 2 : 0;
        const std::string out = Converted(clip, "ntsc.avi", "avi1", "rgb24");
        int repeated = 0;
        std::pair<int64_t, int64_t> before;
        Bytes shown;
        for (int64_t number = 0; number < 16; number++) {
            const double position = double(number) * kStep;
            const auto current = static_cast<int64_t>(position + 0.00001);
            const double part = position - double(current);
            // Odd lines, which are earlier, and even lines: the frames that they come from.
            const int64_t odd = current + (part >= 0.5);
            const int64_t even = interlaced ? current + (part + kStep / 2 >= 1) : odd;
            const Bytes picture = DecodedFrame(out, size_t(number), fState);
            const auto field = [&](int parity) {
                return MovingPicture::ReadFieldNumber(picture.data(), 720, 480, parity);
            };
            if (interlaced) {
                EXPECT_EQ(std::pair(2 * odd, 2 * even + 1), std::pair(field(1), field(0)));
            }
            const bool again = std::pair(odd, even) == before && number > 0;
            EXPECT_EQ(again, picture == shown) << number;
            repeated += again;
            before = {odd, even};
            shown = picture;
        }
        EXPECT_EQ(interlaced ? 0 : 2, repeated);
    }
}

TEST_F(ConversionMatrix, ARepeatedFrameIsAsItsCodecMadeIt)
{
    fOptions.opselection = kOperationToNTSC;
    Converted(MakeClip(3), "ntsc.dv", "dv");
    const MediaFormat format = DVFormat(false);
    PictureEncoder encoder(format, false, fState);
    Bytes picture = DrawnIn(false, false, 0);
    ASSERT_TRUE(encoder.Encode(picture, false));
    const Bytes coded(encoder.Frame().begin(), encoder.Frame().end());
    std::ranges::fill(encoder.Frame(), uint8_t{1});
    encoder.Repeat();
    EXPECT_TRUE(std::ranges::equal(coded, encoder.Frame()));
}

TEST_F(ConversionMatrix, OneThreadAndTwoGiveTheSameBytes)
{
    const std::string clip = MakeClip(6);
    const auto with = [&](int threads) {
        ConversionState state(fRegistry, threads);
        ConversionSettings settings;
        FillConversionSettings(fOptions, fCodecs, settings);
        EXPECT_EQ(0, ConvertFile(clip, fFolder.Path("out"), TypeOfDestination(fOptions.selection),
                                 settings, nullptr, nullptr, state));
        return ReadWhole(fFolder.Path("out"));
    };
    fOptions.opselection = kOperationToNTSC;
    for (const int32_t method : {0, 1, 2, 3}) {
        fOptions.blendmode = method;
        EXPECT_TRUE(with(1) == with(2)) << method;
    }
    fOptions.blendmode = 1;
    fOptions.dstint = 3;
    Choose("avi1", "huffyuv-yuv");
    EXPECT_TRUE(with(1) == with(2));
}

TEST_F(ConversionMatrix, OnlyWhatHasToChangeIsCodedAnew)
{
    using Settings = ConversionSettings;
    const std::string dv = MakeClip("a", 5, {}), dvcpro = MakeClip("b", 5, {.dvcpro = true});
    struct Row {
        int32_t from, to;
        bool copied;
    };
    const auto expect = [&](const char* what, const Row& row, const std::string& source,
                            std::function<void(Settings&)> adjust) {
        fAdjust = std::move(adjust);
        Film before(source), after(Converted(source, "out"));
        before.frames.resize(after.frames.size());
        EXPECT_EQ(row.copied, before.Pictures() == after.Pictures())
            << what << " from " << row.from << " to " << row.to;
    };
    // From 0 progressive, 1 upper, 2 lower field first; to the same and 3, 4 deinterlaced, 0 as is.
    constexpr Row kFields[] = {{1, 0, true},  {1, 1, true},  {1, 2, false},
                               {1, 3, false}, {2, 1, false}, {2, 2, true},
                               {2, 4, false}, {0, 1, true},  {0, 3, true}};
    // 0 unknown or as is, 1 is 4:3, 2 is 16:9; of data 1 is DV, 2 is DVCPRO25.
    constexpr Row kAspects[] = {{0, 2, false}, {2, 2, true}, {2, 0, true}, {1, 2, false}};
    constexpr Row kData[] = {{1, 1, true}, {1, 2, false}, {2, 2, true}, {2, 1, false}};
    for (const Row& row : kFields)
        expect("fields", row, dv, [=](Settings& s) {
            s.src_interlace = FieldOrder(row.from);
            s.dst_interlace = FieldTarget(row.to);
        });
    for (const Row& row : kAspects)
        expect("aspects", row, dv, [=](Settings& s) {
            s.src_aspect = Aspect(row.from);
            s.dst_aspect = Aspect(row.to);
        });
    for (const Row& row : kData)
        expect("data", row, row.from == 2 ? dvcpro : dv,
               [=](Settings& s) { s.dv_data_conversion = DataConversion(row.to); });
    expect("motion", {0, 2, true}, dv,
           [](Settings& s) { s.timeresampling = ResamplingMethod::kMotion; });
    expect("PAL", {1, 1, true}, dv, [](Settings& s) { s.op = Operation::kToPAL; });
    expect("mode", {0, 1, true}, dv, [](Settings& s) { s.mode = GeometryMode::kLetterBox; });
    // The step of reverse pulldown holds for PAL too, and frames are left out.
    fAdjust = [](Settings& s) {
        s.op = Operation::kToPAL, s.timeresampling = ResamplingMethod::kPulldown;
    };
    EXPECT_EQ(10u, Film(Converted(MakeClip(12), "out")).frames.size());
}

TEST_F(ConversionMatrix, CodecsStayOpenFromFileToFile)
{
    const std::string pal = MakeClip(3), ntsc = MakeClip("ntsc", 3, {.pal = false});
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
