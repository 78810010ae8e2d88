#include "engine/loop/frame_reader.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "base/byte_cursor.h"
#include "base/television.h"
#include "format/picture_layout.h"

namespace kelvane {
namespace {

// A PAL film of one letter a frame:
//   f a frame, u one that the system cannot read, s a chunk that is too short, l one that is longer
//   than a frame, x one that is longer and does not begin like a frame, h one that holds the one
//   before, m one beyond the end of the file, r one in a file that is not there.
class MadeUpFilm : public Source {
public:
    MadeUpFilm(std::string frames, const MediaFormat& pictures) : fFrames(std::move(frames))
    {
        is_pal = true;
        format = pictures;
    }
    FrameRead ReadFrame(int64_t number, std::span<uint8_t> buffer) override
    {
        reads++;
        if (number >= int64_t(fFrames.size())) return {kEnd};
        switch (fFrames[size_t(number)]) {
            case 'u':
                return {{kUnread, EIO}};
            case 'm':
                return {kMissing};
            case 'r':
                return {{kReferenceMissing, ENOENT}};
            case 'h':
                return {kOK};
        }
        const char letter = fFrames[size_t(number)];
        const uint8_t head[] = {0x1F, 0x07, 0x00, uint8_t(number % 10)};
        std::copy_n(head, 4, buffer.begin());
        if (letter == 'x') buffer[0] = 0x9F;
        return {kOK, size_t(letter == 's' ? 8 : letter == 'f' ? 144000 : 150000)};
    }
    uint64_t CountFrames() const override { return fFrames.size(); }

