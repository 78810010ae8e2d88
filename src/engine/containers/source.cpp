#include "engine/containers/source.h"

#include "dv/dif_frame.h"
#include "engine/containers/container.h"
#include "format/picture_layout.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

// Why nothing could be recognised, when the system would not let us look.
std::string CannotRead(const std::string& path)
{
    uint8_t byte;
    return FileReadHead(path.c_str(), &byte, 1) < 0 ? Status::System().Reason() : std::string();
}

// The television system of a film is that of its first frame, whatever its container says.
void TrustFirstFrame(Source& source)
{
    if (!source.format.IsDV()) return;
    std::vector<uint8_t> first(LargestFrame(source.format));
    const FrameRead read = source.ReadFrame(0, first);
    if (read.status != kOK) return;
    const auto pal = SystemOfFrame(std::span(first).first(read.size));
    if (!pal || *pal == source.is_pal) return;
    source.is_pal = *pal;
    source.format = DVFormat(*pal);
}

}  // namespace

OpenedSource OpenSource(const std::string& path)
{
    const Container* container = ContainerOf(path);
    // A disk may give at the second try what it refused at the first.
    if (!container) container = ContainerOf(path);
    if (container && container->open) {
        OpenedSource source = container->open(path);
        if (source) TrustFirstFrame(**source);
        return source;
    }
    return Failure{kError,
                   "Source is not recognized as AVI/QuickTime/Raw DV/ES-3 DV." + CannotRead(path)};
}

}  // namespace kelvane
