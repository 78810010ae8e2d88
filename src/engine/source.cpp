#include "engine/source.h"

namespace kelvane {

std::unique_ptr<Source> OpenSource(const std::string& path, std::string& message)
{
    switch (DetectFileType(path)) {
        case kAVISource:
            return OpenAVISource(path, message);
        case kQuickTimeSource:
            return OpenQuickTimeSource(path, message);
        case kRawDVSource:
            return OpenRawDVSource(path, message);
        default:
            message = "Source is not recognized as AVI/QuickTime/Raw DV/ES-3 DV.";
            return nullptr;
    }
}

}  // namespace kelvane
