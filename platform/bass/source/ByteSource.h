#pragma once

#include "platform/bass/source/Cancel.h"
#include "platform/bass/source/FfmpegPtr.h"
#include "platform/bass/source/Source.h"

#include <cstdint>
#include <memory>
#include <span>

namespace bass {

/// The bytes of an opened file or address, read by FFmpeg.
///
/// Threads: one thread at a time; the Cancel may be used concurrently.
class ByteSource {
public:
    explicit ByteSource(std::shared_ptr<Cancel> cancel) : m_cancel(std::move(cancel)) {}
    virtual ~ByteSource() = default;

    /// Bytes read (above 0), AVERROR_EOF at the end, AVERROR_EXIT when `interrupted`, or another AVERROR.
    [[nodiscard]] virtual int read(std::span<std::uint8_t> out) = 0;
    /// Makes the byte at `offset` the next one read. Returns the offset or an AVERROR.
    [[nodiscard]] virtual std::int64_t seek(std::int64_t offset) = 0;
    /// In bytes; negative when unknown.
    [[nodiscard]] virtual std::int64_t size() const = 0;
    [[nodiscard]] virtual bool seekable() const = 0;
    /// True when a seek is as cheap as a read.
    [[nodiscard]] virtual bool seeksFast() const { return false; }

    /// True when a blocking read is to return early. A source whose reads are short, or that cannot continue
    /// after an interruption, returns early only for `close`.
    [[nodiscard]] virtual bool interrupted() const { return m_cancel->closed(); }
    /// Why the last read or seek failed; Failure::none when it succeeded.
    [[nodiscard]] virtual Failure failure() const = 0;
    /// Limits the bytes that can be read until the next call; then reading fails. Bounds the memory of a
    /// demuxer when a server states excessive lengths. Local files have no such limit.
    virtual void allow(std::int64_t /*bytes*/) {}

    [[nodiscard]] const std::shared_ptr<Cancel>& cancel() const { return m_cancel; }

private:
    std::shared_ptr<Cancel> m_cancel;
};

/// Makes an I/O context that reads `bytes`, which must outlive it; null when out of memory.
[[nodiscard]] AvioPtr makeAvio(ByteSource& bytes);

} // namespace bass
