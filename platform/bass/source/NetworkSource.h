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
/// `mutex_`; `length_` and `seekable_` are set before the opening is reported, and never after.
class NetworkSource final : public Source {
public:
    /// Null when no sound could be had within 5 s.
    [[nodiscard]] static std::unique_ptr<NetworkSource> open(const std::string& url);
    ~NetworkSource() override;

    [[nodiscard]] ReadResult read(std::span<float> out) override;
    [[nodiscard]] bool seek(std::int64_t frame) override;
    [[nodiscard]] std::optional<std::int64_t> lengthFrames() const override { return length_; }
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

    std::shared_ptr<HttpStream> http_;
    std::unique_ptr<DecodedSource> source_; ///< the network thread's
    std::optional<std::int64_t> length_;
    bool seekable_ = false;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<bool> opened_;
    std::deque<float> ahead_;
    std::optional<std::int64_t> seekTarget_;
    ReadResult::Status status_ = ReadResult::Status::more; ///< after the last of `ahead_`

    std::thread thread_; ///< last: started when all else exists
};

} // namespace bass
