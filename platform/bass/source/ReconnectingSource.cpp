#include "platform/bass/source/ReconnectingSource.h"

#include "platform/bass/source/DecodedSource.h"
#include "platform/bass/source/ServerBytes.h"
#include "platform/bass/source/StationList.h"

#include <algorithm>
#include <mutex>
#include <resolv.h>

namespace bass {
namespace {

using Status = ReadResult::Status;

/// After a connection that yielded fewer frames, the back-off is not reset.
constexpr std::int64_t framesOfGoodConnection = sampleRate;

/// Sets the resolver's timeout on this thread, because a name look-up cannot be interrupted.
void boundNameLookUps() {
    static std::mutex mutex; // for ThreadSanitizer, which does not see glibc's own lock
    thread_local bool done = false;
    const std::lock_guard lock(mutex);
    if (done || res_ninit(&_res) != 0) return;
    _res.retrans = 1;
    _res.retry = 2;
    done = true;
}

} // namespace

OpenedSource ReconnectingSource::open(const std::string& url, const NetworkLimits& limits,
                                      std::shared_ptr<Cancel> cancel) {
    std::unique_ptr<ReconnectingSource> source(new ReconnectingSource(url, limits, std::move(cancel)));
    const Failure failure = source->connect();
    if (!source->m_source)
        return {nullptr, failure, failure == Failure::httpStatus ? source->m_http->httpStatus() : 0};
    source->m_live = source->m_http->isLive();
    source->m_length = source->m_source->lengthFrames();
    if (source->m_length) source->m_replayGain = source->m_source->replayGain();
    return {std::move(source)};
}

ReconnectingSource::ReconnectingSource(std::string url, const NetworkLimits& limits,
                                       std::shared_ptr<Cancel> cancel)
    : m_limits(limits),
      m_cancel(std::move(cancel)),
      m_http(std::make_shared<HttpStream>(std::move(url), limits, m_cancel)) {}

Failure ReconnectingSource::connect() {
    boundNameLookUps();
    m_http->beginOpening();
    m_frames = 0;
    const Failure failure = m_http->connect(0) ? openSource() : m_http->failure();
    m_http->endOpening();
    return failure;
}

Failure ReconnectingSource::connectTo(std::string url) {
    m_isListed = true;
    m_http = std::make_shared<HttpStream>(std::move(url), m_limits, m_cancel);
    return connect();
}

/// Opens a decoder on the current connection.
Failure ReconnectingSource::openSource() {
    std::shared_ptr<ServerBytes> bytes = ServerBytes::open(m_http);
    if (!bytes) return failureOf(*m_http);
    if (!m_isListed && isStationList(bytes->peek(stationListHeadBytes)))
        if (auto named = firstAddress(bytes->peek(maxStationListBytes))) return connectTo(std::move(*named));
    OpenedSource opened = DecodedSource::open(std::move(bytes), Format::any);
    m_source = std::move(opened.source);
    return opened.failure;
}

ReadResult ReconnectingSource::read(std::span<float> out) {
    for (;;) {
        if (!m_source && !reconnect()) return {0, Status::cancelled};
        const ReadResult result = m_source->read(out);
        m_frames += static_cast<std::int64_t>(result.frames);
        if (result.status == Status::more || result.status == Status::cancelled || !m_live) return result;
        m_source.reset();
        if (result.frames > 0) return {result.frames, Status::more};
    }
}

bool ReconnectingSource::seek(std::int64_t frame) {
    return m_source && m_source->seek(frame);
}

std::optional<StreamTags> ReconnectingSource::takeTags() {
    StreamTags tags{m_http->icyHeaders(), m_http->icyMetadata(), m_tags.comments};
    if (m_source)
        if (auto told = m_source->takeTags()) tags.comments = std::move(told->comments);
    if (tags == m_tags) return std::nullopt;
    m_tags = tags;
    return tags;
}

/// Reconnects until sound can be decoded. False when cancelled.
bool ReconnectingSource::reconnect() {
    // While the connection is open only a link of the stream has ended; the next one follows.
    if (m_http->isConnected()) {
        m_http->beginOpening();
        static_cast<void>(openSource());
        m_http->endOpening();
    }
    if (!m_source) m_http->disconnect(); // the remaining bytes start in the middle of a link
    while (!m_source) {
        if (m_frames >= framesOfGoodConnection) m_pause = {};
        if (m_cancel->waitFor(m_pause)) return false;
        m_pause =
            std::clamp<HttpStream::Clock::duration>(m_pause * 2, m_limits.firstPause, m_limits.maxPause);
        static_cast<void>(connect());
    }
    return true;
}

} // namespace bass
