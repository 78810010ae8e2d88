// What comes of a movie whose media are not all to be had.

#include <gtest/gtest.h>

#include <filesystem>

#include "media/file_detour.h"
#include "media/media_files.h"
#include "media/quicktime/qt_file.h"
#include "support/qt_builder.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

class QTLoss : public ::testing::Test {
protected:
    std::string Put(const Bytes& bytes) { return fFolder.Write("movie.mov", bytes); }
    std::string Frames(const QTTestTrack& track)
    {
        QTFile file(Put(QTOneTrack(track)).c_str(), kRead);
        return NextFrames(file);
    }

    TempFolder fFolder;
};

constexpr int32_t kVideo = 0, kSound = 1;

struct Place {
    int32_t stream;
    int64_t frame;
    uint64_t end;  // byte behind it
    std::string bytes;
};
// Of the tiny movie whose media begin at byte 8.
const std::vector<Place> kPlaces = {{kVideo, 0, 12, "AAAA"},
                                    {kVideo, 1, 16, "BBBB"},
                                    {kVideo, 2, 20, "CCCC"},
                                    {kSound, 0, 24, "1032"},
                                    {kSound, 1, 32, "54769810"}};

TEST_F(QTLoss, WhatIsBeyondTheEndOfAFileThatGotShorterIsMissing)
{
    const Bytes movie = QTLayouts()[0].file;
    for (uint64_t length = 40; length-- > 0;) {
        SCOPED_TRACE(length);
        const std::string path = Put(movie);
        QTFile file(path.c_str(), kRead);
        std::filesystem::resize_file(path, length);
        for (const Place& place : kPlaces) {
            ASSERT_EQ(0, file.SeekFrame(place.stream, place.frame));
            const bool whole = place.end <= length;
            EXPECT_EQ(whole ? place.bytes : "(-201)", NextFrame(file, place.stream));
            EXPECT_EQ(place.frame + whole, file.FramePosition(place.stream));
        }
        for (const auto& [stream, end] : {std::pair(kVideo, 3), {kSound, 2}}) {
            ASSERT_EQ(0, file.SeekFrame(stream, end));
            EXPECT_EQ("(-200)", NextFrame(file, stream));
        }
    }
}

TEST_F(QTLoss, AFailureOfTheSystemIsToldWithItsReasonAndDoesNotMove)
{
    const std::string path = Put(QTLayouts()[0].file);
    QTFile file(path.c_str(), kRead);
    EXPECT_EQ("AAAA", NextFrame(file, kVideo));
    {
        const FileDetour bad(path, fFolder.Root());
        ASSERT_TRUE(bad.Found());
        Bytes buffer(100);
        for (const int32_t stream : {kVideo, kSound}) {
            uint32_t size = 1;
            const Status status = file.ReadFrame(stream, buffer, size);
            EXPECT_EQ(kUnread, status.Code());
            EXPECT_EQ(EISDIR, status.SystemError());
            EXPECT_EQ(0u, size);
        }
        EXPECT_EQ(4u, file.FrameSize(kSound, file.FramePosition(kSound))) << "what is lost";
    }
    EXPECT_EQ("BBBB", NextFrame(file, kVideo));
    EXPECT_EQ(0, file.SeekFrame(kSound, file.FramePosition(kSound) + 1));
    EXPECT_EQ("54769810", NextFrame(file, kSound));

    const Status opened = QTFile("/proc/self/mem", kRead).InitCheck();
    EXPECT_EQ(kError, opened.Code()) << "not \"no movie\": nobody knows";
    EXPECT_EQ(EIO, opened.SystemError());
    EXPECT_EQ(ENOENT, QTFile("/nowhere/at all", kRead).InitCheck().SystemError());
}

