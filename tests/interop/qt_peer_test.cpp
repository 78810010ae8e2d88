// Movies of other programs read by us, and ours by ffmpeg, ffprobe and mediainfo.

#include "base/four_cc.h"
#include "base/status.h"
#include "interop/peer_test.h"
#include "media/describe/qt_description.h"
#include "media/quicktime/qt_file.h"

namespace kelvane {
namespace {

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

class QTPeer : public PeerTest {
protected:
    std::string ProbedMovie(const std::string& name) const
    {
        return Probed(name, "v",
                      "codec_name,codec_tag_string,width,height,r_frame_rate,duration,nb_frames,"
                      "nb_read_frames");
    }
};

TEST_F(QTPeer, ReadsWhatOthersWriteBitForBit)
{
    const std::string pal = "ffmpeg -i pal.dv ", ntsc = "ffmpeg -i ntsc.dv ";
    const std::string drawnPAL = "ffmpeg -f lavfi -i testsrc2=s=720x576:r=25 -t 0.2 ";
    const std::string drawnNTSC = "ffmpeg -f lavfi -i testsrc2=s=720x480:r=30000/1001 -t 0.2 ";
    const std::string gst =
        "gst-launch-1.0 filesrc location=pal.dv ! dvdemux name=d ! queue ! video/x-dv ! qtmux "
        "name=m ";
    const std::string gstSound =
        "! filesink location=x.mov d. ! queue ! audioconvert ! audio/x-raw";
    const std::string dv = "DV PAL 4:2:0 (4:3 format)", rgb = "Uncompressed RGB ";
    const struct {
        std::string command, code, description;  // an empty description is not compared
        const char* truth = "x.mov";             // what holds the same frames
        bool sound = false;
    } rows[] = {
        {pal + "-c:v copy -c:a pcm_s16be x.mov", "dvcp", dv, "pal.dv", true},
        {pal + "-c:v copy -c:a pcm_s16le -movflags +faststart x.mov", "dvcp", dv, "pal.dv", true},
        {ntsc + "-c:v copy -c:a pcm_s16be x.mov", "dvc ", "", "ntsc.dv", true},
        {pal + "-c:v dvvideo -pix_fmt yuv411p -an x.mov", "dvpp", "DVCPRO PAL 4:1:1 (4:3 format)"},
        {drawnPAL + "-c:v rawvideo -pix_fmt rgb24 x.mov", "raw ", rgb + "PAL"},
        {drawnNTSC + "-c:v rawvideo -pix_fmt argb x.mov", "raw ", rgb + "NTSC"},
        {drawnNTSC + "-c:v rawvideo -pix_fmt uyvy422 x.mov", "2vuy", "YCbCr 8-bit 4:2:2"},
        {drawnPAL + "-c:v qtrle -pix_fmt rgb24 x.mov", "rle ", "Animation (RLE)"},
        {drawnNTSC + "-c:v qtrle x.mov", "rle ", "Animation (RLE)"},
        {gst + gstSound + ",format=S16LE ! m.", "dvcp", dv, "pal.dv", true},
        {gst + "faststart=true " + gstSound + ",format=S16BE ! m.", "dvcp", dv, "pal.dv", true},
        {Dvgrab("-f qt", "x.mov"), "dvc ", dv, "x.mov", true},
    };
    MakeDV(true);
    MakeDV(false);
    for (const auto& [command, code, description, truth, sound] : rows) {
        SCOPED_TRACE(command);
        if (!Made("x.mov", command)) continue;
        const std::string movie = Path("x.mov");
        QTFile file(movie.c_str(), kRead);
        ASSERT_EQ(0, file.InitCheck());
        EXPECT_TRUE(IsQuickTimeFile(movie.c_str()));
        const int32_t stream = file.IsVideo(0) ? 0 : 1;
        EXPECT_EQ(code, FourCCText(file.TrackCodec(stream)));
        std::string text;
        EXPECT_TRUE(DescribeQuickTime(movie.c_str(), text));
        if (!description.empty()) {
            EXPECT_EQ("QuickTime " + description, text);
        }
        const Bytes video = ReadAll(file, stream);
        EXPECT_FALSE(video.empty());
        EXPECT_TRUE(video == PeerVideo(truth));
        EXPECT_EQ(sound ? 2 : 1, file.CountStreams());
        if (sound) {
            const Bytes heard = ReadAll(file, 1 - stream);
            EXPECT_FALSE(heard.empty());
            EXPECT_TRUE(heard == PeerSound("x.mov"));
        }
        EXPECT_EQ(-1, file.SeekFrame(stream, file.SampleCount(stream) + 1));
        if (code.starts_with("dv")) continue;
        const MediaFormat format = file.StreamFormat(stream);
        QTFile copy(Path("copy.mov").c_str(), kCreate);
        ASSERT_EQ(0, format.kind == kRawVideo ? copy.AddVideoTrack(format)
                                              : copy.AddEncodedVideoTrack(format));
        ASSERT_EQ(0, file.SeekFrame(stream, 0));
        Bytes frame(2 * file.FrameSize(stream, 0));
        for (uint32_t size; file.ReadFrame(stream, frame, size) == kOK;)
            ASSERT_EQ(0, copy.WriteFrame(0, frame.data(), size));
        ASSERT_EQ(0, copy.Close());
        EXPECT_EQ(ProbedMovie("x.mov"), ProbedMovie("copy.mov"));
        EXPECT_TRUE(video == PeerVideo("copy.mov"));
    }
}

TEST_F(QTPeer, IsReadByOthersBeyondFourGigabytes)
{
    struct SparseQTFile : QTFile {
        using QTFile::LeaveHole;
        using QTFile::QTFile;
    };
    Bytes frames = MakeDV(true);
    frames.resize(4 * 144000);
    {
        SparseQTFile file(Path("huge.mov").c_str(), kCreate);
        file.SetOptions(kQTWideOffsets, nullptr);
        ASSERT_EQ(0, file.AddDVTrack(true));
        for (size_t i = 0; i < 4; i++) {
            ASSERT_EQ(0, file.WriteFrame(0, &frames[i * 144000], 144000));
            file.LeaveHole(3ull << 30);
        }
    }
    EXPECT_EQ("dvvideo,dvc ,720,576,25/1,0.160000,4,4", ProbedMovie("huge.mov"));
    EXPECT_EQ("", Complaints("huge.mov"));
    EXPECT_TRUE(PeerVideo("huge.mov") == frames);
}

}  // namespace
}  // namespace kelvane
