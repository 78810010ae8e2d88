#include "engine/loop/warnings.h"

#include <cmath>
#include <cstdio>
#include <filesystem>

#include "base/television.h"
#include "engine/options/conversion_options.h"

namespace kelvane {

namespace {

// True when the source has sound that this destination cannot hold.
bool LosesSound(const OpenFiles& files)
{
    return !files.destination.format.IsDV() && !files.destination.Audio() &&
           (files.source.Audio() || files.source.format.IsDV());
}

// A film of another rate than those of television keeps its frames, but not its time.
std::string OfSpeed(const OpenFiles& files)
{
    constexpr double kSameRate = 0.01;
    const double rate = static_cast<double>(files.source.format.FrameRate());
    const auto differs = [rate](double other) { return std::fabs(rate - other) >= kSameRate; };
    const bool same_standard = files.source.is_pal == files.destination.is_pal;
    const double taken = same_standard ? static_cast<double>(files.destination.format.FrameRate())
                                       : static_cast<double>(SystemFor(files.source.is_pal).rate);
    if (rate <= 0 || !differs(taken)) return {};
    char text[128];
    snprintf(text, sizeof text,
             "The source has %.2f frames a second and is converted as if it had %.2f: the speed of "
             "the film changes.",
             rate, taken);
    return text;
}

bool IsReversePulldown(const ConversionSettings& settings)
{
    return settings.op == Operation::kToPAL &&
           settings.timeresampling == ResamplingMethod::kPulldown;
}

// Of a film that has the standard which was asked for.
std::string OfStandard(const OpenFiles& files, const ConversionSettings& settings,
                       bool has_black_pictures)
{
    const bool pal = files.source.is_pal;
    if (settings.op == Operation::kConvert || pal != files.destination.is_pal) return {};
    if (IsReversePulldown(settings))
        return std::string(
                   "Reverse pulldown of a film that is PAL already leaves out one frame in "
                   "six") +
               (has_black_pictures ? " and makes no pictures of the others: they are black." : ".");
    const auto usual = static_cast<ResamplingMethod>(ConversionOptions().blendmode);
    if (settings.mode == GeometryMode::kScale && settings.timeresampling == usual) return {};
    const bool resized = !SameSize(files.source.format, files.destination.format);
    return std::string("The film is ") + (pal ? "PAL" : "NTSC") + " already: its " +
           (resized ? "rate is" : "size and rate are") + " not changed.";
}

std::string NamesOf(const std::vector<std::string>& paths)
{
    std::string names;
    for (const std::string& path : paths)
        names += (names.empty() ? "" : ", ") + std::filesystem::path(path).filename().string();
    return names;
}

// Of what stands beside frames whose own sound is left as it is.
std::string OfUntouched(const OpenFiles& files, const ConversionSettings& settings)
{
    if (!files.audio.IsUntouched()) return {};
    CompanionAudio beside;
    if (files.source.has_companions && settings.audio_search == CompanionSearch::kByName)
        static_cast<void>(beside.FindCompanionAudio(files.source.path, false));
    std::string what = NamesOf(beside.Paths());
    if (files.source.Audio()) what = "the stream beside them";
    return what.empty() ? "" : "The frames keep their own sound; " + what + " is left out.";
}

// Of companions that were found by their names.
std::string OfCompanions(const OpenFiles& files, const ConversionSettings& settings)
{
    const std::vector<std::string>& paths = files.audio.CompanionPaths();
    if (paths.empty() || settings.audio_search != CompanionSearch::kByName) return {};
    return "The sound is that of " + NamesOf(paths) + ", in place of the film's own.";
}

std::string OfUnusedCompanion(const CompanionAudio::Unused& file)
{
    return std::filesystem::path(file.path).filename().string() +
           " beside the film was not taken for its sound: " + file.why;
}

std::string OfChannels(size_t left_out)
{
    if (left_out == 0) return {};
    return std::to_string(left_out) +
           (left_out == 1 ? " channel of the sound beside the film is left out."
                          : " channels of the sound beside the film are left out.");
}

std::string Seconds(double seconds)
{
    char text[32];
    snprintf(text, sizeof text, "%.2f", seconds);
    return text + std::string(" seconds");
}

// What a tape's sound had and lacks; of a run that went to the end of the film.
void AddOfSound(const OpenFiles& files, double frame, std::vector<std::string>& warnings)
{
    constexpr double kHeard = 0.001;
    AudioTransfer& audio = files.audio;
    if (audio.LeftOutPair())
        warnings.push_back(
            "Channels 3 and 4 of the tape have sound, which is left out; --channels chooses.");
    if (const double silent = audio.SilentSeconds(); silent > 0)
        warnings.push_back(Seconds(silent) + " of the tape have no sound that can be read.");
    if (const double missing = audio.SecondsShort(); missing > frame)
        warnings.push_back("The sound is " + Seconds(missing) +
                           " shorter than the picture and ends in silence.");
    const double most = audio.HasOwnLength() ? frame : kHeard;
    if (const double rest = audio.SecondsLeftOver(); rest > most)
        warnings.push_back(Seconds(rest) +
                           " of sound lie behind the last picture and are left out.");
}

std::string OfCutFrames(const FrameLoop& loop)
{
    const uint64_t cut = loop.Feed().Reader().CutFrames();
    if (cut == 0) return {};
    return std::to_string(cut) +
           " frames of the source are larger than a DV frame; their first bytes were taken.";
}

}  // namespace

std::vector<std::string> WarningsOf(const FrameLoop& loop, const OpenFiles& files,
                                    const ConversionSettings& settings, bool whole)
{
    std::vector<std::string> warnings;
    const auto add = [&](const std::string& text) {
        if (!text.empty()) warnings.push_back(text);
    };
    if (LosesSound(files))
        add("The output format carries no sound; that of the source is left out.");
    add(files.source.Warning());
    add(OfSpeed(files));
    add(OfStandard(files, settings, loop.HasBlackPictures()));
    add(OfCompanions(files, settings));
    for (const CompanionAudio::Unused& file : files.audio.CompanionsPassedOver())
        add(OfUnusedCompanion(file));
    add(OfChannels(files.audio.ChannelsLeftOut()));
    const double rate = static_cast<double>(files.destination.format.FrameRate());
    if (whole && rate > 0) AddOfSound(files, 1 / rate, warnings);
    add(OfUntouched(files, settings));
    add(OfCutFrames(loop));
    return warnings;
}

}  // namespace kelvane
