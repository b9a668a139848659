#include "platform/bass/sharing/ListenerServer.h"

#include "platform/bass/sharing/ListenerDaemon.h"
#include "platform/bass/sharing/listenOn.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <utility>

namespace bass {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Two pages at once cost the kernel little more than one. Well within the burst that listeners have in hand.
constexpr milliseconds handOutEvery{400};

} // namespace

std::unique_ptr<ListenerServer> ListenerServer::open(std::uint16_t port, PageQueue& pages) {
    FileDescriptor socket = listenOn(port);
    if (!socket) return nullptr;
    const std::uint16_t bound = portOf(socket);
    auto daemon = ListenerDaemon::start(std::move(socket), pages);
    if (!daemon) return nullptr;
    return std::unique_ptr<ListenerServer>(new ListenerServer(bound, std::move(daemon)));
}

ListenerServer::ListenerServer(std::uint16_t port, std::unique_ptr<ListenerDaemon> daemon)
    : m_port(port),
      m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_daemon(std::move(daemon)),
      m_thread([this](const std::stop_token& stop) { run(stop); }) {}

ListenerServer::~ListenerServer() {
    m_thread.request_stop();
    wake();
    m_thread.join();
}

void ListenerServer::wake() {
    eventfd_write(m_wake.get(), 1);
}

void ListenerServer::run(const std::stop_token& stop) {
    pthread_setname_np(pthread_self(), "tul-listeners");
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE); // a listener that has left is an error of the send
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    bool pagesWait = false;
    auto next = Clock::now();
    while (!stop.stop_requested()) {
        const auto most =
            pagesWait ? std::chrono::ceil<milliseconds>(next - Clock::now()) : milliseconds::max();
        const auto timeout =
            std::clamp<milliseconds>(most, milliseconds(0), milliseconds(m_daemon->timeoutMs()));
        std::array<pollfd, 2> waiting{{{m_daemon->descriptor(), POLLIN, 0}, {m_wake.get(), POLLIN, 0}}};
        poll(waiting.data(), waiting.size(), static_cast<int>(timeout.count()));
        eventfd_t count = 0;
        if (waiting[1].revents != 0 && eventfd_read(m_wake.get(), &count) == 0) pagesWait = true;
        if (pagesWait && Clock::now() >= next) {
            pagesWait = !m_daemon->handOut();
            next = Clock::now() + handOutEvery;
        }
        m_daemon->turn();
        m_listenerCount = m_daemon->listenerCount();
    }
    m_daemon.reset();
}

} // namespace bass
