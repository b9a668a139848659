#pragma once

#include "platform/bass/source/FfmpegPtr.h"

#include <atomic>
#include <cstdint>
#include <span>

namespace bass {

/// The bytes of an opened file or address, as FFmpeg reads them.
///
/// Threads: one thread at a time; only `interrupt` and `interrupted` may be called beside it.
class ByteSource {
public:
    virtual ~ByteSource() = default;

    /// Bytes read (above 0), AVERROR_EOF at the end, or another AVERROR.
    [[nodiscard]] virtual int read(std::span<std::uint8_t> out) = 0;
    /// Makes the byte at `offset` the next one read. Answers the offset or an AVERROR.
    [[nodiscard]] virtual std::int64_t seek(std::int64_t offset) = 0;
    /// In bytes; below 0 when it is not known.
    [[nodiscard]] virtual std::int64_t size() const = 0;
    [[nodiscard]] virtual bool seekable() const = 0;

    /// Makes every read from now on fail soon.
    void interrupt() noexcept { m_interrupted = true; }
    [[nodiscard]] bool interrupted() const noexcept { return m_interrupted; }

private:
    std::atomic<bool> m_interrupted = false;
};

/// A context that reads `bytes`, which must outlive it; null when memory ran out.
[[nodiscard]] AvioPtr makeAvio(ByteSource& bytes);

} // namespace bass
