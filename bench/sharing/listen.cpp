// listen PORT PATH COUNT SECONDS: connects COUNT listeners to a local Ogg stream. Prints how many stayed
// connected, how many had a gap (a missing or late page), the longest time without data, and the total bytes.
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <netinet/in.h>
#include <string>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
constexpr double bytesPerSecond = 20000;
/// What a player waits for before it plays.
constexpr std::size_t atStart = 10000;

double seconds(Clock::duration time) {
    return std::chrono::duration<double>(time).count();
}

struct Client {
    int socket = -1;
    bool open = true;
    bool gap = false;
    Clock::time_point first;
    Clock::time_point last;
    double longest = 0;
    std::size_t bytes = 0;
    std::string pending;
    bool inBody = false;
    long sequence = -1;

    void take(const char* data, std::size_t count, Clock::time_point now) {
        if (bytes == 0) last = now;
        if (bytes <= atStart) first = now;
        longest = std::max(longest, seconds(now - last));
        last = now;
        // Before this came, all that had come was played.
        if (seconds(now - first) * bytesPerSecond > static_cast<double>(bytes)) gap = true;
        bytes += count;
        pending.append(data, count);
        if (!inBody) {
            const auto end = pending.find("\r\n\r\n");
            if (end == std::string::npos) return;
            pending.erase(0, end + 4);
            inBody = true;
        }
        readPages();
    }

    void readPages() {
        std::size_t at = 0;
        while (at + 27 <= pending.size()) {
            const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(pending[at + i]); };
            std::size_t size = 27U + byte(26);
            if (at + size > pending.size()) break;
            for (std::size_t i = 0; i < byte(26); ++i)
                size += byte(27 + i);
            if (at + size > pending.size()) break;
            const long number = byte(18) + 256L * byte(19) + 65536L * byte(20);
            if (pending.compare(at, 4, "OggS") != 0) gap = true;
            // From the headers, pages 0 and 1, on to wherever the stream is.
            if (sequence > 1 && number != sequence + 1) gap = true;
            sequence = number;
            at += size;
        }
        pending.erase(0, at);
    }
};

class Listeners {
public:
    Listeners(const char* port, std::string path)
        : m_request("GET " + std::move(path) + " HTTP/1.1\r\nHost: localhost\r\n\r\n") {
        m_address.sin_family = AF_INET;
        m_address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(port)));
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }

    bool add() {
        Client client;
        client.socket = socket(AF_INET, SOCK_STREAM, 0);
        if (connect(client.socket, reinterpret_cast<sockaddr*>(&m_address), sizeof(m_address)) != 0)
            return false;
        if (send(client.socket, m_request.data(), m_request.size(), MSG_NOSIGNAL) < 0) return false;
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = m_clients.size();
        epoll_ctl(m_events, EPOLL_CTL_ADD, client.socket, &event);
        m_clients.push_back(std::move(client));
        return true;
    }

    void receive(Clock::time_point end) {
        std::array<epoll_event, 256> ready{};
        for (auto now = Clock::now(); now < end; now = Clock::now()) {
            const auto most = std::chrono::ceil<std::chrono::milliseconds>(end - now);
            const int found = epoll_wait(m_events, ready.data(), static_cast<int>(ready.size()),
                                         static_cast<int>(most.count()));
            for (int i = 0; i < found; ++i)
                read(m_clients[ready[static_cast<std::size_t>(i)].data.u64]);
        }
    }

    void report() const {
        int stayed = 0;
        int gaps = 0;
        double longest = 0;
        std::size_t bytes = 0;
        for (const Client& client : m_clients) {
            stayed += client.open && client.bytes > 0 ? 1 : 0;
            gaps += client.gap ? 1 : 0;
            longest = std::max(longest, client.longest);
            bytes += client.bytes;
        }
        std::printf("stayed %d gaps %d longest %.2f bytes %zu\n", stayed, gaps, longest, bytes);
    }

private:
    void read(Client& client) {
        const ssize_t got = recv(client.socket, m_buffer.data(), m_buffer.size(), MSG_DONTWAIT);
        if (got > 0) return client.take(m_buffer.data(), static_cast<std::size_t>(got), Clock::now());
        client.open = false;
        epoll_ctl(m_events, EPOLL_CTL_DEL, client.socket, nullptr);
    }

    std::string m_request;
    sockaddr_in m_address{};
    int m_events = epoll_create1(0);
    std::vector<Client> m_clients;
    std::array<char, 65536> m_buffer{};
};

} // namespace

int main(int count, char** arguments) {
    if (count != 5) return 1;
    Listeners listeners(arguments[1], arguments[2]);
    for (int i = 0; i < std::atoi(arguments[3]); ++i) {
        if (!listeners.add()) return 1;
        listeners.receive(Clock::now() +
                          std::chrono::milliseconds(5)); // a server may take a few at a time only
    }
    std::puts("connected");
    std::fflush(stdout);
    listeners.receive(Clock::now() + std::chrono::seconds(std::atoi(arguments[4])));
    listeners.report();
}
