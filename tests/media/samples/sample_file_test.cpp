// WAVE and AIFF files and the switch over both.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "media/media_files.h"
#include "media/samples/audio_file.h"
#include "media/samples/extended_float.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

using namespace std::string_literals;

constexpr RawAudioFormat kStereo = {kSamplePCM, 2, 16, 48000};

std::string WAVE(std::initializer_list<std::string> chunks)
{
    return RiffList("WAVE", chunks, "RIFF");
}

std::string Fmt(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bits)
{
    const uint32_t frame = channels * bits / 8u;
    return RiffChunk("fmt ", Little(tag, 2) + Little(channels, 2) + Little(rate, 4) +
                                 Little(rate * frame, 4) + Little(frame, 2) + Little(bits, 2));
}

// A chunk that lies about its size.
std::string Claiming(uint32_t size, std::string chunk)
{
    return chunk.replace(4, 4, Little(size, 4));
}

std::string IFFChunk(std::string_view id, std::string_view body)
{
    std::string chunk = RiffChunk(id, body);
    std::reverse(chunk.begin() + 4, chunk.begin() + 8);
    return chunk;
}

// One channel; the rate by the bytes of its float that are not 0.
std::string AIFF(char frames, char bits, const std::string& rate, const std::string& sound)
{
    return IFFChunk("FORM", "AIFF" +
                                IFFChunk("COMM", "\0\1\0\0\0"s + frames + '\0' + bits + rate +
                                                     std::string(6, '\0')) +
                                IFFChunk("SSND", sound));
}

// The bytes of the next `count` frames, or of as many as there are; empty on failure.
template <class File>
std::string ReadFrames(File& file, int32_t count, size_t frame_size)
{
    std::string samples(static_cast<size_t>(count) * frame_size, '\xEE');
    count = std::max(ReadRecords(file, count, samples.data()), 0);
    return samples.substr(0, static_cast<size_t>(count) * frame_size);
}

class SampleFiles : public testing::Test {
protected:
    std::string Put(std::string_view bytes) { return fFolder.Write("file", AsBytes(bytes)); }
    template <class File>
    int Status(std::string_view bytes)
    {
        return File(Put(bytes).c_str(), kRead).InitCheck().Code();
    }
    // The bytes of a file of this format with what `write` adds to it.
    template <class Write>
    std::string Written(int32_t type, const RawAudioFormat& format, Write write)
    {
        const std::string path = fFolder.Path("written");
        {
            AudioFile file(path.c_str(), kCreate, type);
            EXPECT_EQ(-1, file.Write("0123", 1)) << "no format yet";
            EXPECT_EQ(0, file.SetFormat(format));
            write(file);
        }
        return AsText(ReadWhole(path));
    }
    TempFolder fFolder;
};

TEST_F(SampleFiles, WritesAWAVEFileByteForByte)
{
    const std::string even = Written(kWAVFileType, kStereo, [](AudioFile& file) {
        EXPECT_EQ(-1, file.Write(nullptr, 1));
        EXPECT_EQ(-1, file.Write("0123", 0));
        EXPECT_EQ(0, file.Write("01234567", 2));
        EXPECT_EQ(0, file.Write("89ab", 1));
    });
    EXPECT_EQ(WAVE({Fmt(1, 2, 48000, 16), RiffChunk("data", "0123456789ab")}), even);
    const std::string odd = Written(kWAVFileType, {kSamplePCM, 1, 8, 32000},
                                    [](AudioFile& file) { EXPECT_EQ(0, file.Write("x", 1)); });
    EXPECT_EQ("RIFF" + Little(37, 4) + "WAVE" + Fmt(1, 1, 32000, 8) + "data" + Little(1, 4) + "x",
              odd)
        << "no pad byte follows, and the form's size is odd";
    EXPECT_EQ(WAVE({Fmt(1, 2, 48000, 16), RiffChunk("data", "")}),
              Written(kWAVFileType, kStereo, [](AudioFile&) {}));
    const std::string again = Written(kWAVFileType, kStereo, [](AudioFile& file) {
        EXPECT_EQ(0, file.SetFormat({kSamplePCM, 1, 24, 44100}));
    });
    EXPECT_EQ(Little(1, 4) + Little(1, 2) + Little(24, 2) + Little(44100, 8), again.substr(20, 16))
        << "a second format overwrites the header with the bare record";
}

