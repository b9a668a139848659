#pragma once

#include "platform/bass/source/ByteSource.h"

#include <chrono>
#include <string>

namespace bass {

/// The bytes behind an http or https address, without the ICY metadata between them.
///
/// Redirects lead to http and https only. A finite file whose connection drops is resumed where it broke off;
/// a live stream (a server that sends ICY headers and no length) ends then, and may be connected anew.
///
/// Threads: those of ByteSource; the constructor may run on another.
class HttpStream final : public ByteSource {
public:
    using Clock = std::chrono::steady_clock;

    /// Until `openedBy` every wait is bounded by it and nothing is tried twice; `endOpening` lifts that.
    HttpStream(std::string url, Clock::time_point openedBy) : m_url(std::move(url)), m_openedBy(openedBy) {}

    /// Connects, 5 s at most, from the byte `offset` on.
    [[nodiscard]] bool connect(std::int64_t offset);
    void endOpening() { m_openedBy = Clock::time_point::max(); }
    [[nodiscard]] bool isConnected() const { return m_connection != nullptr; }
    [[nodiscard]] bool isLive() const { return m_live; }

    [[nodiscard]] int read(std::span<std::uint8_t> out) override;
    [[nodiscard]] std::int64_t seek(std::int64_t offset) override;
    [[nodiscard]] std::int64_t size() const override { return m_size; }
    [[nodiscard]] bool seekable() const override { return m_seekable; }

private:
    static int mustStop(void* self);
    void waitAtMost(Clock::duration limit);
    [[nodiscard]] bool resume();

    std::string m_url;
    Clock::time_point m_openedBy;
    Clock::time_point m_deadline; ///< of the call into FFmpeg that is under way
    OpenedAvioPtr m_connection;
    std::int64_t m_offset = 0; ///< of the next byte
    std::int64_t m_size = -1;
    bool m_seekable = false;
    Clock::time_point m_lastByte; ///< when bytes came last
    Clock::duration m_pause{0};   ///< before the next try; none after bytes have come
    bool m_live = false;
};

} // namespace bass
