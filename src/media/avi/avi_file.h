#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "base/status.h"
#include "format/media_format.h"
#include "media/avi/structure/avi_references.h"
#include "media/avi/structure/avi_structure.h"
#include "media/avi/writer/avi_writer.h"
#include "platform/files/file_access.h"
#include "platform/files/file_handle.h"

namespace kelvane {

// An AVI file, read or written. It reads all dialects: Type 1 ("iavs") and Type 2 DV, OpenDML files
// of several RIFFs, "idx1" that counts from the file's start or from "movi", and frames that are
// references into other files. It writes the same, by the flags of AVIFlag. For one thread at
// a time.
//
// A source is parsed by the constructor. A destination is begun with BeginDVAVI, or with BeginAVI
// and a call for each stream; its true headers are written by Finish, or by the destructor.
class AVIFile {
public:
    // `mode` is a FileMode; a source may add kAVIListMedia, for a dump. kDescribe stops the parsing
    // at the first frame and builds no frame tables. An existing destination is replaced.
    AVIFile(const char* path, uint32_t mode);
    ~AVIFile();
    AVIFile(const AVIFile&) = delete;
    AVIFile& operator=(const AVIFile&) = delete;

    // kOK; kError: cannot be opened, for the reason given; kNotThisClass: the first chunk is no
    // "RIFF" "AVI "; kCorrupted: a list of size 0 in its headers, or frames held for more than 24
    // hours. A truncated file is usable as far as it goes.
    Status InitCheck() const { return fInitCheck; }
    // What the system said where it could not read something of the structure of a file that is
    // usable all the same; kOK otherwise.
    Status Trouble() const { return fTrouble; }
    // The same of its header, so that streams may be there that nobody knows of.
    Status HeaderTrouble() const { return fHeaderTrouble; }

    int32_t CountStreams() const { return static_cast<int32_t>(fStructure.streams.size()); }
    // Null past the end.
    AVIStream* StreamAt(int32_t index);
    const AVIStream* StreamAt(int32_t index) const;
    // As AVIStream::Handler; 0 when there is no such stream.
    uint32_t StreamHandler(int32_t index) const;
    // Kind 0 for a stream that is neither sound nor a picture that is understood. The private data
    // of an encoded format is what follows the bitmap header and lives as long as this object.
    void StreamFormat(int32_t index, MediaFormat& format) const;
    // The first of streams 0 to 3 that is "vids" or "iavs", and that is "auds"; -1 if none is.
    int32_t VideoStream() const;
    int32_t AudioStream() const;

    // Frames, or pieces of sound, that the file promises: those of which it is known where they
    // are, and behind them those of video that only a lost index knew.
    int64_t CountFrames(int32_t stream) const;
    // True when some frames are in no index and were found by a walk of the file.
    bool WasWalked() const;
    // Frames of a stream that the walk found because the file is damaged: it broke off, or it had
    // an index that does not name them. A file that never had an index is whole without.
    uint64_t FramesSalvaged(int32_t stream) const;
    // File position of a frame's data, and its size in bytes; -1 if there is none.
    int64_t FrameOffset(int32_t stream, int64_t frame, uint32_t& size) const;
    // Bytes of a frame, or of a piece of sound; 0 if there is none.
    uint32_t FrameBytes(int32_t stream, int64_t frame) const;
    // Goes to a frame, or behind the last one. kError when there is no such place.
    Status SeekFrame(int32_t stream, int64_t frame);
    // Reads the stream's next frame, and moves on when that is kOK; of a frame that holds the one
    // before `size` is 0. A buffer of the stream's largest_frame bytes, and of at least 144000
    // where frames may be references, holds any.
    // - kEnd: behind the last frame of CountFrames.
    // - kMissing: it lies, also in part, beyond the end that the file has now.
    // - kUnread: the system could not read it, for the reason given.
    // - kTooLarge: the buffer holds its first bytes, and `size` is the buffer's.
    // - kReferenceMissing: the file that it lies in cannot be opened, for the reason given.
    // - kError: no such stream, or a destination.
    // `size` is 0 on all failures but kTooLarge.
    Status ReadFrame(int32_t stream, std::span<uint8_t> buffer, uint32_t& size);
    // The frame that was captured in mode kDescribe; empty when there was none.
    std::span<const uint8_t> FirstFrame() const { return fStructure.first_frame; }

    // The destination's operations; see AVIWriter. kError for a source.
    Status BeginDVAVI(uint32_t flags, uint32_t handler, int32_t audio_rate_code);
    Status BeginAVI(uint32_t flags);
    Status AddVideoStream(const MediaFormat& format);
    Status AddEncodedVideoStream(const MediaFormat& format);
    Status AddAudioStream(const MediaFormat& format);
    Status SetAudioFormat(int32_t stream, int32_t rate, int32_t channels, int32_t bits);
    Status SetVideoFormat(int32_t stream, std::span<const uint8_t> block);
    Status WriteFrame(int32_t stream, const void* data, int32_t size);
    // Writes what is due at the end and closes all files; the first failure of these. The
    // destructor does it otherwise, but cannot tell that it failed. Done once; later calls give the
    // same answer. kOK for a source.
    Status Finish();
    // Frames of a stream, or pieces of sound, that stand whole in the destination, after Finish
    // too.
    int64_t FramesWritten(int32_t stream) const;
    // Before the destination is begun.
    void SetLimits(const AVILimits& limits);

    // All chunks, for a dump.
    const ChunkTree& Chunks() const { return fStructure.tree; }

private:
    void OpenSource(const char* path);
    int32_t FirstStreamOf(bool audio) const;

    FileHolder fFile;
    uint32_t fMode;
    Status fInitCheck = kOK;
    Status fTrouble = kOK;
    Status fHeaderTrouble = kOK;
    AVIStructure fStructure;
    ReferencedFiles fReferenced;
    std::unique_ptr<AVIWriter> fWriter;  // of a destination
    std::optional<Status> fFinished;
};

}  // namespace kelvane
