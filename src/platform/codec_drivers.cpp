#include "platform/codec_drivers.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "base/status.h"

namespace fs = std::filesystem;

namespace kelvane {

namespace {

bool IsModuleName(const std::string& name)
{
    return name.starts_with("kelvane-codec-") && name.ends_with(".so");
}

std::vector<fs::path> ModulesIn(const fs::path& folder)
{
    std::vector<fs::path> modules;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
        if (IsModuleName(at->path().filename().string())) modules.push_back(at->path());
    std::ranges::sort(modules);
    return modules;
}

bool IsComplete(const CodecModule& table)
{
    return table.count && table.describe && table.open && table.encode && table.decode &&
           table.close;
}

// Null with the reason in `problem` when the file is no module that can be used.
const CodecModule* Load(const fs::path& file, std::string& problem)
{
    // Never unloaded again: the libraries below a module have state of their own.
    void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!library) {
        problem = "cannot be loaded";
        return nullptr;
    }
    const auto entry = reinterpret_cast<CodecModuleEntry>(dlsym(library, kCodecModuleEntry));
    const CodecModule* table = entry ? entry() : nullptr;
    if (table && table->version == kCodecModuleVersion && IsComplete(*table)) return table;
    if (table && table->version != kCodecModuleVersion)
        problem = "is of version " + std::to_string(table->version) + ", but version " +
                  std::to_string(kCodecModuleVersion) + " is needed";
    else
        problem = "is no codec module";
    return nullptr;
}

fs::path ProgramFolder()
{
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

}  // namespace

std::string CodecFolder()
{
    if (const char* path = std::getenv("KELVANE_CODEC_PATH"); path && *path) return path;
    const fs::path beside = ProgramFolder();
    return ModulesIn(beside).empty() ? KELVANE_CODEC_FOLDER : beside.string();
}

CodecDrivers LoadCodecDrivers(const std::string& folder)
{
    CodecDrivers found;
    for (const fs::path& file : ModulesIn(folder)) {
        std::string problem;
        const CodecModule* module = Load(file, problem);
        if (!module) {
            found.problems.push_back("Codec module " + file.string() + " " + problem + ".");
            continue;
        }
        for (uint32_t i = 0; i < module->count(); i++) {
            CodecDriver driver;
            if (module->describe(i, &driver.codec) != kOK) continue;
            driver.index = i;
            driver.module = module;
            found.codecs.push_back(std::move(driver));
        }
    }
    return found;
}

OpenedCodec& OpenedCodec::operator=(OpenedCodec&& other) noexcept
{
    if (this != &other) {
        Close();
        fInstance = std::exchange(other.fInstance, nullptr);
        fModule = std::exchange(other.fModule, nullptr);
    }
    return *this;
}

int OpenedCodec::Open(const CodecDriver& driver, const CodecSetup& setup)
{
    Close();
    const int status = driver.module->open(driver.index, &setup, &fInstance);
    if (status != kOK || !fInstance) {
        fInstance = nullptr;
        return kError;
    }
    fModule = driver.module;
    return kOK;
}

void OpenedCodec::Close()
{
    if (fInstance) fModule->close(std::exchange(fInstance, nullptr));
    fModule = nullptr;
}

int OpenedCodec::Encode(const uint8_t* picture, std::span<uint8_t> frame, uint32_t& bytes)
{
    bytes = static_cast<uint32_t>(frame.size());
    if (!fInstance) return kError;
    return fModule->encode(fInstance, picture, frame.data(), &bytes);
}

int OpenedCodec::Decode(std::span<const uint8_t> frame, std::span<uint8_t> picture)
{
    if (!fInstance) return kError;
    return fModule->decode(fInstance, frame.data(), static_cast<uint32_t>(frame.size()),
                           picture.data(), static_cast<uint32_t>(picture.size()));
}

}  // namespace kelvane
