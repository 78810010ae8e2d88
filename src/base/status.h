#pragma once

namespace kelvane {

// Operations answer 0 or one of these. Nothing is thrown across a call.
enum Status : int {
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
};

}  // namespace kelvane
