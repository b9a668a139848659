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
    HttpStream(std::string url, Clock::time_point openedBy) : url_(std::move(url)), openedBy_(openedBy) {}

    /// Connects, 5 s at most, from the byte `offset` on.
    [[nodiscard]] bool connect(std::int64_t offset);
    void endOpening() { openedBy_ = Clock::time_point::max(); }
    [[nodiscard]] bool isConnected() const { return connection_ != nullptr; }
    [[nodiscard]] bool isLive() const { return live_; }

    [[nodiscard]] int read(std::span<std::uint8_t> out) override;
    [[nodiscard]] std::int64_t seek(std::int64_t offset) override;
    [[nodiscard]] std::int64_t size() const override { return size_; }
    [[nodiscard]] bool seekable() const override { return seekable_; }

private:
    static int mustStop(void* self);
    void waitAtMost(Clock::duration limit);
    [[nodiscard]] bool resume();

    std::string url_;
    Clock::time_point openedBy_;
    Clock::time_point deadline_; ///< of the call into FFmpeg that is under way
    OpenedAvioPtr connection_;
    std::int64_t offset_ = 0; ///< of the next byte
    std::int64_t size_ = -1;
    bool seekable_ = false;
    Clock::time_point lastByte_; ///< when bytes came last
    Clock::duration pause_{0};   ///< before the next try; none after bytes have come
    bool live_ = false;
};

} // namespace bass