TEST_F(SampleFiles, WritesAnAIFFFileByteForByte)
{
    const std::string even = Written(kAIFFFileType, {kSamplePCM, 1, 16, 44100},
                                     [](AudioFile& file) { EXPECT_EQ(0, file.Write("badc", 2)); });
    EXPECT_EQ(AIFF(2, 16, "\x40\x0E\xAC\x44", std::string(8, '\0') + "abcd"), even);
    const std::string odd = Written(kAIFFFileType, {kSamplePCM, 1, 8, 44100}, [](AudioFile& file) {
        EXPECT_EQ(0, file.Write("bac", 3));
        EXPECT_EQ(-3, file.SetFormat({kSampleFloat, 2, 32, 48000}));
        EXPECT_EQ(-3, file.SetFormat({kSampleADPCM, 2, 4, 48000}));
    });
    EXPECT_EQ(57u, odd.size());
    EXPECT_EQ(12, odd[45]) << "the stored length is even";
    EXPECT_EQ("abc", odd.substr(54));
}

TEST_F(SampleFiles, TheAIFCFormReadsBackInItsOwnSpelling)
{
    const std::string path = fFolder.Path("aifc");
    {
        AIFFFile file(path.c_str(), kCreate);
        for (const uint32_t encoding : {0u, 3u, 4u, 5u, 6u})
            EXPECT_EQ(-3, file.SetFormat({encoding, 2, 16, 48000}, true));
        ASSERT_EQ(0, file.SetFormat(kStereo, true));
        EXPECT_EQ(0, file.Write("0123456789abcdef", 4));
    }
    std::string bytes = AsText(ReadWhole(path));
    const size_t type = bytes.find("NENO\x0Enot compressed");
    ASSERT_NE(std::string::npos, type);
    EXPECT_EQ("AIFCFVER", bytes.substr(8, 8));
    AIFFFile own(path.c_str(), kRead);
    EXPECT_EQ("01234567", ReadFrames(own, 2, 4));
    int32_t one = 1;
    // Bits, f for float, b for big-endian: as samples lie in the file; what Read makes of them.
    const std::tuple<const char*, const char*, const char*> others[] = {
        {"NENO", "16b", "0123"},  {"NONE", "16b", "0123"},  {"twos", "16b", "0123"},
        {"sowt", "16", "1032"},   {"in24", "24b", "0123"},  {"in32", "32b", "0123"},
        {"fl32", "32fb", "0123"}, {"FL64", "64fb", "0123"}, {"wtso", "16b", "0123"},
    };
    for (const auto& [other, coding, read] : others) {
        AIFFFile file(Put(bytes.replace(type, 4, other)).c_str(), kRead);
        ASSERT_EQ(0, file.InitCheck()) << other;
        const SampleCoding found = file.Coding();
        EXPECT_EQ(coding, std::to_string(found.bits) + (found.is_float ? "f" : "") +
                              (found.big_endian ? "b" : ""))
            << other;
        EXPECT_EQ(found.bits, file.Format()->bitspersample) << other;
        EXPECT_EQ(read, ReadFrames(file, 1, found.Bytes() * 2).substr(0, 4)) << other;
        EXPECT_EQ(0, file.SetPosition(0));
        Bytes raw(found.Bytes() * 2);
        EXPECT_EQ(1, file.ReadRaw(raw.data(), one = 1) == kOK ? one : 0) << other;
        EXPECT_EQ("1032", AsText(raw).substr(0, 4)) << other;
    }
    for (const char* other : {"ulaw", "MAC3", "42ni", "23lf"})
        EXPECT_EQ(-3, Status<AIFFFile>(bytes.replace(type, 4, other))) << other;
}

// What stands behind the samples is none of them.
TEST_F(SampleFiles, ReadsTheFormsOfFilesBeyondFourGigabytes)
{
    const std::string fmt = Fmt(1, 2, 48000, 16), behind = RiffChunk("LIST", "abcd");
    const std::string data = Claiming(0xFFFFFFFF, RiffChunk("data", "0123456789ab"));
    const auto rf64 = [&](const char* id, uint64_t bytes) {
        std::string file = WAVE(
            {RiffChunk("ds64", Little(1 << 20, 8) + Little(bytes, 8) + Little(3, 8) + Little(0, 4)),
             fmt, data, behind});
        return Claiming(0xFFFFFFFF, file.replace(0, 4, id));
    };
    const std::string id = "\xF3\xAC\xD3\x11\x8C\xD1\0\xC0\x4F\x8E\xDB\x8A"s;
    const auto chunk = [&](const std::string& name, const std::string& body, uint64_t claimed = 0) {
        const uint64_t size = claimed ? claimed : body.size() + 24;
        return name + id + Little(size, 8) + body + std::string(-body.size() % 8, '\0');
    };
    const auto wave64 = [&](uint64_t claimed) {
        return "riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\0\0"s + Little(1000, 8) + "wave" + id +
               chunk("junk", "odd") + chunk("fmt ", fmt.substr(8)) +
               chunk("data", "0123456789ab", claimed) + chunk("bext", "....");
    };
    const uint64_t beyond = uint64_t{5} << 30;
    const std::tuple<const char*, std::string, int64_t> rows[] = {
        {"RF64", rf64("RF64", 12), 3},
        {"BW64", rf64("BW64", 12), 3},
        {"longer than there is", rf64("RF64", beyond), int64_t(beyond / 4)},
        {"never filled in", rf64("RF64", 0), 6},
        {"Wave64", wave64(0), 3},
        {"Wave64 cut off", wave64(beyond + 24), int64_t(beyond / 4)},
        {"Wave64 through a pipe", wave64(INT64_MAX), 12},
        {"Wave64 without a size", wave64(3), 12},
    };
    for (const auto& [what, bytes, frames] : rows) {
        SCOPED_TRACE(what);
        const std::string path = Put(bytes);
        EXPECT_TRUE(IsWAVFile(path.c_str()));
        WAVFile file(path.c_str(), kRead);
        ASSERT_EQ(0, file.InitCheck());
        EXPECT_EQ(frames, file.PromisedFrames());
        EXPECT_EQ("0123456789ab", ReadFrames(file, 3, 4));
        for (size_t length = 0; length < bytes.size(); length += 7) {
            WAVFile cut(Put(bytes.substr(0, length)).c_str(), kRead);
            ReadFrames(cut, 3, 4);
        }
    }
}

