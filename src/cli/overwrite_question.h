#pragma once

#include <cstdint>
#include <string>

namespace kelvane {

enum class OverwriteAnswer { kOverwrite, kSkip, kCancel };

// Settles whether existing files may be replaced; "all" answers hold for the rest of the run.
class OverwriteQuestion {
public:
    // 0 never, 1 ask, 2 always.
    explicit OverwriteQuestion(int32_t overwrite) : fOverwrite(overwrite) {}
    OverwriteAnswer Ask(const std::string& path);

private:
    int32_t fOverwrite;
};

}  // namespace kelvane
