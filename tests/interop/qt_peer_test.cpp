// Movies of other programs read by us, and ours by ffmpeg, ffprobe and mediainfo.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>

#include "base/four_cc.h"
#include "base/status.h"
#include "media/qt_description.h"
#include "media/qt_file.h"
#include "support/run_command.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

using testing::HasSubstr;

std::string OutputOf(const std::string& command)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>&1").c_str(), "r"),
                                                     pclose);
    std::string output;
    std::array<char, 4096> part;
    while (const size_t got = pipe ? fread(part.data(), 1, part.size(), pipe.get()) : 0)
        output.append(part.data(), got);
    return output;
}

// All that a stream holds, frame after frame or chunk after chunk.
Bytes ReadAll(QTFile& file, int32_t stream)
{
    Bytes all, frame;
    uint32_t size;
    do {
        frame.resize(file.FrameSize(stream, file.FramePosition(stream)));
    } while (file.ReadFrame(stream, frame, size) == kOK &&
             (all.insert(all.end(), frame.begin(), frame.begin() + size), true));
    return all;
}

int32_t FirstStream(const QTFile& file, bool video)
{
    for (int32_t stream = 0; stream < file.CountStreams(); stream++)
        if (file.IsVideo(stream) == video) return stream;
    return -1;
}

class QTPeer : public testing::Test {
protected:
    // Half a second of picture and sound, made once for all tests.
    static void SetUpTestSuite()
    {
        fFolder = std::make_unique<TempFolder>();
        for (const bool pal : {true, false})
            RunCommand("ffmpeg -y -f lavfi -i testsrc2=s=" +
                       std::string(pal ? "720x576:r=25" : "720x480:r=30000/1001") +
                       " -f lavfi -i aevalsrc='0.7*sin(3000*t)|0.5*sin(5000*t)':s=48000 -t 0.6" +
                       " -target " + (pal ? "pal" : "ntsc") + "-dv " + Path(pal ? "pal" : "ntsc") +
                       ".dv");
    }
    static void TearDownTestSuite() { fFolder.reset(); }

    static std::string Path(const std::string& name) { return fFolder->Path(name); }
    // What a program sees in a movie: the packets of its picture, its sound as 16 bits.
    static Bytes PeerVideo(const std::string& movie)
    {
        RunCommand("ffmpeg -y -i " + movie + " -map 0:v -c copy -f rawvideo " + Path("video.raw"));
        return ReadWhole(Path("video.raw"));
    }
    static Bytes PeerSound(const std::string& movie)
    {
        RunCommand("ffmpeg -y -i " + movie + " -map 0:a -f s16le " + Path("sound.raw"));
        return ReadWhole(Path("sound.raw"));
    }
    static std::string Probe(const std::string& movie)
    {
        return OutputOf(
            "ffprobe -v warning -show_entries stream=codec_name,codec_tag_string,width,height,"
            "sample_rate,channels,r_frame_rate,duration,nb_frames -of compact=nk=1:p=0 " +
            movie);
    }

    static std::unique_ptr<TempFolder> fFolder;
};
std::unique_ptr<TempFolder> QTPeer::fFolder;

