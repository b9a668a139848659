#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace bass {

/// Hands the latest of a row of values from one thread to another without locks (a triple buffer).
///
/// Threads: `publish` is one thread's (or under one lock), `take` one other's.
template <typename T>
class LatestValue {
public:
    void publish(const T& value) {
        values_[written_] = value;
        written_ = shared_.exchange(written_ | fresh) & index;
    }
    /// The value published last, null when it was taken already.
    const T* take() {
        if (!(shared_.load() & fresh)) return nullptr;
        taken_ = shared_.exchange(taken_) & index;
        return &values_[taken_];
    }

private:
    static constexpr std::uint32_t index = 3;
    static constexpr std::uint32_t fresh = 4;

    std::array<T, 3> values_{};
    std::uint32_t written_ = 0;
    std::uint32_t taken_ = 1;
    std::atomic<std::uint32_t> shared_{2};
    static_assert(std::atomic<std::uint32_t>::is_always_lock_free);
};

} // namespace bass
