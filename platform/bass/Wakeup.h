#pragma once

#include <chrono>
#include <ctime>
#include <semaphore.h>

namespace bass {

/// Wakes one waiting thread. It carries no data: what changed is told by atomics or under a lock, and a wake
/// that comes before the wait is not lost.
///
/// Threads: `wake` from any, the audio thread and device callbacks included; the rest is the waiting thread's.
class Wakeup {
public:
    Wakeup() { sem_init(&semaphore_, 0, 0); }
    ~Wakeup() { sem_destroy(&semaphore_); }
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    void wake() noexcept { sem_post(&semaphore_); }
    /// Returns when woken; now and then earlier.
    void wait() {
        sem_wait(&semaphore_);
        forgetFurther();
    }
    void waitUntil(std::chrono::steady_clock::time_point end) {
        const auto since = end.time_since_epoch();
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(since);
        const timespec at{seconds.count(), std::chrono::nanoseconds(since - seconds).count()};
        sem_clockwait(&semaphore_, CLOCK_MONOTONIC, &at);
        forgetFurther();
    }

private:
    void forgetFurther() {
        while (sem_trywait(&semaphore_) == 0) {
        }
    }

    sem_t semaphore_{};
};

} // namespace bass
