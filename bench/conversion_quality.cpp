// How near each way of resampling in time comes to the truth. A scene whose every moment can be
// shot is shot in one television system, converted to the other, and each field of the result is
// compared with the field as shot at that moment. ffmpeg's filters do the same work beside it. All
// results are coded as DV by the time that they are compared. For our methods, what their rules for
// the choice of fields can give at best is shot too.
// Usage: conversion_quality [seconds [tempo of the scene]]

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/four_cc.h"
#include "base/status.h"
#include "engine/loop/convert_file.h"
#include "engine/options/conversion_options.h"
#include "picture/geometry.h"
#include "quality/camera.h"
#include "quality/field_judge.h"
#include "quality/field_rules.h"
#include "support/run_command.h"
#include "support/temp_folder.h"

using namespace kelvane;

namespace {

constexpr Method kMethods[] = {
    {"nearest fields", 0, 2},
    {"blended fields", 1, 2},
    {"motion interpolation, coarse", 2, 2},
    {"motion interpolation, medium", 2, 1},
    {"motion interpolation, fine", 2, 0},
};

struct Peer {
    const char* name;
    const char* filters;  // %r is the frame rate, %f the field rate, %h the height
};
constexpr Peer kPeers[] = {
    {"ffmpeg: fps (nearest frames)", "scale=720:%h:interl=1,fps=%r"},
    {"ffmpeg: framerate (blended frames)", "scale=720:%h:interl=1,setfield=prog,framerate=fps=%r"},
    {"ffmpeg: bwdif to fields, fps",
     "bwdif=mode=send_field,fps=%f,scale=720:%h,tinterlace=mode=interleave_bottom"},
    {"ffmpeg: bwdif to fields, framerate",
     "bwdif=mode=send_field,framerate=fps=%f,scale=720:%h,tinterlace=mode=interleave_bottom"},
    {"ffmpeg: bwdif to fields, minterpolate",
     "bwdif=mode=send_field,minterpolate=fps=%f:mi_mode=mci,scale=720:%h,"
     "tinterlace=mode=interleave_bottom"},
};

std::string FiltersOf(const Peer& peer, bool pal)
{
    std::string text;
    for (const char* at = peer.filters; *at; at++) {
        if (*at != '%') {
            text += *at;
            continue;
        }
        at++;
        text += *at == 'h'   ? (pal ? "576" : "480")
                : *at == 'r' ? (pal ? "25" : "30000/1001")
                             : (pal ? "50" : "60000/1001");
    }
    return text;
}

MediaFormat RawFormat(const TelevisionSystem& system)
{
    return MediaFormat(RawVideoFormat{kBGRX32, system.width, system.height, system.rate, 1, 0});
}

class Comparison {
public:
    Comparison(bool toPAL, double seconds, double tempo)
        : fToPAL(toPAL),
          fSeconds(seconds),
          fDrivers(LoadCodecDrivers(CodecFolder())),
          fSourceCamera(!toPAL, tempo),
          fTruthCamera(toPAL, tempo),
          fJudge(fDrivers, toPAL, CountFrames(To()))
    {
    }

    bool Run()
    {
        if (!WriteClip("in.dv", fSourceCamera) || !WriteClip("truth.dv", fTruthCamera))
            return false;
        printf("\n| %s, PSNR of luma, dB | all | odd lines | even lines |\n|---|---:|---:|---:|\n",
               fToPAL ? "NTSC to PAL" : "PAL to NTSC");
        Report("the truth, coded", fJudge.FileFrames(fFolder.Path("truth.dv")));
        Report("the right moments in our geometry", InOurGeometry([&](int64_t number, int field) {
                   return FieldByRule{double(number) * Step() + field * (Step() - 1) / 2, 0, 0};
               }));
        for (const Method& method : kMethods)
            ReportOurs(method);
        if (RunCommand("ffmpeg -version") == 0)
            for (const Peer& peer : kPeers)
                ReportPeer(peer);
        return true;
    }

private:
    const TelevisionSystem& From() const { return SystemFor(!fToPAL); }
    const TelevisionSystem& To() const { return SystemFor(fToPAL); }
    double Step() const { return double(From().rate) / double(To().rate); }
    int64_t CountFrames(const TelevisionSystem& system) const
    {
        return static_cast<int64_t>(fSeconds * double(system.rate));
    }

    bool WriteClip(const char* name, Camera& camera)
    {
        const TelevisionSystem& system = camera.System();
        OpenedCodec encoder = OpenDVCodec(fDrivers, &system == &kPAL, false);
        if (!encoder.IsOpen()) return false;
        Picture picture(size_t(system.width) * size_t(system.height) * 4);
        const auto size = size_t(system.dv_frame_size);
        std::vector<uint8_t> frames(size * size_t(CountFrames(system)));
        for (int64_t number = 0; number < CountFrames(system); number++) {
            camera.ShootFrame(picture.data(), number);
            uint32_t bytes = 0;
            if (encoder.Encode(picture.data(),
                               std::span(frames).subspan(size_t(number) * size, size),
                               bytes) != kOK)
                return false;
        }
        fFolder.Write(name, frames);
        return true;
    }

