#include "media/avi/writer/avi_writer.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "base/status.h"
#include "dv/audio_rates.h"

namespace kelvane {

namespace {

constexpr uint32_t kListHeadSize = 12;
constexpr uint32_t kMatroxSector = 512;
// Kept free in a file of one RIFF, for its last indexes.
constexpr uint64_t kRiffMargin = 1 << 20;

}  // namespace

AVIWriter::AVIWriter(AVIStructure& structure, FileHandle file, const std::string& path)
    : fStructure(structure),
      fFile(file),
      fPath(path),
      fLayout(structure),
      fAppender(structure, file),
      fIndexes(structure, fAppender, fLimits)
{
}

AVIStream* AVIWriter::StreamAt(int32_t index)
{
    return index >= 0 && static_cast<size_t>(index) < fStructure.streams.size()
               ? &fStructure.streams[static_cast<size_t>(index)]
               : nullptr;
}

Status AVIWriter::BeginDVAVI(uint32_t flags, uint32_t handler, int32_t audio_rate_code)
{
    const auto rate = static_cast<size_t>(audio_rate_code);
    if (rate >= std::size(kAudioRates) || BeginAVI(flags) != kOK) return kError;
    if (handler == 0 || handler == "dsvd"_4cc) handler = "dvsd"_4cc;
    if (Has(kAVIType1)) {
        fLayout.AddDVStream(handler, Has(kAVIPAL));
    } else {
        fLayout.AddDVPictureStream(handler);
        fLayout.AddSoundStream({kSamplePCM, 2, 16, static_cast<int32_t>(kAudioRates[rate].rate)});
    }
    return kOK;
}

Status AVIWriter::BeginAVI(uint32_t flags)
{
    if (fStructure.riff || fFinished) return kError;
    fLayout.Begin(flags);
    if (Has(kAVIReference))
        fReferences.emplace(fPath, fLimits.reference_file, fLimits.reference_files);
    return kOK;
}

bool AVIWriter::CanAddStream() const
{
    return fStructure.riff && !fReserved && !fFinished;
}

Status AVIWriter::AddVideoStream(const MediaFormat& format)
{
    if (!CanAddStream()) return kError;
    if (Has(kAVIReference)) return kFormatNotSupported;
    BitmapHeader header{.width = 720, .height = 576, .bit_count = 32, .size_image = 720 * 576 * 4};
    if (format.kind == kRawVideo) ToBitmapHeaderRaw(format, header);
    // Rows of 24 bits are padded.
    if (header.bit_count == 24)
        header.size_image = (static_cast<uint32_t>(header.width) * 3 + 3) / 4 * 4 *
                            static_cast<uint32_t>(header.height);
    fLayout.AddPictureStream(header, static_cast<double>(format.FrameRate()));
    return kOK;
}

Status AVIWriter::AddEncodedVideoStream(const MediaFormat& format)
{
    if (!CanAddStream() || format.kind != kEncodedVideo) return kError;
    const EncodedVideoFormat& view = format.encoded_video;
    if (format.IsDV25()) {
        fLayout.AddDVStream("CDVC"_4cc, view.h == kPAL.height);
        return kOK;
    }
    if (Has(kAVIReference)) return kFormatNotSupported;
    BitmapHeader header;
    ToBitmapHeaderEncoded(format, header);
    std::span<const uint8_t> codec_data;
    if (view.private_data) codec_data = {view.private_data, view.private_size};
    fLayout.AddPictureStream(header, static_cast<double>(format.FrameRate()), codec_data);
    return kOK;
}

Status AVIWriter::AddAudioStream(const MediaFormat& format)
{
    if (!CanAddStream()) return kError;
    RawAudioFormat sound = {kSamplePCM, 2, 16, 44100};
    if (format.kind == kRawAudio) {
        const RawAudioFormat& view = format.raw_audio;
        if (view.format != kSampleUnknown) sound.format = view.format;
        if (view.srate > 0) sound.srate = view.srate;
        if (view.ch > 0) sound.ch = view.ch;
        if (view.bitspersample > 0) sound.bitspersample = view.bitspersample;
    }
    fLayout.AddSoundStream(sound);
    return kOK;
}

Status AVIWriter::SetAudioFormat(int32_t index, int32_t rate, int32_t channels, int32_t bits)
{
    AVIStream* stream = StreamAt(index);
    if (!stream || !stream->IsAudio() || fFinished) return kError;
    fLayout.SetAudioFormat(*stream, rate, channels, bits);
    return kOK;
}

Status AVIWriter::SetVideoFormat(int32_t index, std::span<const uint8_t> block)
{
    AVIStream* stream = StreamAt(index);
    if (!stream || !stream->IsVideo() || fFinished) return kError;
    return fLayout.SetVideoFormat(*stream, block, fReserved);
}

Status AVIWriter::WriteFrame(int32_t index, std::span<const uint8_t> data)
{
    AVIStream* stream = StreamAt(index);
    if (!stream || data.empty() || fFinished || IsFull(data.size())) return kError;
    if (!fReserved) {
        const Status reserved = ReserveHeaders();
        if (reserved != kOK) return reserved;
    }
    const size_t frame_size = data.size();
    Bytes reference;
    if (fReferences && !stream->IsAudio()) {
        const Status written = WriteReference(*stream, data, reference);
        if (written != kOK) return written;
        data = reference;
    }
    const uint32_t indexes = fIndexes.Count();
    Chunk* chunk = nullptr;
    Status status = PutFrame(*stream, data, chunk);
    if (status != kOK) return status;
    Count(*stream, {chunk->offset, static_cast<uint32_t>(data.size())}, frame_size);
    status = fIndexes.AfterChunk(*stream);
    const bool news = stream->chunks == 1 || fIndexes.Count() > indexes;
    return news ? FirstFailure(status, PutHeaders()) : status;
}

// Those of the end, as far as they are known by now.
Status AVIWriter::PutHeaders()
{
    fLayout.Finish();
    return fAppender.PutHeaders();
}

Status AVIWriter::PutFrame(AVIStream& stream, std::span<const uint8_t> data, Chunk*& chunk)
{
    Status status = fIndexes.BeforeChunk(stream, data.size());
    if (status == kOK && SegmentIsFull(data.size())) status = fAppender.PutSegment();
    if (status != kOK) return status;
    return fAppender.Put(stream.chunk_tag, data, fAppender.Media(), chunk,
                         PaddingBehind(data.size()));
}

Status AVIWriter::ReserveHeaders()
{
    const uint32_t bytes = fLayout.Settle() + kListHeadSize;
    const Status status = fAppender.Reserve(bytes);
    if (status != kOK) return status;
    fTotal = bytes;
    fReserved = true;
    return kOK;
}

// What stands in the current RIFF, with a chunk more and the "idx1" that may come, reaches beyond
// the 32 bits of its size field.
bool AVIWriter::RiffOverflows(size_t size) const
{
    uint64_t chunks = 1;
    for (const AVIStream& stream : fStructure.streams)
        chunks += stream.frames.Count();
    const uint64_t bytes = fAppender.End() - fAppender.RiffStart() + size;
    return bytes + chunks * kOldIndexEntry.Size() + kRiffMargin >
           std::numeric_limits<uint32_t>::max();
}

// A file of one RIFF has its limit, and none takes a chunk that no RIFF could hold.
bool AVIWriter::IsFull(size_t size) const
{
    if (size > std::numeric_limits<int32_t>::max()) return true;
    return !Has(kAVISegments) && (fTotal > fLimits.only_riff || RiffOverflows(size));
}

bool AVIWriter::SegmentIsFull(size_t size) const
{
    if (!Has(kAVISegments)) return false;
    return RiffOverflows(size) ||
           (fStructure.segments.empty() ? fTotal > fLimits.first_riff
                                        : fStructure.segments.back().bytes > fLimits.later_riff);
}

Status AVIWriter::WriteReference(const AVIStream& stream, std::span<const uint8_t> frame,
                                 Bytes& reference)
{
    Reference made;
    const Status status = fReferences->Write(stream.chunk_tag, frame, made);
    if (status != kOK) return status;
    made.frame = static_cast<uint32_t>(stream.chunks);
    reference = BuildReference(made);
    return kOK;
}

// Bytes of the "JUNK" that brings a chunk and itself to a whole number of sectors; 0 for none.
uint32_t AVIWriter::PaddingBehind(size_t size) const
{
    const auto over = static_cast<uint32_t>(size % kMatroxSector);
    constexpr uint32_t kHeads = 16;
    return Has(kAVIMatrox) && over < kMatroxSector - kHeads ? kMatroxSector - kHeads - over : 0;
}

void AVIWriter::Count(AVIStream& stream, const FrameEntry& chunk, size_t frame_size)
{
    stream.chunks++;
    stream.largest_chunk = std::max(stream.largest_chunk, static_cast<int32_t>(chunk.size));
    stream.largest_frame = std::max(stream.largest_frame, static_cast<int32_t>(frame_size));
    stream.bytes += chunk.size;
    fTotal += chunk.size;
    if (fStructure.segments.empty()) {
        stream.chunks_in_first_riff++;
        stream.bytes_in_first_riff += chunk.size;
    } else {
        fStructure.segments.back().bytes += chunk.size;
    }
    stream.frames.Add(chunk);
}

Status AVIWriter::Finish()
{
    if (!fFinished) fFinished = fLayout.IsWhole() ? WriteEnd() : kOK;
    return *fFinished;
}

// Goes on after a failure, so that as much as possible of what was written can be read.
Status AVIWriter::WriteEnd()
{
    Status status = fAppender.CutTail();
    status = FirstFailure(status, fIndexes.FinishStreams());
    fLayout.Finish();
    // Behind several RIFFs an "idx1" would be in the wrong one; the Matrox dialect has it there.
    const bool old_index = Has(kAVIOldIndex) && (fStructure.segments.empty() || Has(kAVIMatrox));
    if (old_index) status = FirstFailure(status, fIndexes.WriteOldIndex());
    status = FirstFailure(status, fAppender.CutTail());
    fStructure.tree.Layout();
    status = FirstFailure(status, fStructure.tree.Flush(fFile));
    return fReferences ? FirstFailure(status, fReferences->Finish()) : status;
}

}  // namespace kelvane
