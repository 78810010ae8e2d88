// What becomes of AVI files that are not as a writer leaves them.

#include <algorithm>

#include "engine/loop/conversion_case.h"
#include "support/riff.h"

namespace kelvane {
namespace {

class AVISources : public ConversionCase {
protected:
    // The file with other bytes at a place.
    std::string Patched(const std::string& path, uint64_t at, const std::string& bytes)
    {
        std::string whole = RiffFilm(path).bytes;
        whole.replace(at, bytes.size(), bytes);
        return fFolder.Write("patched.avi", AsBytes(whole));
    }
    // With other sizes in the entries of a standard index.
    std::string WithSizes(std::string path, const std::string& index,
                          const std::vector<std::pair<int, uint32_t>>& sizes)
    {
        const uint64_t entries = RiffFilm(path).Find(index).head + 8 + 24;
        for (const auto& [entry, size] : sizes)
            path = Patched(path, entries + uint64_t(entry) * 8 + 4, Little(size, 4));
        return path;
    }
};

// Frame numbers of `film` as they stand in `source`, by the pictures alone.
std::vector<size_t> NumbersOf(const std::string& film, const std::string& source)
{
    const Bytes made = Film(film).Pictures(), all = Film(source).Pictures();
    std::vector<size_t> numbers;
    for (size_t at = 0; at < made.size(); at += 144000) {
        size_t number = 0;
        while (number < all.size() / 144000 &&
               !std::equal(&made[at], &made[at] + 144000, &all[number * 144000]))
            number++;
        numbers.push_back(number);
    }
    return numbers;
}

TEST_F(AVISources, KeepTheTimeOfHeldFrames)
{
    const std::string source = MakeClip(8);
    const std::vector<size_t> held = {0, 1, 2, 2, 4, 4, 6, 7};
    for (const char* format : {"avi1-odml", "avi2-odml"}) {
        const std::string whole = Converted(source, "whole.avi", format);
        const std::string film = WithSizes(whole, "ix00", {{3, 0x80000000}, {5, 0}});
        const std::string plain = Converted(whole, "plain.dv", "dv");
        const std::string made = Converted(film, "made.dv", "dv");
        EXPECT_EQ(held, NumbersOf(made, source)) << format;
        const Bytes sound = Film(made).SoundOfFrames(), all = Film(plain).SoundOfFrames();
        if (format == std::string("avi2-odml")) {
            EXPECT_EQ(all, sound) << "a stream of its own goes on";
            continue;
        }
        const auto samples = [](const Bytes& of, size_t frame) {
            return Bytes(&of[frame * 7680], &of[frame * 7680] + 7680);
        };
        ASSERT_EQ(size_t{8 * 7680}, sound.size());
        EXPECT_EQ(Bytes(7680), samples(sound, 3)) << "a held frame has none";
        for (const auto& [frame, from] : {std::pair(2, 2), {4, 4}, {5, 4}, {6, 6}, {7, 7}})
            EXPECT_EQ(samples(all, size_t(from)), samples(sound, size_t(frame))) << frame;
    }
}

TEST_F(AVISources, AreDVByTheirFirstFrameUnderNamesThatSeveralCodecsHave)
{
    for (const bool pal : {true, false}) {
        const std::string source = MakeClip(4, pal);
        const std::string whole = Converted(source, "whole.avi", "avi2");
        const RiffFilm film(whole);
        const uint64_t handler = film.Find("strh").head + 8 + 4;
        const uint64_t compression = film.Find("strf").head + 8 + 16;
        const auto named = [&](const std::string& first, const std::string& second) {
            return Patched(Patched(whole, handler, first), compression, second);
        };
        Choose("dv");
        for (const std::string name : {"PDVC", "dvsl", "dvis", "dvc "})
            for (const std::string& path : {named(name, name), named(Little(0, 4), name)})
                EXPECT_EQ(Film(source).Pictures(), Film(Converted(path, "made.dv")).Pictures())
                    << name;
        for (const std::string name : {"dv25", "DV25", "cdvc", "AVdv"})
            EXPECT_EQ(Film(source).Pictures(),
                      Film(Converted(named(Little(0, 4), name), "made.dv")).Pictures())
                << name;
        // Something else under that name.
        const std::string other =
            Patched(named("PDVC", "PDVC"), film.Find("00db").head + 8, "\x9F");
        EXPECT_EQ(-1, Convert(other, fFolder.Path("none.dv")));
        EXPECT_EQ("Source is not DV or uncompressed AVI.", fResult.message);
    }
}

// Pictures of 24 bits whose rows are padded, or not, bottom or top row first, with bytes behind
// them or not.
TEST_F(AVISources, MayPadTheirRows)
{
    const int width = 18, height = 6;
    const size_t row = 54, padded = 56;
    std::string rows;
    for (size_t i = 0; i < row * height; i++)
        rows += char(i * 37 % 251);
    const auto turned = [&](const std::string& picture) {
        std::string other;
        for (int y = height; y-- > 0;)
            other += picture.substr(size_t(y) * row, row);
        return other;
    };
    const auto film = [&](size_t pitch, bool top_down, size_t behind) {
        const std::string picture = top_down ? turned(rows) : rows;
        std::string frame;
        for (size_t y = 0; y < height; y++)
            frame += picture.substr(y * row, row) + std::string(pitch - row, 'p');
        frame += std::string(behind, 'b');
        TinyAVI avi{.handler = "DIB ", .frames = {frame, frame, frame}};
        avi.format = Little(40, 4) + Little(uint64_t(width), 4) +
                     Little(uint64_t(top_down ? -height : height), 4) + Little(1, 2) +
                     Little(24, 2) + std::string(24, '\0');
        for (uint32_t i = 0; i < 3; i++)
            avi.index += TinyAVI::IndexEntry("00db", uint32_t(4 + i * (frame.size() + 8)),
                                             uint32_t(frame.size()));
        return fFolder.Write("rows.avi", AsBytes(avi.Build()));
    };
    std::string stored;
    for (size_t y = 0; y < height; y++)
        stored += rows.substr(y * row, row) + std::string(2, '\0');
    for (const size_t pitch : {row, padded})
        for (const auto& [top_down, behind] : {std::pair(false, 0u), {true, 0u}, {true, 4u}}) {
            SCOPED_TRACE(testing::PrintToString(std::tuple(pitch, top_down, behind)));
            const std::string source = film(pitch, top_down, behind);
            const Film read(source);
            ASSERT_EQ(3u, read.frames.size());
            EXPECT_EQ(rows, AsText(read.frames[0]));
            const RiffFilm copy(Converted(source, "copy.avi", "avi2", "rgb24"));
            EXPECT_TRUE(stored == copy.bytes.substr(copy.Find("00db").head + 8, padded * height));
            EXPECT_EQ(padded * height, copy.At("strf", 20, 4));
            // Through a picture of 32 bits and back.
            const std::string wide = Converted(source, "wide.avi", "avi2", "rgb32");
            const RiffFilm coded(Converted(wide, "coded.avi", "avi2", "rgb24"));
            EXPECT_TRUE(stored == coded.bytes.substr(coded.Find("00db").head + 8, padded * height));
        }
}

TEST_F(AVISources, SalvageWhatBrokeOff)
{
    const std::string source = MakeClip(8);
    for (const char* format : {"avi1", "avi2", "avi1-odml", "avi2-odml"}) {
        SCOPED_TRACE(format);
        fOptions.add_idx1 = 0;
        const std::string whole = Converted(source, "whole.avi", format);
        const std::string from_whole = Converted(whole, "made.dv", "dv");
        EXPECT_EQ(Film(source).frames.size(), Film(from_whole).frames.size());
        EXPECT_FALSE(fResult.losses.Any()) << "an AVI needs no index";
        const RiffFilm film(whole);
        const uint64_t sixth = film.Find("00db", 5).head;
        std::string part = film.bytes.substr(0, sixth + 100000);
        for (const uint64_t size : {film.Find("AVI ").head + 4, film.Find("movi").head + 4})
            part.replace(size, 4, 4, '\0');
        const std::string broken = fFolder.Write("broken.avi", AsBytes(part));
        const bool promised = std::string(format).ends_with("odml");
        Choose("dv");
        EXPECT_EQ(promised ? -1 : 0, Convert(broken, fFolder.Path("made.dv")));
        EXPECT_EQ((std::vector<size_t>{0, 1, 2, 3, 4}), NumbersOf(fFolder.Path("made.dv"), source));
        EXPECT_EQ(5u, fResult.losses.frames_salvaged);
        EXPECT_EQ(promised ? 3u : 0u, fResult.losses.frames_missing);
        EXPECT_EQ(1u, fResult.warnings.size());
    }
}

}  // namespace
}  // namespace kelvane
