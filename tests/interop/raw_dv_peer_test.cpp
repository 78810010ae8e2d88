// Raw DV, made here and by ffmpeg and libdv.

#include <gmock/gmock.h>
#include <libdv/dv.h>

#include "interop/peer_test.h"

namespace kelvane {
namespace {

const std::string kProgram = KELVANE_CONVERT;

class RawDVPeers : public PeerTest {
protected:
    std::string Described() const { return Printed(kProgram + " --describe clip.dv"); }
};

TEST_F(RawDVPeers, ClipsAreDescribedByTheirBytesAndCopiedAsTheyAre)
{
    const auto sample = [](const char* system, const char* aspect) {
        return kProgram + " --make-sample clip.dv --sample-seconds 2 --sample-system " + system +
               " --sample-aspect " + aspect;
    };
    const auto drawn = [](const std::string& options) {
        return "ffmpeg -f lavfi -i testsrc2 -f lavfi -i sine -t 0.2 " + options + " clip.dv";
    };
    const std::string odd = "-s 720x576 -r 25 -pix_fmt yuv411p -ar 48000 -ac 2 -f dv -aspect ";
    // ffmpeg marks every 4:1:1 frame as DVCPRO; the description says what the bytes say. Of the
    // wide ones it knows only those with another mark than ours.
    const struct {
        std::string command, described, probed;
    } rows[] = {
        {sample("pal", "4:3"), "DV PAL 4:2:0 (4:3", "576,4:3,25/1,50"},
        {sample("pal", "16:9"), "DV PAL 4:2:0 (16:9", "576,16:9,25/1,50"},
        {sample("ntsc", "4:3"), "DV NTSC 4:1:1 (4:3", "480,4:3,30000/1001,60"},
        {sample("ntsc", "16:9"), "DV NTSC 4:1:1 (16:9", "480,16:9,30000/1001,60"},
        {drawn("-target pal-dv -aspect 4:3"), "DV PAL 4:2:0 (4:3", "576,4:3,25/1,"},
        {drawn("-target pal-dv -aspect 16:9"), "DV PAL 4:2:0 (16:9", "576,16:9,25/1,"},
        {drawn("-target ntsc-dv -aspect 4:3"), "DVCPRO NTSC 4:1:1 (4:3", "480,4:3,30000/1001,"},
        {drawn("-target ntsc-dv -aspect 16:9"), "DVCPRO NTSC 4:1:1 (16:9", "480,"},
        {drawn(odd + "4:3"), "DVCPRO PAL 4:1:1 (4:3", "576,4:3,25/1,"},
        {drawn(odd + "16:9"), "DVCPRO PAL 4:1:1 (16:9", "576,"},
    };
    for (const auto& [command, described, probed] : rows) {
        SCOPED_TRACE(command);
        Run("rm -f clip.dv copy.dv; " + command + " && " + kProgram + " clip.dv -o copy.dv");
        EXPECT_EQ("clip.dv: DIF/" + described + " format)", Described());
        EXPECT_THAT(Probed("copy.dv", "v",
                           "codec_name,width,height,display_aspect_ratio,r_frame_rate,"
                           "nb_read_frames"),
                    testing::StartsWith("dvvideo,720," + probed));
        EXPECT_TRUE(FromFfmpeg("clip.dv", "-map 0:v -f md5") ==
                    FromFfmpeg("copy.dv", "-map 0:v -f md5"));
    }
}

TEST_F(RawDVPeers, ClipsOfLibdvAreDescribedByTheirBytes)
{
    for (const bool pal : {true, false})
        for (const bool wide : {true, false}) {
            const TelevisionSystem& system = SystemFor(pal);
            dv_encoder_t* encoder = dv_encoder_new(0, 0, 0);
            encoder->isPAL = pal;
            encoder->is16x9 = wide;
            Bytes grey(size_t(system.width) * size_t(system.height) * 2, 128);
            uint8_t* planes[] = {grey.data(), nullptr, nullptr};
            Bytes frame(DVFrameSize(pal));
            dv_encode_full_frame(encoder, planes, e_dv_color_yuv, frame.data());
            time_t now = 0;
            dv_encode_metadata(frame.data(), pal, wide, &now, 0);
            dv_encoder_free(encoder);
            Write("clip.dv", frame);
            EXPECT_EQ(std::string("clip.dv: DIF/DV ") + (pal ? "PAL 4:2:0" : "NTSC 4:1:1") +
                          (wide ? " (16:9 format)" : " (4:3 format)"),
                      Described());
        }
}

}  // namespace
}  // namespace kelvane
