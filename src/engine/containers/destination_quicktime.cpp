#include "base/four_cc.h"
#include "base/status.h"
#include "engine/containers/destination.h"
#include "media/quicktime/qt_file.h"

namespace kelvane {

namespace {

constexpr int32_t kPictureTrack = 0;
constexpr int32_t kSoundTrack = 1;
constexpr char kInformation[] = "Converted by Kelvane";

class QTTrackWriter : public AudioTrack {
public:
    explicit QTTrackWriter(QTFile& file) : fFile(file) {}
    void SetFormat(uint32_t rate, uint32_t channels) override
    {
        // What cannot be declared stays as it was begun.
        static_cast<void>(fFile.SetAudioFormat(kSoundTrack, static_cast<int32_t>(rate),
                                               static_cast<int32_t>(channels), -1));
    }
    Status WriteChunk(std::span<const uint8_t> chunk) override
    {
        return fFile.WriteFrame(kSoundTrack, chunk.data(), static_cast<uint32_t>(chunk.size()));
    }

private:
    QTFile& fFile;
};

uint32_t QuickTimeOptions(const DestinationPlan& plan)
{
    const uint32_t bits = plan.options;
    uint32_t options = 0;
    if (bits & kOptionOffsets64) options |= kQTWideOffsets;
    if (bits & kOptionDVCP) options |= kQTDVCP;
    if (bits & kOptionSoftDV) options |= kQTSoftDV;
    if (plan.codec == "AVdv"_4cc) options |= kQTAvidDV;
    if (plan.codec == "dvpp"_4cc) options |= kQTDVCPRO;
    return options;
}

class QuickTimeDestination : public Destination {
public:
    explicit QuickTimeDestination(const std::string& path) : fFile(path.c_str(), kCreate) {}

    Status InitCheck() const { return fFile.InitCheck(); }
    Status Begin(const DestinationPlan& plan)
    {
        fFile.SetOptions(QuickTimeOptions(plan), kInformation);
        fFile.SetNarrowLimit(plan.narrow_qt_limit);
        const MediaFormat& picture = plan.format;
        const Status status = picture.kind == kRawVideo ? fFile.AddVideoTrack(picture)
                              : picture.encoded_video.encoding == kEncodingQTRLE
                                  ? fFile.AddEncodedVideoTrack(picture)
                                  : fFile.AddDVTrack(plan.is_pal);
        if (status != kOK || !(plan.options & kOptionAudioTrack)) return status;
        fHasTrack = true;
        return fFile.AddPCMAudioTrack(plan.track);
    }

    Status WriteFrame(std::span<const uint8_t> frame) override
    {
        return fFile.WriteFrame(kPictureTrack, frame.data(), static_cast<uint32_t>(frame.size()));
    }
    AudioTrack* Audio() override { return fHasTrack ? &fTrack : nullptr; }
    Status Finish() override { return fFile.Close(); }

private:
    QTFile fFile;
    QTTrackWriter fTrack{fFile};
    bool fHasTrack = false;
};

}  // namespace

CreatedDestination CreateQuickTimeDestination(const DestinationPlan& plan)
{
    auto destination = std::make_unique<QuickTimeDestination>(plan.path);
    Status status = destination->InitCheck();
    if (status == kOK) status = destination->Begin(plan);
    if (status == kOK) return CreatedDestination(std::move(destination));
    return CannotCreate(status);
}

}  // namespace kelvane
