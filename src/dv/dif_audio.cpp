// Sound in and out of a DV frame: the audio side of DIFFrame.

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "dv/audio_concealment.h"
#include "dv/audio_positions.h"
#include "dv/audio_rates.h"
#include "dv/dif_frame.h"
#include "dv/twelve_bit.h"

namespace kelvane {

namespace {

constexpr size_t kSampleSize = 2;
constexpr size_t kPairSize = 3;  // two 12-bit codes
// Pairs of 12 bits that a frame's audio blocks hold for each position table.
constexpr size_t kPairsOfRow = (kDIFBlockSize - kAudioSamplesAt) / kPairSize;

struct Layout {
    size_t sequences;
    const PositionTable &first16, &second16, &first12, &second12;
    size_t Size() const { return sequences * kDIFSequenceSize; }
    // More pairs than this would reach into the video blocks.
    size_t Pairs() const { return kPairsOfRow * kAudioBlocks * sequences / 2; }
};
constexpr Layout kLayoutPAL = {kSequencesPAL, A16, B16, A12, B12};
constexpr Layout kLayoutNTSC = {kSequencesNTSC, NA16, NB16, NA12, NB12};

const Layout& LayoutFor(bool pal)
{
    return pal ? kLayoutPAL : kLayoutNTSC;
}

// What is missing of a short frame reads as zero.
std::vector<uint8_t> PaddedFrame(std::span<const uint8_t> bytes, size_t size)
{
    std::vector<uint8_t> padded(size);
    std::copy(bytes.begin(), bytes.end(), padded.begin());
    return padded;
}

void PutLittle(uint8_t* to, uint16_t value)
{
    to[0] = static_cast<uint8_t>(value);
    to[1] = static_cast<uint8_t>(value >> 8);
}

// Samples are big-endian in the frame and little-endian outside. Strides are bytes.
void CopyOut(const uint8_t* frame, PositionTable positions, uint8_t* samples, size_t stride)
{
    for (const uint32_t at : positions) {
        samples[0] = frame[at + 1];
        samples[1] = frame[at];
        samples += stride;
    }
}

void CopyIn(uint8_t* frame, PositionTable positions, const uint8_t* samples, size_t stride)
{
    for (const uint32_t at : positions) {
        frame[at] = samples[1];
        frame[at + 1] = samples[0];
        samples += stride;
    }
}

// The two channels of a pair; `stride` is in samples.
void ExpandPairs(const uint8_t* frame, PositionTable positions, uint32_t pairMask, uint16_t* values,
                 size_t stride)
{
    for (const uint32_t at : positions) {
        const uint32_t low = frame[at + 2];
        uint16_t* to = values;
        if (pairMask & 1) *to++ = Expand12(uint32_t{frame[at]} << 4 | low >> 4);
        if (pairMask & 2) *to = Expand12(uint32_t{frame[at + 1]} << 4 | (low & 15));
        values += stride;
    }
}

int16_t LittleSample(const uint8_t* from)
{
    return static_cast<int16_t>(from[0] | from[1] << 8);
}

void PutPair(uint8_t* to, const uint8_t* samples)
{
    const uint32_t first = Compress12(LittleSample(samples));
    const uint32_t second = Compress12(LittleSample(samples + kSampleSize));
    to[0] = static_cast<uint8_t>(first >> 4);
    to[1] = static_cast<uint8_t>(second >> 4);
    to[2] = static_cast<uint8_t>((first & 15) << 4 | (second & 15));
}

size_t Extract16(const uint8_t* frame, const Layout& layout, size_t samples, uint32_t mask,
                 uint8_t* out)
{
    const size_t stride = kSampleSize * static_cast<size_t>(std::popcount(mask & 3));
    uint8_t* to = out;
    if (mask & 1) {
        CopyOut(frame, layout.first16.first(samples), to, stride);
        to += kSampleSize;
    }
    if (mask & 2) CopyOut(frame, layout.second16.first(samples), to, stride);
    return samples * stride;
}

size_t Extract12(const uint8_t* frame, const Layout& layout, size_t samples, uint32_t mask,
                 uint8_t* out)
{
    const auto channels = static_cast<size_t>(std::popcount(mask & 15));
    uint16_t buffer[4 * kMaxSamplesPAL];
    ExpandPairs(frame, layout.first12.first(samples), mask & 3, buffer, channels);
    ExpandPairs(frame, layout.second12.first(samples), mask >> 2 & 3,
                buffer + std::popcount(mask & 3), channels);
    const std::span values(buffer, samples * channels);
    ConcealBadSamples(values, channels);
    for (size_t i = 0; i < values.size(); i++)
        PutLittle(out + kSampleSize * i, values[i]);
    return kSampleSize * values.size();
}

// Writes `count` groups of four samples. The pairs of channels 3 and 4 lie behind those of 1 and 2
// in PAL; in NTSC they take their place, and channels 3 and 4 keep what they held. Deliberate.
void EmbedPairs(uint8_t* frame, const Layout& layout, size_t count, std::span<const uint8_t> input)
{
    constexpr size_t kGroup = 4 * kSampleSize;
    const PositionTable& second = &layout == &kLayoutPAL ? layout.second12 : layout.first12;
    for (size_t i = 0; i < std::min(count, layout.Pairs()); i++) {
        uint8_t group[kGroup] = {};
        const size_t at = std::min(i * kGroup, input.size());
        std::copy_n(input.data() + at, std::min(kGroup, input.size() - at), group);
        PutPair(frame + layout.first12[i], group);
        PutPair(frame + second[i], group + 2 * kSampleSize);
    }
}

void EmbedSamples(uint8_t* frame, const Layout& layout, size_t count, size_t channels,
                  const uint8_t* input)
{
    const bool stereo = channels == 2;
    const size_t stride = stereo ? 2 * kSampleSize : kSampleSize;
    CopyIn(frame, layout.first16.first(count), input, stride);
    CopyIn(frame, layout.second16.first(count), stereo ? input + kSampleSize : input, stride);
}

// The AAUX source pack of `count` samples a channel. A count outside what AF_SIZE can say is
// written as its low bits. The sound is said to be unlocked.
Pack SourcePack(size_t count, bool pal, uint32_t rate, bool four)
{
    const AudioRate* row = FindAudioRate(rate);
    if (!row) {
        // Who embeds has chosen the rate already: this is an error of the program.
        printf("Impossible frequency??\n");
        exit(-1);
    }
    const auto frequency = static_cast<uint8_t>((row - kAudioRates) << 3);
    return {kPackAudioSource, static_cast<uint8_t>((count - row->For(pal).least) | 0xC0),
            static_cast<uint8_t>(four ? 0x30 : 0), static_cast<uint8_t>(pal ? 0xE0 : 0xC0),
            static_cast<uint8_t>(frequency | (four ? 1 : 0))};
}

// A pack of the same four data bytes as the video pack at `at`, whatever that really is.
Pack PackLike(uint8_t id, const uint8_t* frame, size_t at)
{
    return {id, frame[at + 1], frame[at + 2], frame[at + 3], frame[at + 4]};
}

// Of the first `written` sequences of all `sequences`.
void WriteAudioPacks(uint8_t* frame, size_t sequences, size_t written, const Pack& source)
{
    constexpr size_t kUsualRecDate = 458, kUsualRecTime = 463;  // third VAUX block, packs 11 and 12
    constexpr Pack kEmpty = {kNoPack, 0xFF, 0xFF, 0xFF, 0xFF};
    Pack packs[] = {source,
                    {kPackAudioSourceControl, 0x33, 0xCF, 0xA0, 0xFF},
                    PackLike(kPackAudioRecDate, frame, kUsualRecDate),
                    PackLike(kPackAudioRecTime, frame, kUsualRecTime)};
    for (size_t sequence = 0; sequence < written; sequence++) {
        if (sequence == sequences / 2) packs[0][2] |= 1;  // the second channel's half
        const size_t first = sequence % 2 == 0 ? 3 : 0;
        for (size_t block = 0; block < kAudioBlocks; block++) {
            const bool used = block >= first && block < first + std::size(packs);
            const Pack& pack = used ? packs[block - first] : kEmpty;
            memcpy(frame + AudioBlockAt(sequence, block) + kAudioPackAt, pack.data(), kPackSize);
        }
    }
}

}  // namespace

size_t DIFFrame::ExtractAudio(std::span<uint8_t> samples, uint32_t channelMask)
{
    AudioInfo info;
    if (!GetAudioInfo(info) || info.samples == 0) return 0;
    const bool twelve = info.sample_rate == kFourChannelRate && info.channels == 4;
    const uint32_t mask = channelMask & (twelve ? 15 : 3);
    if (mask == 0) return 0;
    const size_t group = kSampleSize * static_cast<size_t>(std::popcount(mask));
    const Layout& layout = LayoutFor(IsPAL());
    const size_t count =
        std::min({size_t{info.samples}, layout.first16.size(), samples.size() / group});

    std::vector<uint8_t> padded;
    if (fBytes.size() < layout.Size()) padded = PaddedFrame(fBytes, layout.Size());
    const uint8_t* frame = padded.empty() ? fBytes.data() : padded.data();
    return (twelve ? Extract12 : Extract16)(frame, layout, count, mask, samples.data());
}

size_t DIFFrame::EmbedAudio(std::span<const uint8_t> samples, uint32_t rate, uint32_t channels)
{
    if (channels == 0) return 0;
    const bool pal = IsPAL();
    const Layout& layout = LayoutFor(pal);
    const size_t count = std::min(samples.size() / kSampleSize / channels, layout.first16.size());
    const bool four = rate == kFourChannelRate && channels > 2;
    const Pack source = SourcePack(count, pal, rate, four);

    std::vector<uint8_t> padded;
    if (fBytes.size() < layout.Size()) padded = PaddedFrame(fBytes, layout.Size());
    uint8_t* frame = padded.empty() ? fBytes.data() : padded.data();
    WriteAudioPacks(frame, layout.sequences, layout.sequences, source);
    if (four)
        EmbedPairs(frame, layout, count, samples);
    else
        EmbedSamples(frame, layout, count, channels, samples.data());
    if (!padded.empty()) std::copy_n(padded.begin(), fBytes.size(), fBytes.begin());
    const size_t groupSamples = four ? 4 : channels == 2 ? 2 : 1;
    return std::min(count * groupSamples * kSampleSize, samples.size());
}

void DIFFrame::EmbedFirstPair(std::span<const uint8_t> samples)
{
    constexpr size_t kGroup = 2 * kSampleSize;
    const bool pal = IsPAL();
    const Layout& layout = LayoutFor(pal);
    if (fBytes.size() < layout.Size()) return;
    const size_t count = std::min(samples.size() / kGroup, layout.Pairs());
    WriteAudioPacks(fBytes.data(), layout.sequences, layout.sequences / 2,
                    SourcePack(count, pal, kFourChannelRate, true));
    for (size_t i = 0; i < count; i++)
        PutPair(fBytes.data() + layout.first12[i], samples.data() + i * kGroup);
}

}  // namespace kelvane
