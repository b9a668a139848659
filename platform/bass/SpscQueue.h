#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace bass {

/// A bounded queue from one thread to one other, without locks.
template <typename T, std::size_t Size>
class SpscQueue {
public:
    /// False when it is full.
    [[nodiscard]] bool push(const T& item) {
        const std::size_t at = in_.load(std::memory_order_relaxed);
        if (at - out_.load(std::memory_order_acquire) == Size) return false;
        items_[at % Size] = item;
        in_.store(at + 1, std::memory_order_release);
        return true;
    }
    /// The next item, which stays; null when there is none.
    [[nodiscard]] const T* front() const {
        const std::size_t at = out_.load(std::memory_order_relaxed);
        return at == in_.load(std::memory_order_acquire) ? nullptr : &items_[at % Size];
    }
    void pop() { out_.store(out_.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

private:
    std::array<T, Size> items_{};
    std::atomic<std::size_t> in_{0};
    std::atomic<std::size_t> out_{0};
    static_assert(std::atomic<std::size_t>::is_always_lock_free);
};

} // namespace bass
