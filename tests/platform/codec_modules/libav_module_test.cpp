#include <gtest/gtest.h>

#include <random>

#include "base/four_cc.h"
#include "dv/dif_frame.h"
#include "platform/codec_modules/codec_drivers.h"
#include "sample/sample_clip.h"
#include "support/picture_noise.h"
#include "support/scarce_resources.h"

namespace kelvane {
namespace {

CodecSetup SetupFor(bool pal, bool dvcpro, uint16_t bits)
{
    const TelevisionSystem& system = SystemFor(pal);
    CodecSetup setup{};
    setup.raw.width = setup.coded.width = system.width;
    setup.raw.height = setup.coded.height = system.height;
    setup.raw.bit_count = bits;
    setup.coded.bit_count = 24;
    setup.coded.compression = dvcpro ? "dv25"_4cc : "dvsd"_4cc;
    return setup;
}

OpenedCodec OpenCodec(const CodecSetup& setup, bool decoder)
{
    static const CodecDrivers drivers = LoadCodecDrivers(CodecFolder());
    OpenedCodec codec;
    for (const CodecDriver& driver : drivers.codecs)
        if (driver.codec.handler == "dvsd"_4cc && (driver.codec.is_decoder != 0) == decoder &&
            codec.Open(driver, setup) == 0)
            break;
    return codec;
}

Bytes Copy(std::span<const uint8_t> bytes)
{
    return {bytes.begin(), bytes.end()};
}

TEST(LibavModule, KeepsAMovingPictureAndGivesTheSameBytesEachTime)
{
    const CodecDrivers drivers = LoadCodecDrivers(CodecFolder());
    for (const bool pal : {true, false})
        for (const bool dvcpro : {false, true}) {
            SCOPED_TRACE(testing::Message() << "PAL " << pal << ", DVCPRO " << dvcpro);
            SampleOptions options;
            options.pal = pal;
            options.dvcpro = dvcpro;
            SampleClip clip(drivers, options);
            ASSERT_EQ(0, clip.InitCheck());
            Bytes frame = Copy(clip.Frame(7));
            SampleClip again(drivers, options);
            for (const int64_t number : {6, 8, 7})
                EXPECT_EQ(number == 7, frame == Copy(again.Frame(number))) << number;
            ASSERT_EQ(size_t(SystemFor(pal).dv_frame_size), frame.size());
            DIFFrame view(frame.data(), static_cast<uint32_t>(frame.size()));
            EXPECT_EQ(pal, view.IsPAL());
            EXPECT_EQ(dvcpro, view.IsDVCPRO());
            OpenedCodec decoder = OpenCodec(SetupFor(pal, dvcpro, 32), true);
            Bytes picture(clip.Picture().size());
            ASSERT_EQ(0, decoder.Decode(frame, picture));
            // 4:1:1 loses more of the sharp vertical edges of colour.
            EXPECT_GT(PictureNoise(Copy(clip.Picture()), picture), pal && !dvcpro ? 29 : 27);
        }
}

TEST(LibavModule, RefusesRubbishAndOtherSystemsAndSizes)
{
    OpenedCodec decoder = OpenCodec(SetupFor(true, false, 32), true);
    ASSERT_TRUE(decoder.IsOpen());
    std::mt19937 random(1);
    Bytes noise(144000);
    for (uint8_t& byte : noise)
        byte = static_cast<uint8_t>(random());
    SampleOptions ntsc;
    ntsc.pal = false;
    const CodecDrivers drivers = LoadCodecDrivers(CodecFolder());
    const Bytes otherSystem = Copy(SampleClip(drivers, ntsc).Frame(0));
    Bytes padded = otherSystem;
    padded.resize(144000);
    const Bytes good = Copy(SampleClip(drivers, {}).Frame(0));
    const Bytes cut(good.begin(), good.end() - 1), untouched(720 * 576 * 4, 0x77);
    Bytes picture = untouched;
    for (const Bytes& bad :
         {noise, Bytes(144000, 0), Bytes(144000, 0xFF), otherSystem, padded, cut, Bytes()})
        EXPECT_NE(0, decoder.Decode(bad, picture));
    EXPECT_EQ(untouched, picture) << "a refused frame is not converted";
    EXPECT_NE(0, decoder.Decode(good, std::span(picture).first(100)));
    EXPECT_EQ(0, decoder.Decode(good, picture)) << "good frames go on after bad ones";
}

// An encoder and a decoder, and a picture that went through both.
struct RoundTrip {
    void Open(uint32_t threads)
    {
        CodecSetup setup = SetupFor(true, false, 32);
        setup.threads = threads;
        encoder = OpenCodec(setup, false);
        decoder = OpenCodec(setup, true);
    }
    // Where a step fails its result is cleared. Allocates nothing here.
    void Code(const Bytes& source)
    {
        uint32_t bytes = 0;
        frame.resize(144000);
        picture.resize(720 * 576 * 4);
        if (encoder.Encode(source.data(), frame, bytes) != 0) frame.clear();
        if (decoder.Decode(frame, picture) != 0) picture.clear();
    }
    bool SameAs(const RoundTrip& other) const
    {
        return frame == other.frame && picture == other.picture;
    }

