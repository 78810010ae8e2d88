#include "codecs/external/dv_codec_slot.h"

#include <gmock/gmock.h>

#include "base/four_cc.h"
#include "base/status.h"
#include "base/television.h"
#include "support/drawn_picture.h"

namespace kelvane {
namespace {

using testing::ElementsAre;
using namespace std::string_literals;

// A module that notes what it is asked. Codecs are told apart by their index.
struct Notes {
    std::vector<std::string> calls{};
    CodecSetup setup{};
    int refusals = 0;  // of the next calls of open
    int32_t status = kOK;
    uint32_t frame_bytes = 0;  // that the encoder says it made
} gNotes;

int32_t Open(uint32_t index, const CodecSetup* setup, void** instance)
{
    gNotes.setup = *setup;
    gNotes.calls.push_back(
        "open " + std::to_string(index) + " " + std::to_string(setup->raw.height) + " " +
        std::to_string(setup->raw.bit_count) + "/" + std::to_string(setup->coded.bit_count));
    if (gNotes.refusals-- > 0) return kError;
    *instance = reinterpret_cast<void*>(uintptr_t{index} + 1);
    return kOK;
}

int32_t Encode(void*, const uint8_t*, uint8_t*, uint32_t* bytes)
{
    *bytes = gNotes.frame_bytes;
    return gNotes.status;
}

int32_t Decode(void*, const uint8_t*, uint32_t, uint8_t*, uint32_t)
{
    return gNotes.status;
}

void Close(void* instance)
{
    gNotes.calls.push_back("close " + std::to_string(reinterpret_cast<uintptr_t>(instance) - 1));
}

constexpr CodecModule kNotingModule = {
    kCodecModuleVersion, nullptr, nullptr, Open, Encode, Decode, Close};

DVCodecEntry Entry(const std::string& name, bool directShow, uint32_t index = 0)
{
    DVCodecEntry entry;
    entry.long_name = name;
    entry.is_directshow = directShow;
    entry.driver.codec.default_quality = 7500;
    entry.driver.index = index;
    entry.driver.module = &kNotingModule;
    return entry;
}

std::vector<std::string> TakeCalls()
{
    return std::exchange(gNotes.calls, {});
}

constexpr DVCodecRole kRoles[] = {kDVEncoder, kDVDecoder, kDVCPROEncoder, kDVCPRODecoder};
constexpr bool IsDecoder(DVCodecRole role)
{
    return role == kDVDecoder || role == kDVCPRODecoder;
}

class DVCodecSlotTest : public testing::Test {
protected:
    DVCodecSlotTest() { gNotes = {}; }
};

TEST_F(DVCodecSlotTest, TriesColourSpacesInTheOrderThatTheNameAsksFor)
{
    // Slots in which a codec of this name gets 24 bits first, one letter for each role: with both
    // interfaces (b), DirectShow only (d) or none.
    const std::pair<const char*, const char*> names[] = {
        {"Test DV", "----"},           {"DV Master", "bbb-"},
        {"DV Master (VfW)", "bbb-"},   {"DV master", "----"},
        {"My DV Master", "----"},      {"Pinnacle DV", "bbb-"},
        {"Pinnacle DV25", "----"},     {"Pinnacle DV (VfW)", "----"},
        {"CANOPUS DV (VfW)", "bbb-"},  {"Canopus DV", "----"},
        {"miroVIDEO DRX", "b-b-"},     {"SONY DV (DirectX)", "-d--"},
        {"SONY DVCAM driver", "-d--"}, {"SONY D", "----"},
    };
    for (const auto& [name, letters] : names)
        for (const DVCodecRole role : kRoles)
            for (const bool directShow : {false, true}) {
                SCOPED_TRACE(testing::Message() << name << " " << role << " " << directShow);
                const bool opposite = letters[role] == 'b' || (letters[role] == 'd' && directShow);
                DVCodecSlot slot(role);
                const DVCodecEntry entry = Entry(name, directShow);
                ASSERT_EQ(kOK, slot.Bind(&entry, true));
                EXPECT_EQ(opposite ? kBGR24 : kBGRX32, slot.PictureSpace());
                slot.Close();
                // Only an encoder of the Video for Windows kind is asked twice.
                gNotes.refusals = directShow || IsDecoder(role) ? 1 : 2;
                ASSERT_EQ(kOK, slot.Bind(&entry, true));
                EXPECT_EQ(opposite ? kBGRX32 : kBGR24, slot.PictureSpace());
            }
}

TEST_F(DVCodecSlotTest, OpensForTheSystemAndKindOfDVWithTheCodecsOwnQuality)
{
    for (const DVCodecRole role : kRoles)
        for (const bool pal : {false, true}) {
            DVCodecSlot slot(role);
            DVCodecEntry entry = Entry("Test", false);
            entry.flags = pal ? kCodecHasQuality : ~kCodecHasQuality;
            ASSERT_EQ(kOK, slot.Bind(&entry, pal));
            EXPECT_EQ(pal ? 7500u : 0u, gNotes.setup.quality);
            EXPECT_EQ(pal ? 576 : 480, gNotes.setup.coded.height);
            EXPECT_EQ(pal ? 720 * 576 * 4u : 720 * 480 * 4u, gNotes.setup.raw.size_image);
            EXPECT_EQ(pal ? 144000u : 120000u, gNotes.setup.coded.size_image);
            EXPECT_EQ(role >= kDVCPROEncoder ? "dv25"_4cc : "dvsd"_4cc,
                      gNotes.setup.coded.compression);
        }
}

TEST_F(DVCodecSlotTest, StaysOpenForTheSameNameAndHeight)
{
    DVCodecSlot slot(kDVEncoder);
    const DVCodecEntry a = Entry("A", false, 1), copy = a, b = Entry("B", true, 2);
    const struct {
        const DVCodecEntry* chosen;
        bool pal;
        std::vector<std::string> calls;
    } steps[] = {{&a, true, {"open 1 576 32/24"}},
                 {&copy, true, {}},
                 {&a, false, {"close 1", "open 1 480 32/24"}},
                 {&b, false, {"close 1", "open 2 480 32/24"}},
                 {nullptr, false, {"close 2"}},
                 {&b, false, {"open 2 480 32/24"}}};
    for (const auto& step : steps) {
        EXPECT_EQ(kOK, slot.Bind(step.chosen, step.pal));
        EXPECT_EQ(step.calls, TakeCalls());
        EXPECT_EQ(step.chosen != nullptr, slot.IsOpen());
    }
    // A codec that cannot be had leaves the slot empty, and is asked anew the next time.
    gNotes.refusals = 4;
    EXPECT_NE(kOK, slot.Bind(&a, true));
    EXPECT_FALSE(slot.IsOpen());
    gNotes = {};
    EXPECT_EQ(kOK, slot.Bind(&a, true));
    EXPECT_THAT(TakeCalls(), ElementsAre("open 1 576 32/24"));
}

TEST_F(DVCodecSlotTest, SlotsAreClosedInTheOrderOfTheirRoles)
{
    {
        DVCodecSlots slots;
        for (const DVCodecRole role : {kDVCPRODecoder, kDVDecoder, kDVEncoder, kDVCPROEncoder}) {
            const DVCodecEntry entry = Entry("Test", true, role);
            EXPECT_EQ(kOK, slots[role].Bind(&entry, true));
        }
        TakeCalls();
    }
    EXPECT_THAT(TakeCalls(), ElementsAre("close 0", "close 1", "close 2", "close 3"));
}

TEST_F(DVCodecSlotTest, AsksAnEncoderAgainAndHasTheWordsOfEachSlotAndInterface)
{
    const std::pair<std::string, std::string> words[] = {
        {"DV Encoder initialization error #", "DV Encode Error #"},
        {"DV Decoder initialization error #", "DV Decode Error #"},
        {"DVCPRO25 Encoder initialization error #", "DVCPRO25 Encode Error #"},
        {"DVCPRO25 Decoder initialization error #", "DVCPRO25 Decode Error #"}};
    Bytes picture(720 * 576 * 4), frame(144000);
    for (const DVCodecRole role : kRoles)
        for (const bool directShow : {true, false}) {
            SCOPED_TRACE(testing::Message() << role << " " << directShow);
            const char* number = directShow ? "1" : "2";
            DVCodecSlot slot(role);
            const DVCodecEntry entry = Entry("Test", directShow);
            gNotes = {.refusals = 4};
            ASSERT_NE(kOK, slot.Bind(&entry, true));
            EXPECT_FALSE(slot.IsOpen());
            EXPECT_EQ(words[role].first + number + ".", slot.OpenError());
            // Video for Windows encoders are tried with two bit counts of the coded side.
            if (directShow || IsDecoder(role))
                EXPECT_THAT(TakeCalls(), ElementsAre("open 0 576 32/24", "open 0 576 24/24"));
            else
                EXPECT_THAT(TakeCalls(), ElementsAre("open 0 576 32/24", "open 0 576 32/24",
                                                     "open 0 576 24/24", "open 0 576 24/32"));
            gNotes = {.frame_bytes = 143999};  // a frame of another size is no DV frame
            ASSERT_EQ(kOK, slot.Bind(&entry, true));
            const auto status = [&] {
                return IsDecoder(role) ? slot.Decode(frame, picture) : slot.Encode(picture, frame);
            };
            EXPECT_EQ(IsDecoder(role), status() == kOK);
            gNotes.status = kError;
            EXPECT_NE(kOK, status());
            EXPECT_EQ(words[role].second + number + "!", slot.CodingError());
        }
}

std::vector<std::string> Names(const DVCodecList& list)
{
    std::vector<std::string> names;
    for (const DVCodecEntry& entry : list)
        names.push_back(entry.long_name);
    return names;
}

TEST(DVCodecLists, NameTheInterfaceAndListVideoForWindowsFirst)
{
    constexpr uint32_t kVideo = "vidc"_4cc, kDV = "dvsd"_4cc, kJPEG = "mjpg"_4cc;
    const std::string endless(300, 'x');
    const ModuleCodec codecs[] = {
        {"Filter", "Short", kDirectShow, 0, kVideo, kDV, 0, 0},
        {"Filter", "Short", kDirectShow, 1, kVideo, kDV, 0, 0},
        {"Second", "Short", kVideoForWindows, 0, kVideo, "dsvd"_4cc, 0, 0},
        {"Sound", "Short", kVideoForWindows, 0, "audc"_4cc, kDV, 0, 0},
        {"Other", "Short", kVideoForWindows, 0, kVideo, kJPEG, 0, 0},
        {"First", "Short", kVideoForWindows, 0, kVideo, "dv25"_4cc, 0, 0},
        {"Reader", "Short", kVideoForWindows, 1, kVideo, "CDVC"_4cc, 0, 0},
        {endless.c_str(), "Short", kVideoForWindows, 1, kVideo, "MDVF"_4cc, 0, 0},
    };
    CodecDrivers drivers;
    for (const ModuleCodec& codec : codecs)
        drivers.codecs.push_back({codec, 7, &kNotingModule});
    const DVCodecLists lists = ListDVCodecs(drivers);
    EXPECT_THAT(Names(lists.encoders),
                ElementsAre("Second (VfW)", "First (VfW)", "Filter (DirectX)"));
    EXPECT_THAT(Names(lists.decoders),
                ElementsAre("Reader (VfW)", std::string(121, 'x') + " (VfW)", "Filter (DirectX)"));
    EXPECT_EQ("Short (DirectX)", lists.decoders[2].short_name);
    EXPECT_TRUE(lists.decoders[2].is_directshow && lists.decoders[2].is_decoder);
    EXPECT_TRUE(!lists.encoders[0].is_directshow && !lists.encoders[0].is_decoder);
    EXPECT_EQ(&lists.encoders[1], FindByName(lists.encoders, "First (VfW)"));
    EXPECT_EQ(nullptr, FindByName(lists.encoders, "First"));

    DVCodecList all;
    EXPECT_EQ(4, EnumerateVfW(drivers, all, false, false)) << "also those that are not for DV";
    EXPECT_EQ(1, EnumerateDirectShow(drivers, all, true));
    EXPECT_EQ(5u, all.size());
    DVCodecEntry found;
    EXPECT_TRUE(FindVfW(drivers, found, kJPEG, false));
    EXPECT_EQ("Other (VfW)", found.long_name);
    EXPECT_FALSE(FindVfW(drivers, found, kJPEG, true));
    EXPECT_FALSE(FindVfW(drivers, found, kDV, true)) << "only a filter has it";
}

// Rows are exchanged for Video for Windows only: both interfaces give the same frames and pictures.
TEST(DVCodecSlots, WorkWithTheCodecsOfRealModules)
{
    const Bytes drawn = DrawPicture(720, 480, 4, 2);
    std::vector<Bytes> made;
    for (const std::string& folder : {CodecFolder(), TEST_MODULES "/kelvane-codec-test-vfw"s}) {
        const DVCodecLists lists = ListDVCodecs(LoadCodecDrivers(folder));
        EXPECT_EQ(made.empty(), lists.encoders[0].is_directshow && lists.decoders[0].is_directshow);
        DVCodecSlot encoder(kDVEncoder), decoder(kDVDecoder);
        Bytes picture = drawn, frame(120000);
        ASSERT_EQ(kOK, encoder.Bind(&lists.encoders[0], false));
        ASSERT_EQ(kOK, encoder.Encode(picture, frame));
        ASSERT_EQ(kOK, decoder.Bind(&lists.decoders[0], false));
        ASSERT_EQ(kOK, decoder.Decode(frame, picture));
        made.insert(made.end(), {frame, picture});
    }
    EXPECT_TRUE(made[0] == made[2] && made[1] == made[3]);
}

}  // namespace
}  // namespace kelvane
