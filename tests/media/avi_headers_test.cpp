// What stands in the headers of the AVI files that we write, and where.

#include <gtest/gtest.h>

#include "support/avi_films.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

using Words = std::vector<uint32_t>;

// A film of this type.
RiffFilm Film(const char* type, bool pal, uint32_t frames)
{
    const TempFolder folder;
    const std::string path = folder.Path("film.avi");
    EXPECT_EQ(frames, WriteFilm(path, OutputNamed(type), pal, frames));
    return RiffFilm(path);
}

struct Numbers {
    const char* type;
    bool pal;
    uint32_t media, first_frame;                          // positions of their heads
    uint32_t bytes_per_second, granularity, flags;        // "avih"
    uint32_t scale, rate, largest, quality, sample_size;  // "strh"
    uint32_t compressed_size;                             // biSizeImage; 0: no bitmap
};

TEST(AVIHeadersTest, PutsTheHeadersOfEachTypeWhereTheyBelong)
{
    constexpr uint32_t kP = 144000, kN = 120000;
    const Numbers cases[] = {
        {"Type1", true, 32768, 32780, 3600200, 1, 0x810, 400000, 10000000, kP + 8, 0, kP, 0},
        {"Type1OpenDML", false, 32768, 32780, 3596650, 1, 0x800, 333666, 10000000, kN + 8, 0, kN,
         0},
        {"Type2", false, 32768, 32780, 3596639, 1, 0x910, 10000, 299700, kN + 8, 0, kN, kN},
        {"Type2OpenDML", true, 65120, 65132, 3600200, 1, 0x900, 10000, 250000, kP + 8, 0, kP, kP},
        {"Type1Reference", true, 32768, 32780, 3600200, 1, 0x800, 400000, 10000000, kP + 8, 0, kP,
         0},
        {"Canopus1", true, 32768, 32780, 3600200, 0, 0x10, 400000, 10000000, kP + 8, 0, kP, kP},
        {"Canopus2", false, 32768, 32780, 3596639, 0, 0x10, 10000, 299700, kN + 8, 0, 1036800, kN},
        {"Matrox", true, 65524, 131072, 3609600, 512, 0x10030, 1, 25, 144384, ~0u, kP, kP},
        {"Matrox", false, 65524, 131072, 3609600, 512, 0x10030, 1001, 30000, 120832, ~0u, kN, kN},
    };
    for (const Numbers& c : cases) {
        SCOPED_TRACE(std::string(c.type) + (c.pal ? " PAL" : " NTSC"));
        const AVIOutput& output = OutputNamed(c.type);
        const bool canopus = output.flags & kAVICanopus, matrox = output.flags & kAVIMatrox;
        const uint32_t height = c.pal ? 576 : 480, interval = c.pal ? 40000 : 33366;
        const RiffFilm film = Film(c.type, c.pal, 3);
        EXPECT_TRUE(film.IsWhole());
        EXPECT_EQ(c.media, film.Find("movi").head);
        EXPECT_EQ(c.first_frame, film.Find(matrox ? "00dc" : "00db").head);
        const uint32_t streams = output.HasSound() ? 2 : 1;
        EXPECT_EQ((Words{interval, c.bytes_per_second, c.granularity, c.flags, 3, 0, streams,
                         c.largest, 720, height}),
                  film.Words("avih", 0, 10));
        EXPECT_EQ(canopus ? Words({c.scale, c.rate, 0, 3}) : Words(4), film.Words("avih", 40, 4));
        EXPECT_EQ((Words{0, 0, 0, c.scale, c.rate, 0, 3, c.largest, c.quality, c.sample_size, 0,
                         720 | height << 16}),
                  film.Words("strh", 8, 12));
        EXPECT_EQ((c.compressed_size ? "vids" : "iavs") + std::string(output.handler),
                  film.Text("strh", 0, 8));
        if (c.compressed_size == 0) continue;
        EXPECT_EQ((Words{40, 720, height, 1 | 24 << 16, FileOrderCode(output.handler),
                         c.compressed_size, 0, 0, 0, 0}),
                  film.Words("strf", 0, 10));
    }
}

TEST(AVIHeadersTest, OrdersTheChunks)
{
    const std::pair<const char*, const char*> cases[] = {
        {"Type1", "AVI  hdrl avih strl strh strf JUNK movi 00db idx1"},
        {"Type2",
         "AVI  hdrl avih strl strh strf strl strh strf JUNK movi 00db 01wb 00db 01wb idx1"},
        {"Type1OpenDML", "AVI  hdrl avih strl strh strf indx odml dmlh JUNK movi 00db ix00"},
        {"Type2OpenDML",
         "AVI  hdrl avih strl strh strf indx strl strh strf indx odml dmlh JUNK movi 00db 01wb "
         "00db 01wb ix00 ix01"},
        {"Canopus1", "AVI  hdrl avih strl strh strf JUNK movi 00db idx1"},
        {"Matrox",
         "AVI  hdrl avih strl strh strf indx vprp odml dmlh INFO ISFT JUNK movi ix00 00dc JUNK "
         "00dc JUNK idx1"},
    };
    for (const auto& [name, shape] : cases)
        EXPECT_EQ(shape, Film(name, true, 2).Shape()) << name;
}

TEST(AVIHeadersTest, WritesTheFixedBlocks)
{
    const RiffFilm ntsc = Film("Type1", false, 1);
    EXPECT_EQ(32u, ntsc.Find("strf").size);
    EXPECT_EQ((Words{0xC0C000C0, 0xFFA0CF3F, 0xC0C001C0, 0xFFA0CF3F, 0xFF80FFFF, 0xFFFCC83F, 0, 0}),
              ntsc.Words("strf", 0, 8));

    const RiffFilm sound = Film("Type2", true, 1);
    EXPECT_EQ((Words{1 | 2 << 16, 48000, 192000, 4 | 16 << 16}), sound.Words("strf", 0, 4, 1));
    EXPECT_EQ("auds", sound.Text("strh", 0, 4, 1));
    EXPECT_EQ((Words{1, 48000, 0, 6400 / 4, 6408}), sound.Words("strh", 20, 5, 1))
        << "length in sample frames";

    const RiffFilm matrox = Film("Matrox", false, 1);
    EXPECT_EQ(72u, matrox.Find("strf").size);
    EXPECT_EQ(51192u, matrox.Find("indx").size);
    EXPECT_EQ(248u, matrox.Find("dmlh").size);
    EXPECT_EQ(1u, matrox.At("dmlh", 0, 4));
    EXPECT_EQ(std::string("Matrox MQSink Filter . Format: 4. Build: 2.0.0.271 \0", 52),
              matrox.Text("ISFT", 0, 52));
    EXPECT_EQ((Words{4, 2, 60, 858, 525, 0x00040003, 720, 485, 1, 0}), matrox.Words("vprp", 0, 10));
}

}  // namespace
}  // namespace kelvane
