#include "media/qt_description.h"

#include <gtest/gtest.h>

#include "support/qt_builder.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

std::string Describe(const Bytes& movie)
{
    const TempFolder folder;
    std::string text;
    EXPECT_TRUE(DescribeQuickTime(folder.Write("movie.mov", movie).c_str(), text));
    return text;
}

TEST(QTDescription, TellsSystemSamplingAndAspectOfDV)
{
    const auto describe = [](const char* format, uint32_t size, const Bytes& media) {
        return Describe(QTOneTrack({.format = format,
                                    .samples = 1,
                                    .stsc = QTTable({1, 1, 1}, 3),
                                    .stsz = Join({Big(0), Big(size), Big(1)})},
                                   media));
    };
    Bytes frame(120000);
    frame[4] = 1;  // APT of DVCPRO
    EXPECT_EQ("QuickTime DVCPRO NTSC 4:1:1 (16:9 format)", describe("dvc ", 120000, frame))
        << "a frame without aspect counts as wide";
    frame.resize(144000);
    frame[3] = 0x80;  // DSF: 625/50
    frame[4] = 0;
    EXPECT_EQ("QuickTime AVID DV PAL 4:2:0 (16:9 format)", describe("AVdv", 144000, frame));
    EXPECT_EQ("QuickTime AVID <video read error>", describe("AVdv", 144000, Bytes(1000)));
    EXPECT_EQ("QuickTime <video read error>", describe("dvcp", 0xFFFFFFFF, frame));
}

TEST(QTDescription, NamesTheOtherFormats)
{
    const std::pair<QTTestTrack, const char*> rows[] = {
        {{.format = "raw "}, "Uncompressed RGB PAL"},
        {{.format = "raw ", .height = 480}, "Uncompressed RGB 720x480 @ 25.00 fps"},
        {{.format = "raw ", .height = 480, .scale = 30000, .duration = 1001},
         "Uncompressed RGB NTSC"},
        {{.format = "SVQ1"}, "Sorenson video"},
        {{.format = "yv12"}, "Planar YUV 4:2:0"},
        {{.format = "????"}, "unknown codec"},
        {{.video = false, .format = "sowt"}, "stereo 48kHz audio"},
        {{.video = false, .format = "twos", .channels = 4, .rate = 32000}, "4-ch 32kHz audio"},
        {{.video = false, .format = "twos", .channels = 1, .rate = 22050}, "mono 22050 Hz audio"},
        {{.video = false, .format = "ulaw"}, "ulaw audio"},
        {{.video = false, .format = "ima4"}, "IMA4 audio"},
    };
    for (const auto& [track, text] : rows)
        EXPECT_EQ(std::string("QuickTime ") + text, Describe(QTOneTrack(track)));
}

TEST(QTDescription, SaysWhatIsWrongWithAFile)
{
    EXPECT_EQ("QuickTime unknown (no streams)", Describe(QTMoov({})));
    std::string text;
    EXPECT_FALSE(DescribeQuickTime(nullptr, text));
    EXPECT_EQ("QuickTime [prg error]", text);
    EXPECT_FALSE(DescribeQuickTime("/nowhere/at all", text));
    EXPECT_EQ("QuickTime [open error]", text);
}

}  // namespace
}  // namespace kelvane