TEST_F(SampleFiles, BehindTheExtensibleTagIsTheTrueOne)
{
    const auto extensible = [](uint16_t tag, uint16_t bits) {
        return WAVE({RiffChunk("fmt ", Fmt(0xFFFE, 2, 48000, bits).substr(8) + Little(22, 2) +
                                           Little(bits, 2) + Little(3, 4) + Little(tag, 2) +
                                           "\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71"s),
                     RiffChunk("data", "0123456789abcdef")});
    };
    for (const auto& [tag, bits, is_float] :
         {std::tuple(1, 24, false), {3, 32, true}, {3, 64, true}}) {
        WAVFile file(Put(extensible(uint16_t(tag), uint16_t(bits))).c_str(), kRead);
        ASSERT_EQ(0, file.InitCheck()) << tag;
        EXPECT_EQ(bits, file.Coding().bits);
        EXPECT_EQ(is_float, file.Coding().is_float);
        EXPECT_EQ(16 / (bits / 4), file.CountFrames());
    }
    for (const uint16_t tag : {0, 2, 6, 0x55, 0xFFFE})
        EXPECT_EQ(-3, Status<WAVFile>(extensible(tag, 16))) << tag;
}

TEST_F(SampleFiles, ReadsByPositionAndPastTheSamples)
{
    const std::string wave =
        WAVE({RiffList("INFO", {RiffChunk("ISFT", "abc")}), Fmt(1, 2, 48000, 16),
              RiffChunk("data", "0123456789"), "LISTtail"});
    WAVFile file(Put(wave).c_str(), kRead);
    EXPECT_EQ(2, file.CountFrames()) << "whole ones";
    EXPECT_EQ(0, file.SetPosition(1));
    EXPECT_EQ("4567", ReadFrames(file, 1, 4));
    EXPECT_EQ("89LISTta", ReadFrames(file, 9, 4))
        << "no check against the chunk, and the partial frame does not count";
    uint8_t frame[4];
    EXPECT_EQ(kEnd, ReadRecords(file, 1, frame)) << "two bytes are left";
    for (const int64_t behind : {int64_t{100}, int64_t{1} << 62, INT64_MAX}) {
        EXPECT_EQ(0, file.SetPosition(behind));
        EXPECT_EQ(kEnd, ReadRecords(file, 1, frame)) << behind;
    }
    EXPECT_EQ(-1, ReadRecords(file, -1, frame));
    EXPECT_EQ(-1, ReadRecords(file, 1, nullptr));
}

TEST_F(SampleFiles, AIFFExchangesBytesInPairsWhateverTheSize)
{
    for (const auto& [bits, frames, read] :
         {std::tuple(16, 3, "badcfe"), {24, 2, "badcfe"}, {8, 6, "badcfe"}, {8, 3, "bac"}}) {
        // The offset of 2 in the header of the samples is not looked at.
        const std::string sound = "\0\0\0\2\0\0\0\0abcdef"s;
        const std::string aiff = AIFF(2, static_cast<char>(bits), "\x40\x0D\xFA\0"s, sound);
        AIFFFile file(Put(aiff).c_str(), kRead);
        ASSERT_EQ(0, file.InitCheck());
        EXPECT_EQ(32000, file.Format()->srate);
        EXPECT_EQ(48 / bits, file.CountFrames());
        EXPECT_EQ(read, ReadFrames(file, frames, static_cast<size_t>(bits) / 8)) << bits;
    }
}

