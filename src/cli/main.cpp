// kelvane-convert: the conversion engine for scripts, servers and tests.

#include <cerrno>
#include <iostream>
#include <new>

#include "base/status.h"
#include "cli/arguments.h"
#include "cli/conversion_batch.h"
#include "cli/lists.h"
#include "cli/sample_command.h"
#include "cli/stop_request.h"

using namespace kelvane;

namespace {

CodecDrivers LoadCodecs()
{
    CodecDrivers drivers = LoadCodecDrivers(CodecFolder());
    for (const std::string& problem : drivers.problems)
        std::cerr << "kelvane-convert: " << problem << '\n';
    return drivers;
}

int Run(int count, char** values)
{
    Arguments arguments;
    int status = kExitDone;
    if (!ParseArguments(count, values, arguments, status)) return status;
    switch (arguments.command) {
        case Command::kListFormats:
            return ListFormats();
        case Command::kListCodecs:
            return ListCodecs(LoadCodecs());
        case Command::kDescribe:
            return DescribeFiles(arguments.files);
        case Command::kMakeSample:
            return MakeSample(arguments.sample, arguments.options.overwrite, LoadCodecs());
        case Command::kConvert:
            return ConvertFiles(arguments, LoadCodecs());
    }
    return kExitWrongUsage;
}

// What was said on standard output may not have been heard.
bool StandardOutputIsWhole()
{
    const bool whole = std::cout.good();
    std::cout.clear();
    if (!whole) std::cout << '\n';  // tried once more, for the reason
    errno = 0;
    if (std::cout.flush().good() && whole) return true;
    std::cerr << "kelvane-convert: Standard output can't be written."
              << Status(kError, errno).Reason() << '\n';
    return false;
}

}  // namespace

int main(int count, char** values)
{
    CatchStopRequests();
    int status = kExitFileFailed;
    try {
        status = Run(count, values);
    } catch (const std::bad_alloc&) {
        std::cerr << "kelvane-convert: There is not enough memory.\n";
    }
    if (!StandardOutputIsWhole() && status == kExitDone) status = kExitFileFailed;
    return status;
}
