#pragma once

#include <cmath>
#include <numbers>

#include "engine/sound/sound_loop.h"
#include "sample/unlocked_tape.h"

namespace kelvane {

inline int16_t SampleAt(const Bytes& stereo, size_t sample, size_t channel)
{
    const size_t at = sample * 4 + channel * 2;
    return int16_t(stereo[at] | stereo[at + 1] << 8);
}

// How far each click is behind the field that shows its flash, in milliseconds.
inline std::vector<double> ClicksBehindFlashes(const SoundLoop& run, uint64_t flash_every)
{
    const double field = 500 / FramesPerSecond(run.setup.destination_is_pal);
    std::vector<double> behind;
    size_t shown = 0;
    int64_t flash = int64_t(flash_every);
    for (size_t sample = 0; sample < run.Got().size() / 4; sample++) {
        if (SampleAt(run.Got(), sample, 1) < 8000) continue;
        while (shown < run.fields.size() && run.fields[shown] < flash)
            shown++;
        if (shown == run.fields.size()) break;
        behind.push_back(run.SecondsAt(sample) * 1000 - double(shown) * field);
        flash += int64_t(flash_every);
        sample += 2000;
    }
    return behind;
}

// Of one window, by Gauss and Newton: amplitude, phase and pitch of the sine are found.
inline double ResidueOfWindow(const Bytes& stereo, size_t start, size_t length)
{
    double pitch = 2 * std::numbers::pi * 997 / 48000, a = 0, b = 0, left = 0, all = 0;
    for (int step = 0; step < 5; step++) {
        // Normal equations for a cos + b sin, and the derivative by pitch once a and b are known.
        double m[3][4] = {};
        left = all = 0;
        for (size_t i = 0; i < length; i++) {
            const double t = double(i) - double(length) / 2, value = SampleAt(stereo, start + i, 0);
            const double c = std::cos(pitch * t), s = std::sin(pitch * t);
            const double row[3] = {c, s, step == 0 ? 0 : t * (b * c - a * s)};
            for (int j = 0; j < 3; j++) {
                for (int k = 0; k < 3; k++)
                    m[j][k] += row[j] * row[k];
                m[j][3] += row[j] * value;
            }
            left += std::pow(value - a * c - b * s, 2);
            all += value * value;
        }
        if (step == 0) m[2][2] = 1;
        for (int j = 0; j < 3; j++)
            for (int k = 0; k < 3; k++) {
                if (k == j) continue;
                const double share = m[k][j] / m[j][j];
                for (int l = 0; l < 4; l++)
                    m[k][l] -= share * m[j][l];
            }
        a = m[0][3] / m[0][0], b = m[1][3] / m[1][1];
        if (step > 0) pitch += m[2][3] / m[2][2];
    }
    return 10 * std::log10((left + 1e-9) / all);
}

// True when something in the window is silent.
inline bool HasSilence(const Bytes& stereo, size_t start, size_t length)
{
    size_t zeros = 0;
    for (size_t i = start; i < start + length && zeros < 5; i++)
        zeros = SampleAt(stereo, i, 0) == 0 ? zeros + 1 : 0;
    return zeros >= 5;
}

// The loudest that is left of a window of the tone when the best sine of any pitch is taken away,
// in decibels below it. Windows with silence in them, or beside it, are left out, as is the end.
inline double ResidueOfTone(const Bytes& stereo)
{
    constexpr size_t kWindow = 480, kBeside = 2 * kWindow, kMostWindows = 20000;
    double worst = -200;
    const size_t samples = stereo.size() / 4;
    const size_t step = kWindow * (samples / kWindow / kMostWindows + 1);  // some, of a long film
    for (size_t start = kBeside; start + 5 * kWindow <= samples; start += step)
        if (!HasSilence(stereo, start - kBeside, kWindow + 2 * kBeside))
            worst = std::max(worst, ResidueOfWindow(stereo, start, kWindow));
    return worst;
}

}  // namespace kelvane
