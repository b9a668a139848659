#pragma once

#include <cstdint>

namespace bass {

/// What FFmpeg may hold at a time for the source that this thread opens and reads. What is more is refused to
/// it: then the source cannot be opened, or ends.
inline constexpr std::int64_t maxFfmpegBytes = std::int64_t{60} << 20;

/// Sets the limit for this thread: `maxFfmpegBytes`, and a quarter of a file that is larger than four times
/// that, because the index of a long recording grows with it. `fileBytes` below 0 is unknown.
void limitFfmpegMemory(std::int64_t fileBytes);

/// While it lives, FFmpeg gets no more memory on this thread as soon as the thread has worked for a second
/// and a half: what states a million comments is searched a million times.
class OpeningTime {
public:
    OpeningTime();
    ~OpeningTime();
    OpeningTime(const OpeningTime&) = delete;
    OpeningTime& operator=(const OpeningTime&) = delete;
};

} // namespace bass
