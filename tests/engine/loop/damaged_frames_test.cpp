// Frames that cannot be decoded, or are of another film: the picture before is shown, and counted.

#include <algorithm>

#include "dv/dif_layout.h"
#include "engine/loop/messages_case.h"

namespace kelvane {
namespace {

using DamagedFrames = Messages;

TEST_F(DamagedFrames, RubbishBetweenGoodFramesShowsThePictureBefore)
{
    std::vector<Bytes> frames = Film(MakeClip(10)).frames;
    std::fill(frames[6].begin(), frames[6].end(), 0x5A);
    const std::string source = MakeAVI(frames, kAVIPAL | kAVIType1);
    for (const char* format : {"dv", "avi2-odml", "mov-audio"}) {
        fOptions.opselection = kOperationConvert;
        EXPECT_EQ(10u, Film(Converted(source, "copy", format)).frames.size())
            << "nobody looks inside";
        fOptions.opselection = kOperationToNTSC;
        Film film(Converted(source, "other", format));
        EXPECT_EQ(1u, fResult.losses.frames_undecodable);
        EXPECT_FALSE(film.source->is_pal);
        EXPECT_EQ(12u, film.frames.size());
    }
    // More than ten seconds are no tape any more, and a first frame has none before it.
    frames.resize(7);
    frames.resize(7 + 250, frames[6]);
    Expect(-1, "DV Decode Error #1!", MakeAVI(frames, kAVIPAL | kAVIType1));
    EXPECT_EQ(250u, fResult.losses.frames_undecodable);
    std::swap(frames[0], frames[6]);
    Expect(-1, "DV Decode Error #1!", MakeAVI(frames, kAVIPAL | kAVIType1));
    EXPECT_EQ(0u, fResult.frames_written);
}

TEST_F(DamagedFrames, DamagedFramesOfOtherCodecsShowThePictureBefore)
{
    const struct {
        const char *format, *codec;
        uint8_t rubbish;
    } rows[] = {{"avi2", "huffyuv-yuv", 0}, {"mov", "animation", 0x5A}};
    const std::string clip = MakeClip(5);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.codec);
        const std::string path = Converted(clip, "coded", row.format, row.codec);
        const Bytes frame = Film(path).frames[2];
        Bytes file = ReadWhole(path);
        constexpr ptrdiff_t kHeader = 14;
        std::fill_n(std::ranges::search(file, frame).begin() + kHeader,
                    ptrdiff_t(frame.size()) - kHeader, row.rubbish);
        const Film film(Converted(fFolder.Write("damaged", file), "out.dv", "dv"));
        EXPECT_EQ(5u, film.frames.size());
        EXPECT_EQ(1u, fResult.losses.frames_undecodable);
    }
}

TEST_F(DamagedFrames, ABlankFrameAtTheBeginningDoesNotDecideForTheFilm)
{
    for (const bool pal : {true, false})
        for (const bool blank : {true, false}) {
            SCOPED_TRACE(testing::Message() << pal << blank);
            const SampleOptions options = {.pal = pal, .wide = false};
            Bytes film = ReadWhole(MakeClip("clip.dv", 6, options));
            const size_t size = film.size() / 6;
            film[3] = pal ? film[3] & 0x7F : film[3];  // as if of the other system
            for (size_t sequence = 0; blank && sequence < size / kDIFSequenceSize; sequence++)
                for (size_t block = 3; block < 6; block++)
                    std::fill_n(&film[sequence * kDIFSequenceSize + block * kDIFBlockSize + 3],
                                kDIFBlockSize - 3, uint8_t{0xFF});
            const std::string source = fFolder.Write("blank.dv", film);
            const Film copy(Converted(source, "copy.dv", "dv"));
            ASSERT_EQ(6u, copy.frames.size());
            EXPECT_EQ(size, copy.frames[0].size());
            EXPECT_TRUE(Film(source).Pictures() == copy.Pictures()) << "and is not made wide";
        }
}

TEST_F(DamagedFrames, ASourceThatChangesItsSystemHalfway)
{
    std::vector<Bytes> frames = Film(MakeClip(5)).frames;
    for (const Bytes& frame : Film(MakeClip(5, false)).frames)
        frames.push_back(frame);
    const std::string source = MakeAVI(frames, kAVIPAL | kAVIType1);
    // The first frame decides, and no destination ever gets one of the other system.
    for (const char* format : {"dv", "avi2", "avi1-ref", "mov-audio"}) {
        Choose(format);
        for (const uint32_t operation : {kOperationConvert, kOperationToNTSC}) {
            SCOPED_TRACE(format + std::to_string(operation));
            fOptions.opselection = operation;
            Expect(0, "", source);
            EXPECT_EQ(5u, fResult.losses.frames_undecodable);
            const Film film(fFolder.Path("destination"));
            EXPECT_EQ(operation == kOperationConvert ? 10u : 12u, film.frames.size());
            EXPECT_EQ(fResult.frames_written, film.frames.size());
            for (const Bytes& frame : film.frames)
                EXPECT_EQ(operation == kOperationConvert ? 144000u : 120000u, frame.size());
        }
    }
}

}  // namespace
}  // namespace kelvane
