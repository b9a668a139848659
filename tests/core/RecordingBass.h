#pragma once

#include "platform/bass/bass.h"

#include <map>
#include <string>
#include <vector>

/// Stands in for the audio library: writes down every call in order, and answers as the channels here say.
namespace recording {

struct Channel {
    DWORD state = BASS_ACTIVE_STOPPED;
    bool sliding = false;
};

struct Bass {
    std::vector<std::string> calls;
    std::map<DWORD, Channel> channels;
    DWORD lastHandle = 0;
    bool opens = true;
    bool dataFails = false;
    bool encodes = true;
    bool serves = true;
    DWORD encoder = 0;
    std::vector<float> magnitudes = std::vector<float>(512, 0.0F);
    SYNCPROC* endSync = nullptr;

    /// The calls since the last time, one a line.
    std::string takeCalls();
};

/// Afresh for each test.
extern Bass bass;

} // namespace recording
