#pragma once

#include "platform/bass/source/ByteSource.h"
#include "platform/bass/source/NetworkLimits.h"
#include "platform/bass/source/ProtocolLog.h"

#include <chrono>
#include <string>

namespace bass {

/// The bytes of an http or https address. ICY metadata is separated from them.
///
/// Follows redirects to http and https only. After a lost connection a finite file is resumed at the same
/// offset. A live stream (ICY headers and no length) ends; the caller may connect again.
///
/// A cancelled read of a finite file continues with a request for the rest. Live streams cannot be continued:
/// once opened, only Cancel::close interrupts their reads.
class HttpStream final : public ByteSource {
public:
    using Clock = std::chrono::steady_clock;

    HttpStream(std::string url, const NetworkLimits& limits, std::shared_ptr<Cancel> cancel)
        : ByteSource(std::move(cancel)), m_url(std::move(url)), m_limits(limits) {}

    /// Starts NetworkLimits::opening, which applies to all calls until `endOpening`.
    void beginOpening() { m_openedBy = Clock::now() + m_limits.opening; }
    void endOpening() { m_openedBy = Clock::time_point::max(); }
    /// Connects, and requests the bytes from `offset` on.
    [[nodiscard]] bool connect(std::int64_t offset);
    void disconnect() { m_connection.reset(); }
    [[nodiscard]] bool isConnected() const { return m_connection != nullptr; }
    [[nodiscard]] bool isLive() const { return m_live; }
    /// The status code of the last response.
    [[nodiscard]] int httpStatus() const { return m_log.httpStatus; }
    /// The ICY headers of the response, and the last ICY metadata packet before the byte read last. A read
    /// never returns bytes from both sides of a packet.
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
    void setDeadline(Clock::duration limit);
    [[nodiscard]] bool isOpening() const { return m_openedBy != Clock::time_point::max(); }
    [[nodiscard]] int resume();
    [[nodiscard]] bool isRefusedForGood() const;
    [[nodiscard]] Failure failureOf(int error) const;

    std::string m_url;
    NetworkLimits m_limits;
    Clock::time_point m_openedBy = Clock::time_point::max();
    Clock::time_point m_deadline; ///< of the current call into FFmpeg
    bool m_timedOut = false;      ///< the current call has reached its deadline
    ProtocolLog m_log;            ///< of the last connection
    OpenedAvioPtr m_connection;
    std::int64_t m_offset = 0; ///< of the next byte
    std::int64_t m_size = -1;
    bool m_seekable = false;
    bool m_live = false;
    bool m_ignoresRanges = false;
    std::string m_icyHeaders;
    std::string m_icyMetadata;
    Clock::time_point m_lastByte; ///< when bytes were received last
    Clock::duration m_pause{0};   ///< before the next attempt; reset when bytes are received
    Failure m_failure = Failure::none;
};

} // namespace bass
