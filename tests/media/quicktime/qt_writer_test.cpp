#include <gtest/gtest.h>

#include "media/media_files.h"
#include "media/quicktime/qt_file.h"
#include "support/atom_tree.h"
#include "support/qt_builder.h"
#include "support/riff.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

const Bytes kFrame(144000, 'v');

MediaFormat RawVideo(uint32_t cspace, float rate = 25)
{
    return MediaFormat(RawVideoFormat{cspace, 720, 576, rate, 1, 0});
}

MediaFormat Encoded(uint32_t encoding)
{
    MediaFormat format = DVFormat(true);
    format.encoded_video.encoding = encoding;
    return format;
}

MediaFormat PCM(uint16_t channels = 2, uint16_t bits = 16, int32_t rate = 48000)
{
    return MediaFormat(RawAudioFormat{kSamplePCM, channels, bits, rate});
}

MediaFormat EncodedSound(const MediaFormat& output, uint32_t encoding)
{
    return MediaFormat(EncodedAudioFormat{output.raw_audio, encoding, 0});
}

// Media at places that no test wants to fill.
class SparseQTFile : public QTFile {
public:
    using QTFile::LeaveHole;
    using QTFile::QTFile;
};

class QTWriter : public ::testing::Test {
protected:
    std::string Path() const { return fFolder.Path("movie.mov"); }
    // Writes a movie with what `fill` puts into it.
    template <class Fill>
    Bytes Write(Fill fill, uint32_t options = 0)
    {
        {
            QTFile file(Path().c_str(), kCreate);
            file.SetOptions(options, "Converted by Kelvane");
            fill(file);
        }
        return ReadWhole(Path());
    }
    // The body of a table of a track.
    Bytes Table(const std::string& name, int track = 0) const
    {
        return AtomBody(ReadWhole(Path()),
                        "moov/trak:" + std::to_string(track) + "/mdia/minf/stbl/" + name);
    }

    TempFolder fFolder;
};

