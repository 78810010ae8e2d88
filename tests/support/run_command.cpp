#include "support/run_command.h"

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>

namespace kelvane {

int RunCommand(const std::string& command)
{
    const int status = system(("(" + command + ") >/dev/null 2>&1 </dev/null").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string CommandOutput(const std::string& command)
{
    std::string output;
    FILE* pipe = popen(("(" + command + ") 2>/dev/null </dev/null").c_str(), "r");
    if (!pipe) return output;
    char buffer[4096];
    for (size_t got; (got = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        output.append(buffer, got);
    pclose(pipe);
    while (output.ends_with('\n'))
        output.pop_back();
    return output;
}

}  // namespace kelvane
