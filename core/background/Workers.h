#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>

/// Runs what may block (files, folders) on threads of its own, and brings the results to the main thread.
///
/// Threads: made, destroyed and called on the main thread. Jobs run on workers and touch only what they own;
/// what they post runs on the main thread, inside `deliver`. Nothing waits for a worker but the destructor,
/// for a moment: one that is inside a call which does not return (a dead mount) is abandoned, and owns
/// everything that it uses.
class Workers {
    struct State;

public:
    using Task = std::function<void()>;

    /// A job's way back to the main thread. May be copied, and outlives the workers.
    class Reply {
    public:
        /// `deliver` runs the task, after those that were posted before; never, once the workers are gone.
        void post(Task task) const;
        /// Nothing waits for the job any more: the workers are gone.
        [[nodiscard]] bool isAbandoned() const;

    private:
        friend class Workers;
        explicit Reply(std::shared_ptr<State> state) : m_state(std::move(state)) {}

        std::shared_ptr<State> m_state; ///< Null in place.
    };
    using Job = std::function<void(const Reply& reply)>;

    struct Settings {
        /// Of the pool. A thread that hangs is replaced, up to 16 in all.
        std::size_t threads = cores();
        /// One that has been inside a job for longer hangs.
        std::chrono::milliseconds hangsAfter{250};
        /// The destructor waits so long for jobs, …
        std::chrono::milliseconds endsWithin{200};
        /// … and as `finishSaving` so long for what is being saved.
        std::chrono::milliseconds savesWithin{2000};
    };

    enum class Lane {
        bulk,   ///< In order, on the threads of the pool.
        urgent, ///< On the same threads, before the bulk, the last one first.
        own,    ///< At once, on a thread of its own: for jobs that take long.
        saving, ///< One after another. The destructor waits for them.
    };

    Workers() : Workers(Settings()) {}
    explicit Workers(const Settings& settings);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    ~Workers();

    /// `wake` is called on a worker when there is something to deliver, once for each `deliver`. It must not
    /// call back, and is not called any more when this has set another. Without one, jobs run in place: `run`
    /// returns when they, and those that they led to, are done.
    void setWake(Task wake);
    void run(Lane lane, Job job);
    /// Runs what has been posted. After a few milliseconds it leaves the rest to another wake.
    void deliver();
    /// Waits until what is being saved is, but not for long.
    void finishSaving();

private:
    static std::size_t cores();
    void runInPlace(Job job);

    std::shared_ptr<State> m_state;
    std::deque<Job> m_inPlace;
    bool m_runsInPlace = false;
};