TEST_F(QTWriter, WritesEveryAtomByteForByte)
{
    const int64_t before = time(nullptr) + 2082844800;
    Bytes whole = Write([](QTFile& file) {
        ASSERT_EQ(0, file.InitCheck());
        ASSERT_EQ(0, file.AddDVTrack(true));
        ASSERT_EQ(0, file.AddPCMAudioTrack(PCM()));
        for (int i = 0; i < 2; i++) {
            ASSERT_EQ(0, file.WriteFrame(0, kFrame.data(), 144000));
            ASSERT_EQ(0, file.WriteFrame(1, "abcd", 4));
        }
        ASSERT_EQ(0, file.Close());
        EXPECT_EQ(-1, file.WriteFrame(0, kFrame.data(), 144000)) << "closed";
    });
    EXPECT_EQ("mdat moov", AtomNames(whole));
    EXPECT_EQ(1u, ValueAt(whole, 0)) << "always the 64-bit form";
    EXPECT_EQ(16u + 2 * 144004, ValueAt(whole, 8, 8));
    EXPECT_EQ(Join({kFrame, Text("badc"), kFrame, Text("badc")}), AtomBody(whole, "mdat"));

    const uint64_t now = ValueAt(AtomBody(whole, "moov/mvhd"), 4);
    EXPECT_LE(before, static_cast<int64_t>(now));
    EXPECT_GE(before + 60, static_cast<int64_t>(now));
    const Bytes times = Join({Big(now), Big(now)});
    const Bytes matrix = Longs({65536, 0, 0, 0, 65536, 0, 0, 0, 0x40000000});
    const auto handler = [](const char* type, const std::string& name) {
        return QTAtom(
            "hdlr", {Big(0), Text(type), Text("appl"), Bytes(8), Big(name.size(), 1), Text(name)});
    };
    const Bytes data =
        Join({handler("dhlralis", "Apple Alias Data Handler"),
              QTAtom("dinf", {QTAtom("dref", {Longs({0, 1}), QTAtom("alis", {Big(1)})})})});
    const auto track = [&](uint32_t id, uint32_t time, uint32_t volume, const Bytes& size,
                           const Bytes& mdia) {
        return QTAtom("trak",
                      {QTAtom("tkhd", {Big(15), times, Longs({id, 0, time, 0, 0, 0, volume << 16}),
                                       matrix, size}),
                       QTAtom("load", {Longs({0, 0, 0, 320})}),
                       QTAtom("edts", {QTAtom("elst", {Longs({0, 1, time, 0, 65536})})}),
                       QTAtom("mdia", {mdia})});
    };
    const Bytes video = QTAtom(
        "stbl",
        {QTAtom("stsd", {Longs({0, 1, 86}), Text("dvc "), Bytes(6), Big(1, 2), Big(0), Text("appl"),
                         Longs({100, 258, 720 << 16 | 576, 0x480000, 0x480000, 0}), Big(1, 2),
                         Big(8, 1), Text("DV - PAL"), Bytes(23), Longs({24 << 16 | 65535})}),
         QTAtom("stts", {QTTable({2, 24}, 2)}), QTAtom("stsc", {QTTable({1, 1, 1}, 3)}),
         QTAtom("stsz", {Longs({0, 0, 2, 144000, 144000})}),
         QTAtom("stco", {QTTable({16, 144020})})});
    const Bytes sound = QTAtom(
        "stbl", {QTAtom("stsd", {Longs({0, 1, 36}), Text("twos"), Bytes(6), Big(1, 2), Big(0),
                                 Text("appl"), Longs({2 << 16 | 16, 0, 48000u << 16})}),
                 QTAtom("stts", {QTTable({2, 1}, 2)}), QTAtom("stsc", {QTTable({1, 1, 1}, 3)}),
                 QTAtom("stsz", {Longs({0, 1, 2})}), QTAtom("stco", {QTTable({144016, 288020})})});
    const Bytes expected = QTAtom(
        "moov",
        {QTAtom("mvhd", {Big(0), times, Longs({600, 48, 65536, 0xFF << 16, 0, 0}), matrix,
                         Bytes(16), Longs({48, 0, 3})}),
         QTAtom("udta", {QTAtom("\xA9inf", {Longs({20 << 16}), Text("Converted by Kelvane")})}),
         track(1, 48, 0, Longs({720 << 16, 576 << 16}),
               Join({QTAtom("mdhd", {Big(0), times, Longs({600, 48, 100})}),
                     handler("mhlrvide", "Apple Video Media Handler"),
                     QTAtom("minf",
                            {QTAtom("vmhd", {Longs({1, 64 << 16 | 32768, 32768u << 16 | 32768})}),
                             data, video})})),
         track(2, 0, 0x00FF, Bytes(8),
               Join({QTAtom("mdhd", {Big(0), times, Longs({48000, 2, 100})}),
                     handler("mhlrsoun", "Apple Sound Media Handler"),
                     QTAtom("minf", {QTAtom("smhd", {Bytes(8)}), data, sound})}))});
    whole.erase(whole.begin(), whole.begin() + 16 + 2 * 144004);
    EXPECT_EQ(expected, whole);
}

