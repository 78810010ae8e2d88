#include "support/temp_folder.h"

#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace kelvane {

TempFolder::TempFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "kelvane-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    fRoot = name;
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(fRoot, ignored);
}

std::string TempFolder::Write(const std::string& name, std::span<const uint8_t> bytes) const
{
    std::ofstream file(fRoot / name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return Path(name);
}

std::vector<uint8_t> ReadWhole(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace kelvane
