#pragma once

#include <atomic>

namespace bass {

/// Ends blocking calls of a source early.
///
/// Threads: any. The source's worker calls `clear` before it looks for the work that a `cancel` announced.
class Cancel {
public:
    /// Ends the call that blocks now, or the next one.
    void cancel() noexcept {
        State none = State::none;
        m_state.compare_exchange_strong(none, State::once);
    }
    /// Ends this and every later call: the source is not wanted any more.
    void close() noexcept { m_state = State::forever; }
    /// Takes a `cancel` back, not a `close`.
    void clear() noexcept {
        State once = State::once;
        m_state.compare_exchange_strong(once, State::none);
    }
    [[nodiscard]] bool requested() const noexcept { return m_state != State::none; }
    [[nodiscard]] bool closed() const noexcept { return m_state == State::forever; }

private:
    enum class State { none, once, forever };
    std::atomic<State> m_state{State::none};
};

} // namespace bass