TEST_F(QTWriter, NamesFormatsCompressorsAndVendors)
{
    const MediaFormat pal = DVFormat(true), ntsc = DVFormat(false);
    MediaFormat odd = DVFormat(false);
    odd.encoded_video.h = 486;
    const std::tuple<std::vector<MediaFormat>, uint32_t, std::string> rows[] = {
        {{pal, Encoded(kEncodingDVCPRO25)}, 0, "dvc  appl 24 DV - PAL"},
        {{pal}, kQTDVCP, "dvcp appl 24 DV - PAL"},
        {{ntsc}, kQTDVCP, "dvc  appl 24 DV - NTSC"},
        {{odd}, 0, "dvc  appl 24 DV"},
        {{pal}, kQTSoftDV | kQTDVCP, "dvcp Rads 24 Radius SoftDV - PAL"},
        {{ntsc}, kQTSoftDV, "dvc  Rads 24 Radius SoftDV - NTSC"},
        {{odd}, kQTSoftDV, "dvc  Rads 24 Radius SoftDV"},
        {{pal}, kQTAvidDV | kQTDVCPRO | kQTDVCP, "AVdv AVID 24 Avid DV Codec"},
        {{pal}, kQTDVCPRO | kQTDVCP, "dvpp appl 24 DVCPRO - PAL"},
        {{ntsc}, kQTDVCPRO, "dvpp appl 24 DVCPRO - NTSC"},
        {{odd}, kQTDVCPRO, "dvpp appl 24 DVCPRO"},
        {{Encoded(kEncodingPJPEG)}, 0, "jpeg appl 24 QuickTime"},
        {{Encoded(kEncodingMJPEG)}, 0, "mjpa appl 24 QuickTime"},
        {{Encoded(kEncodingPNG)}, 0, "png  appl 24 QuickTime"},
        {{Encoded(kEncodingCinepak)}, 0, "cvid appl 24 QuickTime"},
        {{Encoded(kEncodingQTRLE)}, 0, "rle  appl 24 Animation"},
        {{RawVideo(3)}, 0, "raw  appl 24 None"},
        {{RawVideo(5)}, kQTAvidDV, "raw  appl 24 None"},
        {{RawVideo(6), RawVideo(8), RawVideo(8200)}, 0, "raw  appl 32 None"},
        {{RawVideo(16384), RawVideo(16421)}, 0, "yuv2 appl 24 Component Video"},
        {{RawVideo(16389)}, 0, "yuvs appl 24 QuickTime"},
        {{RawVideo(16416)}, 0, "2vuy appl 24 QuickTime"},
        {{RawVideo(16385), RawVideo(16417)}, 0, "y411 appl 16 QuickTime"},
        {{RawVideo(16387), RawVideo(16419)}, 0, "v308 appl 16 QuickTime"},
        {{RawVideo(16388), RawVideo(16420)}, 0, "yuv4 appl 16 QuickTime"},
    };
    for (const auto& [formats, options, expected] : rows) {
        for (const MediaFormat& format : formats) {
            const auto add = [&](QTFile& file) {
                EXPECT_EQ(0, format.kind == kRawVideo ? file.AddVideoTrack(format)
                                                      : file.AddEncodedVideoTrack(format));
            };
            Write(add, options);
            const std::string stsd = AsText(Table("stsd"));
            ASSERT_EQ(8u + 86, stsd.size());
            EXPECT_EQ(expected, stsd.substr(12, 4) + " " + stsd.substr(28, 4) + " " +
                                    std::to_string(stsd[91]) + " " +
                                    stsd.substr(59, static_cast<size_t>(stsd[58])));
        }
    }
}

TEST_F(QTWriter, RefusesWhatTheFormatCannotHold)
{
    QTFile file(Path().c_str(), kCreate);
    for (uint32_t encoding : {0, 2, 3, 4, 10, 12})
        EXPECT_EQ(-10, file.AddEncodedVideoTrack(Encoded(encoding))) << encoding;
    EXPECT_EQ(-10, file.AddVideoTrack(RawVideo(7)));
    EXPECT_EQ(-10, file.AddVideoTrack(Encoded(kEncodingDV))) << "not raw";
    for (float rate : {0.0f, -25.0f, std::numeric_limits<float>::quiet_NaN(), 1e30f})
        EXPECT_EQ(-10, file.AddVideoTrack(RawVideo(5, rate))) << rate;
    MediaFormat sound = PCM();
    for (uint32_t format : {kSampleUnknown, kSamplePCMUnsigned, kSampleFloat, kSampleADPCM}) {
        sound.raw_audio.format = format;
        EXPECT_EQ(-10, file.AddPCMAudioTrack(sound)) << format;
        EXPECT_EQ(-10, file.AddAudioTrack(EncodedSound(PCM(), format))) << format;
    }
    EXPECT_EQ(-10, file.AddPCMAudioTrack(PCM(2, 16, 96000)));
    EXPECT_EQ(0, file.AddPCMAudioTrack(PCM(0))) << "not added, which is no error";
    EXPECT_EQ(0, file.CountStreams());
    EXPECT_EQ(-1, file.WriteFrame(0, kFrame.data(), 4));
    QTFile source(Path().c_str(), kRead);
    EXPECT_EQ(-1, source.AddDVTrack(true));
    EXPECT_EQ(-1, source.Close());
    EXPECT_EQ(0, file.AddDVTrack(true));
    EXPECT_EQ(0, file.WriteFrame(0, "v", 1));
    Bytes frame(4);
    uint32_t size = 1;
    EXPECT_EQ(-1, file.ReadFrame(0, frame, size)) << "a destination";
    EXPECT_EQ(0u, size);
    EXPECT_EQ(-1, QTFile("/nowhere/at/all", kCreate).InitCheck());
    QTFile full("/dev/full", kCreate);
    EXPECT_EQ(-1, full.InitCheck());
    EXPECT_EQ(-1, full.AddDVTrack(true));
}

