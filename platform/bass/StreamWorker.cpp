#include "platform/bass/StreamWorker.h"

#include <pthread.h>
#include <system_error>
#include <thread>
#include <utility>

namespace bass {
namespace {

Format formatOf(DWORD kind) {
    switch (kind) {
    case BASS_SOURCE_FLAC:
        return Format::flac;
    case BASS_SOURCE_APE:
        return Format::ape;
    case BASS_SOURCE_OPUS:
        return Format::opus;
    case BASS_SOURCE_WV:
        return Format::wavpack;
    default:
        return Format::any;
    }
}

} // namespace

OpenedSource openByName(const SourceName& name, std::shared_ptr<Cancel> cancel) {
    if (name.kind == BASS_SOURCE_URL) return openUrl(name.text, std::move(cancel));
    return openFile(name.text, formatOf(name.kind), std::move(cancel));
}

void StreamWorker::start(const Lock& lock, const std::shared_ptr<Channel>& channel) {
    Engine& engine = channel->m_engine;
    ++engine.workers;
    try {
        std::thread([channel = channel, &engine]() mutable {
            StreamWorker(std::move(channel)).run();
            --engine.workers;
        }).detach();
    } catch (const std::system_error&) {
        --engine.workers;
        channel->failed(lock, Failure::unreadable, 0);
    }
}

void StreamWorker::run() {
    pthread_setname_np(pthread_self(), "tul-stream");
    if (open()) work();
}

bool StreamWorker::open() {
    OpenedSource opened = m_channel->m_engine.openSource(m_channel->name(), m_channel->m_cancel);
    m_source = std::move(opened.source);
    const Lock lock(m_channel->m_engine.mutex);
    if (m_source) {
        m_channel->opened(lock, m_source->lengthFrames(), m_source->replayGain());
    } else {
        m_channel->failed(lock, opened.failure, opened.httpStatus);
    }
    return m_source != nullptr;
}

void StreamWorker::work() {
    Channel& channel = *m_channel;
    while (!channel.m_cancel->closed()) {
        channel.m_cancel->clear();
        Lock lock(channel.m_engine.mutex);
        if (channel.m_seek && channel.m_seekBegun) {
            seek(lock);
        } else if (!channel.voice().isComplete() && channel.voice().writable() >= chunkFrames) {
            read(lock);
        } else {
            lock.unlock();
            if (channel.voice().isComplete() || channel.voice().askForRoom()) channel.m_work.acquire();
        }
    }
}

void StreamWorker::seek(Lock& lock) {
    const std::int64_t target = *m_channel->m_seek;
    lock.unlock();
    const bool reached = m_source->seek(target);
    lock.lock();
    if (!reached && m_channel->m_cancel->requested()) return; // cancelled by another seek, not refused
    if (reached) m_unwritten.reset();
    m_channel->sought(lock, target, reached);
}

void StreamWorker::read(Lock& lock) {
    Channel& channel = *m_channel;
    if (!m_unwritten) {
        lock.unlock();
        m_unwritten = m_source->read(samplesOf(m_chunk));
        auto tags = m_source->takeTags();
        lock.lock();
        if (tags) channel.tagsChanged(lock, std::move(*tags));
    }
    // Keep the chunk: a seek that has begun may be refused, and a rewind may have used up the room.
    if ((channel.m_seek && channel.m_seekBegun) || channel.voice().writable() < m_unwritten->frames) return;
    const ReadResult result = *std::exchange(m_unwritten, std::nullopt);
    const bool ended = result.status == ReadResult::Status::end;
    const bool broken = result.status == ReadResult::Status::failed;
    channel.voice().write(std::span(m_chunk).first(result.frames));
    ended || broken ? channel.readAll(lock, broken) : channel.wrote(lock);
}

} // namespace bass
