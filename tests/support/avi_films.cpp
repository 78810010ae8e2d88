#include "support/avi_films.h"

#include <algorithm>

#include "base/television.h"

namespace kelvane {

const AVIOutput& OutputNamed(std::string_view name)
{
    for (const AVIOutput& output : kAVIOutputs)
        if (output.name == name) return output;
    return kAVIOutputs[0];
}

Bytes NumberedFrame(size_t bytes, uint32_t number)
{
    Bytes frame(bytes);
    for (size_t i = 0; i < bytes; i++)
        frame[i] = static_cast<uint8_t>(i * 7 + (i >> 8) + number * 31);
    StoreBytes(std::span(frame).first(4), number, ByteOrder::kLittle);
    return frame;
}

Bytes NumberedSound(uint32_t number)
{
    return NumberedFrame(6400 + 4 * (number % 3), number + 1000);
}

uint32_t WriteFilm(const std::string& path, const AVIOutput& output, bool pal, uint32_t frames,
                   const AVILimits& limits, size_t frame_size)
{
    if (frame_size == 0) frame_size = static_cast<size_t>(SystemFor(pal).dv_frame_size);
    AVIFile file(path.c_str(), kCreate);
    file.SetLimits(limits);
    if (file.BeginDVAVI(output.flags | (pal ? kAVIPAL : kAVINTSC), output.handler, 0) != 0)
        return 0;
    for (uint32_t i = 0; i < frames; i++) {
        const Bytes frame = NumberedFrame(frame_size, i), sound = NumberedSound(i);
        if (file.WriteFrame(0, frame.data(), static_cast<int32_t>(frame.size())) != 0) return i;
        if (output.HasSound() &&
            file.WriteFrame(1, sound.data(), static_cast<int32_t>(sound.size())) != 0)
            return i;
    }
    return file.Finish() == 0 ? frames : 0;
}

std::vector<Bytes> ReadFilm(const std::string& path, int32_t stream)
{
    AVIFile file(path.c_str(), kRead);
    std::vector<Bytes> frames;
    const AVIStream* read = file.StreamAt(stream);
    Bytes buffer(read ? static_cast<size_t>(std::max(read->largest_frame, 144000)) : 0);
    for (uint32_t size = 0; file.ReadFrame(stream, buffer, size) == 0;)
        frames.emplace_back(buffer.begin(), buffer.begin() + size);
    return frames;
}

}  // namespace kelvane
