#pragma once

#include <cstdint>
#include <optional>

#include "base/result.h"
#include "engine/containers/destination.h"
#include "engine/containers/source.h"
#include "engine/loop/conversion_host.h"
#include "engine/loop/frame_feed.h"
#include "engine/loop/frame_sink.h"
#include "engine/loop/tape_facts.h"
#include "engine/options/conversion_settings.h"
#include "engine/pictures/conversion_state.h"
#include "engine/pictures/frame_maker.h"
#include "engine/pictures/scene_test.h"
#include "engine/pictures/source_pictures.h"
#include "engine/sound/audio_transfer.h"
#include "engine/timing/frame_planner.h"

namespace kelvane {

// The turns of one conversion, an output frame each: read, look, make, write.
class FrameLoop {
public:
    // `frames` is how many it is planned to write; `host` may be null.
    FrameLoop(const ConversionSettings& settings, Source& source, Destination& destination,
              AudioTransfer& audio, uint64_t frames, ConversionHost* host, ConversionState& state);

    // Turns until the source ends, the host wishes it or something fails, and finishes the sound.
    Result<> Run();

    const FrameFeed& Feed() const { return fFeed; }
    const FrameSink& Sink() const { return fSink; }
    const TapeFacts& Tape() const { return fTape; }
    // Frames that were read and could not be decoded.
    uint64_t Undecodable() const { return fPictures.Undecodable(); }
    // True when frames were written of which no picture was made.
    bool HasBlackPictures() const { return fHasBlackPictures; }
    Wish LastWish() const { return fWish; }

private:
    enum class Turn { kGoOn, kEnd };

    Result<Turn> TakeTurn();
    void LookAtTape();
    Aspect SourceAspect() const;
    std::optional<bool> WidthToDeclare() const;
    bool PassesThrough() const;
    FrameOrigin Origin() const;
    Result<> PassOn(SourceFrame& frame);
    Result<> Reencode();
    Turn AdvanceAndReport();
    void Report();
    void ReportEnd();

    const ConversionSettings& fSettings;
    Source& fSource;
    Destination& fDestination;
    ConversionHost* fHost;
    FrameFeed fFeed;
    TapeFacts fTape;
    SourcePictures fPictures;
    SceneTest fScenes;
    FramePlanner fPlanner;
    FrameMaker fMaker;
    FrameSink fSink;
    uint64_t fFramesPlanned;  // that the run will write
    bool fHasBlackPictures = false;
    Wish fWish = Wish::kGoOn;
};

}  // namespace kelvane
