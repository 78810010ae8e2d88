#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "base/status.h"
#include "format/media_format.h"
#include "format/sample_coding.h"
#include "media/quicktime/reader/qt_edits.h"
#include "media/quicktime/reader/qt_reader.h"
#include "media/quicktime/structure/qt_formats.h"
#include "media/quicktime/structure/qt_movie.h"
#include "media/quicktime/writer/qt_writer.h"
#include "platform/files/file_access.h"
#include "platform/files/positioned_file.h"
#include "platform/files/volume_table.h"

namespace kelvane {

// Reads or writes a QuickTime movie (QuickTime File Format).
//
// A source is parsed by the constructor: only heads of atoms and the "moov" are read, never the
// media. Streams are its video and sound tracks in order. Video is read by frame, sound by chunk.
// Without a whole "moov" the media are searched for the DV frames of a capture that broke off.
//
// A destination takes tracks, then frames and blocks of sound in any order; all media go into one
// "mdat" from byte 16 on, and the "moov" is written behind it by Close() or the destructor. Until
// then the file has no header. For one thread at a time.
class QTFile {
public:
    // `mode` is a FileMode; update reads. References to other files are looked up in `volumes`.
    QTFile(const char* path, uint32_t mode, const VolumeTable& volumes = VolumeTable::System());
    ~QTFile();
    QTFile(const QTFile&) = delete;
    QTFile& operator=(const QTFile&) = delete;

    // 0; -1 not opened, or its headers could not be read; -2 no "moov" and no DV frames; -11 a
    // "moov" too large to be one.
    Status InitCheck() const { return fInitCheck; }
    // What was found without a whole "moov".
    QTSalvage Salvaged() const { return fReader ? fReader->Salvaged() : QTSalvage{}; }
    const std::string& Path() const { return fPath; }

    // -- Streams. A stream that does not exist answers 0 or an unknown format.
    int32_t CountStreams() const { return static_cast<int32_t>(fMovie.streams.size()); }
    // A video stream, whether its format is known or not; all others are sound.
    bool IsVideo(int32_t stream) const;
    MediaFormat StreamFormat(int32_t stream) const;
    // How the samples lie in what ReadFrame gives of a sound stream; not supported for what is
    // neither PCM nor float.
    SampleCoding SoundCoding(int32_t stream) const;
    // Data format of the first sample description, first character in the top byte.
    uint32_t TrackCodec(int32_t stream) const;
    // Microseconds.
    int64_t Duration(int32_t stream) const;
    // Frames of video, sample frames of sound.
    int64_t SampleCount(int32_t stream) const;
    int64_t ChunkCount(int32_t stream) const;
    // Which samples of a video stream stand for the frames of a film of this format; the first one
    // for `held` frames more.
    QTPictureTimes PictureTimes(int32_t stream, const MediaFormat& format, uint64_t held) const;
    // How a video stream of this format and a sound stream (-1: there is none) begin together.
    QTStart Start(int32_t video, const MediaFormat& format, int32_t sound) const;

    // -- Reading. A destination answers 0 or -1.
    // Bytes of a frame of video, or of a chunk of sound (from 0). A frame beyond the table has the
    // size of the last one; a chunk that does not exist or that the file cannot hold has 0.
    uint64_t FrameSize(int32_t stream, int64_t frame);
    // Goes to a frame of video or a chunk of sound, from 0; the place behind the last is allowed.
    Status SeekFrame(int32_t stream, int64_t frame);
    // What the next read gives: the frame, for sound the chunk from 0.
    int64_t FramePosition(int32_t stream) const;
    // For the dump: the sample (from 0) and chunk (from 1) that stand next.
    int64_t CurrentSample(int32_t stream) const;
    int64_t CurrentChunk(int32_t stream) const;
    // Reads the next frame or chunk and moves past it. Sound of 16 bits is little-endian. Only kOK
    // moves; who goes on behind a failure seeks. kEnd; kMissing when the place is beyond the tables
    // or beyond the end of the file as it is now; kUnread when the system failed; kReferenceMissing
    // when the media lie in another file that cannot be opened. `size` is then 0. kTooLarge when
    // the buffer is too small; it is then full of the first bytes.
    Status ReadFrame(int32_t stream, std::span<uint8_t> buffer, uint32_t& size);

    // -- Writing. All answer -1 on a source.
    // Options as QTOption bits, before any track; `information` replaces the movie's "\xA9" "inf"
    // text unless it is null.
    void SetOptions(uint32_t options, const char* information);
    // Add a track; 0, or -10 for a format that these files cannot hold. The first two take raw and
    // encoded pictures, AddDVTrack the DV format of a television system.
    Status AddVideoTrack(const MediaFormat& format);
    Status AddEncodedVideoTrack(const MediaFormat& format);
    Status AddDVTrack(bool pal);
    // Sound is stored big-endian ("twos") or as u-law or IMA4. A track without channels is not
    // added, which is no error. -10 for other codings and for rates beyond 65535 hertz.
    Status AddPCMAudioTrack(const MediaFormat& format);
    Status AddAudioTrack(const MediaFormat& format);
    // Of files with 32-bit offsets, in place of 4 GB.
    void SetNarrowLimit(uint64_t bytes);
    // Replaces rate (hertz), channels and bits of a sound track that holds no sound yet; a value
    // below 1 leaves the old one. -1 for any other stream.
    Status SetAudioFormat(int32_t stream, int32_t rate, int32_t channels, int32_t bits);
    // Appends a frame, or a block of little-endian sound. What could not be written whole is not
    // part of the movie. -1 for what would end beyond 4 GB in a file with 32-bit offsets.
    Status WriteFrame(int32_t stream, const void* data, uint32_t size);
    // Writes the "moov" and the size of the "mdat" and closes the file. On a full disk the movie
    // gives up its last megabyte of media, or as many as a larger "moov" takes, so that a file with
    // a header remains; the status is that of the write that failed all the same. SampleCount()
    // then says what the file really holds: nothing where even that failed. Further calls answer
    // the same; the destructor closes and cannot tell.
    Status Close();

    // The whole image, as read or as written so far.
    const QTMovie& Movie() const { return fMovie; }

protected:
    // Lets the next media begin `bytes` further on, behind a hole: files beyond 4 GB for tests. Of
    // a destination.
    void LeaveHole(uint64_t bytes) { fWriter->LeaveHole(bytes); }

private:
    // Null when there is none.
    const QTStream* StreamAt(int32_t index) const;
    QTStream* StreamAt(int32_t index);

    std::string fPath;
    PositionedFile fFile;
    Status fInitCheck = kError;
    QTMovie fMovie;
    std::optional<QTReader> fReader;  // of a source
    std::optional<QTWriter> fWriter;  // of a destination
};

// True when the first 100 bytes look like a movie: one of the atoms that begin such files, or a
// movie atom behind a head of another kind.
bool IsQuickTimeFile(const char* path);

}  // namespace kelvane
