#pragma once

#include "platform/bass/Channel.h"

#include <array>
#include <memory>
#include <optional>

namespace bass {

/// Opens, reads and seeks the source of one stream, and fills the stream's ring.
///
/// Threads: one of its own, "tul-stream", which ends by itself when the stream is released. It keeps the
/// stream alive, and nothing joins it: it may be inside a name look-up or a read that nothing can end.
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
    std::optional<ReadResult> m_unwritten; ///< What m_chunk holds and the ring has not got yet.
};

} // namespace bass
