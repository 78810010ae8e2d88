#include "cli/progress_display.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>

namespace kelvane {

namespace {

constexpr int kBarWidth = 30;
constexpr std::chrono::milliseconds kBetweenDraws(100);
constexpr std::chrono::milliseconds kBetweenEvents(500);

// File names are bytes; those that are not UTF-8 are replaced in JSON.
std::string Text(const nlohmann::json& object)
{
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// Only what there is: an empty object is a run without losses.
nlohmann::ordered_json LossesObject(const Losses& losses)
{
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    const std::pair<const char*, uint64_t> frames[] = {
        {"frames_unread", losses.frames_unread},
        {"frames_missing", losses.frames_missing},
        {"frames_short", losses.frames_short},
        {"frames_undecodable", losses.frames_undecodable},
        {"frames_salvaged", losses.frames_salvaged},
        {"frames_left_out", losses.frames_left_out},
    };
    for (const auto& [name, count] : frames)
        if (count > 0) object[name] = count;
    if (losses.first_frame >= 0) object["first_frame"] = losses.first_frame;
    if (losses.sound_unread > 0) object["seconds_of_sound_unread"] = losses.sound_unread;
    if (losses.sound_silenced > 0) object["seconds_of_sound_silenced"] = losses.sound_silenced;
    return object;
}

std::string HoursMinutesSeconds(double seconds)
{
    const auto whole = static_cast<long>(std::clamp(seconds, 0.0, 359999.0));
    char text[32];
    snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
    return text;
}

}  // namespace

double ProgressDisplay::FramesPerSecond() const
{
    const double seconds = std::chrono::duration<double>(Clock::now() - fStart).count();
    return seconds > 0 ? double(fDone) / seconds : 0;
}

void ProgressDisplay::Start(const std::string& file)
{
    fFile = file;
    fDone = fTotal = 0;
    fStart = fDrawn = Clock::now();
    if (fStyle == ProgressStyle::kJSON) PrintEvent("start", nullptr, {});
}

void ProgressDisplay::Frames(uint64_t done, uint64_t total)
{
    fTotal = total;
    fDone = done;
    const Clock::time_point now = Clock::now();
    const bool json = fStyle == ProgressStyle::kJSON;
    if (now - fDrawn < (json ? kBetweenEvents : kBetweenDraws)) return;
    fDrawn = now;
    if (fStyle == ProgressStyle::kBar) DrawBar();
    if (json)
        std::cout << Text({{"event", "progress"},
                           {"file", fFile},
                           {"frames", fDone},
                           {"total", fTotal},
                           {"fps", std::round(FramesPerSecond() * 10) / 10}})
                  << std::endl;
}

void ProgressDisplay::DrawBar()
{
    const double part = fTotal ? double(fDone) / double(fTotal) : 0;
    const double rate = FramesPerSecond();
    const auto filled = static_cast<size_t>(part * kBarWidth);
    const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
    fprintf(stderr, "\r\033[K[%s] %3d%%  %llu/%llu frames  %.0f fps  %s left", bar.c_str(),
            static_cast<int>(part * 100), static_cast<unsigned long long>(fDone),
            static_cast<unsigned long long>(fTotal), rate,
            rate > 0 ? HoursMinutesSeconds(double(fTotal - fDone) / rate).c_str() : "-:--:--");
    fflush(stderr);
    fBarShown = true;
}

void ProgressDisplay::ClearBar()
{
    if (!fBarShown) return;
    fputs("\r\033[K", stderr);
    fBarShown = false;
}

void ProgressDisplay::PrintEvent(const char* event, const char* key, const std::string& text,
                                 const ConversionResult* result) const
{
    nlohmann::ordered_json object = {{"event", event}, {"file", fFile}};
    if (key) object[key] = text;
    if (result) {
        object["frames"] = result->frames_written;
        object["fps"] = std::round(FramesPerSecond() * 10) / 10;
        object["losses"] = LossesObject(result->losses);
        object["warning"] = result->warnings;
    }
    std::cout << object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
}

void ProgressDisplay::PrintLine(const std::string& text)
{
    ClearBar();
    std::cerr << fFile << ": " << text << '\n';
}

void ProgressDisplay::Done(const std::string& output, const ConversionResult& result)
{
    const std::string losses = LossesInWords(result.losses);
    if (fStyle == ProgressStyle::kJSON) {
        PrintEvent("done", "output", output, &result);
    } else if (fStyle != ProgressStyle::kNone) {
        char rate[64];
        snprintf(rate, sizeof rate, ", %llu frames, %.0f fps",
                 static_cast<unsigned long long>(result.frames_written), FramesPerSecond());
        PrintLine("Done (" + output + rate + ")");
    }
    // As an error, told whatever the style.
    if (!losses.empty()) PrintLine("Losses: " + losses);
}

void ProgressDisplay::Failed(const std::string& message, const ConversionResult* result)
{
    if (fStyle == ProgressStyle::kJSON) PrintEvent("failed", "message", message, result);
    // An error is told on standard error whatever the style.
    PrintLine(message);
}

void ProgressDisplay::Skipped(const std::string& reason)
{
    if (fStyle == ProgressStyle::kJSON) PrintEvent("skipped", "message", reason);
    PrintLine(reason);
}

void ProgressDisplay::Warn(const std::string& text)
{
    PrintLine("Warning: " + text);
}

}  // namespace kelvane
