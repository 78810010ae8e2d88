#include "engine/containers/file_type.h"

#include "engine/containers/container.h"

namespace kelvane {

SourceKind DetectFileType(const std::string& path)
{
    const Container* container = ContainerOf(path);
    return container ? container->kind : kUnknownSource;
}

bool DescribeFile(const std::string& path, std::string& text)
{
    if (const Container* container = ContainerOf(path)) return container->describe(path, text);
    text = "cannot be read or is of no known kind";
    return false;
}

}  // namespace kelvane
