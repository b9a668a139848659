#include "platform/bass/sharing/ListenerDaemon.h"

#include "platform/bass/sharing/HttpLibrary.h"

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>

namespace bass {

namespace {

constexpr std::size_t mostHeadBytes = 8192;
/// A request's head and what is noted of it.
constexpr std::size_t connectionMemory = 10240;
constexpr auto mostHeadTime = std::chrono::seconds(15);
constexpr auto lookEvery = std::chrono::seconds(1);
/// Descriptors that listeners leave to the rest of the player.
constexpr unsigned reservedDescriptors = 64;
/// Connections past the most listeners, so that they can be told so.
constexpr unsigned refusedAtOnce = 16;

constexpr char streamType[] = "audio/ogg";
constexpr char serverName[] = "Tulplayer";
constexpr char cacheControl[] = "no-cache, no-store";

/// Only where a daemon was started, which needs it.
const HttpLibrary& http() {
    return *HttpLibrary::load();
}

struct ResponseDeleter {
    void operator()(MHD_Response* response) const { http().destroyResponse(response); }
};
using ResponsePtr = std::unique_ptr<MHD_Response, ResponseDeleter>;

unsigned mostDescriptors() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return 1024;
    return static_cast<unsigned>(std::min<rlim_t>(limit.rlim_cur, std::numeric_limits<int>::max()));
}

void addHeader(const ResponsePtr& response, const char* name, const std::string& value) {
    http().addResponseHeader(response.get(), name, value.c_str());
}

void addCommonHeaders(const ResponsePtr& response) {
    addHeader(response, MHD_HTTP_HEADER_SERVER, serverName);
    addHeader(response, MHD_HTTP_HEADER_CONNECTION, "close");
    addHeader(response, MHD_HTTP_HEADER_CACHE_CONTROL, cacheControl);
}

int refuse(MHD_Connection* handle, unsigned status) {
    const ResponsePtr response(http().createResponse(0, nullptr, MHD_RESPMEM_PERSISTENT));
    if (!response) return MHD_NO;
    addCommonHeaders(response);
    if (status == MHD_HTTP_METHOD_NOT_ALLOWED) addHeader(response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
    return http().queueResponse(handle, status, response.get());
}

/// Now, in English whatever the locale: RFC 9110, 5.6.7.
std::string httpDate() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::ostringstream date;
    date.imbue(std::locale::classic());
    date << std::put_time(&utc, "%a, %d %b %Y %H:%M:%S GMT");
    return date.str();
}

std::size_t headBytes(MHD_Connection* handle) {
    const auto* info = http().connectionInfo(handle, MHD_CONNECTION_INFO_REQUEST_HEADER_SIZE);
    return info ? info->header_size : 0;
}

} // namespace

struct ListenerDaemon::Callbacks {
    static void notify(void* self, MHD_Connection* handle, void** /*context*/,
                       MHD_ConnectionNotificationCode code) {
        auto* daemon = static_cast<ListenerDaemon*>(self);
        code == MHD_CONNECTION_NOTIFY_STARTED ? daemon->opened(handle) : daemon->closed(handle);
    }
    static MHD_Result answer(void* self, MHD_Connection* handle, const char* path, const char* method,
                             const char* /*version*/, const char* /*upload*/, size_t* /*uploadSize*/,
                             void** /*context*/) {
        return static_cast<MHD_Result>(static_cast<ListenerDaemon*>(self)->answer(handle, {path, method}));
    }
};

std::unique_ptr<ListenerDaemon> ListenerDaemon::start(FileDescriptor socket, PageQueue& pages) {
    if (!HttpLibrary::load()) return nullptr;
    std::unique_ptr<ListenerDaemon> made(new ListenerDaemon(pages));
    const unsigned descriptors = mostDescriptors();
    made->m_mostConnections =
        descriptors > 2 * reservedDescriptors ? descriptors - reservedDescriptors : descriptors / 2;
    made->m_daemon = http().startDaemon(
        MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr, &Callbacks::answer, made.get(),
        MHD_OPTION_LISTEN_SOCKET, socket.get(), MHD_OPTION_NOTIFY_CONNECTION, &Callbacks::notify, made.get(),
        MHD_OPTION_CONNECTION_LIMIT, made->m_mostConnections + refusedAtOnce,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, connectionMemory, MHD_OPTION_CONNECTION_TIMEOUT,
        static_cast<unsigned>(mostHeadTime / std::chrono::seconds(1)), MHD_OPTION_SIGPIPE_HANDLED_BY_APP, 1,
        MHD_OPTION_END);
    if (!made->m_daemon) return nullptr;
    static_cast<void>(socket.release()); // closed by the daemon
    return made;
}

ListenerDaemon::~ListenerDaemon() {
    if (!m_daemon) return;
    for (auto& [handle, connection] : m_connections)
        if (connection.listens) close(connection);
    http().stopDaemon(m_daemon);
}

int ListenerDaemon::descriptor() const {
    const auto* info = http().daemonInfo(m_daemon, MHD_DAEMON_INFO_EPOLL_FD);
    return info ? info->epoll_fd : -1;
}

int ListenerDaemon::timeoutMs() const {
    MHD_UNSIGNED_LONG_LONG wanted = 0;
    const auto most = std::chrono::milliseconds(lookEvery).count();
    if (http().getTimeout(m_daemon, &wanted) != MHD_YES) return static_cast<int>(most);
    return static_cast<int>(std::min<MHD_UNSIGNED_LONG_LONG>(wanted, static_cast<unsigned>(most)));
}

