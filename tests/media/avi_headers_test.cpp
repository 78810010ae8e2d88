// What stands in the headers of the AVI files that we write, and where.

#include <gtest/gtest.h>

#include "support/avi_films.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

class AVIHeadersTest : public testing::Test {
protected:
    std::string Path() const { return fFolder.Path("film.avi"); }
    const TempFolder fFolder;
};

struct Numbers {
    const char* type;
    bool pal;
    uint64_t media;        // position of the head of "movi"
    uint64_t first_frame;  // and of the first frame
    std::vector<uint32_t> avih;
    std::vector<uint32_t> strh;  // from fccType's third word on: dwFlags ... dwSampleSize
    std::vector<uint32_t> rectangle;
    uint32_t compressed_size;  // biSizeImage; 0: no bitmap
};

TEST_F(AVIHeadersTest, PutsTheHeadersOfEachTypeWhereTheyBelong)
{
    constexpr uint32_t kP = 144000, kN = 120000;
    const Numbers cases[] = {
        {"Type1",
         true,
         32768,
         32780,
         {40000, 3600200, 1, 0x810, 3, 0, 1, kP + 8, 720, 576, 0, 0, 0, 0},
         {0, 0, 0, 400000, 10000000, 0, 3, kP + 8, 0, kP},
         {0, 0, 720, 576},
         0},
        {"Type1OpenDML",
         false,
         32768,
         32780,
         {33366, 3596650, 1, 0x800, 3, 0, 1, kN + 8, 720, 480, 0, 0, 0, 0},
         {0, 0, 0, 333666, 10000000, 0, 3, kN + 8, 0, kN},
         {0, 0, 720, 480},
         0},
        {"Type2",
         false,
         32768,
         32780,
         {33366, 3596639, 1, 0x910, 3, 0, 2, kN + 8, 720, 480, 0, 0, 0, 0},
         {0, 0, 0, 10000, 299700, 0, 3, kN + 8, 0, kN},
         {0, 0, 720, 480},
         kN},
        {"Type2OpenDML",
         true,
         65120,
         65132,
         {40000, 3600200, 1, 0x900, 3, 0, 2, kP + 8, 720, 576, 0, 0, 0, 0},
         {0, 0, 0, 10000, 250000, 0, 3, kP + 8, 0, kP},
         {0, 0, 720, 576},
         kP},
        {"Type1Reference",
         true,
         32768,
         32780,
         {40000, 3600200, 1, 0x800, 3, 0, 1, kP + 8, 720, 576, 0, 0, 0, 0},
         {0, 0, 0, 400000, 10000000, 0, 3, kP + 8, 0, kP},
         {0, 0, 720, 576},
         0},
        {"Canopus1",
         true,
         32768,
         32780,
         {40000, 3600200, 0, 0x10, 3, 0, 1, kP + 8, 720, 576, 400000, 10000000, 0, 3},
         {0, 0, 0, 400000, 10000000, 0, 3, kP + 8, 0, kP},
         {0, 0, 720, 576},
         kP},
        {"Canopus2",
         false,
         32768,
         32780,
         {33366, 3596639, 0, 0x10, 3, 0, 2, kN + 8, 720, 480, 10000, 299700, 0, 3},
         {0, 0, 0, 10000, 299700, 0, 3, kN + 8, 0, 1036800},
         {0, 0, 720, 480},
         kN},
        {"Matrox",
         true,
         65524,
         131072,
         {40000, 3609600, 512, 0x10030, 3, 0, 1, 144384, 720, 576, 0, 0, 0, 0},
         {0, 0, 0, 1, 25, 0, 3, 144384, 0xFFFFFFFF, kP},
         {0, 0, 720, 576},
         kP},
        {"Matrox",
         false,
         65524,
         131072,
         {33366, 3609600, 512, 0x10030, 3, 0, 1, 120832, 720, 480, 0, 0, 0, 0},
         {0, 0, 0, 1001, 30000, 0, 3, 120832, 0xFFFFFFFF, kN},
         {0, 0, 720, 480},
         kN},
    };
    for (const Numbers& c : cases) {
        SCOPED_TRACE(std::string(c.type) + (c.pal ? " PAL" : " NTSC"));
        ASSERT_EQ(3u, WriteFilm(Path(), OutputNamed(c.type), c.pal, 3));
        const RiffFilm film(Path());
        EXPECT_EQ("!", film.Find("!", 1).id);
        EXPECT_EQ(c.media, film.Find("movi").head);
        EXPECT_EQ(c.first_frame, film.Find(*c.type == 'M' ? "00dc" : "00db").head);
        for (size_t i = 0; i < c.avih.size(); i++)
            EXPECT_EQ(c.avih[i], film.At("avih", 4 * i, 4)) << "avih word " << i;
        for (size_t i = 0; i < c.strh.size(); i++)
            EXPECT_EQ(c.strh[i], film.At("strh", 8 + 4 * i, 4)) << "strh word " << i;
        for (size_t i = 0; i < 4; i++)
            EXPECT_EQ(c.rectangle[i], film.At("strh", 48 + 2 * i, 2)) << "rcFrame " << i;
        EXPECT_EQ(OutputNamed(c.type).handler, film.Text("strh", 4));
        EXPECT_EQ(c.compressed_size ? "vids" : "iavs", film.Text("strh", 0));
        if (c.compressed_size == 0) continue;
        const uint64_t bitmap[] = {40,
                                   720,
                                   c.avih[9],
                                   1 | 24 << 16,
                                   FileOrderCode(OutputNamed(c.type).handler),
                                   c.compressed_size,
                                   0,
                                   0,
                                   0,
                                   0};
        for (size_t i = 0; i < std::size(bitmap); i++)
            EXPECT_EQ(bitmap[i], film.At("strf", 4 * i, 4)) << "strf word " << i;
    }
}

