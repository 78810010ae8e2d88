#pragma once

#include <cstdint>
#include <vector>

#include "base/result.h"
#include "engine/options/conversion_choices.h"
#include "engine/options/conversion_settings.h"
#include "engine/pictures/conversion_state.h"
#include "engine/pictures/picture_decoder.h"
#include "engine/pictures/source_frame.h"
#include "format/media_format.h"

namespace kelvane {

// Some steps write past the end of a picture, by less than one of PAL size: the second half of a
// picture buffer of so many bytes is that margin.
size_t PictureRoom(const MediaFormat& format);

// Makes the pictures of source frames, each once and in the order of time: decoded, deinterlaced
// where that is asked for, in the destination's geometry. The picture before stands for one that
// cannot be decoded; only the first one, and more than ten seconds of others, are failures.
class SourcePictures {
public:
    SourcePictures(const MediaFormat& from, const MediaFormat& to,
                   const ConversionSettings& settings, ConversionState& state);
    ~SourcePictures();
    SourcePictures(const SourcePictures&) = delete;
    SourcePictures& operator=(const SourcePictures&) = delete;

    // Makes those that are not made yet. That of the newest frame is made beside what follows,
    // which seldom looks at it. `dvcpro` is what the first frame of a DV source said.
    Result<> Make(const NeighbourFrames& frames, bool dvcpro);
    // Returns when the newest is made as well: what came of it.
    Result<> Wait();
    // Pictures for which the one before stands.
    uint64_t Undecodable() const { return fUndecodable; }

private:
    Result<> MakeOne(const FrameRef& frame, bool dvcpro, WorkerPool* pool);
    Result<> Repeat(SourceFrame& frame, const Failure& failure);
    bool Deinterlaces() const;

    const MediaFormat& fFrom;
    const MediaFormat& fTo;
    const ConversionSettings& fSettings;
    ConversionState& fState;
    PictureDecoder fDecoder;
    std::vector<uint8_t> fDecoded;  // in the source's geometry
    Result<> fNewest;
    FrameRef fLast;  // the last one made
    uint64_t fUndecodable = 0;
    int64_t fInARow = 0;
};

}  // namespace kelvane
