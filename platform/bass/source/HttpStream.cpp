#include "platform/bass/source/HttpStream.h"

#include <algorithm>
#include <string_view>
#include <thread>

extern "C" {
#include <libavutil/opt.h>
}

namespace bass {
namespace {

using namespace std::chrono_literals;

constexpr auto connectLimit = 5s;
/// A server that stays silent for so long is taken for gone.
constexpr auto silenceLimit = 10s;
/// A finite file that cannot be resumed for so long has failed.
constexpr auto resumeLimit = 60s;
constexpr auto firstPause = 250ms;
constexpr auto longestPause = 8s;

std::string textOption(AVIOContext& connection, const char* name) {
    std::uint8_t* value = nullptr;
    if (av_opt_get(&connection, name, AV_OPT_SEARCH_CHILDREN, &value) < 0 || !value) return {};
    std::string text(reinterpret_cast<const char*>(value));
    av_free(value);
    return text;
}

bool isHttp(std::string_view url) {
    return url.starts_with("http://") || url.starts_with("https://");
}

} // namespace

int HttpStream::mustStop(void* self) {
    const auto& stream = *static_cast<const HttpStream*>(self);
    return stream.interrupted() || Clock::now() > stream.m_deadline;
}

void HttpStream::waitAtMost(Clock::duration limit) {
    m_deadline = std::min(m_openedBy, Clock::now() + limit);
}

bool HttpStream::connect(std::int64_t offset) {
    m_connection.reset();
    waitAtMost(connectLimit);
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "http,https,tcp,tls,crypto,httpproxy", 0);
    av_dict_set(&options, "tls_verify", "1", 0); // off, unless it is asked for
    av_dict_set(&options, "user_agent", "Tulplayer", 0);
    av_dict_set_int(&options, "offset", offset, 0);
    const AVIOInterruptCB callback = {mustStop, this};
    AVIOContext* connection = nullptr;
    const int failed = avio_open2(&connection, m_url.c_str(), AVIO_FLAG_READ, &callback, &options);
    const DictionaryPtr leftOver(options);
    if (failed < 0) return false;
    m_connection.reset(connection);
    if (const std::string location = textOption(*connection, "location"); !isHttp(location)) {
        m_connection.reset();
        return false;
    }
    m_offset = offset;
    m_size = avio_size(connection);
    m_seekable = m_size >= 0 && (connection->seekable & AVIO_SEEKABLE_NORMAL);
    m_live = m_size < 0 && !textOption(*connection, "icy_metadata_headers").empty();
    return true;
}

int HttpStream::read(std::span<std::uint8_t> out) {
    while (!interrupted()) {
        if (!m_connection && m_size >= 0 && m_offset >= m_size) return AVERROR_EOF;
        if (!m_connection && !resume()) return AVERROR(EIO);
        waitAtMost(silenceLimit);
        const int count = avio_read_partial(m_connection.get(), out.data(), static_cast<int>(out.size()));
        if (count > 0) {
            m_offset += count;
            m_lastByte = Clock::now();
            m_pause = {};
            return count;
        }
        m_connection.reset();
        // Without a length the end of the connection is all there is to tell the end by.
        if (m_size < 0 || m_offset >= m_size) return AVERROR_EOF;
    }
    return AVERROR_EXIT;
}

bool HttpStream::resume() {
    if (m_live || !m_seekable) return false;
    if (m_pause == Clock::duration::zero()) m_lastByte = Clock::now(); // what was sought may be old
    const auto giveUp = m_lastByte + resumeLimit;
    const std::int64_t size = m_size;
    while (!interrupted() && Clock::now() < std::min(giveUp, m_openedBy)) {
        for (const auto end = Clock::now() + m_pause; Clock::now() < end && !interrupted();)
            std::this_thread::sleep_for(20ms);
        m_pause = std::clamp<Clock::duration>(m_pause * 2, firstPause, longestPause);
        if (connect(m_offset)) return m_size == size;
    }
    return false;
}

std::int64_t HttpStream::seek(std::int64_t offset) {
    if (offset == m_offset) return offset;
    m_connection.reset(); // connected again by the next read
    m_offset = offset;
    return offset;
}

} // namespace bass
