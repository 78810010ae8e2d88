#include "base/status.h"
#include "base/television.h"
#include "engine/containers/destination.h"
#include "media/raw_dv/raw_dv_file.h"

namespace kelvane {

namespace {

class RawDVDestination : public Destination {
public:
    RawDVDestination(const std::string& path, bool pal) : fFile(path.c_str(), kCreate)
    {
        fFile.SetRecordSize(SystemFor(pal).dv_frame_size);
    }

    Status InitCheck() const { return fFile.InitCheck(); }
    Status WriteFrame(std::span<const uint8_t> frame) override
    {
        if (frame.size() != static_cast<size_t>(SystemFor(is_pal).dv_frame_size)) return kError;
        return fFile.Write(frame.data(), 1);
    }
    Status Finish() override { return fFile.Finish(); }

private:
    RawDVFile fFile;
};

}  // namespace

std::unique_ptr<Destination> CreateRawDVDestination(const std::string& path,
                                                    const DestinationPlan& plan,
                                                    std::string& message)
{
    auto destination = std::make_unique<RawDVDestination>(path, plan.is_pal);
    if (destination->InitCheck() == kOK) return destination;
    message = kCannotCreate + destination->InitCheck().Reason();
    return nullptr;
}

}  // namespace kelvane
