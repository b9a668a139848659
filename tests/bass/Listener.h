#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

/// A TCP client that sends a request to a local port and collects the response.
class Listener {
public:
    enum class Reads { everything, nothing };

    explicit Listener(int port, const std::string& request = "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n",
                      Reads reads = Reads::everything);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::string received() const;
    /// The response's body so far.
    std::string body() const;
    bool isClosed() const { return m_closed.load(); }
    void send(const std::string& more) const;
    /// Starts reading, if the constructor did not.
    void read();

private:
    void collect();

    int m_socket;
    mutable std::mutex m_mutex;
    std::string m_received; ///< guarded by m_mutex
    std::atomic<bool> m_closed{false};
    std::thread m_thread;
};
