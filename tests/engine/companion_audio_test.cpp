// Sound files beside a clip: their names, which of them fit together, and what is heard of them.

#include "engine/companion_audio.h"

#include <gtest/gtest.h>

#include <set>

#include "support/clip_maker/sample_sound.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

using Bytes = std::vector<uint8_t>;
using Paths = std::vector<std::string>;

constexpr RawAudioFormat kMono = {kSamplePCM, 1, 16, 48000};
constexpr RawAudioFormat kStereo = {kSamplePCM, 2, 16, 48000};

class Companions : public testing::Test {
protected:
    void Make(const std::string& name, const RawAudioFormat& format, const Bytes& samples)
    {
        const bool wav = name.ends_with("wav");
        AudioFile file(fFolder.Path(name).c_str(), kCreate, wav ? kWAVFileType : kAIFFFileType);
        ASSERT_EQ(0, file.SetFormat(format));
        const auto frames = static_cast<int32_t>(samples.size() / SampleFrameSize(format));
        ASSERT_EQ(0, file.Write(samples.data(), frames));
    }
    void Make(const std::string& name, const RawAudioFormat& format = kMono)
    {
        Make(name, format, Bytes(SampleFrameSize(format) * 10));
    }
    // Names of the files found beside a clip.
    Paths Found(const std::string& clip, bool separate = false)
    {
        CompanionAudio companion;
        EXPECT_EQ(0, companion.FindCompanionAudio(fFolder.Path(clip), separate));
        Paths names;
        for (const std::string& path : companion.Paths())
            names.push_back(std::filesystem::path(path).filename());
        return names;
    }
    std::string Refused(const std::string& clip)
    {
        CompanionAudio companion;
        EXPECT_EQ(-18, companion.FindCompanionAudio(fFolder.Path(clip), false));
        return companion.Message();
    }
    // All that is heard of a clip's companions.
    Bytes Heard(const std::string& clip, bool separate = false)
    {
        CompanionAudio companion;
        EXPECT_EQ(0, companion.FindCompanionAudio(fFolder.Path(clip), separate));
        AudioFifo fifo;
        Bytes heard;
        while (companion.IsOpen() && !companion.Ended()) {
            companion.Fill(fifo, 7936);
            Bytes some(7000);
            some.resize(fifo.Get(some));
            heard.insert(heard.end(), some.begin(), some.end());
        }
        Bytes rest(fifo.Count());
        fifo.Get(rest);
        heard.insert(heard.end(), rest.begin(), rest.end());
        return heard;
    }
    TempFolder fFolder;
};

TEST_F(Companions, AreFoundByTheNamesThatEditingSystemsGive)
{
    struct Row {
        const char* clip;
        Paths files;
    };
    const Row rows[] = {
        {"r1 V0.avi", {"r1 A0.wav", "r1 A1.wav"}},
        {"r2.avi", {"r2.wav"}},
        {"r3.dv", {"r3.aif"}},
        {"r4", {"r4.aiff"}},
        {"r5.avi", {"r5_1.wav", "r5_2.wav"}},
        {"r6.avi", {"r6_1.aif", "r6_2.aif"}},
        {"r7.avi", {"r7_1.aiff", "r7_2.aiff"}},
        {"r8.avi", {"r8_A1.wav", "r8_A2.wav", "r8_A3.wav", "r8_A4.wav"}},
        {"r9.avi", {"r9#01.wav", "r9#02.wav"}},
        {"r10.avi", {"r10#1.wav", "r10#2.wav"}},
        {"r11.V1.avi", {"r11.A1.wav", "r11.B1.wav"}},
        {"Movie V01.avi", {"Movie A01.wav", "Movie A11.wav"}},
    };
    for (const Row& row : rows)
        for (const std::string& name : row.files)
            Make(name);
    for (const Row& row : rows)
        EXPECT_EQ(row.files, Found(row.clip)) << row.clip;
    EXPECT_EQ(Paths{}, Found("nothing.avi"));
    Make("r5.wav");
    EXPECT_EQ(Paths{"r5.wav"}, Found("r5.avi")) << "the first name that is there";
}

TEST_F(Companions, OtherFilesOfTheSameNameDoNotCount)
{
    fFolder.Write("a.wav", Bytes{'n', 'o'});
    fFolder.Write("b.wav", {});
    Make("c.wav", {kSampleADPCM, 2, 4, 48000}, Bytes(100));
    Make("c_1.wav");
    EXPECT_EQ(Paths{}, Found("a.avi"));
    EXPECT_EQ(Paths{}, Found("b.avi"));
    EXPECT_EQ(Paths{"c_1.wav"}, Found("c.avi")) << "what cannot be opened is no hit";
}

TEST_F(Companions, MustFitTogether)
{
    Make("rate_1.wav"), Make("rate_2.wav", {kSamplePCM, 1, 16, 44100});
    EXPECT_EQ("Source audio files have different formats!", Refused("rate.avi"));
    Make("bits_1.wav"), Make("bits_2.wav", {kSamplePCM, 1, 24, 48000});
    EXPECT_EQ("Source audio files have different formats!", Refused("bits.avi"));
    Make("two_1.wav", kStereo), Make("two_2.wav", kStereo);
    EXPECT_EQ("Source audio files should be mono!", Refused("two.avi"));
}

