// What other people's programs make of the streams in each output format.

#include <algorithm>

#include "interop/conversion_peer.h"

namespace kelvane {
namespace {

struct Streams {
    std::string options, name, codec, tag, rate, sound;
    bool dvcpro = false;
};

// Type 2 headers have the rate as 29.97 itself.
const std::string exact = "30000/1001,", rounded = "2997/100,";
const std::string inside = "pcm_s16le,[0][0][0][0],48000,2",
                  little = "pcm_s16le,[1][0][0][0],48000,2", big = "pcm_s16be,twos,48000,2";
const Streams kFormats[] = {
    {"dv", "o.dv", "dvvideo", "[0][0][0][0]", exact, inside},
    {"avi1", "o.avi", "dvvideo", "[0][0][0][0]", exact, inside},
    {"avi1-odml", "o.avi", "dvvideo", "[0][0][0][0]", exact, inside},
    {"avi2", "o.avi", "dvvideo", "dvsd", rounded, little},
    {"avi2-odml", "o.avi", "dvvideo", "dvsd", rounded, little},
    {"canopus1", "o.avi", "dvvideo", "CDVC", exact, ""},
    {"canopus2", "o.avi", "dvvideo", "CDVC", rounded, little},
    {"matrox", "o.avi", "dvvideo", "dvsd", exact, ""},
    {"mov-audio", "o.mov", "dvvideo", "dvcp", exact, big},
    {"mov-audio-64 --codec softdv", "o.mov", "dvvideo", "dvcp", exact, big},
    {"mov-audio --codec avid-dv", "o.mov", "dvvideo", "AVdv", exact, big},
    {"mov-audio-64 --codec apple-dvcpro", "o.mov", "dvvideo", "dvpp", exact, big, true},
    {"mov-audio-64 --codec animation", "o.mov", "qtrle", "rle ", exact, big},
    {"mov --codec rgb24", "o.mov", "rawvideo", "raw ", exact, ""},
    {"mov-64 --codec rgb32", "o.mov", "rawvideo", "raw ", exact, ""},
    {"mov-audio --codec yuv422", "o.mov", "rawvideo", "yuv2", exact, big},
    {"avi2-odml --codec huffyuv-yuv", "o.avi", "huffyuv", "HFYU", rounded, little},
    {"avi2 --codec rgb24", "o.avi", "rawvideo", "[0][0][0][0]", rounded, little},
};

// What each program tells of a file in one run.
struct Judgement {
    std::string streams, media_info, complaints;
    Bytes video, sound;  // the frames as they stand in the file, 16-bit samples
};

class StreamPeers : public ConversionPeerTest, public testing::WithParamInterface<size_t> {
protected:
    // The streams are a line each; the sound is left alone where there should be none.
    Judgement JudgementOf(const std::string& name, bool has_sound) const
    {
        Judgement found;
        found.streams = Printed(
            "ffprobe -v error -count_frames -show_entries stream=codec_name,codec_tag_string,"
            "width,height,r_frame_rate,nb_read_frames,sample_rate,channels -of csv=p=0 " +
            name);
        const std::string inform =
            "General;%Movie_More% \nVideo;%Format% %Width% %Height% %FrameRate%\n";
        Write("inform", Bytes(inform.begin(), inform.end()));
        found.media_info = Printed("mediainfo --Inform=file://inform " + name);
        found.complaints = Printed("rm -f video sound; ffmpeg -v warning -i " + name +
                                   " -map 0:v -c copy -f rawvideo video" +
                                   (has_sound ? " -map 0:a -f s16le sound" : "") +
                                   " -map 0 -f null - 2>&1 | grep -v 'Guessed\\|^.dv @'");
        found.video = Read("video");
        if (has_sound) found.sound = Read("sound");
        return found;
    }
};

TEST_P(StreamPeers, SeeTheRightStreams)
{
    const auto& [options, name, codec, tag, rate, sound, dvcpro] = kFormats[GetParam()];
    constexpr int kFrames = 8;
    // To the other system in one direction only, in turns.
    const bool to_pal = GetParam() % 2 == 0;
    for (const bool from : {true, false}) {
        MakeClip(kFrames, {.pal = from, .dvcpro = dvcpro});
        Converted("clip.dv", "", "tape.dv");
        const Bytes tape = Read("tape.dv"), tape_sound = PeerSound("tape.dv");
        for (const bool same : {true, false}) {
            const bool pal = from == same;
            if (!same && pal != to_pal) continue;
            SCOPED_TRACE((same ? "" : To(pal)) + options + (pal ? " PAL" : " NTSC"));
            Converted("tape.dv", (same ? "" : To(pal)) + "--format " + options, name);
            const Judgement found = JudgementOf(name, !sound.empty());
            // The last frame may be cut or filled up.
            const int frames = same ? kFrames : int(kFrames * (pal ? 25 / 29.97 : 29.97 / 25));
            const std::string pictures = codec + "," + (tag == "dvcp" && !pal ? "dvc " : tag) +
                                         (pal ? ",720,576,25/1," : ",720,480," + rate);
            const auto streams = [&](int count) {
                const std::string tracks = pictures + std::to_string(count);
                return sound.empty() ? testing::Matcher<std::string>(tracks)
                                     : testing::StartsWith(tracks + "\n" + sound + ",");
            };
            EXPECT_THAT(found.streams,
                        testing::AnyOf(streams(frames), streams(frames + (same ? 0 : 1))));
            EXPECT_THAT(
                found.media_info,
                testing::AllOf(testing::StartsWith(name == "o.mov" ? "Converted by Kelvane " : " "),
                               testing::HasSubstr(codec == "dvvideo" ? " DV 720" : " 720"),
                               testing::EndsWith(pal ? " 720 576 25.000" : " 720 480 29.970")));
            EXPECT_EQ("", found.complaints);
            EXPECT_TRUE(!same || codec != "dvvideo" || tape == found.video);
            EXPECT_TRUE(!same || sound.empty() || tape_sound == found.sound);
        }
    }
}

std::string NameOf(const testing::TestParamInfo<size_t>& row)
{
    std::string name = kFormats[row.param].options;
    const std::string option = " --codec ";
    if (const size_t at = name.find(option); at != std::string::npos)
        name.replace(at, option.size(), "_of_");
    std::ranges::replace(name, '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(EachFormat, StreamPeers, testing::Range(size_t{0}, std::size(kFormats)),
                         NameOf);

}  // namespace
}  // namespace kelvane
