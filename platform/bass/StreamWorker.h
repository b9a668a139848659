#pragma once

#include "platform/bass/Channel.h"

#include <array>
#include <memory>
#include <optional>

namespace bass {

/// Opens, reads and seeks the source of one stream, and fills its ring.
///
/// Threads: runs on its own thread, "tul-stream", which exits when the stream is released. The thread shares
/// ownership of the stream and is never joined, because a name look-up or a read can block without limit.
class StreamWorker {
public:
    using Lock = Engine::Lock;

    static void start(const Lock& lock, const std::shared_ptr<Channel>& channel);

private:
    static constexpr std::size_t chunkFrames = 2048;

    explicit StreamWorker(std::shared_ptr<Channel> channel) : m_channel(std::move(channel)) {}
    void run();
    [[nodiscard]] bool open();
    void work();
    void seek(Lock& lock);
    void read(Lock& lock);

    std::shared_ptr<Channel> m_channel;
    std::unique_ptr<Source> m_source;
    std::array<Frame, chunkFrames> m_chunk{};
    std::optional<ReadResult> m_unwritten; ///< The frames in m_chunk that are not in the ring yet.
};

} // namespace bass
