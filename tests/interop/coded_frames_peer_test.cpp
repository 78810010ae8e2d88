// What other people's readers find that coded frames say of themselves.

#include "interop/conversion_peer.h"

namespace kelvane {
namespace {

class CodedFramesPeers : public ConversionPeerTest {
protected:
    // How all frames have their fields (interlaced, the upper one first); then the stream's height,
    // shape and pixels.
    std::string Said(const std::string& name) const
    {
        return Printed(
            "ffprobe -v error -select_streams v -show_entries "
            "stream=height,display_aspect_ratio,pix_fmt:"
            "frame=interlaced_frame,top_field_first -of csv=p=0 " +
            name + " | sort -u");
    }
};

struct Way {
    const char *options, *name, *said, *order;
    bool pal = true, wide = false, dvcpro = false;
};

TEST_F(CodedFramesPeers, BelieveWhatTheFramesSay)
{
    constexpr const char *kLower = "BFF", *kUpper = "TFF", *kNone = "";
    const Way rows[] = {
        {"--to ntsc", "o.dv", "1,0\n480,4:3,yuv411p", kLower},
        {"--to ntsc --target-interlace upper", "o.avi", "1,1\n480,16:9,yuv411p", kUpper, true,
         true},
        {"--to ntsc --target-interlace adaptive", "o.mov", "0,0\n480,4:3,yuv411p", kNone},
        {"--to pal --target-interlace blur --resample nearest", "o.dv", "0,0\n576,16:9,yuv420p",
         kNone, false, true},
        {"--to pal --source-interlace upper --format avi1", "o.avi", "1,1\n576,4:3,yuv420p", kUpper,
         false},
        {"--to pal --source-interlace upper --target-interlace lower", "o.mov",
         "1,0\n576,16:9,yuv420p", kLower, false, true},
        {"--target-interlace upper", "o.dv", "1,1\n576,4:3,yuv420p", kUpper},
        {"--data dvcpro25", "o.avi", "1,0\n576,4:3,yuv411p", kLower},
        {"--data dv --source-interlace progressive", "o.dv", "0,0\n576,16:9,yuv420p", kNone, true,
         true, true},
        {"--to ntsc --source-interlace progressive", "o.dv", "0,0\n480,4:3,yuv411p", kNone, true,
         false, true},
        {"--to ntsc --source-interlace progressive --resample pulldown", "o.dv",
         "1,0\n480,4:3,yuv411p", kLower},
    };
    for (const Way& row : rows) {
        SCOPED_TRACE(std::string(row.options) + (row.pal ? " of PAL" : " of NTSC"));
        MakeClip(4, {.pal = row.pal, .wide = row.wide, .dvcpro = row.dvcpro});
        Converted("clip.dv", row.options, row.name);
        EXPECT_EQ(row.said, Said(row.name));
        EXPECT_EQ(row.order, MediaInfo(row.name, "Video;%ScanOrder%"));
    }
}

// A copy says what its source says.
TEST_F(CodedFramesPeers, BelieveOurClips)
{
    const std::pair<FieldOrder, const char*> rows[] = {
        {FieldOrder::kProgressive, "0,0\n576,16:9,yuv420p"},
        {FieldOrder::kUpperFirst, "1,1\n576,16:9,yuv420p"},
        {FieldOrder::kLowerFirst, "1,0\n576,16:9,yuv420p"}};
    for (const auto& [order, said] : rows) {
        MakeClip(3, {.wide = true, .order = order});
        EXPECT_EQ(said, Said(Converted("clip.dv", "", "copy.mov")));
    }
}

}  // namespace
}  // namespace kelvane
