#include "platform/codec_modules/codec_drivers.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "base/status.h"

namespace fs = std::filesystem;

namespace kelvane {

namespace {

constexpr uint32_t kMostCodecs = 1000;  // of a module that is in its right mind

bool IsModuleName(const std::string& name)
{
    return name.starts_with("kelvane-codec-") && name.ends_with(".so");
}

// What could be seen of a folder; `error` tells why that may not be all.
std::vector<fs::path> ModulesIn(const fs::path& folder, std::error_code& error)
{
    std::vector<fs::path> modules;
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

// The loader's words for what failed last, without the file's name that they may begin with.
std::string LoaderWords(const fs::path& file)
{
    const char* said = dlerror();
    const std::string words = said ? said : "unknown reason", name = file.string() + ": ";
    return words.starts_with(name) ? words.substr(name.size()) : words;
}

// What keeps a module from being used; empty when nothing does.
std::string ProblemOf(const CodecModule* table)
{
    if (!table) return "gives no table of its functions.";
    if (table->version != kCodecModuleVersion)
        return "is of version " + std::to_string(table->version) + ", but version " +
               std::to_string(kCodecModuleVersion) + " is needed.";
    return IsComplete(*table) ? "" : "has gaps in the table of its functions.";
}

// Null with the reason in `problem` when the file is no module that can be used.
const CodecModule* Load(const fs::path& file, std::string& problem)
{
    // Never unloaded again: the libraries below a module have state of their own.
    void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!library) {
        problem = "cannot be loaded. (" + LoaderWords(file) + ")";
        return nullptr;
    }
    const auto entry = reinterpret_cast<CodecModuleEntry>(dlsym(library, kCodecModuleEntry));
    if (!entry) {
        problem = "has no function " + std::string(kCodecModuleEntry) + ".";
        return nullptr;
    }
    const CodecModule* table = entry();
    problem = ProblemOf(table);
    return problem.empty() ? table : nullptr;
}

bool Describe(const CodecModule& module, uint32_t index, ModuleCodec& codec)
{
    return module.describe(index, &codec) == kOK && codec.long_name && codec.short_name &&
           codec.codec_interface <= kDirectShow && codec.is_decoder <= 1;
}

void AddCodecs(const CodecModule& module, const std::string& name, CodecDrivers& found)
{
    const uint32_t count = module.count();
    if (count > kMostCodecs) {
        found.problems.push_back(name + " claims to have " + std::to_string(count) + " codecs.");
        return;
    }
    for (uint32_t i = 0; i < count; i++) {
        CodecDriver driver{{}, i, &module};
        if (Describe(module, i, driver.codec))
            found.codecs.push_back(driver);
        else
            found.problems.push_back(name + " does not describe its codec " +
                                     std::to_string(i + 1) + ".");
    }
}

fs::path ProgramFolder()
{
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

// What a module's function says: 0 when all is well.
Status Answer(int status)
{
    return status == 0 ? kOK : kError;
}

}  // namespace

std::string CodecFolder()
{
    if (const char* path = std::getenv("KELVANE_CODEC_PATH"); path && *path) return path;
    const fs::path beside = ProgramFolder();
    std::error_code unseen;
    return ModulesIn(beside, unseen).empty() ? KELVANE_CODEC_FOLDER : beside.string();
}

CodecDrivers LoadCodecDrivers(const std::string& folder)
{
    CodecDrivers found;
    std::error_code error;
    for (const fs::path& file : ModulesIn(folder, error)) {
        const std::string name = "Codec module " + file.string();
        std::string problem;
        if (const CodecModule* module = Load(file, problem))
            AddCodecs(*module, name, found);
        else
            found.problems.push_back(name + " " + problem);
    }
    if (error)
        found.problems.push_back("Codec folder " + folder + " cannot be read. (" + error.message() +
                                 ")");
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

Status OpenedCodec::Open(const CodecDriver& driver, const CodecSetup& setup)
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

Status OpenedCodec::Encode(const uint8_t* picture, std::span<uint8_t> frame, uint32_t& bytes)
{
    bytes = static_cast<uint32_t>(frame.size());
    if (!fInstance) return kError;
    return Answer(fModule->encode(fInstance, picture, frame.data(), &bytes));
}

Status OpenedCodec::Decode(std::span<const uint8_t> frame, std::span<uint8_t> picture)
{
    if (!fInstance) return kError;
    return Answer(fModule->decode(fInstance, frame.data(), static_cast<uint32_t>(frame.size()),
                                  picture.data(), static_cast<uint32_t>(picture.size())));
}

}  // namespace kelvane
