// Sound files beside a clip: their names, how many of them count, and what is heard of them.

#include "engine/sound/companion_audio.h"

#include <gtest/gtest.h>

#include "engine/sound/made_up_sound.h"
#include "sample/sample_sound.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

using Paths = std::vector<std::string>;

class Companions : public testing::Test {
protected:
    // By default ten samples of silence.
    void Make(const std::string& name, uint16_t channels = 1, uint16_t bits = 16,
              const Bytes& samples = {}, int32_t rate = 48000)
    {
        const RawAudioFormat format = {kSamplePCM, channels, bits, rate};
        const Bytes silence(SampleFrameSize(format) * 10);
        WriteSound(fFolder.Path(name), format, samples.empty() ? silence : samples);
    }
    void Find(const std::string& clip, bool separate = false)
    {
        fCompanion = {};
        EXPECT_TRUE(fCompanion.FindCompanionAudio(fFolder.Path(clip), separate)) << clip;
    }
    // Names of the files found beside a clip.
    Paths Found(const std::string& clip)
    {
        Find(clip);
        Paths names;
        for (const std::string& path : fCompanion.Paths())
            names.push_back(std::filesystem::path(path).filename());
        return names;
    }
    // All that is heard of a clip's companions.
    Bytes Heard(const std::string& clip, bool separate = false)
    {
        Find(clip, separate);
        AudioFifo fifo;
        Bytes heard;
        for (size_t got = 1; got > 0 || !fCompanion.Ended();) {
            fCompanion.Fill(fifo, 7936);
            Bytes some(7000);
            got = fifo.Get(some);
            heard.insert(heard.end(), some.begin(), some.begin() + ptrdiff_t(got));
        }
        return heard;
    }
    TempFolder fFolder;
    CompanionAudio fCompanion;
};

