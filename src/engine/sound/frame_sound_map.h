#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>

namespace kelvane {

// Which of the sound that was taken from source frames belongs to which of them. Sound is counted
// in bytes from the beginning, frames from 0; within a frame its sound is even.
class FrameSoundMap {
public:
    // The next source frame has so many bytes.
    void AddFrame(uint64_t bytes) { fEdges.push_back(fEdges.back() + bytes); }
    // What is before this frame will not be asked for any more.
    void Forget(double frame);

    // Behind the frames that are known, frames are as long as the last of those that are.
    double FrameAt(double byte) const;
    double ByteAt(double frame) const;

private:
    double Length(size_t index) const;
    size_t Last() const { return fEdges.size() < 2 ? 0 : fEdges.size() - 2; }

    std::deque<uint64_t> fEdges = {0};  // of frames from fFirst on, and the end
    uint64_t fFirst = 0;
};

}  // namespace kelvane
