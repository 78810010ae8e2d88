// WAVE and AIFF files and the switch over both.

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <numeric>

#include "base/byte_cursor.h"
#include "base/four_cc.h"
#include "media/audio_file.h"
#include "media/extended_float.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

constexpr RawAudioFormat kStereo = {kSamplePCM, 2, 16, 48000};

Bytes Counting(size_t bytes)
{
    Bytes data(bytes);
    std::iota(data.begin(), data.end(), uint8_t{0});
    return data;
}

// Zeros in the text count.
template <size_t N>
Bytes Text(const char (&text)[N])
{
    return {text, text + N - 1};
}

std::string AsText(const Bytes& bytes)
{
    return {bytes.begin(), bytes.end()};
}

// A chunk with its size told as it is, or as `claim` says.
Bytes ChunkOf(ByteOrder order, const std::string& id, const Bytes& body, int64_t claim = -1)
{
    Bytes chunk(id.begin(), id.end());
    ByteWriter writer(chunk, order);
    writer.Put32(claim < 0 ? static_cast<uint32_t>(body.size()) : static_cast<uint32_t>(claim));
    writer.PutBytes(body);
    return chunk;
}

Bytes Joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes WAVE(const Bytes& chunks)
{
    return ChunkOf(ByteOrder::kLittle, "RIFF", Joined({Text("WAVE"), chunks}));
}

Bytes Fmt(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bits)
{
    Bytes body;
    ByteWriter writer(body, ByteOrder::kLittle);
    writer.Put16(tag);
    writer.Put16(channels);
    writer.Put32(rate);
    writer.Put32(rate * channels * bits / 8);
    writer.Put16(static_cast<uint16_t>(channels * bits / 8));
    writer.Put16(bits);
    return ChunkOf(ByteOrder::kLittle, "fmt ", body);
}

Bytes Data(const Bytes& samples, int64_t claim = -1)
{
    return ChunkOf(ByteOrder::kLittle, "data", samples, claim);
}

// Reads up to `frames` frames; empty on failure.
template <class File>
Bytes ReadFrames(File& file, int32_t frames, size_t frameSize)
{
    Bytes samples(static_cast<size_t>(frames) * frameSize, 0xEE);
    if (file.Read(samples.data(), frames) != 0) return {};
    samples.resize(static_cast<size_t>(frames) * frameSize);
    return samples;
}

class SampleFiles : public testing::Test {
protected:
    std::string Write(const Bytes& bytes) { return fFolder.Write("file", bytes); }
    int WAVStatus(const Bytes& bytes) { return WAVFile(Write(bytes).c_str(), kRead).InitCheck(); }
    int AIFFStatus(const Bytes& bytes) { return AIFFFile(Write(bytes).c_str(), kRead).InitCheck(); }
    // The bytes of a file as `write` makes it through the switch.
    template <class Write>
    Bytes Written(int32_t type, Write write)
    {
        const std::string path = fFolder.Path("written");
        {
            AudioFile file(path.c_str(), kCreate, type);
            EXPECT_EQ(0, file.InitCheck());
            write(file);
        }
        return ReadWhole(path);
    }
    TempFolder fFolder;
};

TEST_F(SampleFiles, WritesAWAVEFileByteForByte)
{
    const Bytes written = Written(kWAVFileType, [](AudioFile& file) {
        EXPECT_EQ(-1, file.Write(Counting(4).data(), 1)) << "no format yet";
        ASSERT_EQ(0, file.SetFormat(kStereo));
        EXPECT_EQ(-1, file.Write(nullptr, 1));
        EXPECT_EQ(-1, file.Write(Counting(4).data(), 0));
        EXPECT_EQ(0, file.Write(Counting(8).data(), 2));
        EXPECT_EQ(0, file.Write(Counting(4).data(), 1));
    });
    EXPECT_EQ(WAVE(Joined({Fmt(1, 2, 48000, 16), Data(Joined({Counting(8), Counting(4)}))})),
              written);
    // One byte of 8-bit mono: no pad byte follows, and the form's size is odd.
    const Bytes odd = Written(kWAVFileType, [](AudioFile& file) {
        ASSERT_EQ(0, file.SetFormat({kSamplePCM, 1, 8, 32000}));
        EXPECT_EQ(0, file.Write("x", 1));
    });
    EXPECT_EQ(45u, odd.size());
    EXPECT_EQ(37, odd[4]);
    const Bytes none =
        Written(kWAVFileType, [](AudioFile& file) { ASSERT_EQ(0, file.SetFormat(kStereo)); });
    EXPECT_EQ(WAVE(Joined({Fmt(1, 2, 48000, 16), Data({})})), none);
}

