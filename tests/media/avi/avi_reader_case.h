#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "media/avi/avi_file.h"
#include "media/describe/avi_description.h"
#include "media/media_files.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {

// As NextFrame tells it.
inline std::string Failed(int code)
{
    return "(" + std::to_string(code) + ")";
}

// Small films in a folder of their own.
class AVIReader : public testing::Test {
protected:
    std::string Put(std::string_view bytes, const std::string& name = "film.avi") const
    {
        return fFolder.Write(name, AsBytes(bytes));
    }
    AVIFile Open(std::string_view bytes) const { return AVIFile(Put(bytes).c_str(), kRead); }
    // What all frames of a file hold, in a row; a failure to read ends it.
    static std::string FramesOf(const std::string& path)
    {
        AVIFile file(path.c_str(), kRead);
        EXPECT_EQ(0, file.InitCheck());
        std::string all;
        Bytes buffer(144000);
        for (uint32_t size = 0; file.ReadFrame(0, buffer, size) == 0;)
            all.append(buffer.begin(), buffer.begin() + size);
        return all;
    }
    std::string Frames(const TinyAVI& film) const { return FramesOf(Put(film.Build())); }
    static std::string Described(const std::string& path, bool good = true)
    {
        std::string text;
        EXPECT_EQ(good, DescribeAVI(path.c_str(), text)) << path;
        return text;
    }

    const TempFolder fFolder;
};

}  // namespace kelvane
