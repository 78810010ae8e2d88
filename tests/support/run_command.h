#pragma once

#include <string>

namespace kelvane {

// Runs a shell command with its output thrown away; its exit status, -1 when it did not end by
// itself.
int RunCommand(const std::string& command);

// What a shell command prints on standard output, without the last line end.
std::string CommandOutput(const std::string& command);

}  // namespace kelvane
