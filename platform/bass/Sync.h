#pragma once

#include "platform/bass/bass.h"

namespace bass {

/// A callback of a stream.
struct Sync {
    HSYNC handle;
    DWORD type; ///< BASS_SYNC_END or BASS_SYNC_SLIDE.
    bool once;
    SYNCPROC* proc;
    void* user;
};

} // namespace bass
