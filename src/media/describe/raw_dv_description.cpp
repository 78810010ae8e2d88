#include "media/describe/raw_dv_description.h"

#include <vector>

#include "base/television.h"
#include "dv/dif_frame.h"
#include "media/describe/stream_words.h"
#include "media/raw_dv/raw_dv_file.h"

namespace kelvane {

std::string DescribeRawDV(const char* path)
{
    RawDVFile file(path, kRead);
    file.SetRecordSize(kPAL.dv_frame_size);
    std::vector<uint8_t> bytes(static_cast<size_t>(kPAL.dv_frame_size));
    int32_t count = 1;
    // The result does not count: one NTSC frame alone is less than a record, but its bytes arrive.
    static_cast<void>(file.Read(bytes.data(), count));
    if (!IsRawDV(bytes.data(), bytes.size())) return {};
    DIFFrame frame(bytes.data(), static_cast<uint32_t>(bytes.size()));
    return "DIF/" + DVWords(frame);
}

}  // namespace kelvane
