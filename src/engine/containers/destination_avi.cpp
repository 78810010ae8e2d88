#include "base/four_cc.h"
#include "base/status.h"
#include "base/television.h"
#include "engine/containers/destination.h"
#include "engine/containers/picture_rows.h"
#include "media/avi/avi_file.h"
#include "media/avi/structure/avi_references.h"

namespace kelvane {

namespace {

constexpr int32_t kPictureStream = 0;
constexpr int32_t kSoundStream = 1;
constexpr uint32_t kNotDVFlags = kAVIOpenDML | kAVIOldIndex;

// How the writer is begun for each type of DV file. The television system's flag and, where
// `index_option` says so, the option of an "idx1" are added.
struct AVISetup {
    int32_t type;
    uint32_t flags;
    bool index_option;
    bool audio_track;
};
constexpr AVISetup kSetups[] = {
    {kDestinationCanopus1, kAVIType1 | kAVIOldIndex | kAVICanopus, true, false},
    {kDestinationCanopus2, kAVIOldIndex | kAVICanopus, true, true},
    {kDestinationMatrox, kAVIType1 | kAVIOpenDML | kAVIOldIndex | kAVIMatrox | kAVISegments, false,
     false},
    {kDestinationAVI1, kAVIType1, true, false},
    {kDestinationAVI1OpenDML, kAVIType1 | kAVIOpenDML | kAVISegments, false, false},
    {kDestinationAVI2, 0, true, true},
    {kDestinationAVI2OpenDML, kAVIOpenDML | kAVISegments, false, true},
    {kDestinationAVI1Reference, kAVIType1 | kAVIOpenDML | kAVIReference, true, false},
    {kDestinationAVI2Reference, kAVIOpenDML | kAVIReference, true, true},
};

const AVISetup* SetupOf(int32_t type)
{
    for (const AVISetup& setup : kSetups)
        if (setup.type == type) return &setup;
    return nullptr;
}

class AVITrack : public AudioTrack {
public:
    explicit AVITrack(AVIFile& file) : fFile(file) {}
    void SetFormat(uint32_t rate, uint32_t channels) override
    {
        static_cast<void>(fFile.SetAudioFormat(kSoundStream, static_cast<int32_t>(rate),
                                               static_cast<int32_t>(channels), -1));
    }
    Status WriteChunk(std::span<const uint8_t> chunk) override
    {
        return fFile.WriteFrame(kSoundStream, chunk.data(), static_cast<int32_t>(chunk.size()));
    }

private:
    AVIFile& fFile;
};

class AVIDestination : public Destination {
public:
    explicit AVIDestination(const DestinationPlan& plan)
        : fFile(plan.path.c_str(), kCreate), fRows(plan.format, kAVIRowMultiple)
    {
        AVILimits limits = plan.avi_limits;
        limits.reference_files = AVIMediaFiles(plan).size();
        fFile.SetLimits(limits);
    }

    Status InitCheck() const { return fFile.InitCheck(); }
    Status WriteFrame(std::span<const uint8_t> frame) override
    {
        frame = fRows.Pad(frame, fPadded);
        return fFile.WriteFrame(kPictureStream, frame.data(), static_cast<int32_t>(frame.size()));
    }
    Status SetStreamHeader(std::span<const uint8_t> header) override
    {
        return fFile.SetVideoFormat(kPictureStream, header);
    }
    AudioTrack* Audio() override { return fHasTrack ? &fTrack : nullptr; }
    Status Finish() override { return fFile.Finish(); }

    Status BeginDV(const DestinationPlan& plan, const AVISetup& setup)
    {
        uint32_t flags = setup.flags | (plan.is_pal ? kAVIPAL : kAVINTSC);
        if (setup.index_option && plan.options & kOptionIdx1) flags |= kAVIOldIndex;
        fHasTrack = setup.audio_track;
        return fFile.BeginDVAVI(flags, HandlerFor(plan), 0);
    }

    // Pictures that are not DV.
    Status BeginOther(const DestinationPlan& plan, const AVISetup& setup)
    {
        fHasTrack = setup.audio_track;
        if (fFile.BeginAVI(kNotDVFlags | (setup.flags & kAVISegments)) != kOK) return kError;
        const Status status = plan.format.kind == kRawVideo
                                  ? fFile.AddVideoStream(plan.format)
                                  : fFile.AddEncodedVideoStream(plan.format);
        if (status != kOK || !fHasTrack) return status;
        return fFile.AddAudioStream(MediaFormat(kUsualSound));
    }

private:
    static uint32_t HandlerFor(const DestinationPlan& plan)
    {
        if (plan.type == kDestinationCanopus1 || plan.type == kDestinationCanopus2)
            return "CDVC"_4cc;
        if (plan.type == kDestinationMatrox) return plan.codec;
        return plan.codec ? plan.codec : plan.source_handler;
    }

    AVIFile fFile;
    PictureRows fRows;
    std::vector<uint8_t> fPadded;  // the frame written last
    AVITrack fTrack{fFile};
    bool fHasTrack = false;
};

bool IsReference(int32_t type)
{
    return type == kDestinationAVI1Reference || type == kDestinationAVI2Reference;
}

bool TakesOtherPictures(int32_t type)
{
    return type >= kDestinationAVI1 && type <= kDestinationAVI2OpenDML;
}

}  // namespace

std::vector<std::string> AVIMediaFiles(const DestinationPlan& plan)
{
    if (!IsReference(plan.type)) return {};
    const auto frame = static_cast<uint64_t>(SystemFor(plan.is_pal).dv_frame_size);
    return ReferenceFiles(plan.path, plan.frames, frame, plan.avi_limits.reference_file);
}

CreatedDestination CreateAVIDestination(const DestinationPlan& plan)
{
    const bool dv = plan.format.IsDV25();
    // References stand for DV frames only. Refused before the file is touched.
    if (!dv && IsReference(plan.type)) return Failure{kError, kFormatRefused};
    auto destination = std::make_unique<AVIDestination>(plan);
    const AVISetup& setup = *SetupOf(plan.type);
    Status status = destination->InitCheck();
    if (status == kOK)
        status = dv || !TakesOtherPictures(plan.type) ? destination->BeginDV(plan, setup)
                                                      : destination->BeginOther(plan, setup);
    if (status == kOK) return CreatedDestination(std::move(destination));
    return CannotCreate(status);
}

}  // namespace kelvane