TEST_F(SampleFiles, WritesAnAIFFFileByteForByte)
{
    const auto write = [](AudioFile& file) {
        ASSERT_EQ(0, file.SetFormat({kSamplePCM, 1, 16, 44100}));
        EXPECT_EQ(0, file.Write("badc", 2));
    };
    const Bytes head = {'F',  'O',  'R', 'M', 0,  0, 0, 50, 'A', 'I', 'F', 'F', 'C', 'O',  'M',
                        'M',  0,    0,   0,   18, 0, 1, 0,  0,   0,   2,   0,   16,  0x40, 0x0E,
                        0xAC, 0x44, 0,   0,   0,  0, 0, 0,  'S', 'S', 'N', 'D', 0,   0,    0,
                        12,   0,    0,   0,   0,  0, 0, 0,  0,   'a', 'b', 'c', 'd'};
    EXPECT_EQ(head, Written(kAIFFFileType, write));
    const Bytes odd = Written(kAIFFFileType, [](AudioFile& file) {
        ASSERT_EQ(0, file.SetFormat({kSamplePCM, 1, 8, 44100}));
        EXPECT_EQ(0, file.Write("bac", 3));
    });
    EXPECT_EQ(57u, odd.size());
    EXPECT_EQ(12, odd[45]) << "the stored length is even";
    EXPECT_EQ(Text("abc"), Bytes(odd.begin() + 54, odd.end()));
}

TEST_F(SampleFiles, TheAIFCFormReadsBackAndThatOfOthersIsRefused)
{
    const std::string path = fFolder.Path("aifc");
    {
        AIFFFile file(path.c_str(), kCreate);
        for (const uint32_t encoding : {0u, 3u, 4u, 5u, 6u})
            EXPECT_EQ(-3, file.SetFormat({encoding, 2, 16, 48000}, true));
        ASSERT_EQ(0, file.SetFormat(kStereo, true));
        EXPECT_EQ(0, file.Write(Counting(8).data(), 2));
    }
    Bytes bytes = ReadWhole(path);
    const std::string text(bytes.begin(), bytes.end());
    const size_t type = text.find("NENO");
    ASSERT_NE(std::string::npos, type);
    EXPECT_EQ("AIFCFVER", text.substr(8, 8));
    EXPECT_EQ("\x0Enot compressed", text.substr(type + 4, 15));
    AIFFFile own(path.c_str(), kRead);
    EXPECT_EQ(0, own.InitCheck());
    EXPECT_EQ(Counting(8), ReadFrames(own, 2, 4));
    for (const char* other : {"NONE", "sowt", "wtso", "23lf"}) {
        std::copy_n(other, 4, bytes.begin() + static_cast<ptrdiff_t>(type));
        EXPECT_EQ(std::string(other) == "wtso" ? 0 : -3, AIFFStatus(bytes)) << other;
    }
}

TEST_F(SampleFiles, ReadsByPositionAndPastTheSamples)
{
    const Bytes wave =
        WAVE(Joined({ChunkOf(ByteOrder::kLittle, "LIST", Text("INFOISFT\4\0\0\0abc\0")),
                     Fmt(1, 2, 48000, 16), Data(Counting(10)), Text("LISTtail")}));
    WAVFile file(Write(wave).c_str(), kRead);
    ASSERT_EQ(0, file.InitCheck());
    ASSERT_TRUE(file.Format());
    EXPECT_EQ(2, file.Format()->ch);
    EXPECT_EQ(48000, file.Format()->srate);
    EXPECT_EQ(2, file.CountFrames()) << "whole ones";
    file.SetPosition(1);
    EXPECT_EQ((Bytes{4, 5, 6, 7}), ReadFrames(file, 1, 4));
    EXPECT_EQ((Bytes{8, 9, 'L', 'I', 'S', 'T', 't', 'a'}), ReadFrames(file, 9, 4))
        << "no check against the chunk, and the partial frame does not count";
    int32_t count = 1;
    uint8_t frame[4];
    EXPECT_EQ(0, file.Read(frame, count)) << "two bytes are left";
    EXPECT_EQ(0, count);
    file.SetPosition(100);
    count = 1;
    EXPECT_EQ(-1, file.Read(frame, count));
    count = -1;
    EXPECT_EQ(-1, file.Read(frame, count));
    count = 1;
    EXPECT_EQ(-1, file.Read(nullptr, count));
}

