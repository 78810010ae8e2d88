#include "support/run_command.h"

#include <cstdio>

#include <sys/wait.h>

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
    FILE* pipe = popen(("(" + command + ") 2>/dev/null").c_str(), "r");
    if (!pipe) return output;
    char buffer[4096];
    for (size_t got; (got = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        output.append(buffer, got);
    pclose(pipe);
    while (output.ends_with('\n'))
        output.pop_back();
    return output;
}

bool Dvgrab(const std::string& options, const std::string& input, const std::string& stem)
{
    const std::string command = "rm -f " + stem + "*; timeout -s KILL 8 dvgrab -input " + input +
                                " " + options + " " + stem;
    for (int tries = 0; tries < 5; tries++)
        if (RunCommand(command) == 0) return true;
    return false;
}

}  // namespace kelvane