TEST_F(QTPeer, ReadsWhatOthersWriteBitForBit)
{
    struct Row {
        std::string command, code, description;  // an empty description is not compared
        const char* original;                    // the raw DV that must come out, null: any
        bool sound;
    };
    const std::string pal = "ffmpeg -y -i pal.dv ", ntsc = "ffmpeg -y -i ntsc.dv ";
    const std::string drawn = "ffmpeg -y -f lavfi -i testsrc2=s=720x576:r=25 -t 0.2 ";
    const std::string dv = "QuickTime DV PAL 4:2:0 (4:3 format)";
    const std::string gst =
        "gst-launch-1.0 filesrc location=pal.dv ! dvdemux name=d ! queue ! "
        "video/x-dv ! qtmux name=m ";
    const std::vector<Row> rows = {
        {pal + "-c:v copy -c:a pcm_s16be x.mov", "dvcp", dv, "pal.dv", true},
        {pal + "-c:v copy -c:a pcm_s16le -movflags +faststart x.mov", "dvcp", dv, "pal.dv", true},
        {ntsc + "-c:v copy -c:a pcm_s16be x.mov", "dvc ", "", "ntsc.dv", true},
        {pal + "-c:v dvvideo -pix_fmt yuv411p -an x.mov", "dvpp",
         "QuickTime DVCPRO PAL 4:1:1 (4:3 format)", nullptr, false},
        {drawn + "-c:v rawvideo -pix_fmt rgb24 x.mov", "raw ", "QuickTime Uncompressed RGB PAL",
         nullptr, false},
        {drawn + "-c:v rawvideo -pix_fmt argb x.mov", "raw ", "QuickTime Uncompressed RGB PAL",
         nullptr, false},
        {drawn + "-c:v rawvideo -pix_fmt uyvy422 x.mov", "2vuy", "QuickTime YCbCr 8-bit 4:2:2",
         nullptr, false},
        {drawn + "-c:v qtrle x.mov", "rle ", "QuickTime Animation (RLE)", nullptr, false},
        {gst +
             "! filesink location=x.mov d. ! queue ! audioconvert ! audio/x-raw,format=S16LE ! m.",
         "dvcp", dv, "pal.dv", true},
        {gst + "faststart=true ! filesink location=x.mov d. ! queue ! audioconvert ! "
               "audio/x-raw,format=S16BE ! m.",
         "dvcp", dv, "pal.dv", true},
    };
    for (const auto& [command, code, description, original, sound] : rows) {
        SCOPED_TRACE(command);
        ASSERT_EQ(0, RunCommand("cd " + Path("") + " && rm -f x.mov && " + command));
        const std::string movie = Path("x.mov");
        QTFile file(movie.c_str(), kRead);
        ASSERT_EQ(0, file.InitCheck());
        EXPECT_TRUE(IsQuickTimeFile(movie.c_str()));
        const int32_t stream = FirstStream(file, true);
        ASSERT_LE(0, stream);
        EXPECT_EQ(code, FourCCText(file.TrackCodec(stream), false));
        std::string text;
        EXPECT_TRUE(DescribeQuickTime(movie.c_str(), text));
        if (!description.empty()) {
            EXPECT_EQ(description, text);
        }
        const Bytes video = ReadAll(file, stream);
        EXPECT_FALSE(video.empty());
        EXPECT_TRUE(video == (original ? ReadWhole(Path(original)) : PeerVideo(movie)));
        if (sound) {
            const Bytes heard = ReadAll(file, FirstStream(file, false));
            EXPECT_LT(90000u, heard.size());
            EXPECT_TRUE(heard == PeerSound(movie));
        }
        EXPECT_EQ(-1, file.SeekFrame(stream, file.SampleCount(stream) + 1));
    }
}

TEST_F(QTPeer, ReadsWhatDvgrabWrites)
{
    if (!Dvgrab("-f qt", Path("pal.dv"), Path("grab-"))) GTEST_SKIP() << "dvgrab hangs here";
    const std::string movie = Path("grab-001.mov");
    QTFile file(movie.c_str(), kRead);
    ASSERT_EQ(0, file.InitCheck());
    std::string text;
    EXPECT_TRUE(DescribeQuickTime(movie.c_str(), text));
    EXPECT_EQ("QuickTime DV PAL 4:2:0 (4:3 format)", text);
    for (const bool video : {true, false}) {
        const Bytes ours = ReadAll(file, FirstStream(file, video));
        EXPECT_FALSE(ours.empty());
        EXPECT_TRUE(ours == (video ? PeerVideo(movie) : PeerSound(movie))) << video;
    }
}

