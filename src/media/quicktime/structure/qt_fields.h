#pragma once

#include "base/field_table.h"

namespace kelvane {

// The fixed atoms of QuickTime movies, each described once as its fields in file order (QuickTime
// File Format, "Movie Atoms"). All numbers are big-endian. Rates, resolutions and
// the size of a track are fixed point 16.16, volumes 8.8.

// "mvhd"
inline constexpr auto kMovieHeader = HeaderFields<100>({{"version", 0, 1},
                                                        {"flags", 1, 3},
                                                        {"creation time", 4, 4},
                                                        {"modification time", 8, 4},
                                                        {"time scale", 12, 4},
                                                        {"duration", 16, 4},
                                                        {"preferred rate", 20, 4},
                                                        {"preferred volume", 24, 2},
                                                        {"reserved", 26, 10},
                                                        {"matrix", 36, 36},
                                                        {"preview time", 72, 4},
                                                        {"preview duration", 76, 4},
                                                        {"poster time", 80, 4},
                                                        {"selection time", 84, 4},
                                                        {"selection duration", 88, 4},
                                                        {"current time", 92, 4},
                                                        {"next track ID", 96, 4}});

// "tkhd"
inline constexpr auto kTrackHeader = HeaderFields<84>({{"version", 0, 1},
                                                       {"flags", 1, 3},
                                                       {"creation time", 4, 4},
                                                       {"modification time", 8, 4},
                                                       {"track ID", 12, 4},
                                                       {"reserved", 16, 4},
                                                       {"duration", 20, 4},
                                                       {"reserved 2", 24, 8},
                                                       {"layer", 32, 2},
                                                       {"alternate group", 34, 2},
                                                       {"volume", 36, 2},
                                                       {"reserved 3", 38, 2},
                                                       {"matrix", 40, 36},
                                                       {"track width", 76, 4},
                                                       {"track height", 80, 4}});

// "load"
inline constexpr auto kLoadSettings = HeaderFields<16>({{"preload start time", 0, 4},
                                                        {"preload duration", 4, 4},
                                                        {"preload flags", 8, 4},
                                                        {"default hints", 12, 4}});

// One entry of an "elst".
inline constexpr auto kEdit =
    HeaderFields<12>({{"track duration", 0, 4}, {"media time", 4, 4}, {"media rate", 8, 4}});

// "mdhd"
inline constexpr auto kMediaHeader = HeaderFields<24>({{"version", 0, 1},
                                                       {"flags", 1, 3},
                                                       {"creation time", 4, 4},
                                                       {"modification time", 8, 4},
                                                       {"time scale", 12, 4},
                                                       {"duration", 16, 4},
                                                       {"language", 20, 2},
                                                       {"quality", 22, 2}});

// "hdlr". A Pascal string with the name of the component follows.
inline constexpr auto kHandler = HeaderFields<24>({{"version", 0, 1},
                                                   {"flags", 1, 3},
                                                   {"component type", 4, 4},
                                                   {"component subtype", 8, 4},
                                                   {"component manufacturer", 12, 4},
                                                   {"component flags", 16, 4},
                                                   {"component flags mask", 20, 4}});

// "vmhd"
inline constexpr auto kVideoHeader = HeaderFields<12>({{"version", 0, 1},
                                                       {"flags", 1, 3},
                                                       {"graphics mode", 4, 2},
                                                       {"opcolor red", 6, 2},
                                                       {"opcolor green", 8, 2},
                                                       {"opcolor blue", 10, 2}});

// "smhd"
inline constexpr auto kSoundHeader =
    HeaderFields<8>({{"version", 0, 1}, {"flags", 1, 3}, {"balance", 4, 2}, {"reserved", 6, 2}});

// What every entry of an "stsd" begins with.
inline constexpr auto kDescriptionHead = HeaderFields<24>({{"size", 0, 4},
                                                           {"data format", 4, 4},
                                                           {"reserved", 8, 6},
                                                           {"data reference index", 14, 2},
                                                           {"version", 16, 2},
                                                           {"revision level", 18, 2},
                                                           {"vendor", 20, 4}});

// An entry of the "stsd" of video. The compressor name is a Pascal string in 32 bytes.
inline constexpr auto kVideoDescription =
    HeaderFields<86>(kDescriptionHead, {{"temporal quality", 24, 4},
                                        {"spatial quality", 28, 4},
                                        {"width", 32, 2},
                                        {"height", 34, 2},
                                        {"horizontal resolution", 36, 4},
                                        {"vertical resolution", 40, 4},
                                        {"data size", 44, 4},
                                        {"frame count", 48, 2},
                                        {"compressor name", 50, 32},
                                        {"depth", 82, 2},
                                        {"color table ID", 84, 2}});

// An entry of the "stsd" of sound. The sample size is in bits.
inline constexpr auto kSoundDescription =
    HeaderFields<36>(kDescriptionHead, {{"number of channels", 24, 2},
                                        {"sample size", 26, 2},
                                        {"compression ID", 28, 2},
                                        {"packet size", 30, 2},
                                        {"sample rate", 32, 4}});

// Behind a sound description of version 1, or whose compression ID is -2.
inline constexpr auto kSoundPackets = HeaderFields<16>({{"samples per packet", 0, 4},
                                                        {"bytes per packet", 4, 4},
                                                        {"bytes per frame", 8, 4},
                                                        {"bytes per sample", 12, 4}});

// Behind a sound description of version 2. The sample rate is a 64-bit float.
inline constexpr auto kWideSound = HeaderFields<36>({{"size of structure", 0, 4},
                                                     {"sample rate", 4, 8},
                                                     {"channels", 12, 4},
                                                     {"always 7F000000", 16, 4},
                                                     {"bits", 20, 4},
                                                     {"flags", 24, 4},
                                                     {"bytes per packet", 28, 4},
                                                     {"frames per packet", 32, 4}});

// A text of the user data. The text itself follows.
inline constexpr auto kUserText = HeaderFields<4>({{"text size", 0, 2}, {"language code", 2, 2}});

}  // namespace kelvane
