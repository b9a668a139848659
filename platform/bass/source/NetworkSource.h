#pragma once

#include "platform/bass/source/DecodedSource.h"
#include "platform/bass/source/HttpStream.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace bass {

/// An address, decoded ahead on a thread of its own so that a read never waits for the network.
///
/// A live stream goes on as one endless sound: when its connection drops, or one of its pieces (a link of a
/// chained Ogg stream) ends, it is connected and decoded anew.
///
/// Threads: `run` is the network thread's; the rest is Source's contract. What both touch is guarded by
/// `m_mutex`; `m_length` and `m_seekable` are set before the opening is reported, and never after.
class NetworkSource final : public Source {
public:
    /// Null when no sound could be had within 5 s.
    [[nodiscard]] static std::unique_ptr<NetworkSource> open(const std::string& url);
    ~NetworkSource() override;

    [[nodiscard]] ReadResult read(std::span<float> out) override;
    [[nodiscard]] bool seek(std::int64_t frame) override;
    [[nodiscard]] std::optional<std::int64_t> lengthFrames() const override { return m_length; }
    void interrupt() noexcept override;

private:
    using Lock = std::unique_lock<std::mutex>;

    explicit NetworkSource(const std::string& url);
    [[nodiscard]] bool waitUntilOpened();
    void run();
    [[nodiscard]] bool openDecoder();
    void decodeAhead();
    void reconnect();
    void store(Lock& lock, std::span<const float> samples, ReadResult::Status status);
    void applySeek(Lock& lock);

    std::shared_ptr<HttpStream> m_http;
    std::unique_ptr<DecodedSource> m_source; ///< the network thread's
    std::optional<std::int64_t> m_length;
    bool m_seekable = false;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<bool> m_opened;
    std::deque<float> m_ahead;
    std::optional<std::int64_t> m_seekTarget;
    ReadResult::Status m_status = ReadResult::Status::more; ///< after the last of `m_ahead`

    std::thread m_thread; ///< last: started when all else exists
};

} // namespace bass
