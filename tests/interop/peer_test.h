#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "base/byte_cursor.h"
#include "base/television.h"
#include "support/picture_noise.h"
#include "support/run_command.h"
#include "support/temp_folder.h"

namespace kelvane {

// A folder in which other people's programs run, so that commands name files without their paths.
class PeerTest : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return fFolder.Path(name); }
    Bytes Read(const std::string& name) const { return ReadWhole(Path(name)); }
    void Write(const std::string& name, const Bytes& bytes) const { fFolder.Write(name, bytes); }

    void Run(const std::string& command) const
    {
        EXPECT_EQ(0, RunCommand("cd " + Path("") + " && " + command)) << command;
    }
    // Makes a file by another program. False when that was dvgrab and it hung each time, as it does
    // on some machines.
    bool Made(const std::string& name, const std::string& command) const
    {
        const int status = RunCommand("cd " + Path("") + " && rm -f " + name + "; " + command);
        if (status != 0 && command.find("dvgrab") != std::string::npos) {
            GTEST_LOG_(WARNING) << "passed over, for dvgrab hangs: " << command;
            return false;
        }
        EXPECT_EQ(0, status) << command;
        return status == 0;
    }
    std::string Printed(const std::string& command) const
    {
        return CommandOutput("cd " + Path("") + " && " + command);
    }

    // What ffmpeg makes of a file.
    Bytes FromFfmpeg(const std::string& name, const std::string& options) const
    {
        Run("rm -f made; ffmpeg -i " + name + " " + options + " made");
        return Read("made");
    }
    // The frames of the picture as they stand in a file, the sound as 16-bit samples.
    Bytes PeerVideo(const std::string& name) const
    {
        return FromFfmpeg(name, "-map 0:v -c copy -f rawvideo");
    }
    Bytes PeerSound(const std::string& name, const std::string& stream = "0:a") const
    {
        return FromFfmpeg(name, "-map " + stream + " -f s16le");
    }
    std::string Probed(const std::string& name, const std::string& stream,
                       const std::string& entries) const
    {
        return Printed("ffprobe -v error -count_frames -select_streams " + stream +
                       " -show_entries stream=" + entries + " -of csv=p=0 " + name);
    }
    std::string MediaInfo(const std::string& name, const std::string& entries) const
    {
        return Printed("mediainfo '--Inform=" + entries + "' " + name);
    }
    // What ffmpeg finds wrong with a file. Of raw DV it always has something to say.
    std::string Complaints(const std::string& name) const
    {
        return Printed("ffmpeg -v warning -i " + name +
                       " -f null - 2>&1 | grep -v 'Guessed\\|^.dv @'");
    }

    // Writes pal.dv or ntsc.dv, by ffmpeg, with sound of two channels at 48 kHz.
    Bytes MakeDV(bool pal, const std::string& seconds = "0.6") const
    {
        const std::string name = pal ? "pal" : "ntsc";
        Run("ffmpeg -y -f lavfi -i testsrc2=s=" +
            std::string(pal ? "720x576:r=25" : "720x480:r=30000/1001") +
            " -f lavfi -i aevalsrc='0.7*sin(3000*t)|0.5*sin(5000*t)':s=48000 -t " + seconds +
            " -target " + name + "-dv " + name + ".dv");
        return Read(name + ".dv");
    }
    // The command by which dvgrab makes a file of pal.dv, about a second of it. It loses the last
    // frames of a file that ends, or waits for frames that have come already; of a tape without an
    // end it has always another frame to wake up at.
    static std::string Dvgrab(const std::string& options, const std::string& name)
    {
        return "for try in 1 2 3; do (while cat pal.dv; do :; done) | timeout -s KILL 30 dvgrab "
               "-stdin -duration 1s " +
               options + " grab- && mv grab-001.* " + name + " && break; done";
    }

private:
    const TempFolder fFolder;
};

inline size_t DVFrameSize(bool pal)
{
    return static_cast<size_t>(SystemFor(pal).dv_frame_size);
}

}  // namespace kelvane
