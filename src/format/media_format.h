#pragma once

#include <cstdint>
#include <cstdio>

#include "format/bitmap_header.h"
#include "format/colour_space.h"

namespace kelvane {

// Which view of a MediaFormat applies.
enum MediaKind : uint32_t {
    kUnknownFormat = 0,
    kRawAudio = 1,
    kRawVideo = 2,
    kEncodedAudio = 3,
    kEncodedVideo = 4,
};

enum SampleFormat : uint32_t {
    kSampleUnknown = 0,
    kSamplePCM = 1,  // signed integers
    kSamplePCMUnsigned = 2,
    kSampleFloat = 3,
    kSampleULaw = 4,
    kSampleALaw = 5,
    kSampleADPCM = 6,
    kSampleIMA4 = 7,
};

enum VideoEncoding : uint32_t {
    kEncodingUnknown = 0,
    kEncodingDV = 1,
    kEncodingMPEG1 = 2,
    kEncodingMPEG2 = 3,
    kEncodingMPEG4 = 4,
    kEncodingPJPEG = 5,
    kEncodingMJPEG = 6,
    kEncodingPNG = 7,
    kEncodingCinepak = 8,
    kEncodingDVCPRO25 = 9,
    kEncodingDVCPRO50 = 10,
    kEncodingQTRLE = 11,
    kEncodingHuffYUV = 12,
};

struct RawAudioFormat {
    uint32_t format;  // SampleFormat
    uint16_t ch;
    uint16_t bitspersample;
    int32_t srate;  // hertz
};

struct RawVideoFormat {
    uint32_t cspace;  // ColourSpace
    int32_t width;
    int32_t height;
    float frate;     // frames a second
    uint32_t ilace;  // 0 progressive, 1 upper field first, 2 lower field first
    uint32_t reserved;
};

struct EncodedAudioFormat {
    RawAudioFormat output;  // what a decoder would give
    uint32_t encoding;      // SampleFormat
    float bitrate;          // bits a second
};

struct EncodedVideoFormat {
    uint32_t cspace;  // what a decoder gives, ColourSpace
    int32_t w;
    int32_t h;
    float frate;
    uint32_t ilace;
    uint32_t reserved;
    uint32_t encoding;  // VideoEncoding
    uint32_t codec;     // as the file spells it; 0 when any will do
    float bitrate;      // bits a second
    int32_t framesize;  // bytes of one encoded frame, -1 when it varies
    uint32_t private_size;
    const uint8_t* private_data;  // codec private data, not owned by the format
};

// Describes one stream: thirteen words in five views, chosen by `kind`. A plain value.
struct MediaFormat {
    uint32_t kind = kUnknownFormat;
    union {
        RawAudioFormat raw_audio;
        RawVideoFormat raw_video;
        EncodedAudioFormat encoded_audio;
        EncodedVideoFormat encoded_video;
    };

    MediaFormat() : encoded_video{} {}  // the widest view: all words are 0
    explicit MediaFormat(const RawAudioFormat& view) : MediaFormat()
    {
        kind = kRawAudio;
        raw_audio = view;
    }
    explicit MediaFormat(const RawVideoFormat& view) : MediaFormat()
    {
        kind = kRawVideo;
        raw_video = view;
    }
    explicit MediaFormat(const EncodedAudioFormat& view) : MediaFormat()
    {
        kind = kEncodedAudio;
        encoded_audio = view;
    }
    explicit MediaFormat(const EncodedVideoFormat& view) : MediaFormat()
    {
        kind = kEncodedVideo;
        encoded_video = view;
    }

    bool IsVideo() const { return kind == kRawVideo || kind == kEncodedVideo; }
    bool IsAudio() const { return kind == kRawAudio || kind == kEncodedAudio; }
    bool IsCodedAs(VideoEncoding encoding) const
    {
        return kind == kEncodedVideo && encoded_video.encoding == encoding;
    }
    // DV of 25 Mbit/s, which is what destinations hold as DV: DV and DVCPRO25.
    bool IsDV25() const { return IsCodedAs(kEncodingDV) || IsCodedAs(kEncodingDVCPRO25); }
    // And DVCPRO50.
    bool IsDV() const { return IsDV25() || IsCodedAs(kEncodingDVCPRO50); }
    // Pixels, lines and frames a second of either video view; 0 for any other kind.
    int32_t Width() const;
    int32_t Height() const;
    float FrameRate() const;
    // Colour space of either video view, 0 for any other kind.
    uint32_t Space() const;
    void SetPicture(int32_t width, int32_t height, float rate);
};

// The format of a DV stream where no header tells more: 720 by 576 at 25 or 720 by 480 at 29.97,
// 28.8 Mbit/s.
MediaFormat DVFormat(bool pal, VideoEncoding encoding = kEncodingDV);

// Writes one line about the format to `out`, standard output when null. A positive `indent` (up to
// 32) puts that many blanks in front.
void PrintFormat(const MediaFormat& format, FILE* out, int indent);

// Bytes of one unpacked picture; 0 unless the format is video. A colour space that is not in the
// table counts 4 bytes a pixel, YUY2 and its signed twin too: buffers twice too large, on purpose.
uint32_t BytesOfPicture(const MediaFormat& format);

// True when the kinds are equal and so is the word that names the kind's coding: sample format,
// colour space or encoding. Sizes and rates do not count, which makes pattern formats work.
bool SameKind(const MediaFormat& a, const MediaFormat& b);
// True when both are video of the same width and height.
bool SameSize(const MediaFormat& a, const MediaFormat& b);

// Fill a bitmap header from a raw or an encoded video format.
void ToBitmapHeaderRaw(const MediaFormat& format, BitmapHeader& header);
void ToBitmapHeaderEncoded(const MediaFormat& format, BitmapHeader& header);

// Between sample formats and the format tag of a RIFF "fmt " chunk (RFC 2361).
uint32_t SampleFormatOfTag(uint16_t tag);
uint16_t TagOfSampleFormat(uint32_t format);

}  // namespace kelvane