void ListenerDaemon::turn() {
    if (const auto now = Clock::now(); now - m_lastLook >= lookEvery) {
        m_lastLook = now;
        dropSilentOnes();
    }
    http().run(m_daemon);
}

bool ListenerDaemon::handOut() {
    bool all = true;
    for (auto& [handle, connection] : m_connections)
        if (connection.listens && !sendPages(connection)) all = false;
    return all;
}

void ListenerDaemon::dropSilentOnes() {
    const auto now = Clock::now();
    for (const auto& [handle, connection] : m_connections)
        if (!connection.asked && now - connection.since > mostHeadTime)
            shutdown(connection.socket, SHUT_RDWR);
}

void ListenerDaemon::opened(MHD_Connection* handle) {
    Connection connection;
    connection.handle = handle;
    connection.since = Clock::now();
    if (const auto* info = http().connectionInfo(handle, MHD_CONNECTION_INFO_CONNECTION_FD))
        connection.socket = info->connect_fd;
    m_connections.emplace(handle, connection);
}

void ListenerDaemon::closed(MHD_Connection* handle) {
    m_connections.erase(handle);
}

int ListenerDaemon::answer(MHD_Connection* handle, const Request& request) {
    const auto found = m_connections.find(handle);
    if (found == m_connections.end() || found->second.leaves) return MHD_NO; // which closes it
    Connection& connection = found->second;
    connection.asked = true;

    const std::string_view method = request.method;
    if (headBytes(handle) > mostHeadBytes) return refuse(handle, MHD_HTTP_REQUEST_HEADER_FIELDS_TOO_LARGE);
    if (method != MHD_HTTP_METHOD_GET && method != MHD_HTTP_METHOD_HEAD)
        return refuse(handle, MHD_HTTP_METHOD_NOT_ALLOWED);
    if (request.path != std::string_view("/")) return refuse(handle, MHD_HTTP_NOT_FOUND);
    if (m_pages.hasEnded() || m_connections.size() > m_mostConnections)
        return refuse(handle, MHD_HTTP_SERVICE_UNAVAILABLE);

    sendHead(connection);
    if (connection.leaves || method == MHD_HTTP_METHOD_HEAD) return MHD_NO;
    http().suspendConnection(handle);
    connection.listens = true;
    ++m_listenerCount;
    sendPages(connection);
    return MHD_YES;
}

/// A body that ends with the connection, as every player understands it.
void ListenerDaemon::sendHead(Connection& connection) const {
    std::string head = "HTTP/1.1 200 OK\r\n";
    const auto add = [&](const char* name, const std::string& value) {
        head.append(name).append(": ").append(value).append("\r\n");
    };
    add(MHD_HTTP_HEADER_SERVER, serverName);
    add(MHD_HTTP_HEADER_DATE, httpDate());
    add(MHD_HTTP_HEADER_CONNECTION, "close");
    add(MHD_HTTP_HEADER_CONTENT_TYPE, streamType);
    add(MHD_HTTP_HEADER_CACHE_CONTROL, cacheControl);
    add(MHD_HTTP_HEADER_PRAGMA, "no-cache");
    add("icy-name", m_pages.name());
    if (const int bits = m_pages.bitsPerSecond(); bits > 0) add("icy-br", std::to_string(bits / 1000));
    head += "\r\n";
    // A new connection's socket has room for it.
    const ssize_t sent = ::send(connection.socket, head.data(), head.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    connection.leaves = sent != static_cast<ssize_t>(head.size());
}

/// False when the socket takes no more for now, as below.
bool ListenerDaemon::sendPages(Connection& connection) {
    while (!connection.leaves) {
        const PageQueue::Reading reading = m_pages.read(connection.place);
        if (reading.leave) break;
        if (reading.count == 0) return true;
        if (!send(connection, reading)) return false;
    }
    close(connection);
    return true;
}

bool ListenerDaemon::send(Connection& connection, const PageQueue::Reading& reading) {
    std::array<iovec, PageQueue::Reading::most> parts{};
    std::size_t skipped = connection.sent;
    for (std::size_t i = 0; i < reading.count; ++i) {
        const PageQueue::Page& page = *reading.pages[i];
        // The bytes are only read.
        parts[i] = {const_cast<std::byte*>(page.data()) + skipped, page.size() - skipped};
        skipped = 0;
    }
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = reading.count;
    const ssize_t taken = sendmsg(connection.socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (taken < 0) {
        connection.leaves = errno != EAGAIN && errno != EINTR;
        return connection.leaves;
    }
    auto rest = static_cast<std::size_t>(taken);
    for (std::size_t i = 0; i < reading.count; ++i) {
        if (rest < parts[i].iov_len) {
            connection.sent = rest + (i == 0 ? connection.sent : 0);
            return false;
        }
        rest -= parts[i].iov_len;
        connection.place.moveOn();
        connection.sent = 0;
    }
    return true;
}

/// The daemon asks for an answer again, gets none, and closes the connection. A request that promised a body
/// is not waited for.
void ListenerDaemon::close(Connection& connection) {
    connection.listens = false;
    --m_listenerCount;
    connection.leaves = true;
    shutdown(connection.socket, SHUT_RDWR);
    http().resumeConnection(connection.handle);
}

} // namespace bass
