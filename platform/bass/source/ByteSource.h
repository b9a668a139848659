#pragma once

#include "platform/bass/source/Cancel.h"
#include "platform/bass/source/FfmpegPtr.h"
#include "platform/bass/source/Source.h"

#include <cstdint>
#include <memory>
#include <span>

namespace bass {

/// The bytes of an opened file or address, as FFmpeg reads them.
///
/// Threads: one thread at a time; the Cancel may be used beside it.
class ByteSource {
public:
    explicit ByteSource(std::shared_ptr<Cancel> cancel) : m_cancel(std::move(cancel)) {}
    virtual ~ByteSource() = default;

    /// Bytes read (above 0), AVERROR_EOF at the end, AVERROR_EXIT when `interrupted`, or another AVERROR.
    [[nodiscard]] virtual int read(std::span<std::uint8_t> out) = 0;
    /// Makes the byte at `offset` the next one read. Returns the offset or an AVERROR.
    [[nodiscard]] virtual std::int64_t seek(std::int64_t offset) = 0;
    /// In bytes; below 0 when it is not known.
    [[nodiscard]] virtual std::int64_t size() const = 0;
    [[nodiscard]] virtual bool seekable() const = 0;
    /// A seek costs no more than a read.
    [[nodiscard]] virtual bool seeksFast() const { return false; }

    /// Whether a read that is under way ends early. A source whose reads are short, or that could not be read
    /// on afterwards, ends them for a `close` only.
    [[nodiscard]] virtual bool interrupted() const { return m_cancel->closed(); }
    /// Why the last read or seek failed; none when it did not.
    [[nodiscard]] virtual Failure failure() const = 0;
    /// The bytes that may be read until the next call; then reading fails. Bounds what a decoder collects
    /// when a server states absurd lengths; the files of the user's own need no such limit.
    virtual void allow(std::int64_t /*bytes*/) {}

    [[nodiscard]] const std::shared_ptr<Cancel>& cancel() const { return m_cancel; }

private:
    std::shared_ptr<Cancel> m_cancel;
};

/// A context that reads `bytes`, which must outlive it; null when memory ran out.
[[nodiscard]] AvioPtr makeAvio(ByteSource& bytes);

} // namespace bass
