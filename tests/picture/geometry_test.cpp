#include "picture/geometry.h"

#include <gtest/gtest.h>

#include <functional>

#include "support/test_formats.h"

namespace kelvane {
namespace {

using enum GeometryMode;

constexpr uint32_t kUntouched = 0xAAAAAAAA;

using Words = std::vector<uint32_t>;

// A picture whose pixels are a function of their row and column.
Words Drawn(int32_t width, int32_t height, const std::function<uint32_t(int32_t, int32_t)>& pixel)
{
    Words words;
    for (int32_t y = 0; y < height; y++)
        for (int32_t x = 0; x < width; x++)
            words.push_back(pixel(x, y));
    return words;
}

Words RowNumbers(int32_t width, int32_t height)
{
    return Drawn(width, height, [](int32_t, int32_t y) { return static_cast<uint32_t>(y); });
}

struct Geometry {
    GeometryMode mode;
    int32_t width, height;        // of the source
    int32_t to_width, to_height;  // of the destination
    bool interlaced = false;
};

// The result in a buffer of twice its size that was filled with kUntouched.
Words Converted(const Geometry& g, const Words& source)
{
    Words result(2 * static_cast<size_t>(g.to_width * g.to_height), kUntouched);
    GeometryConvert(reinterpret_cast<const uint8_t*>(source.data()),
                    Raw(kBGRX32, g.width, g.height), Raw(kBGRX32, g.to_width, g.to_height),
                    reinterpret_cast<uint8_t*>(result.data()), g.mode, g.interlaced);
    return result;
}

// The first pixel of each row of the result and of the rows behind it.
Words FirstColumn(const Geometry& g, const Words& source)
{
    const Words result = Converted(g, source);
    Words column;
    for (size_t i = 0; i < result.size(); i += static_cast<size_t>(g.to_width))
        column.push_back(result[i]);
    return column;
}

// Rows from `first` to `end`, all of them `value` or counting up from it.
void ExpectRows(const Words& rows, size_t first, size_t end, uint32_t value, uint32_t rise)
{
    for (size_t y = first; y < end; y++, value += rise)
        ASSERT_EQ(value, rows[y]) << "row " << y;
}

TEST(GeometryConvert, HalfLetterBoxStandsWhereItAlwaysStood)
{
    const Words fields =
        Drawn(720, 480, [](int32_t, int32_t y) { return y % 2 ? 0x22222222 : 0x11111111; });
    const Words flat(fields.size(), 0x33333333);
    Words rows = FirstColumn({kLetterBoxPanAndScan, 720, 480, 720, 576}, flat);
    ExpectRows(rows, 0, 24, 0, 0);
    ExpectRows(rows, 24, 96, kUntouched, 0);
    ExpectRows(rows, 96, 624, 0x33333333, 0);
    ExpectRows(rows, 624, rows.size(), kUntouched, 0);

    rows = FirstColumn({kLetterBoxPanAndScan, 720, 480, 720, 576, true}, fields);
    ExpectRows(rows, 24, 96, kUntouched, 0);
    for (size_t y = 96; y < 628; y++) {
        const uint32_t odd = y >= 552 && y < 576 ? 0 : kUntouched;  // the lower bar's odd rows stay
        ASSERT_EQ(y % 2 ? odd : y < 100 ? 0x11111111 : 0x22222222, rows[y]) << y;
    }
    ExpectRows(rows, 628, rows.size(), kUntouched, 0);
    EXPECT_EQ(627, 576 + kGeometryRowsBelow);
}

TEST(GeometryConvert, PanAndScanCutsTheSides)
{
    // Half a letter box cuts less and stands lower. The last pixel lies a part of the way to the
    // first one that is cut: 10683 / 65536 and 5624 / 65536.
    const struct {
        GeometryMode mode;
        int32_t left, right;  // what is kept
        size_t first, end;    // rows of the result
        uint32_t last;
    } rows[] = {{kPanAndScan, 60, 660, 0, 576, 0x80 + (254 * 5341 >> 16)},
                {kLetterBoxPanAndScan, 33, 687, 96, 624, 0x80 + (254 * 2812 >> 16)}};
    for (const auto& row : rows) {
        const Words columns = Drawn(720, 480, [&](int32_t x, int32_t) -> uint32_t {
            return x < row.left ? 0x40 : x < row.right ? 0x80 : 0xFF;
        });
        for (const bool interlaced : {false, row.mode == kPanAndScan}) {
            const Words result = Converted({row.mode, 720, 480, 720, 576, interlaced}, columns);
            for (size_t i = 720 * row.first; i < 720 * row.end; i++)
                ASSERT_EQ(i % 720 == 719 ? row.last : 0x80u, result[i]) << i;
            EXPECT_EQ(kUntouched, result[720 * row.end]);
        }
    }
}

TEST(GeometryConvert, ScalesFieldsApart)
{
    const Words fields = Drawn(720, 576, [](int32_t, int32_t y) { return y % 2 ? 0xFF : 0; });
    Geometry down{kScale, 720, 576, 720, 480, true};
    const Words apart = FirstColumn(down, fields);
    for (size_t y = 0; y < 480; y++)
        ASSERT_EQ(y % 2 ? 0xFFu : 0u, apart[y]) << y;
    down.interlaced = false;
    // Line 1 of a progressive picture lies at 78643 / 65536: 255 - (510 * 6553 >> 16), rounded.
    EXPECT_EQ(255u + static_cast<uint32_t>((-510 * 6553) >> 16), FirstColumn(down, fields)[1]);
}

TEST(GeometryConvert, CutsAndPads)
{
    const struct {
        Geometry geometry;
        size_t first;  // row of the result that holds `value`
        uint32_t value;
        size_t end;  // the rows up to here count up by one
    } rows[] = {
        // A letter box adds bars; a crop begins above the picture.
        {{kLetterBox, 720, 480, 720, 576, true}, 48, 0, 528},
        {{kCrop, 720, 576, 720, 480}, 48, 0, 480},
        {{kLetterBox, 720, 486, 720, 576, true}, 48, 0, 534},
        {{kCrop, 720, 576, 720, 486}, 45, 0, 486},
        // Other sizes go by their sizes alone.
        {{kPanAndScan, 4, 480, 4, 480}, 0, 0, 480},
        {{kScale, 4, 486, 4, 480}, 0, 2, 480},
        {{kScale, 4, 480, 4, 486}, 2, 0, 482},
        {{kLetterBox, 720, 576, 720, 576}, 0, 0, 576},
        {{kLetterBox, 4, 480, 4, 486}, 2, 0, 482},
        {{kCrop, 720, 480, 720, 480}, 0, 0, 480},
    };
    for (const auto& row : rows) {
        const Geometry& g = row.geometry;
        const Words result = FirstColumn(g, RowNumbers(g.width, g.height));
        const auto height = static_cast<size_t>(g.to_height);
        ExpectRows(result, 0, row.first, 0, 0);
        ExpectRows(result, row.first, row.end, row.value, 1);
        ExpectRows(result, row.end, height, 0, 0);
        ExpectRows(result, height, 2 * height, kUntouched, 0);
    }
}

TEST(GeometryConvert, ScalesFromFourPercentOn)
{
    // A cut or padded picture keeps row numbers; a scaled one stretches them to its last row.
    const Geometry scaled[] = {{kScale, 4, 520, 4, 500},
                               {kScale, 4, 500, 4, 520},
                               {kScale, 4, 500, 4, 480},
                               {kScale, 6, 480, 4, 480},
                               {kLetterBox, 704, 480, 720, 576},
                               {kCrop, 720, 480, 720, 576},
                               {kLetterBoxPanAndScan, 720, 576, 720, 480}};
    for (const Geometry& g : scaled) {
        const auto height = static_cast<size_t>(g.to_height);
        const Words white(static_cast<size_t>(g.width * g.height), 0xFFFFFFFF);
        ExpectRows(FirstColumn(g, white), 0, height, 0xFFFFFFFF, 0);
        const Words numbers = FirstColumn(g, RowNumbers(g.width, g.height));
        EXPECT_LE(static_cast<uint32_t>(g.height - 2), numbers[height - 1]);
    }
}

}  // namespace
}  // namespace kelvane
