#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kelvane {

// The sound of a camcorder that does not lock it to its pictures: a tone of 997 Hz on the first
// channel, and on the second a click of 2 ms on the first sample of every flash, a frame in each
// ten seconds. Rate 48 kHz.
class UnlockedTape {
public:
    enum Damage {
        kNone,
        kLostPacks,    // three frames in fifty do not say that they have sound
        kWrongCounts,  // one in fifty says a number of samples that no frame has
    };

    // `speed`: samples on the tape for each that there should be.
    UnlockedTape(bool pal, double speed, Damage damage = kNone)
        : fPAL(pal), fSpeed(speed), fDamage(damage)
    {
    }

    // Of a frame, on the tape.
    uint64_t FirstSample(uint64_t frame) const;
    // Frames from one flash to the next; there is none at the beginning.
    uint64_t FlashEvery() const { return fPAL ? 250 : 300; }
    bool IsFlash(uint64_t frame) const { return frame > 0 && frame % FlashEvery() == 0; }
    // Puts the sound of frame `number` into a DV frame.
    void Record(std::span<uint8_t> frame, uint64_t number) const;

    static int16_t ToneAt(double sample);

private:
    bool fPAL;
    double fSpeed;
    Damage fDamage;
};

// Sets a byte of the source packs in the audio blocks of a DV frame.
void SetInAudioPacks(std::span<uint8_t> frame, size_t at, uint8_t value);
// Makes all audio packs none: the sound is taken away, but not its samples.
void EraseAudioPacks(std::span<uint8_t> frame);

}  // namespace kelvane
