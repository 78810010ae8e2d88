#include "codecs/dv_codec_slot.h"

#include <gmock/gmock.h>

#include "base/four_cc.h"
#include "base/status.h"
#include "base/television.h"
#include "support/drawn_picture.h"

namespace kelvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A module that notes what it is asked. Codecs are told apart by their index.
std::vector<std::string> gCalls;
int gRefusals = 0;  // of the next calls of open
int32_t gStatus = kOK;
uint32_t gFrameBytes = 0;  // that the encoder says it made
CodecSetup gSetup{};

int32_t Open(uint32_t index, const CodecSetup* setup, void** instance)
{
    gSetup = *setup;
    gCalls.push_back("open " + std::to_string(index) + " " + std::to_string(setup->raw.height) +
                     " " + std::to_string(setup->raw.bit_count) + "/" +
                     std::to_string(setup->coded.bit_count));
    if (gRefusals-- > 0) return kError;
    static int opened[16];
    *instance = &opened[index];
    opened[index] = int(index);
    return kOK;
}

int32_t Encode(void*, const uint8_t*, uint8_t*, uint32_t* bytes)
{
    *bytes = gFrameBytes;
    return gStatus;
}

int32_t Decode(void*, const uint8_t*, uint32_t, uint8_t*, uint32_t)
{
    return gStatus;
}

void Close(void* instance)
{
    gCalls.push_back("close " + std::to_string(*static_cast<int*>(instance)));
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
    return std::exchange(gCalls, {});
}

constexpr DVCodecRole kRoles[] = {kDVEncoder, kDVDecoder, kDVCPROEncoder, kDVCPRODecoder};
constexpr bool IsDecoder(DVCodecRole role)
{
    return role == kDVDecoder || role == kDVCPRODecoder;
}

class DVCodecSlotTest : public testing::Test {
protected:
    DVCodecSlotTest()
    {
        gCalls.clear();
        gRefusals = 0;
        gStatus = kOK;
    }
};

TEST_F(DVCodecSlotTest, TriesColourSpacesInTheOrderThatTheNameAsksFor)
{
    // Slots in which a codec of this name gets 24 bits first, one letter for each role: both (b),
    // the one interface or the other (v, d), or none.
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
                SCOPED_TRACE(testing::Message() << name << " role " << role << " " << directShow);
                const char letter = letters[role];
                const bool opposite = letter == 'b' || letter == (directShow ? 'd' : 'v');
                DVCodecSlot slot(role);
                const DVCodecEntry entry = Entry(name, directShow);
                ASSERT_EQ(kOK, slot.Bind(&entry, true));
                EXPECT_EQ(opposite ? kBGR24 : kBGRX32, slot.PictureSpace());
                EXPECT_EQ(opposite ? 24 : 32, gSetup.raw.bit_count);
                slot.Close();
                // Only an encoder of the Video for Windows kind is asked twice.
                gRefusals = directShow || IsDecoder(role) ? 1 : 2;
                ASSERT_EQ(kOK, slot.Bind(&entry, true));
                EXPECT_EQ(opposite ? kBGRX32 : kBGR24, slot.PictureSpace());
            }
}

TEST_F(DVCodecSlotTest, AsksAnEncoderAgainWithAnotherBitCountOfTheCodedSide)
{
    for (const DVCodecRole role : kRoles)
        for (const bool directShow : {false, true}) {
            SCOPED_TRACE(testing::Message() << role << " " << directShow);
            DVCodecSlot slot(role);
            const DVCodecEntry entry = Entry("Test", directShow);
            gRefusals = 4;
            TakeCalls();
            EXPECT_NE(kOK, slot.Bind(&entry, true));
            if (directShow || IsDecoder(role))
                EXPECT_THAT(TakeCalls(), ElementsAre("open 0 576 32/24", "open 0 576 24/24"));
            else
                EXPECT_THAT(TakeCalls(), ElementsAre("open 0 576 32/24", "open 0 576 32/24",
                                                     "open 0 576 24/24", "open 0 576 24/32"));
            EXPECT_FALSE(slot.IsOpen());
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
            EXPECT_EQ(pal ? 7500u : 0u, gSetup.quality);
            EXPECT_EQ(pal ? 576 : 480, gSetup.coded.height);
            EXPECT_EQ(pal ? 720 * 576 * 4u : 720 * 480 * 4u, gSetup.raw.size_image);
            EXPECT_EQ(pal ? 144000u : 120000u, gSetup.coded.size_image);
            EXPECT_EQ(role >= kDVCPROEncoder ? FourCC("dv25") : FourCC("dvsd"),
                      gSetup.coded.compression);
        }
}

