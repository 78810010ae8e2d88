#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/four_cc.h"
#include "engine/loop/conversion_case.h"
#include "media/avi/avi_file.h"

namespace kelvane {

// Conversions and what is said of them.
class Messages : public ConversionCase {
protected:
    using ConversionCase::ConversionCase;

    void Expect(int status, const std::string& message, const std::string& source,
                const std::string& destination = "")
    {
        const std::string to = destination.empty() ? fFolder.Path("destination") : destination;
        EXPECT_EQ(status, Convert(source, to));
        EXPECT_EQ(message, fResult.message);
        EXPECT_EQ(status, fResult.status);
    }
    // The frames of a clip behind one another in an AVI, of a size each of its own, with a rate of
    // sound when there is a stream for it.
    std::string MakeAVI(const std::vector<Bytes>& frames, uint32_t flags, int32_t rate = 0,
                        int32_t bits = -1)
    {
        const std::string path = fFolder.Path("made.avi");
        AVIFile file(path.c_str(), kCreate);
        EXPECT_EQ(0, file.BeginDVAVI(flags | kAVIOldIndex, "dvsd"_4cc, 0));
        EXPECT_EQ(0, rate ? file.SetAudioFormat(1, rate, 2, bits) : kOK);
        const Bytes silence(7680);
        for (const Bytes& frame : frames) {
            EXPECT_EQ(0, file.WriteFrame(0, frame.data(), int32_t(frame.size())));
            EXPECT_EQ(0, rate ? file.WriteFrame(1, silence.data(), int32_t(silence.size())) : kOK);
        }
        EXPECT_EQ(0, file.Finish());
        return path;
    }
};

}  // namespace kelvane
