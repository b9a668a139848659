#pragma once

#include <cstdint>

namespace bass {

/// Limit of the memory that FFmpeg allocates for the source that this thread opens and reads. Further
/// allocations fail: then the source cannot be opened, or ends.
inline constexpr std::int64_t maxFfmpegBytes = std::int64_t{60} << 20;

/// Sets the limit for this thread: `maxFfmpegBytes`, or a quarter of the file if that is larger, because the
/// index of a long recording grows with it. A negative `fileBytes` means unknown.
void limitFfmpegMemory(std::int64_t fileBytes);

/// While an object lives, FFmpeg's allocations on this thread fail after 1 s of processor time. Bounds the
/// time for malicious files, such as one with a million comments.
class OpeningTime {
public:
    OpeningTime();
    ~OpeningTime();
    OpeningTime(const OpeningTime&) = delete;
    OpeningTime& operator=(const OpeningTime&) = delete;
};

} // namespace bass
