#pragma once

#include "platform/bass/bass.h"

#include <map>
#include <string>
#include <vector>

/// Stands in for the audio library: writes down every call in order, and answers as the channels here say.
/// Each entry point of the library does to its channel what the real one does at once; what takes time there
/// happens here when a test says so.
namespace recording {

struct Channel {
    DWORD state = BASS_ACTIVE_STOPPED;
    DWORD status = BASS_STREAM_OPEN;
    DWORD httpStatus = 0;
    bool sliding = false;
    float volume = 1;
    QWORD position = 0;
    std::string next = "(untold)"; ///< The kind and source that BASS_ChannelSetNext was told last.
    SYNCPROC* endSync = nullptr;
    SYNCPROC* slideSync = nullptr;
};

struct Bass {
    std::vector<std::string> calls;
    std::map<DWORD, Channel> channels;
    DWORD lastHandle = 0;
    /// Of the streams created from now on; BASS_STREAM_NONE: the creation fails.
    DWORD status = BASS_STREAM_OPEN;
    bool dataFails = false;
    bool encodes = true;
    bool serves = true;
    DWORD encoder = 0;
    std::vector<float> magnitudes = std::vector<float>(512, 0.0F);

    Channel& last() { return channels.at(lastHandle); }
    /// The fade of the last stream is over.
    void endFade();
    /// The last stream has failed; its end sync is for the test to fire.
    void fail(DWORD status, DWORD httpStatus = 0);

    /// The calls since the last time, one a line.
    std::string takeCalls();
};

/// Afresh for each test.
extern Bass bass;

} // namespace recording
