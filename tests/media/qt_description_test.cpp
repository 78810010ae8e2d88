#include "media/qt_description.h"

#include <gtest/gtest.h>

#include "dv/dif_layout.h"
#include "media/file_access.h"
#include "support/qt_builder.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

class QTDescription : public ::testing::Test {
protected:
    std::string Describe(const Bytes& movie)
    {
        std::string text;
        EXPECT_TRUE(DescribeQuickTime(fFolder.Write("movie.mov", movie).c_str(), text));
        return text;
    }
    std::string Describe(QTTestTrack track, const Bytes& media = QTTinyMedia())
    {
        track.stco = QTTable({8, 16});
        return Describe(
            Join({QTAtom("mdat", {media}), QTAtom("moov", {QTMovieHeader(), track.Build()})}));
    }

    TempFolder fFolder;
};

TEST_F(QTDescription, TellsSystemSamplingAndAspectOfDV)
{
    QTTestTrack track;
    track.samples = 1;
    track.stsc = QTTable({1, 1, 1}, 3);
    track.stsz = Join({Big(0), Big(120000), Big(1)});
    Bytes frame(120000);
    frame[4] = 1;  // APT of DVCPRO
    EXPECT_EQ("QuickTime DVCPRO NTSC 4:1:1 (16:9 format)", Describe(track, frame))
        << "a frame without aspect counts as wide";
    track.stsz = Join({Big(0), Big(144000), Big(1)});
    frame.resize(144000);
    frame[3] = 0x80;  // DSF: 625/50
    frame[4] = 0;
    track.format = "AVdv";
    EXPECT_EQ("QuickTime AVID DV PAL 4:2:0 (16:9 format)", Describe(track, frame));
    EXPECT_EQ("QuickTime AVID <video read error>", Describe(track, Bytes(1000)));
    track.format = "dvcp";
    track.stsz = Join({Big(0), Big(0xFFFFFFFF), Big(1)});
    EXPECT_EQ("QuickTime <video read error>", Describe(track, frame));
}

TEST_F(QTDescription, NamesTheOtherFormats)
{
    QTTestTrack track;
    track.format = "raw ";
    EXPECT_EQ("QuickTime Uncompressed RGB PAL", Describe(track));
    track.height = 480;
    EXPECT_EQ("QuickTime Uncompressed RGB 720x480 @ 25.00 fps", Describe(track));
    track.scale = 30000;
    track.duration = 1001;
    EXPECT_EQ("QuickTime Uncompressed RGB NTSC", Describe(track));
    track.format = "SVQ1";
    EXPECT_EQ("QuickTime Sorenson video", Describe(track));
    track.format = "yv12";
    EXPECT_EQ("QuickTime Planar YUV 4:2:0", Describe(track));
    track.format = "????";
    EXPECT_EQ("QuickTime unknown codec", Describe(track));

    track.video = false;
    track.format = "sowt";
    EXPECT_EQ("QuickTime stereo 48kHz audio", Describe(track));
    track.format = "twos";
    track.channels = 4;
    track.rate = 32000;
    EXPECT_EQ("QuickTime 4-ch 32kHz audio", Describe(track));
    track.channels = 1;
    track.rate = 22050;
    EXPECT_EQ("QuickTime mono 22050 Hz audio", Describe(track));
    track.format = "ulaw";
    EXPECT_EQ("QuickTime ulaw audio", Describe(track));
    track.format = "ima4";
    EXPECT_EQ("QuickTime IMA4 audio", Describe(track));
}

TEST_F(QTDescription, SaysWhatIsWrongWithAFile)
{
    EXPECT_EQ("QuickTime unknown (no streams)", Describe(QTAtom("moov", {QTMovieHeader()})));
    std::string text;
    EXPECT_FALSE(DescribeQuickTime(nullptr, text));
    EXPECT_EQ("QuickTime [prg error]", text);
    EXPECT_FALSE(DescribeQuickTime(fFolder.Path("missing").c_str(), text));
    EXPECT_EQ("QuickTime [open error]", text);
}

}  // namespace
}  // namespace kelvane
