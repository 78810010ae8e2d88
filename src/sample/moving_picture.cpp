#include "sample/moving_picture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

namespace kelvane {

namespace {

constexpr double kBarSpeed = 170.0;   // pixels a second
constexpr double kBarWidth = 26.0;    // pixels
constexpr double kStripSpeed = 95.0;  // pixels a second
constexpr double kDiscPeriod = 2.5;   // seconds for one round
constexpr double kPi = 3.14159265358979323846;
constexpr double kDrawnHeight = 576;  // lines; pictures of other heights show the same, scaled
constexpr size_t kTexturePeriod = 256;

// Bands of the picture, in fractions of its height.
constexpr double kStripTop = 0.62, kStripBottom = 0.82;
constexpr double kCodeTop = 0.90, kCodeBottom = 0.96;
constexpr double kCodeLeft = 0.10, kCodeRight = 0.90;
constexpr int kCodeCells = 18;  // one white, one black, then the number, highest bit first

constexpr uint32_t Grey(uint32_t level)
{
    return level * 0x010101u;
}

// `weight` from 0 (under) to 256 (over).
uint32_t Mix(uint32_t under, uint32_t over, uint32_t weight)
{
    const uint32_t odd = 0x00FF00FF, even = 0x0000FF00;
    const uint32_t a = ((under & odd) * (256 - weight) + (over & odd) * weight) >> 8 & odd;
    const uint32_t b = ((under & even) * (256 - weight) + (over & even) * weight) >> 8 & even;
    return a | b;
}

// How much of pixel x lies between two edges, 0 to 256.
uint32_t Coverage(double x, double left, double right)
{
    const double inside = std::min(x + 1, right) - std::max(x, left);
    return static_cast<uint32_t>(256 * std::clamp(inside, 0.0, 1.0));
}

void SetPixel(uint8_t* picture, int32_t width, int32_t x, int32_t y, bool white)
{
    const uint32_t colour = Grey(white ? 235 : 16);
    memcpy(picture + 4 * (size_t(y) * size_t(width) + size_t(x)), &colour, 4);
}

// Digits and colon, five columns by seven rows, top row first, leftmost column in bit 4.
constexpr uint8_t kGlyphs[11][7] = {
    {14, 17, 19, 21, 25, 17, 14}, {4, 12, 4, 4, 4, 4, 14},  {14, 17, 1, 6, 8, 16, 31},
    {30, 1, 1, 14, 1, 1, 30},     {2, 6, 10, 18, 31, 2, 2}, {31, 16, 30, 1, 1, 17, 14},
    {6, 8, 16, 30, 17, 17, 14},   {31, 1, 2, 4, 8, 8, 8},   {14, 17, 17, 14, 17, 17, 14},
    {14, 17, 17, 15, 1, 2, 12},   {0, 4, 4, 0, 4, 4, 0}};
constexpr int32_t kDot = 5;  // pixels of one dot of a glyph

void DrawGlyph(uint8_t* picture, int32_t width, int parity, int32_t left, int32_t top, size_t glyph)
{
    for (int32_t y = 0; y < 7 * kDot; y++) {
        if ((top + y) % 2 != parity) continue;
        for (int32_t x = 0; x < 6 * kDot; x++) {
            const bool set = x < 5 * kDot && kGlyphs[glyph][y / kDot] >> (4 - x / kDot) & 1;
            SetPixel(picture, width, left + x, top + y, set);
        }
    }
}

std::string CounterText(int64_t number, double framesPerSecond)
{
    const int64_t base = std::lround(framesPerSecond);
    const int64_t seconds = number / base;
    char text[32];
    snprintf(text, sizeof text, "%02d:%02d:%02d:%02d", int(seconds / 3600 % 24),
             int(seconds / 60 % 60), int(seconds % 60), int(number % base));
    return text;
}

int32_t CellLeft(int32_t width, int cell)
{
    return static_cast<int32_t>(width * (kCodeLeft + (kCodeRight - kCodeLeft) * cell / kCodeCells));
}

// The cells of a number as bits.
constexpr uint32_t Code(int64_t number)
{
    return 0x20000 | (number & 0xFFFF);
}

}  // namespace

MovingPicture::MovingPicture(int32_t width, int32_t height, Scene scene)
    : fWidth(width), fHeight(height), fScene(scene)
{
    // 75 per cent bars (SMPTE EG 1), in video levels that DV holds without clipping.
    constexpr uint32_t kBars[] = {0xB4B4B4, 0xB4B410, 0x10B4B4, 0x10B410,
                                  0xB410B4, 0xB41010, 0x1010B4, 0x101010};
    for (int32_t x = 0; x < width; x++) {
        fBars.push_back(kBars[x * 8 / width]);
        fRamp.push_back(Grey(static_cast<uint32_t>(16 + x * 219 / width)));
    }
    for (size_t x = 0; x < kTexturePeriod; x++) {
        const double at = 2 * kPi * double(x) / kTexturePeriod;
        const auto level = [&](double wave) { return static_cast<uint32_t>(128 + 80 * wave); };
        fTexture.push_back(level(std::sin(3 * at)) << 16 |
                           level(0.6 * std::sin(5 * at) + 0.4 * std::sin(11 * at)) << 8 |
                           level(std::cos(2 * at)));
    }
}

void MovingPicture::DrawBars(uint32_t* row, int32_t y, double seconds) const
{
    const Row& under = y < fHeight * 0.88 ? fBars : fRamp;
    std::copy(under.begin(), under.end(), row);
    if (fScene.cut_seconds > 0 && std::lround(std::floor(seconds / fScene.cut_seconds)) % 2)
        for (int32_t x = 0; x < fWidth; x++)
            row[x] ^= 0x00F0F0F0;
    const double left = std::fmod(seconds * kBarSpeed, fWidth + kBarWidth) - kBarWidth;
    const int32_t from = std::max(0, static_cast<int32_t>(std::floor(left)));
    for (int32_t x = from; x < fWidth && x < left + kBarWidth; x++)
        row[x] = Mix(row[x], Grey(235), Coverage(x, left, left + kBarWidth));
}

double MovingPicture::DrawnLine(int32_t y) const
{
    return (y + 0.5) * kDrawnHeight / fHeight;
}

void MovingPicture::DrawDisc(uint32_t* row, int32_t y, double seconds) const
{
    const double angle = 2 * kPi * seconds / kDiscPeriod;
    const double radius = kDrawnHeight * 0.11;
    const double centreX = fWidth * 0.5 + fWidth * 0.3 * std::cos(angle);
    const double centreY = kDrawnHeight * 0.33 + kDrawnHeight * 0.18 * std::sin(angle);
    const double dy = DrawnLine(y) - centreY;
    if (std::abs(dy) >= radius) return;
    const double half = std::sqrt(radius * radius - dy * dy);
    const int32_t from = std::max(0, static_cast<int32_t>(std::floor(centreX - half)));
    for (int32_t x = from; x < fWidth && x < centreX + half; x++) {
        // A chequer that moves with the disc gives the motion search something to hold on to.
        const int cell =
            int(std::floor((x - centreX) / 14)) + int(std::floor(dy * kDrawnHeight / fHeight / 14));
        const uint32_t colour = cell % 2 ? 0x2060D0 : 0xE0C040;
        row[x] = Mix(row[x], colour, Coverage(x, centreX - half, centreX + half));
    }
}

void MovingPicture::DrawStrip(uint32_t* row, int32_t y, double seconds) const
{
    if (y < fHeight * kStripTop || y >= fHeight * kStripBottom) return;
    const double shift = seconds * kStripSpeed + DrawnLine(y) * 0.7;
    const auto whole = static_cast<size_t>(std::floor(shift));
    const auto part = static_cast<uint32_t>(256 * (shift - std::floor(shift)));
    for (size_t x = 0; x < size_t(fWidth); x++)
        row[x] = Mix(fTexture[(x + whole) % kTexturePeriod],
                     fTexture[(x + whole + 1) % kTexturePeriod], part);
}

void MovingPicture::DrawField(uint8_t* picture, int parity, double seconds) const
{
    Row row(size_t(fWidth), 0);
    for (int32_t y = parity; y < fHeight; y += 2) {
        DrawBars(row.data(), y, seconds);
        DrawDisc(row.data(), y, seconds);
        DrawStrip(row.data(), y, seconds);
        memcpy(picture + size_t(y) * size_t(fWidth) * 4, row.data(), row.size() * 4);
    }
}

void MovingPicture::DrawNumbers(uint8_t* picture, int parity, int64_t number, int64_t field,
                                double framesPerSecond) const
{
    const std::string text = CounterText(number, framesPerSecond);
    int32_t left = (fWidth - static_cast<int32_t>(text.size()) * 6 * kDot) / 2;
    for (const char c : text) {
        DrawGlyph(picture, fWidth, parity, left, fHeight / 16, c == ':' ? 10 : size_t(c - '0'));
        left += 6 * kDot;
    }
    for (auto y = static_cast<int32_t>(fHeight * kCodeTop); y < fHeight * kCodeBottom; y++) {
        if (y % 2 != parity) continue;
        for (int cell = 0; cell < kCodeCells; cell++) {
            const bool white = Code(field) >> (kCodeCells - 1 - cell) & 1;
            for (int32_t x = CellLeft(fWidth, cell); x < CellLeft(fWidth, cell + 1); x++)
                SetPixel(picture, fWidth, x, y, white);
        }
    }
}

void MovingPicture::DrawFrame(uint8_t* picture, int64_t number, double framesPerSecond,
                              FieldOrder order) const
{
    for (int parity = 0; parity < 2; parity++) {
        const int last = order == FieldOrder::kUpperFirst ? 1 : 0;
        const bool second = order != FieldOrder::kProgressive && parity == last;
        const int64_t field = 2 * number + (second ? 1 : 0);
        DrawField(picture, parity, double(field) / (2 * framesPerSecond));
        if (fScene.counter) DrawNumbers(picture, parity, number, field, framesPerSecond);
    }
}

int64_t MovingPicture::ReadFieldNumber(const uint8_t* picture, int32_t width, int32_t height,
                                       int parity)
{
    // The middle of each cell, on the line of this parity nearest to the middle of the code.
    auto y = static_cast<int32_t>(height * (kCodeTop + kCodeBottom) / 2);
    if (y % 2 != parity) y++;
    uint32_t code = 0;
    for (int cell = 0; cell < kCodeCells; cell++) {
        const int32_t x = (CellLeft(width, cell) + CellLeft(width, cell + 1)) / 2;
        const uint8_t green = picture[4 * (size_t(y) * size_t(width) + size_t(x)) + 1];
        if (green > 90 && green < 160) return -1;
        code = code << 1 | (green >= 160 ? 1 : 0);
    }
    const uint32_t number = code & 0xFFFF;
    return code == Code(number) ? int64_t{number} : -1;
}

}  // namespace kelvane
