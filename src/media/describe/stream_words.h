#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "dv/dif_frame.h"
#include "format/media_format.h"

namespace kelvane {

// The words in which the lines about files speak of streams.

// As snprintf, up to 199 characters.
template <class... Values>
std::string Words(const char* pattern, Values... values)
{
    char text[200];
    snprintf(text, sizeof text, pattern, values...);
    return text;
}

std::string ChannelWords(uint32_t channels);          // "mono", "stereo", "4-ch"
std::string RateWords(uint32_t rate);                 // "48kHz", "22050 Hz"
std::string PictureWords(const MediaFormat& format);  // "PAL", "NTSC", "320x240 @ 25.00 fps"
std::string SamplingWords(DIFFrame& frame);           // "4:2:0 (4:3 format)"
std::string DVWords(DIFFrame& frame);                 // "DVCPRO PAL 4:1:1 (16:9 format)"

}  // namespace kelvane
