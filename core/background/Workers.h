#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>

/// Runs jobs that may block (files, folders) on worker threads, and delivers the results to the main thread.
///
/// Threads: main thread only. Jobs run on workers and touch only what they own; the tasks they post run on
/// the main thread, inside `deliver`. Only the destructor waits for workers, up to `endTimeout`. A worker
/// that is stuck in a system call (on a dead mount) is abandoned; it owns everything it uses.
class Workers {
    struct State;

public:
    using Task = std::function<void()>;

    /// A job's way back to the main thread. May be copied, and outlives the workers.
    class Reply {
    public:
        /// Queues a task for `deliver`. Dropped once the workers are destroyed.
        void post(Task task) const;
        /// True once the workers are destroyed: the result of the job is not needed.
        [[nodiscard]] bool isAbandoned() const;

    private:
        friend class Workers;
        explicit Reply(std::shared_ptr<State> state) : m_state(std::move(state)) {}

        std::shared_ptr<State> m_state; ///< Null for a job that runs in place.
    };
    using Job = std::function<void(const Reply& reply)>;

    struct Settings {
        /// Size of the pool. A thread that hangs is replaced, up to 16 threads in all.
        std::size_t threads = cores();
        /// A thread hangs when its job takes longer than this.
        std::chrono::milliseconds hangTimeout{250};
        /// How long the destructor waits for running jobs.
        std::chrono::milliseconds endTimeout{200};
        /// How long the destructor and `finishSaving` wait for jobs of Lane::saving.
        std::chrono::milliseconds saveTimeout{2000};
    };

    enum class Lane {
        bulk,   ///< On the pool, first in, first out.
        urgent, ///< On the pool, before `bulk`, last in, first out.
        own,    ///< At once, on a new thread: for long jobs.
        saving, ///< One at a time, in order. The destructor waits for them.
    };

    Workers() : Workers(Settings()) {}
    explicit Workers(const Settings& settings);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    ~Workers();

    /// `wake` is called on any thread, under a lock, when there is something to deliver, once before each
    /// `deliver`. It must not call back into this object. Without one, jobs run in place: `run` returns when
    /// the job, and the jobs that it queued, are done.
    void setWake(Task wake);
    void run(Lane lane, Job job);
    /// Runs the posted tasks. After a few milliseconds it calls `wake` for the rest.
    void deliver();
    /// Waits for the jobs of Lane::saving, at most `saveTimeout`.
    void finishSaving();

private:
    static std::size_t cores();
    void runInPlace(Job job);

    std::shared_ptr<State> m_state;
    std::deque<Job> m_inPlace;
    bool m_runsInPlace = false;
};
