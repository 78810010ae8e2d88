#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/status.h"
#include "format/media_format.h"
#include "media/quicktime/structure/qt_limits.h"
#include "media/quicktime/structure/qt_movie.h"
#include "platform/files/positioned_file.h"

namespace kelvane {

// The writing side of QTFile. The media go to the file as they come, the movie is kept in memory
// until the end. Streams are those of the movie.
class QTWriter {
public:
    // Both outlive the writer.
    QTWriter(QTMovie& movie, PositionedFile& file);
    QTWriter(const QTWriter&) = delete;
    QTWriter& operator=(const QTWriter&) = delete;

    // Begins the file and the movie. Called once, before all else; where it fails nothing else is.
    Status Begin();
    // As those of QTFile.
    void SetOptions(uint32_t options, const char* information);
    Status AddVideoTrack(const MediaFormat& format);
    Status AddEncodedVideoTrack(const MediaFormat& format);
    Status AddPCMAudioTrack(const MediaFormat& format);
    Status AddAudioTrack(const MediaFormat& format);
    Status SetAudioFormat(const QTStream& stream, int32_t rate, int32_t channels, int32_t bits);
    Status WriteFrame(const QTStream& stream, const void* data, uint32_t size);
    Status Close();

    // Of files with 32-bit offsets; tests make it small.
    void SetNarrowLimit(uint64_t bytes) { fNarrowLimit = bytes; }
    // Lets the next media begin `bytes` further on.
    void LeaveHole(uint64_t bytes) { fMediaEnd += bytes; }

private:
    Status AddVideo(const MediaFormat& format);
    Status AddSound(const MediaFormat& format, const RawAudioFormat& sound);
    Status WriteSound(QTTrack& track, const void* data, uint32_t size);
    Status WriteMedia(const void* data, uint32_t size, uint64_t& offset);
    Status WriteMovie(uint64_t start, uint64_t& size);
    Status WriteMovieOverMedia(uint64_t& end, uint64_t size);
    Status WriteMediaSize(uint64_t end);
    void GiveUpMedia(uint64_t from);

    QTMovie& fMovie;
    PositionedFile& fFile;
    uint32_t fOptions = 0;  // QTOption bits
    uint64_t fNarrowLimit = kNarrowQTLimit;
    uint64_t fMediaEnd = 0;         // byte behind the last media written
    std::vector<uint8_t> fSwapped;  // sound on its way to the file
    std::optional<Status> fClosed;
};

}  // namespace kelvane
