#include "cli/lists.h"

#include <iostream>

#include "base/four_cc.h"
#include "cli/arguments.h"
#include "codecs/external/dv_codec_entry.h"
#include "engine/containers/file_type.h"
#include "engine/options/output_formats.h"
#include "engine/pictures/conversion_state.h"

namespace kelvane {

namespace {

std::string Padded(std::string text, size_t width)
{
    if (text.size() < width) text.resize(width, ' ');
    return text;
}

void ListEntries(const char* title, const DVCodecList& entries)
{
    std::cout << title << '\n';
    if (entries.empty()) std::cout << "  none\n";
    for (const DVCodecEntry& entry : entries)
        std::cout << "  " << entry.long_name << '\n';
}

}  // namespace

int ListFormats()
{
    for (const OutputFormat& format : OutputFormats())
        std::cout << Padded(format.name, 14) << FourCCText(format.selection) << "  " << format.text
                  << '\n';
    return kExitDone;
}

int ListCodecs(const CodecDrivers& drivers)
{
    const DVCodecLists lists = ListDVCodecs(drivers);
    if (drivers.codecs.empty()) std::cout << "No codec module in " << CodecFolder() << ".\n";
    ListEntries("DV encoders:", lists.encoders);
    ListEntries("DV decoders:", lists.decoders);
    std::cout << "Built-in codecs:\n";
    const CodecRegistry registry = MakeCodecRegistry(drivers);
    for (const CodecDescriptor* codec : registry.Descriptors())
        std::cout << "  " << codec->long_name << '\n';
    return kExitDone;
}

int DescribeFiles(const std::vector<std::string>& files)
{
    int status = kExitDone;
    for (const std::string& file : files) {
        std::string text;
        if (DescribeFile(file, text)) {
            std::cout << file << ": " << text << '\n';
            continue;
        }
        std::cerr << file << ": " << text << '\n';
        status = kExitFileFailed;
    }
    return status;
}

}  // namespace kelvane