TEST_F(DVCodecSlotTest, StaysOpenForTheSameNameAndHeight)
{
    DVCodecSlot slot(kDVEncoder);
    const DVCodecEntry a = Entry("A", false, 1), b = Entry("B", true, 2);
    EXPECT_EQ(kOK, slot.Bind(&a, true));
    const DVCodecEntry copy = a;
    EXPECT_EQ(kOK, slot.Bind(&copy, true));
    EXPECT_THAT(TakeCalls(), ElementsAre("open 1 576 32/24"));
    EXPECT_EQ(kOK, slot.Bind(&a, false));
    EXPECT_THAT(TakeCalls(), ElementsAre("close 1", "open 1 480 32/24"));
    EXPECT_EQ(kOK, slot.Bind(&b, false));
    EXPECT_THAT(TakeCalls(), ElementsAre("close 1", "open 2 480 32/24"));
    EXPECT_EQ(kOK, slot.Bind(nullptr, false));
    EXPECT_THAT(TakeCalls(), ElementsAre("close 2"));
    EXPECT_FALSE(slot.IsOpen());
    EXPECT_EQ(kOK, slot.Bind(&b, false));
    EXPECT_THAT(TakeCalls(), ElementsAre("open 2 480 32/24"));
    // A codec that cannot be had leaves the slot empty, and is asked anew the next time.
    gRefusals = 4;
    EXPECT_NE(kOK, slot.Bind(&a, true));
    EXPECT_FALSE(slot.IsOpen());
    TakeCalls();
    gRefusals = 0;
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

TEST_F(DVCodecSlotTest, HasTheWordsOfEachSlotAndInterface)
{
    const std::pair<const char*, const char*> words[] = {
        {"DV Encoder initialization error #", "DV Encode Error #"},
        {"DV Decoder initialization error #", "DV Decode Error #"},
        {"DVCPRO25 Encoder initialization error #", "DVCPRO25 Encode Error #"},
        {"DVCPRO25 Decoder initialization error #", "DVCPRO25 Decode Error #"}};
    std::vector<uint8_t> picture(720 * 576 * 4), frame(144000);
    for (const DVCodecRole role : kRoles)
        for (const bool directShow : {true, false}) {
            const char* number = directShow ? "1" : "2";
            DVCodecSlot slot(role);
            const DVCodecEntry entry = Entry("Test", directShow);
            gRefusals = 4;
            ASSERT_NE(kOK, slot.Bind(&entry, true));
            EXPECT_EQ(std::string(words[role].first) + number + ".", slot.OpenError());
            gRefusals = 0;
            ASSERT_EQ(kOK, slot.Bind(&entry, true));
            gStatus = kError;
            EXPECT_NE(kOK,
                      IsDecoder(role) ? slot.Decode(frame, picture) : slot.Encode(picture, frame));
            EXPECT_EQ(std::string(words[role].second) + number + "!", slot.CodingError());
            gStatus = kOK;
            gFrameBytes = 143999;  // a frame of another size is no DV frame
            if (!IsDecoder(role)) {
                EXPECT_NE(kOK, slot.Encode(picture, frame));
            }
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
    CodecDrivers drivers;
    const auto add = [&](const char* name, CodecInterface kind, bool decoder, uint32_t handler,
                         uint32_t type = FourCC("vidc")) {
        drivers.codecs.push_back(
            {{name, "Short", kind, decoder, type, handler, 1, 0}, 7, &kNotingModule});
    };
    add("Filter", kDirectShow, false, FourCC("dvsd"));
    add("Filter", kDirectShow, true, FourCC("dvsd"));
    add("Second", kVideoForWindows, false, FourCC("dsvd"));
    add("Sound", kVideoForWindows, false, FourCC("dvsd"), FourCC("audc"));
    add("Other", kVideoForWindows, false, FourCC("mjpg"));
    add("First", kVideoForWindows, false, FourCC("dv25"));
    add("Reader", kVideoForWindows, true, FourCC("CDVC"));
    const DVCodecLists lists = ListDVCodecs(drivers);
    EXPECT_THAT(Names(lists.encoders),
                ElementsAre("Second (VfW)", "First (VfW)", "Filter (DirectX)"));
    EXPECT_THAT(Names(lists.decoders), ElementsAre("Reader (VfW)", "Filter (DirectX)"));
    EXPECT_EQ("Short (DirectX)", lists.decoders[1].short_name);
    EXPECT_TRUE(lists.decoders[1].is_directshow && lists.decoders[1].is_decoder);
    EXPECT_TRUE(!lists.encoders[0].is_directshow && !lists.encoders[0].is_decoder);
    EXPECT_EQ(&lists.encoders[1], FindByName(lists.encoders, "First (VfW)"));
    EXPECT_EQ(nullptr, FindByName(lists.encoders, "First"));

    DVCodecList all;
    EXPECT_EQ(4, EnumerateVfW(drivers, all, false, false)) << "also those that are not for DV";
    EXPECT_EQ(1, EnumerateDirectShow(drivers, all, true));
    EXPECT_EQ(5u, all.size());
    DVCodecEntry found;
    EXPECT_TRUE(FindVfW(drivers, found, FourCC("mjpg"), false));
    EXPECT_EQ("Other (VfW)", found.long_name);
    EXPECT_FALSE(FindVfW(drivers, found, FourCC("mjpg"), true));
    EXPECT_FALSE(FindVfW(drivers, found, FourCC("dvsd"), true)) << "only a filter has it";

    drivers.codecs.clear();
    const std::string longName(300, 'x');
    add(longName.c_str(), kVideoForWindows, false, FourCC("dvsd"));
    EXPECT_EQ(127u, Names(ListDVCodecs(drivers).encoders).at(0).size());
    EXPECT_THAT(ListDVCodecs({}).encoders, IsEmpty());
}

// Rows are exchanged for Video for Windows only: both interfaces give the same frames and pictures.
TEST(DVCodecSlots, WorkWithTheCodecsOfRealModules)
{
    DVCodecLists lists =
        ListDVCodecs(LoadCodecDrivers(std::string(TEST_MODULES) + "/kelvane-codec-test-vfw"));
    std::erase_if(lists.encoders, [](const DVCodecEntry& entry) { return entry.is_directshow; });
    std::erase_if(lists.decoders, [](const DVCodecEntry& entry) { return entry.is_directshow; });
    const DVCodecLists shipped = ListDVCodecs(LoadCodecDrivers(CodecFolder()));
    lists.encoders.insert(lists.encoders.begin(), shipped.encoders[0]);
    lists.decoders.push_back(shipped.decoders[0]);
    const Bytes drawn = DrawPicture(720, 480, 4, 2);
    DVCodecSlot encoder(kDVEncoder), decoder(kDVDecoder);
    Bytes reference, pictures[2];
    std::string opened;
    for (const DVCodecEntry& entry : lists.encoders) {
        SCOPED_TRACE(entry.long_name);
        if (encoder.Bind(&entry, false) != kOK) continue;
        opened += entry.long_name + (encoder.PictureSpace() == kBGR24 ? " 24, " : " 32, ");
        if (encoder.PictureSpace() == kBGR24) continue;
        Bytes picture = drawn, frame(120000);
        const int status = encoder.Encode(picture, frame);
        EXPECT_EQ(entry.long_name == "Failing (VfW)", status != kOK);
        if (reference.empty()) reference = frame;
        EXPECT_TRUE(status != kOK || frame == reference);
    }
    EXPECT_EQ(
        "DV Video Encoder (DirectX) 32, Test DV (VfW) 32, DV Master Test (VfW) 24, "
        "Second Try (VfW) 24, Failing (VfW) 32, With Quality (VfW) 32, ",
        opened);
    for (const bool directShow : {false, true}) {
        pictures[directShow].resize(drawn.size());
        const char* name = directShow ? "DV Video Decoder (DirectX)" : "Test DV (VfW)";
        ASSERT_EQ(kOK, decoder.Bind(FindByName(lists.decoders, name), false));
        ASSERT_EQ(kOK, decoder.Decode(reference, pictures[directShow]));
    }
    EXPECT_TRUE(pictures[0] == pictures[1]);
}

}  // namespace
}  // namespace kelvane