TEST_F(QTWriter, CountsTimeSoThatFramesAreWhole)
{
    const std::tuple<float, uint32_t, uint32_t> rows[] = {
        {25, 600, 24}, {29.97f, 30000, 1001},  {30, 600, 20},
        {50, 600, 12}, {23.976f, 24000, 1001}, {59.94f, 60000, 1001},
        {7, 700, 100}, {12.5f, 12513, 1001},   {601, 60100, 100}};
    for (const auto& [rate, scale, duration] : rows) {
        SCOPED_TRACE(rate);
        const Bytes whole = Write([rate = rate](QTFile& file) {
            ASSERT_EQ(0, file.AddVideoTrack(RawVideo(5, rate)));
            for (int i = 0; i < 3; i++)
                ASSERT_EQ(0, file.WriteFrame(0, "v", 1));
        });
        EXPECT_EQ(scale, ValueAt(AtomBody(whole, "moov/mvhd"), 12));
        EXPECT_EQ(scale, ValueAt(AtomBody(whole, "moov/trak/mdia/mdhd"), 12));
        EXPECT_EQ(3 * duration, ValueAt(AtomBody(whole, "moov/mvhd"), 16));
        EXPECT_EQ(duration, ValueAt(Table("stts"), 12));
    }
}

TEST_F(QTWriter, CountsSoundInSampleFramesAndJoinsEqualChunks)
{
    const Bytes whole = Write([](QTFile& file) {
        ASSERT_EQ(0, file.AddDVTrack(false));
        ASSERT_EQ(0, file.AddPCMAudioTrack(PCM()));
        // Told of the true format when the first sound is about to come.
        EXPECT_EQ(-1, file.SetAudioFormat(0, 32000, 2, -1)) << "video";
        EXPECT_EQ(-1, file.SetAudioFormat(2, 32000, 2, -1));
        EXPECT_EQ(0, file.SetAudioFormat(1, 32000, 1, -1));
        for (uint32_t bytes : {2136, 2134, 2134, 2134, 2136, 2136})
            ASSERT_EQ(0, file.WriteFrame(1, kFrame.data(), bytes));
        EXPECT_EQ(-1, file.SetAudioFormat(1, 48000, 2, -1)) << "too late";
        EXPECT_EQ(6405, file.SampleCount(1));
        EXPECT_EQ(6, file.ChunkCount(1));
    });
    EXPECT_EQ(QTTable({1, 1068, 1, 2, 1067, 1, 5, 1068, 1}, 3), Table("stsc", 1));
    EXPECT_EQ(Longs({0, 1, 6405}), Table("stsz", 1));
    EXPECT_EQ(QTTable({6405, 1}, 2), Table("stts", 1));
    EXPECT_EQ(32000u, ValueAt(AtomBody(whole, "moov/trak:1/mdia/mdhd"), 12));
    const Bytes stsd = Table("stsd", 1);
    EXPECT_EQ(Join({Big(1, 2), Big(16, 2), Big(0), Big(32000u << 16)}),
              Bytes(stsd.end() - 12, stsd.end()));
}

TEST_F(QTWriter, SwapsWordsOfSoundThatHasThem)
{
    const Bytes whole = Write([](QTFile& file) {
        ASSERT_EQ(0, file.AddPCMAudioTrack(PCM(2, 8)));
        ASSERT_EQ(0, file.AddAudioTrack(EncodedSound(PCM(2, 8), kSampleULaw)));
        ASSERT_EQ(0, file.AddPCMAudioTrack(PCM(1, 16)));
        ASSERT_EQ(0, file.WriteFrame(0, "abcdef", 6));
        ASSERT_EQ(0, file.WriteFrame(1, "uvwxyz", 6));
        ASSERT_EQ(0, file.WriteFrame(2, "123456", 6));
    });
    EXPECT_EQ(Text("abcdefuvwxyz214365"), AtomBody(whole, "mdat"));
    EXPECT_EQ(QTTable({3, 1}, 2), Table("stts", 0));
    EXPECT_EQ(QTTable({3, 1}, 2), Table("stts", 1));
    EXPECT_EQ(8u, ValueAt(Table("stsd", 0), 34, 2));
    EXPECT_EQ(16u, ValueAt(Table("stsd", 1), 34, 2)) << "as these are always described";
    QTFile file(Path().c_str(), kRead);
    EXPECT_EQ("abcdef", NextFrame(file, 0));
    EXPECT_EQ("uvwxyz", NextFrame(file, 1));
    EXPECT_EQ("123456", NextFrame(file, 2));
}

