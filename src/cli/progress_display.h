#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "cli/arguments.h"
#include "engine/loop/conversion_result.h"

namespace kelvane {

// Tells how a run goes: a bar or plain lines on standard error, or a JSON object a line on
// standard output.
class ProgressDisplay {
public:
    explicit ProgressDisplay(ProgressStyle style) : fStyle(style) {}

    void Start(const std::string& file);
    // Draws at most ten times a second.
    void Frames(uint64_t done, uint64_t total);
    void Done(const std::string& output, const ConversionResult& result);
    // `result` is null when nothing was begun.
    void Failed(const std::string& message, const ConversionResult* result = nullptr);
    void Skipped(const std::string& reason);
    // Of the file under way; told before its end.
    void Warn(const std::string& text);

private:
    using Clock = std::chrono::steady_clock;

    double FramesPerSecond() const;
    void DrawBar();
    void ClearBar();
    void PrintEvent(const char* event, const char* key, const std::string& text,
                    const ConversionResult* result = nullptr) const;
    void PrintLine(const std::string& text);

    ProgressStyle fStyle;
    std::string fFile;
    uint64_t fDone = 0, fTotal = 0;
    Clock::time_point fStart, fDrawn;
    bool fBarShown = false;
};

}  // namespace kelvane
