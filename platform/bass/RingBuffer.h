#pragma once

#include "platform/bass/Source.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace bass {

/// Frames on their way from one writing thread to one reading thread. What was read lately stays, so that it can
/// be read again (`rewindTo`) or looked at (`copyBefore`). Frames are counted from the first one ever written.
///
/// Threads: `writable` and `write` are the writer's; `peek` and `consume` the reader's; the counters may be asked
/// by any. `rewindTo` needs the reader at rest, `clear` is the writer's with the reader at rest. `copyBefore` may
/// run beside both.
class RingBuffer {
public:
    static constexpr std::size_t capacity = 65536;
    /// Frames behind the reader that the writer leaves alone.
    static constexpr std::size_t history = 32768;

    [[nodiscard]] std::uint64_t readCount() const { return read_.load(std::memory_order_acquire); }
    [[nodiscard]] std::size_t readable() const {
        return static_cast<std::size_t>(written_.load(std::memory_order_acquire) - readCount());
    }
    [[nodiscard]] std::size_t writable() const {
        const std::size_t ahead = readable();
        return ahead < capacity - history ? capacity - history - ahead : 0;
    }

    /// Writes all of `samples`; no more than `writable` frames may be given.
    void write(std::span<const float> samples) {
        const std::uint64_t at = written_.load(std::memory_order_relaxed);
        const std::size_t first = std::min(samples.size(), samples_.size() - place(at));
        std::copy_n(samples.begin(), first, samples_.begin() + static_cast<std::ptrdiff_t>(place(at)));
        std::copy(samples.begin() + static_cast<std::ptrdiff_t>(first), samples.end(), samples_.begin());
        written_.store(at + samples.size() / channelCount, std::memory_order_release);
    }
    /// Forgets all that is in it.
    void clear() {
        const std::uint64_t at = written_.load(std::memory_order_relaxed);
        start_.store(at);
        furthest_ = at;
        read_.store(at);
    }

    /// The next `frames` frames, no more than `readable`, in two runs.
    [[nodiscard]] std::array<std::span<const float>, 2> peek(std::size_t frames) const {
        return runs(read_.load(std::memory_order_relaxed), frames);
    }
    void consume(std::size_t frames) {
        const std::uint64_t at = read_.load(std::memory_order_relaxed) + frames;
        furthest_ = std::max(furthest_, at);
        read_.store(at, std::memory_order_release);
    }

    /// Steps back to frame `count`, or as near to it as is kept.
    void rewindTo(std::uint64_t count) {
        const std::uint64_t kept = furthest_ - std::min<std::uint64_t>(furthest_, history);
        read_.store(std::clamp(count, std::max(start_.load(), kept), readCount()));
    }

    /// Copies the frames before frame `end` into `out`; before the first one there was silence.
    void copyBefore(std::uint64_t end, std::span<float> out) const {
        const std::uint64_t first = std::min(start_.load(), end);
        const std::size_t there = std::min<std::size_t>(out.size() / channelCount, end - first);
        auto to = std::fill_n(out.begin(), out.size() - there * channelCount, 0.0F);
        for (const auto& run : runs(end - there, there)) to = std::copy(run.begin(), run.end(), to);
    }

private:
    [[nodiscard]] std::size_t place(std::uint64_t frame) const {
        return static_cast<std::size_t>(frame % capacity) * channelCount;
    }
    [[nodiscard]] std::array<std::span<const float>, 2> runs(std::uint64_t frame, std::size_t frames) const {
        const std::size_t samples = frames * channelCount;
        const std::size_t first = std::min(samples, samples_.size() - place(frame));
        return {std::span(samples_).subspan(place(frame), first), std::span(samples_).first(samples - first)};
    }

    std::vector<float> samples_ = std::vector<float>(capacity * channelCount);
    std::atomic<std::uint64_t> written_{0};
    std::atomic<std::uint64_t> read_{0};
    std::atomic<std::uint64_t> start_{0}; ///< nothing before it can be read again
    std::uint64_t furthest_ = 0;          ///< the reader's: where it has been; the writer keeps `history` behind it
    static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace bass
