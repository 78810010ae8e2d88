#include "engine/containers/source.h"

#include "engine/containers/container.h"
#include "platform/files/file_access.h"

namespace kelvane {

namespace {

// Why nothing could be recognised, when the system would not let us look.
std::string CannotRead(const std::string& path)
{
    uint8_t byte;
    return FileReadHead(path.c_str(), &byte, 1) < 0 ? Status::System().Reason() : std::string();
}

}  // namespace

OpenedSource OpenSource(const std::string& path)
{
    const Container* container = ContainerOf(path);
    // A disk may give at the second try what it refused at the first.
    if (!container) container = ContainerOf(path);
    if (container && container->open) return container->open(path);
    return Failure{kError,
                   "Source is not recognized as AVI/QuickTime/Raw DV/ES-3 DV." + CannotRead(path)};
}

}  // namespace kelvane
