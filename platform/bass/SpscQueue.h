#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>

namespace bass {

/// A bounded queue from one thread to one other, without locks. `push` answers false when it is full.
template <typename T, std::size_t Size> class SpscQueue {
public:
    bool push(const T& item) {
        const std::size_t at = m_in.load(std::memory_order_relaxed);
        if (at - m_out.load(std::memory_order_acquire) == Size) return false;
        m_items[at % Size] = item;
        m_in.store(at + 1, std::memory_order_release);
        return true;
    }
    /// The next item, which stays.
    const T* front() const {
        const std::size_t at = m_out.load(std::memory_order_relaxed);
        return at == m_in.load(std::memory_order_acquire) ? nullptr : &m_items[at % Size];
    }
    void pop() { m_out.store(m_out.load(std::memory_order_relaxed) + 1, std::memory_order_release); }
    std::optional<T> take() {
        const T* item = front();
        if (!item) return std::nullopt;
        const T taken = *item;
        pop();
        return taken;
    }

private:
    std::array<T, Size> m_items{};
    std::atomic<std::size_t> m_in{0};
    std::atomic<std::size_t> m_out{0};
};

} // namespace bass
