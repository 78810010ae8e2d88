#include "engine/loop/convert_file.h"

#include <exception>
#include <new>

#include "base/status.h"
#include "engine/containers/destination.h"
#include "engine/containers/source.h"
#include "engine/loop/conversion_outcome.h"
#include "engine/loop/frame_loop.h"

namespace kelvane {

namespace {

constexpr char kNoMemory[] = "There is not enough memory.";
constexpr int32_t kCanopusInterleave = 4;  // frames between two chunks of sound

// Opens the four external codecs for their television systems, or keeps them open.
Result<> BindCodecs(const ConversionSettings& settings, const Source& source,
                    const Destination& destination, ConversionState& state)
{
    const struct {
        DVCodecRole role;
        const DVCodecEntry* chosen;
        bool pal;
    } rows[] = {
        {kDVEncoder, settings.dv_encoder, destination.is_pal},
        {kDVDecoder, settings.dv_decoder, source.is_pal},
        {kDVCPROEncoder, settings.dvcpro_encoder, destination.is_pal},
        {kDVCPRODecoder, settings.dvcpro_decoder, source.is_pal},
    };
    for (const auto& row : rows) {
        DVCodecSlot& slot = state.slots[row.role];
        if (slot.Bind(row.chosen, row.pal) != kOK) return Failure{kError, slot.OpenError()};
    }
    return {};
}

AudioSetup SoundSetup(const ConversionSettings& settings, const Source& source,
                      const DestinationPlan& plan, Destination& destination)
{
    AudioSetup setup;
    setup.source_is_pal = source.is_pal;
    setup.destination_is_pal = destination.is_pal;
    setup.source_is_dv = source.format.IsDV();
    setup.separate_track = destination.Audio() != nullptr;
    setup.interleave =
        plan.type == kDestinationCanopus2 ? kCanopusInterleave : settings.audio_interleave_factor;
    setup.nowhere = !setup.separate_track && !destination.format.IsDV();
    setup.source_path = source.path;
    if (settings.audio_search == CompanionSearch::kInFile && settings.audio_file)
        setup.companion = settings.audio_file;
    // One that is named holds for every kind of source.
    const bool found = settings.audio_search == CompanionSearch::kByName && source.has_companions;
    setup.companions = !setup.companion.empty() || found;
    setup.follows = settings.sound_follows;
    setup.channels = settings.channels;
    setup.untouched = settings.sound_untouched && setup.FramesToFrames() && setup.SameStandard();
    setup.pace = PaceOf(settings, source.is_pal, destination.is_pal);
    return setup;
}

// Four channels find no place in frames of another standard.
Result<> CheckChannels(const AudioSetup& setup)
{
    const bool refused =
        setup.channels == ChannelChoice::kAll && setup.FramesToFrames() && !setup.SameStandard();
    if (!refused) return {};
    return Failure{kError,
                   "Frames of another standard can't take all four channels; choose 1+2, 3+4 or "
                   "mix."};
}

Result<> ConnectSourceSound(Source& source, const AudioSetup& setup, AudioTransfer& audio)
{
    AudioStream* stream = source.Audio();
    const bool unwanted = setup.nowhere || setup.untouched || !setup.companion.empty();
    if (!stream || unwanted) return {};
    const bool raw = source.audio_format.kind == kRawAudio;
    const RawAudioFormat format =
        raw ? source.audio_format.raw_audio : source.audio_format.encoded_audio.output;
    const auto set = audio.SetSourceStream(*stream, source.audio_coding,
                                           static_cast<uint32_t>(format.srate), format.ch);
    if (!set) return Failure{kError, set.Error().message + source.Trouble().Reason()};
    return {};
}

// The picture goes on without sound that cannot be used.
void TellSoundLost(const std::string& why, float rate, ConversionResult& result)
{
    result.warnings.push_back(why + " The film is converted without that sound.");
    if (rate > 0)
        result.losses.sound_silenced +=
            static_cast<double>(result.frames_written) / static_cast<double>(rate);
}

void CopyTimecode(const Timecode& from, uint16_t (&to)[4])
{
    to[0] = static_cast<uint16_t>(from.hours);
    to[1] = static_cast<uint16_t>(from.minutes);
    to[2] = static_cast<uint16_t>(from.seconds);
    to[3] = static_cast<uint16_t>(from.frames);
}

void CopyCompanions(const AudioTransfer& audio, ConversionResult& result)
{
    std::string* const places[] = {&result.audio_file_1, &result.audio_file_2, &result.audio_file_3,
                                   &result.audio_file_4};
    const std::vector<std::string>& paths = audio.CompanionPaths();
    for (size_t i = 0; i < paths.size() && i < std::size(places); i++)
        *places[i] = paths[i];
}

// The deinterlacer begins each file anew, whichever way the one before ended.
class DeinterlaceHistory {
public:
    DeinterlaceHistory(DeinterlaceState& state, const MediaFormat& format) : fState(state)
    {
        AdaptiveDeinterlaceInit(state, format.Width(), format.Height());
    }
    ~DeinterlaceHistory() { AdaptiveDeinterlaceEnd(fState); }
    DeinterlaceHistory(const DeinterlaceHistory&) = delete;
    DeinterlaceHistory& operator=(const DeinterlaceHistory&) = delete;

private:
    DeinterlaceState& fState;
};

// Memory that is not to be had ends the loop like any failure: what is written gets finished.
Result<> RunSafely(FrameLoop& loop)
{
    try {
        return loop.Run();
    } catch (const std::bad_alloc&) {
        return Failure{kError, kNoMemory};
    }
}

Result<> Convert(const std::string& source_path, const std::string& destination_path, int32_t type,
                 const ConversionMeans& means, ConversionResult& result)
{
    const auto source = OpenSource(source_path);
    if (!source) return source.Error();
    const DestinationPlan plan = PlanDestination(destination_path, means.settings, **source, type);
    if (means.host && !means.host->MayWrite(FilesOf(plan))) {
        result.outcome = Outcome::kRefused;
        return {};
    }
    const auto destination = CreateDestination(plan);
    if (!destination) return destination.Error();
    return ConvertOpened(**source, plan, **destination, means, result);
}

// The same before and after the loop.
template <class Work>
Result<> Safely(const Work& work)
{
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return Failure{kError, kNoMemory};
    } catch (const std::exception& error) {
        return Failure{kError, std::string("Unexpected failure: ") + error.what()};
    }
}

}  // namespace

