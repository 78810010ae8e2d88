// A size and a depth, and a frame behind them, decoded to both layouts.

#include <cstdint>

#include "base/byte_cursor.h"
#include "base/status.h"
#include "codecs/animation/qtrle_decoder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace kelvane;
    ByteReader in({data, size}, ByteOrder::kBig);
    EncodedVideoFormat view{};
    view.encoding = kEncodingQTRLE;
    view.cspace = in.Get8() & 1 ? kBGR24 : kBGRX32;
    view.w = in.Get16() % 600;
    view.h = in.Get8();
    const auto rest = in.Take(in.Left());
    const Bytes frame(rest.begin(), rest.end());
    for (const uint32_t to : {kBGR24, kBGRX32}) {
        const MediaFormat raw(RawVideoFormat{to, view.w, view.h, 25.0f, 0, 0});
        QTRLEDecoder decoder;
        if (decoder.SetFormats(MediaFormat(view), raw) != kOK) continue;
        Bytes picture(BytesOfPicture(raw));
        if (decoder.Convert(frame, picture).value_or(picture.size()) != picture.size())
            __builtin_trap();
    }
    return 0;
}
