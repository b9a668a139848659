#include "core/background/Workers.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <pthread.h>
#include <sys/resource.h>
#include <system_error>
#include <thread>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::size_t maxPool = 16;
/// Keeps the pool, which has a thread for each core, from delaying the audio and the main thread.
constexpr int poolNice = 10;
constexpr auto maxIdle = 1s;
constexpr auto maxDelivery = 4ms;

} // namespace

/// State shared by the main thread and the workers, destroyed by the last of them. A `Lock` argument means
/// that the caller holds the mutex.
struct Workers::State {
    using Lock = std::unique_lock<std::mutex>;

    explicit State(const Settings& given) : settings(given) {}

    const Settings settings;
    std::mutex mutex; ///< Guards everything below.
    std::condition_variable work;
    std::condition_variable ended;
    std::deque<Job> urgent;
    std::deque<Job> bulk;
    std::deque<Job> saving;
    std::deque<Task> posted;
    Task wake;
    bool woken = false; ///< `wake` has been called, and `deliver` not yet.
    bool closed = false;
    bool saves = false;                  ///< A thread runs `saveAll`.
    std::size_t threads = 0;             ///< Running threads of all kinds.
    std::size_t pool = 0;                ///< Running threads of the pool.
    std::size_t idle = 0;                ///< Pool threads that wait for a job.
    std::list<Clock::time_point> starts; ///< When the running jobs of the pool were started.

    void wakeOnce(const Lock& /*lock*/) {
        if (wake && !std::exchange(woken, true)) wake();
    }

    [[nodiscard]] bool needsThread(const Lock& /*lock*/) const {
        const auto hangs = [since = Clock::now() - settings.hangTimeout](auto start) {
            return start < since;
        };
        const auto hanging = static_cast<std::size_t>(std::ranges::count_if(starts, hangs));
        return urgent.size() + bulk.size() > idle && pool < std::min(settings.threads + hanging, maxPool);
    }

    /// Starts and counts a thread; false when the system refuses. `body` gets the state to keep it alive.
    static bool startThread(const std::shared_ptr<State>& state, const Lock& /*lock*/, const char* name,
                            std::function<void(const std::shared_ptr<State>&)> body) {
        try {
            std::thread([state, name, body = std::move(body)]() mutable {
                pthread_setname_np(pthread_self(), name);
                body(state);
                body = nullptr; // release what it holds before the end is reported
                const std::lock_guard end(state->mutex);
                --state->threads;
                state->ended.notify_all();
            }).detach(); // a thread that hangs in a system call could not be joined
        } catch (const std::system_error&) {
            return false;
        }
        ++state->threads;
        return true;
    }

    static void workInPool(const std::shared_ptr<State>& state) {
        ::setpriority(PRIO_PROCESS, 0, poolNice); // of this thread alone
        Lock lock(state->mutex);
        for (;;) {
            ++state->idle;
            const bool found = state->work.wait_for(lock, maxIdle, [&] {
                return state->closed || !state->urgent.empty() || !state->bulk.empty();
            });
            --state->idle;
            if (!found || state->closed) break;
            std::deque<Job>& queue = state->urgent.empty() ? state->bulk : state->urgent;
            Job job = std::move(queue.front());
            queue.pop_front();
            const auto start = state->starts.insert(state->starts.end(), Clock::now());
            lock.unlock();
            job(Reply(state));
            job = nullptr;
            lock.lock();
            state->starts.erase(start);
        }
        --state->pool;
    }

    static void saveAll(const std::shared_ptr<State>& state) {
        Lock lock(state->mutex);
        while (!state->saving.empty()) {
            const Job job = std::move(state->saving.front());
            state->saving.pop_front();
            lock.unlock();
            job(Reply(state));
            lock.lock();
        }
        state->saves = false;
    }
};

void Workers::Reply::post(Task task) const {
    if (!m_state) return task();
    const State::Lock lock(m_state->mutex);
    if (m_state->closed) return;
    m_state->posted.push_back(std::move(task));
    m_state->wakeOnce(lock);
}

bool Workers::Reply::isAbandoned() const {
    if (!m_state) return false;
    const State::Lock lock(m_state->mutex);
    return m_state->closed;
}

Workers::Workers(const Settings& settings) : m_state(std::make_shared<State>(settings)) {}

std::size_t Workers::cores() {
    return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 2, maxPool);
}

Workers::~Workers() {
    std::deque<Job> dropped[2];
    std::deque<Task> undelivered;
    State::Lock lock(m_state->mutex);
    m_state->closed = true;
    m_state->wake = nullptr;
    dropped[0].swap(m_state->urgent);
    dropped[1].swap(m_state->bulk);
    undelivered.swap(m_state->posted);
    m_state->work.notify_all();
    m_state->ended.wait_for(lock, m_state->settings.endTimeout, [this] { return m_state->threads == 0; });
    lock.unlock();
    finishSaving();
}

void Workers::finishSaving() {
    State::Lock lock(m_state->mutex);
    m_state->ended.wait_for(lock, m_state->settings.saveTimeout, [this] { return !m_state->saves; });
}

void Workers::setWake(Task wake) {
    const State::Lock lock(m_state->mutex);
    m_state->wake = std::move(wake);
    m_state->woken = false;
    if (!m_state->posted.empty()) m_state->wakeOnce(lock);
}

void Workers::run(Lane lane, Job job) {
    State::Lock lock(m_state->mutex);
    if (!m_state->wake) {
        lock.unlock();
        return runInPlace(std::move(job));
    }
    if (lane == Lane::own) {
        const auto alone = [job](const auto& state) { job(Reply(state)); };
        if (State::startThread(m_state, lock, "tul-files", alone)) return;
    }
    if (lane == Lane::saving) {
        m_state->saving.push_back(std::move(job));
        if (m_state->saves) return;
        m_state->saves = State::startThread(m_state, lock, "tul-save", &State::saveAll);
        if (m_state->saves) return;
        job = std::move(m_state->saving.back());
        m_state->saving.pop_back();
    }
    lane == Lane::bulk ? m_state->bulk.push_back(std::move(job)) : m_state->urgent.push_front(std::move(job));
    if (m_state->needsThread(lock) && State::startThread(m_state, lock, "tul-tags", &State::workInPool))
        ++m_state->pool;
    m_state->work.notify_one();
}

void Workers::runInPlace(Job job) {
    m_inPlace.push_back(std::move(job));
    if (std::exchange(m_runsInPlace, true)) return;
    while (!m_inPlace.empty()) {
        const Job next = std::move(m_inPlace.front());
        m_inPlace.pop_front();
        next(Reply(nullptr));
    }
    m_runsInPlace = false;
}

void Workers::deliver() {
    const auto end = Clock::now() + maxDelivery;
    State::Lock lock(m_state->mutex);
    m_state->woken = false;
    while (!m_state->posted.empty()) {
        if (Clock::now() > end) return m_state->wakeOnce(lock);
        const Task task = std::move(m_state->posted.front());
        m_state->posted.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
}
