#pragma once

#include <string>

namespace kelvane {

// Runs a shell command with its output thrown away; its exit status, -1 when it did not end by
// itself.
int RunCommand(const std::string& command);

// What a shell command prints on standard output, without the last line end.
std::string CommandOutput(const std::string& command);

// Has dvgrab read a raw DV file into stem + "001." and its usual ending. It hangs now and then, at
// the start or the end of its input; it is stopped then and tried again. false: it hung each time.
// On a busy machine it drops frames, and it changes packs inside them.
bool Dvgrab(const std::string& options, const std::string& input, const std::string& stem);

}  // namespace kelvane
