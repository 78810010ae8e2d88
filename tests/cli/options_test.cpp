// From each option of the command line to its field.

#include <gtest/gtest.h>

#include <functional>
#include <iomanip>
#include <sstream>

#include "base/four_cc.h"
#include "cli/arguments.h"
#include "cli/run_settings.h"

namespace kelvane {
namespace {

// Apostrophes hold words together.
std::vector<std::string> Words(const std::string& line)
{
    std::vector<std::string> words = {"kelvane-convert"};
    std::istringstream in(line);
    for (std::string word; in >> std::quoted(word, '\'');)
        words.push_back(word);
    return words;
}

Arguments Parsed(const std::string& line)
{
    std::vector<std::string> words = Words(line);
    std::vector<char*> values;
    for (std::string& word : words)
        values.push_back(word.data());
    Arguments arguments;
    int status = -1;
    EXPECT_TRUE(ParseArguments(int(values.size()), values.data(), arguments, status)) << line;
    return arguments;
}

// As on a system where the usual codecs are installed behind others.
const DVCodecLists& Codecs()
{
    static const DVCodecLists lists = [] {
        DVCodecLists made;
        for (const char* name : {"one", "DV Video Encoder (DirectX)", "three"})
            made.encoders.emplace_back().long_name = name;
        for (const char* name : {"first", "DV Video Decoder (DirectX)", "third"})
            made.decoders.emplace_back().long_name = name;
        return made;
    }();
    return lists;
}

std::string NameOf(const DVCodecEntry* entry)
{
    return entry ? entry->long_name : "null";
}

// All fields as they are told in messages, by name.
std::string Told(const ConversionSettings& s)
{
    const MediaFormat& format = s.destination_format;
    std::ostringstream out;
    out << "limits " << s.limits_are_in_frame << ' ' << s.from_video_frame << ' '
        << s.to_video_frame << "\nchannels " << s.four_channel_options << "\nbits " << std::hex
        << s.conversion_options << std::dec << "\ncodec " << FourCCText(s.codec) << "\ninterleave "
        << s.audio_interleave_factor << "\naudio_search " << int(s.audio_search) << ' '
        << (s.audio_file ? s.audio_file : "none") << "\nsound " << s.sound_follows
        << s.sound_untouched << int(s.channels) << "\ndata " << int(s.dv_data_conversion)
        << "\nencoders " << NameOf(s.dv_encoder) << ", " << NameOf(s.dvcpro_encoder)
        << "\ndecoders " << NameOf(s.dv_decoder) << ", " << NameOf(s.dvcpro_decoder) << "\nop "
        << FourCCText(uint32_t(s.op)) << "\nmode " << int(s.mode) << "\nresampling "
        << int(s.timeresampling) << "\ninterlace " << int(s.src_interlace) << ' '
        << int(s.dst_interlace) << "\ndeinterlace first " << s.deinterlace_source_first
        << "\naspect " << int(s.src_aspect) << ' ' << int(s.dst_aspect) << "\ndetail "
        << int(s.motiondetail) << "\nformat " << format.kind;
    if (format.kind != kUnknownFormat) out << " space " << format.Space() << ' ' << format.Height();
    return out.str();
}

std::string SettingsOf(const Arguments& arguments)
{
    return Told(SettingsFor(arguments, Codecs()));
}

// With the options of a film that is copied.
ConversionSettings Defaults()
{
    ConversionSettings s;
    s.limits_are_in_frame = false;
    s.to_video_frame = -1;
    s.four_channel_options = 3;
    s.conversion_options = kOptionInPlace | kOptionIdx1 | kOptionNoPTC | kOptionOffsets64 |
                           kOptionAudioTrack | kOptionDVCP;
    s.codec = "dvc "_4cc;
    s.audio_interleave_factor = 5;
    s.audio_search = CompanionSearch::kByName;
    s.dv_encoder = &Codecs().encoders[1];
    s.dv_decoder = &Codecs().decoders[1];
    s.dvcpro_encoder = &Codecs().encoders[0];
    s.dvcpro_decoder = &Codecs().decoders[0];
    s.op = Operation::kConvert;
    s.timeresampling = ResamplingMethod::kBlend;
    s.src_interlace = FieldOrder::kLowerFirst;
    s.motiondetail = MotionDetail::kCoarse;
    return s;
}

TEST(Options, EachSetsItsFieldOfTheSettingsAndNoOther)
{
    using S = ConversionSettings;
    constexpr uint32_t kOfFormats = kOptionOffsets64 | kOptionAudioTrack;
    const std::pair<const char*, std::function<void(S&)>> rows[] = {
        {"", [](S&) {}},
        {"--to pal", [](S& s) { s.op = Operation::kToPAL; }},
        {"--to NTSC", [](S& s) { s.op = Operation::kToNTSC; }},
        {"--to same", [](S&) {}},
        {"--to ntsc --mode crop",
         [](S& s) { s.op = Operation::kToNTSC, s.mode = GeometryMode::kCrop; }},
        {"--to pal --mode scale", [](S& s) { s.op = Operation::kToPAL; }},
        {"--to pal --mode letterbox",
         [](S& s) { s.op = Operation::kToPAL, s.mode = GeometryMode::kLetterBox; }},
        {"--to pal --mode PanScan",
         [](S& s) { s.op = Operation::kToPAL, s.mode = GeometryMode::kPanAndScan; }},
        {"--to pal --mode letterbox-panscan",
         [](S& s) { s.op = Operation::kToPAL, s.mode = GeometryMode::kLetterBoxPanAndScan; }},
        {"--resample nearest", [](S& s) { s.timeresampling = ResamplingMethod::kNearest; }},
        {"--resample blend", [](S&) {}},
        {"--resample Motion", [](S& s) { s.timeresampling = ResamplingMethod::kMotion; }},
        {"--resample pulldown", [](S& s) { s.timeresampling = ResamplingMethod::kPulldown; }},
        {"--to pal --resample pulldown",
         [](S& s) {
             s.op = Operation::kToPAL, s.timeresampling = ResamplingMethod::kPulldown,
             s.deinterlace_source_first = 1;
         }},
        {"--to pal --resample pulldown --no-deinterlace-source",
         [](S& s) { s.op = Operation::kToPAL, s.timeresampling = ResamplingMethod::kPulldown; }},
        {"--detail fine", [](S& s) { s.motiondetail = MotionDetail::kFine; }},
        {"--detail medium", [](S& s) { s.motiondetail = MotionDetail::kMedium; }},
        {"--detail coarse", [](S&) {}},
        {"--allow-field-order-change",
         [](S& s) { s.conversion_options |= kOptionFieldOrderChange; }},
        {"--source-interlace progressive",
         [](S& s) { s.src_interlace = FieldOrder::kProgressive; }},
        {"--source-interlace upper", [](S& s) { s.src_interlace = FieldOrder::kUpperFirst; }},
        {"--source-interlace lower", [](S&) {}},
        {"--target-interlace same", [](S&) {}},
        {"--target-interlace upper", [](S& s) { s.dst_interlace = FieldTarget::kUpperFirst; }},
        {"--target-interlace Lower", [](S& s) { s.dst_interlace = FieldTarget::kLowerFirst; }},
        {"--target-interlace adaptive", [](S& s) { s.dst_interlace = FieldTarget::kAdaptive; }},
        {"--target-interlace blur", [](S& s) { s.dst_interlace = FieldTarget::kBlur; }},
        {"--source-aspect 4:3", [](S& s) { s.src_aspect = Aspect::k4x3; }},
        {"--source-aspect 16:9", [](S& s) { s.src_aspect = Aspect::k16x9; }},
        {"--source-aspect auto", [](S&) {}},
        {"--target-aspect 4:3", [](S& s) { s.dst_aspect = Aspect::k4x3; }},
        {"--target-aspect 16:9", [](S& s) { s.dst_aspect = Aspect::k16x9; }},
        {"--target-aspect same", [](S&) {}},
        {"--data dv", [](S& s) { s.dv_data_conversion = DataConversion::kToDV; }},
        {"--data DVCPRO25", [](S& s) { s.dv_data_conversion = DataConversion::kToDVCPRO25; }},
        {"--lines-486", [](S& s) { s.conversion_options |= kOptionLines486; }},
        {"--interleave 1", [](S& s) { s.audio_interleave_factor = 1; }},
        {"--interleave 30", [](S& s) { s.audio_interleave_factor = 30; }},
        {"--audio s.wav",
         [](S& s) { s.audio_search = CompanionSearch::kInFile, s.audio_file = "s.wav"; }},
        {"--no-companion-audio", [](S& s) { s.audio_search = CompanionSearch::kNone; }},
        {"--sync auto", [](S&) {}},
        {"--sync off", [](S& s) { s.sound_follows = false; }},
        {"--sound adjusted", [](S&) {}},
        {"--sound Untouched", [](S& s) { s.sound_untouched = true; }},
        {"--channels auto", [](S&) {}},
        {"--channels 1+2", [](S& s) { s.channels = ChannelChoice::k1And2; }},
        {"--channels 3+4", [](S& s) { s.channels = ChannelChoice::k3And4; }},
        {"--channels mix", [](S& s) { s.channels = ChannelChoice::kMix; }},
        {"--channels all", [](S& s) { s.channels = ChannelChoice::kAll; }},
        {"--idx1", [](S&) {}},
        {"--no-idx1", [](S& s) { s.conversion_options &= ~uint32_t{kOptionIdx1}; }},
        {"--codec avid-dv --dvcp", [](S& s) { s.codec = "AVdv"_4cc; }},
        {"--codec avid-dv --no-dvcp",
         [](S& s) {
             s.codec = "AVdv"_4cc;
             s.conversion_options &= ~uint32_t{kOptionDVCP};
         }},
        {"--dv-encoder three", [](S& s) { s.dv_encoder = &Codecs().encoders[2]; }},
        {"--dv-decoder third", [](S& s) { s.dv_decoder = &Codecs().decoders[2]; }},
        {"--dvcpro-encoder three", [](S& s) { s.dvcpro_encoder = &Codecs().encoders[2]; }},
        {"--dvcpro-decoder third", [](S& s) { s.dvcpro_decoder = &Codecs().decoders[2]; }},
        {"--dv-encoder none", [](S& s) { s.dv_encoder = nullptr; }},
        {"--dvcpro-decoder none", [](S& s) { s.dvcpro_decoder = nullptr; }},
        {"--dv-decoder one", [](S& s) { s.dv_decoder = nullptr; }},
        {"--format mov", [](S& s) { s.conversion_options &= ~kOfFormats; }},
        {"--format mov-64", [](S& s) { s.conversion_options &= ~uint32_t{kOptionAudioTrack}; }},
        {"--format mov-audio", [](S& s) { s.conversion_options &= ~uint32_t{kOptionOffsets64}; }},
    };
    for (const auto& [line, change] : rows) {
        ConversionSettings expected = Defaults();
        change(expected);
        const Arguments arguments = Parsed(std::string("in.dv ") + line);
        EXPECT_EQ(Told(expected), SettingsOf(arguments)) << line;
        EXPECT_EQ(std::vector<std::string>{"in.dv"}, arguments.files);
    }
}

TEST(Options, ChooseTheFirstCodecWhereTheUsualOneIsNotInstalled)
{
    DVCodecLists few;
    few.encoders.emplace_back().long_name = "other";
    few.decoders.emplace_back().long_name = "others";
    const Arguments arguments = Parsed("in.dv --dvcpro-encoder none");
    const ConversionSettings found = SettingsFor(arguments, few);
    EXPECT_EQ("other", NameOf(found.dv_encoder));
    EXPECT_EQ("others", NameOf(found.dv_decoder));
    EXPECT_EQ(nullptr, found.dvcpro_encoder);
    EXPECT_EQ("others", NameOf(found.dvcpro_decoder));
    EXPECT_EQ(nullptr, SettingsFor(arguments, {}).dv_encoder);
}

// Formats by extension, name, code and menu text; codecs by name, code and menu text.
TEST(Options, NameFormatsAndCodecsInEachWay)
{
    constexpr uint32_t dvsd = "dvsd"_4cc, none = 0;
    // Picture formats by colour space and height, 0 of DV.
    const struct {
        const char* line;
        uint32_t selection, codec, space;
    } rows[] = {
        {"-o x.mov", "cqa6"_4cc, "dvc "_4cc, 0},
        {"-o x.avi", "ct2o"_4cc, dvsd, 0},
        {"-o x.DV", "crdv"_4cc, none, 0},
        {"-o x.dif", "crdv"_4cc, none, 0},
        {"-o x.y/x.dvsd", "crdv"_4cc, none, 0},
        {"-o x.dv --format avi1", "ct1_"_4cc, dvsd, 0},
        {"--format AVI1-ODML", "ct1o"_4cc, dvsd, 0},
        {"--format ct2_", "ct2_"_4cc, dvsd, 0},
        {"--format CT1R", "ct1r"_4cc, dvsd, 0},
        {"--format 'Reference AVI Type2'", "ct2r"_4cc, dvsd, 0},
        {"--format canopus1", "cbeo"_4cc, none, 0},
        {"--format canopus2", "cbe2"_4cc, none, 0},
        {"--format matrox", "cmat"_4cc, dvsd, 0},
        {"--format matrox --codec matrox-dvcpro25", "cmat"_4cc, "dv25"_4cc, 0},
        {"--format avi2 --codec microsoft-dv", "ct2_"_4cc, dvsd, 0},
        {"--format avi2 --codec canopus-dv", "ct2_"_4cc, "CDVC"_4cc, 0},
        {"--format avi2 --codec dv500", "ct2_"_4cc, "DVSD"_4cc, 0},
        {"--format avi2 --codec 'DVCPRO25'", "ct2_"_4cc, "dv25"_4cc, 0},
        {"--format avi2 --codec cdvc", "ct2_"_4cc, "CDVC"_4cc, 0},
        {"--format avi2 --codec rgb24", "ct2_"_4cc, "DIB "_4cc, kBGR24},
        {"--format avi2 --codec rgb32", "ct2_"_4cc, "DIB "_4cc, kBGRX32},
        {"--format avi2 --codec YUY2", "ct2_"_4cc, "YUY2"_4cc, kYUY2},
        {"--format avi2 --codec uyvy", "ct2_"_4cc, "UYVY"_4cc, kUYVY},
        {"--format avi2 --codec 'Huffyuv RGB'", "ct2_"_4cc, "HFYU"_4cc, kBGR24},
        {"--format avi2 --codec huffyuv-yuv", "ct2_"_4cc, "HFYU"_4cc, kYUY2},
        {"--format mov --codec apple-dvcpro", "cqt_"_4cc, "dvpp"_4cc, 0},
        {"--format mov --codec avid-dv", "cqt_"_4cc, "AVdv"_4cc, 0},
        {"--format mov --codec softdv", "cqt_"_4cc, "dvc "_4cc, 0},
        {"--format mov --codec animation", "cqt_"_4cc, "rle "_4cc, kBGR24},
        {"--format mov --codec rgb24", "cqt_"_4cc, "raw "_4cc, kRGB24},
        {"--format mov --codec rgb32", "cqt_"_4cc, "raw "_4cc, kRGBX32},
        {"--format mov --codec yuv422", "cqt_"_4cc, "2vuy"_4cc, kYUVSigned},
    };
    for (const auto& row : rows) {
        const Arguments arguments = Parsed(std::string("--to pal in.dv ") + row.line);
        const ConversionSettings settings = SettingsFor(arguments, Codecs());
        EXPECT_EQ(row.selection, arguments.options.selection) << row.line;
        EXPECT_EQ(row.codec, settings.codec) << row.line;
        const MediaFormat& format = settings.destination_format;
        EXPECT_EQ(row.space, format.kind == kUnknownFormat ? 0u : uint32_t(format.Space()))
            << row.line;
        EXPECT_EQ(row.space == 0, format.kind == kUnknownFormat) << row.line;
    }
}

TEST(Options, ThatChangeNothingAreNamed)
{
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        {"-o x.avi --format avi2 --idx1 --interleave 2", {}},
        {"-o x.avi --idx1 --interleave 2", {"--idx1"}},
        {"-o x.avi --mode scale --dvcp", {"--mode", "--dvcp"}},
        {"-o x.mov --no-idx1 --lines-486", {"--lines-486", "--idx1"}},
        {"-o x.mov --codec rgb24 --lines-486 --data dv --sync off", {"--data"}},
        {"--format mov --codec rgb24 --audio s.wav --sync off --channels mix",
         {"--audio", "--sync", "--channels"}},
        {"-o x.mov --sound untouched", {"--sound"}},
        {"-o x.dv --sound untouched --sync auto --channels all", {}},
        {"-o x.dv --to ntsc --detail fine --resample blend", {"--detail"}},
        {"-o x.dv --to ntsc --detail fine --resample motion --interleave 3", {"--interleave"}},
        {"-o x.dv --to pal --no-deinterlace-source --allow-field-order-change",
         {"--deinterlace-source"}},
    };
    for (const auto& [line, named] : rows) {
        std::vector<std::string> found;
        for (const std::string& text : Parsed(std::string("in.dv ") + line).idle)
            found.push_back(text.substr(0, text.find(' ')));
        EXPECT_EQ(named, found) << line;
    }
}

// All that is no setting, by name.
std::string TheRest(const Arguments& a)
{
    std::ostringstream out;
    out << "command " << int(a.command) << "\noutput " << a.output << "\nfolder "
        << a.options.last_output_folder << "\nfile " << a.options.last_output_file << "\noverwrite "
        << a.options.overwrite << "\nprogress " << int(a.progress) << "\nthreads " << a.threads
        << "\nsample " << a.sample.path << ' ' << a.sample.pal << ' ' << a.sample.wide << ' '
        << a.sample.seconds << ' ' << a.sample.rate;
    for (const std::string& file : a.files)
        out << "\n" << file;
    return out.str();
}

TEST(Options, ThatAreNoSettingsSetTheirsToo)
{
    using A = Arguments;
    const std::string quiet = " --overwrite never --progress none";  // else as the terminal has it
    const std::tuple<const char*, std::string, std::function<void(A&)>> rows[] = {
        {"in.dv", quiet, [](A&) {}},
        {"in.dv two.avi", quiet,
         [](A& a) {
             a.files = {"in.dv", "two.avi"};
         }},
        {"in.dv -o x.mov", quiet, [](A& a) { a.output = "x.mov"; }},
        {"in.dv --output-folder /f", quiet, [](A& a) { a.options.last_output_folder = "/f"; }},
        {"in.dv --format avi1", quiet, [](A& a) { a.options.last_output_file = "<source>.avi"; }},
        {"in.dv --threads 3", quiet, [](A& a) { a.threads = 3; }},
        {"in.dv --overwrite ask", " --progress none", [](A& a) { a.options.overwrite = 1; }},
        {"in.dv --overwrite Always", " --progress none", [](A& a) { a.options.overwrite = 2; }},
        {"in.dv --progress bar", " --overwrite never",
         [](A& a) { a.progress = ProgressStyle::kBar; }},
        {"in.dv --progress plain", " --overwrite never",
         [](A& a) { a.progress = ProgressStyle::kPlain; }},
        {"in.dv --progress JSON", " --overwrite never",
         [](A& a) { a.progress = ProgressStyle::kJSON; }},
        {"in.dv --describe", quiet,
         [](A& a) {
             a.command = Command::kDescribe;
             a.options.last_output_file = ConversionOptions().last_output_file;
         }},
    };
    for (const auto& [line, others, change] : rows) {
        Arguments expected;
        expected.files = {"in.dv"};
        expected.options.overwrite = 0;
        expected.options.last_output_file = "<source>.mov";
        expected.progress = ProgressStyle::kNone;
        change(expected);
        EXPECT_EQ(TheRest(expected), TheRest(Parsed(line + others))) << line;
    }
    const std::pair<const char*, std::function<void(A&)>> samples[] = {
        {"", [](A&) {}},
        {"--sample-system ntsc", [](A& a) { a.sample.pal = false; }},
        {"--sample-aspect 16:9", [](A& a) { a.sample.wide = true; }},
        {"--sample-seconds 7", [](A& a) { a.sample.seconds = 7; }},
        {"--sample-rate 32000", [](A& a) { a.sample.rate = 32000; }},
    };
    for (const auto& [line, change] : samples) {
        Arguments expected;
        expected.command = Command::kMakeSample;
        expected.sample = {"s.dv", true, false, 10, 48000};
        expected.options.overwrite = 0;
        expected.progress = ProgressStyle::kNone;
        change(expected);
        EXPECT_EQ(TheRest(expected), TheRest(Parsed(line + (" --make-sample s.dv" + quiet))))
            << line;
    }
    EXPECT_EQ(Command::kListFormats, Parsed("--list-formats").command);
    EXPECT_EQ(Command::kListCodecs, Parsed("--list-codecs").command);
}

}  // namespace
}  // namespace kelvane
