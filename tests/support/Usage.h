#pragma once

#include <functional>

namespace support {

/// What a process of its own took.
struct Usage {
    double megabytes =
        0; ///< At its peak, with the programs that it started; what this process holds included.
    double cpuSeconds = 0;
    bool ended = false; ///< By itself.
};

/// Does `work` in a copy of this process, which must have one thread.
Usage usageOf(const std::function<void()>& work);

} // namespace support
