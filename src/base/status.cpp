#include "base/status.h"

#include <cerrno>
#include <system_error>

namespace kelvane {

Status Status::System(StatusCode code)
{
    return {code, errno};
}

std::string Status::Reason() const
{
    return fSystemError == 0 ? std::string()
                             : " (" + std::generic_category().message(fSystemError) + ")";
}

}  // namespace kelvane
