// The allocation functions that FFmpeg calls: tools/build-ffmpeg renames its calls to these. They limit the
// memory that a file can make FFmpeg allocate. A packaged FFmpeg does not call them, and has no limit.

#include "platform/bass/source/FfmpegMemory.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <malloc.h>
#include <time.h>

namespace {

/// Per thread: a source is opened, read and freed on one thread.
thread_local std::int64_t held = 0;
thread_local std::int64_t limit = bass::maxFfmpegBytes;

std::int64_t sizeOf(void* memory) {
    return static_cast<std::int64_t>(malloc_usable_size(memory));
}

/// Processor time of this thread, in nanoseconds.
std::int64_t worked() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t maxOpening = 1'000'000'000;
thread_local std::int64_t deadline = never;
thread_local unsigned calls = 0;

/// True after the deadline. Reads the clock in every 16th call only.
bool isLate() {
    if (deadline == never || ++calls % 16 != 0) return deadline < 0;
    if (worked() > deadline) deadline = -1; // and stays late
    return deadline < 0;
}

bool mayGrowBy(std::int64_t bytes) {
    return bytes <= limit - held && !isLate();
}

} // namespace

void bass::limitFfmpegMemory(std::int64_t fileBytes) {
    limit = std::max(maxFfmpegBytes, fileBytes / 4);
}

bass::OpeningTime::OpeningTime() {
    deadline = worked() + maxOpening;
}

bass::OpeningTime::~OpeningTime() {
    deadline = never;
}

// NOLINTBEGIN(cppcoreguidelines-owning-memory): these are the allocation functions
extern "C" {

int tul_posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    if (!mayGrowBy(static_cast<std::int64_t>(size))) return ENOMEM;
    const int failed = posix_memalign(memory, alignment, size);
    if (failed == 0) held += sizeOf(*memory);
    return failed;
}

void* tul_realloc(void* memory, std::size_t size) {
    const std::int64_t before = sizeOf(memory);
    if (!mayGrowBy(static_cast<std::int64_t>(size) - before)) return nullptr;
    void* const moved = std::realloc(memory, size);
    if (moved) held += sizeOf(moved) - before;
    return moved;
}

void tul_free(void* memory) {
    held -= sizeOf(memory);
    std::free(memory);
}
}
// NOLINTEND(cppcoreguidelines-owning-memory)
