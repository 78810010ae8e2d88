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

CreatedDestination CreateRawDVDestination(const DestinationPlan& plan)
{
    auto destination = std::make_unique<RawDVDestination>(plan.path, plan.is_pal);
    if (destination->InitCheck() != kOK) return CannotCreate(destination->InitCheck());
    return CreatedDestination(std::move(destination));
}

}  // namespace kelvane
