#include "base/byte_cursor.h"
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
    explicit RawDVSource(const std::string& file) : fFile(file.c_str(), kRead) {}

    // Empty when all is well, else the reason.
    std::string Open()
    {
        if (fFile.InitCheck() != kOK) return kCannotOpen;
        Bytes first(static_cast<size_t>(kPAL.dv_frame_size));
        int32_t count = 1;
        fFile.SetRecordSize(kPAL.dv_frame_size);
        // A single NTSC frame is less than this record; its bytes arrive all the same.
        const Status read = fFile.Read(first.data(), count);
        // Without it nobody knows the television system.
        if (read == kUnread) return kCannotOpen + read.Reason();
        has_companions = true;
        is_pal = SystemToldBy(first);
        fRecordSize = SystemFor(is_pal).dv_frame_size;
        fFile.SetRecordSize(fRecordSize);
        if (fFile.Seek(0) != kOK) return kCannotOpen;
        format = DVFormat(is_pal);
        handler = "dvsd"_4cc;
        return {};
    }

    FrameRead ReadFrame(int64_t number, std::span<uint8_t> buffer) override
    {
        int32_t count = 1;
        const auto record = static_cast<size_t>(fRecordSize);
        if (buffer.size() < record || fFile.Seek(number) != kOK) return {kEnd};
        const Status status = fFile.Read(buffer.data(), count);
        return {status, status == kOK ? record : 0};
    }

    uint64_t CountFrames() const override
    {
        return static_cast<uint64_t>(fFile.CountRecords()) + fFile.EndsInPiece();
    }

private:
    static DIFFrame Look(Bytes& frame)
    {
        return DIFFrame(frame.data(), static_cast<uint32_t>(frame.size()));
    }

    // A blank frame at the beginning of a tape does not tell the system of the film: the next one
    // with video auxiliary data does, where there is one among the first four.
    bool SystemToldBy(Bytes& first)
    {
        if (HasVideoAux(first)) return Look(first).IsPAL();
        for (const int64_t number : {1, 2, 3})
            for (const bool pal : {true, false}) {
                Bytes frame(static_cast<size_t>(SystemFor(pal).dv_frame_size));
                int32_t count = 1;
                fFile.SetRecordSize(SystemFor(pal).dv_frame_size);
                if (fFile.Seek(number) != kOK || fFile.Read(frame.data(), count) != kOK) continue;
                if (SystemOfFrame(frame) == pal && HasVideoAux(frame)) return pal;
            }
        return Look(first).IsPAL();
    }

    RawDVFile fFile;
    int32_t fRecordSize = 0;
};

}  // namespace

OpenedSource OpenRawDVSource(const std::string& path)
{
    return OpenAs<RawDVSource>(path);
}

}  // namespace kelvane
