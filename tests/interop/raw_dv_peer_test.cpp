// Raw DV, made here and by ffmpeg and libdv, and the quality of our codec module beside ffmpeg's
// own way from picture to frame and back.

#include <gtest/gtest.h>
#include <libdv/dv.h>

#include <cmath>
#include <iostream>

#include "base/four_cc.h"
#include "base/television.h"
#include "support/clip_maker/sample_clip.h"
#include "support/run_command.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

const std::string kProgram = KELVANE_CONVERT;

std::string Described(const std::string& path)
{
    const std::string line = CommandOutput(kProgram + " --describe " + path);
    return line.substr(std::min(line.size(), path.size() + 2));
}

TEST(RawDVPeers, FfprobeSeesOurSamplesAndTheirCopiesAsTheyAre)
{
    const TempFolder folder;
    const struct {
        const char *system, *aspect, *described, *probed;
    } rows[] = {
        {"pal", "4:3", "DIF/DV PAL 4:2:0 (4:3 format)", "dvvideo,720,576,4:3,25/1,50"},
        {"pal", "16:9", "DIF/DV PAL 4:2:0 (16:9 format)", "dvvideo,720,576,16:9,25/1,50"},
        {"ntsc", "4:3", "DIF/DV NTSC 4:1:1 (4:3 format)", "dvvideo,720,480,4:3,30000/1001,60"},
        {"ntsc", "16:9", "DIF/DV NTSC 4:1:1 (16:9 format)", "dvvideo,720,480,16:9,30000/1001,60"},
    };
    int number = 0;
    for (const auto& row : rows) {
        const std::string clip = folder.Path("clip" + std::to_string(number) + ".dv");
        const std::string copy = folder.Path("copy" + std::to_string(number++) + ".dv");
        ASSERT_EQ(0,
                  RunCommand(kProgram + " --make-sample " + clip + " --sample-seconds 2" +
                             " --sample-system " + row.system + " --sample-aspect " + row.aspect));
        ASSERT_EQ(0, RunCommand(kProgram + " " + clip + " -o " + copy));
        EXPECT_EQ(row.described, Described(clip));
        EXPECT_EQ(row.probed,
                  CommandOutput("ffprobe -v error -count_frames -select_streams v -show_entries "
                                "stream=codec_name,width,height,display_aspect_ratio,"
                                "r_frame_rate,nb_read_frames -of csv=p=0 " +
                                copy));
    }
}

TEST(RawDVPeers, ClipsOfFfmpegAreDescribedByTheirBytes)
{
    const TempFolder folder;
    // ffmpeg marks every 4:1:1 frame as DVCPRO; the description says what the bytes say.
    const struct {
        const char *options, *described;
    } rows[] = {
        {"-target pal-dv -aspect 4:3", "DIF/DV PAL 4:2:0 (4:3 format)"},
        {"-target pal-dv -aspect 16:9", "DIF/DV PAL 4:2:0 (16:9 format)"},
        {"-target ntsc-dv -aspect 4:3", "DIF/DVCPRO NTSC 4:1:1 (4:3 format)"},
        {"-target ntsc-dv -aspect 16:9", "DIF/DVCPRO NTSC 4:1:1 (16:9 format)"},
        {"-s 720x576 -r 25 -pix_fmt yuv411p -aspect 4:3 -ar 48000 -ac 2 -f dv",
         "DIF/DVCPRO PAL 4:1:1 (4:3 format)"},
        {"-s 720x576 -r 25 -pix_fmt yuv411p -aspect 16:9 -ar 48000 -ac 2 -f dv",
         "DIF/DVCPRO PAL 4:1:1 (16:9 format)"},
    };
    for (const auto& row : rows) {
        const std::string clip = folder.Path("theirs.dv");
        ASSERT_EQ(0, RunCommand("ffmpeg -y -f lavfi -i testsrc2 -f lavfi -i sine -t 0.2 " +
                                std::string(row.options) + " " + clip));
        EXPECT_EQ(row.described, Described(clip)) << row.options;
        const std::string copy = folder.Path("ours.dv");
        ASSERT_EQ(0, RunCommand(kProgram + " --overwrite always " + clip + " -o " + copy));
        const auto digest = [](const std::string& path) {
            return CommandOutput("ffmpeg -v error -i " + path + " -map 0:v -f md5 -");
        };
        EXPECT_EQ(digest(clip), digest(copy));
    }
}

