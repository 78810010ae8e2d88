// kelvane-convert: the conversion engine for scripts, servers and tests.

#include <iostream>

#include "cli/arguments.h"
#include "cli/conversion_batch.h"
#include "cli/lists.h"
#include "cli/sample_command.h"

using namespace kelvane;

namespace {

CodecDrivers LoadCodecs()
{
    CodecDrivers drivers = LoadCodecDrivers(CodecFolder());
    for (const std::string& problem : drivers.problems)
        std::cerr << "kelvane-convert: " << problem << '\n';
    return drivers;
}

}  // namespace

int main(int count, char** values)
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
            return MakeSample(arguments.sample, LoadCodecs());
        case Command::kConvert:
            return ConvertFiles(arguments, LoadCodecs());
    }
    return kExitWrongUsage;
}
