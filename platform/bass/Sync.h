#pragma once

#include "platform/bass/bass.h"

namespace bass {

/// A callback of a stream.
struct Sync {
    HSYNC handle;
    DWORD type; ///< One of the BASS_SYNC_ values.
    bool once;
    SYNCPROC* proc;
    void* user;
};

} // namespace bass
