#pragma once

#include <string>

namespace kelvane {

// What an operation answers. Nothing is thrown across a call.
enum StatusCode : int {
    kOK = 0,
    kError = -1,                    // any failure without a number of its own
    kNotThisClass = -2,             // a file of another kind
    kAudioNotSupported = -3,        // audio compression that no class reads
    kReferenceMissing = -5,         // reads: the file that holds the media is not there
    kFormatNotSupported = -10,      // a stream format that the writer refuses
    kCorrupted = -11,               // the structure of the file contradicts itself
    kWrongSampleRate = -13,         // a sample rate found after the loop began
    kCompanionAudioMismatch = -18,  // companion audio files that do not fit together
    kNoDVCPRODecoder = -108,        // a DVCPRO25 source and no decoder for it
    kNoDVCPROEncoder = -112,        // DVCPRO25 output and no encoder for it

    // Reads of a frame or a chunk. What is no kOK gives no bytes, but for kTooLarge.
    kEnd = -200,       // behind the last one
    kMissing = -201,   // its place is beyond the end of the file
    kUnread = -202,    // it is in the file, and the system could not read it
    kTooLarge = -203,  // larger than the buffer

    kUnwritten = -204,   // a frame or a chunk that the destination did not take
    kUndecodable = -205  // a frame that its codec cannot decode
};

// A code, and what the system said where the system failed.
class [[nodiscard]] Status {
public:
    // Implicit, so that a code can be returned as it is.
    constexpr Status(StatusCode code = kOK, int systemError = 0)
        : fCode(code), fSystemError(systemError)
    {
    }
    // With the errno of the call that has just failed.
    static Status System(StatusCode code = kError);

    constexpr StatusCode Code() const { return fCode; }
    // errno, 0 when it was not the system that failed.
    constexpr int SystemError() const { return fSystemError; }
    // " (No space left on device)", to stand behind our words; empty when the system said nothing.
    std::string Reason() const;

    friend constexpr bool operator==(Status a, int code) { return a.fCode == code; }

    // For logs and tests: the number and the system's words.
    template <class Stream>
    friend Stream& operator<<(Stream& out, const Status& status)
    {
        out << static_cast<int>(status.fCode) << status.Reason();
        return out;
    }

private:
    StatusCode fCode;
    int fSystemError;
};

// The first failure of two steps that are both done whatever comes of the other.
constexpr Status FirstFailure(Status first, Status second)
{
    return first == kOK ? second : first;
}

}  // namespace kelvane
