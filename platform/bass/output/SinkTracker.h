#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace bass {

/// Tracks by the events of a sound server which sink plays a stream, and reports the removal of that sink.
///
/// Servers move a stream off a sink before or after they remove it, or end the stream with it, and the events
/// come in any of these orders. A stream that the user has moved away is no longer concerned.
class SinkTracker {
public:
    using Clock = std::chrono::steady_clock;

    void streamIsOn(std::uint32_t stream, std::uint32_t sink, Clock::time_point now) {
        m_stream = stream;
        if (m_sink != sink) leave(now);
        m_sink = sink;
    }
    void streamRemoved(std::uint32_t stream, Clock::time_point now) {
        if (m_stream != stream) return;
        m_stream.reset();
        leave(now);
    }
    /// Whether the stream played there, until just now.
    [[nodiscard]] bool sinkRemoved(std::uint32_t sink, Clock::time_point now) {
        const bool isLost = m_sink == sink || (m_former == sink && now - m_left < justNow);
        if (m_sink == sink) m_sink.reset();
        if (m_former == sink) m_former.reset();
        return isLost;
    }

private:
    static constexpr std::chrono::milliseconds justNow{500};

    void leave(Clock::time_point now) {
        if (m_sink) {
            m_former = m_sink;
            m_left = now;
        }
        m_sink.reset();
    }

    std::optional<std::uint32_t> m_stream;
    std::optional<std::uint32_t> m_sink;
    std::optional<std::uint32_t> m_former;
    Clock::time_point m_left;
};

} // namespace bass
