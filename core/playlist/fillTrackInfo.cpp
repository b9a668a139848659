#include "core/playlist/fillTrackInfo.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <pthread.h>
#include <system_error>
#include <thread>
#include <vector>

namespace {

/// More would only queue at the disk.
constexpr std::size_t maxWorkers = 16;
constexpr std::chrono::milliseconds progressInterval{50};

/// The work that the workers share. They claim entries from the first on, so that the claimed ones are always
/// a beginning of the list; a claimed entry is always filled.
class SharedList {
public:
    explicit SharedList(std::span<const std::unique_ptr<TulPlaylistEntry>> entries) : m_entries(entries) {}

    void fill(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            const std::size_t index = m_next.fetch_add(1);
            if (index >= m_entries.size()) break;
            m_entries[index]->readTrackInfo(true);
            m_done.fetch_add(1);
        }
    }

    [[nodiscard]] std::size_t done() const { return m_done.load(); }

private:
    const std::span<const std::unique_ptr<TulPlaylistEntry>> m_entries;
    std::atomic<std::size_t> m_next{0};
    std::atomic<std::size_t> m_done{0};
};

class Workers {
public:
    explicit Workers(SharedList& list, std::size_t count) : m_running(count) {
        m_threads.reserve(count);
        for (std::size_t i = 0; i < count; ++i)
            start(list);
        if (m_threads.empty()) list.fill({});
    }

    /// True when every worker has ended within `limit`.
    bool wait(std::chrono::milliseconds limit) {
        std::unique_lock lock(m_mutex);
        return m_ended.wait_for(lock, limit, [this] { return m_running == 0; });
    }

    void requestStop() {
        for (auto& thread : m_threads)
            thread.request_stop();
    }

private:
    void start(SharedList& list) {
        try {
            m_threads.emplace_back([this, &list](const std::stop_token& stop) {
                pthread_setname_np(pthread_self(), "tul-tags");
                list.fill(stop);
                countDown();
            });
        } catch (const std::system_error&) {
            countDown(); // no thread to be had: the others do its share
        }
    }

    void countDown() {
        const std::lock_guard lock(m_mutex);
        --m_running;
        m_ended.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::size_t m_running; // guarded by m_mutex
    std::vector<std::jthread> m_threads;
};

} // namespace

std::size_t fillTrackInfo(std::span<const std::unique_ptr<TulPlaylistEntry>> entries,
                          const ReadingProgress& progress) {
    const auto missing = std::ranges::count_if(entries, [](const auto& e) { return !e->hasTrackInfo(); });
    if (missing == 0) return entries.size();

    const std::size_t cores = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, maxWorkers);
    SharedList list(entries);
    {
        Workers workers(list, std::min(cores, static_cast<std::size_t>(missing)));
        while (!workers.wait(progressInterval)) {
            if (progress && !progress(list.done(), entries.size())) workers.requestStop();
        }
    }
    return list.done();
}
