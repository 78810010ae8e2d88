// A gigabyte of raw DV put into a movie, with and without a sound track, beside ffmpeg's stream
// copy and cp. Everything lies in memory (/dev/shm); the runs take turns, so that the ratios hold
// on a busy machine. Usage: qt_pass_through_bench [rounds]

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "base/status.h"
#include "base/television.h"
#include "media/quicktime/qt_file.h"
#include "media/raw_dv/raw_dv_file.h"
#include "support/run_command.h"

using namespace kelvane;

namespace {

constexpr int kFrames = 7000;
const std::string kFolder = "/dev/shm/kelvane-bench";
const std::string kSource = kFolder + "/in.dv";

// Sound comes ready made: taking it out of the frames is measured elsewhere.
bool PassThrough(const std::string& path, bool with_sound)
{
    RawDVFile source(kSource.c_str(), kRead);
    source.SetRecordSize(kPAL.dv_frame_size);
    QTFile file(path.c_str(), kCreate);
    file.SetOptions(kQTWideOffsets | kQTDVCP, nullptr);
    if (file.AddDVTrack(true) != kOK) return false;
    const std::vector<uint8_t> sound(1920 * 4, 1);
    if (with_sound &&
        file.AddPCMAudioTrack(MediaFormat(RawAudioFormat{kSamplePCM, 2, 16, 48000})) != kOK)
        return false;
    const auto size = static_cast<uint32_t>(kPAL.dv_frame_size);
    std::vector<uint8_t> frame(size);
    for (int32_t count = 1; source.Read(frame.data(), count) == kOK && count == 1;) {
        if (file.WriteFrame(0, frame.data(), size) != kOK) return false;
        if (with_sound &&
            file.WriteFrame(1, sound.data(), static_cast<uint32_t>(sound.size())) != kOK)
            return false;
    }
    return file.Close() == kOK;
}

struct Contender {
    const char* name;
    std::function<bool(const std::string& out)> run;
    std::vector<double> seconds;
};

bool Command(const std::string& command)
{
    return RunCommand(command) == 0;
}

double Median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}

bool MakeSource()
{
    const std::string second = kFolder + "/second.dv";
    return Command("mkdir -p " + kFolder +
                   " && ffmpeg -y -f lavfi -i testsrc2=s=720x576:r=25 -f lavfi -i "
                   "sine=440:r=48000 -t 1 -target pal-dv " +
                   second + " && for i in $(seq " + std::to_string(kFrames / 25) + "); do cat " +
                   second + "; done > " + kSource);
}

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::max(atoi(argv[1]), 1) : 5;
    std::vector<Contender> contenders = {
        {"cp", [](const std::string& out) { return Command("cp " + kSource + " " + out); }, {}},
        {"without sound", [](const std::string& out) { return PassThrough(out, false); }, {}},
        {"ffmpeg -c:v copy -an",
         [](const std::string& out) {
             return Command("ffmpeg -y -i " + kSource + " -c:v copy -an " + out);
         },
         {}},
        {"with sound", [](const std::string& out) { return PassThrough(out, true); }, {}},
        {"ffmpeg -c:v copy -c:a pcm_s16be",
         [](const std::string& out) {
             return Command("ffmpeg -y -i " + kSource + " -c:v copy -c:a pcm_s16be " + out);
         },
         {}},
    };
    bool good = MakeSource();
    const std::string out = kFolder + "/out.mov";
    for (int round = 0; good && round < rounds; round++) {
        for (Contender& contender : contenders) {
            remove(out.c_str());
            const auto start = std::chrono::steady_clock::now();
            good = good && contender.run(out);
            contender.seconds.push_back(
                std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        }
    }
    if (good) {
        const double cp = Median(contenders.front().seconds);
        for (const Contender& contender : contenders) {
            const double median = Median(contender.seconds);
            printf("%-34s %7.3f s  %6.0f frames/s  %5.2f times cp\n", contender.name, median,
                   kFrames / median, median / cp);
        }
    }
    Command("rm -rf " + kFolder);
    return good ? 0 : 1;
}
