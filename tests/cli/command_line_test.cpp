// The program from outside: what it prints and how it ends.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

#include "support/run_command.h"
#include "support/temp_folder.h"

namespace kelvane {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string kProgram = KELVANE_CONVERT;

class CommandLine : public testing::Test {
protected:
    void SetUp() override
    {
        fClip = fFolder.Path("clip.dv");
        ASSERT_EQ(0, RunCommand(kProgram + " --make-sample " + fClip + " --sample-seconds 1"));
    }
    // Runs the program; what it says on standard error goes to fSaid.
    int Run(const std::string& arguments, const std::string& environment = "")
    {
        const std::string errors = fFolder.Path("stderr");
        const std::string command = environment + " " + kProgram + " " + arguments;
        fPrinted = CommandOutput("{ " + command + "; echo $? >" + fFolder.Path("status") +
                                 "; } 2>" + errors + " </dev/null");
        const auto said = ReadWhole(errors);
        fSaid.assign(said.begin(), said.end());
        const auto status = ReadWhole(fFolder.Path("status"));
        return std::stoi(std::string(status.begin(), status.end()));
    }
    size_t SizeOf(const std::string& name) { return ReadWhole(fFolder.Path(name)).size(); }

    TempFolder fFolder;
    std::string fClip, fPrinted, fSaid;
};

TEST_F(CommandLine, CopiesAndNamesTheOutput)
{
    EXPECT_EQ(0, Run(fClip + " -o " + fFolder.Path("copy.dif")));
    EXPECT_EQ(ReadWhole(fClip), ReadWhole(fFolder.Path("copy.dif")));
    EXPECT_THAT(fSaid, HasSubstr("Done (" + fFolder.Path("copy.dif") + ", 25 frames"));
    std::filesystem::create_directory(fFolder.Path("out"));
    EXPECT_EQ(0, Run("--format CRDV --output-folder " + fFolder.Path("out") + " " + fClip));
    EXPECT_EQ(ReadWhole(fClip), ReadWhole(fFolder.Path("out/clip.dv")));
}

TEST_F(CommandLine, GoesOnAfterABadFileAndSaysWhatFailed)
{
    const std::string fifo = fFolder.Path("fifo"), empty = fFolder.Write("empty.dv", {});
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    std::filesystem::create_directory(fFolder.Path("out"));
    EXPECT_EQ(1, Run("--format dv --output-folder " + fFolder.Path("out") + " /no/file.dv " +
                     fFolder.Root().string() + " " + fifo + " " + empty + " " + fClip));
    EXPECT_THAT(fSaid, HasSubstr("/no/file.dv: No such file or directory\n"));
    EXPECT_THAT(fSaid, HasSubstr(fFolder.Root().string() + ": Not a regular file.\n"));
    EXPECT_THAT(fSaid, HasSubstr(fifo + ": Not a regular file.\n"));
    EXPECT_THAT(fSaid, HasSubstr(empty + ": Source is not recognized"));
    EXPECT_EQ(5, std::ranges::count(fSaid, '\n')) << "one line a file";
    EXPECT_EQ(ReadWhole(fClip), ReadWhole(fFolder.Path("out/clip.dv")));
}

TEST_F(CommandLine, ReplacesWhatItMay)
{
    const std::string old = fFolder.Write("old.dv", std::vector<uint8_t>(7));
    EXPECT_EQ(0, Run("--make-sample " + old + " --sample-seconds 1 --overwrite always"));
    EXPECT_EQ(SizeOf("clip.dv"), SizeOf("old.dv"));
    fFolder.Write("ref.000", std::vector<uint8_t>(7));
    EXPECT_EQ(0,
              Run(fClip + " --format avi1-ref --overwrite always -o " + fFolder.Path("ref.avi")));
    EXPECT_EQ(25u * 144008, SizeOf("ref.000"));
}

TEST_F(CommandLine, TouchesNothingThatExists)
{
    const std::string old = fFolder.Write("old.dv", std::vector<uint8_t>(7));
    EXPECT_EQ(1, Run(fClip + " -o " + old));
    EXPECT_THAT(fSaid, HasSubstr("Skipped, file exists"));
    EXPECT_EQ(1, Run(fClip + " --overwrite always -o " + fClip));
    EXPECT_THAT(fSaid, HasSubstr("The output is the source file itself."));
    EXPECT_EQ(1, Run(fClip + " --overwrite always -o " + old,
                     "KELVANE_CODEC_PATH=" + fFolder.Root().string()));
    EXPECT_THAT(fSaid, HasSubstr("DV Encoder is not set."));
    EXPECT_EQ(1, Run(fClip + " --overwrite always -o " + old,
                     "KELVANE_CODEC_PATH=" TEST_MODULES "/kelvane-codec-test-version"));
    EXPECT_THAT(fSaid, HasSubstr("is of version "));
    // Nor the files beside the output that would be written too.
    const std::string media = fFolder.Write("ref.000", std::vector<uint8_t>(7));
    EXPECT_EQ(1, Run(fClip + " --format avi1-ref -o " + fFolder.Path("ref.avi")));
    EXPECT_THAT(fSaid, HasSubstr("Skipped, file exists"));
    EXPECT_FALSE(std::filesystem::exists(fFolder.Path("ref.avi")));
    EXPECT_EQ(7u, SizeOf("ref.000"));
    EXPECT_EQ(1, Run("--make-sample " + old));
    EXPECT_EQ(7u, SizeOf("old.dv"));
    EXPECT_EQ(25u * 144000, SizeOf("clip.dv"));
    EXPECT_EQ(1, Run(fClip + " --overwrite always -o /dev/full --format dv"));
    EXPECT_THAT(fSaid, HasSubstr("Write error in destination file (video track)!"));
    EXPECT_EQ(1, Run(fClip + " --audio " + fClip + " -o " + fFolder.Path("sound.avi")));
    EXPECT_THAT(fSaid, HasSubstr(": cannot be read or is neither WAV nor AIFF"));
    EXPECT_EQ(1, Run(fClip + " -o " + fFolder.Path("none/copy.dv")));
    EXPECT_THAT(fSaid, HasSubstr("Could not create destination file."));
}

TEST_F(CommandLine, RefusesWrongUsageInOneLine)
{
    const struct {
        std::string arguments, said;
    } rows[] = {
        {"", "No file given"},
        {"--nonsense", "--nonsense"},
        {fClip + " --format divx", "Unknown format divx"},
        {fClip + " -o x.mkv", "No format goes with the extension of x.mkv"},
        {fClip + " " + fClip + " -o x.dv", "-o takes one source file only"},
        {fClip + " --format omf", "Format omf: not available yet."},
        {fClip + " --dump", "Option --dump: not available yet."},
        {fClip + " --format avi2 --codec animation", "Format avi2 has no codec animation"},
        {fClip + " --to ntsc --mode letterbox", "--mode letterbox goes with --to pal."},
        {fClip + " --audio x.wav --no-companion-audio", "exclude each other"},
        {fClip + " --to secam", "--to"},
        {"--list-formats " + fClip, "takes no file"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(2, Run(row.arguments)) << row.arguments;
        EXPECT_THAT(fSaid, StartsWith("kelvane-convert: "));
        EXPECT_THAT(fSaid, HasSubstr(row.said));
        EXPECT_EQ(1, std::ranges::count(fSaid, '\n')) << fSaid;
    }
}

TEST_F(CommandLine, ListsFormatsAndCodecs)
{
    EXPECT_EQ(0, Run("--list-formats"));
    EXPECT_THAT(fPrinted, HasSubstr("avi2-odml     ct2o  AVI Type2/OpenDML"));
    EXPECT_EQ(0, Run("--list-codecs"));
    EXPECT_THAT(fPrinted, HasSubstr("DV Video Encoder (DirectX)"));
    EXPECT_THAT(fPrinted, HasSubstr("HuffYUV Decoder"));
    EXPECT_EQ(0, Run("--list-codecs", "KELVANE_CODEC_PATH=" + fFolder.Root().string()));
    EXPECT_THAT(fPrinted, HasSubstr("No codec module in " + fFolder.Root().string()));
    EXPECT_EQ(0, Run("--describe " + fClip));
    EXPECT_EQ(fClip + ": DIF/DV PAL 4:2:0 (4:3 format)", fPrinted);
    EXPECT_EQ(1, Run("--describe /no/file"));
}

TEST_F(CommandLine, PrintsProgressAsJSON)
{
    EXPECT_EQ(0, Run("--progress json " + fClip + " -o " + fFolder.Path("copy.dv")));
    EXPECT_THAT(fPrinted, StartsWith("{\"event\":\"start\",\"file\":\"" + fClip + "\"}"));
    EXPECT_THAT(fPrinted, HasSubstr("{\"event\":\"done\",\"file\":\"" + fClip + "\""));
    EXPECT_EQ(1, Run("--progress json " + fClip + " -o " + fFolder.Path("copy.dv")));
    EXPECT_THAT(fPrinted, HasSubstr("\"event\":\"skipped\""));
    EXPECT_EQ(1, Run("--progress json /no/file -o " + fFolder.Path("x.dv")));
    EXPECT_THAT(fPrinted, HasSubstr("\"message\":\"No such file or directory\""));
}

TEST_F(CommandLine, TellsWhatIsMissing)
{
    // The last frame is cut in two.
    ASSERT_EQ(0, truncate(fClip.c_str(), 25 * 144000 - 1));
    EXPECT_EQ(1, Run("--progress json " + fClip + " -o " + fFolder.Path("copy.dv")));
    EXPECT_EQ(24u * 144000, SizeOf("copy.dv"));
    EXPECT_THAT(fPrinted, HasSubstr("\"message\":\"Error reading source file (video) ! 1 of 25 "
                                    "frames is missing, the first is number 24.\",\"frames\":24"));
    EXPECT_THAT(fPrinted, HasSubstr("\"losses\":{\"frames_missing\":1,\"first_frame\":24}"));
    EXPECT_THAT(fSaid, HasSubstr("1 of 25 frames is missing, the first is number 24."));
}

TEST_F(CommandLine, SaysWhenStandardOutputCannotBeWritten)
{
    const std::string said = "kelvane-convert: Standard output can't be written.";
    for (const char* list : {"--list-formats", "--list-codecs", "--help", "--version"}) {
        EXPECT_EQ(1, Run(std::string(list) + " >/dev/full")) << list;
        EXPECT_THAT(fSaid, HasSubstr(said + " (No space left on device)\n"));
    }
    EXPECT_EQ(1, Run("--describe " + fClip + " >/dev/full"));
    EXPECT_THAT(fSaid, HasSubstr(said));
    EXPECT_EQ(1,
              Run("--progress json " + fClip + " -o " + fFolder.Path("copy.dv") + " >/dev/full"));
    EXPECT_EQ(ReadWhole(fClip), ReadWhole(fFolder.Path("copy.dv"))) << "the conversion goes on";
    EXPECT_THAT(fSaid, HasSubstr(said));
}

// A clip that is long because it is sparse: the signal arrives while it is being copied.
TEST_F(CommandLine, FinishesTheFileCleanlyWhenItIsToEnd)
{
    constexpr uint64_t kLong = 2000000ull * 144000;
    ASSERT_EQ(0, truncate(fClip.c_str(), static_cast<off_t>(kLong)));
    const std::string errors = fFolder.Path("errors");
    for (const auto& [signal, said] : {std::pair(SIGINT, ": Interrupted.\n"),
                                       {SIGTERM, ": Interrupted by the system.\n"},
                                       {SIGHUP, ": Interrupted by the system.\n"}}) {
        SCOPED_TRACE(said);
        const std::string copy = fFolder.Path("copy" + std::to_string(signal) + ".avi");
        const pid_t child = fork();
        if (child == 0) {
            freopen(errors.c_str(), "w", stderr);
            execl(kProgram.c_str(), kProgram.c_str(), "--progress", "none", fClip.c_str(),
                  "--format", "avi1", "-o", copy.c_str(), nullptr);
            _exit(99);
        }
        std::error_code error;
        for (int i = 0; i < 1000; i++) {
            const auto size = std::filesystem::file_size(copy, error);
            if (!error && size > 100 * 144000) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        kill(child, signal);
        int status = 0;
        ASSERT_EQ(child, waitpid(child, &status, 0));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1);
        const auto text = ReadWhole(errors);
        EXPECT_THAT(std::string(text.begin(), text.end()), HasSubstr(said));
        EXPECT_EQ(0, Run("--describe " + copy)) << "it has its head";
        EXPECT_LT(std::filesystem::file_size(copy), kLong);
        std::filesystem::remove(copy);
    }
}

}  // namespace
}  // namespace kelvane