TEST_F(AVIHeadersTest, OrdersTheChunks)
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
    for (const auto& [name, shape] : cases) {
        ASSERT_EQ(2u, WriteFilm(Path(), OutputNamed(name), true, 2)) << name;
        EXPECT_EQ(shape, RiffFilm(Path()).Shape()) << name;
    }
}

TEST_F(AVIHeadersTest, WritesTheFixedBlocks)
{
    WriteFilm(Path(), OutputNamed("Type1"), false, 1);
    const RiffFilm ntsc(Path());
    EXPECT_EQ(32u, ntsc.Find("strf").size);
    const uint32_t info[] = {0xC0C000C0, 0xFFA0CF3F, 0xC0C001C0, 0xFFA0CF3F,
                             0xFF80FFFF, 0xFFFCC83F, 0,          0};
    for (size_t i = 0; i < 8; i++)
        EXPECT_EQ(info[i], ntsc.At("strf", 4 * i, 4)) << i;

    WriteFilm(Path(), OutputNamed("Type2"), true, 1);
    const RiffFilm sound(Path());
    EXPECT_EQ(Little(1, 2) + Little(2, 2) + Little(48000, 4) + Little(192000, 4) + Little(4, 2) +
                  Little(16, 2),
              sound.bytes.substr(sound.Find("strf", 1).head + 8, 16));
    EXPECT_EQ("auds", sound.Text("strh", 0, 1));
    EXPECT_EQ(1u, sound.At("strh", 20, 4, 1));
    EXPECT_EQ(48000u, sound.At("strh", 24, 4, 1));
    EXPECT_EQ(6400u / 4, sound.At("strh", 32, 4, 1)) << "length in sample frames";
    EXPECT_EQ(6408u, sound.At("strh", 36, 4, 1));

    WriteFilm(Path(), OutputNamed("Matrox"), false, 1);
    const RiffFilm matrox(Path());
    EXPECT_EQ(72u, matrox.Find("strf").size);
    EXPECT_EQ(51192u, matrox.Find("indx").size);
    EXPECT_EQ(248u, matrox.Find("dmlh").size);
    EXPECT_EQ(1u, matrox.At("dmlh", 0, 4));
    EXPECT_EQ(std::string("Matrox MQSink Filter . Format: 4. Build: 2.0.0.271 \0", 52),
              matrox.bytes.substr(matrox.Find("ISFT").head + 8, 52));
    const uint32_t properties[] = {4, 2, 60, 858, 525, 0x00040003, 720, 485, 1, 0};
    for (size_t i = 0; i < 10; i++)
        EXPECT_EQ(properties[i], matrox.At("vprp", 4 * i, 4)) << i;
}

}  // namespace
}  // namespace kelvane