TEST_F(QTWriter, GoesBeyondFourGigabytesWithWideOffsetsOnly)
{
    const uint64_t last = (uint64_t{1} << 32) - 16 - 144000 - 144000;  // hole to the last that fits
    const std::tuple<bool, uint64_t, int32_t> rows[] = {
        {false, last, 0}, {false, last + 1, -1}, {false, 5ull << 30, -1}, {true, 5ull << 30, 0}};
    for (const auto& [wide, hole, status] : rows) {
        SCOPED_TRACE(std::to_string(hole));
        {
            SparseQTFile file(Path().c_str(), kCreate);
            if (wide) file.SetOptions(kQTWideOffsets, nullptr);
            ASSERT_EQ(0, file.AddDVTrack(true));
            ASSERT_EQ(0, file.WriteFrame(0, kFrame.data(), 144000));
            file.LeaveHole(hole);
            EXPECT_EQ(status, file.WriteFrame(0, Bytes(144000, 'w').data(), 144000));
        }
        QTFile file(Path().c_str(), kRead);
        ASSERT_EQ(0, file.InitCheck());
        ASSERT_EQ(status ? 1 : 2, file.SampleCount(0));
        EXPECT_EQ('v', NextFrame(file)[1]);
        if (status) continue;
        EXPECT_EQ(hole + 16 + 144000, file.Movie().tracks[0].samples.offsets[1]);
        EXPECT_EQ('w', NextFrame(file)[1]);
    }
}

TEST_F(QTWriter, GivesUpMediaForTheHeaderOnAFullDisk)
{
    // A megabyte; more only for a header that is larger than that.
    const std::tuple<uint32_t, uint32_t, uint64_t, int64_t> rows[] = {
        {144000, 20, 0x100000, 12}, {20, 200000, 0x200000, 95142}};
    for (const auto& [size, count, given_up, left] : rows) {
        const uint64_t media = uint64_t{size} * count;
        const Bytes whole = Write([&, size = size, count = count, left = left](QTFile& file) {
            ASSERT_EQ(0, file.AddDVTrack(true));
            for (uint32_t i = 0; i < count; i++)
                ASSERT_EQ(0, file.WriteFrame(0, kFrame.data(), size));
            const FullDisk full(16 + media + 100);
            EXPECT_EQ(EFBIG, file.Close().SystemError()) << "told all the same";
            EXPECT_EQ(left, file.SampleCount(0));
        });
        EXPECT_EQ("mdat moov", AtomNames(whole)) << "nothing is left behind the header";
        EXPECT_EQ(media - given_up, AtomBody(whole, "mdat").size());
        const QTFile file(Path().c_str(), kRead);
        EXPECT_EQ(left, file.SampleCount(0)) << "no frame lies in the header";
        EXPECT_EQ(left, file.ChunkCount(0));
    }
}

TEST_F(QTWriter, KeepsWhatWasWrittenWhenTheDiskFillsUp)
{
    const Bytes whole = Write([](QTFile& file) {
        ASSERT_EQ(0, file.AddDVTrack(true));
        ASSERT_EQ(0, file.AddPCMAudioTrack(PCM()));
        const FullDisk full(16 + 4 * 144000);
        for (int i = 0; i < 3; i++) {
            ASSERT_EQ(0, file.WriteFrame(0, kFrame.data(), 144000));
            ASSERT_EQ(0, file.WriteFrame(1, kFrame.data(), 7680));
        }
        EXPECT_EQ(-1, file.WriteFrame(0, kFrame.data(), 144000));
        EXPECT_EQ(-1, file.WriteFrame(0, kFrame.data(), 144000));
    });
    EXPECT_EQ("mdat moov", AtomNames(whole));
    const QTFile file(Path().c_str(), kRead);
    EXPECT_EQ(3, file.SampleCount(0));
    EXPECT_EQ(3 * 1920, file.SampleCount(1));
}

}  // namespace
}  // namespace kelvane
