#include "cli/output_path.h"

#include <filesystem>

#include "engine/options/output_formats.h"

namespace fs = std::filesystem;

namespace kelvane {

std::string OutputPath(const Arguments& arguments, const std::string& source)
{
    if (!arguments.output.empty()) return arguments.output;
    const fs::path from(source);
    const std::string& folder = arguments.options.last_output_folder;
    const fs::path into = folder == "<source folder>" ? from.parent_path() : fs::path(folder);
    const OutputFormat* format = FindOutputFormat(arguments.options.selection);
    return (into / (from.stem().string() + (format ? format->extension : ""))).string();
}

bool IsSameFile(const std::string& a, const std::string& b)
{
    std::error_code error;
    return fs::equivalent(a, b, error) && !error;
}

}  // namespace kelvane
