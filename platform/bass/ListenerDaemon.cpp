#include "platform/bass/ListenerDaemon.h"

#include <microhttpd.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

namespace bass {

namespace {

constexpr std::size_t mostHeadBytes = 8192;
/// A request's head, and our answer's.
constexpr std::size_t connectionMemory = 12288;
constexpr auto mostHeadTime = std::chrono::seconds(15);
constexpr auto lookEvery = std::chrono::seconds(1);
/// An encoder's usual page is a little more than 4096 bytes.
constexpr std::size_t blockBytes = 4608;
/// Descriptors that listeners leave to the rest of the player.
constexpr unsigned reservedDescriptors = 64;
/// Connections past the most listeners, so that they can be told so.
constexpr unsigned refusedAtOnce = 16;

constexpr char streamType[] = "audio/ogg";
constexpr char streamName[] = "Tulplayer";

struct ResponseDeleter {
    void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
using ResponsePtr = std::unique_ptr<MHD_Response, ResponseDeleter>;

unsigned mostDescriptors() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return 1024;
    return static_cast<unsigned>(std::min<rlim_t>(limit.rlim_cur, std::numeric_limits<int>::max()));
}

void addHeader(const ResponsePtr& response, const char* name, const std::string& value) {
    MHD_add_response_header(response.get(), name, value.c_str());
}

void addCommonHeaders(const ResponsePtr& response) {
    addHeader(response, MHD_HTTP_HEADER_SERVER, "Tulplayer");
    addHeader(response, MHD_HTTP_HEADER_CONNECTION, "close");
    addHeader(response, MHD_HTTP_HEADER_CACHE_CONTROL, "no-cache, no-store");
}

int refuse(MHD_Connection* handle, unsigned status) {
    const ResponsePtr response(MHD_create_response_from_buffer(0, nullptr, MHD_RESPMEM_PERSISTENT));
    if (!response) return MHD_NO;
    addCommonHeaders(response);
    if (status == MHD_HTTP_METHOD_NOT_ALLOWED) addHeader(response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
    return MHD_queue_response(handle, status, response.get());
}

std::size_t headBytes(MHD_Connection* handle) {
    const auto* info = MHD_get_connection_info(handle, MHD_CONNECTION_INFO_REQUEST_HEADER_SIZE);
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
    static ssize_t fill(void* context, std::uint64_t /*position*/, char* to, size_t most) {
        auto* stream = static_cast<Stream*>(context);
        const std::ptrdiff_t bytes = stream->daemon.fill(stream->connection, to, most);
        return bytes < 0 ? MHD_CONTENT_READER_END_OF_STREAM : bytes;
    }
    static void release(void* context) {
        const std::unique_ptr<Stream> stream(static_cast<Stream*>(context));
    }

    /// What a response carries to `fill`.
    struct Stream {
        ListenerDaemon& daemon;
        Connection& connection;
    };
};

std::unique_ptr<ListenerDaemon> ListenerDaemon::start(FileDescriptor socket, PageQueue& pages) {
    std::unique_ptr<ListenerDaemon> made(new ListenerDaemon(pages));
    const unsigned descriptors = mostDescriptors();
    made->m_mostConnections =
        descriptors > 2 * reservedDescriptors ? descriptors - reservedDescriptors : descriptors / 2;
    made->m_daemon = MHD_start_daemon(
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
        if (connection.waits) MHD_resume_connection(handle);
    MHD_stop_daemon(m_daemon);
}

int ListenerDaemon::descriptor() const {
    const auto* info = MHD_get_daemon_info(m_daemon, MHD_DAEMON_INFO_EPOLL_FD);
    return info ? info->epoll_fd : -1;
}

int ListenerDaemon::timeoutMs() const {
    MHD_UNSIGNED_LONG_LONG wanted = 0;
    const auto most = std::chrono::milliseconds(lookEvery).count();
    if (MHD_get_timeout(m_daemon, &wanted) != MHD_YES) return static_cast<int>(most);
    return static_cast<int>(std::min<MHD_UNSIGNED_LONG_LONG>(wanted, static_cast<unsigned>(most)));
}

void ListenerDaemon::turn() {
    if (const auto now = Clock::now(); now - m_lastLook >= lookEvery) {
        m_lastLook = now;
        dropSilentOnes();
    }
    MHD_run(m_daemon);
}

void ListenerDaemon::pagesCame() {
    for (auto& [handle, connection] : m_connections) {
        if (connection.waits) {
            connection.waits = false;
            MHD_resume_connection(handle);
        } else if (m_pages.isTooFarBehind(connection.place)) {
            shutdown(connection.socket, SHUT_RDWR); // closed when the daemon finds that nothing can be sent
        }
    }
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
    if (const auto* info = MHD_get_connection_info(handle, MHD_CONNECTION_INFO_CONNECTION_FD))
        connection.socket = info->connect_fd;
    m_connections.emplace(handle, connection);
}

void ListenerDaemon::closed(MHD_Connection* handle) {
    m_connections.erase(handle);
}

int ListenerDaemon::answer(MHD_Connection* handle, const Request& request) {
    const auto found = m_connections.find(handle);
    if (found == m_connections.end()) return MHD_NO;
    Connection& connection = found->second;
    connection.asked = true;

    const std::string_view method = request.method;
    if (headBytes(handle) > mostHeadBytes) return refuse(handle, MHD_HTTP_REQUEST_HEADER_FIELDS_TOO_LARGE);
    if (method != MHD_HTTP_METHOD_GET && method != MHD_HTTP_METHOD_HEAD)
        return refuse(handle, MHD_HTTP_METHOD_NOT_ALLOWED);
    if (request.path != std::string_view("/")) return refuse(handle, MHD_HTTP_NOT_FOUND);
    if (m_pages.hasEnded() || m_connections.size() > m_mostConnections)
        return refuse(handle, MHD_HTTP_SERVICE_UNAVAILABLE);
    return answerWithStream(connection);
}

int ListenerDaemon::answerWithStream(Connection& connection) {
    MHD_set_connection_option(connection.handle, MHD_CONNECTION_OPTION_TIMEOUT, 0U);
    auto stream = std::make_unique<Callbacks::Stream>(Callbacks::Stream{*this, connection});
    const ResponsePtr response(MHD_create_response_from_callback(
        MHD_SIZE_UNKNOWN, blockBytes, &Callbacks::fill, stream.get(), &Callbacks::release));
    if (!response) return MHD_NO;
    static_cast<void>(stream.release()); // the response's
    // A body that ends with the connection, as every player understands it, in place of chunks.
    MHD_set_response_options(response.get(), MHD_RF_HTTP_1_0_COMPATIBLE_STRICT, MHD_RO_END);
    addCommonHeaders(response);
    addHeader(response, MHD_HTTP_HEADER_CONTENT_TYPE, streamType);
    addHeader(response, MHD_HTTP_HEADER_PRAGMA, "no-cache");
    addHeader(response, "icy-name", streamName);
    if (const int bits = m_pages.bitsPerSecond(); bits > 0)
        addHeader(response, "icy-br", std::to_string(bits / 1000));
    return MHD_queue_response(connection.handle, MHD_HTTP_OK, response.get());
}

std::ptrdiff_t ListenerDaemon::fill(Connection& connection, char* to, std::size_t most) {
    if (!connection.page) {
        const PageQueue::Reading reading = m_pages.read(connection.place);
        if (reading.leave) return -1;
        if (!reading.page) {
            connection.waits = true;
            MHD_suspend_connection(connection.handle);
            return 0;
        }
        connection.page = reading.page;
        connection.sent = 0;
    }
    const std::size_t count = std::min(most, connection.page->size() - connection.sent);
    std::copy_n(reinterpret_cast<const char*>(connection.page->data()) + connection.sent, count, to);
    connection.sent += count;
    if (connection.sent == connection.page->size()) connection.page.reset();
    return static_cast<std::ptrdiff_t>(count);
}

} // namespace bass
