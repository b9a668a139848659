#pragma once

#include <chrono>
#include <thread>

namespace support {

/// Waits until `condition` holds; false when it does not within `limit`.
template <typename Condition>
[[nodiscard]] bool waitFor(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace support