TEST_F(SampleFiles, AIFFExchangesBytesInPairsWhateverTheSize)
{
    const auto aiff = [](uint16_t bits, const Bytes& sound) {
        Bytes common;
        ByteWriter writer(common, ByteOrder::kBig);
        writer.Put16(1);
        writer.Put32(2);
        writer.Put16(bits);
        uint8_t rate[10];
        StoreExtended(32000, rate);
        writer.PutBytes(rate);
        return ChunkOf(ByteOrder::kBig, "FORM",
                       Joined({Text("AIFF"), ChunkOf(ByteOrder::kBig, "COMM", common),
                               ChunkOf(ByteOrder::kBig, "SSND", sound)}));
    };
    // An offset of 2 in the header of the samples is not looked at.
    const Bytes sound = Joined({{0, 0, 0, 2, 0, 0, 0, 0}, Text("abcdef")});
    for (const auto& [bits, frames, read] :
         {std::tuple(uint16_t{16}, 3, "badcfe"), std::tuple(uint16_t{24}, 2, "badcfe"),
          std::tuple(uint16_t{8}, 6, "badcfe"), std::tuple(uint16_t{8}, 3, "bac")}) {
        AIFFFile file(Write(aiff(bits, sound)).c_str(), kRead);
        ASSERT_EQ(0, file.InitCheck());
        EXPECT_EQ(32000, file.Format()->srate);
        EXPECT_EQ(6 / ((bits + 7) / 8), file.CountFrames());
        EXPECT_EQ(std::string(read), AsText(ReadFrames(file, frames, size_t{bits} / 8))) << bits;
    }
}

TEST_F(SampleFiles, RefusesWhatItDoesNotRead)
{
    const Bytes data = Data(Counting(8));
    EXPECT_EQ(-2, WAVStatus({}));
    EXPECT_EQ(-2, WAVStatus(Text("RIFF\4\0\0\0AVI ")));
    EXPECT_EQ(0, WAVStatus(WAVE(Joined({Fmt(3, 2, 48000, 32), data}))));
    for (const uint16_t tag : {0, 2, 6, 7, 0x55, 0xFFFE})
        EXPECT_EQ(-3, WAVStatus(WAVE(Joined({Fmt(tag, 2, 48000, 16), data})))) << tag;
    EXPECT_EQ(-1, WAVFile("/nowhere/at all", kRead).InitCheck());
    EXPECT_EQ(-2, AIFFStatus(WAVE(data)));
    EXPECT_EQ(-1, AIFFFile("/nowhere/at all", kCreate).InitCheck());

    WAVFile bare(Write(WAVE(data)).c_str(), kRead);
    EXPECT_EQ(0, bare.InitCheck()) << "no format";
    EXPECT_EQ(nullptr, bare.Format());
    EXPECT_TRUE(ReadFrames(bare, 1, 4).empty());
    WAVFile nothing(Write(WAVE(Joined({Fmt(1, 0, 48000, 16), data}))).c_str(), kRead);
    EXPECT_TRUE(ReadFrames(nothing, 1, 4).empty()) << "no channels";

    AudioFile other(Write(WAVE(data)).c_str(), kRead, 1);
    int32_t count = 1;
    uint8_t frame[4];
    EXPECT_EQ(-10, other.InitCheck());
    EXPECT_EQ(-10, other.Read(frame, count));
    EXPECT_EQ(-10, other.SetFormat(kStereo));
    Written(kAIFFFileType, [](AudioFile& file) {
        EXPECT_EQ(-3, file.SetFormat({kSampleFloat, 2, 32, 48000}));
        EXPECT_EQ(-3, file.SetFormat({kSampleADPCM, 2, 4, 48000}));
    });
}

