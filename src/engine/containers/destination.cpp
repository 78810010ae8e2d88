#include "engine/containers/destination.h"

#include "base/status.h"
#include "base/television.h"

namespace kelvane {

namespace {

constexpr int32_t kLines486 = 486;

bool DestinationIsPAL(const ConversionSettings& settings, const Source& source)
{
    if (settings.op == Operation::kToPAL) return true;
    if (settings.op == Operation::kToNTSC) return false;
    return source.is_pal;
}

// NTSC pictures that are not DV have 480 or 486 lines, as the option wants it.
void AdjustLines(MediaFormat& format, bool lines486)
{
    if (format.IsDV()) return;
    const int32_t from = lines486 ? kNTSC.height : kLines486;
    const int32_t to = lines486 ? kLines486 : kNTSC.height;
    if (format.Height() == from) format.SetPicture(format.Width(), to, format.FrameRate());
}

MediaFormat DestinationFormat(const ConversionSettings& settings, const Source& source, bool pal)
{
    MediaFormat format = settings.destination_format;
    if (format.kind == kUnknownFormat) return DVFormat(pal);
    if (settings.op == Operation::kConvert)
        format.SetPicture(source.format.Width(), source.format.Height(), source.format.FrameRate());
    AdjustLines(format, settings.conversion_options & kOptionLines486);
    // Frames that are copied stay what they are coded as.
    if (pal == source.is_pal && format.kind == kEncodedVideo && SameKind(format, source.format) &&
        SameSize(format, source.format))
        format.encoded_video.cspace = source.format.encoded_video.cspace;
    return format;
}

}  // namespace

DestinationPlan PlanDestination(const ConversionSettings& settings, const Source& source,
                                int32_t type)
{
    const bool pal = DestinationIsPAL(settings, source);
    return {settings, source, type, DestinationFormat(settings, source, pal), pal};
}

MediaFormat TrackFormat(const Source& source)
{
    RawAudioFormat sound = {kSamplePCM, 2, 16, 48000};
    if (source.audio_format.kind == kRawAudio) {
        sound.ch = source.audio_format.raw_audio.ch;
        sound.srate = source.audio_format.raw_audio.srate;
    }
    return MediaFormat(sound);
}

std::unique_ptr<Destination> CreateDestination(const std::string& path, const DestinationPlan& plan,
                                               std::string& message)
{
    switch (plan.type) {
        case kDestinationCanopus1:
        case kDestinationCanopus2:
        case kDestinationMatrox:
        case kDestinationAVI1:
        case kDestinationAVI1OpenDML:
        case kDestinationAVI2:
        case kDestinationAVI2OpenDML:
        case kDestinationAVI1Reference:
        case kDestinationAVI2Reference:
            return CreateAVIDestination(path, plan, message);
        case kDestinationQuickTime:
            return CreateQuickTimeDestination(path, plan, message);
        case kDestinationRawDV:
            return CreateRawDVDestination(path, plan, message);
        default:
            message = kFormatRefused;
            return nullptr;
    }
}

}  // namespace kelvane