TEST_F(Companions, AreFoundByTheNamesThatEditingSystemsGive)
{
    const std::pair<const char*, Paths> rows[] = {
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
    for (const auto& [clip, files] : rows)
        for (const std::string& name : files)
            Make(name);
    for (const auto& [clip, files] : rows)
        EXPECT_EQ(files, Found(clip)) << clip;
    EXPECT_EQ(Paths{}, Found("nothing.avi"));
    Make("r5.wav");
    EXPECT_EQ(Paths{"r5.wav"}, Found("r5.avi")) << "the first name that is there";
}

TEST_F(Companions, OtherFilesOfTheSameNameDoNotCount)
{
    fFolder.Write("a.wav", Bytes{'n', 'o'});
    fFolder.Write("b.wav", {});
    WriteSound(fFolder.Path("c.wav"), {kSampleADPCM, 2, 4, 48000}, Bytes(100));
    Make("c_1.wav");
    EXPECT_EQ(Paths{}, Found("a.avi"));
    EXPECT_EQ(Paths{}, Found("b.avi"));
    EXPECT_EQ(Paths{"c_1.wav"}, Found("c.avi")) << "what cannot be opened is no hit";
    ASSERT_EQ(1u, fCompanion.PassedOver().size()) << "but is told";
    EXPECT_EQ(fFolder.Path("c.wav"), fCompanion.PassedOver()[0].path);
    Find("b.avi");
    EXPECT_EQ(1u, fCompanion.PassedOver().size());
    std::filesystem::create_directory(fFolder.Path("d.wav"));
    Find("d.avi");
    EXPECT_EQ(0u, fCompanion.PassedOver().size()) << "a folder is nobody's sound";
}

TEST_F(Companions, AFileGivenByNameIsUsedOrTheRunFails)
{
    Make("good.wav");
    const Bytes good = ReadWhole(fFolder.Path("good.wav"));
    const auto put = [&](const std::string& name, size_t length) {
        fFolder.Write(name, Bytes(good.begin(), good.begin() + ptrdiff_t(length)));
    };
    put("empty.wav", 0), put("head.wav", 30), put("silent.wav", 36);
    fFolder.Write("text.wav", Bytes(200, 'x'));
    WriteSound(fFolder.Path("law.wav"), {kSampleALaw, 2, 8, 48000}, Bytes(100));
    Make("many.wav", 17), Make("none.wav", 1, 40);
    std::filesystem::create_directory(fFolder.Path("folder"));
    const std::pair<const char*, const char*> rows[] = {
        {"missing.wav", "can't be read. (No such file or directory)"},
        {"folder", "can't be read. (Is a directory)"},
        {"empty.wav", "can't be used: it is no WAVE or AIFF file."},
        {"text.wav", "can't be used: it is no WAVE or AIFF file."},
        {"head.wav", "can't be used: it is damaged."},
        {"silent.wav", "can't be used: it is damaged."},
        {"law.wav", "can't be used: its samples are neither PCM nor float."},
        {"none.wav", "can't be used: its samples have a size that is not known."},
        {"many.wav", "can't be used: it has too many channels."},
    };
    for (const auto& [name, why] : rows) {
        fCompanion = {};
        const auto opened = fCompanion.OpenCompanionAudio(fFolder.Path(name), false);
        ASSERT_FALSE(opened) << name;
        EXPECT_EQ("Error reading source file (audio) ! " + fFolder.Path(name) + " " + why,
                  opened.Error().message);
        EXPECT_EQ(kCompanionAudioMismatch, opened.Error().status.Code());
        EXPECT_FALSE(fCompanion.IsOpen());
    }
}

TEST_F(Companions, HowManyAreHeardDependsOnWhereTheSoundGoes)
{
    for (const int i : {1, 2, 3, 4}) {
        const std::string end = "_" + std::to_string(i) + ".wav";
        Make("32000" + end, 1, 16, {}, 32000), Make("48000" + end);
        if (i < 4) Make("three" + end);
    }
    for (const auto& [clip, separate, channels] : {std::tuple("32000.avi", false, 4u),
                                                   {"32000.avi", true, 2u},
                                                   {"48000.avi", false, 2u},
                                                   {"three.avi", false, 2u}}) {
        EXPECT_EQ(20u * channels, Heard(clip, separate).size()) << clip;
        EXPECT_EQ(channels, fCompanion.Channels()) << clip;
    }
}

TEST_F(Companions, MonoFilesAreHeardAsStereoAndTheShorterOneEndsInSilence)
{
    const Bytes left = SampleSound(48000).Samples(0, 50000);  // as mono: twice the samples
    Bytes right(left.begin(), left.begin() + 60000);
    Make("m_1.wav", 1, 16, left);
    Make("m_2.wav", 1, 16, right);
    right.resize(left.size(), 0);
    const Bytes heard = Heard("m.avi");
    ASSERT_EQ(2 * left.size(), heard.size());
    for (size_t i = 0; i < heard.size(); i++)
        ASSERT_EQ((i % 4 < 2 ? left : right)[i / 4 * 2 + i % 2], heard[i]) << i;
}

TEST_F(Companions, EverySampleSizeBecomesSixteenBits)
{
    const Bytes plain = SampleSound(48000).Samples(0, 30000);
    Bytes coarse = plain;
    for (size_t i = 0; i < coarse.size(); i += 2)
        coarse[i] = 0;
    for (const bool wav : {true, false})
        for (const size_t bytes : {1, 2, 3, 4}) {
            Bytes all;
            for (size_t i = 0; i < plain.size(); i += 2) {
                // The 16 bits on top; one byte is unsigned in WAVE files.
                Bytes one = {plain[i + 1], plain[i], 0, 0};
                one[0] ^= wav && bytes == 1 ? 0x80 : 0;
                one.resize(bytes);
                if (wav) std::reverse(one.begin(), one.end());
                all.insert(all.end(), one.begin(), one.end());
            }
            // AIFF files are written with bytes exchanged in pairs, as they are read.
            for (size_t i = 0; !wav && i + 1 < all.size(); i += 2)
                std::swap(all[i], all[i + 1]);
            const std::string name = (wav ? "w" : "a") + std::to_string(bytes);
            Make(name + (wav ? ".wav" : ".aif"), 2, uint16_t(8 * bytes), all);
            EXPECT_TRUE((bytes == 1 ? coarse : plain) == Heard(name + ".avi")) << name;
        }
}

TEST_F(Companions, WhatStandsBehindTheSamplesIsNotHeard)
{
    const Bytes plain = SampleSound(48000).Samples(0, 1000);
    Make("t.wav", 2, 16, plain);
    Bytes file = ReadWhole(fFolder.Path("t.wav"));
    file.insert(file.end(), {'L', 'I', 'S', 'T', 4, 0, 0, 0, 'n', 'o', 'n', 'e'});
    fFolder.Write("t.wav", file);
    EXPECT_TRUE(plain == Heard("t.avi"));
}

TEST_F(Companions, AFileGivenByNameCountsOnFromIt)
{
    Make("take_1.wav"), Make("take_2.wav"), Make("other.wav");
    EXPECT_TRUE(fCompanion.OpenCompanionAudio(fFolder.Path("take_1.wav"), false));
    EXPECT_EQ(2u, fCompanion.Paths().size());
    EXPECT_TRUE(fCompanion.FindCompanionAudio(fFolder.Path("other.avi"), false));
    EXPECT_EQ(2u, fCompanion.Paths().size()) << "once";
}

}  // namespace
}  // namespace kelvane