TEST_F(Companions, HowManyAreHeardDependsOnWhereTheSoundGoes)
{
    for (const uint32_t rate : {32000u, 48000u})
        for (const char* end : {"_1.wav", "_2.wav", "_3.wav", "_4.wav"})
            Make(std::to_string(rate) + end, {kSamplePCM, 1, 16, static_cast<int32_t>(rate)});
    for (const char* end : {"_1.wav", "_2.wav", "_3.wav"})
        Make(std::string("three") + end);
    struct Row {
        const char* clip;
        bool separate;
        uint32_t channels;
    };
    for (const Row& row : {Row{"32000.avi", false, 4}, Row{"32000.avi", true, 2},
                           Row{"48000.avi", false, 2}, Row{"three.avi", false, 2}}) {
        CompanionAudio companion;
        EXPECT_EQ(0, companion.FindCompanionAudio(fFolder.Path(row.clip), row.separate));
        EXPECT_EQ(row.channels, companion.Channels()) << row.clip;
    }
    // Of four channels half of what was read is kept: 10 groups of 8 bytes become 40 bytes.
    EXPECT_EQ(40u, Heard("32000.avi").size());
    EXPECT_EQ(40u, Heard("32000.avi", true).size());
}

TEST_F(Companions, MonoFilesAreHeardAsStereoAndTheShorterOneEndsInSilence)
{
    const Bytes left = SampleSound(48000).Samples(0, 50000);  // as mono: twice the samples
    Bytes right(left.begin(), left.begin() + 60000);
    Make("m_1.wav", kMono, left);
    Make("m_2.wav", kMono, right);
    right.resize(left.size(), 0);
    const Bytes heard = Heard("m.avi");
    ASSERT_EQ(2 * left.size(), heard.size());
    for (size_t i = 0; i < left.size(); i += 2) {
        ASSERT_EQ(left[i], heard[2 * i]) << i;
        ASSERT_EQ(right[i + 1], heard[2 * i + 3]) << i;
    }
}

TEST_F(Companions, EverySampleSizeBecomesSixteenBits)
{
    const Bytes plain = SampleSound(48000).Samples(0, 30000);
    const size_t samples = plain.size() / 2;
    const auto wide = [&](size_t bytes, bool big, uint8_t flip) {
        Bytes all;
        for (size_t i = 0; i < samples; i++) {
            Bytes one(bytes, 0);  // the 16 bits on top
            for (size_t b = 0; b < std::min<size_t>(bytes, 2); b++) {
                const uint8_t byte = plain[2 * i + 1 - b];
                one[big ? b : bytes - 1 - b] = static_cast<uint8_t>(byte ^ (b == 0 ? flip : 0));
            }
            all.insert(all.end(), one.begin(), one.end());
        }
        return all;
    };
    // AIFF files are written with bytes exchanged in pairs, as they are read.
    const auto paired = [](Bytes bytes) {
        for (size_t i = 0; i + 1 < bytes.size(); i += 2)
            std::swap(bytes[i], bytes[i + 1]);
        return bytes;
    };
    Make("w16.wav", kStereo, plain);
    Make("w24.wav", {kSamplePCM, 2, 24, 48000}, wide(3, false, 0));
    Make("w32.wav", {kSamplePCM, 2, 32, 48000}, wide(4, false, 0));
    Make("a16.aif", kStereo, plain);
    Make("a24.aif", {kSamplePCM, 2, 24, 48000}, paired(wide(3, true, 0)));
    Make("a32.aif", {kSamplePCM, 2, 32, 48000}, paired(wide(4, true, 0)));
    for (const char* clip : {"w16.avi", "w24.avi", "w32.avi", "a16.avi", "a24.avi", "a32.avi"})
        EXPECT_TRUE(plain == Heard(clip)) << clip;

    Make("w8.wav", {kSamplePCM, 2, 8, 48000}, wide(1, false, 0x80));
    Make("a8.aif", {kSamplePCM, 2, 8, 48000}, paired(wide(1, true, 0)));
    Bytes coarse = plain;
    for (size_t i = 0; i < coarse.size(); i += 2)
        coarse[i] = 0;
    EXPECT_TRUE(coarse == Heard("w8.avi"));
    EXPECT_TRUE(coarse == Heard("a8.avi"));
}

TEST_F(Companions, WhatStandsBehindTheSamplesIsNotHeard)
{
    const Bytes plain = SampleSound(48000).Samples(0, 1000);
    Make("t.wav", kStereo, plain);
    Bytes file = ReadWhole(fFolder.Path("t.wav"));
    file.insert(file.end(), {'L', 'I', 'S', 'T', 4, 0, 0, 0, 'n', 'o', 'n', 'e'});
    fFolder.Write("t.wav", file);
    EXPECT_TRUE(plain == Heard("t.avi"));
}

TEST_F(Companions, AFileGivenByNameCountsOnFromIt)
{
    Make("take_1.wav"), Make("take_2.wav");
    CompanionAudio companion;
    EXPECT_EQ(0, companion.OpenCompanionAudio(fFolder.Path("take_1.wav"), false));
    EXPECT_EQ(2u, companion.Paths().size());
    EXPECT_EQ(0, companion.FindCompanionAudio(fFolder.Path("other.avi"), false));
    EXPECT_EQ(2u, companion.Paths().size()) << "once";
}

}  // namespace
}  // namespace kelvane
