#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/status.h"
#include "platform/codec_modules/codec_module.h"

namespace kelvane {

// One codec of a loaded module, ready to be opened.
struct CodecDriver {
    ModuleCodec codec{};
    uint32_t index = 0;                   // within its module
    const CodecModule* module = nullptr;  // stays loaded until the program ends
};

// What was found in a codec folder.
struct CodecDrivers {
    std::vector<CodecDriver> codecs;    // by module file name, then in the module's order
    std::vector<std::string> problems;  // a line for each thing that could not be used
};

// Where codec modules are: $KELVANE_CODEC_PATH if set, else the program's own folder if it holds
// any, else the folder that was fixed at install time.
std::string CodecFolder();

// Loads every kelvane-codec-*.so of a folder. A module that is broken or of another version is
// passed over and named in `problems`, a folder that can't be read too.
CodecDrivers LoadCodecDrivers(const std::string& folder);

// One open codec; closed by the destructor.
class OpenedCodec {
public:
    OpenedCodec() = default;
    OpenedCodec(OpenedCodec&& other) noexcept { *this = std::move(other); }
    OpenedCodec& operator=(OpenedCodec&& other) noexcept;
    ~OpenedCodec() { Close(); }

    // Closes what was open before. kError when the codec refuses the formats.
    Status Open(const CodecDriver& driver, const CodecSetup& setup);
    bool IsOpen() const { return fInstance != nullptr; }
    void Close();

    // One picture to one frame; the result's size goes to `bytes`.
    Status Encode(const uint8_t* picture, std::span<uint8_t> frame, uint32_t& bytes);
    // One frame to one picture of exactly the size that was agreed on.
    Status Decode(std::span<const uint8_t> frame, std::span<uint8_t> picture);

private:
    const CodecModule* fModule = nullptr;
    void* fInstance = nullptr;
};

}  // namespace kelvane
