// Writes a raw DV tape whose sound is not locked to its pictures, of two frames given: one that is
// seen, and one that flashes. bench/sound_sync runs it.
//
//     unlocked_tape DARK FLASH pal|ntsc SPEED none|lost|wrong SECONDS > tape.dv

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "sample/unlocked_tape.h"

namespace {

std::vector<uint8_t> FrameIn(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

int main(int count, char** arguments)
{
    using kelvane::UnlockedTape;
    if (count != 7) return 2;
    const std::vector<uint8_t> dark = FrameIn(arguments[1]), flash = FrameIn(arguments[2]);
    const bool pal = arguments[3] == std::string("pal");
    const std::string damage = arguments[5];
    const UnlockedTape tape(pal, std::atof(arguments[4]),
                            damage == "lost"    ? UnlockedTape::kLostPacks
                            : damage == "wrong" ? UnlockedTape::kWrongCounts
                                                : UnlockedTape::kNone);
    const auto frames = uint64_t(std::atof(arguments[6]) * (pal ? 25 : 30 / 1.001));
    for (uint64_t number = 0; number < frames; number++) {
        std::vector<uint8_t> frame = tape.IsFlash(number) ? flash : dark;
        tape.Record(frame, number);
        if (std::fwrite(frame.data(), 1, frame.size(), stdout) != frame.size()) return 1;
    }
    return 0;
}
