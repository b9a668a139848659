#include "platform/bass/source/NetworkSource.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <pthread.h>
#include <resolv.h>

namespace bass {
namespace {

using Status = ReadResult::Status;
using namespace std::chrono_literals;

constexpr auto openLimit = 5s;
constexpr auto readLimit = 100ms;
constexpr auto firstPause = 250ms;
constexpr auto longestPause = 8s;
constexpr std::size_t mostAhead = std::size_t{5} * sampleRate * channelCount;
constexpr std::size_t framesAtOnce = 1024;

/// A name look-up cannot be interrupted; this thread's ones give up in time by themselves.
void boundNameLookUps() {
    if (res_ninit(&_res) != 0) return;
    _res.retrans = 1;
    _res.retry = 2;
}

} // namespace

std::unique_ptr<NetworkSource> NetworkSource::open(const std::string& url) {
    std::unique_ptr<NetworkSource> source(new NetworkSource(url));
    return source->waitUntilOpened() ? std::move(source) : nullptr;
}

NetworkSource::NetworkSource(const std::string& url)
    : m_http(std::make_shared<HttpStream>(url, HttpStream::Clock::now() + openLimit)),
      m_thread([this] { run(); }) {}

NetworkSource::~NetworkSource() {
    interrupt();
    m_thread.join();
}

void NetworkSource::interrupt() noexcept {
    const std::lock_guard lock(m_mutex);
    m_http->interrupt();
    m_changed.notify_all();
}

bool NetworkSource::waitUntilOpened() {
    Lock lock(m_mutex);
    m_changed.wait_for(lock, openLimit, [this] { return m_opened.has_value(); });
    return m_opened.value_or(false);
}

ReadResult NetworkSource::read(std::span<float> out) {
    Lock lock(m_mutex);
    m_changed.wait_for(lock, readLimit, [this] {
        return m_http->interrupted() || !m_ahead.empty() || (m_status != Status::more && !m_seekTarget);
    });
    if (m_http->interrupted()) return {0, Status::failed};
    if (m_ahead.empty()) {
        const bool ended = m_status != Status::more && !m_seekTarget;
        return {0, ended ? m_status : Status::starved};
    }
    const std::size_t frames = std::min(out.size(), m_ahead.size()) / channelCount;
    const auto end = m_ahead.begin() + static_cast<std::ptrdiff_t>(frames * channelCount);
    std::copy(m_ahead.begin(), end, out.begin());
    m_ahead.erase(m_ahead.begin(), end);
    m_changed.notify_all();
    return {frames, Status::more};
}

bool NetworkSource::seek(std::int64_t frame) {
    if (!m_seekable) return false;
    const std::lock_guard lock(m_mutex);
    m_seekTarget = frame;
    m_ahead.clear();
    m_changed.notify_all();
    return true;
}

void NetworkSource::run() {
    pthread_setname_np(pthread_self(), "tul-network");
    boundNameLookUps();
    const bool opened = m_http->connect(0) && openDecoder();
    if (opened) {
        m_http->endOpening();
        m_length = m_source->lengthFrames();
        m_seekable = m_http->seekable();
    }
    {
        const std::lock_guard lock(m_mutex);
        m_opened = opened;
        m_changed.notify_all();
    }
    if (opened) decodeAhead();
}

bool NetworkSource::openDecoder() {
    m_source.reset();
    m_source = DecodedSource::open(m_http, Format::any);
    return m_source != nullptr;
}

void NetworkSource::decodeAhead() {
    std::array<float, framesAtOnce * channelCount> block;
    while (!m_http->interrupted()) {
        {
            Lock lock(m_mutex);
            m_changed.wait(lock, [this] {
                const bool wanted = m_status == Status::more && m_ahead.size() < mostAhead;
                return m_http->interrupted() || m_seekTarget || wanted;
            });
            if (m_seekTarget) {
                applySeek(lock);
                continue;
            }
        }
        const ReadResult result = m_source->read(block);
        const bool goesOn = result.status == Status::more || m_http->isLive();
        {
            Lock lock(m_mutex);
            store(lock, std::span(block).first(result.frames * channelCount),
                  goesOn ? Status::more : result.status);
        }
        if (result.status != Status::more && goesOn) reconnect();
    }
}

void NetworkSource::store(Lock&, std::span<const float> samples, Status status) {
    if (m_seekTarget) return; // what was read meanwhile is of the old place
    m_ahead.insert(m_ahead.end(), samples.begin(), samples.end());
    m_status = status;
    m_changed.notify_all();
}

void NetworkSource::applySeek(Lock& lock) {
    while (m_seekTarget) {
        const std::int64_t target = *m_seekTarget;
        lock.unlock();
        const bool reached = m_source->seek(target);
        lock.lock();
        if (m_seekTarget != target) continue; // another one came meanwhile
        m_seekTarget.reset();
        m_status = reached ? Status::more : Status::failed;
    }
}

/// The connection may still stand: then only the container ended, and its next piece follows.
void NetworkSource::reconnect() {
    auto pause = std::chrono::milliseconds(firstPause);
    while (!m_http->interrupted()) {
        if (m_http->isConnected() && openDecoder()) return;
        if (m_http->connect(0) && openDecoder()) return;
        Lock lock(m_mutex);
        m_changed.wait_for(lock, pause, [this] { return m_http->interrupted(); });
        pause = std::min<std::chrono::milliseconds>(pause * 2, longestPause);
    }
}

} // namespace bass
