#include "platform/files/file_handle.h"

#include <unistd.h>

namespace kelvane {

Status FileHolder::Close()
{
    // After EINTR the handle is gone as well and must not be closed again.
    return fHandle == kNoFile || close(Release()) == 0 ? Status(kOK) : Status::System();
}

}  // namespace kelvane