TEST(RawDVPeers, ClipsOfLibdvAreDescribedByTheirBytes)
{
    const TempFolder folder;
    for (const bool pal : {true, false})
        for (const bool wide : {true, false}) {
            const TelevisionSystem& system = SystemFor(pal);
            dv_encoder_t* encoder = dv_encoder_new(0, 0, 0);
            encoder->isPAL = pal;
            encoder->is16x9 = wide;
            std::vector<uint8_t> grey(size_t(system.width) * size_t(system.height) * 2, 128);
            uint8_t* planes[] = {grey.data(), nullptr, nullptr};
            std::vector<uint8_t> frame(size_t(system.dv_frame_size));
            dv_encode_full_frame(encoder, planes, e_dv_color_yuv, frame.data());
            time_t now = 0;
            dv_encode_metadata(frame.data(), pal, wide, &now, 0);
            dv_encoder_free(encoder);
            const std::string path = folder.Write("libdv.dv", frame);
            EXPECT_EQ(std::string("DIF/DV ") + (pal ? "PAL 4:2:0" : "NTSC 4:1:1") +
                          (wide ? " (16:9 format)" : " (4:3 format)"),
                      Described(path));
        }
}

double PSNR(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b)
{
    double squares = 0;
    size_t count = 0;
    for (size_t i = 0; i < a.size(); i++) {
        if (i % 4 == 3) continue;
        squares += std::pow(a[i] - b[i], 2);
        count++;
    }
    return 10 * std::log10(255.0 * 255 * double(count) / squares);
}

TEST(RawDVPeers, TheModuleKeepsAsMuchOfAPictureAsFfmpegAtItsBest)
{
    const TempFolder folder;
    const CodecDrivers drivers = LoadCodecDrivers(CodecFolder());
    for (const bool pal : {true, false})
        for (const bool dvcpro : {false, true}) {
            SampleOptions options;
            options.pal = pal;
            options.dvcpro = dvcpro;
            SampleClip clip(drivers, options);
            std::vector<uint8_t> truth, frames;
            for (int64_t number = 0; number < 8; number++) {
                const auto frame = clip.Frame(number);
                frames.insert(frames.end(), frame.begin(), frame.end());
                truth.insert(truth.end(), clip.Picture().begin(), clip.Picture().end());
            }
            const std::string raw = folder.Write("truth.bgr0", truth);
            const std::string theirs = folder.Path("theirs.dv");
            const std::string chroma = pal && !dvcpro ? "yuv420p" : "yuv411p";
            const std::string scale =
                "scale=interl=1:flags=bicubic+accurate_rnd+full_chroma_inp"
                "+full_chroma_int";
            ASSERT_EQ(0, RunCommand("ffmpeg -y -f rawvideo -pix_fmt bgr0 -s 720x" +
                                    std::to_string(clip.System().height) + " -r " +
                                    (pal ? "25" : "30000/1001") + " -i " + raw + " -vf " + scale +
                                    ",format=" + chroma +
                                    " -c:v dvvideo -flags +ildct+ilme -f rawvideo " + theirs));
            const std::string back = folder.Path("back.bgr0");
            ASSERT_EQ(0, RunCommand("ffmpeg -y -f dv -i " + theirs + " -map 0:v -vf " + scale +
                                    ",format=bgr0 -f rawvideo " + back));
            const double byThem = PSNR(truth, ReadWhole(back));

            OpenedCodec decoder;
            CodecSetup setup{};
            setup.raw.width = setup.coded.width = clip.System().width;
            setup.raw.height = setup.coded.height = clip.System().height;
            setup.raw.bit_count = 32;
            setup.coded.compression = dvcpro ? FourCC("dv25") : FourCC("dvsd");
            ASSERT_EQ(0, decoder.Open(drivers.codecs.at(1), setup));
            std::vector<uint8_t> kept(truth.size());
            const size_t picture = clip.Picture().size();
            const auto size = size_t(clip.System().dv_frame_size);
            for (size_t i = 0; i < 8; i++)
                ASSERT_EQ(0, decoder.Decode(std::span(frames).subspan(i * size, size),
                                            std::span(kept).subspan(i * picture, picture)));
            EXPECT_GT(PSNR(truth, kept), byThem - 0.3);
            std::cout << "PSNR, PAL " << pal << ", DVCPRO " << dvcpro << ": " << PSNR(truth, kept)
                      << " dB, ffmpeg " << byThem << " dB\n";
        }
}

}  // namespace
}  // namespace kelvane
