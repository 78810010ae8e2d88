#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/arguments.h"

namespace kelvane {

// One line for each option that was given and changes nothing in this run. `given` tells by an
// option's name, with its dashes, whether it was.
std::vector<std::string> IdleOptions(const Arguments& arguments,
                                     const std::function<bool(const char*)>& given);

}  // namespace kelvane
