#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "base/status.h"
#include "format/media_format.h"
#include "media/avi/structure/avi_limits.h"
#include "media/avi/structure/avi_references.h"
#include "media/avi/structure/avi_structure.h"
#include "media/avi/writer/avi_appender.h"
#include "media/avi/writer/avi_index_writer.h"
#include "media/avi/writer/avi_layout.h"
#include "platform/files/file_handle.h"

namespace kelvane {

// The writing side of AVIFile. The headers are planned in memory, their room is reserved when the
// first frame comes, and every frame is written once where it stays. The headers are written behind
// each stream's first frame and at every index, so that a file under way can be read, and for good
// at the end. All operations answer kOK or kError unless told otherwise, kError with the system's
// reason where the system failed.
class AVIWriter {
public:
    // The structure is empty and outlives the writer.
    AVIWriter(AVIStructure& structure, FileHandle file, const std::string& path);
    AVIWriter(const AVIWriter&) = delete;
    AVIWriter& operator=(const AVIWriter&) = delete;

    void SetLimits(const AVILimits& limits) { fLimits = limits; }

    // Lays down a DV file: one stream for Type 1, stream 0 video and stream 1 audio for Type 2.
    // `flags` are AVIFlag; without kAVIPAL it is NTSC. `handler` 0 is "dvsd". `audio_rate_code`
    // is a place in kAudioRates: 0 is 48000 Hz, 1 is 44100, 2 is 32000.
    Status BeginDVAVI(uint32_t flags, uint32_t handler, int32_t audio_rate_code);
    // Lays down a file without streams; they are added by the next three, in their order.
    Status BeginAVI(uint32_t flags);
    // Raw pictures. kFormatNotSupported for a reference file, as references stand for DV frames.
    Status AddVideoStream(const MediaFormat& format);
    // Encoded pictures, with the format's private data behind the bitmap header. DV becomes a
    // Type 1 stream with the handler "CDVC".
    Status AddEncodedVideoStream(const MediaFormat& format);
    // What is 0 in the format is stereo, 44100 Hz, 16 bits.
    Status AddAudioStream(const MediaFormat& format);

    // For a source whose sound is known late, before the first sound is written. What is not above
    // 0 stays as it is.
    Status SetAudioFormat(int32_t stream, int32_t rate, int32_t channels, int32_t bits);
    // Replaces the bitmap header of a "vids" stream. `block` begins with its length. Its length can
    // change only before the first frame.
    Status SetVideoFormat(int32_t stream, std::span<const uint8_t> block);

    // Appends a frame or a piece of sound. Refused also when the file has reached its limit. What
    // was written before stays good after a failure.
    Status WriteFrame(int32_t stream, std::span<const uint8_t> data);
    // Writes indexes and headers and closes the reference file; the first failure of these. An
    // index that cannot be written is left out. Done once; later calls give the same answer.
    Status Finish();

private:
    bool Has(uint32_t flag) const { return fStructure.flags & flag; }
    AVIStream* StreamAt(int32_t index);
    bool CanAddStream() const;
    Status ReserveHeaders();
    Status PutHeaders();
    bool RiffOverflows(size_t size) const;
    bool IsFull(size_t size) const;
    bool SegmentIsFull(size_t size) const;
    Status PutFrame(AVIStream& stream, std::span<const uint8_t> data, Chunk*& chunk);
    Status WriteReference(const AVIStream& stream, std::span<const uint8_t> frame,
                          Bytes& reference);
    uint32_t PaddingBehind(size_t size) const;
    void Count(AVIStream& stream, const FrameEntry& chunk, size_t frame_size);
    Status WriteEnd();

    AVIStructure& fStructure;
    FileHandle fFile;
    std::string fPath;
    AVILimits fLimits;
    AVILayout fLayout;
    AVIAppender fAppender;
    AVIIndexWriter fIndexes;
    std::optional<ReferenceOutput> fReferences;
    uint64_t fTotal = 0;  // bytes of media with the reserved headers
    bool fReserved = false;
    std::optional<Status> fFinished;
};

}  // namespace kelvane
