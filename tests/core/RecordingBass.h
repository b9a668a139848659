#pragma once

#include "platform/bass/bass.h"

#include <map>
#include <string>
#include <vector>

/// Stands in for the audio library. Each entry point does to its channel at once what the real one does;
/// what takes time there happens here when a test says so.
namespace recording {

struct Channel {
    DWORD state = BASS_ACTIVE_STOPPED;
    DWORD status = BASS_STREAM_OPEN;
    DWORD httpStatus = 0;
    bool sliding = false;
    float volume = 1;
    float balance = 0;
    QWORD position = 0;
    std::string source; ///< Its kind (BASS_SOURCE_) and source, like "1 /a.mp3".
    std::string next;   ///< The same of what was last set to follow.
    int nextChanges = 0;
    std::map<DWORD, std::string> tags; ///< By their kind (BASS_TAG_).
    bool isLive = false;
    SYNCPROC* endSync = nullptr;
    SYNCPROC* slideSync = nullptr;
};

struct Encoder {
    bool runs = false;
    DWORD channel = 0;
    int starts = 0;
    std::string name = {};
};

struct Bass {
    std::map<DWORD, Channel> channels;
    DWORD lastHandle = 0;
    /// Of the streams created from now on; BASS_STREAM_NONE: the creation fails.
    DWORD status = BASS_STREAM_OPEN;
    bool dataFails = false;
    bool hasEncoder = true;
    std::vector<std::string> encodersTried; ///< Their commands, without options.
    bool portIsFree = true;
    Encoder encoder;
    std::vector<float> magnitudes = std::vector<float>(512, 0.0F);

    Channel& last() { return channels.at(lastHandle); }
    /// The fade of the last stream is over.
    void endFade();
    /// The last stream has failed; its end sync is for the test to fire.
    void fail(DWORD status, DWORD httpStatus = 0);
};

/// Afresh for each test.
extern Bass bass;

} // namespace recording
