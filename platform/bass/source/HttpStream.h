#pragma once

#include "platform/bass/source/ByteSource.h"
#include "platform/bass/source/NetworkLimits.h"
#include "platform/bass/source/ProtocolLog.h"

#include <chrono>
#include <string>

namespace bass {

/// The bytes behind an http or https address, without the ICY metadata between them, which are kept.
///
/// Redirects lead to http and https only. A finite file whose connection drops is resumed where it broke off;
/// a live stream (a server that sends ICY headers and no length) ends then, and may be connected anew.
///
/// A cancelled read of a finite file is continued by a request for the rest. Others cannot be continued: once
/// they are opened, only `close` ends a read of theirs.
class HttpStream final : public ByteSource {
public:
    using Clock = std::chrono::steady_clock;

    HttpStream(std::string url, const NetworkLimits& limits, std::shared_ptr<Cancel> cancel)
        : ByteSource(std::move(cancel)), m_url(std::move(url)), m_limits(limits) {}

    /// From here to `endOpening` everything together is bounded by the limit for opening.
    void beginOpening() { m_openedBy = Clock::now() + m_limits.opening; }
    void endOpening() { m_openedBy = Clock::time_point::max(); }
    /// Connects from the byte `offset` on.
    [[nodiscard]] bool connect(std::int64_t offset);
    void disconnect() { m_connection.reset(); }
    [[nodiscard]] bool isConnected() const { return m_connection != nullptr; }
    [[nodiscard]] bool isLive() const { return m_live; }
    /// What the server answered last.
    [[nodiscard]] int httpStatus() const { return m_log.httpStatus; }
    /// What the server says of the stream: the fields of its answer, and the packet before the byte read
    /// last. A packet comes first in what a read brings, never within it.
    [[nodiscard]] const std::string& icyHeaders() const { return m_icyHeaders; }
    [[nodiscard]] const std::string& icyMetadata() const { return m_icyMetadata; }

    [[nodiscard]] int read(std::span<std::uint8_t> out) override;
    [[nodiscard]] std::int64_t seek(std::int64_t offset) override;
    [[nodiscard]] std::int64_t size() const override { return m_size; }
    [[nodiscard]] bool seekable() const override { return m_seekable; }
    [[nodiscard]] bool interrupted() const override;
    [[nodiscard]] Failure failure() const override { return m_failure; }

private:
    static int mustStop(void* self);
    void takeMetadata();
    void waitAtMost(Clock::duration limit);
    [[nodiscard]] bool isOpening() const { return m_openedBy != Clock::time_point::max(); }
    [[nodiscard]] int resume();
    [[nodiscard]] bool isRefusedForGood() const;
    [[nodiscard]] Failure failureOf(int error) const;

    std::string m_url;
    NetworkLimits m_limits;
    Clock::time_point m_openedBy = Clock::time_point::max();
    Clock::time_point m_deadline; ///< of the call into FFmpeg that is under way
    bool m_timedOut = false;      ///< that call reached it
    ProtocolLog m_log;            ///< of the last connection
    OpenedAvioPtr m_connection;
    std::int64_t m_offset = 0; ///< of the next byte
    std::int64_t m_size = -1;
    bool m_seekable = false;
    bool m_live = false;
    bool m_ignoresRanges = false;
    std::string m_icyHeaders;
    std::string m_icyMetadata;
    Clock::time_point m_lastByte; ///< when bytes came last
    Clock::duration m_pause{0};   ///< before the next try; none after bytes have come
    Failure m_failure = Failure::none;
};

} // namespace bass
