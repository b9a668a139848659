#pragma once

#include "platform/bass/sharing/FileDescriptor.h"
#include "platform/bass/sharing/PageQueue.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <thread>

namespace bass {

class ListenerDaemon;

/// Serves a stream of pages over HTTP, at "/", on all local addresses. Each listener gets the header pages,
/// the burst, and what comes.
///
/// Threads: the public calls from any. The thread "tul-listeners" serves all listeners.
class ListenerServer {
public:
    /// `port` 0 takes one that is free. Null when the port can't be had. `pages` must outlive the server.
    static std::unique_ptr<ListenerServer> open(std::uint16_t port, PageQueue& pages);
    /// Drops the listeners.
    ~ListenerServer();
    ListenerServer(const ListenerServer&) = delete;
    ListenerServer& operator=(const ListenerServer&) = delete;

    std::uint16_t port() const { return m_port; }
    /// How many are being sent the stream.
    unsigned listenerCount() const { return m_listenerCount.load(); }
    /// There are new pages, or the stream has ended.
    void wake();

private:
    ListenerServer(std::uint16_t port, std::unique_ptr<ListenerDaemon> daemon);
    void run(const std::stop_token& stop);

    const std::uint16_t m_port;
    std::atomic<unsigned> m_listenerCount{0};
    FileDescriptor m_wake;
    std::unique_ptr<ListenerDaemon> m_daemon; ///< The serving thread's.
    std::jthread m_thread;                    ///< Last: it uses all above.
};

} // namespace bass
