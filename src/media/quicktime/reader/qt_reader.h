#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/status.h"
#include "media/quicktime/reader/qt_salvage.h"
#include "media/quicktime/structure/qt_atoms.h"
#include "media/quicktime/structure/qt_movie.h"
#include "platform/files/file_handle.h"
#include "platform/files/positioned_file.h"
#include "platform/files/volume_table.h"

namespace kelvane {

// The reading side of QTFile. Streams are those of the movie.
class QTReader {
public:
    // The movie is empty. All three outlive the reader.
    QTReader(QTMovie& movie, PositionedFile& file, const VolumeTable& volumes);
    QTReader(const QTReader&) = delete;
    QTReader& operator=(const QTReader&) = delete;

    // Fills the movie from the file: as QTFile::InitCheck(). Called once, before all else.
    Status Parse();
    const QTSalvage& Salvaged() const { return fSalvage; }
    // As those of QTFile.
    uint64_t FrameSize(const QTStream& stream, int64_t frame);
    Status SeekFrame(QTStream& stream, int64_t frame);
    Status ReadFrame(QTStream& stream, std::span<uint8_t> buffer, uint32_t& size);

private:
    Status ParseMovieAtom(const AtomHead& head);
    Status Salvage(uint64_t media, uint64_t end);
    void AddStreams();
    Status ReadVideo(QTStream& stream, std::span<uint8_t> buffer, uint32_t& size);
    Status ReadSound(QTStream& stream, std::span<uint8_t> buffer, uint32_t& size);
    Status ReadMedia(const QTStream& stream, const QTSamplePlace& place, uint64_t bytes,
                     std::span<uint8_t> buffer, uint32_t& size);
    Status OpenMedia(const QTStream& stream, const QTSamplePlace& place, FileHandle& file);

    QTMovie& fMovie;
    PositionedFile& fFile;
    const VolumeTable& fVolumes;
    QTSalvage fSalvage;
    // Other files that media lie in, by track and data reference; opened when first read from.
    std::vector<std::vector<FileHolder>> fExternalFiles;
};

}  // namespace kelvane
