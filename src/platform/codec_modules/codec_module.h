#pragma once

#include <cstdint>

#include "format/bitmap_header.h"

// The interface between Kelvane and a codec module: a shared library kelvane-codec-*.so that brings
// codecs of one maker. A module exports one function, kCodecModuleEntry, which returns its table.
// Plain C types only, so that a module can be built with any compiler.

namespace kelvane {

// Four-character codes are numbers with their first character in the most significant byte.

// Changes with every change of this file; a module of another version is not used.
inline constexpr uint32_t kCodecModuleVersion = 3;
inline constexpr char kCodecModuleEntry[] = "kelvane_codec_module";

// The two manners of codecs, which keep their own names, error words and row order.
enum CodecInterface : uint32_t {
    kVideoForWindows = 0,  // pictures have their bottom row first
    kDirectShow = 1,       // pictures have their top row first
};

// Bits of ModuleCodec::flags.
inline constexpr uint32_t kCodecHasQuality = 1;

// One codec of a module. Texts belong to the module and live as long as it is loaded.
struct ModuleCodec {
    const char* long_name;  // without the interface's name behind it
    const char* short_name;
    uint32_t codec_interface;  // CodecInterface
    uint32_t is_decoder;       // 0 encoder, 1 decoder
    uint32_t type;             // "vidc" for video
    uint32_t handler;          // "dvsd" for DV
    uint32_t flags;
    uint32_t default_quality;  // meant when kCodecHasQuality is set
};

// What a codec is opened for. The raw side has 32 or 24 bits a pixel (B, G, R and, with 32, one
// unused byte, which decoders set to 0), rows without padding; the coded side's compression code
// tells DV ("dvsd") from DVCPRO25 ("dv25") and its height PAL from NTSC. A codec may share its work
// among so many threads; its bytes are the same with any number.
struct CodecSetup {
    BitmapHeader raw;
    BitmapHeader coded;
    uint32_t quality;
    uint32_t threads;  // 0 is one
};

// Every function answers 0 or a negative number. An open codec is used by one thread at a time;
// different ones can be used side by side.
struct CodecModule {
    uint32_t version;  // kCodecModuleVersion
    uint32_t (*count)();
    int32_t (*describe)(uint32_t index, ModuleCodec* codec);
    // Fails when the codec does not take these formats.
    int32_t (*open)(uint32_t index, const CodecSetup* setup, void** instance);
    // One picture to one frame. `frame_bytes` is the room on entry and the frame's size on return.
    int32_t (*encode)(void* instance, const uint8_t* picture, uint8_t* frame,
                      uint32_t* frame_bytes);
    // One frame to one picture of exactly `picture_bytes`. Fails for a frame that is damaged beyond
    // use or of another system or size.
    int32_t (*decode)(void* instance, const uint8_t* frame, uint32_t frame_bytes, uint8_t* picture,
                      uint32_t picture_bytes);
    void (*close)(void* instance);
};

using CodecModuleEntry = const CodecModule* (*)();

}  // namespace kelvane
