#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/files/file_handle.h"

namespace kelvane {

// Leads every handle that is open on a file to another place, as a disk that fails under a running
// program would: to a folder, whose reads fail with EISDIR; to "/dev/full", whose writes fail with
// ENOSPC. The handles lead back to the file when it ends.
class FileDetour {
public:
    FileDetour(const std::string& path, const std::string& to)
    {
        namespace fs = std::filesystem;
        const FileHolder other(open(to.c_str(), fs::is_directory(to) ? O_RDONLY : O_RDWR));
        for (FileHandle handle = 3; handle < kMostHandles; handle++) {
            std::error_code none;
            if (fs::read_symlink("/proc/self/fd/" + std::to_string(handle), none) != path) continue;
            fHandle = handle;
            fSaved = FileHolder(dup(handle));
            dup2(other.Handle(), handle);
            return;
        }
    }
    ~FileDetour()
    {
        // Unless its owner has closed it meanwhile.
        if (fHandle != kNoFile && fcntl(fHandle, F_GETFD) >= 0) dup2(fSaved.Handle(), fHandle);
    }
    // Closes it, so that its owner's close fails with EBADF.
    void Lose()
    {
        close(fHandle);
        fHandle = kNoFile;
    }
    bool Found() const { return fHandle != kNoFile; }

private:
    static constexpr FileHandle kMostHandles = 256;

    FileHandle fHandle = kNoFile;
    FileHolder fSaved;
};

}  // namespace kelvane
