#pragma once

#include "platform/bass/FrameFormat.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace bass {

/// Frames on their way from one writing thread to one reading thread. What was read lately stays in the ring,
/// so that it can be read again (`rewind`) or looked at (`copyHistory`).
///
/// Threads: `write` and `writable` are the writer's, `read` the reader's; `readable` and the counters may be
/// asked by any. `rewind` and `clear` need both to be at rest. `copyHistory` may run beside both.
class RingBuffer {
public:
    static constexpr std::size_t capacity = 65536;
    /// Frames behind the reader that the writer leaves alone.
    static constexpr std::size_t history = 32768;

    /// None when a rewind has left more to read than the writer would ever put ahead.
    std::size_t writable() const { return capacity - history - std::min(readable(), capacity - history); }
    std::size_t readable() const {
        return static_cast<std::size_t>(m_written.load(std::memory_order_acquire) -
                                        m_read.load(std::memory_order_acquire));
    }

    /// Writes all of `frames`; no more than `writable` of them may be given.
    void write(std::span<const float> frames) {
        const std::uint64_t at = m_written.load(std::memory_order_relaxed);
        std::size_t done = 0;
        while (done < frames.size()) {
            const std::size_t place = position(at, done);
            const std::size_t count = std::min(frames.size() - done, m_samples.size() - place);
            std::copy_n(frames.data() + done, count, m_samples.data() + place);
            done += count;
        }
        m_written.store(at + frames.size() / channelCount, std::memory_order_release);
    }

    /// At most two runs that together hold the next `frames` frames; `frames` is no more than `readable`.
    std::array<std::span<const float>, 2> peek(std::size_t frames) const {
        return runs(m_read.load(std::memory_order_relaxed), frames);
    }
    void consume(std::size_t frames) {
        m_read.store(m_read.load(std::memory_order_relaxed) + frames, std::memory_order_release);
    }

    /// Steps back over at most `history` frames that were read, and answers how many.
    std::size_t rewind(std::uint64_t frames) {
        const std::uint64_t at = m_read.load();
        const std::uint64_t kept = std::min<std::uint64_t>({frames, history, at - m_start});
        m_read.store(at - kept);
        return static_cast<std::size_t>(kept);
    }

    void clear() {
        m_start = m_written.load();
        m_read.store(m_start);
    }

    /// Copies the frames up to `framesBack` frames before the reader into `out`; what lies before the first
    /// frame is silence.
    void copyHistory(std::uint64_t framesBack, std::span<float> out) const {
        const std::uint64_t end = m_read.load(std::memory_order_acquire) - framesBack;
        const std::size_t wanted = out.size() / channelCount;
        const auto there = static_cast<std::size_t>(
            std::min<std::uint64_t>({wanted, history - std::min<std::uint64_t>(framesBack, history), end}));
        std::fill_n(out.begin(), (wanted - there) * channelCount, 0.0F);
        auto* to = out.data() + (wanted - there) * channelCount;
        for (const auto& run : runs(end - there, there))
            to = std::copy(run.begin(), run.end(), to);
    }

private:
    std::size_t position(std::uint64_t frame, std::size_t sample) const {
        return static_cast<std::size_t>((frame * channelCount + sample) % m_samples.size());
    }
    std::array<std::span<const float>, 2> runs(std::uint64_t frame, std::size_t frames) const {
        const std::size_t place = position(frame, 0);
        const std::size_t samples = frames * channelCount;
        const std::size_t first = std::min(samples, m_samples.size() - place);
        return {std::span(m_samples).subspan(place, first), std::span(m_samples).first(samples - first)};
    }

    std::vector<float> m_samples = std::vector<float>(capacity * channelCount);
    std::atomic<std::uint64_t> m_written{0}; ///< Frames, ever.
    std::atomic<std::uint64_t> m_read{0};
    std::uint64_t m_start = 0; ///< Nothing before it can be read again. Changed with both threads at rest.
    static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace bass
