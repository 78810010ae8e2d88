#include <vector>

#include "base/four_cc.h"
#include "base/status.h"
#include "base/television.h"
#include "dv/dif_frame.h"
#include "engine/containers/source.h"
#include "media/raw_dv/raw_dv_file.h"

namespace kelvane {

namespace {

constexpr char kCannotOpen[] = "Cannot open source file.";

class RawDVSource : public Source {
public:
    explicit RawDVSource(const std::string& path) : fFile(path.c_str(), kRead) {}

    // Empty when all is well, else the reason.
    std::string Open()
    {
        if (fFile.InitCheck() != kOK) return kCannotOpen;
        std::vector<uint8_t> first(static_cast<size_t>(kPAL.dv_frame_size));
        int32_t count = 1;
        fFile.SetRecordSize(kPAL.dv_frame_size);
        // A single NTSC frame is less than this record; its bytes arrive all the same.
        const Status read = fFile.Read(first.data(), count);
        // Without it nobody knows the television system.
        if (read == kUnread) return kCannotOpen + read.Reason();
        if (fFile.Seek(0) != kOK) return kCannotOpen;
        kind = kRawDVSource;
        is_pal = DIFFrame(first.data(), static_cast<uint32_t>(first.size())).IsPAL();
        fRecordSize = SystemFor(is_pal).dv_frame_size;
        fFile.SetRecordSize(fRecordSize);
        format = DVFormat(is_pal);
        handler = "dvsd"_4cc;
        return {};
    }

    Status ReadFrame(int64_t number, std::span<uint8_t> buffer, int64_t& size) override
    {
        int32_t count = 1;
        size = 0;
        if (buffer.size() < static_cast<size_t>(fRecordSize) || fFile.Seek(number) != kOK)
            return kEnd;
        const Status status = fFile.Read(buffer.data(), count);
        if (status == kOK) size = fRecordSize;
        return status;
    }

    uint64_t CountFrames() const override
    {
        return static_cast<uint64_t>(fFile.CountRecords()) + fFile.EndsInPiece();
    }

private:
    RawDVFile fFile;
    int32_t fRecordSize = 0;
};

}  // namespace

std::unique_ptr<Source> OpenRawDVSource(const std::string& path, std::string& message)
{
    return OpenedSource<RawDVSource>(path, message);
}

}  // namespace kelvane
