#include "platform/bass/source/HttpStream.h"

#include <algorithm>
#include <array>
#include <string_view>

extern "C" {
#include <libavutil/opt.h>
}

namespace bass {
namespace {

std::string textOption(AVIOContext& connection, const char* name) {
    std::uint8_t* value = nullptr;
    if (av_opt_get(&connection, name, AV_OPT_SEARCH_CHILDREN, &value) < 0 || !value) return {};
    std::string text(reinterpret_cast<const char*>(value));
    av_free(value);
    return text;
}

/// Limit of the ICY headers that are kept.
constexpr std::size_t maxHeaderBytes = 4096;

bool isHttp(std::string_view url) {
    return url.starts_with("http://") || url.starts_with("https://");
}

bool isHttpError(int error) {
    constexpr std::array errors = {AVERROR_HTTP_BAD_REQUEST, AVERROR_HTTP_UNAUTHORIZED,
                                   AVERROR_HTTP_FORBIDDEN,   AVERROR_HTTP_NOT_FOUND,
                                   AVERROR_HTTP_OTHER_4XX,   AVERROR_HTTP_SERVER_ERROR};
    return std::ranges::find(errors, error) != errors.end();
}

} // namespace

bool HttpStream::interrupted() const {
    return cancel()->closed() || (cancel()->requested() && (m_seekable || isOpening()));
}

int HttpStream::mustStop(void* self) {
    auto& stream = *static_cast<HttpStream*>(self);
    if (stream.interrupted() || stream.m_log.headerBytes > stream.m_limits.headerBytes) return 1;
    stream.m_timedOut = Clock::now() > stream.m_deadline;
    return stream.m_timedOut;
}

void HttpStream::setDeadline(Clock::duration limit) {
    m_deadline = std::min(m_openedBy, Clock::now() + limit);
    m_timedOut = false;
}

bool HttpStream::connect(std::int64_t offset) {
    m_connection.reset();
    m_log = {};
    m_failure = Failure::none;
    setDeadline(m_limits.connect);
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "http,https,tcp,tls,crypto,httpproxy", 0);
    av_dict_set(&options, "tls_verify", "1", 0); // FFmpeg's default is off
    av_dict_set(&options, "user_agent", "Tulplayer", 0);
    av_dict_set_int(&options, "offset", offset, 0);
    const AVIOInterruptCB callback = {mustStop, this};
    AVIOContext* connection = nullptr;
    const ProtocolLogScope scope(m_log);
    const int result = avio_open2(&connection, m_url.c_str(), AVIO_FLAG_READ, &callback, &options);
    const DictionaryPtr leftOver(options);
    if (result < 0) {
        m_failure = failureOf(result);
        m_ignoresRanges = result == AVERROR(EPERM); // FFmpeg's error for a response from another offset
        return false;
    }
    m_connection.reset(connection);
    if (const std::string location = textOption(*connection, "location"); !isHttp(location)) {
        m_connection.reset();
        m_failure = Failure::httpStatus;
        return false;
    }
    m_offset = offset;
    m_size = avio_size(connection);
    m_seekable = m_size >= 0 && (connection->seekable & AVIO_SEEKABLE_NORMAL);
    m_icyHeaders = textOption(*connection, "icy_metadata_headers").substr(0, maxHeaderBytes);
    m_live = m_size < 0 && !m_icyHeaders.empty();
    return true;
}

Failure HttpStream::failureOf(int error) const {
    if (interrupted()) return Failure::none;
    if (m_timedOut || error == AVERROR(ETIMEDOUT)) return Failure::timeout;
    if (m_log.certificate) return Failure::certificate;
    if (m_log.nameNotFound) return Failure::nameNotFound;
    if (m_log.headerBytes > m_limits.headerBytes) return Failure::noAudio;
    // A redirect without an error below HTTP: a loop, or an invalid address.
    const bool isRedirect = m_log.httpStatus >= 300 && !m_log.connecting;
    return isHttpError(error) || isRedirect ? Failure::httpStatus : Failure::refused;
}

int HttpStream::read(std::span<std::uint8_t> out) {
    while (!interrupted()) {
        if (!m_connection && m_size >= 0 && m_offset >= m_size) return AVERROR_EOF;
        if (!m_connection)
            if (const int result = resume(); result < 0) return result;
        setDeadline(m_limits.silence);
        const int count = avio_read_partial(m_connection.get(), out.data(), static_cast<int>(out.size()));
        if (count > 0) {
            m_offset += count;
            m_lastByte = Clock::now();
            m_pause = {};
            m_failure = Failure::none;
            takeMetadata();
            return count;
        }
        // Drop an interrupted connection, too: it may have stopped within a TLS record or a chunk header.
        m_connection.reset();
        if (interrupted()) break;
        const bool ended = m_size < 0 || m_offset >= m_size;
        m_failure = m_timedOut ? Failure::timeout : ended ? Failure::none : Failure::refused;
        // Without a length the end of the connection is the end of the stream.
        if (ended) return AVERROR_EOF;
    }
    return AVERROR_EXIT;
}

void HttpStream::takeMetadata() {
    // FFmpeg accumulates all ICY metadata fields: clear them.
    av_opt_set_dict_val(m_connection.get(), "metadata", nullptr, AV_OPT_SEARCH_CHILDREN);
    std::string packet = textOption(*m_connection, "icy_metadata_packet");
    if (packet.empty()) return;
    m_icyMetadata = std::move(packet);
    av_opt_set(m_connection.get(), "icy_metadata_packet", "", AV_OPT_SEARCH_CHILDREN);
}

/// Reconnects at the current offset. 0, AVERROR_EXIT when interrupted, or AVERROR(EIO).
int HttpStream::resume() {
    if (m_live || !m_seekable) return AVERROR(EIO);
    if (m_pause == Clock::duration::zero())
        m_lastByte = Clock::now(); // the last byte may be from long before a seek
    const auto giveUp = std::min(m_lastByte + m_limits.resume, m_openedBy);
    const std::int64_t size = m_size;
    const std::int64_t offset = m_offset;
    while (Clock::now() < giveUp) {
        if (cancel()->waitFor(std::min(m_pause, giveUp - Clock::now()))) return AVERROR_EXIT;
        m_pause = std::clamp<Clock::duration>(m_pause * 2, m_limits.firstPause, m_limits.maxPause);
        if (connect(offset)) {
            if (m_size == size && m_seekable) return 0;
            m_connection.reset(); // the server has another file by now
            m_size = size;
            m_seekable = true;
            return AVERROR(EIO);
        }
        if (interrupted()) return AVERROR_EXIT;
        if (isRefusedForGood()) {
            m_pause = {};
            return AVERROR(EIO);
        }
    }
    return AVERROR(EIO);
}

/// True for status codes after which retrying is pointless.
bool HttpStream::isRefusedForGood() const {
    constexpr int requestTimeout = 408, tooManyRequests = 429;
    const int status = m_log.httpStatus;
    if (m_ignoresRanges) return true;
    return m_failure == Failure::httpStatus && status >= 400 && status < 500 && status != requestTimeout &&
           status != tooManyRequests;
}

std::int64_t HttpStream::seek(std::int64_t offset) {
    if (offset == m_offset) return offset;
    m_connection.reset(); // the next read reconnects
    m_offset = offset;
    return offset;
}

} // namespace bass
