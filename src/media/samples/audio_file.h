#pragma once

#include <cstdint>
#include <variant>

#include "base/status.h"
#include "media/samples/aiff_file.h"
#include "media/samples/wav_file.h"

namespace kelvane {

// The kinds of files that an AudioFile opens; the numbers are those of file type detection.
enum AudioFileType : int32_t { kNoAudioFile = 0, kWAVFileType = 3, kAIFFFileType = 4 };

// The kind of an audio file by its first bytes.
AudioFileType AudioFileTypeOf(const char* path);

// A WAVE or AIFF file behind one face; the operations are those of SampleFile. For any other type
// all of them answer -10, and Format() null.
class AudioFile {
public:
    AudioFile(const char* path, uint32_t mode, int32_t type);

    Status InitCheck() const;
    const RawAudioFormat* Format() const;
    SampleCoding Coding() const;
    bool HasSound() const { return File() && File()->HasSound(); }
    Status SetFormat(const RawAudioFormat& format);
    int64_t CountFrames() const;
    int64_t PromisedFrames() const;
    Status SetPosition(int64_t frame);
    Status Read(void* buffer, int32_t& count);
    Status ReadRaw(void* buffer, int32_t& count);
    Status Write(const void* buffer, int32_t count);
    Status Finish();

private:
    // Null for any other type.
    SampleFile* File();
    const SampleFile* File() const;

    std::variant<std::monostate, WAVFile, AIFFFile> fFile;
};

}  // namespace kelvane
