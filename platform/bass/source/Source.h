#pragma once

#include "platform/bass/FrameFormat.h"
#include "platform/bass/replaygain.h"
#include "platform/bass/source/Cancel.h"
#include "platform/bass/source/StreamTags.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace bass {

/// The result of a read. With any status, `frames` frames were read before.
struct ReadResult {
    enum class Status {
        more,      ///< more frames follow
        cancelled, ///< interrupted by Cancel; the next read continues here
        end,       ///< the last frame has been read
        failed,    ///< the rest cannot be read
    };
    std::size_t frames = 0;
    Status status = Status::more;
};

/// An opened file or address.
///
/// Threads: one thread at a time, the stream's worker. Reads and seeks may block on a server or a disk; the
/// Cancel passed at opening interrupts them from any thread.
class Source {
public:
    virtual ~Source() = default;

    /// Fills `out` (channelCount floats per frame) with the next frames; blocks until there is at least one.
    [[nodiscard]] virtual ReadResult read(std::span<float> out) = 0;
    /// Seeks to `frame`, limited to the source's end. On failure returns false; reading then continues at the
    /// old position if possible.
    [[nodiscard]] virtual bool seek(std::int64_t frame) = 0;
    /// Length in frames, constant after opening; none when unknown (live streams).
    [[nodiscard]] virtual std::optional<std::int64_t> lengthFrames() const = 0;
    /// The ReplayGain of its tags, constant after opening.
    [[nodiscard]] virtual ReplayGain replayGain() const { return {}; }
    /// The tags that belong to the frames of the last read, if they have changed since the last call.
    [[nodiscard]] virtual std::optional<StreamTags> takeTags() { return std::nullopt; }
};

/// The content that is accepted.
enum class Format { any, flac, ape, opus, wavpack };

/// Why a source could not be opened.
enum class Failure {
    none,
    notFound,     ///< no such file
    unreadable,   ///< not a regular file, no permission, or a read error
    noAudio,      ///< no sound in it that can be decoded
    nameNotFound, ///< the host name does not resolve
    refused,      ///< no connection: refused, unreachable, reset
    timeout,      ///< no answer in time
    httpStatus,   ///< the server answered with an error status
    certificate,  ///< the server's certificate is not trusted
    lost,         ///< the connection broke off, and reconnecting failed
};

/// The result of opening: a source, or why there is none.
struct OpenedSource {
    std::unique_ptr<Source> source; ///< null on failure, and when the opening was cancelled
    Failure failure = Failure::none;
    int httpStatus = 0; ///< status code (404, 503, ...) of Failure::httpStatus
};

/// Removes blanks and line ends around `address`, and converts its scheme to lower case for FFmpeg; none when
/// it is not an http or https address.
[[nodiscard]] std::optional<std::string> normalizedAddress(const std::string& address);
/// True when normalizedAddress accepts `address`.
[[nodiscard]] bool isHttpAddress(const std::string& address);

/// Opens a local file. Never blocks on a FIFO. `cancel` interrupts opening and later reads.
[[nodiscard]] OpenedSource openFile(const std::string& path, Format format, std::shared_ptr<Cancel> cancel);
/// Connects to an http or https address, and reconnects after a lost connection. Blocks a few seconds at
/// most; only a name look-up cannot be interrupted.
[[nodiscard]] OpenedSource openUrl(const std::string& address, std::shared_ptr<Cancel> cancel);

} // namespace bass
