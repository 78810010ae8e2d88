#include "media/quicktime/reader/qt_compressed_header.h"

#include <zlib.h>

#include <algorithm>

#include "base/four_cc.h"
#include "base/status.h"
#include "media/quicktime/structure/qt_atoms.h"

namespace kelvane {

namespace {

constexpr uint64_t kSlack = 16;            // beyond the claimed size
constexpr uint64_t kMostExpansion = 1032;  // of deflate, for long runs of one byte

Status Inflate(std::span<const uint8_t> packed, Bytes& expanded)
{
    z_stream stream = {};
    if (inflateInit(&stream) != Z_OK) return kError;
    stream.next_in = const_cast<Bytef*>(packed.data());  // zlib does not write there
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = expanded.data();
    stream.avail_out = static_cast<uInt>(expanded.size());
    const int result = inflate(&stream, Z_NO_FLUSH);
    const size_t produced = stream.total_out;
    inflateEnd(&stream);
    if (result != Z_OK && result != Z_STREAM_END) return kCorrupted;
    expanded.resize(produced);
    return produced ? kOK : kCorrupted;
}

}  // namespace

Status ExpandCompressedHeader(std::span<const uint8_t> cmov, Bytes& expanded)
{
    AtomWalker walker(cmov);
    Atom compressor, data;
    if (!walker.Next(compressor) || compressor.type != "dcom"_4cc || !walker.Next(data) ||
        data.type != "cmvd"_4cc)
        return kCorrupted;
    ByteReader in(data.body, ByteOrder::kBig);
    const uint64_t claimed = in.Get32() + kSlack;
    const auto packed = in.Take(in.Left());
    if (in.Failed() || packed.empty()) return kCorrupted;
    const uint64_t most = packed.size() * kMostExpansion + kSlack;
    expanded.resize(static_cast<size_t>(std::min({claimed, most, kMaxExpandedHeader})));
    const Status status = Inflate(packed, expanded);
    if (status != kOK) expanded.clear();
    return status;
}

}  // namespace kelvane
