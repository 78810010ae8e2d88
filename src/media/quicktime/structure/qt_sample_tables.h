#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/byte_cursor.h"
#include "media/quicktime/structure/qt_atoms.h"
#include "media/quicktime/structure/qt_fields.h"

namespace kelvane {

// One entry of a "stsd": video or sound, told by the table behind `fields`.
struct QTSampleDescription {
    explicit QTSampleDescription(std::span<const HeaderField> table) : fields(table) {}

    AtomFields fields;                  // the fixed part, head included
    uint8_t field_count = 0;            // video, "fiel": 0 when there is none
    uint8_t field_detail = 0;           // video, "fiel": order of the fields
    uint32_t gamma = 0;                 // video, "gama": fixed 16.16, 0 when there is none
    Bytes colour_table;                 // video: body of a "ctab"
    AtomFields packets{kSoundPackets};  // sound of version 1 or compression id -2
    AtomFields wide{kWideSound};        // sound of version 2
    Bytes extension;                    // sound: body of the atom behind these
    bool little_endian = false;         // sound: "enda" in a "wave"
};

struct QTTimeToSample {
    uint32_t count;
    uint32_t duration;  // in units of the media's time scale
};

struct QTSampleToChunk {
    uint32_t first_chunk;  // from 1
    uint32_t samples;      // in each chunk
    uint32_t description;  // from 1
};

// Where a sample or a chunk lies.
struct QTSamplePlace {
    uint64_t offset = 0;        // in the file that holds the media
    uint64_t samples = 0;       // chunks only: samples in it
    uint64_t first_sample = 0;  // chunks only: from 0
    uint32_t chunk = 0;         // from 1
    uint32_t description = 0;   // from 1, as the file has it
};

// The sample tables of a track ("stbl"), filled by a parser or by a growing destination. Samples
// count from 0, chunks from 1. A table that contradicts itself or ends early yields places only as
// far as it goes; no number leads outside a table.
class QTSampleTables {
public:
    // Fill one table from the body of its atom. A count beyond the body is cut to what is there.
    void LoadTimes(std::span<const uint8_t> stts);
    void LoadSyncSamples(std::span<const uint8_t> stss);
    void LoadChunkRuns(std::span<const uint8_t> stsc);
    void LoadSizes(std::span<const uint8_t> stsz);
    void LoadOffsets(std::span<const uint8_t> body, size_t offset_bytes);  // 4 "stco", 8 "co64"

    // Start the tables of a destination: every sample lasts `duration`; a `size` other than 0
    // is that of all samples.
    void Begin(uint32_t duration, uint32_t size);
    // One sample in a chunk of its own.
    void AddSample(uint64_t offset, uint32_t size);
    // A chunk of samples of constant size.
    void AddChunk(uint64_t offset, uint32_t samples);
    void DropLastChunk();
    // Sets the counts that are known only at the end.
    void Finish();

    uint64_t SampleCount() const { return fSamples; }
    uint64_t ChunkCount() const { return offsets.size(); }
    // In units of the media's time scale.
    uint64_t Duration() const { return fGrowing ? fSamples * times[0].duration : fDuration; }
    // The duration that most samples have, of those that have one; of two the smaller. 0 when none
    // has one.
    uint32_t UsualDuration() const { return fUsualDuration; }
    // True when all samples last equally long, but for the last one.
    bool HasOneDuration() const;
    // Bytes; beyond the table the size of its last sample.
    uint32_t SampleSize(uint64_t sample) const;
    // Like the size; cheap for samples in rising order, as FindSample is.
    uint32_t SampleDuration(uint64_t sample);
    // True when the chunk offsets are fewer than their table claims.
    bool LacksChunks() const { return fLacksChunks; }
    // The byte of the file where a sample begins. Cheap for samples in rising order. Where the
    // numbers add up to more than any file has, the place is the largest number.
    [[nodiscard]] bool FindSample(uint64_t sample, QTSamplePlace& place);
    [[nodiscard]] bool FindChunk(uint64_t chunk, QTSamplePlace& place) const;

    std::vector<QTSampleDescription> descriptions;
    std::vector<QTTimeToSample> times;
    std::vector<uint32_t> sync_samples;  // from 1
    std::vector<QTSampleToChunk> chunk_runs;
    uint32_t sample_size = 0;   // bytes of every sample; 0: see `sizes`
    uint32_t sample_count = 0;  // as "stsz" has it
    std::vector<uint32_t> sizes;
    std::vector<uint64_t> offsets;

private:
    // An entry of chunk_runs that rises, with the sample it begins at.
    struct Run {
        uint64_t first_sample;
        uint32_t first_chunk, samples, description;
    };

    uint32_t LastRunSamples() const { return chunk_runs.empty() ? 0 : chunk_runs.back().samples; }

    std::vector<Run> fRuns;
    uint64_t fSamples = 0;   // in all: by "stts", or written so far
    uint64_t fDuration = 0;  // of a source
    uint32_t fUsualDuration = 0;
    bool fGrowing = false;  // a destination
    bool fLacksChunks = false;
    // The last sample found and its offset within its chunk.
    uint64_t fLastSample = 0, fLastFirst = UINT64_MAX, fLastOffset = 0;
    // The entry of `times` last used and the sample it begins at.
    size_t fTimesAt = 0;
    uint64_t fTimesFirst = 0;
};

}  // namespace kelvane