    void Print(const char* name, const std::array<double, 3>& psnr)
    {
        printf("| %s | %.2f | %.2f | %.2f |\n", name, psnr[0], psnr[1], psnr[2]);
        fflush(stdout);
    }
    void Report(const char* name, const Frames& frames)
    {
        Print(name, fJudge.Compare(frames, [this](int64_t number, Picture& picture) {
            fTruthCamera.ShootFrame(picture.data(), number);
            return true;
        }));
    }

    // Shoots what a rule asks for, in the source's geometry.
    void ShootByRule(const FieldByRule& rule, int field, Picture& picture)
    {
        const auto shoot = [&](Picture& into, double frame) {
            fSourceCamera.ShootField(into.data(), 1 - field,
                                     (frame + 0.5 * field) / double(From().rate));
        };
        shoot(picture, rule.main);
        if (rule.weight == 0) return;
        fPartner.resize(picture.size());
        shoot(fPartner, rule.partner);
        const size_t row = size_t(From().width) * 4;
        for (size_t y = size_t(1 - field); y < size_t(From().height); y += 2)
            for (size_t x = y * row; x < (y + 1) * row; x++)
                picture[x] = static_cast<uint8_t>(picture[x] +
                                                  ((fPartner[x] - picture[x]) * rule.weight >> 8));
    }

    // Frames made of what `rule` asks for, brought to the destination's geometry; not coded.
    Frames InOurGeometry(std::function<FieldByRule(int64_t, int)> rule)
    {
        return [this, rule](int64_t number, Picture& picture) {
            const size_t room = size_t(kPAL.width) * size_t(kPAL.height) * 8;
            fShot.resize(room);
            fResized.resize(room);
            for (int field = 0; field < 2; field++)
                ShootByRule(rule(number, field), field, fShot);
            GeometryConvert(fShot.data(), RawFormat(From()), RawFormat(To()), fResized.data(),
                            GeometryMode::kScale, true);
            std::copy_n(fResized.begin(), picture.size(), picture.begin());
            return true;
        };
    }

    void ReportOurs(const Method& method)
    {
        ConversionOptions options;
        options.opselection = fToPAL ? kOperationToPAL : kOperationToNTSC;
        options.blendmode = method.resampling;
        options.motiondetail = method.detail;
        const DVCodecLists codecs = ListDVCodecs(fDrivers);
        const CodecRegistry registry = MakeCodecRegistry(fDrivers);
        ConversionState state(registry);
        ConversionSettings settings;
        FillConversionSettings(options, codecs, settings);
        ConversionResult result;
        const std::string out = fFolder.Path("ours.dv");
        if (ConvertFile(fFolder.Path("in.dv"), out, kDestinationRawDV, settings, nullptr, &result,
                        state) != kOK) {
            printf("%s: %s\n", method.name, result.message.c_str());
            return;
        }
        Report(method.name, fJudge.FileFrames(out));
        const Frames byRule = InOurGeometry([&](int64_t number, int field) {
            return ByRule(method, double(number) * Step(), Step(), field);
        });
        Report("... its rule at best", byRule);
        Print("... beside its rule", fJudge.Compare(fJudge.FileFrames(out), byRule));
    }

    void ReportPeer(const Peer& peer)
    {
        const std::string out = fFolder.Path("theirs.dv");
        const std::string pixels = fToPAL ? "yuv420p" : "yuv411p";
        if (RunCommand("ffmpeg -y -f dv -i " + fFolder.Path("in.dv") + " -map 0:v -vf " +
                       FiltersOf(peer, fToPAL) + ",format=" + pixels +
                       " -c:v dvvideo -flags:v +ildct+ilme -vsync passthrough -f rawvideo " +
                       out) != 0)
            printf("%s: failed\n", peer.name);
        else
            Report(peer.name, fJudge.FileFrames(out));
    }

    bool fToPAL;
    double fSeconds;
    TempFolder fFolder;
    CodecDrivers fDrivers;
    Camera fSourceCamera, fTruthCamera;
    FieldJudge fJudge;
    Picture fShot, fPartner, fResized;
};

}  // namespace

int main(int argc, char** argv)
{
    const double seconds = argc > 1 ? std::max(atof(argv[1]), 1.0) : 3;
    const double tempo = argc > 2 ? atof(argv[2]) : 1;
    for (const bool toPAL : {false, true})
        if (!Comparison(toPAL, seconds, tempo).Run()) return 1;
    return 0;
}
