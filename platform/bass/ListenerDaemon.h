#pragma once

#include "platform/bass/FileDescriptor.h"
#include "platform/bass/PageQueue.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>

struct MHD_Connection;
struct MHD_Daemon;
struct MHD_Response;

namespace bass {

/// The HTTP side of a ListenerServer: its connections, and what they are answered. libmicrohttpd is known
/// here alone.
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
    /// Hands out new pages at the next turn, and drops who is too far behind.
    void pagesCame();

private:
    using Clock = std::chrono::steady_clock;

    struct Connection {
        MHD_Connection* handle = nullptr;
        int socket = -1;
        Clock::time_point since;
        bool asked = false; ///< Its request's head has come.
        bool waits = false; ///< Suspended until there are pages.
        PageQueue::Place place;
        std::shared_ptr<const PageQueue::Page> page; ///< Being sent, from `sent` on.
        std::size_t sent = 0;
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
    int answerWithStream(Connection& connection);
    /// Bytes for a listener; 0 for none yet, negative when the stream is over for it.
    std::ptrdiff_t fill(Connection& connection, char* to, std::size_t most);
    void dropSilentOnes();

    PageQueue& m_pages;
    MHD_Daemon* m_daemon = nullptr;
    /// What the process's descriptors allow, less what the player itself may need.
    unsigned m_mostConnections = 0;
    std::unordered_map<MHD_Connection*, Connection> m_connections;
    Clock::time_point m_lastLook = Clock::now();
};

} // namespace bass
