#include "engine/containers/destination.h"

#include <algorithm>

#include "base/status.h"
#include "base/television.h"
#include "dv/audio_rates.h"
#include "engine/containers/container.h"
#include "engine/timing/planned_frames.h"

namespace kelvane {

namespace {

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
    const int32_t from = lines486 ? kNTSC.height : kLinesOfWholeNTSC;
    const int32_t to = lines486 ? kLinesOfWholeNTSC : kNTSC.height;
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

MediaFormat TrackFormat(const Source& source)
{
    RawAudioFormat sound = kUsualSound;
    const RawAudioFormat& stream = source.audio_format.raw_audio;
    // Sound of a rate that cannot be used is left out.
    if (source.audio_format.kind == kRawAudio && stream.srate > 0 &&
        IsKnownRate(static_cast<uint32_t>(stream.srate))) {
        sound.ch = stream.ch;
        sound.srate = stream.srate;
    }
    return MediaFormat(sound);
}

}  // namespace

DestinationPlan PlanDestination(const std::string& path, const ConversionSettings& settings,
                                const Source& source, int32_t type)
{
    DestinationPlan plan;
    plan.path = path;
    plan.type = type;
    plan.is_pal = DestinationIsPAL(settings, source);
    plan.format = DestinationFormat(settings, source, plan.is_pal);
    plan.options = settings.conversion_options;
    plan.codec = settings.codec;
    plan.source_handler = source.handler;
    plan.track = TrackFormat(source);
    plan.frames = PlannedFrames(settings, source.is_pal, plan.is_pal,
                                std::min(source.CountFrames(), kMostFrames));
    return plan;
}

std::vector<std::string> FilesOf(const DestinationPlan& plan)
{
    std::vector<std::string> files = {plan.path};
    const Container* container = ContainerFor(plan.type);
    if (container && container->media_files)
        for (std::string& path : container->media_files(plan))
            files.push_back(std::move(path));
    return files;
}

Failure CannotCreate(Status status)
{
    if (status == kFormatNotSupported) return {kError, kFormatRefused};
    return {kError, "Could not create destination file." + status.Reason()};
}

CreatedDestination CreateDestination(const DestinationPlan& plan)
{
    const Container* container = ContainerFor(plan.type);
    if (!container) return Failure{kError, kFormatRefused};
    CreatedDestination created = container->create(plan);
    if (created) {
        (*created)->format = plan.format;
        (*created)->is_pal = plan.is_pal;
    }
    return created;
}

}  // namespace kelvane