    int reads = 0;

private:
    std::string fFrames;
};

struct Reading {
    explicit Reading(const std::string& film, const MediaFormat& format = DVFormat(true))
        : source(film, format), reader(source, losses)
    {
        Bytes buffer(LargestFrame(source.format));
        for (;;) {
            const FrameArrival arrival = reader.Next(buffer);
            if (arrival.kind == FrameArrival::kNothing) return;
            const bool frame = arrival.kind == FrameArrival::kFrame;
            if (source.format.IsDV()) {
                EXPECT_EQ(frame ? 144000u : 0u, arrival.size);
            }
            came += frame ? char('0' + buffer[3]) : '=';
        }
    }
    MadeUpFilm source;
    Losses losses;
    FrameReader reader;
    std::string came;  // last digits of the frames' numbers, '=' for a repeat
};

TEST(FrameReader, PutsTheFrameBeforeInPlaceOfWhatCannotBeHad)
{
    const struct {
        const char *film, *came;
        uint64_t unread, missing, short_, undecodable, cut;
        int64_t first;
        StatusCode end;
    } rows[] = {
        {"fffff", "01234", 0, 0, 0, 0, 0, -1, kEnd},
        {"fuuff", "0==34", 2, 0, 0, 0, 0, 1, kEnd},
        {"fffuu", "012==", 2, 0, 0, 0, 0, 3, kEnd},
        {"fsfsu", "0=2==", 1, 0, 2, 0, 0, 1, kEnd},
        {"fflfx", "0123=", 0, 0, 0, 1, 1, -1, kEnd},
        {"fhfhh", "0=2==", 0, 0, 0, 0, 0, -1, kEnd},
        {"hhfff", "2=234", 0, 0, 0, 0, 0, -1, kEnd},
        {"xhxff", "3==34", 0, 0, 0, 2, 0, -1, kEnd},
        {"xxxxx", "", 0, 0, 0, 5, 0, -1, kUnread},
        {"ffmff", "01", 0, 3, 0, 0, 0, 2, kMissing},
        {"fufmf", "0=2", 1, 2, 0, 0, 0, 1, kMissing},
        {"fuumf", "0==", 2, 2, 0, 0, 0, 1, kMissing},
        {"ffffr", "0123", 0, 1, 0, 0, 0, 4, kReferenceMissing},
        {"uffff", "", 5, 0, 0, 0, 0, 0, kUnread},
        {"sffff", "", 0, 0, 5, 0, 0, 0, kUnread},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.film);
        const Reading reading(row.film);
        EXPECT_EQ(row.came, reading.came);
        EXPECT_EQ(row.unread, reading.losses.frames_unread);
        EXPECT_EQ(row.missing, reading.losses.frames_missing);
        EXPECT_EQ(row.short_, reading.losses.frames_short);
        EXPECT_EQ(row.undecodable, reading.losses.frames_undecodable);
        EXPECT_EQ(row.cut, reading.reader.CutFrames());
        EXPECT_EQ(row.first, reading.losses.first_frame);
        EXPECT_EQ(row.end, reading.reader.EndStatus());
        // What the system said first.
        const int said = row.end == kReferenceMissing ? ENOENT : row.unread > 0 ? EIO : 0;
        EXPECT_EQ(said, reading.reader.Reason().SystemError());
    }
}

TEST(FrameReader, TakesNoPartOfARawPicture)
{
    for (const uint32_t space : {kYUY2, kUYVY, kYUVSigned, kBGR24, kRGB24, kBGRX32}) {
        const int32_t bytes = space == kBGRX32 ? 4 : space == kBGR24 || space == kRGB24 ? 3 : 2;
        const Reading reading(
            "fsflf", MediaFormat(RawVideoFormat{space, 144000 / bytes / 100, 100, 25, 0, 0}));
        EXPECT_EQ("0=234", reading.came) << space;
        EXPECT_EQ(1u, reading.losses.frames_undecodable);
    }
}

TEST(FrameReader, LooksOnInStepsOfASecondBehindTenSeconds)
{
    const auto film = [](size_t good, size_t bad, size_t rest) {
        return std::string(good, 'f') + std::string(bad, 'u') + std::string(rest, 'f');
    };
    // One frame less than ten seconds: the first that can be read is found.
    EXPECT_EQ("0" + std::string(249, '=') + "0", Reading(film(1, 249, 1)).came);
    // Behind ten seconds only every 25th frame is tried: 251, 276, 301 ...; the gap is filled up to
    // the one that is found.
    EXPECT_EQ("0" + std::string(275, '=') + "67", Reading(film(1, 260, 17)).came);
    EXPECT_EQ(275u, Reading(film(1, 260, 17)).losses.frames_unread);
    // None is found: the film ends behind the last frame that was read.
    const Reading lost(film(3, 2000, 0));
    EXPECT_EQ("012", lost.came);
    EXPECT_EQ(2000u, lost.losses.frames_unread);
    EXPECT_EQ(3, lost.losses.first_frame);
    EXPECT_EQ(kUnread, lost.reader.EndStatus());
    EXPECT_GT(3 + 250 + 80, lost.source.reads) << "a disk takes its time over each";
}

TEST(FrameReader, EndsBehindTenSecondsOfFramesThatAreNoneOfThisFilm)
{
    const auto film = [](size_t bad) {
        return Reading("f" + std::string(100, 'x') + "h" + std::string(bad - 100, 'x') + "ff");
    };
    const Reading whole = film(250);
    EXPECT_EQ("0" + std::string(251, '=') + "23", whole.came);
    EXPECT_FALSE(whole.losses.FailTheRun());
    const Reading cut = film(251);
    EXPECT_EQ("0" + std::string(251, '='), cut.came);
    EXPECT_EQ(250u, cut.losses.frames_undecodable);
    EXPECT_EQ(3u, cut.losses.frames_unread) << "the one too many, and what comes behind";
    EXPECT_EQ(252, cut.losses.first_frame);
    EXPECT_EQ(kUnread, cut.reader.EndStatus());
    // Good frames in between begin the count anew.
    EXPECT_EQ(
        kEnd,
        Reading("f" + std::string(200, 'x') + "f" + std::string(200, 'x')).reader.EndStatus());
}

}  // namespace
}  // namespace kelvane
