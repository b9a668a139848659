#pragma once

#include "platform/bass/sharing/FileDescriptor.h"
#include "platform/bass/sharing/PageQueue.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>

struct MHD_Connection;
struct MHD_Daemon;

namespace bass {

/// The HTTP side of a ListenerServer: its connections, and what they are answered. libmicrohttpd, known here
/// alone, takes the connections and their requests. A listener it then suspends: pages go to the socket from
/// where they are shared, with one call for all that a listener lacks and no buffer of its own.
///
/// Threads: one at a time.
class ListenerDaemon {
public:
    /// Null when it can't be started.
    static std::unique_ptr<ListenerDaemon> start(FileDescriptor socket, PageQueue& pages);
    ~ListenerDaemon();
    ListenerDaemon(const ListenerDaemon&) = delete;
    ListenerDaemon& operator=(const ListenerDaemon&) = delete;

    /// Becomes readable when `turn` has work.
    int descriptor() const;
    /// When `turn` has work at the latest.
    int timeoutMs() const;
    void turn();
    /// Sends every listener what it lacks, and drops who is too far behind or has left. False when a socket
    /// did not take all.
    [[nodiscard]] bool handOut();
    unsigned listenerCount() const { return m_listenerCount; }

private:
    using Clock = std::chrono::steady_clock;

    struct Connection {
        MHD_Connection* handle = nullptr;
        int socket = -1;
        Clock::time_point since;
        bool asked = false;   ///< Its request's head has come.
        bool listens = false; ///< Suspended, and sent pages to.
        bool leaves = false;  ///< To be closed.
        PageQueue::Place place;
        std::size_t sent = 0; ///< Bytes of the page at `place`.
    };
    struct Request {
        const char* path;
        const char* method;
    };
    /// What libmicrohttpd calls.
    struct Callbacks;

    explicit ListenerDaemon(PageQueue& pages) : m_pages(pages) {}

    void opened(MHD_Connection* handle);
    void closed(MHD_Connection* handle);
    int answer(MHD_Connection* handle, const Request& request);
    void sendHead(Connection& connection) const;
    bool sendPages(Connection& connection);
    bool send(Connection& connection, const PageQueue::Reading& reading);
    void close(Connection& connection);
    void dropSilentOnes();

    PageQueue& m_pages;
    MHD_Daemon* m_daemon = nullptr;
    /// What the process's descriptors allow, less what the player itself may need.
    unsigned m_mostConnections = 0;
    unsigned m_listenerCount = 0;
    std::unordered_map<MHD_Connection*, Connection> m_connections;
    Clock::time_point m_lastLook = Clock::now();
};

} // namespace bass
