#pragma once

#include "platform/bass/sharing/EncoderProcess.h"
#include "platform/bass/sharing/ListenerServer.h"
#include "platform/bass/sharing/PageQueue.h"
#include "platform/bass/sharing/SampleFeed.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace bass {

/// One encoder program, what it hears, and who hears it.
///
/// Threads: the public calls from any. The thread "tul-encoder" alone talks with the program.
class Encoder {
public:
    Encoder(EncoderProcess process, std::uint32_t channel);
    /// Drops the listeners and ends the program.
    ~Encoder();
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    /// Hears this channel in the place of the one before. False, and none is heard, when it does not exist.
    bool follow(std::uint32_t channel);
    /// Serves the stream on a port of all local addresses, 0 for a free one. Answers the port; 0 on failure.
    std::uint16_t serve(std::uint16_t port, std::size_t burst);
    /// Sets the stream name (icy-name) that is sent to listeners which connect from now on. Any text.
    void setName(std::string_view name);
    unsigned listenerCount() const;
    bool isActive() const { return !m_ended.load(); }

private:
    void run(const std::stop_token& stop);
    bool writeSamples();
    bool readPages(class OggPageReader& reader);
    void wakeListeners();

    EncoderProcess m_process;
    FileDescriptor m_wake;
    SampleFeed m_feed;
    PageQueue m_pages;
    std::atomic<bool> m_ended{false};

    std::vector<std::int16_t> m_samples; ///< The encoder thread's, as the next: not yet written.
    std::size_t m_written = 0;           ///< Bytes of m_samples.

    mutable std::mutex m_mutex;
    std::unique_ptr<ListenerServer> m_server; ///< Made once; guarded by m_mutex.
    std::jthread m_thread;                    ///< Last: it uses all above.
};

} // namespace bass
