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
    : http_(std::make_shared<HttpStream>(url, HttpStream::Clock::now() + openLimit)),
      thread_([this] { run(); }) {}

NetworkSource::~NetworkSource() {
    interrupt();
    thread_.join();
}

void NetworkSource::interrupt() noexcept {
    const std::lock_guard lock(mutex_);
    http_->interrupt();
    changed_.notify_all();
}

bool NetworkSource::waitUntilOpened() {
    Lock lock(mutex_);
    changed_.wait_for(lock, openLimit, [this] { return opened_.has_value(); });
    return opened_.value_or(false);
}

ReadResult NetworkSource::read(std::span<float> out) {
    Lock lock(mutex_);
    changed_.wait_for(lock, readLimit, [this] {
        return http_->interrupted() || !ahead_.empty() || (status_ != Status::more && !seekTarget_);
    });
    if (http_->interrupted()) return {0, Status::failed};
    if (ahead_.empty()) {
        const bool ended = status_ != Status::more && !seekTarget_;
        return {0, ended ? status_ : Status::starved};
    }
    const std::size_t frames = std::min(out.size(), ahead_.size()) / channelCount;
    const auto end = ahead_.begin() + static_cast<std::ptrdiff_t>(frames * channelCount);
    std::copy(ahead_.begin(), end, out.begin());
    ahead_.erase(ahead_.begin(), end);
    changed_.notify_all();
    return {frames, Status::more};
}

bool NetworkSource::seek(std::int64_t frame) {
    if (!seekable_) return false;
    const std::lock_guard lock(mutex_);
    seekTarget_ = frame;
    ahead_.clear();
    changed_.notify_all();
    return true;
}

void NetworkSource::run() {
    pthread_setname_np(pthread_self(), "tul-network");
    boundNameLookUps();
    const bool opened = http_->connect(0) && openDecoder();
    if (opened) {
        http_->endOpening();
        length_ = source_->lengthFrames();
        seekable_ = http_->seekable();
    }
    {
        const std::lock_guard lock(mutex_);
        opened_ = opened;
        changed_.notify_all();
    }
    if (opened) decodeAhead();
}

bool NetworkSource::openDecoder() {
    source_.reset();
    source_ = DecodedSource::open(http_, Format::any);
    return source_ != nullptr;
}

void NetworkSource::decodeAhead() {
    std::array<float, framesAtOnce * channelCount> block;
    while (!http_->interrupted()) {
        {
            Lock lock(mutex_);
            changed_.wait(lock, [this] {
                const bool wanted = status_ == Status::more && ahead_.size() < mostAhead;
                return http_->interrupted() || seekTarget_ || wanted;
            });
            if (seekTarget_) {
                applySeek(lock);
                continue;
            }
        }
        const ReadResult result = source_->read(block);
        const bool goesOn = result.status == Status::more || http_->isLive();
        {
            Lock lock(mutex_);
            store(lock, std::span(block).first(result.frames * channelCount),
                  goesOn ? Status::more : result.status);
        }
        if (result.status != Status::more && goesOn) reconnect();
    }
}

void NetworkSource::store(Lock&, std::span<const float> samples, Status status) {
    if (seekTarget_) return; // what was read meanwhile is of the old place
    ahead_.insert(ahead_.end(), samples.begin(), samples.end());
    status_ = status;
    changed_.notify_all();
}

void NetworkSource::applySeek(Lock& lock) {
    while (seekTarget_) {
        const std::int64_t target = *seekTarget_;
        lock.unlock();
        const bool reached = source_->seek(target);
        lock.lock();
        if (seekTarget_ != target) continue; // another one came meanwhile
        seekTarget_.reset();
        status_ = reached ? Status::more : Status::failed;
    }
}

/// The connection may still stand: then only the container ended, and its next piece follows.
void NetworkSource::reconnect() {
    auto pause = std::chrono::milliseconds(firstPause);
    while (!http_->interrupted()) {
        if (http_->isConnected() && openDecoder()) return;
        if (http_->connect(0) && openDecoder()) return;
        Lock lock(mutex_);
        changed_.wait_for(lock, pause, [this] { return http_->interrupted(); });
        pause = std::min<std::chrono::milliseconds>(pause * 2, longestPause);
    }
}

} // namespace bass