TEST_F(QTLoss, TheFirstBytesOfAFrameThatIsTooLargeCome)
{
    QTFile file(Put(QTLayouts()[0].file).c_str(), kRead);
    EXPECT_EQ("AAA(-203)", NextFrame(file, kVideo, 3));
    EXPECT_EQ(0, file.FramePosition(kVideo));
    EXPECT_EQ("(-203)", NextFrame(file, kVideo, 0));
    EXPECT_EQ("10(-203)", NextFrame(file, kSound, 2)) << "in the order that is read otherwise";
    EXPECT_EQ("AAAA", NextFrame(file, kVideo, 4));
    // The whole of it has to be there, to the byte.
    const uint64_t length = QTOneTrack({.stsz = Longs({0, 0, 3, 4, 4, 4})}).size();
    for (const uint64_t size : {length - 12, length - 11, uint64_t{0xFFFFFFFF}}) {
        QTFile large(Put(QTOneTrack({.stsz = Longs({0, 0, 3, 4, size, 4})})).c_str(), kRead);
        EXPECT_EQ("AAAA", NextFrame(large, kVideo, 4));
        EXPECT_EQ(size == length - 12 ? "BBBB(-203)" : "(-201)", NextFrame(large, kVideo, 4));
    }
}

TEST_F(QTLoss, TablesThatPromiseMoreThanTheyGiveEndInSomethingMissing)
{
    EXPECT_EQ("AAAA BBBB CCCC (-200)", Frames({.samples = 3}));
    EXPECT_EQ("AAAA BBBB CCCC (-201)", Frames({.samples = 4})) << "no chunk for the fourth";
    EXPECT_EQ("AAAA BBBB (-201)", Frames({.stsz = Longs({0, 0, 3, 4, 4})})) << "no size";
    EXPECT_EQ("AAAA BBBB (-201)", Frames({.stco = QTTable({8})}));
    EXPECT_EQ("(-201)", Frames({.stsc = QTTable({}, 3)}));
    EXPECT_EQ("AAAA  CCCC (-200)", Frames({.stsc = QTTable({1, 1, 1}, 3),
                                           .stsz = Longs({0, 0, 3, 4, 0, 4}),
                                           .stco = QTTable({8, 1000000, 16})}))
        << "a frame of no bytes is not missing, wherever it should be";

    const QTTestTrack sound{.video = false,
                            .format = "sowt",
                            .duration = 1,
                            .samples = 2,
                            .stsc = QTTable({1, 1, 1}, 3),
                            .stsz = Longs({0, 1, 2})};
    EXPECT_EQ("AAAA CCCC (-200)", Frames(sound));
    QTTestTrack cut = sound;
    cut.stco = Longs({0, 3, 8, 16});
    EXPECT_EQ("AAAA CCCC (-201)", Frames(cut)) << "a table cut off with the file";
}

TEST_F(QTLoss, NumbersThatAddUpToTooMuchLeadNowhere)
{
    // Where 64 bits wrap, the second sample would be the head of the file.
    for (const uint64_t offset : {~uint64_t{0} - 3, ~uint64_t{0} - 11, uint64_t{1} << 63,
                                  (uint64_t{1} << 63) - 1, (uint64_t{1} << 63) - 5}) {
        for (const Bytes& sizes : {Longs({0, 4, 3}), Longs({0, 0, 3, 4, 4, 4})}) {
            QTFile file(Put(QTOneTrack({.stsc = QTTable({1, 3, 1}, 3),
                                        .stsz = sizes,
                                        .stco = QTTable({offset}, 1, 8),
                                        .wide_offsets = true}))
                            .c_str(),
                        kRead);
            for (int64_t frame = 0; frame < 3; frame++) {
                ASSERT_EQ(0, file.SeekFrame(0, frame));
                EXPECT_EQ("(-201)", NextFrame(file)) << std::hex << offset << " " << frame;
            }
        }
    }
    // 2^31 samples of 2 * 2 bytes, each for 2^31 units of time.
    QTFile endless(Put(QTOneTrack({.video = false,
                                   .format = "sowt",
                                   .duration = 1u << 31,
                                   .stsc = QTTable({1, 1u << 31, 1}, 3)}))
                       .c_str(),
                   kRead);
    EXPECT_EQ("(-201)", NextFrame(endless)) << "not a chunk of no bytes";
}

}  // namespace
}  // namespace kelvane
