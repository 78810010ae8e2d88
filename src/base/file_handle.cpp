#include "base/file_handle.h"

#include <unistd.h>

namespace kelvane {

void FileHolder::Close()
{
    if (fHandle != kNoFile) close(Release());
}

}  // namespace kelvane
