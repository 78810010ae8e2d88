// Raw DV, made here and by ffmpeg and libdv, and the quality of our codec module beside ffmpeg's
// own way from picture to frame and back.

#include <gmock/gmock.h>
#include <libdv/dv.h>

#include <iostream>

#include "base/four_cc.h"
#include "interop/peer_test.h"
#include "support/clip_maker/sample_clip.h"

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

TEST_F(RawDVPeers, TheModuleKeepsAsMuchOfAPictureAsFfmpegAtItsBest)
{
    const CodecDrivers drivers = LoadCodecDrivers(CodecFolder());
    for (const bool pal : {true, false})
        for (const bool dvcpro : {false, true}) {
            SampleOptions options;
            options.pal = pal;
            options.dvcpro = dvcpro;
            SampleClip clip(drivers, options);
            const TelevisionSystem& system = clip.System();
            OpenedCodec decoder;
            CodecSetup setup{};
            setup.raw.width = setup.coded.width = system.width;
            setup.raw.height = setup.coded.height = system.height;
            setup.raw.bit_count = 32;
            setup.coded.compression = dvcpro ? FourCC("dv25") : FourCC("dvsd");
            ASSERT_EQ(0, decoder.Open(drivers.codecs.at(1), setup));
            Bytes truth, ours, picture(clip.Picture().size());
            for (int64_t number = 0; number < 8; number++) {
                ASSERT_EQ(0, decoder.Decode(clip.Frame(number), picture));
                ours.insert(ours.end(), picture.begin(), picture.end());
                truth.insert(truth.end(), clip.Picture().begin(), clip.Picture().end());
            }
            Write("truth.bgr0", truth);
            const std::string scale =
                "-vf scale=interl=1:flags=bicubic+accurate_rnd+full_chroma_inp+full_chroma_int"
                ",format=";
            Run("ffmpeg -y -f rawvideo -pix_fmt bgr0 -s 720x" + std::to_string(system.height) +
                " -r " + (pal ? "25" : "30000/1001") + " -i truth.bgr0 " + scale +
                (pal && !dvcpro ? "yuv420p" : "yuv411p") +
                " -c:v dvvideo -flags +ildct+ilme -f rawvideo theirs.dv");
            const double byUs = PictureNoise(truth, ours);
            const double byThem = PictureNoise(
                truth, FromFfmpeg("theirs.dv", "-map 0:v " + scale + "bgr0 -f rawvideo"));
            EXPECT_LT(20, byThem);
            EXPECT_GT(byUs, byThem - 0.3);
            std::cout << "PSNR, PAL " << pal << ", DVCPRO " << dvcpro << ": " << byUs
                      << " dB, ffmpeg " << byThem << " dB\n";
        }
}

}  // namespace
}  // namespace kelvane
