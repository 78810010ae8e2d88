#include "media/quicktime/structure/qt_sample_tables.h"

#include <algorithm>

#include "base/saturating.h"

namespace kelvane {

namespace {

// Entries of a table behind version, flags and, at `at`, a count.
size_t EntryCount(ByteReader& in, size_t entry_bytes)
{
    const size_t claimed = in.Get32();
    return std::min(claimed, in.Left() / entry_bytes);
}

constexpr size_t kFirstAllocation = 2000;

uint32_t MostFrequentDuration(std::vector<QTTimeToSample> times)
{
    std::ranges::sort(times, {}, &QTTimeToSample::duration);
    uint64_t samples = 0, most = 0;
    uint32_t duration = 0, usual = 0;
    for (const QTTimeToSample& entry : times) {
        if (entry.duration == 0) continue;
        samples = entry.duration == duration ? samples + entry.count : entry.count;
        duration = entry.duration;
        if (samples <= most) continue;
        most = samples;
        usual = duration;
    }
    return usual;
}

}  // namespace

void QTSampleTables::LoadTimes(std::span<const uint8_t> stts)
{
    ByteReader in(stts, ByteOrder::kBig);
    in.Skip(4);
    times.resize(EntryCount(in, 8));
    fSamples = fDuration = fTimesAt = fTimesFirst = 0;
    for (QTTimeToSample& entry : times) {
        entry.count = in.Get32();
        entry.duration = in.Get32();
        fSamples += entry.count;
        fDuration += uint64_t{entry.count} * entry.duration;
    }
    fUsualDuration = MostFrequentDuration(times);
}

void QTSampleTables::LoadSyncSamples(std::span<const uint8_t> stss)
{
    ByteReader in(stss, ByteOrder::kBig);
    in.Skip(4);
    sync_samples.resize(EntryCount(in, 4));
    for (uint32_t& sample : sync_samples)
        sample = in.Get32();
}

void QTSampleTables::LoadChunkRuns(std::span<const uint8_t> stsc)
{
    ByteReader in(stsc, ByteOrder::kBig);
    in.Skip(4);
    chunk_runs.resize(EntryCount(in, 12));
    fRuns.clear();
    for (QTSampleToChunk& entry : chunk_runs) {
        entry.first_chunk = in.Get32();
        entry.samples = in.Get32();
        entry.description = in.Get32();
        Run run{0, std::max(entry.first_chunk, 1u), entry.samples, entry.description};
        if (fRuns.empty()) {
            run.first_chunk = 1;
        } else {
            const Run& last = fRuns.back();
            if (run.first_chunk <= last.first_chunk) continue;  // out of order
            run.first_sample =
                last.first_sample + uint64_t{run.first_chunk - last.first_chunk} * last.samples;
            if (run.first_sample < last.first_sample) break;  // more samples than can be counted
        }
        fRuns.push_back(run);
    }
}

void QTSampleTables::LoadSizes(std::span<const uint8_t> stsz)
{
    ByteReader in(stsz, ByteOrder::kBig);
    in.Skip(4);
    sample_size = in.Get32();
    sample_count = in.Get32();
    sizes.clear();
    if (sample_size != 0) return;
    sizes.resize(std::min<size_t>(sample_count, in.Left() / 4));
    for (uint32_t& size : sizes)
        size = in.Get32();
}

void QTSampleTables::LoadOffsets(std::span<const uint8_t> body, size_t offset_bytes)
{
    ByteReader in(body, ByteOrder::kBig);
    in.Skip(4);
    const uint64_t claimed = ByteReader(in).Get32();
    offsets.resize(EntryCount(in, offset_bytes));
    fLacksChunks = offsets.size() < claimed;
    for (uint64_t& offset : offsets)
        offset = in.Get(offset_bytes);
}

void QTSampleTables::Begin(uint32_t duration, uint32_t size)
{
    times.assign(1, {0, duration});
    fUsualDuration = duration;
    fGrowing = true;
    sample_size = size;
    offsets.reserve(kFirstAllocation);
    if (size == 0) sizes.reserve(kFirstAllocation);
}

void QTSampleTables::AddSample(uint64_t offset, uint32_t size)
{
    sizes.push_back(size);
    AddChunk(offset, 1);
}

void QTSampleTables::AddChunk(uint64_t offset, uint32_t samples)
{
    offsets.push_back(offset);
    // Chunks of equal length share the entry of the first of them.
    if (chunk_runs.empty() || LastRunSamples() != samples)
        chunk_runs.push_back({static_cast<uint32_t>(offsets.size()), samples, 1});
    fSamples += samples;
}

void QTSampleTables::DropLastChunk()
{
    if (offsets.empty() || chunk_runs.empty()) return;
    const uint32_t samples = LastRunSamples();
    if (chunk_runs.back().first_chunk == offsets.size()) chunk_runs.pop_back();
    offsets.pop_back();
    fSamples -= samples;
    if (sample_size == 0) sizes.resize(sizes.size() - std::min<size_t>(samples, sizes.size()));
}

void QTSampleTables::Finish()
{
    times.resize(1);
    times[0].count = static_cast<uint32_t>(fSamples);
    sample_count = sample_size ? times[0].count : static_cast<uint32_t>(sizes.size());
}

bool QTSampleTables::HasOneDuration() const
{
    return times.size() == 1 || (times.size() == 2 && times[1].count == 1);
}

uint32_t QTSampleTables::SampleSize(uint64_t sample) const
{
    if (sample_size != 0) return sample_size;
    if (sizes.empty()) return 0;
    return sizes[static_cast<size_t>(std::min<uint64_t>(sample, sizes.size() - 1))];
}

uint32_t QTSampleTables::SampleDuration(uint64_t sample)
{
    if (times.empty()) return 0;
    if (sample < fTimesFirst) fTimesAt = fTimesFirst = 0;
    while (fTimesAt + 1 < times.size() && sample - fTimesFirst >= times[fTimesAt].count)
        fTimesFirst += times[fTimesAt++].count;
    return times[fTimesAt].duration;
}

bool QTSampleTables::FindSample(uint64_t sample, QTSamplePlace& place)
{
    const auto after =
        std::upper_bound(fRuns.begin(), fRuns.end(), sample,
                         [](uint64_t s, const Run& r) { return s < r.first_sample; });
    if (after == fRuns.begin()) return false;
    const Run& run = *std::prev(after);
    if (run.samples == 0 || (sample_size == 0 && sample >= sizes.size())) return false;
    const uint64_t chunk = run.first_chunk + (sample - run.first_sample) / run.samples;
    if (chunk > offsets.size()) return false;
    const uint64_t first = sample - (sample - run.first_sample) % run.samples;

    uint64_t from = first, within = 0;
    if (sample_size != 0) {
        within = SaturatingMultiply(sample - first, sample_size);
        from = sample;
    } else if (fLastFirst == first && fLastSample <= sample) {
        from = fLastSample;
        within = fLastOffset;
    }
    for (; from < sample; from++)  // 32-bit sizes of fewer than 2^32 samples
        within += sizes[static_cast<size_t>(from)];
    fLastSample = sample;
    fLastFirst = first;
    fLastOffset = within;

    place = {};
    place.chunk = static_cast<uint32_t>(chunk);
    place.description = run.description;
    place.offset = SaturatingAdd(offsets[static_cast<size_t>(chunk - 1)], within);
    return true;
}

bool QTSampleTables::FindChunk(uint64_t chunk, QTSamplePlace& place) const
{
    if (chunk < 1 || chunk > offsets.size() || fRuns.empty()) return false;
    const auto after = std::upper_bound(fRuns.begin(), fRuns.end(), chunk,
                                        [](uint64_t c, const Run& r) { return c < r.first_chunk; });
    const Run& run = *std::prev(after);  // the first run begins at chunk 1
    place.offset = offsets[static_cast<size_t>(chunk - 1)];
    place.samples = run.samples;
    place.first_sample = SaturatingAdd(run.first_sample, (chunk - run.first_chunk) * run.samples);
    place.chunk = static_cast<uint32_t>(chunk);
    place.description = run.description;
    return true;
}

}  // namespace kelvane
