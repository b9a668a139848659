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

/// What a read brought. `frames` may be above 0 with any status; they come first.
struct ReadResult {
    enum class Status {
        more,      ///< read on
        cancelled, ///< ended early by Cancel; the next read continues where this one stopped
        end,       ///< the last frame has been read
        failed,    ///< the rest cannot be read
    };
    std::size_t frames = 0;
    Status status = Status::more;
};

/// One opened file or address.
///
/// Threads: one thread at a time, the stream's worker. Reads and seeks may block for as long as a server or a
/// disk makes them wait; the Cancel that the source was opened with ends them early, from any thread.
class Source {
public:
    virtual ~Source() = default;

    /// Fills `out` (channelCount floats a frame) with the next frames; blocks until at least one is there.
    [[nodiscard]] virtual ReadResult read(std::span<float> out) = 0;
    /// Makes `frame` (from the source's first frame, clipped to its end) the next one read. False where it
    /// cannot; reading then continues at the old place, if the source still can.
    [[nodiscard]] virtual bool seek(std::int64_t frame) = 0;
    /// Length in frames, fixed at opening; none when it is not known (live streams).
    [[nodiscard]] virtual std::optional<std::int64_t> lengthFrames() const = 0;
    /// What its tags say of its loudness, fixed at opening.
    [[nodiscard]] virtual ReplayGain replayGain() const { return {}; }
    /// What is said of the frames that the last read brought, when that has changed since the last call.
    [[nodiscard]] virtual std::optional<StreamTags> takeTags() { return std::nullopt; }
};

/// Which content a file may hold to be accepted.
enum class Format { any, flac, ape, opus, wavpack };

/// Why a source could not be opened.
enum class Failure {
    none,
    notFound,     ///< no such file
    unreadable,   ///< no regular file, no permission, or an error of the disk
    noAudio,      ///< nothing in it that can be decoded
    nameNotFound, ///< the host's name does not resolve
    refused,      ///< no connection to be had: refused, unreachable, reset
    timeout,      ///< no answer in time
    httpStatus,   ///< the server answered with an error status
    certificate,  ///< the server's certificate is not trusted
    lost,         ///< was open, then broke off for good
};

/// The result of opening: a source, or why there is none.
struct OpenedSource {
    std::unique_ptr<Source> source; ///< null on failure, and when the opening was cancelled
    Failure failure = Failure::none;
    int httpStatus = 0; ///< with Failure::httpStatus: what the server answered (404, 503, …)
};

/// `address` without the blanks and line ends that it brings along when it is copied, and with its scheme in
/// lower case, as FFmpeg knows it; none when it is no http or https address.
[[nodiscard]] std::optional<std::string> normalizedAddress(const std::string& address);
/// Whether `address` (blanks around it ignored, the scheme in any case) is one that openUrl takes.
[[nodiscard]] bool isHttpAddress(const std::string& address);

/// Opens a local file. Never blocks on a FIFO. `cancel` ends it, and every later read, early.
[[nodiscard]] OpenedSource openFile(const std::string& path, Format format, std::shared_ptr<Cancel> cancel);
/// Connects to an http or https address; a live stream or a file whose connection drops is connected again by
/// itself. Blocks, a few seconds at most, but for a name look-up, which nothing can end early.
[[nodiscard]] OpenedSource openUrl(const std::string& address, std::shared_ptr<Cancel> cancel);

} // namespace bass
