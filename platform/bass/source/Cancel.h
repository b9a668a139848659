#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace bass {

/// Cancels blocking calls of a source.
///
/// Threads: any. After a `cancel` the source's worker calls `clear` before it checks for commands.
class Cancel {
public:
    /// Cancels the call that blocks now, or the next one.
    void cancel() noexcept { change(State::none, State::once); }
    /// Cancels this and all later calls, because the source is released.
    void close() noexcept {
        change(State::none, State::forever);
        change(State::once, State::forever);
    }
    /// Revokes a `cancel`, not a `close`.
    void clear() noexcept { change(State::once, State::none); }
    [[nodiscard]] bool requested() const noexcept { return m_state != State::none; }
    [[nodiscard]] bool closed() const noexcept { return m_state == State::forever; }

    /// Waits for `limit`; returns true at once when cancelled.
    [[nodiscard]] bool waitFor(std::chrono::steady_clock::duration limit) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, limit, [this] { return requested(); });
    }

private:
    enum class State { none, once, forever };

    void change(State from, State to) noexcept {
        const std::lock_guard lock(m_mutex); // else a wait that is about to begin would miss the notification
        m_state.compare_exchange_strong(from, to);
        m_changed.notify_all();
    }

    std::atomic<State> m_state{State::none};
    std::mutex m_mutex; ///< never held while anything blocks
    std::condition_variable m_changed;
};

} // namespace bass
