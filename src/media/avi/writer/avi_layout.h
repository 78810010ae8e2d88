#pragma once

#include <cstdint>
#include <span>

#include "base/status.h"
#include "base/television.h"
#include "format/bitmap_header.h"
#include "format/media_format.h"
#include "media/avi/structure/avi_structure.h"

namespace kelvane {

// Plans the headers of an AVI destination, all in memory: first their place and what is known at
// the start, at the end their true values. What differs between the dialects is in the structure's
// flags.
class AVILayout {
public:
    explicit AVILayout(AVIStructure& structure) : fStructure(structure) {}

    // The file without streams.
    void Begin(uint32_t flags);
    // The one stream of a Type 1 file: "iavs", or in two dialects "vids".
    void AddDVStream(uint32_t handler, bool pal);
    // Stream 0 of a Type 2 file.
    void AddDVPictureStream(uint32_t handler);
    // Any "vids" stream. `codec_data` goes behind the bitmap header.
    void AddPictureStream(const BitmapHeader& header, double rate,
                          std::span<const uint8_t> codec_data = {});
    void AddSoundStream(const RawAudioFormat& format);

    // What is not above 0 is left alone. nAvgBytesPerSec counts two bytes a sample whatever the
    // bits are: deliberate, as all files of these dialects have it.
    void SetAudioFormat(AVIStream& stream, int32_t rate, int32_t channels, int32_t bits);
    // `block` is a bitmap header that begins with its length, and must be in memory whole. -1 when
    // it is not, or when `fixed` forbids that the length changes.
    Status SetVideoFormat(AVIStream& stream, std::span<const uint8_t> block, bool fixed);

    // Settles where "movi" begins, at 32768 when the headers leave room. Returns the position of
    // its head.
    uint32_t Settle();
    // False before the file is begun, and when memory ended while it was.
    bool IsWhole() const;
    // The values that only the written frames tell.
    void Finish();

private:
    bool Has(uint32_t flag) const { return fStructure.flags & flag; }
    const TelevisionSystem& System() const { return SystemFor(Has(kAVIPAL)); }
    Chunk* NewList(uint32_t name, Chunk* parent, Chunk* anchor = nullptr);
    Chunk* NewHeader(uint32_t id, Chunk* parent, uint32_t length, int32_t datatype);
    void PlanMainHeader();
    void PlanInfo();
    AVIStream& NewStream(uint32_t type, uint32_t handler);
    void AddFormat(AVIStream& stream, uint32_t length, int32_t datatype);
    void AddIndex(AVIStream& stream);
    BitmapHeader DVBitmap(uint32_t handler, const TelevisionSystem& system) const;
    void StoreDVInfo(AVIStream& stream, bool pal);
    void StoreVideoProperties(Chunk& chunk);
    void StoreRectangle(AVIStream& stream, int32_t width, int32_t height);
    void FinishStream(AVIStream& stream);
    void FinishMainHeader(const AVIStream& stream);

    AVIStructure& fStructure;
};

}  // namespace kelvane
