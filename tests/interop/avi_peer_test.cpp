// Our AVI files through ffmpeg and mediainfo, and those of ffmpeg, dvgrab and GStreamer through us.

#include "base/status.h"
#include "interop/peer_test.h"
#include "media/avi/avi_file.h"
#include "media/describe/avi_description.h"
#include "support/avi_films.h"

namespace kelvane {
namespace {

Bytes Joined(const std::vector<Bytes>& frames)
{
    Bytes all;
    for (const Bytes& frame : frames)
        all.insert(all.end(), frame.begin(), frame.end());
    return all;
}

using AVIPeers = PeerTest;

TEST_F(AVIPeers, AgreeAboutFilesOfSeveralSegments)
{
    AVILimits limits;
    limits.first_riff = limits.later_riff = 2'000'000;
    Bytes expected;
    for (uint32_t i = 0; i < 60; i++)
        expected = Joined({expected, NumberedFrame(144000, i)});
    for (const char* name : {"Type1OpenDML", "Type2OpenDML", "Matrox"}) {
        const AVIOutput& output = OutputNamed(name);
        ASSERT_EQ(60u, WriteFilm(Path("segments.avi"), output, true, 60, limits));
        // These frames are no DV, so the demuxer of "iavs" streams would drop them.
        if (output.HasSound() || output.flags & kAVIMatrox) {
            EXPECT_TRUE(expected == PeerVideo("segments.avi")) << name;
        }
        EXPECT_EQ("", MediaInfo("segments.avi", "General;%IsTruncated%")) << name;
    }
}

TEST_F(AVIPeers, MakeFilesThatWeRead)
{
    const struct {
        std::string command, description;
        const char* truth;  // what holds the same frames
    } rows[] = {
        {"ffmpeg -y -i pal.dv -c copy x.avi", "Type-2 DV (Microsoft) PAL", "pal.dv"},
        {"ffmpeg -y -i ntsc.dv -c copy x.avi", "Type-2 DV (Microsoft) NTSC", "ntsc.dv"},
        {"ffmpeg -y -i pal.dv -an -c:v rawvideo -pix_fmt bgr24 -frames:v 2 x.avi",
         "uncompressed RGB PAL", "x.avi"},
        {"ffmpeg -y -i pal.dv -an -c:v huffyuv -pix_fmt yuv422p -frames:v 2 x.avi",
         "Huffyuv YUV 4:2:2 PAL", "x.avi"},
        {Dvgrab("-f dv1", "x.avi"), "Type-1 DV (Microsoft) PAL", "x.avi"},
        {Dvgrab("-f dv2", "x.avi"), "Type-2 DV (Microsoft) PAL 4:2:0 (4:3 format)", "x.avi"},
        {Dvgrab("-f dv2 -opendml", "x.avi"), "Type-2 DV (Microsoft) PAL 4:2:0 (4:3 format)",
         "x.avi"},
        {"gst-launch-1.0 filesrc location=pal.dv ! dvdemux name=d avimux name=m ! filesink "
         "location=x.avi d. ! queue ! video/x-dv ! m. d. ! queue ! audio/x-raw ! audioconvert ! m.",
         "Type-2 DV (DVMaster/DV500) PAL", "pal.dv"},
    };
    MakeDV(true);
    MakeDV(false);
    for (const auto& [command, description, truth] : rows) {
        SCOPED_TRACE(command);
        if (!Made("x.avi", command)) continue;
        const std::string path = Path("x.avi");
        std::string text;
        EXPECT_TRUE(IsAVIFile(path.c_str()));
        EXPECT_TRUE(DescribeAVI(path.c_str(), text));
        EXPECT_EQ("AVI " + description, text);
        const Bytes frames = Joined(ReadFilm(path, AVIFile(path.c_str(), kRead).VideoStream()));
        EXPECT_FALSE(frames.empty());
        EXPECT_TRUE(PeerVideo(truth) == frames);
    }
}

}  // namespace
}  // namespace kelvane