TEST_F(SampleFiles, RefusesWhatItDoesNotRead)
{
    const std::string data = RiffChunk("data", "01234567");
    EXPECT_EQ(-2, Status<WAVFile>({}));
    EXPECT_EQ(-2, Status<WAVFile>("RIFF\4\0\0\0AVI "s));
    EXPECT_EQ(0, Status<WAVFile>(WAVE({Fmt(3, 2, 48000, 32), data})));
    for (const uint16_t tag : {0, 2, 6, 7, 0x55, 0xFFFE})
        EXPECT_EQ(-3, Status<WAVFile>(WAVE({Fmt(tag, 2, 48000, 16), data}))) << tag;
    EXPECT_EQ(-1, WAVFile("/nowhere/at all", kRead).InitCheck());
    EXPECT_EQ(-2, Status<AIFFFile>(WAVE({data})));
    EXPECT_EQ(-1, AIFFFile("/nowhere/at all", kCreate).InitCheck());

    WAVFile bare(Put(WAVE({data})).c_str(), kRead);
    EXPECT_EQ(0, bare.InitCheck()) << "no format";
    EXPECT_EQ(nullptr, bare.Format());
    EXPECT_EQ("", ReadFrames(bare, 1, 4));
    WAVFile nothing(Put(WAVE({Fmt(1, 0, 48000, 16), data})).c_str(), kRead);
    EXPECT_EQ("", ReadFrames(nothing, 1, 4)) << "no channels";

    AudioFile other(Put(WAVE({data})).c_str(), kRead, 1);
    int32_t count = 1;
    EXPECT_EQ(-10, other.InitCheck());
    EXPECT_EQ(-10, other.Read(&count, count));
    EXPECT_EQ(-10, other.SetFormat(kStereo));
}

TEST_F(SampleFiles, SizesThatLieDoNoHarm)
{
    const std::string fmt = Fmt(1, 2, 48000, 16), none = RiffChunk("data", "");
    const std::string whole = WAVE({fmt, Claiming(0xFFFFFFFF, RiffChunk("data", "01234567"))});
    const std::tuple<const char*, std::string, int64_t> rows[] = {
        {"data longer than the file", whole, 2},
        {"fmt longer than the file", WAVE({Claiming(0x7FFFFFFF, RiffChunk("fmt ", "\1\0\2\0"s))}),
         0},
        {"fmt cut short", WAVE({RiffChunk("fmt ", "\1\0\2\0"s), RiffChunk("data", "01234567")}), 0},
        {"a recording cut off: all sizes 0",
         Claiming(0, WAVE({fmt, Claiming(0, RiffChunk("data", "0123456789ab"))})), 3},
        {"no samples, but another chunk", WAVE({fmt, none, RiffChunk("LIST", "abcd")}), 0},
        {"a form longer than the file",
         Claiming(0xFFFFFFFE, WAVE({fmt, RiffChunk("data", "0123")})), 1},
    };
    for (const auto& [what, file, frames] : rows)
        EXPECT_EQ(frames, WAVFile(Put(file).c_str(), kRead).CountFrames()) << what;
    for (size_t length = 0; length < whole.size(); length++) {
        WAVFile cut(Put(whole.substr(0, length)).c_str(), kRead);
        EXPECT_LE(cut.CountFrames(), 2);
        ReadFrames(cut, 3, 4);
    }
}

TEST_F(SampleFiles, DescribesInOneLine)
{
    const std::pair<std::string, const char*> rows[] = {
        {WAVE({Fmt(1, 2, 48000, 16)}), "WAV stereo 16-bit PCM @ 48000 Hz"},
        {WAVE({Fmt(3, 5, 44100, 32)}), "WAV >4-channel 32-bit float @ 44100 Hz"},
        {WAVE({Fmt(7, 1, 8000, 8)}), "WAV [open error]"},
    };
    std::string text;
    for (const auto& [wave, expected] : rows) {
        EXPECT_EQ(expected[4] != '[', DescribeWAV(Put(wave).c_str(), text));
        EXPECT_EQ(expected, text);
    }
    EXPECT_FALSE(DescribeWAV(nullptr, text));
    EXPECT_EQ("WAV [prg error]", text);
    const std::string aiff = Put(AIFF(0, 16, "\x40\x0E\xAC\x44", std::string(8, '\0')));
    EXPECT_TRUE(DescribeAIFF(aiff.c_str(), text));
    EXPECT_EQ("AIFF mono 16-bit PCM @ 44100 Hz", text);
    EXPECT_EQ(kAIFFFileType, AudioFileTypeOf(aiff.c_str()));
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