TEST_F(QTPeer, IsReadByOthers)
{
    struct Row {
        bool pal;
        uint32_t options;
        const char* tag;
    };
    for (const Row& row : {Row{true, kQTDVCP | kQTWideOffsets, "dvcp"},
                           {true, 0, "dvc "},
                           {false, kQTDVCP, "dvc "},
                           {false, kQTSoftDV | kQTWideOffsets, "dvc "},
                           {true, kQTAvidDV, "AVdv"},
                           {false, kQTDVCPRO, "dvpp"}}) {
        SCOPED_TRACE(row.tag + std::to_string(row.options));
        const Bytes frames = ReadWhole(Path(row.pal ? "pal.dv" : "ntsc.dv"));
        const Bytes sound = PeerSound(Path(row.pal ? "pal.dv" : "ntsc.dv"));
        const uint32_t frame = row.pal ? 144000 : 120000, block = row.pal ? 7680 : 6408;
        const uint32_t count = static_cast<uint32_t>(frames.size()) / frame;
        const std::string path = Path("ours.mov");
        {
            QTFile file(path.c_str(), kCreate);
            file.SetOptions(row.options, "Converted by Kelvane");
            ASSERT_EQ(0, file.AddDVTrack(row.pal));
            ASSERT_EQ(0,
                      file.AddPCMAudioTrack(MediaFormat(RawAudioFormat{kSamplePCM, 2, 16, 48000})));
            for (uint32_t i = 0; i < count; i++) {
                ASSERT_EQ(0, file.WriteFrame(0, &frames[i * frame], frame));
                ASSERT_EQ(0, file.WriteFrame(1, &sound[i * block], block));
            }
        }
        char line[200];
        snprintf(line, sizeof line, "dvvideo|%s|720|%d|%s|%.6f|%u\n", row.tag, row.pal ? 576 : 480,
                 row.pal ? "25/1" : "30000/1001", count / (row.pal ? 25.0 : 30000 / 1001.0), count);
        std::string expected = line;
        snprintf(line, sizeof line, "pcm_s16be|twos|48000|2|0/0|%.6f|%u\n",
                 count * block / 192000.0, count * block / 4);
        EXPECT_EQ(expected + line, Probe(path)) << "and not one warning";
        EXPECT_TRUE(PeerVideo(path) == frames);
        EXPECT_TRUE(PeerSound(path) == Bytes(sound.begin(), sound.begin() + count * block));
        EXPECT_EQ("", OutputOf("ffmpeg -v error -i " + path + " -f null -"));
        const std::string info = OutputOf(
            "mediainfo --Inform='Video;%Format% %CodecID% %Width%x"
            "%Height% %FrameRate% %FrameCount%' " +
            path);
        snprintf(line, sizeof line, "DV %s 720x%d %s %u", row.tag, row.pal ? 576 : 480,
                 row.pal ? "25.000" : "29.970", count);
        EXPECT_THAT(info, HasSubstr(line));
        EXPECT_THAT(OutputOf("mediainfo " + path), HasSubstr("Converted by Kelvane"));

        QTFile back(path.c_str(), kRead);
        EXPECT_TRUE(ReadAll(back, 0) == frames);
        EXPECT_TRUE(ReadAll(back, 1) == Bytes(sound.begin(), sound.begin() + count * block));
    }
}

TEST_F(QTPeer, PassesPicturesOnThatAreNoDV)
{
    for (const char* codec : {"rawvideo -pix_fmt rgb24", "rawvideo -pix_fmt argb",
                              "rawvideo -pix_fmt uyvy422", "qtrle -pix_fmt rgb24"}) {
        SCOPED_TRACE(codec);
        ASSERT_EQ(0,
                  RunCommand("ffmpeg -y -f lavfi -i testsrc2=s=720x480:r=30000/1001 -t 0.2 -c:v " +
                             std::string(codec) + " " + Path("theirs.mov")));
        QTFile source(Path("theirs.mov").c_str(), kRead);
        const MediaFormat format = source.StreamFormat(0);
        {
            QTFile file(Path("ours.mov").c_str(), kCreate);
            ASSERT_EQ(0, format.kind == kRawVideo ? file.AddVideoTrack(format)
                                                  : file.AddEncodedVideoTrack(format));
            Bytes frame(source.FrameSize(0, 0) * 2);
            for (uint32_t size; source.ReadFrame(0, frame, size) == kOK;)
                ASSERT_EQ(0, file.WriteFrame(0, frame.data(), size));
        }
        EXPECT_EQ(Probe(Path("theirs.mov")), Probe(Path("ours.mov")));
        EXPECT_TRUE(PeerVideo(Path("theirs.mov")) == PeerVideo(Path("ours.mov")));
    }
}

TEST_F(QTPeer, IsReadByOthersBeyondFourGigabytes)
{
    struct SparseQTFile : QTFile {
        using QTFile::LeaveHole;
        using QTFile::QTFile;
    };
    const Bytes frames = ReadWhole(Path("pal.dv"));
    {
        SparseQTFile file(Path("huge.mov").c_str(), kCreate);
        file.SetOptions(kQTWideOffsets, nullptr);
        ASSERT_EQ(0, file.AddDVTrack(true));
        for (int i = 0; i < 4; i++) {
            ASSERT_EQ(0, file.WriteFrame(0, &frames[static_cast<size_t>(i) * 144000], 144000));
            file.LeaveHole(3ull << 30);
        }
    }
    EXPECT_EQ("dvvideo|dvc |720|576|25/1|0.160000|4\n", Probe(Path("huge.mov")));
    EXPECT_TRUE(PeerVideo(Path("huge.mov")) == Bytes(frames.begin(), frames.begin() + 4 * 144000));
}

}  // namespace
}  // namespace kelvane
