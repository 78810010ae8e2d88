// What the frames of a DV output say of themselves.

#include "engine/loop/conversion_case.h"

namespace kelvane {
namespace {

using CodedFrames = ConversionCase;

constexpr FieldOrder P = FieldOrder::kProgressive, U = FieldOrder::kUpperFirst,
                     L = FieldOrder::kLowerFirst;

struct Said {
    bool pal, dvcpro, wide;
    FieldOrder order;
    bool operator==(const Said&) const = default;
};

// For messages of the tests.
void PrintTo(const Said& said, std::ostream* out)
{
    constexpr const char* kOrders[] = {"progressive", "upper first", "lower first"};
    *out << (said.pal ? "PAL" : "NTSC") << (said.dvcpro ? " DVCPRO" : " DV")
         << (said.wide ? " 16:9 " : " 4:3 ") << kOrders[size_t(said.order)];
}

// That all frames of a film say the same.
void ExpectEachSays(const Said& expected, const std::string& path)
{
    Film film(path);
    EXPECT_LE(3u, film.frames.size());
    for (Bytes& bytes : film.frames) {
        DIFFrame frame = View(bytes);
        const auto order = frame.GetFieldOrder();
        ASSERT_TRUE(order);
        EXPECT_EQ(expected,
                  (Said{frame.IsPAL(), frame.IsDVCPRO(), frame.IsWidescreen() == 1, *order}));
        EXPECT_EQ(expected.pal ? 144000u : 120000u, bytes.size());
    }
}

TEST_F(CodedFrames, SayWhatTheyAreAfterEachConversion)
{
    // By source_interlace and target_interlace: progressive or as the source, upper first, lower
    // first, deinterlaced in two ways.
    constexpr FieldOrder kOrders[3][5] = {{P, P, P, P, P}, {U, U, L, P, P}, {L, U, L, P, P}};
    for (int from = 0; from < 3; from++)
        for (int to = 0; to < 5; to++)
            for (const bool other : {true, false}) {
                // Both systems, both shapes and both kinds of data, in turns.
                const bool pal = to & 1, wide = (from + to) & 1, dvcpro = (from + to) & 2;
                const std::string clip = MakeClip(
                    "clip.dv", 4,
                    {.pal = pal, .wide = wide, .dvcpro = dvcpro, .order = FieldOrder(from)});
                Said expected = {pal != other, dvcpro, wide, kOrders[from][to]};
                fOptions.opselection = !other         ? kOperationConvert
                                       : expected.pal ? kOperationToPAL
                                                      : kOperationToNTSC;
                fOptions.srcint = from, fOptions.dstint = to;
                fOptions.blendmode = (from + 2 * to) % 3;
                fOptions.dataconv = 0;
                if (!other || to == from) {
                    // In the same system it is this that has frames coded anew.
                    expected.dvcpro = !dvcpro;
                    fOptions.dataconv = dvcpro ? 1 : 2;
                }
                SCOPED_TRACE(testing::PrintToString(std::tuple(from, to, pal, other, dvcpro)));
                ExpectEachSays(expected, Converted(clip, "out.dv"));
            }
}

// Pulldown weaves fields, whatever the source has.
TEST_F(CodedFrames, OfAPulldownHaveFieldsUnlessItIsDeinterlaced)
{
    const std::tuple<int, int, FieldOrder> rows[] = {{0, 0, L}, {0, 1, U}, {0, 2, L}, {0, 3, L},
                                                     {2, 0, L}, {1, 0, U}, {2, 1, U}, {2, 3, P}};
    fOptions.blendmode = 3;
    for (const bool pal : {true, false}) {
        const std::string clip = MakeClip(8, pal);
        fOptions.opselection = pal ? kOperationToNTSC : kOperationToPAL;
        for (const auto& [from, to, order] : rows) {
            SCOPED_TRACE(testing::PrintToString(std::tuple(from, to, pal)));
            fOptions.srcint = from, fOptions.dstint = to;
            ExpectEachSays({!pal, false, false, order}, Converted(clip, "out.dv"));
        }
    }
}

// Only what is coded anew is marked anew, in whatever container it lies.
TEST_F(CodedFrames, ThatAreCopiedSayWhatTheySaidBefore)
{
    for (const FieldOrder order : {P, U, L}) {
        const std::string clip = MakeClip("clip.dv", 3, {.wide = order == U, .order = order});
        const Said expected = {true, false, order == U, order};
        for (const auto& [from, to] : {std::pair{2, 0}, {1, 1}, {0, 3}}) {
            fOptions.srcint = from, fOptions.dstint = to;
            ExpectEachSays(expected, Converted(clip, "copy.avi", "avi2-odml"));
        }
    }
}

// The shape is the one asked for, else the source's, which goes by its first frame.
TEST_F(CodedFrames, SayTheShapeAskedForOrThatOfTheFirstFrame)
{
    for (const bool wide : {true, false}) {
        const std::string clip = MakeClip("clip.dv", 3, {.wide = wide});
        for (const auto& [from, to] : {std::pair{0, 1}, {0, 2}, {2, 1}, {1, 2}}) {
            fAdjust = [=](ConversionSettings& s) {
                s.src_aspect = Aspect(from), s.dst_aspect = Aspect(to);
            };
            ExpectEachSays({true, false, to == 2, L}, Converted(clip, "out.dv"));
        }
    }
    const std::string clip = MakeClip("clip.dv", 3, {.wide = true});
    fAdjust = nullptr;
    Bytes bytes = ReadWhole(clip);
    DIFFrame(bytes.data(), 144000).SetWidescreen(false);
    const std::string mixed = fFolder.Write("mixed.dv", bytes);
    fOptions.opselection = kOperationToNTSC;
    ExpectEachSays({false, false, false, L}, Converted(mixed, "out.dv"));
}

}  // namespace
}  // namespace kelvane
