#include "engine/containers/file_type.h"

#include <array>
#include <cstring>

#include "media/describe/avi_description.h"
#include "media/describe/qt_description.h"
#include "media/describe/raw_dv_description.h"
#include "media/quicktime/qt_file.h"
#include "media/raw_dv/raw_dv_file.h"
#include "media/samples/aiff_file.h"
#include "media/samples/wav_file.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

// A QuickTime file whose head its own class did not accept.
bool HasQuickTimeAtom(const uint8_t* head)
{
    for (const char* type : {"moov", "wide", "mdat"})
        if (memcmp(head + 4, type, 4) == 0) return true;
    return false;
}

}  // namespace

SourceKind DetectFileType(const std::string& path)
{
    if (IsAVIFile(path.c_str())) return kAVISource;
    if (IsQuickTimeFile(path.c_str())) return kQuickTimeSource;
    if (IsWAVFile(path.c_str())) return kWAVSource;
    if (IsAIFFFile(path.c_str())) return kAIFFSource;
    std::array<uint8_t, kRawDVHeadSize> head;
    if (FileReadHead(path.c_str(), head.data(), head.size()) != int64_t{head.size()})
        return kUnknownSource;
    if (HasQuickTimeAtom(head.data())) return kQuickTimeSource;
    return IsRawDV(head.data(), head.size()) ? kRawDVSource : kUnknownSource;
}

bool DescribeFile(const std::string& path, std::string& text)
{
    switch (DetectFileType(path)) {
        case kAVISource:
            return DescribeAVI(path.c_str(), text);
        case kQuickTimeSource:
            return DescribeQuickTime(path.c_str(), text);
        case kWAVSource:
            return DescribeWAV(path.c_str(), text);
        case kAIFFSource:
            return DescribeAIFF(path.c_str(), text);
        case kRawDVSource:
            text = DescribeRawDV(path.c_str());
            return !text.empty();
        default:
            text = "cannot be read or is of no known kind";
            return false;
    }
}

}  // namespace kelvane