TEST_F(SampleFiles, SizesThatLieDoNoHarm)
{
    const Bytes fmt = Fmt(1, 2, 48000, 16);
    struct Row {
        const char* what;
        Bytes file;
        int64_t frames;
    };
    const Row rows[] = {
        {"data longer than the file", WAVE(Joined({fmt, Data(Counting(8), 0xFFFFFFFF)})), 2},
        {"fmt longer than the file",
         WAVE(ChunkOf(ByteOrder::kLittle, "fmt ", {1, 0, 2, 0}, 0x7FFFFFFF)), 0},
        {"fmt cut short", WAVE(Joined({Text("fmt \4\0\0"), {0, 1, 0, 2, 0}, Data(Counting(8))})),
         0},
        {"a recording cut off: all sizes 0",
         ChunkOf(ByteOrder::kLittle, "RIFF", Joined({Text("WAVE"), fmt, Data(Counting(12), 0)}), 0),
         3},
        {"no samples, but another chunk", WAVE(Joined({fmt, Data({}), Text("LIST\4\0\0\0abcd")})),
         0},
        {"a form longer than the file",
         ChunkOf(ByteOrder::kLittle, "RIFF", Joined({Text("WAVE"), fmt, Data(Counting(4))}),
                 0xFFFFFFFE),
         1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        WAVFile wav(Write(row.file).c_str(), kRead);
        EXPECT_EQ(row.frames, wav.CountFrames());
    }
    const Bytes& whole = rows[0].file;  // and wherever it may end
    for (size_t length = 0; length < whole.size(); length++) {
        WAVFile cut(
            Write(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length))).c_str(),
            kRead);
        EXPECT_LE(cut.CountFrames(), 2);
        ReadFrames(cut, 3, 4);
    }
}

TEST_F(SampleFiles, ASecondFormatOverwritesTheHeaderWithTheBareRecord)
{
    const Bytes written = Written(kWAVFileType, [](AudioFile& file) {
        ASSERT_EQ(0, file.SetFormat(kStereo));
        ASSERT_EQ(0, file.SetFormat({kSamplePCM, 1, 24, 44100}));
    });
    const Bytes record = {1, 0, 0, 0, 1, 0, 24, 0, 0x44, 0xAC, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(record, Bytes(written.begin() + 20, written.begin() + 36));
}

TEST_F(SampleFiles, DescribesInOneLine)
{
    std::string text;
    EXPECT_TRUE(DescribeWAV(Write(WAVE(Joined({Fmt(1, 2, 48000, 16), Data({})}))).c_str(), text));
    EXPECT_EQ("WAV stereo 16-bit PCM @ 48000 Hz", text);
    EXPECT_TRUE(DescribeWAV(Write(WAVE(Fmt(3, 5, 44100, 32))).c_str(), text));
    EXPECT_EQ("WAV >4-channel 32-bit float @ 44100 Hz", text);
    EXPECT_FALSE(DescribeWAV(nullptr, text));
    EXPECT_EQ("WAV [prg error]", text);
    EXPECT_FALSE(DescribeWAV(Write(WAVE(Fmt(7, 1, 8000, 8))).c_str(), text));
    EXPECT_EQ("WAV [open error]", text);
    Written(kAIFFFileType, [](AudioFile& file) {
        ASSERT_EQ(0, file.SetFormat({kSamplePCM, 1, 16, 44100}));
    });
    EXPECT_TRUE(DescribeAIFF(fFolder.Path("written").c_str(), text));
    EXPECT_EQ("AIFF mono 16-bit PCM @ 44100 Hz", text);
    EXPECT_EQ(kAIFFFileType, AudioFileTypeOf(fFolder.Path("written").c_str()));
}

TEST(ExtendedFloat, KeepsEveryDouble)
{
    std::array<uint8_t, 10> bytes;
    for (const double value : {0.0, 1.0, -1.5, 44100.0, 1e300, 5e-324, 48000 / 1.001}) {
        StoreExtended(value, bytes);
        EXPECT_EQ(value, LoadExtended(bytes));
    }
    StoreExtended(std::numeric_limits<double>::infinity(), bytes);
    EXPECT_EQ((std::array<uint8_t, 10>{0x7F, 0xFF}), bytes);
    EXPECT_TRUE(std::isinf(LoadExtended(bytes)));
    bytes = {0x40, 0x0E, 0xBB, 0x80, 0, 0, 0x80, 0, 0, 0};
    EXPECT_EQ(48000.0 + std::ldexp(1.0, -17), LoadExtended(bytes)) << "both halves count";
}

}  // namespace
}  // namespace kelvane
