#include "engine/loop/frame_reader.h"

#include <algorithm>
#include <cmath>

#include "base/television.h"
#include "dv/dif_frame.h"
#include "format/picture_layout.h"

namespace kelvane {

namespace {

// Beyond ten seconds of frames that cannot be read only one a second is tried: a disk takes its
// time over each. Of frames that are none of this film there may be as many in a row.
constexpr int64_t kSecondsOneByOne = 10;

}  // namespace

FrameReader::FrameReader(Source& source, Losses& losses)
    : fSource(source),
      fLosses(losses),
      fPromised(static_cast<int64_t>(std::min(source.CountFrames(), kMostFrames))),
      fLeastBytes(BytesOfRawPicture(source.format)),
      fSecond(std::max<int64_t>(1, std::lround(source.format.FrameRate())))
{
    if (source.format.IsDV())
        fFrameBytes = static_cast<size_t>(SystemFor(source.is_pal).dv_frame_size);
}

FrameArrival FrameReader::Next(std::span<uint8_t> buffer)
{
    if (fEnd != kOK) return {};
    if (fNext < fGapEnd)
        return Repeat(fGapAt < fGapFaults.size() ? fGapFaults[fGapAt++] : Fault::kUnread);
    const Reading reading = Read(fNext, buffer);
    switch (reading.fault) {
        case Fault::kNone:
            return Give(reading.size);
        case Fault::kHeld:
        case Fault::kBad:
            if (fNext == 0) return FirstGood(buffer, reading.fault);
            // Longer than that they are no film any more, as with frames that cannot be decoded.
            fBadInARow += reading.fault == Fault::kBad;
            if (fBadInARow > kSecondsOneByOne * fSecond) return End(Fault::kUnread);
            return Repeat(reading.fault);
        case Fault::kUnread:
        case Fault::kShort:
            if (fNext == 0) return End(reading.fault);  // there is no frame before it
            return PassGap(buffer, reading.fault);
        default:
            return End(reading.fault);
    }
}

FrameReader::Reading FrameReader::Read(int64_t number, std::span<uint8_t> buffer)
{
    const FrameRead read = fSource.ReadFrame(number, buffer);
    fStatus = read.status;
    switch (fStatus.Code()) {
        case kOK:
            if (read.size == 0) return {Fault::kHeld};
            break;
        case kTooLarge:  // its beginning came
            if (fFrameBytes == 0) return {Fault::kBad};
            break;
        case kEnd:
            return {number < fPromised ? Fault::kMissing : Fault::kEnd};
        case kMissing:
            return {Fault::kMissing};
        case kReferenceMissing:
            return {Fault::kReferenceMissing};
        default:
            return {Fault::kUnread};
    }
    if (fFrameBytes > 0) return CheckDV(buffer.first(read.size));
    if (read.size < fLeastBytes) return {Fault::kBad};  // some rows of a picture are none
    return {Fault::kNone, read.size};
}

// Only whole frames go on from here. Of a chunk that is too long, the first bytes are a frame when
// they begin like one.
FrameReader::Reading FrameReader::CheckDV(std::span<const uint8_t> chunk)
{
    fCut = chunk.size() > fFrameBytes;
    // The film's television system is settled.
    if (SystemOfFrame(chunk).value_or(fSource.is_pal) != fSource.is_pal) return {Fault::kBad};
    if (chunk.size() < fFrameBytes) return {Fault::kShort};
    if (fCut && !BeginsWithHeaderBlock(chunk)) return {Fault::kBad};
    return {Fault::kNone, fFrameBytes};
}

FrameArrival FrameReader::Give(size_t size)
{
    fNext++;
    fBadInARow = 0;
    fCutFrames += fCut;
    return {FrameArrival::kFrame, size};
}

// In front of the first good frame there is none to repeat: that one stands for them, so that sound
// and picture stay in step. A film of bad ones alone is none.
FrameArrival FrameReader::FirstGood(std::span<uint8_t> buffer, Fault first)
{
    int64_t bad = first == Fault::kBad;
    for (int64_t number = 1; number < fPromised && bad <= kSecondsOneByOne * fSecond; number++) {
        const Reading reading = Read(number, buffer);
        if (reading.fault == Fault::kBad) bad++;
        if (reading.fault == Fault::kHeld || reading.fault == Fault::kBad) continue;
        if (reading.fault != Fault::kNone) return End(reading.fault);
        Count(first, 1);
        return Give(reading.size);
    }
    return End(bad > 0 ? Fault::kBad : Fault::kEnd);
}

// Looks for the next frame that can be read: one by one for ten seconds, then in steps of a second.
// Where there is none, the film ends behind the last frame that was read.
FrameArrival FrameReader::PassGap(std::span<uint8_t> buffer, Fault first)
{
    fGapFaults.assign(1, first);
    fGapAt = 0;
    if (fReason == kOK) fReason = fStatus;
    const int64_t one_by_one = fNext + kSecondsOneByOne * fSecond;
    int64_t number = fNext + 1;
    for (;; number += number < one_by_one ? 1 : fSecond) {
        if (number >= fPromised && number >= one_by_one) return End(Fault::kUnread);
        const Fault fault = number < fPromised ? Read(number, buffer).fault : Fault::kEnd;
        if (fault != Fault::kUnread && fault != Fault::kShort) break;
        if (fReason == kOK) fReason = fStatus;
        if (number < one_by_one) fGapFaults.push_back(fault);
    }
    fGapEnd = number;
    return Repeat(fGapFaults[fGapAt++]);
}

FrameArrival FrameReader::Repeat(Fault fault)
{
    Count(fault, 1);
    fNext++;
    return {FrameArrival::kRepeat};
}

FrameArrival FrameReader::End(Fault fault)
{
    const auto left = static_cast<uint64_t>(std::max<int64_t>(fPromised - fNext, 1));
    switch (fault) {
        case Fault::kEnd:
            fEnd = kEnd;
            return {};
        case Fault::kReferenceMissing:
            fEnd = fStatus;
            break;
        case Fault::kMissing:
            fEnd = kMissing;
            break;
        default:
            fEnd = kUnread;
    }
    if (fReason == kOK) fReason = fStatus;
    Count(fault, left);
    return {};
}

void FrameReader::Count(Fault fault, uint64_t frames)
{
    switch (fault) {
        case Fault::kHeld:
            return;
        case Fault::kBad:
            fLosses.frames_undecodable += frames;
            return;
        case Fault::kShort:
            fLosses.frames_short += frames;
            break;
        case Fault::kUnread:
            fLosses.frames_unread += frames;
            break;
        default:
            fLosses.frames_missing += frames;
    }
    if (fLosses.first_frame < 0) fLosses.first_frame = fNext;
}

}  // namespace kelvane
