#include "engine/loop/losses.h"

#include <algorithm>
#include <cstdio>

namespace kelvane {

namespace {

std::string Seconds(double seconds)
{
    char text[32];
    // Never "0.00" of something that is lost.
    snprintf(text, sizeof text, "%.2f", seconds < 0.01 ? 0.01 : seconds);
    return text;
}

void AddSentence(std::string& text, const std::string& sentence)
{
    if (!text.empty()) text += " ";
    text += sentence;
}

}  // namespace

std::string FramesInWords(uint64_t count)
{
    return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

std::string TooShortInWords(uint64_t frames)
{
    return std::string(kVideoReadError) + " The film has " + FramesInWords(frames) + ".";
}

std::string LossesInWords(const Losses& losses)
{
    std::string text;
    if (losses.frames_undecodable > 0)
        AddSentence(text, FramesInWords(losses.frames_undecodable) +
                              " could not be decoded and show the picture before.");
    if (losses.frames_salvaged > 0)
        AddSentence(text,
                    FramesInWords(losses.frames_salvaged) + " were salvaged from a damaged file.");
    if (losses.frames_left_out > 0)
        AddSentence(text, FramesInWords(losses.frames_left_out) +
                              " of the source are too short to be shown and were left out.");
    if (losses.sound_silenced > 0)
        AddSentence(text, Seconds(losses.sound_silenced) + " seconds of sound became silence.");
    return text;
}

std::string FramesMissing(const Losses& losses, uint64_t promised)
{
    const uint64_t lost = losses.FramesNotRead();
    if (lost == 0) return {};
    return " " + std::to_string(lost) + " of " + std::to_string(std::max(promised, lost)) +
           (lost == 1 ? " frames is" : " frames are") + " missing, the first is number " +
           std::to_string(losses.first_frame) + ".";
}

std::string ReadErrorInWords(const Losses& losses, uint64_t promised, Status reason)
{
    std::string text;
    if (losses.FramesNotRead() > 0) text = kVideoReadError + FramesMissing(losses, promised);
    if (losses.sound_unread > 0)
        AddSentence(text, "Error reading source file (audio) ! " + Seconds(losses.sound_unread) +
                              " seconds of sound are missing.");
    return text + reason.Reason();
}

}  // namespace kelvane