Result<> CodecsAreSet(const ConversionSettings& settings)
{
    if (settings.dv_data_conversion != DataConversion::kToDVCPRO25 && !settings.dv_encoder)
        return Failure{kError, "DV Encoder is not set."};
    if (!settings.dv_decoder) return Failure{kError, "DV Decoder is not set."};
    return {};
}

Result<> ConvertOpened(Source& source, const DestinationPlan& plan, Destination& destination,
                       const ConversionMeans& means, ConversionResult& result)
{
    const ConversionSettings& settings = means.settings;
    result.destination_is_pal = plan.is_pal;
    const DeinterlaceHistory history(means.state.deinterlace, plan.format);
    if (auto set = CodecsAreSet(settings); !set) return set;
    if (auto bound = BindCodecs(settings, source, destination, means.state); !bound) return bound;
    const AudioSetup setup = SoundSetup(settings, source, plan, destination);
    if (auto channels = CheckChannels(setup); !channels) return channels;
    AudioTransfer audio(setup);
    const Result<> sound = ConnectSourceSound(source, setup, audio);
    FrameLoop loop(settings, source, destination, audio, plan.frames, means.host, means.state);
    const Result<> run = RunSafely(loop);
    // Where the loop was left in the middle a picture may still be under way.
    static_cast<void>(means.state.beside.Settle());
    CopyTimecode(loop.Tape().FirstTimecode(), result.first_timecode);
    CopyTimecode(loop.Tape().LastTimecode(), result.last_timecode);
    CopyCompanions(audio, result);
    const OpenFiles files = {source, destination, audio, plan.path};
    const bool whole = run && loop.LastWish() == Wish::kGoOn;
    result.warnings = WarningsOf(loop, files, settings, whole);
    const Result<> concluded = ConcludeRun(loop, run, files, result);
    if (!sound) TellSoundLost(sound.Error().message, destination.format.FrameRate(), result);
    return concluded;
}

Status ConvertFile(const std::string& sourcePath, const std::string& destinationPath,
                   int32_t typeOfDestination, const ConversionSettings& settings,
                   ConversionHost* host, ConversionResult* result, ConversionState& state)
{
    ConversionResult unseen;
    ConversionResult& filled = result ? *result : unseen;
    filled = ConversionResult();
    const auto converted = Safely([&] {
        return Convert(sourcePath, destinationPath, typeOfDestination, {settings, host, state},
                       filled);
    });
    if (converted) return kOK;
    filled.outcome = Outcome::kFailed;
    filled.message = converted.Error().message;
    filled.status = converted.Error().status.Code();
    return converted.Error().status;
}

}  // namespace kelvane