    OpenedCodec encoder, decoder;
    Bytes frame = Bytes(144000), picture = Bytes(720 * 576 * 4);
};

Bytes SmoothPicture()
{
    Bytes picture(720 * 576 * 4);
    for (size_t i = 0; i < picture.size(); i++)
        picture[i] = static_cast<uint8_t>(i / 8 % 720 / 3 + i % 4 * 20);
    return picture;
}

TEST(LibavModule, TheNumberOfThreadsToBeHadDoesNotChangeTheBytes)
{
    const Bytes source = SmoothPicture();
    RoundTrip one;
    one.Open(1);
    one.Code(source);
    ASSERT_FALSE(one.frame.empty() || one.picture.empty());
    for (int allowed = 0; allowed <= 4; allowed++) {
        AllowThreads(allowed);
        RoundTrip some;
        some.Open(4);
        EXPECT_GT(ThreadsRefused(), 0);
        AllowThreads(-1);
        some.Code(source);
        EXPECT_TRUE(some.SameAs(one)) << allowed << " threads";
    }
}

// Fails each allocation of coding and decoding a picture. How often the codecs did not open.
int TimesNotOpened(uint32_t threads)
{
    const Bytes source = SmoothPicture();
    RoundTrip good;
    good.Open(threads);
    good.Code(source);
    EXPECT_FALSE(good.frame.empty() || good.picture.empty());
    int not_opened = 0, number = 1;
    for (bool failed = true; failed; number++) {
        SCOPED_TRACE(testing::Message() << "allocation " << number << ", " << threads);
        RoundTrip trip;
        FailAllocation(number);
        trip.Open(threads);
        trip.Code(source);
        failed = AllocationFailed();
        FailAllocation(0);
        EXPECT_TRUE(trip.frame.empty() || trip.frame == good.frame);
        EXPECT_TRUE(trip.picture.empty() || trip.picture == good.picture);
        EXPECT_TRUE(failed || trip.SameAs(good));
        const bool opened = trip.encoder.IsOpen() && trip.decoder.IsOpen();
        if (!opened) not_opened++;
        trip.Code(source);
        EXPECT_TRUE(!opened || trip.SameAs(good)) << "what is open goes on as ever";
    }
    EXPECT_GT(number, 20) << "hardly anything failed";
    return not_opened;
}

TEST(LibavModule, MemoryThatRunsOutIsAFailureAndNoMore)
{
    EXPECT_LT(TimesNotOpened(2), TimesNotOpened(1)) << "two threads that fail are tried as one";
}

// As long as more than half of its sequences are there, as from a scratched disk.
TEST(LibavModule, DecodesAFrameThatIsMoreThanHalfGood)
{
    for (const bool pal : {true, false}) {
        const Bytes good = Copy(SampleClip(LoadCodecDrivers(CodecFolder()), {.pal = pal}).Frame(0));
        OpenedCodec decoder = OpenCodec(SetupFor(pal, false, 32), true);
        const size_t sequences = good.size() / 12000;
        for (size_t lost = 1; lost < sequences; lost++) {
            Bytes frame = good, picture(size_t(720) * (pal ? 576 : 480) * 4);
            std::fill(frame.end() - ptrdiff_t(lost * 12000), frame.end(), uint8_t{0});
            EXPECT_EQ(lost < (pal ? 6u : 5u), decoder.Decode(frame, picture) == 0) << lost;
        }
    }
}

TEST(LibavModule, RefusesFormatsThatItDoesNotServe)
{
    CodecSetup depth = SetupFor(true, false, 16), height = SetupFor(true, false, 24);
    CodecSetup kind = height;
    height.coded.height = 480;
    kind.coded.compression = "mjpg"_4cc;
    for (const bool decoder : {false, true}) {
        EXPECT_TRUE(OpenCodec(SetupFor(true, false, 24), decoder).IsOpen());
        for (const CodecSetup& setup : {depth, height, kind})
            EXPECT_FALSE(OpenCodec(setup, decoder).IsOpen());
    }
}

}  // namespace
}  // namespace kelvane
