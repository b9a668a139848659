#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace bass {

/// A bounded, lock-free ring with a single producer and a single consumer. The last `history` elements that
/// were read stay available, to be read again (`rewind`) or copied (`copyHistory`); rings of common libraries
/// reuse a slot as soon as it is read.
///
/// Threads: `writable`, `write` and `push` are for the producer; `peek`, `consume`, `front` and `take` for
/// the consumer; `readable` for any thread. `rewind` and `clear` need both to be at rest. `copyHistory` may
/// run concurrently with both if it copies much less than the history.
template <typename T> class SpscRing {
public:
    /// Holds `capacity` unread elements, and at least `history` elements that were read.
    explicit SpscRing(std::size_t capacity, std::size_t history = 0)
        : m_capacity(capacity),
          m_history(history),
          m_mask(std::bit_ceil(capacity + history) - 1),
          m_elements(std::make_unique_for_overwrite<T[]>(m_mask + 1)) {}

    std::size_t capacity() const { return m_capacity; }
    /// 0 while a rewind leaves more to read than the capacity.
    std::size_t writable() const { return m_capacity - std::min(readable(), m_capacity); }
    std::size_t readable() const {
        return static_cast<std::size_t>(m_written.load(std::memory_order_acquire) -
                                        m_read.load(std::memory_order_acquire));
    }

    /// Writes as many elements as there is room for, in order; returns their number.
    std::size_t write(std::span<const T> elements) {
        const std::uint64_t at = m_written.load(std::memory_order_relaxed);
        const std::size_t count = std::min(elements.size(), writable());
        const std::size_t place = at & m_mask;
        const std::size_t first = std::min(count, m_mask + 1 - place);
        std::copy_n(elements.begin(), first, m_elements.get() + place);
        std::copy_n(elements.begin() + static_cast<std::ptrdiff_t>(first), count - first, m_elements.get());
        m_written.store(at + count, std::memory_order_release);
        return count;
    }
    bool push(const T& element) { return write({&element, 1}) == 1; }

    /// The next `count` elements in one or two runs; `count` must not exceed `readable`.
    std::array<std::span<const T>, 2> peek(std::size_t count) const {
        return runs(m_read.load(std::memory_order_relaxed), count);
    }
    void consume(std::size_t count) {
        m_read.store(m_read.load(std::memory_order_relaxed) + count, std::memory_order_release);
    }
    /// The next element, without consuming it; null when there is none.
    const T* front() const {
        if (readable() == 0) return nullptr;
        return &m_elements[m_read.load(std::memory_order_relaxed) & m_mask];
    }
    std::optional<T> take() {
        const T* element = front();
        if (!element) return std::nullopt;
        const T taken = *element;
        consume(1);
        return taken;
    }

    /// Steps back over at most `count` elements that were read; returns their number.
    std::size_t rewind(std::uint64_t count) {
        const std::uint64_t at = m_read.load();
        const std::uint64_t kept = std::min<std::uint64_t>({count, m_history, at - m_start});
        m_read.store(at - kept);
        return static_cast<std::size_t>(kept);
    }
    void clear() {
        m_start = m_written.load();
        m_read.store(m_start);
    }

    /// Fills `out` with the elements that end `behind` elements before the read position. Those before the
    /// first element, or before the last `clear`, are T{}.
    void copyHistory(std::uint64_t behind, std::span<T> out) const {
        const std::uint64_t read = m_read.load(std::memory_order_acquire);
        const std::uint64_t end = read - std::min(behind, read - m_start);
        const std::uint64_t kept = m_history - std::min<std::uint64_t>(behind, m_history);
        const auto there =
            static_cast<std::size_t>(std::min<std::uint64_t>({out.size(), kept, end - m_start}));
        auto to = std::fill_n(out.begin(), out.size() - there, T{});
        for (const auto& run : runs(end - there, there))
            to = std::copy(run.begin(), run.end(), to);
    }

private:
    std::array<std::span<const T>, 2> runs(std::uint64_t from, std::size_t count) const {
        const std::size_t place = from & m_mask;
        const std::size_t first = std::min(count, m_mask + 1 - place);
        return {std::span<const T>(m_elements.get() + place, first),
                std::span<const T>(m_elements.get(), count - first)};
    }

    const std::size_t m_capacity;
    const std::size_t m_history;
    const std::size_t m_mask;
    const std::unique_ptr<T[]> m_elements;
    std::atomic<std::uint64_t> m_written{0}; ///< Number of elements written so far.
    std::atomic<std::uint64_t> m_read{0};
    std::uint64_t m_start = 0; ///< First element that can be read again. Changed with both threads at rest.
    static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace bass
