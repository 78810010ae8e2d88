#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "base/byte_cursor.h"
#include "engine/sound/stream_audio_reader.h"
#include "engine/sound/track_audio_writer.h"
#include "media/samples/audio_file.h"

namespace kelvane {

// Sound that comes in chunks of the sizes given; the last size goes on to the end.
class MadeUpStream : public AudioStream {
public:
    MadeUpStream(Bytes samples, std::vector<uint32_t> sizes)
        : fSamples(std::move(samples)), fSizes(std::move(sizes))
    {
    }
    uint32_t ChunkSize() override { return fSizes[std::min(fNext, fSizes.size() - 1)]; }
    Status ReadChunk(uint8_t* buffer, uint32_t room, uint32_t& bytes) override
    {
        if (fNext >= fSizes.size() && fAt == fSamples.size()) return kEnd;
        bytes = uint32_t(std::min<size_t>(ChunkSize(), fSamples.size() - fAt));
        EXPECT_LE(bytes, room);
        std::copy_n(fSamples.begin() + ptrdiff_t(fAt), bytes, buffer);
        fAt += bytes;
        fNext++;
        return kOK;
    }

    uint64_t SkipChunk() override
    {
        const uint32_t skipped = uint32_t(std::min<size_t>(ChunkSize(), fSamples.size() - fAt));
        fAt += skipped;
        fNext++;
        return skipped;
    }

private:
    Bytes fSamples;
    std::vector<uint32_t> fSizes;
    size_t fNext = 0, fAt = 0;
};

// Keeps what it gets.
struct MadeUpTrack : AudioTrack {
    void SetFormat(uint32_t hertz, uint32_t count) override
    {
        EXPECT_EQ(0u, rate) << "once";
        rate = hertz, channels = count;
    }
    Status WriteChunk(std::span<const uint8_t> chunk) override
    {
        EXPECT_NE(0u, rate) << "the format comes first";
        sizes.push_back(chunk.size());
        samples.insert(samples.end(), chunk.begin(), chunk.end());
        return kOK;
    }
    uint32_t rate = 0, channels = 0;
    std::vector<size_t> sizes;
    Bytes samples;
};

// A file of sound, of the kind that its name says.
inline void WriteSound(const std::string& path, const RawAudioFormat& format, const Bytes& samples)
{
    const auto type = path.ends_with(".wav") ? kWAVFileType : kAIFFFileType;
    AudioFile file(path.c_str(), kCreate, type);
    EXPECT_EQ(0, file.SetFormat(format));
    EXPECT_EQ(0, file.Write(samples.data(), int32_t(samples.size() / SampleFrameSize(format))));
}

}  // namespace kelvane
