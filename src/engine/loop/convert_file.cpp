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
Status BindCodecs(const ConversionSettings& settings, const Source& source,
                  const Destination& destination, ConversionState& state, std::string& message)
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
        if (slot.Bind(row.chosen, row.pal) == kOK) continue;
        message = slot.OpenError();
        return kError;
    }
    return kOK;
}

AudioSetup SoundSetup(const ConversionSettings& settings, int32_t type,
                      const std::string& sourcePath, const Source& source, Destination& destination)
{
    AudioSetup setup;
    setup.source_is_pal = source.is_pal;
    setup.destination_is_pal = destination.is_pal;
    setup.source_is_dv = source.format.IsDV();
    setup.separate_track = destination.Audio() != nullptr;
    setup.interleave =
        type == kDestinationCanopus2 ? kCanopusInterleave : settings.audio_interleave_factor;
    setup.companions = settings.audio_search != CompanionSearch::kNone &&
                       (source.kind == kAVISource || source.kind == kRawDVSource);
    setup.source_path = sourcePath;
    if (settings.audio_search == CompanionSearch::kInFile && settings.audio_file)
        setup.companion = settings.audio_file;
    return setup;
}

Status ConnectSourceSound(Source& source, AudioTransfer& audio, std::string& message)
{
    AudioStream* stream = source.Audio();
    if (!stream) return kOK;
    RawAudioFormat format = source.audio_format.encoded_audio.output;
    SampleCoding coding;
    coding.bits = 0;  // cannot be brought to 16 bits
    if (source.audio_format.kind == kRawAudio) {
        format = source.audio_format.raw_audio;
        coding = source.kind == kQuickTimeSource ? QuickTimeCoding(format) : RIFFCoding(format);
    }
    const Status status =
        audio.SetSourceStream(*stream, coding, static_cast<uint32_t>(format.srate), format.ch);
    if (status != kOK) message = audio.Message() + source.Trouble().Reason();
    return status;
}

// True when the source has sound that this destination cannot hold.
bool LosesSound(Source& source, Destination& destination)
{
    return !destination.format.IsDV() && !destination.Audio() &&
           (source.Audio() || source.format.IsDV());
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

struct Job {
    const std::string& source_path;
    const std::string& destination_path;
    int32_t type;
    const ConversionSettings& settings;
    ConversionHost* host;
    ConversionState& state;
};

// Memory that is not to be had ends the loop like any failure: what is written gets finished.
Status RunSafely(ConversionRun& run)
{
    try {
        return RunFrameLoop(run);
    } catch (const std::bad_alloc&) {
        run.message = kNoMemory;
        return kError;
    }
}

// With both files open.
Status ConvertOpened(const Job& job, Source& source, Destination& destination,
                     ConversionResult& result)
{
    const ConversionSettings& settings = job.settings;
    if (!CodecsAreSet(settings, result.message)) return kError;
    if (BindCodecs(settings, source, destination, job.state, result.message) != kOK) return kError;
    AudioTransfer audio(SoundSetup(job.settings, job.type, job.source_path, source, destination));
    if (ConnectSourceSound(source, audio, result.message) != kOK) return kError;
    if (LosesSound(source, destination))
        result.warnings.push_back(
            "The output format carries no sound; that of the source is left out.");
    ConversionRun run(settings, source, destination, audio, job.host, job.state);
    const Status loop = RunSafely(run);
    CopyTimecode(run.first_timecode, result.first_timecode);
    CopyTimecode(run.last_timecode, result.last_timecode);
    CopyCompanions(audio, result);
    return ConcludeRun(run, loop, job.destination_path, result);
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

Status Convert(const Job& job, ConversionResult& result)
{
    const auto source = OpenSource(job.source_path, result.message);
    if (!source) return kError;
    const DestinationPlan plan = PlanDestination(job.settings, *source, job.type);
    const DeinterlaceHistory history(job.state.deinterlace, plan.format);
    const auto destination = CreateDestination(job.destination_path, plan, result.message);
    if (!destination) return kError;
    destination->format = plan.format;
    destination->is_pal = result.destination_is_pal = plan.is_pal;
    return ConvertOpened(job, *source, *destination, result);
}

// The same before and after the loop.
Status ConvertSafely(const Job& job, ConversionResult& result)
{
    try {
        return Convert(job, result);
    } catch (const std::bad_alloc&) {
        result.message = kNoMemory;
    } catch (const std::exception& error) {
        result.message = std::string("Unexpected failure: ") + error.what();
    }
    result.outcome = Outcome::kFailed;
    return kError;
}

}  // namespace

bool CodecsAreSet(const ConversionSettings& settings, std::string& message)
{
    if (settings.dv_data_conversion != DataConversion::kToDVCPRO25 && !settings.dv_encoder) {
        message = "DV Encoder is not set.";
        return false;
    }
    if (!settings.dv_decoder) {
        message = "DV Decoder is not set.";
        return false;
    }
    return true;
}

Status ConvertFile(const std::string& sourcePath, const std::string& destinationPath,
                   int32_t typeOfDestination, const ConversionSettings& settings,
                   ConversionHost* host, ConversionResult* result, ConversionState& state)
{
    ConversionResult unseen;
    ConversionResult& filled = result ? *result : unseen;
    filled = ConversionResult();
    const Status status = ConvertSafely(
        {sourcePath, destinationPath, typeOfDestination, settings, host, state}, filled);
    filled.status = status.Code();
    return status;
}

}  // namespace kelvane
